// A list box of the Address dialog whose lines own an EntryItem each.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "platform/win.h"
#include "ui/address/entry_item.h"

namespace orv::ui {

// Redrawing is off while this lives; afterwards the window is painted anew.
class RedrawPause {
 public:
  explicit RedrawPause(HWND window) noexcept : window_(window) {
    SendMessageW(window_, WM_SETREDRAW, FALSE, 0);
  }
  ~RedrawPause() {
    SendMessageW(window_, WM_SETREDRAW, TRUE, 0);
    InvalidateRect(window_, nullptr, TRUE);
  }
  RedrawPause(const RedrawPause&) = delete;
  RedrawPause& operator=(const RedrawPause&) = delete;

 private:
  HWND window_;
};

class EntryListBox {
 public:
  explicit EntryListBox(HWND window) noexcept : window_(window) {}

  HWND Window() const noexcept { return window_; }
  int Count() const;
  // Null for a line without an item.
  EntryItem* ItemAt(int index) const;
  WString TextAt(int index) const;
  // Selected lines, ascending.
  std::vector<int> Selection() const;
  // The first line that begins with the text, whatever its case; -1 for none.
  int FindPrefix(const WCHAR* text) const;

  // Appends a line that owns the item; std::bad_alloc when there is no room. A list that is gone, because a
  // provider let its dialog be destroyed meanwhile, takes nothing.
  void Append(const WCHAR* text, EntryItemPtr item);
  // Makes room in one step for so many further lines.
  void Reserve(ULONG lines);
  // A new text for one line, its place, selection and item kept.
  void ReplaceText(int index, const WCHAR* text);
  void SelectOnly(int index);
  // Removes the lines and selects what then stands where the last of them was, or the new last line.
  void Remove(const std::vector<int>& ascending);
  void RemoveAll();

  // What a user sees of the list: its selected entries, and the first line that is in sight.
  struct View {
    std::set<std::string, std::less<>> selected;
    LRESULT top;
  };
  View CurrentView() const;
  // For lines that have been made anew; entries that have gone are selected no more.
  void Show(const View& view);

 private:
  LRESULT Send(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const {
    return SendMessageW(window_, message, wParam, lParam);
  }
  void RemoveOne(int index);
  void SelectAndShow(int index);

  HWND window_;
};

}  // namespace orv::ui
