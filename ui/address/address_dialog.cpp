// The Address dialog: set-up, dispatch and closing. Its commands stand in address_commands.cpp.
#include "ui/address/address_dialog.h"

#include <algorithm>
#include <atomic>
#include <utility>

#include "orv/orvflags.h"
#include "orv/orvtags.h"
#include "platform/pointer_check.h"
#include "props/prop_value.h"
#include "ui/address/entry_drawing.h"
#include "ui/help_ids.h"
#include "ui/window_utils.h"

namespace orv::ui {
namespace {

constexpr WPARAM kTypeAheadLimit = 64;
// Names of this length and longer are cut in the caller's own buffer, for the list and for the caller alike.
constexpr std::size_t kLongName = 65;
constexpr std::size_t kKeptOfLongName = 61;

void ShortenLongName(WCHAR* name) {
  if (static_cast<std::size_t>(lstrlenW(name)) < kLongName) return;
  WStringView(ORV_W("...")).copy(name + kKeptOfLongName, 3);
  name[kKeptOfLongName + 3] = 0;
}

std::atomic<bool> g_isOpen{false};

// One dialog at a time in the process.
class OpenMark {
 public:
  OpenMark() : owned_(!g_isOpen.exchange(true)) {}
  ~OpenMark() {
    if (owned_) g_isOpen = false;
  }
  OpenMark(const OpenMark&) = delete;
  OpenMark& operator=(const OpenMark&) = delete;
  bool IsOwned() const { return owned_; }

 private:
  bool owned_;
};

bool AreValid(IAddrBook* book, ADRPARM* parameters, ADRLIST** list) {
  if (!IsReadable(book, sizeof(void*)) || !IsReadable(parameters, sizeof *parameters) || !IsWritableOut(list))
    return false;
  if (*list != nullptr && (!IsReadable(*list, CbNewADRLIST(0)) || !IsReadable(*list, CbADRLIST(*list))))
    return false;
  const ULONG wells = parameters->cDestFields;
  if (wells > address::kMaxWells) return false;
  return wells == 0 || IsReadable(parameters->lpulDestComps, wells * sizeof(ULONG));
}

}  // namespace

HRESULT ShowAddressDialog(HWND owner, HMODULE resources, IAddrBook* book, ADRPARM* parameters,
                          ADRLIST** list) {
  if (!AreValid(book, parameters, list)) return MAPI_E_INVALID_PARAMETER;
  const OpenMark mark;
  if (!mark.IsOwned()) return MAPI_E_CALL_FAILED;
  // The caller's windows get messages meanwhile, and may let go of the book.
  const ComPtr<IAddrBook> held = ComPtr<IAddrBook>::Share(book);
  AddressDialog dialog(resources, *book, *parameters, *list);
  switch (dialog.Show(owner)) {
    case IDOK:
      return dialog.Result();
    case IDCANCEL:
      return MAPI_E_USER_CANCEL;
    default:
      return MAPI_E_CALL_FAILED;
  }
}

AddressDialog::AddressDialog(HMODULE resources, IAddrBook& book, const ADRPARM& parameters, ADRLIST*& list)
    : ModalDialog(resources, static_cast<WORD>(address::kAddressTemplate + parameters.cDestFields),
                  kAddressHelpIds),
      book_(book),
      parameters_(parameters),
      list_(list),
      windowIcon_(resources, address::kDialogIcon),
      icons_(resources) {
  std::copy_n(parameters.lpulDestComps, parameters.cDestFields, wellTypes_.begin());
}

// A provider that let the dialog go while it was called may have registered the sink after that.
AddressDialog::~AddressDialog() { StopWatching(); }

bool AddressDialog::OnInitialise() {
  sink_ = CAdviseSink::Create(Window());
  SetEntryHeights();
  Containers().Fill(book_, {CONVENIENT_DEPTH, 0, &IAddrBook::GetDefaultDir});
  (void)OpenSelectedContainer();
  SendDlgItemMessageW(Window(), address::kTypeAhead, EM_SETLIMITTEXT, kTypeAheadLimit, 0);
  SetTexts();
  FillWells();
  FocusOn(FirstFocus());
  SendMessageW(Window(), WM_SETICON, ICON_SMALL, reinterpret_cast<LPARAM>(windowIcon_.Get()));
  CentreOnDesktop(Window());
  return false;
}

void AddressDialog::SetTexts() {
  if (parameters_.lpszDestWellsTitle != nullptr)
    SetDlgItemTextW(Window(), address::kWellsTitle, parameters_.lpszDestWellsTitle);
  if (parameters_.lpszCaption != nullptr) SetWindowTextW(Window(), parameters_.lpszCaption);
}

// The lists ask for their line height before the dialog has its font; this gives them the right one.
void AddressDialog::SetEntryHeights() {
  const auto font = reinterpret_cast<HFONT>(SendMessageW(Window(), WM_GETFONT, 0, 0));
  const int height = EntryHeight(Window(), font);
  SendMessageW(Entries().Window(), LB_SETITEMHEIGHT, 0, height);
  for (int well = 0; well < Wells(); ++well) SendMessageW(Well(well).Window(), LB_SETITEMHEIGHT, 0, height);
}

int AddressDialog::FirstFocus() const {
  if (Wells() == 0) return address::kContainers;
  const ULONG well = parameters_.nDestFieldFocus;
  return address::kFirstWellButton + (well < parameters_.cDestFields ? static_cast<int>(well) : 0);
}

void AddressDialog::FillWells() {
  if (Wells() == 0 || list_ == nullptr) return;
  for (ULONG i = 0; i < list_->cEntries; ++i) AddToWell(list_->aEntries[i]);
}

void AddressDialog::AddToWell(ADRENTRY& entry) {
  const SPropValue* id = FindValue(entry.rgPropVals, entry.cValues, PR_ENTRYID);
  SPropValue* name = FindValue(entry.rgPropVals, entry.cValues, PR_DISPLAY_NAME_W);
  const SPropValue* type = FindValue(entry.rgPropVals, entry.cValues, PR_RECIPIENT_TYPE);
  const SPropValue* object = FindValue(entry.rgPropVals, entry.cValues, PR_OBJECT_TYPE);
  if (id == nullptr || name == nullptr || type == nullptr || name->Value.lpszW == nullptr) return;
  ShortenLongName(name->Value.lpszW);
  const auto end = wellTypes_.begin() + Wells();
  const auto well = std::find(wellTypes_.begin(), end, static_cast<ULONG>(type->Value.l));
  if (well == end) return;
  const HICON icon = object == nullptr ? nullptr : icons_.For(static_cast<ULONG>(object->Value.l));
  Well(static_cast<int>(well - wellTypes_.begin()))
      .Append(name->Value.lpszW, MakeEntryItem(icon, id->Value.bin));
}

// What happened and is not told again: unlike a button, it is not the user's to press once more.
bool AddressDialog::IsWorthKeeping(WORD control, WORD notification) const {
  switch (control) {
    case address::kRefresh:
      return true;
    case address::kContainers:
      return notification == CBN_SELCHANGE;
    case address::kTypeAhead:
      return notification == EN_CHANGE;
    default:
      return false;
  }
}

bool AddressDialog::OnCommand(WORD control, WORD notification) {
  switch (control) {
    case address::kContainers:
      if (notification == CBN_SELCHANGE) OnContainerChosen();
      return true;
    case address::kTypeAhead:
      if (notification == EN_CHANGE) OnTypeAhead();
      return true;
    case address::kEntries:
      if (notification == LBN_DBLCLK) OnEntryDoubleClick();
      return true;
    // Only the first well reacts to a double click; users of the other two know it so.
    case address::kFirstWell:
      if (notification == LBN_DBLCLK) ShowDetails(control);
      return true;
    case address::kFirstWellButton:
    case address::kFirstWellButton + 1:
    case address::kFirstWellButton + 2:
      MoveToWell(control);
      return true;
    case address::kNewEntry:
      OnNewEntry();
      return true;
    case address::kDetails:
      ShowDetails(address::kEntries);
      return true;
    case address::kDelete:
      DeleteSelection(address::kEntries);
      return true;
    case address::kRefresh:
      OnRefresh();
      return true;
    default:
      return false;
  }
}

INT_PTR AddressDialog::OnOther(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_MEASUREITEM:
      return OnMeasure(*reinterpret_cast<MEASUREITEMSTRUCT*>(lParam));
    case WM_DRAWITEM:
      return OnDraw(*reinterpret_cast<const DRAWITEMSTRUCT*>(lParam));
    case WM_VKEYTOITEM:
      return OnKey(LOWORD(wParam), reinterpret_cast<HWND>(lParam));
    default:
      return FALSE;
  }
}

