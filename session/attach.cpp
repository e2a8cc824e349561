// Attach counting. Called under the loader's lock, so nothing here is locked.
#include "session/attach.h"

#include "platform/module.h"
#include "platform/process.h"
#include "ui/localisation.h"

namespace orv {
namespace {

unsigned g_attached = 0;

void FreeResourceLibrary() {
  if (const HMODULE resources = process::ResourceLibrary()) FreeLibrary(resources);
  process::SetResourceLibrary(nullptr);
}

}  // namespace

bool Attach(HMODULE library) {
  if (g_attached == 0) {
    process::SetInstance(library);
    process::SetResourceLibrary(ui::LoadResourceLibrary(library));
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
