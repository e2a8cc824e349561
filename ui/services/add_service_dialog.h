// Add a service: the services of our catalogue, with the ways to bring further ones in and to take them out.
#pragma once

#include "orv/orvapi.h"
#include "platform/com_ptr.h"
#include "ui/context_help.h"
#include "ui/dialog.h"
#include "ui/services/catalogue_list.h"

namespace orv::ui {

class AddServiceDialog final : public ModalDialog {
 public:
  // `services` tells which services the profile uses.
  AddServiceDialog(HMODULE resources, ComPtr<IABServiceAdmin> services);

  // After IDOK: the PR_SERVICE_NAME that was chosen; empty when no line was selected.
  const WString& ServiceName() const { return serviceName_; }

 private:
  bool OnInitialise() override;
  bool OnCommand(WORD control, WORD notification) override;
  void OnHelp(const HELPINFO& help) override { help_.OnHelp(Window(), help); }
  void OnContextMenu(HWND window, POINT point) override { help_.OnContextMenu(Window(), window, point); }

  void OnOk();
  void OnUninstall();
  HRESULT CallEntry(const SRow& service);
  void OnInstallFromFile();
  bool MayUninstall(const SRow& service);
  void Close(INT_PTR result);

  ComPtr<IABServiceAdmin> services_;
  WString serviceName_;
  CatalogueList offered_;
  DialogHelp help_;
};

}  // namespace orv::ui
