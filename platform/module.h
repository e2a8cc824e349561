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

  // Loads by full path only: a bare name would be looked for where others can write, the current folder for one. What
  // the library depends on comes from its own folder or the system's. Empty on failure.
  static Module Load(const WString& path) noexcept {
    Module module;
    if (IsFullPath(path)) module.handle_ = LoadLibraryExW(path.c_str(), nullptr, kDependencies);
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
  static constexpr DWORD kDependencies = LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32;

  // On a drive or on a server.
  static bool IsFullPath(WStringView path) noexcept {
    return path.starts_with(ORV_W("\\\\")) || path.find(ORV_W(":\\")) == 1;
  }

  HMODULE handle_ = nullptr;
};

}  // namespace orv
