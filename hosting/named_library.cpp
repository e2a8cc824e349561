#include "hosting/named_library.h"

#include "platform/identity.h"
#include "platform/process.h"

namespace orv {

// Without a folder the path is none that Module loads.
Module LoadNamedLibrary(const WString& folder, WStringView name) {
  const bool loadable = IsBareFileName(name) && folder.size() + name.size() < MAX_PATH;
  return loadable ? Module::Load(WString(folder).append(name)) : Module();
}

Module LoadLibraryBesideUs(WStringView name) {
  return LoadNamedLibrary(PathBeside(process::Instance(), {}), name);
}

}  // namespace orv
