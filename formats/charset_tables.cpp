#include "formats/charset_tables.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <utility>

#include "formats/text_codec.h"

namespace formats {
namespace {

struct OneByteSet {
  unsigned page;
  char16_t units[128];
};
struct TwoByteRow {
  uint8_t lead, first;  // first of the second bytes that the row has
  uint16_t count;
  uint32_t place;
};
struct TwoByteSet {
  unsigned page;
  uint16_t first, count;  // rows
};
struct LinearRun {
  uint16_t index;
  char16_t value;
};

#include "formats/tables/charset_tables.inc"

constexpr unsigned kShiftJis = 932, kGbk = 936, kEucJp = 51932, kEucJpPlane = 51933, kIso2022Jp = 50220,
                   kGb18030 = 54936;
constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kFirstHalfWidthKatakana = 0xFF61;

struct CharsetName {
  std::string_view name;  // letters and digits only, lower case
  unsigned codePage;
};

// Latin-1 is read as its superset 1252, because that is what writers who name it mean.
constexpr CharsetName kCharsetNames[] = {
    {"utf8", 65001},        {"usascii", 1252},  {"ascii", 1252},     {"iso88591", 1252}, {"latin1", 1252},
    {"latin2", 28592},      {"latin3", 28593},  {"latin4", 28594},   {"latin5", 28599},  {"latin9", 28605},
    {"iso885911", 874},     {"shiftjis", 932},  {"sjis", 932},       {"xsjis", 932},     {"mskanji", 932},
    {"windows31j", 932},    {"cp932", 932},     {"eucjp", 51932},    {"xeucjp", 51932},  {"iso2022jp", 50220},
    {"csiso2022jp", 50220}, {"gb2312", 936},    {"gbk", 936},        {"xgbk", 936},      {"cp936", 936},
    {"euccn", 936},         {"gb18030", 54936}, {"big5", 950},       {"cp950", 950},     {"euckr", 949},
    {"ksc56011987", 949},   {"ksc5601", 949},   {"cp949", 949},      {"koi8r", 20866},   {"koi8", 20866},
    {"koi8u", 21866},       {"tis620", 874},    {"windows874", 874}, {"cp874", 874},     {"macintosh", 10000},
    {"macroman", 10000},    {"ibm437", 437},    {"cp437", 437},      {"ibm850", 850},    {"cp850", 850},
    {"ibm852", 852},        {"cp852", 852},     {"ibm866", 866},     {"cp866", 866}};

unsigned char ByteAt(std::string_view bytes, std::size_t at) {
  return at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0;
}

char16_t FindPair(unsigned page, unsigned lead, unsigned second) {
  const auto* set = std::find_if(std::begin(kTwoByteSets), std::end(kTwoByteSets),
                                 [page](const TwoByteSet& each) { return each.page == page; });
  const TwoByteRow* const begin = kTwoByteRows + set->first;
  const TwoByteRow* const end = begin + set->count;
  const TwoByteRow* const row = std::lower_bound(
      begin, end, lead, [](const TwoByteRow& each, unsigned wanted) { return each.lead < wanted; });
  if (row == end || row->lead != lead || second < row->first || second - row->first >= row->count) return 0;
  return kTwoByteUnits[row->place + second - row->first];
}

// A character of JIS X 0208 by its two numbers from 0x21, which Shift-JIS holds in another order.
char16_t FindJis(unsigned row, unsigned cell) {
  const unsigned lead = (row - 0x21) / 2 + (row < 0x5F ? 0x81 : 0xC1);
  const unsigned second = row % 2 == 0 ? cell + 0x7E : cell + (cell < 0x60 ? 0x1F : 0x20);
  return FindPair(kShiftJis, lead, second);
}

// Decoders take one character at a time: what stands at `at`, which they move past it; 0 for what is none.
class Decoder {
 public:
  Decoder(std::string_view bytes, unsigned page) : bytes_(bytes), page_(page) {}

  DecodedText Run() {
    result_.text.reserve(bytes_.size() + bytes_.size() / 2);
    while (at_ < bytes_.size()) {
      const std::size_t before = at_;
      const char32_t c = Next();
      if (c == kNothing) continue;
      if (c == 0 && bytes_[before] != '\0') {
        at_ = before + 1;
        result_.isMalformed = true;
        AppendUtf8(result_.text, kReplacement);
      } else {
        AppendUtf8(result_.text, c);
      }
    }
    return std::move(result_);
  }

 private:
  static constexpr char32_t kNothing = 0xFFFFFFFF;  // an escape

  char32_t Next() {
    if (page_ == kIso2022Jp) return NextIso2022();
    const unsigned lead = ByteAt(bytes_, at_++);
    if (lead < 0x80) return lead;
    if (page_ == kShiftJis && lead >= 0xA1 && lead <= 0xDF) return kFirstHalfWidthKatakana + (lead - 0xA1);
    if (page_ == kEucJp) return NextEucJp(lead);
    if (page_ == kGb18030 && ByteAt(bytes_, at_) >= 0x30 && ByteAt(bytes_, at_) <= 0x39)
      return NextOfFour(lead);
    // The euro sign of the code page stands alone.
    if (page_ == kGbk && lead == 0x80) return 0x20AC;
    return FindPair(page_ == kGb18030 ? kGbk : page_, lead, ByteAt(bytes_, at_++));
  }

  char32_t NextEucJp(unsigned lead) {
    constexpr unsigned kKatakana = 0x8E, kOtherPlane = 0x8F;
    const unsigned second = ByteAt(bytes_, at_++);
    if (lead == kKatakana)
      return second >= 0xA1 && second <= 0xDF ? kFirstHalfWidthKatakana + (second - 0xA1) : 0;
    if (lead == kOtherPlane) return FindPair(kEucJpPlane, second, ByteAt(bytes_, at_++));
    return lead >= 0xA1 && second >= 0xA1 ? FindJis(lead - 0x80, second - 0x80) : char16_t{0};
  }

