#include "hosting/named_library.h"

#include "platform/identity.h"
#include "platform/process.h"

namespace orv {

Module LoadNamedLibrary(const WString& folder, WStringView name) {
  const bool loadable = IsBareFileName(name) && folder.size() + name.size() < MAX_PATH;
  return loadable ? Module::Load(WString(folder).append(name)) : Module();
}

// Without a folder of our own there is none to take it from; the system's way is not asked for.
Module LoadLibraryBesideUs(WStringView name) {
  const WString folder = PathBeside(process::Instance(), {});
  return folder.empty() ? Module() : LoadNamedLibrary(folder, name);
}

}  // namespace orv
