// Any bytes as a directory file: every record that is read is clean, and goes out and in again unchanged.
#include "fuzz/contact_round_trip.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::CheckFile(std::string(data, data + size), formats::FileFormat::kLdif);
  return 0;
}
