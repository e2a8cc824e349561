#include "ui/services/install_dialog.h"

#include "orv/orvflags.h"
#include "profiles/catalogue.h"
#include "ui/services/row_values.h"
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
    : ModalDialog(resources, kTemplate),
      cataloguePath_(std::move(cataloguePath)),
      help_(resources, kProfileHelpIds) {}

bool InstallDialog::OnInitialise() {
  CentreOnDesktop(Window());
  services_.Attach(Item(kServices));
  services_.Fill(cataloguePath_);
  return true;
}

bool InstallDialog::OnCommand(WORD control, WORD) {
  switch (control) {
    case IDOK:
      OnOk();
      return true;
    case IDCANCEL:
      Close(IDCANCEL);
      return true;
    default:
      return false;
  }
}

void InstallDialog::OnOk() {
  const SRow* service = services_.Selected();
  if (service == nullptr) return ShowError(kNoServiceChosen);
  if (FAILED(CallEntry(*service))) return;
  catalogue::InstallService(cataloguePath_, WString(), *service);
  installedName_ = TextOf(*service, PR_SERVICE_NAME_W);
  Close(IDOK);
}

HRESULT InstallDialog::CallEntry(const SRow& service) {
  const WaitPointer pointer;
  return CallServiceOnce(FolderOf(cataloguePath_), service, MSG_SERVICE_INSTALL, Window());
}

void InstallDialog::Close(INT_PTR result) {
  help_.ClosePopup();
  End(result);
}

}  // namespace orv::ui
