#include "providers/book/windows/list_window.h"

#include <commctrl.h>

#include <algorithm>

#include "formats/contact_properties.h"
#include "providers/book/text.h"
#include "providers/book/windows/contact_fields.h"
#include "providers/book/windows/contact_window.h"
#include "providers/book/windows/controls.h"
#include "providers/book/windows/entry_window.h"
#include "providers/book/windows/help_topics.h"
#include "providers/book/windows/resource.h"
#include "providers/book/windows/saving.h"
#include "providers/book/windows/search_pane.h"
#include "providers/book/windows/steps.h"

namespace book {
namespace {

constexpr ListView::Column kMemberColumns[] = {
    {IDS_COLUMN_NAME, 34}, {IDS_COLUMN_NUMBER, 42}, {IDS_COLUMN_WHAT, 24}};
constexpr int kLongestName = 500;

bool IsSame(const formats::ContactMember& one, const formats::ContactMember& other) {
  const bool isOurs = !one.uid.empty();
  if (isOurs == other.uid.empty() || one.number != other.number) return false;
  if (isOurs) return KeyOfUid(one.uid) == KeyOfUid(other.uid);
  return one.email == other.email && one.entryId == other.entryId;
}

formats::ContactMember MemberWithNumber(const std::string& number) {
  formats::ContactMember member;
  member.name = member.number = number;
  return member;
}

// A number or an e-mail address of nobody who is in a book.
bool IsTyped(const formats::ContactMember& member) {
  const bool isEntry = !member.uid.empty() || !member.entryId.empty();
  return !isEntry && !(member.number.empty() && member.email.empty());
}

class ListWindow final : public EntryWindow {
 public:
  ListWindow(const kit::Language& language, const std::shared_ptr<Store>& store, Directory& directory,
             const Entry& entry)
      : EntryWindow(language, store->IsReadOnly() ? IDD_LIST_READ_ONLY : IDD_LIST, kListTopics, store, entry),
        directory_(directory),
        search_(*this, directory),
        steps_(contact_, Field::kMembers) {}

 private:
  void OnShow() override;
  bool OnCommand(int control, int notification) override;
  LRESULT OnNotify(const NMHDR& header) override;
  bool OnKey(int control, UINT key) override;
  bool OnMembersKey(UINT key);
  void Refill() override;
  UINT Fault() const override;
  void Press(int button);
  void TakeName();
  void ShowSelection();
  UINT Hint() const override { return hint_; }
  void ShowButtons();
  std::vector<std::wstring> CellsOf(const formats::ContactMember& member) const;
  std::vector<std::wstring> CellsOfOwn(const formats::ContactMember& member) const;
  std::vector<std::wstring> CellsOfForeign(const formats::ContactMember& member) const;
  void ShowMembers(int selected);
  void ReadMembers();
  void Take(std::span<const formats::ContactMember> members);
  int Place(const formats::ContactMember& member);
  HRESULT MemberOf(const EntryId& id, formats::ContactMember* member);
  void AddFound();
  void AddTyped();
  void Remove();
  void Move(int by);
  int Selected() const { return ListView(*this, IDC_MEMBERS).Selected(); }
  bool Undo();
  bool Paste();
  bool OpenMember();
  HRESULT ShowMember(const formats::ContactMember& member);

