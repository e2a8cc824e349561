// Install a service: the services of a catalogue file that the user has chosen.
#pragma once

#include "ui/context_help.h"
#include "ui/dialog.h"
#include "ui/services/catalogue_list.h"

namespace orv::ui {

class InstallDialog final : public ModalDialog {
 public:
  InstallDialog(HMODULE resources, WString cataloguePath);

  // After IDOK: the PR_SERVICE_NAME of the service that our own catalogue has now.
  const WString& InstalledName() const { return installedName_; }

 private:
  bool OnInitialise() override;
  bool OnCommand(WORD control, WORD notification) override;
  void OnHelp(const HELPINFO& help) override { help_.OnHelp(Window(), help); }
  void OnContextMenu(HWND window, POINT point) override { help_.OnContextMenu(Window(), window, point); }

  void OnOk();
  HRESULT CallEntry(const SRow& service);
  void Close(INT_PTR result);

  WString cataloguePath_;
  WString installedName_;
  CatalogueList services_;
  DialogHelp help_;
};

}  // namespace orv::ui
