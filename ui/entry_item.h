// What the lists of the Address dialog keep for each line: an icon and a copy of the entry identifier.
#pragma once

#include <cstddef>
#include <memory>

#include "orv/orvtypes.h"
#include "platform/win.h"

namespace orv::ui {

// The icons of the entries, loaded once at the system's small size and shared by all lines.
class EntryIcons {
 public:
  explicit EntryIcons(HMODULE resources) noexcept;
  ~EntryIcons();
  EntryIcons(const EntryIcons&) = delete;
  EntryIcons& operator=(const EntryIcons&) = delete;

  // By PR_OBJECT_TYPE; null for a type without an icon.
  HICON For(ULONG objectType) const noexcept;

 private:
  HICON group_;
  HICON person_;
};

// One block: this header and the identifier's bytes behind it. A list box keeps the pointer as item data.
class EntryItem {
 public:
  struct Free {
    void operator()(EntryItem* item) const noexcept;
  };
  using Ptr = std::unique_ptr<EntryItem, Free>;

  // Null when there is no memory.
  static Ptr Create(HICON icon, ULONG size, const void* identifier) noexcept;
  static Ptr Create(HICON icon, const SBinary& identifier) noexcept {
    return Create(icon, identifier.cb, identifier.lpb);
  }

  HICON Icon() const noexcept { return icon_; }
  void SetIcon(HICON icon) noexcept { icon_ = icon; }
  ULONG Size() const noexcept { return size_; }
  ENTRYID* Id() noexcept { return reinterpret_cast<ENTRYID*>(this + 1); }
  SBinary Binary() noexcept { return {size_, reinterpret_cast<BYTE*>(this + 1)}; }

 private:
  EntryItem(HICON icon, ULONG size) noexcept : icon_(icon), size_(size) {}

  HICON icon_;
  ULONG size_;
};

}  // namespace orv::ui
