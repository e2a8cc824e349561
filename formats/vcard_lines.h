// The line level of vCard files: unfolding, the parts of a content line, its parameters and its encoded
// value. Everything is linear in the text, whatever the text is.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace formats {

enum class VCardVersion { k21, k30OrLater };

// Walks the logical lines of a text. A fold is undone while reading; a line without folds is not copied.
class VCardLineReader {
 public:
  explicit VCardLineReader(std::string_view text, VCardVersion version = VCardVersion::k30OrLater)
      : text_(text), version_(version) {}

  // Steps to the next line that is not blank; false at the end of the text.
  bool Next();
  // Version 2.1 keeps the blank at which a line was folded; later versions drop it.
  void SetVersion(VCardVersion version) { version_ = version; }

  std::string_view line() const { return line_; }  // valid until the next step
  size_t lineBegin() const { return lineBegin_; }
  size_t lineEnd() const { return next_; }

 private:
  std::string_view ReadPhysicalLine();
  bool MayContinue() const;
  void AppendContinuations();

  std::string_view text_;
  VCardVersion version_;
  size_t lineBegin_ = 0;
  size_t next_ = 0;
  std::string_view line_;
  std::string unfolded_;
};

struct VCardLine {
  std::string_view group;  // "item1" of "item1.EMAIL", else empty
  std::string_view name;
  std::string_view params;  // between name and colon, undivided
  std::string_view value;   // as it lies in the file
};

// No value for a line that is not a content line.
std::optional<VCardLine> SplitVCardLine(std::string_view line);

enum class VCardEncoding { kNone, kQuotedPrintable, kBase64 };

// Calls `use` with every piece of `text` between separators outside quotation marks.
template <class Use>
void ForEachPiece(std::string_view text, char separator, Use use) {
  bool quoted = false;
  size_t begin = 0;
  for (size_t i = 0; i <= text.size(); ++i) {
    if (i < text.size() && text[i] == '"') quoted = !quoted;
    if (i < text.size() && (quoted || text[i] != separator)) continue;
    use(text.substr(begin, i - begin));
    begin = i + 1;
  }
}

// How a value is written.
struct VCardCoding {
  VCardEncoding encoding = VCardEncoding::kNone;
  std::string_view charset;  // lives as long as the line
};

// The value with its transfer encoding and character set undone, in UTF-8. Escapes still stand in it.
std::string DecodeVCardValue(std::string_view value, const VCardCoding& coding);

std::string UnescapeVCardText(std::string_view text, VCardVersion version);
// The parts of a structured value between semicolons that no backslash precedes, each unescaped.
std::vector<std::string> SplitVCardComponents(std::string_view text, VCardVersion version);

bool IsVCardBegin(std::string_view line);
bool IsVCardEnd(std::string_view line);

}  // namespace formats
