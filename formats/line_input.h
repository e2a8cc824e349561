// The lines of a contact file, read a piece at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "formats/contact_io.h"

namespace formats {

enum class TextEncoding : std::uint8_t { kBytes, kUtf16Little, kUtf16Big };

// Bytes of a source, UTF-16 as UTF-8; marks of an encoding are removed.
class TextInput {
 public:
  explicit TextInput(ByteSource& source) : source_(source) {}

  static constexpr std::size_t kStartSize = 64 << 10;

  // For a file that neither a mark nor its bytes tell of.
  void SetFallback(TextEncoding encoding) { fallback_ = encoding; }
  // Finds the encoding by a mark or by zero bytes, and keeps what it has looked at for Read. False when the source failed.
  bool Open();
  bool isUtf16() const { return encoding_ != TextEncoding::kBytes; }
  // What the text begins with, kStartSize of the file at most.
  std::string_view start() const { return start_; }

  // Replaces `text` with the next piece; an empty one is the end. False when the source failed.
  bool Read(std::string* text);
  std::uint64_t bytesRead() const { return bytesRead_; }

 private:
  bool ReadBytes(std::string* bytes, std::size_t size);
  void FindEncoding(std::string_view bytes);
  void DropMark(std::string* bytes);
  void Decode(std::string* bytes);

  ByteSource& source_;
  TextEncoding encoding_ = TextEncoding::kBytes, fallback_ = TextEncoding::kBytes;
  std::string start_;
  std::string pending_;  // the part of a character that the next piece completes
  bool hasStart_ = false;
  std::uint64_t bytesRead_ = 0;
};

// A line ends at a line feed, a carriage return or both together, whichever the file uses elsewhere.
class LineInput {
 public:
  enum class Step : std::uint8_t { kLine, kEnd, kFailed };

  explicit LineInput(TextInput& input) : input_(input) {}

  // With it every line is handed out as UTF-8; "" is UTF-8 or the system's code page. Otherwise as it lies in the file.
  void DecodeLines(std::string charset);

  Step Next();
  // Until the next step, without its end; where it is longer than a record may be, only its beginning.
  std::string_view line() const { return line_; }
  bool isOverlong() const { return isOverlong_; }
  std::uint64_t number() const { return number_; }

 private:
  bool FindEnd();
  bool Refill();
  void TakeLine(std::size_t end);
  Step LastLine();

  TextInput& input_;
  std::string buffer_;
  std::size_t begin_ = 0;    // of the next line
  std::size_t scanned_ = 0;  // up to here there is no end of a line
  std::size_t end_ = 0;      // of the line, as FindEnd left it
  bool atEnd_ = false, skipsLineFeed_ = false, isOverlong_ = false, isCut_ = false;
  bool decodes_ = false;
  std::string charset_, decoded_, piece_;
  std::string_view line_;
  std::uint64_t number_ = 0;
};

}  // namespace formats
