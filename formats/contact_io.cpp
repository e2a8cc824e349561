// Which reader and which writer a contact file needs.
#include "formats/contact_io.h"

#include <algorithm>

#include "formats/reader_base.h"
#include "formats/text_codec.h"
#include "formats/vcard_lines.h"

namespace formats {
namespace {

std::string_view TakeLine(std::string_view* text) {
  const std::size_t end = std::min(text->find_first_of("\r\n"), text->size());
  const std::string_view line = text->substr(0, end);
  text->remove_prefix(std::min(end + 1, text->size()));
  return line;
}

bool StartsWithFolded(std::string_view line, std::string_view start) {
  return EqualsFolded(line.substr(0, start.size()), start);
}

// Comments may stand before a directory's first entry.
bool IsLdif(std::string_view text) {
  while (!text.empty()) {
    const std::string_view line = TakeLine(&text);
    if (line.empty() || line.front() == '#') continue;
    return StartsWithFolded(line, "dn:") || StartsWithFolded(line, "version:");
  }
  return false;
}

// Other text may stand before the first card, as in a message that was saved.
bool IsVCard(std::string_view text) {
  while (!text.empty()) {
    if (IsVCardBegin(TakeLine(&text))) return true;
  }
  return false;
}

FileFormat FindFormat(std::string_view start) {
  if (IsLdif(start)) return FileFormat::kLdif;
  return IsVCard(start) ? FileFormat::kVCard : FileFormat::kCsv;
}

std::unique_ptr<ContactReader> Fail(OpenResult reason, OpenResult* result) {
  *result = reason;
  return nullptr;
}

// The encodings that are no character sets of bytes.
std::optional<TextEncoding> Utf16Of(std::string_view charset) {
  if (EqualsFolded(charset, "UTF-16LE") || EqualsFolded(charset, "UTF-16")) return TextEncoding::kUtf16Little;
  if (EqualsFolded(charset, "UTF-16BE")) return TextEncoding::kUtf16Big;
  return std::nullopt;
}

}  // namespace

std::unique_ptr<ContactReader> ContactReader::Open(ByteSource& source, const ReadOptions& options,
                                                   OpenResult* result) {
  const std::optional<TextEncoding> utf16 = Utf16Of(options.charset);
  if (!utf16 && !options.charset.empty() && !IsKnownCharset(options.charset))
    return Fail(OpenResult::kUnknownCharset, result);
  auto input = std::make_unique<TextInput>(source);
  // A mark at the file's beginning knows better than "UTF-16" which of the two it is.
  if (utf16) input->SetFallback(*utf16);
  if (!input->Open()) return Fail(OpenResult::kFailed, result);
  if (TrimBlanks(input->start()).empty() && input->start().size() < TextInput::kStartSize)
    return Fail(OpenResult::kEmpty, result);
  *result = OpenResult::kOk;
  switch (options.format.value_or(FindFormat(input->start()))) {
    case FileFormat::kVCard:
      return OpenVCardReader(std::move(input), options);
    case FileFormat::kLdif:
      return OpenLdifReader(std::move(input), options);
    case FileFormat::kCsv:
      break;
  }
  return OpenCsvReader(std::move(input), options, result);
}

const std::vector<std::string>& ContactWriter::lost() const {
  static const std::vector<std::string> kNothing;
  return kNothing;
}

std::unique_ptr<ContactWriter> ContactWriter::Create(ByteSink& sink, WriteFormat format) {
  if (format == WriteFormat::kCsv) return CreateCsvWriter(sink);
  if (format == WriteFormat::kLdif) return CreateLdifWriter(sink);
  return CreateVCardWriter(sink, format);
}

}  // namespace formats
