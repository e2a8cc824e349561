// Copies structures with all that they point to into one block. What is to be copied is described by a function that
// runs twice: the first time the packer only counts, the second time it writes.
#pragma once

#include <cstring>
#include <memory>

#include "value_layout.hpp"

namespace orv::kit {

class Packer {
 public:
  // Runs `describe(packer)` for both passes; the block that it wrote comes back, null when nothing was to be written.
  template <class Describe>
  static std::unique_ptr<std::byte[]> Pack(const Describe& describe) {
    Packer counting(nullptr);
    describe(counting);
    if (counting.size_ == 0) return nullptr;
    std::unique_ptr<std::byte[]> block(new std::byte[counting.size_]);
    Packer writing(block.get());
    describe(writing);
    return block;
  }

  bool IsWriting() const noexcept { return room_ != nullptr; }

  // The copy; null while counting, and for none.
  template <class Item>
  Item* Items(const Item* items, size_t count) noexcept {
    if (items == nullptr || count == 0) return nullptr;
    std::byte* copy = Take(count * sizeof(Item));
    return copy != nullptr ? static_cast<Item*>(std::memcpy(copy, items, count * sizeof(Item))) : nullptr;
  }
  LPWSTR Text(const WCHAR* text) noexcept {
    return text != nullptr ? Items(text, std::char_traits<WCHAR>::length(text) + 1) : nullptr;
  }

  // In the value's own place. One that cannot be copied becomes PT_ERROR with the reason.
  void Value(SPropValue& value) noexcept {
    if (const HRESULT hr = CheckValue(value); FAILED(hr)) {
      value.ulPropTag = CHANGE_PROP_TYPE(value.ulPropTag, PT_ERROR);
      value.Value.err = hr;
    }
    std::byte* room = Take(ChainedSize(value));
    if (room != nullptr) Layer(room).Copy(value, value);
  }
  SPropValue* Values(const SPropValue* values, size_t count) noexcept {
    SPropValue* copies = Items(values, count);
    for (size_t i = 0; values != nullptr && i < count; ++i) {
      SPropValue value = values[i];
      Value(value);
      if (copies != nullptr) copies[i] = value;
    }
    return copies;
  }

 private:
  explicit Packer(std::byte* room) noexcept : room_(room) {}

  std::byte* Take(size_t size) noexcept {
    std::byte* taken = IsWriting() ? room_ + size_ : nullptr;
    size_ += Aligned(size);
    return taken;
  }

  std::byte* room_;
  size_t size_ = 0;
};

}  // namespace orv::kit
