#include "ui/services/profile_dialog.h"

#include <cstring>

#include "hosting/open_entry.h"
#include "orv/orvflags.h"
#include "orv/orvtags.h"
#include "profiles/catalogue.h"
#include "profiles/registry_store.h"
#include "ui/help_ids.h"
#include "ui/message_box.h"
#include "ui/services/add_service_dialog.h"
#include "ui/services/service_table.h"
#include "ui/window_utils.h"

namespace orv::ui {
namespace {

constexpr WORD kTemplate = 255;
constexpr int kServices = 1155;
constexpr int kAdd = 1156;
constexpr int kRemove = 1157;
constexpr int kConfigure = 1158;

constexpr UINT kAlreadyInProfile = 269;
constexpr UINT kAddFailed = 270;
constexpr UINT kOutOfMemory = 273;

constexpr ULONG kServiceFlags = MAPI_UNICODE | SERVICE_UI_ALWAYS;

constexpr TagArray kLineColumns{PR_DISPLAY_NAME_W, PR_SERVICE_UID, PR_RESOURCE_FLAGS};

// Where the other programs of the suite look for the file of the address book.
void PublishBookFile(const WCHAR* file) {
  RegKey key;
  if (FAILED(registry_store::OpenProfileKey(L"WAB", registry_store::OpenMode::kCreate, key))) return;
  key.SetString(L"WAB File Name", file);
}

}  // namespace

ProfileDialog::ProfileDialog(HMODULE resources, ComPtr<IABServiceAdmin> services)
    : ModalDialog(resources, kTemplate, kProfileHelpIds), services_(std::move(services)) {}

bool ProfileDialog::OnInitialise() {
  lines_.Attach(Item(kServices));
  TableReader reader;
  HRESULT hr = OpenServiceTable(*services_, kLineColumns, reader);
  while (SUCCEEDED(hr) && (hr = reader.Next()) == S_OK) AddLine(reader.Row());
  lines_.Select(0);
  SetButtons();
  CentreOnDesktop(Window());
  return true;
}

bool ProfileDialog::OnCommand(WORD control, WORD notification) {
  switch (control) {
    case kServices:
      return OnListNotification(notification);
    case kAdd:
      return OnAdd(), true;
    case kRemove:
      return OnRemove(), true;
    case kConfigure:
      return OnConfigure(), true;
    default:
      return false;
  }
}

bool ProfileDialog::OnListNotification(WORD notification) {
  if (notification == LBN_SELCHANGE) SetButtons();
  if (notification == LBN_DBLCLK) OnConfigure();
  return true;
}

void ProfileDialog::OnHelp(const HELPINFO& help) {
  if (help.iCtrlId != kAdd && help.iCtrlId != kRemove) ModalDialog::OnHelp(help);
}

void ProfileDialog::OnContextMenu(HWND window, POINT point) {
  const RECT add = WindowRectangle(Item(kAdd));
  const RECT remove = WindowRectangle(Item(kRemove));
  if (!PtInRect(&add, point) && !PtInRect(&remove, point)) ModalDialog::OnContextMenu(window, point);
}

void ProfileDialog::AddLine(const ForeignValues& row) {
  Service service;
  const SBinary* uid = BinaryOf(row.Find(PR_SERVICE_UID));
  if (uid != nullptr && uid->cb >= sizeof(MAPIUID)) std::memcpy(&service.uid, uid->lpb, sizeof(MAPIUID));
  service.resourceFlags = NumberOf(row.Find(PR_RESOURCE_FLAGS));
  lines_.Add(TextOf(row.Find(PR_DISPLAY_NAME_W)), service);
}

bool ProfileDialog::SelectedHas(ULONG resourceFlag) const {
  const auto line = lines_.Selected();
  return line && (lines_[*line].resourceFlags & resourceFlag) != 0;
}

void ProfileDialog::SetButtons() {
  const bool removable = !SelectedHas(ORV_SERVICE_NOT_REMOVABLE);
  const bool configurable = !SelectedHas(ORV_SERVICE_NOT_CONFIGURABLE);
  // Enabled first, as it may be about to take the focus.
  if (configurable) EnableWindow(Item(kConfigure), TRUE);
  SetButton(kRemove, removable, configurable ? kConfigure : IDOK);
  SetButton(kConfigure, configurable, IDOK);

  ULONG offered = 0;
  const bool counted = SUCCEEDED(catalogue::CountServices(WString(), catalogue::kServices, offered));
  SetButton(kAdd, counted && offered > 1, IDOK);
}

// A button that is disabled while it has the focus gives focus and default style to its heir.
void ProfileDialog::SetButton(int button, bool enabled, int heir) {
  const HWND item = Item(button);
  if (!enabled && GetFocus() == item) FocusOn(heir);
  EnableWindow(item, enabled);
}

void ProfileDialog::OnAdd() {
  AddServiceDialog add(Resources(), services_);
  if (add.Show(Window()) == IDOK) {
    const HRESULT hr = CreateService(add.ChosenName());
    if (SUCCEEDED(hr)) {
      ShowNewService();
    } else {
      TellFailure(hr);
    }
  }
  SetButtons();
}

HRESULT ProfileDialog::CreateService(const WString& name) {
  const auto uiParam = reinterpret_cast<ULONG_PTR>(Window());
  const WaitPointer pointer;
  return GuardedForeign(
      [&] { return services_->CreateMsgService(name.c_str(), L"", L"", 0, uiParam, kServiceFlags); });
}

void ProfileDialog::TellFailure(HRESULT hr) const {
  if (hr == MAPI_E_USER_CANCEL) return;
  if (hr != MAPI_E_COLLISION) return ShowError(kAddFailed);
  ShowMessage(kAlreadyInProfile, Resources(), Window(), MB_ICONINFORMATION);
}

// The new service is the first row of the next table.
void ProfileDialog::ShowNewService() {
  TableReader reader;
  if (FAILED(OpenServiceTable(*services_, kLineColumns, reader)) || reader.Next() != S_OK) return;
  AddLine(reader.Row());
  lines_.Select(lines_.Size() - 1);
}

void ProfileDialog::OnRemove() {
  const auto line = lines_.Selected();
  if (line && !SelectedHas(ORV_SERVICE_NOT_REMOVABLE)) {
    const MAPIUID uid = lines_[*line].uid;
    const HRESULT hr = GuardedForeign([&] { return services_->DeleteMsgService(&uid); });
    if (SUCCEEDED(hr)) lines_.Remove(*line);
    if (hr == MAPI_E_NOT_ENOUGH_MEMORY) ShowError(kOutOfMemory);
  }
  SetButtons();
}

void ProfileDialog::OnConfigure() {
  const auto line = lines_.Selected();
  if (!line || SelectedHas(ORV_SERVICE_NOT_CONFIGURABLE)) return;
  ConfigureService(lines_[*line].uid);
  if (section_) ShowNewName(*line);
}

// A failed configuration hands its section out too. The service may let the dialog go while it runs, so what it was
// given is held here.
void ProfileDialog::ConfigureService(const MAPIUID& uid) {
  const MAPIUID service = uid;
  const ComPtr<IProfSect> held = section_;
  IProfSect* section = held.Get();
  {
    const WaitPointer pointer;
    (void)GuardedForeign([&] {
      return services_->ConfigureMsgService(&service, reinterpret_cast<ULONG_PTR>(Window()), kServiceFlags, 0,
                                            nullptr, &section);
    });
  }
  if (!held && section != nullptr) section_ = ComPtr<IProfSect>::Adopt(section);
  if (section_) return;
  (void)HandedOut(section_, [&] {
    return services_->OpenProfileSection(&service, nullptr, MAPI_MODIFY, section_.Put());
  });
}

// A section that does not tell a name leaves the line as it was.
void ProfileDialog::ShowNewName(std::size_t line) {
  PropValues properties;
  if (FAILED(ReadProps(*section_, kLineColumns, properties))) return;
  const WCHAR* name = TextOf(ForeignValues(properties).Find(PR_DISPLAY_NAME_W));
  if (name != nullptr) lines_.ReplaceText(line, name);
}

void ProfileDialog::OnOk() {
  if (section_) SaveOpenSection();
  Close(IDOK);
}

void ProfileDialog::SaveOpenSection() {
  const ComPtr<IProfSect> section = section_;
  (void)GuardedForeign([&] { return section->SaveChanges(KEEP_OPEN_READWRITE); });
  PropValues properties;
  if (FAILED(ReadProps(*section, TagArray{PR_ORV_BOOK_FILE_W}, properties))) return;
  const WCHAR* file = TextOf(ForeignValues(properties).Find(PR_ORV_BOOK_FILE_W));
  if (file != nullptr) PublishBookFile(file);
}

}  // namespace orv::ui
