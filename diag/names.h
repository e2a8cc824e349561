// Names of result codes, property tags and property types, for people who read output. Every text carries the
// number as well, so that an unknown one loses nothing.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace diag {

// "MAPI_E_NOT_FOUND (0x8004010F)"; codes that wrap a system error bear its name, "ERROR_BAD_PATHNAME
// (0x800700A1)"; an unknown code is its number alone.
std::string ResultName(uint32_t code);
// "ERROR_FILE_NOT_FOUND (2)".
std::string SystemErrorName(uint32_t error);

// "PR_DISPLAY_NAME_W (0x3001001F)". The identifier decides the name; string types add _W or _A, and an error
// in place of a value says so: "PR_DISPLAY_NAME [PT_ERROR] (0x3001000A)".
std::string PropTagName(uint32_t tag);
// "PT_UNICODE (0x001F)".
std::string PropTypeName(uint32_t type);

// The bare names, empty for unknown numbers.
std::string_view FindResultName(uint32_t code);
std::string_view FindSystemErrorName(uint32_t error);
std::string_view FindPropName(uint16_t id);
// The identifier that bears the bare name; 0 for an unknown one.
uint16_t FindPropId(std::string_view name);
std::string_view FindPropTypeName(uint16_t type);

}  // namespace diag
