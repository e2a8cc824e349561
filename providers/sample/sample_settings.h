// What a service of this provider keeps in its profile section, and the entry function that changes it.
#pragma once

#include <string>

#include "sample_values.h"

namespace sample {

struct Settings {
  MAPIUID uid{};        // of the service; our entry identifiers bear it, so two services never mix
  std::u16string name;  // what people call the service
  std::wstring file;    // empty when none was chosen yet
};

HRESULT ReadSettings(IProfSect* section, const Allocator& allocator, Settings* settings);

}  // namespace sample
