#include "providers/book/windows/items_page.h"

#include "providers/book/text.h"
#include "providers/book/windows/resource.h"

namespace book {
namespace {

constexpr size_t kLongestItem = 500;

}  // namespace

void ItemsPage::Prepare() {
  ListView(window_, controls_.list).SetColumns(Columns());
  FillDropDown(window_, controls_.kind, Kinds());
  window_.LimitText(controls_.text, static_cast<int>(kLongestItem));
  ReadFromTheLeft(window_, controls_.text);
}

void ItemsPage::Fill() {
  steps_.Forget();
  ShowList();
  Select(-1);
}

void ItemsPage::Lock() {
  isLocked_ = true;
  window_.SetReadOnly(controls_.text, true);
  Judge();
}

ItemsPage::Typed ItemsPage::Read() const {
  const int kind = ChosenIn(window_, controls_.kind);
  return {Trimmed(TypedIn(window_, controls_.text)), kind,
          MayBePreferred(kind) && window_.IsChecked(controls_.preferred)};
}

void ItemsPage::Show(const Typed& typed) {
  const Filling filling(isFilling_);
  ShowText(window_, controls_.text, typed.text);
  Choose(window_, controls_.kind, typed.kind);
  window_.Check(controls_.preferred, typed.isPreferred);
}

bool ItemsPage::Differs(const Typed& typed) const {
  return !typed.text.empty() && (selected_ < 0 || !(typed == At(selected_)));
}

// One that stands in the list already is not judged anew.
UINT ItemsPage::FaultAt(const Typed& typed, int row) const {
  const bool isKnown = selected_ >= 0 && At(selected_).text == typed.text;
  if (const UINT fault = isKnown ? 0 : FaultOf(typed.text); fault != 0) return fault;
  for (int each = 0; each < Count(); ++each) {
    if (each != row && IsSame(At(each), typed)) return TwiceFault();
  }
  return 0;
}

bool ItemsPage::HasTyped() const { return !isLocked_ && Differs(Read()); }

UINT ItemsPage::Fault() const {
  const Typed typed = Read();
  return !isLocked_ && Differs(typed) ? FaultAt(typed, selected_) : 0;
}

void ItemsPage::TakeTyped() {
  if (!HasTyped() || Fault() != 0) return;
  if (selected_ < 0) return Add();
  Change();
}

void ItemsPage::Add() {
  steps_.Remember();
  Store(Count(), Read());
  ShowList();
  Select(-1);
  window_.FocusOn(controls_.text);
}

void ItemsPage::Change() {
  const int row = selected_;
  steps_.Remember();
  Store(row, Read());
  ShowList();
  Select(row);
}

void ItemsPage::RemoveSelected() {
  const int row = selected_;
  if (row < 0 || isLocked_) return;
  steps_.Remember();
  Remove(row);
  ShowList();
  Select(row < Count() ? row : Count() - 1);
  window_.FocusOn(Count() != 0 ? controls_.list : controls_.text);
}

void ItemsPage::Move(int by) {
  const int row = selected_;
  steps_.Remember();
  Swap(row, row + by);
  ShowList();
  Select(row + by);
  // The button may be disabled now, and would keep the focus.
  if (!IsWindowEnabled(window_.Item(by < 0 ? controls_.up : controls_.down))) window_.FocusOn(controls_.list);
}

// The last step in the list is taken back.
bool ItemsPage::Undo() {
  if (isLocked_ || !steps_.TakeBack()) return false;
  ShowList();
  Select(-1);
  return true;
}

// Several lines at once become an item each; one that is wrong, or there already, is left out.
bool ItemsPage::Paste() {
  const std::vector<std::string> lines = CopiedLines(window_.Window());
  if (lines.size() < 2 || isLocked_) return false;
  steps_.Remember();
  const int kind = ChosenIn(window_, controls_.kind);
  Select(-1);
  for (const std::string& each : lines) {
    const Typed typed{each, kind, false};
    if (each.size() <= kLongestItem && FaultAt(typed, -1) == 0) Store(Count(), typed);
  }
  ShowList();
  Judge();
  return true;
}

void ItemsPage::Select(int row) {
  {
    const Filling filling(isFilling_);
    ListView(window_, controls_.list).Select(row);
  }
  selected_ = row;
  Show(row < 0 ? Typed{} : At(row));
  Judge();
}

// Nothing is selected then: a row that was may have gone.
void ItemsPage::ShowList() {
  const Filling filling(isFilling_);
  selected_ = -1;
  std::vector<std::vector<std::wstring>> rows;
  for (int row = 0; row < Count(); ++row) {
    const Typed item = At(row);
    rows.push_back({ToWide(item.text), window_.Texts().Text(Kinds()[static_cast<size_t>(item.kind)]),
                    item.isPreferred ? window_.Texts().Text(IDS_PREFERRED) : std::wstring()});
  }
  const ListView list(window_, controls_.list);
  list.SetRows(rows);
  list.FitColumns(Columns(), rows);
}

void ItemsPage::Judge() {
  const Typed typed = Read();
  const bool canTake = !isLocked_ && Differs(typed), isSelected = !isLocked_ && selected_ >= 0;
  window_.Enable(controls_.kind, !isLocked_);
  window_.Enable(controls_.preferred, !isLocked_ && MayBePreferred(typed.kind));
  window_.Enable(controls_.add, canTake && FaultAt(typed, -1) == 0);
  window_.Enable(controls_.change, canTake && isSelected && FaultAt(typed, selected_) == 0);
  window_.Enable(controls_.remove, isSelected);
  window_.Enable(controls_.up, isSelected && selected_ > 0);
  window_.Enable(controls_.down, isSelected && selected_ + 1 < Count());
}

bool ItemsPage::OnCommand(int control, int notification) {
  if (control < controls_.text || control > controls_.down) return false;
  if (isFilling_) return true;
  if (notification == BN_CLICKED) Press(control);
  Judge();
  return true;
}

void ItemsPage::Press(int button) {
  if (button == controls_.add) Add();
  if (button == controls_.change) Change();
  if (button == controls_.remove) RemoveSelected();
  if (button == controls_.up) Move(-1);
  if (button == controls_.down) Move(1);
}

void ItemsPage::OnNotify(const NMHDR& header) {
  const bool isOurs = static_cast<int>(header.idFrom) == controls_.list && IsSelection(header);
  if (!isOurs || isFilling_) return;
  selected_ = ListView(window_, controls_.list).Selected();
  Show(selected_ < 0 ? Typed{} : At(selected_));
  Judge();
}

bool ItemsPage::OnKey(int control, UINT key) {
  const bool isTyping =
      control == controls_.text || control == controls_.kind || control == controls_.preferred;
  if (key == VK_RETURN && isTyping && HasTyped()) {
    if (Fault() != 0) return MessageBeep(MB_ICONWARNING), true;
    TakeTyped();
    return true;
  }
  if (IsControlKey(key, 'V') && control == controls_.text) return Paste();
  if (IsControlKey(key, 'Z') && control == controls_.list) return Undo();
  if (key != VK_DELETE || control != controls_.list) return false;
  RemoveSelected();
  return true;
}

}  // namespace book
