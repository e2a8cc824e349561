// Attach counting. Called under the loader's lock, so nothing here is locked.
#include "session/attach.h"

#include "platform/boundary.h"
#include "platform/process.h"
#include "ui/localisation.h"

namespace orv {
namespace {

unsigned g_attached = 0;

// A missing one leaves the handle null, and so does the want of memory for its name: nothing may leave an attach.
HMODULE LoadResourceLibrary(HMODULE library) {
  HMODULE resources = nullptr;
  static_cast<void>(Guarded([&] {
    resources = ui::LoadResourceLibrary(library);
    return S_OK;
  }));
  return resources;
}

void FreeResourceLibrary() {
  if (const HMODULE resources = process::ResourceLibrary()) FreeLibrary(resources);
  process::SetResourceLibrary(nullptr);
}

}  // namespace

bool Attach(HMODULE library) {
  if (g_attached == 0) {
    process::SetInstance(library);
    process::SetResourceLibrary(LoadResourceLibrary(library));
    if (!process::AcquireTaskAllocator()) {
      FreeResourceLibrary();
      return false;
    }
  }
  ++g_attached;
  return true;
}

void Detach() {
  if (g_attached == 0) return;
  if (g_attached == 1) {
    FreeResourceLibrary();
    process::ReleaseTaskAllocator();
  }
  --g_attached;
}

}  // namespace orv
