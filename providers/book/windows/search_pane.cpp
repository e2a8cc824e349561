#include "providers/book/windows/search_pane.h"

#include <algorithm>

#include "formats/contact_properties.h"
#include "providers/book/windows/controls.h"
#include "providers/book/windows/found_entries.h"
#include "providers/book/windows/resource.h"
#include "providers/book/windows/saving.h"

namespace book {
namespace {

constexpr ListView::Column kColumnsOfOne[] = {{IDS_COLUMN_NAME, 46}, {IDS_COLUMN_NUMBER, 54}};
// Namesakes are told apart by the address book that they are in.
constexpr ListView::Column kColumnsOfAll[] = {
    {IDS_COLUMN_NAME, 42}, {IDS_COLUMN_NUMBER, 33}, {IDS_COLUMN_BOOK, 25}};
constexpr size_t kMostFound = 50;  // as many as a person looks through

}  // namespace

void SearchPane::Prepare() {
  FillContainers();
  ShowColumns();
  Search();
}

// All of them first.
void SearchPane::FillContainers() {
  FitDropDown(window_, IDC_CONTAINER);
  const HWND list = window_.Item(IDC_CONTAINER);
  const auto add = [list](const std::wstring& name) {
    SendMessageW(list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(name.c_str()));
  };
  add(window_.Texts().Text(IDS_ALL_CONTAINERS));
  for (const Directory::Container& each : directory_.Containers()) add(each.name);
  SendMessageW(list, CB_SETCURSEL, 0, 0);
}

bool SearchPane::TellsContainers() const {
  return ChosenIn(window_, IDC_CONTAINER) <= 0 && directory_.Containers().size() > 1;
}

void SearchPane::ShowColumns() {
  const ListView list(window_, IDC_FOUND);
  if (TellsContainers()) return list.SetColumns(kColumnsOfAll);
  list.SetColumns(kColumnsOfOne);
}

bool SearchPane::OnCommand(int control, int notification) {
  const bool isTyped = control == IDC_FIND && notification == EN_CHANGE;
  const bool isChosen = control == IDC_CONTAINER && notification == CBN_SELCHANGE;
  if (isTyped) ReadAsTyped(window_, IDC_FIND);
  if (isChosen) ShowColumns();
  if (isTyped || isChosen) Search();
  return isTyped || isChosen;
}

// Providers of other containers may let messages in: what was typed meanwhile has been found already.
void SearchPane::Search() {
  const unsigned search = ++searches_;
  const std::wstring text = window_.TextOf(IDC_FIND);
  std::wstring fault;
  std::vector<FoundEntry> found = FindAll(text, &fault);
  if (search != searches_) return;
  found_ = std::move(found);
  Show(text, fault);
}

// The first of those that any container has. *fault is what is wrong with the first container that cannot be searched.
std::vector<FoundEntry> SearchPane::FindAll(const std::wstring& text, std::wstring* fault) const {
  const int chosen = ChosenIn(window_, IDC_CONTAINER);
  const std::vector<Directory::Container>& containers = directory_.Containers();
  std::vector<FoundEntry> all;
  for (size_t each = 0; each < containers.size(); ++each) {
    if (chosen > 0 && each != static_cast<size_t>(chosen) - 1) continue;
    std::vector<FoundEntry> entries;
    const HRESULT hr = directory_.Find(each, text, kMostFound + 1, &entries);
    if (FAILED(hr) && fault->empty()) {
      const std::wstring values[] = {containers[each].name, FaultText(window_.Texts(), hr)};
      *fault = window_.Texts().Text(IDS_FAULT_OF_CONTAINER, values);
    }
    for (FoundEntry& entry : entries) entry.container = each;
    MergeFound(std::move(entries), &all);
  }
  return all;
}

void SearchPane::Show(const std::wstring& text, const std::wstring& fault) {
  const size_t count = found_.size();
  found_.resize(std::min(count, kMostFound));
  const bool tellsContainers = TellsContainers();
  ListView::Rows rows;
  for (const FoundEntry& each : found_) {
    rows.push_back({each.name, each.address});
    if (tellsContainers) rows.back().push_back(directory_.Containers()[each.container].name);
  }
  const ListView list(window_, IDC_FOUND);
  list.SetRows(rows);
  list.Select(found_.empty() || text.empty() ? -1 : 0);
  window_.SetText(IDC_FOUND_STATE, fault.empty() ? StateOf(count) : fault);
}

std::wstring SearchPane::StateOf(size_t count) const {
  if (count == 0) return window_.Texts().Text(IDS_NOTHING_FOUND);
  const std::wstring values[] = {std::to_wstring(kMostFound)};
  return count > kMostFound ? window_.Texts().Text(IDS_FIRST_FOUND, values) : std::wstring();
}

bool SearchPane::HasSelected() const { return ListView(window_, IDC_FOUND).Selected() >= 0; }

std::vector<EntryId> SearchPane::Selected() const {
  std::vector<EntryId> ids;
  for (const int row : ListView(window_, IDC_FOUND).AllSelected())
    ids.push_back(found_[static_cast<size_t>(row)].id);
  return ids;
}

void SearchPane::SelectAll() const { ListView(window_, IDC_FOUND).SelectAll(); }

std::string SearchPane::TypedNumber() const {
  const std::string typed = Trimmed(TypedIn(window_, IDC_FIND));
  return formats::CanonicalNumber(typed).empty() ? std::string() : typed;
}

void SearchPane::TypeOver() const { SendMessageW(window_.Item(IDC_FIND), EM_SETSEL, 0, -1); }

void SearchPane::Clear() {
  window_.SetText(IDC_FIND, {});
  window_.FocusOn(IDC_FIND);
}

}  // namespace book