  // Forms of four bytes count on through all that the two-byte forms leave out.
  char32_t NextOfFour(unsigned lead) {
    constexpr uint32_t kFirstSupplementary = 189000;
    const unsigned second = ByteAt(bytes_, at_), third = ByteAt(bytes_, at_ + 1),
                   fourth = ByteAt(bytes_, at_ + 2);
    if (lead < 0x81 || third < 0x81 || fourth < 0x30 || fourth > 0x39) return 0;
    at_ += 3;
    const uint32_t index =
        (((lead - 0x81) * 10 + (second - 0x30)) * 126 + (third - 0x81)) * 10 + (fourth - 0x30);
    if (index >= kFirstSupplementary) {
      const uint32_t value = 0x10000 + (index - kFirstSupplementary);
      return value <= 0x10FFFF ? value : 0;
    }
    const auto* run =
        std::upper_bound(std::begin(kGb18030Runs), std::end(kGb18030Runs), index,
                         [](uint32_t wanted, const LinearRun& each) { return wanted < each.index; });
    if (run == std::begin(kGb18030Runs)) return 0;
    const char32_t value = (run - 1)->value + (index - (run - 1)->index);
    return value < 0x10000 && (value < 0xD800 || value > 0xDFFF) ? value : 0;
  }

  char32_t NextIso2022() {
    constexpr char kEscape = '\x1B';
    if (bytes_[at_] == kEscape && TakeEscape()) return kNothing;
    const unsigned first = ByteAt(bytes_, at_++);
    // A line's end returns to ASCII, whatever stood before.
    if (first == '\n' || first == '\r') mode_ = Mode::kAscii;
    if (mode_ == Mode::kAscii || first < 0x21) return first < 0x80 ? first : 0;
    if (mode_ == Mode::kKatakana) return first <= 0x5F ? kFirstHalfWidthKatakana + (first - 0x21) : 0;
    const unsigned second = ByteAt(bytes_, at_++);
    if (first > 0x7E || second < 0x21 || second > 0x7E) return 0;
    return mode_ == Mode::kSecondPlane ? FindPair(kEucJpPlane, first + 0x80, second + 0x80)
                                       : FindJis(first, second);
  }

  bool TakeEscape() {
    constexpr std::pair<std::string_view, Mode> kEscapes[] = {
        {"\x1B(B", Mode::kAscii}, {"\x1B(J", Mode::kAscii}, {"\x1B(I", Mode::kKatakana},
        {"\x1B$@", Mode::kJis},   {"\x1B$B", Mode::kJis},   {"\x1B$(D", Mode::kSecondPlane}};
    for (const auto& [escape, mode] : kEscapes) {
      if (bytes_.substr(at_, escape.size()) != escape) continue;
      at_ += escape.size();
      mode_ = mode;
      return true;
    }
    return false;
  }

  enum class Mode { kAscii, kKatakana, kJis, kSecondPlane };

  const std::string_view bytes_;
  const unsigned page_;
  std::size_t at_ = 0;
  Mode mode_ = Mode::kAscii;
  DecodedText result_;
};

DecodedText DecodeOneByte(std::string_view bytes, const OneByteSet& set) {
  DecodedText result;
  result.text.reserve(bytes.size() + bytes.size() / 2);
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    AppendUtf8(result.text, byte < 0x80 ? byte : set.units[byte - 0x80]);
  }
  return result;
}

// "ISO-8859-15" and "windows-1250" carry their number. 0 where the name has no such beginning.
unsigned NumberedPage(std::string_view name, std::string_view start, unsigned first, unsigned least,
                      unsigned most) {
  if (name.substr(0, start.size()) != start || name.size() == start.size() || name.size() > start.size() + 2)
    return 0;
  unsigned number = 0;
  for (const char c : name.substr(start.size())) {
    if (c < '0' || c > '9') return 0;
    number = number * 10 + static_cast<unsigned>(c - '0');
  }
  return number >= least && number <= most && number != 12 ? first + number : 0;
}

}  // namespace

unsigned CodePageOf(std::string_view charset) {
  constexpr std::size_t kLongestName = 32;
  std::string name;
  for (const char c : charset.substr(0, kLongestName)) {
    const char folded = FoldAscii(c);
    if ((folded >= 'a' && folded <= 'z') || (c >= '0' && c <= '9')) name += folded;
  }
  for (const CharsetName& known : kCharsetNames) {
    if (known.name == name) return known.codePage;
  }
  for (const std::string_view start : {"windows125", "cp125", "win125"}) {
    if (const unsigned page = NumberedPage(name, start, 1250, 0, 8)) return page;
  }
  return NumberedPage(name, "iso8859", 28590, 2, 16);
}

std::optional<DecodedText> DecodeCodePage(std::string_view bytes, unsigned codePage) {
  for (const OneByteSet& set : kOneByteSets) {
    if (set.page == codePage) return DecodeOneByte(bytes, set);
  }
  const bool isTwoByte = std::any_of(std::begin(kTwoByteSets), std::end(kTwoByteSets),
                                     [codePage](const TwoByteSet& each) { return each.page == codePage; });
  const bool isDerived = codePage == kEucJp || codePage == kIso2022Jp || codePage == kGb18030;
  if (!isTwoByte && !isDerived) return std::nullopt;
  return Decoder(bytes, codePage).Run();
}

}  // namespace formats
