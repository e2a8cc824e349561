// Owner of one reference on a COM object.
#pragma once

#include <utility>

namespace orv {

template <class T>
class ComPtr {
 public:
  ComPtr() noexcept = default;
  ComPtr(std::nullptr_t) noexcept {}
  ComPtr(const ComPtr& other) noexcept : object_(other.object_) {
    if (object_) object_->AddRef();
  }
  ComPtr(ComPtr&& other) noexcept : object_(other.Detach()) {}
  ~ComPtr() { Reset(); }
  ComPtr& operator=(ComPtr other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }

  // Takes over a reference that the caller holds.
  static ComPtr Adopt(T* object) noexcept {
    ComPtr result;
    result.object_ = object;
    return result;
  }
  // Adds a reference of its own.
  static ComPtr Share(T* object) noexcept {
    if (object) object->AddRef();
    return Adopt(object);
  }

  T* Get() const noexcept { return object_; }
  T* operator->() const noexcept { return object_; }
  T& operator*() const noexcept { return *object_; }
  explicit operator bool() const noexcept { return object_ != nullptr; }

  [[nodiscard]] T* Detach() noexcept { return std::exchange(object_, nullptr); }
  // Drops what is held, then gives the address for a method that hands an object out.
  [[nodiscard]] T** Put() noexcept {
    Reset();
    return &object_;
  }
  // What a foreign object throws at its release ends here: nothing could be reported any more.
  void Reset() noexcept {
    if (T* old = Detach()) {
      try {
        old->Release();
      } catch (...) {
      }
    }
  }

 private:
  T* object_ = nullptr;
};

}  // namespace orv
