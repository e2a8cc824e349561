// Owners for what the buffer functions of include/orv hand out. Every buffer that crosses an interface is a
// root block with further blocks chained to it; freeing the root frees them all.
#pragma once

#include <cstddef>
#include <limits>
#include <utility>

#include "orv/orvapi.h"
#include "platform/win.h"

namespace orv {

// As the exported functions, for sizes computed in 64 bits: what does not fit their 32 is memory that there
// is not. The out pointer is null after a failure.
inline HRESULT AllocateRoot(std::size_t size, void** out) noexcept {
  *out = nullptr;
  if (size > std::numeric_limits<ULONG>::max()) return MAPI_E_NOT_ENOUGH_MEMORY;
  return OrvAllocateBuffer(static_cast<ULONG>(size), out);
}
inline HRESULT AllocateChained(std::size_t size, void* root, void** out) noexcept {
  *out = nullptr;
  if (size > std::numeric_limits<ULONG>::max()) return MAPI_E_NOT_ENOUGH_MEMORY;
  return OrvAllocateMore(static_cast<ULONG>(size), root, out);
}

// A block for a maker that overwrites every byte of it before anyone else sees it: its payload is not cleared.
// Chained to `root`, or a root itself when that is null. The out pointer is null after a failure.
HRESULT AllocateToFill(std::size_t size, void* root, void** out) noexcept;

// Owner of one result of the allocator, freed as its kind wants it.
template <class T, auto Free>
class MapiOwner {
 public:
  MapiOwner() noexcept = default;
  explicit MapiOwner(T* buffer) noexcept : buffer_(buffer) {}
  MapiOwner(MapiOwner&& other) noexcept : buffer_(other.Detach()) {}
  MapiOwner& operator=(MapiOwner&& other) noexcept {
    if (this != &other) Reset(other.Detach());
    return *this;
  }
  MapiOwner(const MapiOwner&) = delete;
  MapiOwner& operator=(const MapiOwner&) = delete;
  ~MapiOwner() { Reset(); }

  T* Get() const noexcept { return buffer_; }
  T* operator->() const noexcept { return buffer_; }
  T& operator*() const noexcept { return *buffer_; }
  T& operator[](std::size_t index) const noexcept { return buffer_[index]; }
  explicit operator bool() const noexcept { return buffer_ != nullptr; }

  // Gives the buffer up to whoever frees it from now on.
  [[nodiscard]] T* Detach() noexcept { return std::exchange(buffer_, nullptr); }
  // Frees what is held, then gives the address for a function that hands a buffer out.
  [[nodiscard]] T** Put() noexcept {
    Reset();
    return &buffer_;
  }
  void Reset(T* buffer = nullptr) noexcept {
    if (T* old = std::exchange(buffer_, buffer)) Free(old);
  }

 private:
  T* buffer_ = nullptr;
};

// Owner of a root block and of all that is chained to it.
template <class T>
class MapiBuffer : public MapiOwner<T, &OrvFreeBuffer> {
 public:
  using MapiOwner<T, &OrvFreeBuffer>::MapiOwner;

  // A new zero-filled root in place of what is held; nothing is held after a failure.
  HRESULT Allocate(std::size_t bytes) noexcept {
    return AllocateRoot(bytes, reinterpret_cast<void**>(this->Put()));
  }
  HRESULT AllocateArray(std::size_t count) noexcept { return Allocate(count * sizeof(T)); }

  // As these, for a maker that overwrites the whole array.
  HRESULT AllocateArrayToFill(std::size_t count) noexcept {
    return AllocateToFill(count * sizeof(T), nullptr, reinterpret_cast<void**>(this->Put()));
  }

  // A zero-filled block that lives as long as this root.
  template <class U>
  HRESULT More(std::size_t bytes, U** out) const noexcept {
    return AllocateChained(bytes, this->Get(), reinterpret_cast<void**>(out));
  }
};

using RowSetPtr = MapiOwner<SRowSet, &OrvFreeProws>;
using AdrListPtr = MapiOwner<ADRLIST, &OrvFreePadrlist>;

// A property array with its count, as GetProps hands it out.
struct PropValues {
  ULONG count = 0;
  MapiBuffer<SPropValue> values;
};

}  // namespace orv
