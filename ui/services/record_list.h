// A list box with a record behind every line. The box must be unsorted: a line's index is its record's.
#pragma once

#include <cstddef>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include "platform/win.h"

namespace orv::ui {

template <class Record>
class RecordList {
 public:
  void Attach(HWND box) { box_ = box; }

  void Clear() {
    SendMessageW(box_, LB_RESETCONTENT, 0, 0);
    records_.clear();
  }

  // The new line's index; std::bad_alloc when the box has no room for it. A null text is an empty one.
  std::size_t Add(const WCHAR* text, Record record) {
    records_.reserve(records_.size() + 1);
    const WCHAR* shown = text == nullptr ? L"" : text;
    if (SendMessageW(box_, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(shown)) < 0) throw std::bad_alloc();
    records_.push_back(std::move(record));
    return records_.size() - 1;
  }

  // Another text for the same record; the selection goes there. The line stays as it was when the box has no room for
  // the text.
  void ReplaceText(std::size_t index, const WCHAR* text) {
    if (SendMessageW(box_, LB_INSERTSTRING, index, reinterpret_cast<LPARAM>(text)) < 0) return;
    SendMessageW(box_, LB_DELETESTRING, index + 1, 0);
    Select(index);
  }

  // Selects what moves up to the index, or the new last line.
  void Remove(std::size_t index) {
    SendMessageW(box_, LB_DELETESTRING, index, 0);
    records_.erase(records_.begin() + static_cast<std::ptrdiff_t>(index));
    if (!records_.empty()) Select(index < records_.size() ? index : records_.size() - 1);
  }

  std::optional<std::size_t> Selected() const {
    const LRESULT index = SendMessageW(box_, LB_GETCURSEL, 0, 0);
    if (index < 0 || static_cast<std::size_t>(index) >= records_.size()) return std::nullopt;
    return static_cast<std::size_t>(index);
  }
  void Select(std::size_t index) { SendMessageW(box_, LB_SETCURSEL, index, 0); }

  const Record& operator[](std::size_t index) const { return records_[index]; }
  std::size_t Size() const { return records_.size(); }

 private:
  HWND box_ = nullptr;
  std::vector<Record> records_;
};

}  // namespace orv::ui