  Directory& directory_;
  SearchPane search_;
  ListView::Rows rows_;  // of the members: each is read once
  Steps steps_;
  UINT hint_ = 0;
  bool isFilling_ = false;
};

void ListWindow::OnShow() {
  ShowCaption(IDS_CAPTION_OF_LIST, IDS_CAPTION_OF_NEW_LIST);
  LimitText(IDC_LIST_NAME, kLongestName);
  ListView(*this, IDC_MEMBERS).SetColumns(kMemberColumns);
  Refill();
  if (!IsReadOnly()) search_.Prepare();
  ShowButtons();
  FocusOn(IsReadOnly() ? IDC_MEMBERS : IDC_LIST_NAME);
  Judge();
}

void ListWindow::Refill() {
  isFilling_ = true;
  ShowText(*this, IDC_LIST_NAME, contact_.name);
  isFilling_ = false;
  steps_.Forget();
  ReadMembers();
  ShowMembers(-1);
}

UINT ListWindow::Fault() const { return Trimmed(contact_.name).empty() ? IDS_FAULT_NO_LIST_NAME : 0; }

void ListWindow::ShowButtons() {
  const int selected = Selected(), last = static_cast<int>(contact_.members.size()) - 1;
  const bool canChange = !IsReadOnly(), isSelected = canChange && selected >= 0;
  Enable(IDC_MEMBER_ADD, canChange && search_.HasSelected());
  Enable(IDC_MEMBER_ADD_NUMBER, canChange && !search_.TypedNumber().empty());
  Enable(IDC_MEMBER_REMOVE, isSelected);
  Enable(IDC_MEMBER_UP, isSelected && selected > 0);
  Enable(IDC_MEMBER_DOWN, isSelected && selected < last);
}

// What it is now, as the book has it.
std::vector<std::wstring> ListWindow::CellsOfOwn(const formats::ContactMember& member) const {
  Entry entry;
  if (const HRESULT hr = store_->Read(KeyOfUid(member.uid), &entry); FAILED(hr))
    return {ToWide(member.name), ToWide(member.number),
            Texts().Text(hr == MAPI_E_NOT_FOUND ? IDS_MEMBER_MISSING : IDS_BOOK_UNREADABLE)};
  const formats::ContactNumber* main = formats::MainFax(entry.contact);
  const std::string number = member.number.empty() && main != nullptr ? main->text : member.number;
  return {ToWide(entry.contact.name), ToWide(number),
          Texts().Text(entry.contact.isList ? IDS_MEMBER_LIST : IDS_MEMBER_CONTACT)};
}

// What its own book says of it now; one that cannot be asked is shown as it was taken.
std::vector<std::wstring> ListWindow::CellsOfForeign(const formats::ContactMember& member) const {
  FoundEntry now{ToWide(member.name), {}, {member.entryId.begin(), member.entryId.end()}};
  const HRESULT hr = directory_.Look(&now);
  return {now.name, now.address,
          Texts().Text(hr == MAPI_E_NOT_FOUND ? IDS_MEMBER_MISSING : IDS_MEMBER_FOREIGN)};
}

std::vector<std::wstring> ListWindow::CellsOf(const formats::ContactMember& member) const {
  if (!member.uid.empty()) return CellsOfOwn(member);
  if (!member.entryId.empty()) return CellsOfForeign(member);
  const std::wstring number = ToWide(member.number), email = ToWide(member.email);
  const std::wstring address = number.empty() ? email : number;
  const UINT what = !member.number.empty()  ? IDS_MEMBER_NUMBER
                    : !member.email.empty() ? IDS_MEMBER_EMAIL
                                            : IDS_MEMBER_MISSING;
  if (member.name.empty()) return {address, number, Texts().Text(what)};
  return {ToWide(member.name), address, Texts().Text(what)};
}

void ListWindow::ReadMembers() {
  rows_.clear();
  for (const formats::ContactMember& each : contact_.members) rows_.push_back(CellsOf(each));
}

void ListWindow::ShowMembers(int selected) {
  const ListView list(*this, IDC_MEMBERS);
  list.SetRows(rows_);
  list.FitColumns(kMemberColumns, rows_);
  list.Select(selected);
  ShowButtons();
}

// Where it stands now; one that is there already stays as it is.
int ListWindow::Place(const formats::ContactMember& member) {
  std::vector<formats::ContactMember>& members = contact_.members;
  const auto isIt = [&](const formats::ContactMember& each) { return IsSame(each, member); };
  const auto known = std::find_if(members.begin(), members.end(), isIt);
  const auto at = static_cast<int>(known - members.begin());
  if (known == members.end()) {
    rows_.push_back(CellsOf(member));
    members.push_back(member);
  }
  return at;
}

// In one step; the last one is shown.
void ListWindow::Take(std::span<const formats::ContactMember> members) {
  if (members.empty()) return;
  const size_t before = contact_.members.size();
  int last = Selected();
  steps_.Remember();
  for (const formats::ContactMember& each : members) last = Place(each);
  ShowMembers(last);
  hint_ = contact_.members.size() == before ? IDS_HINT_THERE : 0;
  Judge();
}

HRESULT ListWindow::MemberOf(const EntryId& id, formats::ContactMember* member) {
  const HRESULT hr = directory_.MemberOf(id, member);
  const bool isItself = SUCCEEDED(hr) && !member->uid.empty() && KeyOfUid(member->uid) == entry_.key;
  return isItself ? MAPI_E_FOLDER_CYCLE : hr;
}

// Those that can be; why the last of the others cannot is told.
void ListWindow::AddFound() {
  if (IsReadOnly()) return;
  HRESULT fault = S_OK;
  std::vector<formats::ContactMember> members;
  for (const EntryId& each : search_.Selected()) {
    formats::ContactMember member;
    const HRESULT hr = MemberOf(each, &member);
    if (SUCCEEDED(hr)) members.push_back(std::move(member));
    if (FAILED(hr)) fault = hr;
  }
  Take(members);
  const bool isItself = fault == MAPI_E_FOLDER_CYCLE;
  if (FAILED(fault))
    Tell(isItself ? Texts().Text(IDS_FAULT_LIST_ITSELF) : EntryFaultText(Texts(), fault), MB_ICONWARNING);
  search_.TypeOver();
}

void ListWindow::AddTyped() {
  const std::string number = search_.TypedNumber();
  if (number.empty() || IsReadOnly()) return;
  const formats::ContactMember member = MemberWithNumber(number);
  Take({&member, 1});
  search_.Clear();
}

void ListWindow::Remove() {
  const int row = Selected();
  if (row < 0 || IsReadOnly()) return;
  steps_.Remember();
  contact_.members.erase(contact_.members.begin() + row);
  rows_.erase(rows_.begin() + row);
  const int last = static_cast<int>(contact_.members.size()) - 1;
  ShowMembers(std::min(row, last));
  FocusOn(IDC_MEMBERS);
}

void ListWindow::Move(int by) {
  const int row = Selected();
  const auto at = static_cast<size_t>(row), other = static_cast<size_t>(row + by);
  steps_.Remember();
  std::swap(contact_.members[at], contact_.members[other]);
  std::swap(rows_[at], rows_[other]);
  ShowMembers(row + by);
  // The button may be disabled now, and would keep the focus.
  if (!IsWindowEnabled(Item(by < 0 ? IDC_MEMBER_UP : IDC_MEMBER_DOWN))) FocusOn(IDC_MEMBERS);
}

// The last step in the members is taken back.
bool ListWindow::Undo() {
  if (IsReadOnly() || !steps_.TakeBack()) return false;
  ReadMembers();
  ShowMembers(-1);
  return true;
}

// Several lines at once become a number each.
bool ListWindow::Paste() {
  const std::vector<std::string> lines = CopiedLines(Window());
  if (lines.size() < 2 || IsReadOnly()) return false;
  std::vector<formats::ContactMember> members;
  for (const std::string& each : lines) {
    if (!formats::CanonicalNumber(each).empty()) members.push_back(MemberWithNumber(each));
  }
  if (members.empty()) return false;
  Take(members);
  return true;
}

// What it is now is shown, and can be changed where its book lets it.
bool ListWindow::OpenMember() {
  const int row = Selected();
  if (row < 0) return false;
  const formats::ContactMember member = contact_.members[static_cast<size_t>(row)];
  const bool isTyped = IsTyped(member);
  hint_ = isTyped ? IDS_HINT_TYPED : 0;
  if (isTyped) return Judge(), true;
  const HRESULT hr = ShowMember(member);
  if (FAILED(hr) && hr != MAPI_E_USER_CANCEL) Tell(EntryFaultText(Texts(), hr));
  ReadMembers();
  ShowMembers(row);
  return true;
}

HRESULT ListWindow::ShowMember(const formats::ContactMember& member) {
  if (member.uid.empty() && member.entryId.empty()) return MAPI_E_NOT_FOUND;
  if (member.uid.empty()) return directory_.Show(Window(), {member.entryId.begin(), member.entryId.end()});
  const EntryKey key = KeyOfUid(member.uid);
  Entry entry;
  if (const HRESULT hr = store_->Read(key, &entry); FAILED(hr)) return hr;
  if (entry.contact.isList) return ShowList(Window(), Texts(), store_, directory_, key);
  const uint32_t number = member.number.empty() ? 0 : formats::NumberKey(member.number);
  return ShowContact(Window(), Texts(), store_, key, number);
}

void ListWindow::Press(int button) {
  switch (button) {
    case IDC_MEMBER_ADD:
      return AddFound();
    case IDC_MEMBER_ADD_NUMBER:
      return AddTyped();
    case IDC_MEMBER_REMOVE:
      return Remove();
    case IDC_MEMBER_UP:
      return Move(-1);
    case IDC_MEMBER_DOWN:
      return Move(1);
    default:
      return;
  }
}

bool ListWindow::OnCommand(int control, int notification) {
  if (control < IDC_LIST_NAME || control > IDC_MEMBER_DOWN) return false;
  if (isFilling_) return true;
  if (control == IDC_LIST_NAME && notification == EN_CHANGE) TakeName();
  if (search_.OnCommand(control, notification)) ShowButtons();
  if (notification == BN_CLICKED) Press(control);
  Judge();
  return true;
}

void ListWindow::TakeName() {
  contact_.name = TypedIn(*this, IDC_LIST_NAME);
  ReadAsTyped(*this, IDC_LIST_NAME);
}

LRESULT ListWindow::OnNotify(const NMHDR& header) {
  const bool isDoubleClick = header.code == static_cast<UINT>(NM_DBLCLK);
  if (IsSelection(header)) ShowSelection();
  if (header.idFrom == IDC_FOUND && isDoubleClick) AddFound();
  if (header.idFrom == IDC_MEMBERS && isDoubleClick) OpenMember();
  return DrawList(header);
}

void ListWindow::ShowSelection() {
  hint_ = 0;
  ShowButtons();
  Judge();
}

bool ListWindow::OnMembersKey(UINT key) {
  if (key == VK_DELETE) return Remove(), Judge(), true;
  if (IsControlKey(key, 'Z')) return Undo();
  return key == VK_RETURN && OpenMember();
}

bool ListWindow::OnKey(int control, UINT key) {
  if (control == IDC_MEMBERS) return OnMembersKey(key);
  if (IsControlKey(key, 'V') && control == IDC_FIND) return Paste();
  if (IsControlKey(key, 'A') && control == IDC_FOUND) return search_.SelectAll(), true;
  const bool isSearching = control == IDC_FIND || control == IDC_FOUND;
  if (key != VK_RETURN || !isSearching || IsReadOnly()) return false;
  const bool isFound = search_.HasSelected();
  if (!isFound && (control == IDC_FOUND || search_.TypedNumber().empty())) return false;
  if (isFound) AddFound();
  if (!isFound) AddTyped();
  Judge();
  return true;
}

}  // namespace

HRESULT ShowList(HWND owner, const kit::Language& language, const std::shared_ptr<Store>& store,
                 Directory& directory, const EntryKey& key) {
  Entry entry;
  const HRESULT hr = store->Read(key, &entry);
  return FAILED(hr) ? hr : ListWindow(language, store, directory, entry).Run(owner);
}

HRESULT ShowNewList(HWND owner, const kit::Language& language, const std::shared_ptr<Store>& store,
                    Directory& directory, EntryKey* made) {
  Entry entry;
  entry.contact.isList = true;
  const auto showOther = [&](const EntryKey& other) {
    return ShowList(owner, language, store, directory, other);
  };
  return ListWindow(language, store, directory, entry).RunNew(owner, showOther, made);
}

}  // namespace book
