#include "formats/base64.h"

#include <cstddef>
#include <cstdint>

namespace formats {
namespace {

int Base64Digit(char c) {
  if (c >= 'A' && c <= 'Z') return c - 'A';
  if (c >= 'a' && c <= 'z') return c - 'a' + 26;
  if (c >= '0' && c <= '9') return c - '0' + 52;
  return c == '+' ? 62 : c == '/' ? 63 : -1;
}

constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

}  // namespace

std::string DecodeBase64(std::string_view text) {
  std::string out;
  out.reserve(text.size() / 4 * 3);
  unsigned bits = 0;
  int count = 0;
  for (const char c : text) {
    if (c == '=') break;
    const int digit = Base64Digit(c);
    if (digit < 0) continue;
    bits = (bits << 6 | static_cast<unsigned>(digit)) & 0xFFFFFF;
    count += 6;
    if (count >= 8) {
      count -= 8;
      out += static_cast<char>(bits >> count & 0xFF);
    }
  }
  return out;
}

std::string EncodeBase64(std::string_view bytes) {
  std::string out;
  out.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const std::string_view group = bytes.substr(i, 3);
    uint32_t bits = 0;
    for (std::size_t j = 0; j < 3; ++j)
      bits = bits << 8 | (j < group.size() ? static_cast<unsigned char>(group[j]) : 0u);
    for (std::size_t j = 0; j < 4; ++j) out += j <= group.size() ? kDigits[bits >> (18 - 6 * j) & 63] : '=';
  }
  return out;
}

}  // namespace formats
