// Owner of a loaded library.
#pragma once

#include <utility>

#include "platform/win.h"

namespace orv {

class Module {
 public:
  Module() noexcept = default;
  Module(Module&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  Module& operator=(Module&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }
  ~Module() {
    if (handle_ != nullptr) FreeLibrary(handle_);
  }

  // Loads by full path, the library's own folder searched first for what it depends on; a name without a
  // folder goes the system's way. Empty on failure.
  static Module Load(const WString& path) noexcept {
    const bool full = path.find(ORV_W('\\')) != WString::npos;
    Module module;
    module.handle_ = LoadLibraryExW(path.c_str(), nullptr, full ? LOAD_WITH_ALTERED_SEARCH_PATH : 0);
    return module;
  }

  template <class Function>
  Function Find(const char* name) const noexcept {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(handle_, name)));
  }

  HMODULE Get() const noexcept { return handle_; }
  [[nodiscard]] HMODULE Detach() noexcept { return std::exchange(handle_, nullptr); }
  explicit operator bool() const noexcept { return handle_ != nullptr; }

 private:
  HMODULE handle_ = nullptr;
};

}  // namespace orv
