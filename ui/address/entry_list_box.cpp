// Lines of the Address dialog's lists. A line's item is freed when the line goes.
#include "ui/address/entry_list_box.h"

#include <algorithm>
#include <new>

namespace orv::ui {
namespace {

// What a line's text takes at a guess, and the most lines that room is made for at once: a table may claim any
// number of rows.
constexpr ULONG kBytesPerLine = 48;
constexpr ULONG kMostReserved = 1u << 20;

}  // namespace

int EntryListBox::Count() const { return static_cast<int>(Send(LB_GETCOUNT)); }

EntryItem* EntryListBox::ItemAt(int index) const {
  const LRESULT data = Send(LB_GETITEMDATA, static_cast<WPARAM>(index));
  return data == LB_ERR ? nullptr : reinterpret_cast<EntryItem*>(data);
}

WString EntryListBox::TextAt(int index) const {
  const LRESULT length = Send(LB_GETTEXTLEN, static_cast<WPARAM>(index));
  if (length == LB_ERR) return {};
  WString text(static_cast<std::size_t>(length), 0);
  Send(LB_GETTEXT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(text.data()));
  return text;
}

std::vector<int> EntryListBox::Selection() const {
  const LRESULT count = Send(LB_GETSELCOUNT);
  if (count <= 0) return {};
  std::vector<int> selected(static_cast<std::size_t>(count));
  const LRESULT filled =
      Send(LB_GETSELITEMS, static_cast<WPARAM>(count), reinterpret_cast<LPARAM>(selected.data()));
  selected.resize(static_cast<std::size_t>(std::max<LRESULT>(filled, 0)));
  return selected;
}

int EntryListBox::FindPrefix(const WCHAR* text) const {
  constexpr auto kFromTheTop = static_cast<WPARAM>(-1);
  return static_cast<int>(Send(LB_FINDSTRING, kFromTheTop, reinterpret_cast<LPARAM>(text)));
}

void EntryListBox::Append(const WCHAR* text, EntryItemPtr item) {
  if (!IsWindow(window_)) return;
  const LRESULT index = Send(LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text));
  if (index < 0) throw std::bad_alloc();
  Send(LB_SETITEMDATA, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(item.release()));
}

void EntryListBox::Reserve(ULONG lines) {
  const ULONG count = std::min(lines, kMostReserved);
  Send(LB_INITSTORAGE, count, static_cast<LPARAM>(count) * kBytesPerLine);
}

void EntryListBox::ReplaceText(int index, const WCHAR* text) {
  const RedrawPause pause(window_);
  const auto position = static_cast<WPARAM>(index);
  const LRESULT data = Send(LB_GETITEMDATA, position);
  const LRESULT selected = Send(LB_GETSEL, position);
  const LRESULT caret = Send(LB_GETCARETINDEX);
  const LRESULT top = Send(LB_GETTOPINDEX);
  // The new line is there before the old one goes: without room for it nothing is lost.
  if (Send(LB_INSERTSTRING, position, reinterpret_cast<LPARAM>(text)) < 0) throw std::bad_alloc();
  Send(LB_SETITEMDATA, position, data);
  Send(LB_DELETESTRING, position + 1);
  if (selected > 0) Send(LB_SETSEL, TRUE, index);
  Send(LB_SETCARETINDEX, static_cast<WPARAM>(caret), TRUE);
  Send(LB_SETTOPINDEX, static_cast<WPARAM>(top));
}

void EntryListBox::SelectOnly(int index) {
  Send(LB_SETSEL, FALSE, -1);
  SelectAndShow(index);
}

void EntryListBox::SelectAndShow(int index) {
  Send(LB_SETSEL, TRUE, index);
  Send(LB_SETCARETINDEX, static_cast<WPARAM>(index), FALSE);
}

EntryListBox::View EntryListBox::CurrentView() const {
  View view{{}, Send(LB_GETTOPINDEX)};
  for (const int line : Selection()) {
    if (const EntryItem* item = ItemAt(line)) view.selected.emplace(item->entryId.Bytes());
  }
  return view;
}

void EntryListBox::Show(const View& view) {
  const RedrawPause pause(window_);
  // From the last one: the first one keeps the caret.
  for (int line = view.selected.empty() ? 0 : Count(); line-- > 0;) {
    const EntryItem* item = ItemAt(line);
    if (item != nullptr && view.selected.contains(item->entryId.Bytes())) SelectAndShow(line);
  }
  Send(LB_SETTOPINDEX, static_cast<WPARAM>(view.top));
}

void EntryListBox::Remove(const std::vector<int>& ascending) {
  if (ascending.empty()) return;
  const RedrawPause pause(window_);
  std::for_each(ascending.rbegin(), ascending.rend(), [this](int index) { RemoveOne(index); });
  const int left = Count();
  if (left > 0) SelectAndShow(std::min(ascending.back(), left - 1));
}

void EntryListBox::RemoveOne(int index) {
  const EntryItemPtr item(ItemAt(index));
  Send(LB_DELETESTRING, static_cast<WPARAM>(index));
}

void EntryListBox::RemoveAll() {
  const int count = Count();
  for (int index = 0; index < count; ++index) delete ItemAt(index);
  Send(LB_RESETCONTENT);
}

}  // namespace orv::ui
