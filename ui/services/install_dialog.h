// Install a service: the services of a catalogue file that the user has chosen.
#pragma once

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
  void OnOk() override;

  WString cataloguePath_;
  WString installedName_;
  CatalogueList services_;
};

}  // namespace orv::ui
