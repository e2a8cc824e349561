#include "ui/services/profile_dialog.h"

#include <algorithm>
#include <cstring>

#include "orv/orvflags.h"
#include "orv/orvtags.h"
#include "profiles/catalogue.h"
#include "profiles/registry_store.h"
#include "ui/message_box.h"
#include "ui/services/add_service_dialog.h"
#include "ui/services/row_values.h"
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

constexpr ULONG kServiceFlags = MAPI_UNICODE | SERVICE_UI_ALWAYS;

LPSPropTagArray LineColumns() {
  static SizedSPropTagArray(3, columns) = {3, {PR_DISPLAY_NAME_W, PR_SERVICE_UID, PR_RESOURCE_FLAGS}};
  return reinterpret_cast<LPSPropTagArray>(&columns);
}

// Where the other programs of the suite look for the file of the address book.
void PublishBookFile(const WCHAR* file) {
  RegKey key;
  if (FAILED(registry_store::OpenProfileKey(L"WAB", registry_store::OpenMode::kCreate, key))) return;
  key.SetString(L"WAB File Name", file);
}

}  // namespace

ProfileDialog::ProfileDialog(HMODULE resources, ComPtr<IABServiceAdmin> services)
    : ModalDialog(resources, kTemplate), services_(std::move(services)), help_(resources, kProfileHelpIds) {}

bool ProfileDialog::OnInitialise() {
  lines_.Attach(Item(kServices));
  ReadServiceTable(*services_, LineColumns(), [this](const SRow& row) { AddLine(row); });
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
      OnAdd();
      return true;
    case kRemove:
      OnRemove();
      return true;
    case kConfigure:
      OnConfigure();
      return true;
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

bool ProfileDialog::OnListNotification(WORD notification) {
  if (notification == LBN_SELCHANGE) SetButtons();
  if (notification == LBN_DBLCLK) OnConfigure();
  return true;
}

void ProfileDialog::OnHelp(const HELPINFO& help) {
  if (help.iCtrlId != kAdd && help.iCtrlId != kRemove) help_.OnHelp(Window(), help);
}

void ProfileDialog::OnContextMenu(HWND window, POINT point) {
  const RECT add = WindowRectangle(Item(kAdd));
  const RECT remove = WindowRectangle(Item(kRemove));
  if (!PtInRect(&add, point) && !PtInRect(&remove, point)) help_.OnContextMenu(Window(), window, point);
}

void ProfileDialog::AddLine(const SRow& row) {
  Service service;
  const SPropValue* uid = FindValue(row.lpProps, row.cValues, PR_SERVICE_UID);
  if (uid != nullptr && uid->Value.bin.cb >= sizeof(MAPIUID)) {
    std::memcpy(&service.uid, uid->Value.bin.lpb, sizeof(MAPIUID));
  }
  const SPropValue* flags = FindValue(row.lpProps, row.cValues, PR_RESOURCE_FLAGS);
  if (flags != nullptr) service.resourceFlags = static_cast<ULONG>(flags->Value.l);
  lines_.Add(TextOf(row, PR_DISPLAY_NAME_W), service);
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
  if (!enabled && GetFocus() == item) {
    SendMessageW(Window(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(Item(heir)), TRUE);
  }
  EnableWindow(item, enabled);
}

void ProfileDialog::OnAdd() {
  AddServiceDialog add(Resources(), services_);
  if (add.Show(Window()) == IDOK) {
    const HRESULT hr = CreateService(add.ServiceName());
    if (hr == MAPI_E_COLLISION) {
      ShowMessage(kAlreadyInProfile, Resources(), Window(), MB_ICONINFORMATION);
    } else if (FAILED(hr) && hr != MAPI_E_USER_CANCEL) {
      ShowError(kAddFailed);
    }
  }
  SetButtons();
}

// The new service is the first row of the next table.
HRESULT ProfileDialog::CreateService(const WString& name) {
  const auto uiParam = reinterpret_cast<ULONG_PTR>(Window());
  {
    const WaitPointer pointer;
    const HRESULT hr = services_->CreateMsgService(name.c_str(), L"", L"", 0, uiParam, kServiceFlags);
    if (FAILED(hr)) return hr;
  }
  ReadFirstService(*services_, LineColumns(), [this](const SRow& row) {
    AddLine(row);
    lines_.Select(lines_.Size() - 1);
  });
  return S_OK;
}

void ProfileDialog::OnRemove() {
  const auto line = lines_.Selected();
  if (line && !SelectedHas(ORV_SERVICE_NOT_REMOVABLE) &&
      SUCCEEDED(services_->DeleteMsgService(&lines_[*line].uid))) {
    lines_.Remove(*line);
  }
  SetButtons();
}

void ProfileDialog::OnConfigure() {
  const auto line = lines_.Selected();
  if (!line || SelectedHas(ORV_SERVICE_NOT_CONFIGURABLE)) return;
  const MAPIUID uid = lines_[*line].uid;
  IProfSect* section = section_.Get();
  {
    const WaitPointer pointer;
    services_->ConfigureMsgService(&uid, reinterpret_cast<ULONG_PTR>(Window()), kServiceFlags, 0, nullptr,
                                   &section);
  }
  if (!section_ && section != nullptr) section_ = ComPtr<IProfSect>::Adopt(section);
  if (!section_) services_->OpenProfileSection(&uid, nullptr, MAPI_MODIFY, section_.Put());
  if (section_) ShowNewName(*line);
}

void ProfileDialog::ShowNewName(std::size_t line) {
  PropValues properties;
  const HRESULT hr =
      section_->GetProps(LineColumns(), MAPI_UNICODE, &properties.count, properties.values.Put());
  if (FAILED(hr)) return;
  const WCHAR* name = TextOf(properties.values.Get(), properties.count, PR_DISPLAY_NAME_W);
  lines_.ReplaceText(line, name);
}

void ProfileDialog::OnOk() {
  if (section_) SaveOpenSection();
  Close(IDOK);
}

void ProfileDialog::SaveOpenSection() {
  section_->SaveChanges(KEEP_OPEN_READWRITE);
  SizedSPropTagArray(1, tags) = {1, {PR_ORV_BOOK_FILE_W}};
  PropValues properties;
  const HRESULT hr = section_->GetProps(reinterpret_cast<LPSPropTagArray>(&tags), MAPI_UNICODE,
                                        &properties.count, properties.values.Put());
  if (FAILED(hr)) return;
  const SPropValue* file = FindValue(properties.values.Get(), properties.count, PR_ORV_BOOK_FILE_W);
  if (file != nullptr && file->Value.lpszW != nullptr) PublishBookFile(file->Value.lpszW);
}

void ProfileDialog::Close(INT_PTR result) {
  section_.Reset();
  help_.ClosePopup();
  End(result);
}

}  // namespace orv::ui
