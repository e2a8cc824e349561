// Add a service: the services of our catalogue, with the ways to bring further ones in and to take them out.
#pragma once

#include "orv/orvapi.h"
#include "platform/com_ptr.h"
#include "ui/dialog.h"
#include "ui/services/catalogue_list.h"

namespace orv::ui {

class AddServiceDialog final : public ModalDialog {
 public:
  // `services` tells which services the profile uses.
  AddServiceDialog(HMODULE resources, ComPtr<IABServiceAdmin> services);

  // After IDOK: the PR_SERVICE_NAME that was chosen; empty when no line was selected.
  const WString& ChosenName() const { return chosenName_; }

 private:
  bool OnInitialise() override;
  bool OnCommand(WORD control, WORD notification) override;
  void OnOk() override;

  void OnUninstall();
  void OnInstallFromFile();
  // A service that the profile uses stays, and one of which nobody can tell.
  bool MayUninstall(const SRow& service);

  ComPtr<IABServiceAdmin> services_;
  WString chosenName_;
  CatalogueList offered_;
};

}  // namespace orv::ui
