// Controls of the windows: report lists, drop-downs, and texts between edits and contacts.
#pragma once

#include <string>
#include <vector>

#include "orv/kit/window.hpp"

namespace book {

namespace kit = orv::kit;

// A list view in report form.
class ListView {
 public:
  ListView(const kit::Dialog& window, int control) : texts_(window.Texts()), list_(window.Item(control)) {}

  // Headings and how many hundredths of the list's width each column takes.
  struct Column {
    UINT title;
    int share;
  };
  using Rows = std::vector<std::vector<std::wstring>>;
  // In the place of those that there are.
  void SetColumns(std::span<const Column> columns) const;
  void SetRows(const Rows& rows) const;
  // Each column as wide as its cells need; what room is left, or missing, is shared.
  void FitColumns(std::span<const Column> columns, const Rows& rows) const;
  void SetCell(int row, int column, const std::wstring& text) const;
  int Selected() const;  // the first; -1: none
  std::vector<int> AllSelected() const;
  // That one and no other; -1: none.
  void Select(int row) const;
  void SelectAll() const;

 private:
  int WidthOf(const std::wstring& text) const;
  int SelectedBehind(int row) const;

  const kit::Language& texts_;
  const HWND list_;
};

// A row of a list was selected, or the selection has gone.
bool IsSelection(const NMHDR& header);
// What a list asks while it draws: the result of its notification, 0 of any other.
LRESULT DrawList(const NMHDR& header);

// The wait cursor, while it lives.
class Waiting {
 public:
  Waiting() : before_(SetCursor(LoadCursorW(nullptr, IDC_WAIT))) {}
  ~Waiting() { SetCursor(before_); }
  Waiting(const Waiting&) = delete;
  Waiting& operator=(const Waiting&) = delete;

 private:
  HCURSOR before_;
};

void FitDropDown(const kit::Dialog& window, int control);
void FillDropDown(const kit::Dialog& window, int control, std::span<const UINT> texts);
int ChosenIn(const kit::Dialog& window, int control);
void Choose(const kit::Dialog& window, int control, int row);

// Of an edit for what reads so in every language: paths, numbers, e-mail addresses.
void ReadFromTheLeft(const kit::Dialog& window, int control);
// Of an edit for anything, in a window that is mirrored: as what stands in it reads, so that numbers read as numbers.
void ReadAsTyped(const kit::Dialog& window, int control);
// For texts among others that run from the right: one that reads from the left is kept together in its order.
std::wstring InItsOrder(const kit::Language& language, std::wstring text);

// The text of an edit as a contact keeps it: without control characters but line feeds.
std::string TypedIn(const kit::Dialog& window, int control);
// Read as ReadAsTyped says.
void ShowText(const kit::Dialog& window, int control, std::string_view text);
std::string Trimmed(std::string_view text);

// Ctrl and the letter are what goes down.
bool IsControlKey(UINT key, char letter);
// The lines of the clipboard's text, without empty ones.
std::vector<std::string> CopiedLines(HWND owner);

}  // namespace book
