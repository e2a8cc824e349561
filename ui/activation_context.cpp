// An activation context made from the manifest that a resource library holds.
#include "ui/activation_context.h"

namespace orv::ui {
namespace {

// A library without code cannot activate its manifest by being loaded, so it has an identifier of its own
// choice.
constexpr WORD kManifest = 2;

HANDLE CreateFromManifest(HMODULE resources) noexcept {
  ACTCTXW description{};
  description.cbSize = sizeof(description);
  description.dwFlags = ACTCTX_FLAG_HMODULE_VALID | ACTCTX_FLAG_RESOURCE_NAME_VALID;
  description.hModule = resources;
  description.lpResourceName = MAKEINTRESOURCEW(kManifest);
  return CreateActCtxW(&description);
}

}  // namespace

ActivationContext::ActivationContext(HMODULE resources) noexcept {
  if (resources == nullptr) return;
  context_ = CreateFromManifest(resources);
  active_ = context_ != INVALID_HANDLE_VALUE && ActivateActCtx(context_, &cookie_);
}

ActivationContext::~ActivationContext() {
  if (active_) DeactivateActCtx(0, cookie_);
  if (context_ != INVALID_HANDLE_VALUE) ReleaseActCtx(context_);
}

}  // namespace orv::ui
