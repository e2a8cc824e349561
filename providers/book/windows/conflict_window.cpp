#include "providers/book/windows/conflict_window.h"

#include <algorithm>

#include "providers/book/text.h"
#include "providers/book/windows/controls.h"
#include "providers/book/windows/help_topics.h"
#include "providers/book/windows/resource.h"

namespace book {
namespace {

constexpr ListView::Column kColumns[] = {
    {IDS_COLUMN_FIELD, 24}, {IDS_COLUMN_MINE, 30}, {IDS_COLUMN_THEIRS, 30}, {IDS_COLUMN_KEPT, 16}};
constexpr int kKeptColumn = 3;

std::wstring InOneLine(std::wstring text) {
  for (size_t at = text.find(L'\n'); at != text.npos; at = text.find(L'\n', at)) text.replace(at, 1, L"; ");
  return text;
}

}  // namespace

ConflictWindow::ConflictWindow(const kit::Language& language, const formats::Contact& base,
                               const formats::Contact& mine, const formats::Contact& theirs)
    : Dialog(language, IDD_CONFLICT, kConflictTopics), mine_(mine), theirs_(theirs) {
  for (int i = 0; i < static_cast<int>(Field::kCount); ++i) {
    const auto field = static_cast<Field>(i);
    if (!IsSame(mine, theirs, field)) differences_.push_back({field, !IsSame(mine, base, field)});
  }
}

formats::Contact ConflictWindow::Chosen() const {
  formats::Contact chosen = theirs_;
  for (const Difference& each : differences_) {
    if (each.keepsMine) Copy(mine_, each.field, &chosen);
  }
  return chosen;
}

std::vector<std::wstring> ConflictWindow::CellsOf(const Difference& difference) const {
  return {Texts().Text(TitleOf(difference.field)), InOneLine(book::TextOf(Texts(), mine_, difference.field)),
          InOneLine(book::TextOf(Texts(), theirs_, difference.field)),
          Texts().Text(difference.keepsMine ? IDS_KEPT_MINE : IDS_KEPT_THEIRS)};
}

void ConflictWindow::OnShow() {
  std::vector<std::vector<std::wstring>> rows;
  for (const Difference& each : differences_) rows.push_back(CellsOf(each));
  const ListView list(*this, IDC_DIFFERENCES);
  list.SetColumns(kColumns);
  list.SetRows(rows);
  list.FitColumns(kColumns, rows);
  list.Select(0);
  ShowSelected();
  FocusOn(IDC_DIFFERENCES);
}

void ConflictWindow::ShowSelected() {
  selected_ = ListView(*this, IDC_DIFFERENCES).Selected();
  const bool isSelected = selected_ >= 0;
  for (const int each : {IDC_KEEP_MINE, IDC_KEEP_THEIRS}) Enable(each, isSelected);
  for (const int each : {IDC_MINE, IDC_THEIRS}) SetText(each, {});
  if (!isSelected) return;
  const Difference& shown = differences_[static_cast<size_t>(selected_)];
  Check(IDC_KEEP_MINE, shown.keepsMine);
  Check(IDC_KEEP_THEIRS, !shown.keepsMine);
  ShowText(*this, IDC_MINE, ToUtf8(book::TextOf(Texts(), mine_, shown.field)));
  ShowText(*this, IDC_THEIRS, ToUtf8(book::TextOf(Texts(), theirs_, shown.field)));
}

void ConflictWindow::Keep(bool keepsMine) {
  if (selected_ < 0) return;
  differences_[static_cast<size_t>(selected_)].keepsMine = keepsMine;
  ListView(*this, IDC_DIFFERENCES)
      .SetCell(selected_, kKeptColumn, Texts().Text(keepsMine ? IDS_KEPT_MINE : IDS_KEPT_THEIRS));
}

bool ConflictWindow::OnCommand(int control, int notification) {
  const bool isChoice = control == IDC_KEEP_MINE || control == IDC_KEEP_THEIRS;
  if (!isChoice || notification != BN_CLICKED) return false;
  Keep(control == IDC_KEEP_MINE);
  return true;
}

LRESULT ConflictWindow::OnNotify(const NMHDR& header) {
  if (header.idFrom == IDC_DIFFERENCES && IsSelection(header)) ShowSelected();
  return DrawList(header);
}

}  // namespace book
