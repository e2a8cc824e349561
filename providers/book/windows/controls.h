// Controls of the windows: report lists, drop-downs, and texts between edits and contacts.
#pragma once

#include <string>
#include <vector>

#include "orv/kit/window.hpp"

namespace book {

namespace kit = orv::kit;

// A list view in report form with one selection.
class ListView {
 public:
  ListView(const kit::Dialog& window, int control) : list_(window.Item(control)) {}

  // Headings and how many hundredths of the list's width each column takes.
  struct Column {
    UINT title;
    int share;
  };
  void SetColumns(const kit::Language& language, std::span<const Column> columns) const;
  void SetRows(const std::vector<std::vector<std::wstring>>& rows) const;
  void SetCell(int row, int column, const std::wstring& text) const;
  int Selected() const;  // -1: none
  void Select(int row) const;
  int Count() const;

 private:
  HWND list_;
};

// A row of a list was selected, or the selection has gone.
bool IsSelection(const NMHDR& header);
// What a list asks while it draws: the result of its notification, 0 of any other.
LRESULT DrawList(const NMHDR& header);

void FillDropDown(const kit::Dialog& window, int control, std::span<const UINT> texts);
int ChosenIn(const kit::Dialog& window, int control);
void Choose(const kit::Dialog& window, int control, int row);

// Of an edit for what reads so in every language: paths, numbers, e-mail addresses.
void ReadFromTheLeft(const kit::Dialog& window, int control);

// The text of an edit as a contact keeps it: without control characters but line feeds.
std::string TypedIn(const kit::Dialog& window, int control);
void ShowText(const kit::Dialog& window, int control, std::string_view text);
std::string Trimmed(std::string_view text);

// Ctrl and the letter are what goes down.
bool IsControlKey(UINT key, char letter);
// The lines of the clipboard's text, without empty ones.
std::vector<std::string> CopiedLines(HWND owner);

}  // namespace book
