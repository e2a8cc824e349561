// The Address dialog's list of entries: filling it from a table against filling the same list box by hand, and the
// answer of its type-ahead box against the list box's own search.
#include <array>
#include <deque>

#include "bench/harness.h"
#include "bench/values.h"
#include "platform/com_ptr.h"
#include "props/base_table.h"
#include "ui/address/entry_rows.h"

namespace orv::bench {
namespace {

constexpr DWORD kListStyle = WS_CHILD | WS_VISIBLE | WS_VSCROLL | LBS_NOTIFY | LBS_OWNERDRAWFIXED |
                             LBS_HASSTRINGS | LBS_EXTENDEDSEL | LBS_WANTKEYBOARDINPUT | LBS_NOINTEGRALHEIGHT;

// A list box as the dialog's template has it, in a window of its own.
class ListWindow {
 public:
  ListWindow()
      : parent_(CreateWindowW(L"STATIC", L"", WS_POPUP | WS_VISIBLE, 0, 0, 300, 300, nullptr, nullptr,
                              nullptr, nullptr)),
        list_(
            CreateWindowW(L"LISTBOX", L"", kListStyle, 0, 0, 300, 300, parent_, nullptr, nullptr, nullptr)) {
    Require(list_ != nullptr, "list box");
  }
  ~ListWindow() { DestroyWindow(parent_); }
  ListWindow(const ListWindow&) = delete;
  ListWindow& operator=(const ListWindow&) = delete;

  HWND Get() const { return list_; }

 private:
  HWND parent_;
  HWND list_;
};

class Entries {
 public:
  explicit Entries(ULONG count) : count_(count) {
    for (ULONG i = 0; i < count; ++i) {
      Entry& entry = entries_.emplace_back();
      entry.name = L"Recipient number " + std::to_wstring(i);
      entry.id.fill(static_cast<BYTE>(i));
      entry.values = {Text(PR_DISPLAY_NAME_W, entry.name), Number(PR_ENTRYID, 0),
                      Number(PR_OBJECT_TYPE, MAPI_MAILUSER)};
      entry.values[1].Value.bin = {static_cast<ULONG>(entry.id.size()), entry.id.data()};
    }
  }

  ComPtr<IMAPITable> MakeTable() const {
    MapiBuffer<SRowSet> set;
    Require(set.Allocate(CbNewSRowSet(std::size_t{count_})) == S_OK, "row set");
    set->cRows = count_;
    // A new table shows its rows in the opposite order.
    for (ULONG i = 0; i < count_; ++i)
      set->aRow[count_ - 1 - i] = {0, 3, const_cast<SPropValue*>(entries_[i].values.data())};
    ComPtr<IMAPITable> table;
    Require(CreateTable(set.Get(), table.Put()) == S_OK, "table");
    return table;
  }

  // What one writes who has all names and identifiers at hand: no table is read.
  void FillByHand(HWND list) const {
    SendMessageW(list, WM_SETREDRAW, FALSE, 0);
    EmptyByHand(list);
    SendMessageW(list, LB_INITSTORAGE, count_, static_cast<LPARAM>(count_) * 48);
    for (const Entry& entry : entries_) {
      void* item = AllocateByHand(sizeof(ui::EntryItem) + entry.id.size(), nullptr);
      std::memcpy(static_cast<BYTE*>(item) + sizeof(ui::EntryItem), entry.id.data(), entry.id.size());
      const LRESULT line = SendMessageW(list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(entry.name.c_str()));
      SendMessageW(list, LB_SETITEMDATA, static_cast<WPARAM>(line), reinterpret_cast<LPARAM>(item));
    }
    SendMessageW(list, WM_SETREDRAW, TRUE, 0);
    InvalidateRect(list, nullptr, TRUE);
  }

  static void EmptyByHand(HWND list) {
    const LRESULT count = SendMessageW(list, LB_GETCOUNT, 0, 0);
    for (LRESULT line = 0; line < count; ++line)
      FreeByHand(reinterpret_cast<void*>(SendMessageW(list, LB_GETITEMDATA, static_cast<WPARAM>(line), 0)));
    SendMessageW(list, LB_RESETCONTENT, 0, 0);
  }

 private:
  struct Entry {
    WString name;
    std::array<BYTE, 40> id;
    std::array<SPropValue, 3> values;
  };
  std::deque<Entry> entries_;
  const ULONG count_;
};

void Fill(const ComPtr<IMAPITable>& table, const ui::EntryIcons& icons, ui::EntryListBox box) {
  const ui::RedrawPause pause(box.Window());
  box.RemoveAll();
  Require(table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr) == S_OK, "the first row");
  Require(ui::AppendRows(table, icons, box) == S_OK, "filling the list");
}

void CompareFilling(ULONG count) {
  const Entries entries(count);
  const auto table = entries.MakeTable();
  const ui::EntryIcons icons(nullptr);
  const ListWindow ours;
  const ListWindow floor;
  ui::EntryListBox box(ours.Get());
  const auto result = Compare([&] { Fill(table, icons, box); }, [&] { entries.FillByHand(floor.Get()); });
  Require(box.Count() == static_cast<int>(count), "all lines");
  Report("filling the entry list with " + std::to_string(count) + " rows", result, 2.0);
  box.RemoveAll();
  Entries::EmptyByHand(floor.Get());
}

// From the letters typed to the line selected and in view; the last line is the farthest. By hand: the list box's own
// search and selection.
void CompareTypeAhead() {
  constexpr ULONG kCount = 100000;
  constexpr WPARAM kLast = kCount - 1;
  constexpr const WCHAR* kTyped = L"recipient number 99999";
  const auto table = Entries(kCount).MakeTable();
  const ui::EntryIcons icons(nullptr);
  const ListWindow window;
  ui::EntryListBox box(window.Get());
  Fill(table, icons, box);
  const auto ours = [&] {
    const int line = box.FindPrefix(kTyped);
    Require(line == static_cast<int>(kLast), "the typed line");
    box.SelectOnly(line);
  };
  const auto floor = [list = window.Get()] {
    const LRESULT line =
        SendMessageW(list, LB_FINDSTRING, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(kTyped));
    Require(line == static_cast<LRESULT>(kLast), "the typed line");
    SendMessageW(list, LB_SETSEL, FALSE, -1);
    SendMessageW(list, LB_SETSEL, TRUE, line);
    SendMessageW(list, LB_SETCARETINDEX, static_cast<WPARAM>(line), FALSE);
  };
  Report("type-ahead to the last of 100000 lines", Compare(ours, floor), 1.2);
  box.RemoveAll();
}

const Benchmark kEntryList("entry-list", [] {
  CompareFilling(10000);
  CompareFilling(100000);
});
const Benchmark kTypeAhead("type-ahead", CompareTypeAhead);

}  // namespace
}  // namespace orv::bench
