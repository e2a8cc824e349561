#include "ui/services/add_service_dialog.h"

#include "orv/orvflags.h"
#include "orv/orvtags.h"
#include "platform/identity.h"
#include "platform/process.h"
#include "profiles/catalogue.h"
#include "ui/help_ids.h"
#include "ui/message_box.h"
#include "ui/services/install_dialog.h"
#include "ui/services/open_file.h"
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

enum class Use { kUnused, kUsed, kUnknown };

Use UseOf(IABServiceAdmin& services, const WString& name) {
  TableReader reader;
  HRESULT hr = OpenServiceTable(services, TagArray{PR_SERVICE_NAME_W}, reader);
  if (SUCCEEDED(hr)) hr = reader.Next();
  for (; hr == S_OK; hr = reader.Next()) {
    if (name == ServiceName(reader.Row())) return Use::kUsed;
  }
  return FAILED(hr) ? Use::kUnknown : Use::kUnused;
}

}  // namespace

AddServiceDialog::AddServiceDialog(HMODULE resources, ComPtr<IABServiceAdmin> services)
    : ModalDialog(resources, kTemplate, kAddServiceHelpIds), services_(std::move(services)) {}

bool AddServiceDialog::OnInitialise() {
  offered_.Attach(Item(kServices));
  offered_.Fill(WString());
  offered_.SelectFirst();
  CentreOnDesktop(Window());
  return true;
}

bool AddServiceDialog::OnCommand(WORD control, WORD) {
  if (control == kUninstall) OnUninstall();
  if (control == kInstallFromFile) OnInstallFromFile();
  return control == kUninstall || control == kInstallFromFile;
}

void AddServiceDialog::OnOk() {
  chosenName_.clear();
  if (const SRow* service = offered_.Selected()) {
    if (const UINT problem = FindSupportFilesProblem(*service); problem != 0) return ShowError(problem);
    chosenName_ = ServiceName(ForeignValues(*service));
  }
  Close(IDOK);
}

bool AddServiceDialog::MayUninstall(const SRow& service) {
  switch (UseOf(*services_, ServiceName(ForeignValues(service)))) {
    case Use::kUnused:
      return AskQuestion(kConfirmUninstall, Resources(), Window());
    case Use::kUsed:
      ShowError(kServiceInUse);
      return false;
    case Use::kUnknown:
      break;
  }
  return false;
}

void AddServiceDialog::OnUninstall() {
  const SRow* service = offered_.Selected();
  if (service == nullptr || !MayUninstall(*service)) return;
  const WString ourFolder = PathBeside(process::Instance(), {});
  if (FAILED(CallServiceOnce(ourFolder, *service, MSG_SERVICE_UNINSTALL, Window()))) return;
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

}  // namespace orv::ui
