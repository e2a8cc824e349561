// The Address dialog: set-up, dispatch, and what its controls do with each other.
#include "ui/address/address_dialog.h"

#include <array>

#include "orv/orvflags.h"
#include "platform/boundary.h"
#include "ui/address/address_result.h"
#include "ui/address/entry_drawing.h"
#include "ui/address/new_entry_dialog.h"
#include "ui/address/provider_words.h"
#include "ui/help_ids.h"
#include "ui/localisation.h"
#include "ui/message_box.h"
#include "ui/window_utils.h"

namespace orv::ui {
namespace {

constexpr WPARAM kTypeAheadLimit = 64;
// Of the line under the list, and of a reason in a message.
constexpr std::size_t kTextCapacity = 160;
// What WM_VKEYTOITEM gives a list box back.
constexpr INT_PTR kKeyDealtWith = -2;
constexpr INT_PTR kKeyAsUsual = -1;

}  // namespace

AddressDialog::AddressDialog(HMODULE resources, IAddrBook& book, const ADRPARM& parameters, ADRLIST*& list)
    : ModalDialog(resources, static_cast<WORD>(address::kAddressTemplate + parameters.cDestFields),
                  kAddressHelpIds),
      book_(book),
      parameters_(parameters),
      list_(list),
      windowIcon_(resources, address::kDialogIcon),
      icons_(resources),
      wells_(parameters),
      container_(book),
      actions_(book, container_, icons_) {}

bool AddressDialog::OnInitialise() {
  wells_.Attach(Window());
  container_.TellChangesTo(Window());
  SetEntryHeights();
  Containers().Fill(book_, {0, &IAddrBook::GetDefaultDir});
  (void)ShowContainer(Containers().Selected());
  SendDlgItemMessageW(Window(), address::kTypeAhead, EM_SETLIMITTEXT, kTypeAheadLimit, 0);
  SetTexts();
  if (list_ != nullptr) wells_.Fill(*list_, icons_);
  FocusOn(FirstFocus());
  SendMessageW(Window(), WM_SETICON, ICON_SMALL, reinterpret_cast<LPARAM>(windowIcon_.Get()));
  CentreOnDesktop(Window());
  return false;
}

void AddressDialog::SetTexts() {
  wells_.SetTexts();
  if (parameters_.lpszCaption != nullptr) SetWindowTextW(Window(), parameters_.lpszCaption);
}

// The lists ask for their line height before the dialog has its font; this gives them the right one.
void AddressDialog::SetEntryHeights() {
  const int height = EntryHeight(Window());
  SendMessageW(Entries().Window(), LB_SETITEMHEIGHT, 0, height);
  for (int well = 0; well < wells_.Count(); ++well)
    SendMessageW(wells_.At(well).Window(), LB_SETITEMHEIGHT, 0, height);
}

int AddressDialog::FirstFocus() const {
  return wells_.Count() == 0 ? address::kContainers : wells_.FirstButton();
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
      if (notification == LBN_DBLCLK) Run(&AddressDialog::ShowDetails, control);
      return true;
    case address::kFirstWellButton:
    case address::kFirstWellButton + 1:
    case address::kFirstWellButton + 2:
      MoveToWell(control);
      return true;
    case address::kNewEntry:
      Run(&AddressDialog::MakeNewEntry);
      return true;
    case address::kDetails:
      Run(&AddressDialog::ShowDetails);
      return true;
    case address::kDelete:
      Run(&AddressDialog::DeleteEntries);
      return true;
    case address::kRefresh:
      if (!container_.TakeOwnChange()) RefillEntries();
      return true;
    default:
      return false;
  }
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

void AddressDialog::OnContainerChosen() {
  const EntryId chosen = Containers().Selected();
  if (container_.Is(chosen)) return;
  if (FAILED(ShowContainer(chosen))) ShowError(address::kCannotOpenEntry);
}

// A container that cannot be opened shows no entries; choosing it again tries again.
HRESULT AddressDialog::ShowContainer(const EntryId& container) {
  const HRESULT hr = container_.Open(container);
  FillEntries();
  if (SUCCEEDED(hr)) container_.Watch();
  return hr;
}

// What was read before a failure is shown.
void AddressDialog::FillEntries() {
  {
    EntryListBox box = Entries();
    const RedrawPause pause(box.Window());
    box.RemoveAll();
    listed_ = GuardedForeign([&] { return container_.ReadEntries(icons_, box); });
  }
  ShowStatus();
  if (listed_ == MAPI_E_NOT_ENOUGH_MEMORY && container_.IsOpen()) ShowError(address::kOutOfMemory);
}

// Whoever is choosing goes on where he was.
void AddressDialog::RefillEntries() {
  const EntryListBox::View view = Entries().CurrentView();
  FillEntries();
  if (IsWindow(Window())) Entries().Show(view);
}

void AddressDialog::ShowStatus() {
  if (!IsWindow(Window())) return;
  const auto count = static_cast<ULONG>(Entries().Count());
  const HRESULT state = count == 0 && SUCCEEDED(listed_) ? container_.WhyEmpty() : listed_;
  const bool hasContainers = !Containers().Selected().IsEmpty();
  const WString text = hasContainers ? StatusText(Resources(), count, state)
                                     : LoadText(Resources(), address::kStatusNoBook, kTextCapacity);
  SetDlgItemTextW(Window(), address::kStatus, text.c_str());
}

void AddressDialog::Run(bool (AddressDialog::*action)(int), int list) {
  container_.RunOwn([&] { return (this->*action)(list); });
  ShowStatus();
}

// The dialog may have gone with its owner while the provider was called.
bool AddressDialog::HasWorked(EntryCommand command, HRESULT hr, const EntryId& of) {
  if (SUCCEEDED(hr)) return true;
  if (hr == MAPI_E_USER_CANCEL || !IsWindow(Window())) return false;
  const WString words = of.IsEmpty() ? container_.WordsFor(hr) : WordsOfIssuer(book_, of, hr);
  ShowText(FailureText(Resources(), command, hr, words), Resources(), Window(), MB_ICONERROR);
  return false;
}

// Every container can only be read.
void AddressDialog::TellNoPlace() {
  const WString reason = LoadText(Resources(), address::kReasonNoPlace, kTextCapacity);
  ShowText(FailureText(Resources(), EntryCommand::kNew, MAPI_E_NOT_FOUND, reason), Resources(), Window(),
           MB_ICONERROR);
}

void AddressDialog::OnTypeAhead() {
  std::array<WCHAR, kTypeAheadLimit + 1> text{};
  if (GetDlgItemTextW(Window(), address::kTypeAhead, text.data(), kTypeAheadLimit + 1) == 0) return;
  EntryListBox box = Entries();
  if (const int found = box.FindPrefix(text.data()); found >= 0) box.SelectOnly(found);
}

void AddressDialog::MoveToWell(int button) {
  const EntryListBox entries = Entries();
  const std::vector<int> selected = entries.Selection();
  if (selected.empty()) return ShowError(address::kNothingSelected);
  EntryListBox well = List(button - address::kWellButtonOffset);
  const RedrawPause pause(well.Window());
  for (const int line : selected) {
    if (const EntryItem* item = entries.ItemAt(line))
      well.Append(entries.TextAt(line).c_str(), std::make_unique<EntryItem>(*item));
  }
}

void AddressDialog::OnEntryDoubleClick() {
  if (wells_.Count() == 0) {
    Run(&AddressDialog::ShowDetails);
  } else {
    MoveToWell(wells_.FirstButton());
  }
}

bool AddressDialog::ShowDetails(int list) {
  const std::vector<int> selected = List(list).Selection();
  if (selected.size() != 1) return ShowError(address::kSelectOneForDetails), false;
  const EntryItem* item = List(list).ItemAt(selected.front());
  const EntryId shown = item != nullptr ? item->entryId : EntryId();
  const HRESULT hr = actions_.ShowDetails(Window(), List(list), selected.front());
  return HasWorked(EntryCommand::kDetails, hr, shown) && hr != S_FALSE;
}

bool AddressDialog::DeleteEntries(int list) {
  const std::vector<int> selected = List(list).Selection();
  if (selected.empty() || !AskQuestion(address::kConfirmDeletion, Resources(), Window())) return false;
  ULONG left = 0;
  if (!HasWorked(EntryCommand::kDelete, actions_.Delete(List(list), selected, left))) return false;
  if (left != 0) ShowText(LeftOverText(Resources(), left), Resources(), Window(), MB_ICONWARNING);
  return true;
}

bool AddressDialog::MakeNewEntry(int list) {
  // Entries for one message only do not exist here, so that choice stays disabled.
  NewEntryDialog question(Resources(), book_, false);
  if (question.Show(Window()) != IDOK) return false;
  const EntryId container = question.Container();
  if (container.IsEmpty()) return TellNoPlace(), false;
  EntryId made;
  const HRESULT hr = actions_.MakeNew(Window(), container, made);
  if (!HasWorked(EntryCommand::kNew, hr, container)) return false;
  return Containers().Selected() == container && actions_.AddLine(List(list), made);
}

// Without wells the caller gets one entry if it asked for one, else its list as it was.
void AddressDialog::OnOk() {
  if (wells_.Count() > 0) {
    result_ = ReplaceByRecipients(book_, wells_.Recipients(), list_);
  } else if (parameters_.ulFlags & ADDRESS_ONE) {
    const std::vector<int> selected = Entries().Selection();
    if (selected.size() != 1)
      return ShowError(selected.empty() ? address::kNothingSelected : address::kSelectOnlyOne);
    result_ = ChooseOne(Entries(), selected.front());
  }
  if (FAILED(result_)) return ShowError(address::kCannotOpenEntry);
  Close(IDOK);
}

HRESULT AddressDialog::ChooseOne(EntryListBox box, int line) {
  const EntryItem* item = box.ItemAt(line);
  if (item == nullptr) return MAPI_E_NOT_FOUND;
  return ReplaceByOne(book_, {item->entryId, MAPI_TO}, list_);
}

INT_PTR AddressDialog::OnOther(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_MEASUREITEM:
      return MeasureEntry(Window(), *reinterpret_cast<MEASUREITEMSTRUCT*>(lParam));
    case WM_DRAWITEM:
      return DrawListedEntry(*reinterpret_cast<const DRAWITEMSTRUCT*>(lParam));
    case WM_VKEYTOITEM:
      return OnKey(LOWORD(wParam), GetDlgCtrlID(reinterpret_cast<HWND>(lParam)));
    default:
      return FALSE;
  }
}

INT_PTR AddressDialog::OnKey(WORD key, int list) {
  const bool isEntries = list == address::kEntries;
  if (key != VK_DELETE || !(isEntries || wells_.Has(list))) return kKeyAsUsual;
  if (IsBusy()) return kKeyDealtWith;
  const Busy busy(*this);
  if (isEntries) {
    Run(&AddressDialog::DeleteEntries);
  } else {
    List(list).Remove(List(list).Selection());
  }
  return kKeyDealtWith;
}

void AddressDialog::OnClosing() {
  container_.Release();
  Containers().RemoveAll();
  Entries().RemoveAll();
  wells_.RemoveAll();
}

}  // namespace orv::ui
