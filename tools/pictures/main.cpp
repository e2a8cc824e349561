// pictures.exe COMPANION PREFIX: writes PREFIX<number>.bmp for every dialog of one companion.
#include <windows.h>

#include <cstdio>
#include <string>

#include "tools/pictures/sample_dialog.h"

namespace {

constexpr WORD kDialogs[] = {192, 255, 256, 257, 259, 260, 261, 262};
constexpr WORD kManifest = 2;

// Common controls 6 come from the companion's manifest, and only through a context made from it.
class ActivationContext {
 public:
  explicit ActivationContext(HMODULE companion) {
    ACTCTXW request{};
    request.cbSize = sizeof(request);
    request.dwFlags = ACTCTX_FLAG_HMODULE_VALID | ACTCTX_FLAG_RESOURCE_NAME_VALID;
    request.hModule = companion;
    request.lpResourceName = MAKEINTRESOURCEW(kManifest);
    context_ = CreateActCtxW(&request);
    active_ = context_ != INVALID_HANDLE_VALUE && ActivateActCtx(context_, &cookie_);
  }
  ~ActivationContext() {
    if (active_) DeactivateActCtx(0, cookie_);
    if (context_ != INVALID_HANDLE_VALUE) ReleaseActCtx(context_);
  }
  ActivationContext(const ActivationContext&) = delete;
  ActivationContext& operator=(const ActivationContext&) = delete;
  bool active() const { return active_; }

 private:
  HANDLE context_ = INVALID_HANDLE_VALUE;
  ULONG_PTR cookie_ = 0;
  bool active_ = false;
};

}  // namespace

int wmain(int count, wchar_t** arguments) {
  if (count != 3) {
    std::fputws(L"usage: pictures COMPANION PREFIX\n", stderr);
    return 2;
  }
  HMODULE companion = LoadLibraryW(arguments[1]);
  if (!companion) {
    std::fwprintf(stderr, L"pictures: %ls cannot be loaded\n", arguments[1]);
    return 1;
  }
  const ActivationContext context(companion);
  if (!context.active()) std::fputws(L"pictures: no common controls 6\n", stderr);
  int failures = context.active() ? 0 : 1;
  for (const WORD number : kDialogs) {
    const std::wstring path = std::wstring(arguments[2]) + std::to_wstring(number) + L".bmp";
    if (pictures::SaveDialog(companion, number, path)) continue;
    std::fwprintf(stderr, L"pictures: dialog %u of %ls failed\n", static_cast<unsigned>(number),
                  arguments[1]);
    ++failures;
  }
  return failures == 0 ? 0 : 1;
}
