// Formats of contact files by their names on the command line.
#pragma once

#include <optional>
#include <string>

#include "formats/contact_io.h"

namespace orvctl {

struct FormatName {
  const char* name;
  const char* title;                        // for people
  unsigned long whole;                      // ORV_FORMAT_*, of a whole book
  std::optional<formats::FileFormat> read;  // how it is read
  formats::WriteFormat written;
};

// "vcard, vcard30, csv, ldif".
std::string FormatNames();
const FormatName* FindFormat(const std::string& name);
// By its name, else by the end of the file's name; standard output is vCard. Null where neither tells.
const FormatName* FormatOf(const std::string& name, const std::string& file);
// For a file of which nobody can tell what it shall be.
std::string WhyNoFormat(const std::string& file, const std::string& option);

}  // namespace orvctl
