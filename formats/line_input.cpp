#include "formats/line_input.h"

#include <algorithm>
#include <utility>

#include "formats/text_codec.h"

namespace formats {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF", kLittleMark = "\xFF\xFE", kBigMark = "\xFE\xFF";

bool StartsWith(std::string_view text, std::string_view start) {
  return text.substr(0, start.size()) == start;
}

// UTF-16 of text that is mostly ASCII has a zero in every other byte, and plain text has none.
bool HasZeros(std::string_view bytes, std::size_t first) {
  constexpr std::size_t kEnough = 16;
  std::size_t zeros = 0, others = 0;
  for (std::size_t i = first; i < std::min(bytes.size(), 2 * kEnough); i += 2)
    ++(bytes[i] == '\0' ? zeros : others);
  return zeros >= 2 && zeros > others;
}

char16_t UnitAt(std::string_view bytes, std::size_t at, TextEncoding encoding) {
  const auto first = static_cast<unsigned char>(bytes[at]),
             second = static_cast<unsigned char>(bytes[at + 1]);
  return static_cast<char16_t>(encoding == TextEncoding::kUtf16Big ? first << 8 | second
                                                                   : second << 8 | first);
}

}  // namespace

bool TextInput::Open() {
  std::string bytes;
  // A pipe hands out less at once than its beginning takes.
  for (std::string more; bytes.size() < kStartSize;) {
    if (!ReadBytes(&more, kStartSize - bytes.size())) return false;
    if (more.empty()) break;
    bytes += more;
  }
  FindEncoding(bytes);
  DropMark(&bytes);
  Decode(&bytes);
  start_ = std::move(bytes);
  hasStart_ = true;
  return true;
}

bool TextInput::ReadBytes(std::string* bytes, std::size_t size) {
  bytes->resize(size);
  const std::optional<std::size_t> count = source_.Read(bytes->data(), bytes->size());
  bytes->resize(count.value_or(0));
  bytesRead_ += count.value_or(0);
  return count.has_value();
}

void TextInput::FindEncoding(std::string_view bytes) {
  const bool isLittle = StartsWith(bytes, kLittleMark) || HasZeros(bytes, 1);
  const bool isBig = StartsWith(bytes, kBigMark) || HasZeros(bytes, 0);
  encoding_ = fallback_;
  if (isLittle != isBig) encoding_ = isLittle ? TextEncoding::kUtf16Little : TextEncoding::kUtf16Big;
}

void TextInput::DropMark(std::string* bytes) {
  const std::string_view mark = encoding_ == TextEncoding::kBytes         ? kUtf8Mark
                                : encoding_ == TextEncoding::kUtf16Little ? kLittleMark
                                                                          : kBigMark;
  if (StartsWith(*bytes, mark)) bytes->erase(0, mark.size());
}

// Half a unit, and half a pair of surrogates, wait for what follows.
void TextInput::Decode(std::string* bytes) {
  if (!isUtf16()) return;
  pending_ += *bytes;
  std::size_t size = pending_.size() / 2 * 2;
  if (size > 0 && !bytes->empty()) {
    const char16_t last = UnitAt(pending_, size - 2, encoding_);
    if (last >= 0xD800 && last < 0xDC00) size -= 2;
  }
  std::u16string units(size / 2, u'\0');
  for (std::size_t i = 0; i < units.size(); ++i) units[i] = UnitAt(pending_, 2 * i, encoding_);
  pending_.erase(0, size);
  *bytes = ToUtf8(units);
}

bool TextInput::Read(std::string* text) {
  if (std::exchange(hasStart_, false) && !start_.empty()) {
    *text = std::move(start_);
    return true;
  }
  // A piece that only completes a part of a character is no end.
  for (;;) {
    if (!ReadBytes(text, kStartSize)) return false;
    const bool isEnd = text->empty();
    Decode(text);
    if (isEnd || !text->empty()) return true;
  }
}

void LineInput::DecodeLines(std::string charset) {
  decodes_ = true;
  charset_ = std::move(charset);
}

// Sets end_ when the line's end is in the buffer. It is looked for in short stretches, since a file may have none of one
// of the two characters.
bool LineInput::FindEnd() {
  constexpr std::size_t kStretch = 256;
  while (scanned_ < buffer_.size()) {
    const std::string_view stretch = std::string_view(buffer_).substr(scanned_, kStretch);
    const std::size_t end = std::min(stretch.find('\n'), stretch.find('\r'));
    if (end != std::string_view::npos) {
      end_ = scanned_ + end;
      return true;
    }
    scanned_ += stretch.size();
  }
  return false;
}

// Makes room by dropping the lines that are done, and the rest of a line that is too long.
bool LineInput::Refill() {
  buffer_.erase(0, begin_);
  scanned_ -= begin_;
  begin_ = 0;
  if (buffer_.size() > kMaxRecordSize) {
    isCut_ = true;
    buffer_.resize(kMaxRecordSize);
    scanned_ = buffer_.size();
  }
  if (!input_.Read(&piece_)) return false;
  atEnd_ = piece_.empty();
  buffer_ += piece_;
  return true;
}

void LineInput::TakeLine(std::size_t end) {
  line_ = std::string_view(buffer_).substr(begin_, end - begin_);
  isOverlong_ = std::exchange(isCut_, false) || line_.size() > kMaxRecordSize;
  ++number_;
  if (!decodes_) return;
  decoded_ = DecodeCharset(line_, charset_);
  line_ = decoded_;
}

LineInput::Step LineInput::LastLine() {
  if (begin_ == buffer_.size()) return Step::kEnd;
  TakeLine(buffer_.size());
  begin_ = scanned_ = buffer_.size();
  return Step::kLine;
}

LineInput::Step LineInput::Next() {
  for (;;) {
    if (skipsLineFeed_ && begin_ < buffer_.size()) {
      begin_ += buffer_[begin_] == '\n';
      scanned_ = begin_;
      skipsLineFeed_ = false;
    }
    if (FindEnd()) break;
    if (atEnd_) return LastLine();
    if (!Refill()) return Step::kFailed;
  }
  TakeLine(end_);
  skipsLineFeed_ = buffer_[end_] == '\r';
  begin_ = scanned_ = end_ + 1;
  return Step::kLine;
}

}  // namespace formats
