#include "ui/services/add_service_dialog.h"

#include "orv/orvflags.h"
#include "profiles/catalogue.h"
#include "ui/message_box.h"
#include "ui/services/install_dialog.h"
#include "ui/services/open_file.h"
#include "ui/services/row_values.h"
#include "ui/services/service_call.h"
#include "ui/services/service_files.h"
#include "ui/services/service_table.h"
#include "ui/window_utils.h"

namespace orv::ui {
namespace {

constexpr WORD kTemplate = 256;
constexpr int kServices = 1155;
constexpr int kUninstall = 1157;
constexpr int kInstallFromFile = 1160;

constexpr UINT kConfirmUninstall = 280;
constexpr UINT kServiceInUse = 281;

}  // namespace

AddServiceDialog::AddServiceDialog(HMODULE resources, ComPtr<IABServiceAdmin> services)
    : ModalDialog(resources, kTemplate),
      services_(std::move(services)),
      help_(resources, kAddServiceHelpIds) {}

bool AddServiceDialog::OnInitialise() {
  offered_.Attach(Item(kServices));
  offered_.Fill(WString());
  offered_.SelectFirst();
  CentreOnDesktop(Window());
  return true;
}

bool AddServiceDialog::OnCommand(WORD control, WORD) {
  switch (control) {
    case IDOK:
      OnOk();
      return true;
    case IDCANCEL:
      Close(IDCANCEL);
      return true;
    case kUninstall:
      OnUninstall();
      return true;
    case kInstallFromFile:
      OnInstallFromFile();
      return true;
    default:
      return false;
  }
}

void AddServiceDialog::OnOk() {
  const SRow* service = offered_.Selected();
  if (service != nullptr) {
    if (const UINT problem = FindSupportFilesProblem(*service); problem != 0) return ShowError(problem);
  }
  serviceName_ = service == nullptr ? L"" : TextOf(*service, PR_SERVICE_NAME_W);
  Close(IDOK);
}

bool AddServiceDialog::MayUninstall(const SRow& service) {
  const WString name = TextOf(service, PR_SERVICE_NAME_W);
  bool used = false;
  SizedSPropTagArray(1, columns) = {1, {PR_SERVICE_NAME_W}};
  const auto compare = [&](const SRow& row) { used = used || name == TextOf(row, PR_SERVICE_NAME_W); };
  // A table that cannot be read does not tell, so the service stays.
  if (FAILED(ReadServiceTable(*services_, reinterpret_cast<LPSPropTagArray>(&columns), compare)))
    return false;
  if (used) ShowError(kServiceInUse);
  return !used && AskQuestion(kConfirmUninstall, Resources(), Window());
}

HRESULT AddServiceDialog::CallEntry(const SRow& service) {
  const WaitPointer pointer;
  return CallServiceOnce(WString(), service, MSG_SERVICE_UNINSTALL, Window());
}

void AddServiceDialog::OnUninstall() {
  const SRow* service = offered_.Selected();
  if (service == nullptr || !MayUninstall(*service)) return;
  if (FAILED(CallEntry(*service))) return;
  catalogue::RemoveService(WString(), *service);
  DeleteServiceFiles(Window(), Resources(), *service);
  offered_.RemoveSelected();
}

void AddServiceDialog::OnInstallFromFile() {
  const auto file = ChooseCatalogueFile(Window(), Resources());
  if (!file) return;
  InstallDialog install(Resources(), *file);
  if (install.Show(Window()) != IDOK) return;
  offered_.Fill(WString());
  offered_.SelectService(install.InstalledName());
}

void AddServiceDialog::Close(INT_PTR result) {
  help_.ClosePopup();
  End(result);
}

}  // namespace orv::ui
