// Streams over memory.
#include <algorithm>
#include <cstring>

#include "formats/contact_io.h"

namespace formats {

std::optional<std::size_t> MemorySource::Read(char* bytes, std::size_t size) {
  const std::size_t count = std::min(size, left_.size());
  if (count > 0) std::memcpy(bytes, left_.data(), count);
  left_.remove_prefix(count);
  return count;
}

bool StringSink::Write(std::string_view more) {
  bytes += more;
  return true;
}

}  // namespace formats