INT_PTR AddressDialog::OnMeasure(MEASUREITEMSTRUCT& measure) const {
  if (measure.CtlType != ODT_LISTBOX) return FALSE;
  const auto font = reinterpret_cast<HFONT>(SendMessageW(Window(), WM_GETFONT, 0, 0));
  measure.itemHeight = static_cast<UINT>(EntryHeight(Window(), font));
  return TRUE;
}

INT_PTR AddressDialog::OnDraw(const DRAWITEMSTRUCT& draw) const {
  if (draw.CtlType != ODT_LISTBOX) return FALSE;
  const EntryListBox box(draw.hwndItem);
  const int index = static_cast<int>(draw.itemID);
  // An empty list that has the focus asks for line -1.
  const EntryItem* item = index < 0 ? nullptr : box.ItemAt(index);
  DrawEntry(draw, index < 0 ? WString() : box.TextAt(index), item == nullptr ? nullptr : item->icon);
  return TRUE;
}

// What the list box gets back: done (-2), or go on as usual (-1).
INT_PTR AddressDialog::OnKey(WORD key, HWND window) {
  const int control = GetDlgCtrlID(window);
  if (key != VK_DELETE || !IsWellOrEntries(control)) return -1;
  if (!IsBusy()) {
    const Busy busy(*this);
    DeleteSelection(control);
  }
  return -2;
}

bool AddressDialog::IsWellOrEntries(int control) const {
  const int well = control - address::kFirstWell;
  return control == address::kEntries || (well >= 0 && well < Wells());
}

// A second time finds nothing left.
void AddressDialog::OnClosing() {
  StopWatching();
  if (sink_) sink_->Detach();
  sink_.Reset();
  CloseContainer();
  Containers().RemoveAll();
  Entries().RemoveAll();
  for (int well = 0; well < Wells(); ++well) Well(well).RemoveAll();
}

}  // namespace orv::ui
