// Lines of the Address dialog's lists. A line's item is freed when the line goes.
#include "ui/entry_list_box.h"

#include <algorithm>

namespace orv::ui {

int EntryListBox::Count() const { return static_cast<int>(SendMessageW(window_, LB_GETCOUNT, 0, 0)); }

EntryItem* EntryListBox::ItemAt(int index) const {
  const LRESULT data = SendMessageW(window_, LB_GETITEMDATA, static_cast<WPARAM>(index), 0);
  return data == LB_ERR ? nullptr : reinterpret_cast<EntryItem*>(data);
}

WString EntryListBox::TextAt(int index) const {
  const LRESULT length = SendMessageW(window_, LB_GETTEXTLEN, static_cast<WPARAM>(index), 0);
  if (length == LB_ERR) return {};
  WString text(static_cast<std::size_t>(length), 0);
  SendMessageW(window_, LB_GETTEXT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(text.data()));
  return text;
}

std::vector<int> EntryListBox::Selection() const {
  const LRESULT count = SendMessageW(window_, LB_GETSELCOUNT, 0, 0);
  if (count <= 0) return {};
  std::vector<int> selected(static_cast<std::size_t>(count));
  const LRESULT filled = SendMessageW(window_, LB_GETSELITEMS, static_cast<WPARAM>(count),
                                      reinterpret_cast<LPARAM>(selected.data()));
  selected.resize(static_cast<std::size_t>(std::max<LRESULT>(filled, 0)));
  return selected;
}

bool EntryListBox::Append(const WCHAR* text, EntryItem::Ptr item) {
  if (!item) return false;
  const LRESULT index = SendMessageW(window_, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text));
  if (index < 0) return false;
  SendMessageW(window_, LB_SETITEMDATA, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(item.release()));
  return true;
}

void EntryListBox::Reserve(int lines, int bytesOfText) {
  SendMessageW(window_, LB_INITSTORAGE, static_cast<WPARAM>(lines), bytesOfText);
}

void EntryListBox::ReplaceText(int index, const WCHAR* text) {
  const RedrawPause pause(window_);
  const auto position = static_cast<WPARAM>(index);
  const LRESULT data = SendMessageW(window_, LB_GETITEMDATA, position, 0);
  const LRESULT selected = SendMessageW(window_, LB_GETSEL, position, 0);
  const LRESULT caret = SendMessageW(window_, LB_GETCARETINDEX, 0, 0);
  const LRESULT top = SendMessageW(window_, LB_GETTOPINDEX, 0, 0);
  // The new line is there before the old one goes: without room for it nothing is lost.
  if (SendMessageW(window_, LB_INSERTSTRING, position, reinterpret_cast<LPARAM>(text)) < 0) return;
  SendMessageW(window_, LB_SETITEMDATA, position, data);
  SendMessageW(window_, LB_DELETESTRING, position + 1, 0);
  if (selected > 0) SendMessageW(window_, LB_SETSEL, TRUE, index);
  SendMessageW(window_, LB_SETCARETINDEX, static_cast<WPARAM>(caret), TRUE);
  SendMessageW(window_, LB_SETTOPINDEX, static_cast<WPARAM>(top), 0);
}

void EntryListBox::SelectOnly(int index) {
  SendMessageW(window_, LB_SETSEL, FALSE, -1);
  SelectAndShow(index);
}

void EntryListBox::SelectAndShow(int index) {
  SendMessageW(window_, LB_SETSEL, TRUE, index);
  SendMessageW(window_, LB_SETCARETINDEX, static_cast<WPARAM>(index), FALSE);
}

void EntryListBox::Remove(const std::vector<int>& ascending) {
  if (ascending.empty()) return;
  const RedrawPause pause(window_);
  std::for_each(ascending.rbegin(), ascending.rend(), [this](int index) { RemoveOne(index); });
  const int left = Count();
  if (left > 0) SelectAndShow(std::min(ascending.back(), left - 1));
}

void EntryListBox::RemoveOne(int index) {
  const EntryItem::Ptr item(ItemAt(index));
  SendMessageW(window_, LB_DELETESTRING, static_cast<WPARAM>(index), 0);
}

void EntryListBox::RemoveAll() {
  const int count = Count();
  for (int index = 0; index < count; ++index) EntryItem::Ptr(ItemAt(index)).reset();
  SendMessageW(window_, LB_RESETCONTENT, 0, 0);
}

}  // namespace orv::ui
