// Property values in text and JSON, and property values out of text.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "orv/orvbase.hpp"
#include "tools/orvctl/listing.h"

namespace orvctl {

using WideString = std::basic_string<WCHAR>;
using Bytes = std::vector<BYTE>;

std::string ToUtf8(std::basic_string_view<WCHAR> text);
WideString ToWide(std::string_view utf8);

std::string ToHex(const BYTE* bytes, size_t count);
std::string ToHex(const Bytes& bytes);
// An even number of hexadecimal digits.
std::optional<Bytes> FromHex(std::string_view text);

// Values come from providers: a null where a string or bytes should be is shown as empty.
Cell ValueCell(const SPropValue& value);

// What a row or answer holds under a tag, each empty when it is not there. A text asked for as PT_UNICODE may come as
// PT_STRING8.
std::string TextOf(const orv::sdk::ValueView& values, ULONG tag);
Bytes BytesOf(const orv::sdk::ValueView& values, ULONG tag);

// Names of the bits of PR_CONTAINER_FLAGS and PR_RESOURCE_FLAGS, blanks between them.
std::string ContainerFlagNames(ULONG flags);
std::string ResourceFlagNames(ULONG flags);
std::string ObjectTypeName(ULONG type);
std::string RecipientTypeName(ULONG type);

// A value to be set, with what its pointers point at.
class OwnedValue {
 public:
  // "0x6600001F=text": the tag's type decides how the text is read. No value when either cannot be.
  static std::optional<OwnedValue> Parse(std::string_view assignment);
  static OwnedValue String(ULONG tag, std::string_view utf8);

  // Points into this object.
  SPropValue Get();

 private:
  bool Read(std::string_view text);
  bool ReadFlag(std::string_view text);

  ULONG tag_ = 0;
  std::variant<LONGLONG, std::string, WideString, Bytes> content_;
};

}  // namespace orvctl
