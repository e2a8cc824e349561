// Any bytes as a library file. Beyond the sanitizers: what is read is bounded by the file, and asking by a name that
// the image exports finds it.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "tools/orvctl/image.h"

namespace {

void Demand(bool condition) {
  if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto image = orvctl::ReadImage({reinterpret_cast<const char*>(data), size});
  if (!image) return 0;
  for (const orvctl::ImageExport& each : image->exports) {
    Demand(each.name.size() <= size && each.forwardsTo.size() <= size);
    Demand(each.name.empty() || image->Exports(each.name));
    Demand(orvctl::UndecoratedName(each.name).size() <= each.name.size());
  }
  for (const orvctl::ImageImport& each : image->imports) {
    Demand(each.library.size() <= size);
    for (const orvctl::ImportedFunction& function : each.functions) Demand(function.name.size() <= size);
  }
  return 0;
}
