// The platform's private profile (INI) functions behind types of ours. Paths are full paths: a bare name
// would lead the platform to the Windows folder.
#pragma once

#include <span>

#include "platform/win.h"

namespace orv {

struct SectionRead {
  DWORD count;  // characters written, the closing terminator not counted; size - 2 or more when it was too
                // small
  DWORD error;  // the thread's last error after the call
};

// Reads the lines of a section, each terminated, an empty one at the end.
SectionRead ReadProfileSection(const WString& path, const WString& section, std::span<WCHAR> buffer) noexcept;

// The whole file as text: UTF-16 where it begins with the mark of that, else in the ANSI code page. Empty for a file
// that cannot be read, is empty, or bears the mark of another encoding.
WString ReadProfileText(const WString& path);

// Value of a key, at most `room` characters with its terminator; empty when there is none.
WString ReadProfileValue(const WString& path, const WString& section, const WString& key, std::size_t room);

bool WriteProfileValue(const WString& path, const WString& section, const WString& key,
                       const WString& value) noexcept;
// Replaces the whole section by lines laid out as ReadProfileSection gives them.
bool WriteProfileSection(const WString& path, const WString& section, const WCHAR* lines) noexcept;

void DeleteProfileKey(const WString& path, const WString& section, const WString& key) noexcept;
void DeleteProfileSection(const WString& path, const WString& section) noexcept;

}  // namespace orv
