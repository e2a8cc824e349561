// The text of a catalogue, line by line: what a line of a service list and of a service's own section says,
// and how its values are converted. Knows no file and no platform call, so that it can be fed anything.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "orv/orvcodes.h"
#include "orv/orvtags.h"
#include "platform/win.h"

namespace orv::catalogue {

// Room of a formatted library name and of a formatted file list, terminator included.
inline constexpr std::size_t kLibraryNameRoom = 16;
inline constexpr std::size_t kFileListRoom = 260;

// "name = text", of a section that lists services.
struct ServiceLine {
  WStringView name;
  WStringView text;
};
// MAPI_E_BAD_VALUE without "=" directly behind the name or without text behind it.
HRESULT ParseServiceLine(WStringView line, ServiceLine& parsed);

// "KEY = value", of a service's own section.
struct KeyLine {
  ULONG tag;  // the property that the key stands for
  WStringView value;
};
// None for an unknown key and for a key without "=": such lines say nothing.
std::optional<KeyLine> ParseKeyLine(WStringView line);

// The value with the model letter in place of every "%c" and a percent sign for "%%". MAPI_E_BAD_VALUE for
// any other directive, for "%c" without a letter (0), and for a result that does not fit `room` with its
// terminator.
HRESULT FormatWithLetter(WStringView format, WCHAR letter, std::size_t room, WString& formatted);

// n commas give n + 1 pieces, empty ones included; blanks stay.
std::vector<WStringView> SplitFileList(WStringView list);

// The known names of a list separated by vertical bars; unknown ones add nothing.
ULONG ParseResourceFlags(WStringView list);

}  // namespace orv::catalogue
