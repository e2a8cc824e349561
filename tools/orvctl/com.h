// Owners of what the library hands out.
#pragma once

#include <memory>
#include <utility>

#include "orv/orv.h"

namespace orvctl {

// One reference on an object.
template <class T>
class ComPtr {
 public:
  ComPtr() = default;
  ComPtr(ComPtr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  ComPtr& operator=(ComPtr&& other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ComPtr(const ComPtr&) = delete;
  ComPtr& operator=(const ComPtr&) = delete;
  ~ComPtr() { Reset(); }

  T* Get() const { return object_; }
  T* operator->() const { return object_; }
  explicit operator bool() const { return object_ != nullptr; }
  T** Put() {
    Reset();
    return &object_;
  }
  void Reset() {
    if (T* old = std::exchange(object_, nullptr)) old->Release();
  }

  // Empty when the object does not have the interface.
  template <class U>
  ComPtr<U> As(REFIID identifier) const {
    ComPtr<U> other;
    if (object_) object_->QueryInterface(identifier, reinterpret_cast<void**>(other.Put()));
    return other;
  }

 private:
  T* object_ = nullptr;
};

// Buffers, freed by the function of the library that they came from.
template <class Function>
struct FreeWith {
  Function* function = nullptr;
  template <class T>
  void operator()(T* buffer) const {
    function(buffer);
  }
};

template <class T>
using BufferPtr = std::unique_ptr<T, FreeWith<FREEBUFFER>>;
using RowsPtr = std::unique_ptr<SRowSet, FreeWith<FREEPROWS>>;
using RecipientsPtr = std::unique_ptr<ADRLIST, FreeWith<FREEPADRLIST>>;

}  // namespace orvctl
