#include "ui/services/install_dialog.h"

#include "orv/orvflags.h"
#include "profiles/catalogue.h"
#include "ui/help_ids.h"
#include "ui/services/service_call.h"
#include "ui/window_utils.h"

namespace orv::ui {
namespace {

constexpr WORD kTemplate = 257;
constexpr int kServices = 1155;
constexpr UINT kNoServiceChosen = 279;

// With its separator, so that a file name can follow.
WString FolderOf(const WString& path) { return path.substr(0, path.find_last_of(L'\\') + 1); }

}  // namespace

InstallDialog::InstallDialog(HMODULE resources, WString cataloguePath)
    : ModalDialog(resources, kTemplate, kProfileHelpIds), cataloguePath_(std::move(cataloguePath)) {}

bool InstallDialog::OnInitialise() {
  CentreOnDesktop(Window());
  services_.Attach(Item(kServices));
  services_.Fill(cataloguePath_);
  return true;
}

void InstallDialog::OnOk() {
  const SRow* service = services_.Selected();
  if (service == nullptr) return ShowError(kNoServiceChosen);
  const WString folder = FolderOf(cataloguePath_);
  if (FAILED(CallServiceOnce(folder, *service, MSG_SERVICE_INSTALL, Window()))) return;
  catalogue::InstallService(cataloguePath_, WString(), *service);
  installedName_ = ServiceName(ForeignValues(*service));
  Close(IDOK);
}

}  // namespace orv::ui
