// Any bytes as a file of cards.
#include "fuzz/contact_round_trip.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::CheckFile(std::string(data, data + size), formats::FileFormat::kVCard);
  return 0;
}
