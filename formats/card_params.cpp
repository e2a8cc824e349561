#include "formats/card_params.h"

#include <algorithm>
#include <array>
#include <utility>

#include "formats/card_text.h"
#include "formats/hex.h"
#include "formats/text_codec.h"

namespace formats {
namespace {

bool IsControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }

bool IsParamNameChar(char c) {
  const char folded = FoldAscii(c);
  return (folded >= 'a' && folded <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '_';
}

std::string UpperAscii(std::string_view text) {
  std::string out(text);
  for (char& c : out) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  return out;
}

// A value may become part of a text, such as a picture's type of its URI, so that it is as clean as those.
std::string Undecorated(std::string_view text, std::string_view dropped) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (IsHighControl(text, i)) {
      ++i;
    } else if (!IsControl(text[i]) && dropped.find(text[i]) == std::string_view::npos) {
      out += text[i];
    }
  }
  return std::string(TrimBlanks(out));
}

// One value of a parameter; quotation marks stand round it only where they must.
void AppendParamValue(std::string& out, std::string_view value) {
  const std::string plain = Undecorated(value, "\"");
  const bool quoted = plain.find_first_of(",;:") != std::string::npos;
  if (quoted) out += '"';
  out += plain;
  if (quoted) out += '"';
}

std::string UnescapeParam(std::string_view value) {
  std::string out;
  for (std::size_t i = 0; i < value.size(); ++i) {
    const char next = value[i] == '^' && i + 1 < value.size() ? value[i + 1] : '\0';
    constexpr std::string_view kEscapes = "n'^", kMeanings = "\n\"^";
    const std::size_t at = next == '\0' ? std::string_view::npos : kEscapes.find(next);
    out += at == std::string_view::npos ? value[i] : kMeanings[at];
    if (at != std::string_view::npos) ++i;
  }
  return out;
}

// A text in a parameter of ours: on one line, as the texts of a contact are.
std::string TextOfParam(std::string_view value) {
  std::string out;
  for (const char c : UnescapeParam(Undecorated(value, "\""))) {
    const bool blank = IsControl(c) || c == ' ';
    if (!blank) out += c;
    if (blank && !out.empty() && out.back() != ' ') out += ' ';
  }
  return std::string(TrimBlanks(out));
}

std::string BytesOfHex(std::string_view hex) {
  std::string bytes;
  for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
    const int high = HexDigit(hex[i]), low = HexDigit(hex[i + 1]);
    if (high < 0 || low < 0) return {};
    bytes += static_cast<char>(high * 16 + low);
  }
  return bytes;
}

uint32_t NumberOf(std::string_view digits) {
  uint64_t value = 0;
  for (const char c : digits) {
    if (c < '0' || c > '9') return 0;
    value = value * 10 + static_cast<uint64_t>(c - '0');
    if (value > UINT32_MAX) return 0;
  }
  return static_cast<uint32_t>(value);
}

int PreferenceOf(std::string_view text) {
  const uint32_t value = NumberOf(text);
  return value >= 1 && value <= 100 ? static_cast<int>(value) : kNotPreferred;
}

class ParamReader {
 public:
  explicit ParamReader(LineUse use) : use_(use) {}

  CardParams Read(std::string_view params) {
    ForEachPiece(params, ';', [this](std::string_view piece) { Add(piece); });
    if (use_ == LineUse::kOther) {
      result_.types = std::move(types_);
      return std::move(result_);
    }
    result_.words.Add(named_);
    std::string types = WeakerTypes();
    if (!types.empty() && !types_.empty()) types += ',';
    types += types_;
    if (!types.empty()) result_.rest.insert(0, ";TYPE=" + types);
    return std::move(result_);
  }

 private:
  void Add(std::string_view piece) {
    const std::size_t equals = piece.find('=');
    if (equals == std::string_view::npos) return AddBare(TrimBlanks(piece));
    const std::string_view name = TrimBlanks(piece.substr(0, equals));
    const std::string_view value = TrimBlanks(piece.substr(equals + 1));
    if (name.empty() || !std::all_of(name.begin(), name.end(), IsParamNameChar)) return;
    if (EqualsFolded(name, "TYPE")) return AddTypes(value);
    if (!AddKnown(name, Unquoted(value)) && !AddOurs(name, Unquoted(value))) Keep(name, value);
  }

  static std::string_view Unquoted(std::string_view value) {
    if (!value.empty() && value.front() == '"') value.remove_prefix(1);
    if (!value.empty() && value.back() == '"') value.remove_suffix(1);
    return value;
  }

  // Version 2.1 writes types and encodings bare.
  void AddBare(std::string_view word) {
    constexpr std::array<std::string_view, 2> kPlainEncodings = {"7BIT", "8BIT"};
    constexpr std::array<std::string_view, 3> kPlaces = {"URL", "INLINE", "CONTENT-ID"};
    const auto is = [word](std::string_view each) { return EqualsFolded(each, word); };
    if (word.size() > 1 && SetEncoding(word)) return;
    if (std::any_of(kPlainEncodings.begin(), kPlainEncodings.end(), is)) return;
    if (std::none_of(kPlaces.begin(), kPlaces.end(), is)) return AddTypes(word);
    if (is("URL") && use_ == LineUse::kOther) Keep("VALUE", "uri");
  }

  bool SetEncoding(std::string_view encoding) {
    if (EqualsFolded(encoding, "QUOTED-PRINTABLE") || EqualsFolded(encoding, "Q")) {
      result_.encoding = VCardEncoding::kQuotedPrintable;
    } else if (EqualsFolded(encoding, "BASE64") || EqualsFolded(encoding, "B")) {
      result_.encoding = VCardEncoding::kBase64;
    } else {
      return false;
    }
    return true;
  }

  // Those whose meaning goes into the contact or the value.
  bool AddKnown(std::string_view name, std::string_view value) {
    if (EqualsFolded(name, "ENCODING")) {
      SetEncoding(value);
    } else if (EqualsFolded(name, "CHARSET")) {
      result_.charset = value;
    } else if (EqualsFolded(name, "VALUE") && use_ != LineUse::kOther) {
      return true;  // told by the value itself
    } else if (EqualsFolded(name, "PREF") && IsPlaced()) {
      result_.preference = std::min(result_.preference, PreferenceOf(value));
    } else {
      return EqualsFolded(name, kGroupParam);
    }
    return true;
  }

  bool AddOurs(std::string_view name, std::string_view value) {
    if (use_ == LineUse::kNumber && EqualsFolded(name, kKeyParam)) {
      result_.key = NumberOf(value);
      return true;
    }
    if (use_ != LineUse::kMember) return false;
    if (EqualsFolded(name, kEntryIdParam)) {
      result_.memberEntryId = BytesOfHex(value);
      return true;
    }
    const std::pair<std::string_view, std::string*> texts[] = {{kNameParam, &result_.memberName},
                                                               {kNumberParam, &result_.memberNumber},
                                                               {kEmailParam, &result_.memberEmail}};
    for (const auto& [known, text] : texts) {
      if (!EqualsFolded(name, known)) continue;
      *text = TextOfParam(value);
      return true;
    }
    return false;
  }

  void Keep(std::string_view name, std::string_view value) {
    result_.rest += ';';
    result_.rest += UpperAscii(name);
    result_.rest += '=';
    bool isFirst = true;
    ForEachPiece(value, ',', [&](std::string_view each) {
      if (!std::exchange(isFirst, false)) result_.rest += ',';
      AppendParamValue(result_.rest, each);
    });
  }

  void AddTypes(std::string_view value) {
    for (std::size_t begin = 0, end; begin <= value.size(); begin = end + 1) {
      end = std::min(value.find(',', begin), value.size());
      AddType(value.substr(begin, end - begin));
    }
  }

  void AddType(std::string_view piece) {
    if (AddCommonType(piece)) return;
    const std::string type = Undecorated(piece, "\";:=");
    if (type.empty() || AddCommonType(type)) return;
    if (!IsPlaced() || !AddWords(type)) KeepType(type);
  }

  bool IsPlaced() const { return use_ == LineUse::kNumber || use_ == LineUse::kPlaced; }

  // The types of nearly all lines, told without a search.
  bool AddCommonType(std::string_view type) {
    if (!IsPlaced() || type.size() > kOtherKindType.size()) return false;
    NumberWords& words = named_;
    const std::pair<std::string_view, bool*> placed[] = {{"work", &words.isWork}, {"home", &words.isHome}};
    const std::pair<std::string_view, bool*> numbers[] = {{"voice", &words.isPhone},
                                                          {"fax", &words.isFax},
                                                          {"cell", &words.isMobile},
                                                          {"pager", &words.isPager},
                                                          {kOtherKindType, &words.isOtherKind}};
    if (SetNamed(placed, type)) return true;
    if (use_ == LineUse::kNumber && SetNamed(numbers, type)) return true;
    if (EqualsFolded(type, "pref")) result_.preference = 1;
    return EqualsFolded(type, "pref") || (use_ == LineUse::kPlaced && EqualsFolded(type, "internet"));
  }

  template <std::size_t kCount>
  static bool SetNamed(const std::pair<std::string_view, bool*> (&flags)[kCount], std::string_view name) {
    for (const auto& [known, flag] : flags) {
      if (EqualsFolded(known, name)) return *flag = true;
    }
    return false;
  }

  // False where the type says more than the words do, so that it is kept beside them.
  bool AddWords(std::string_view type) {
    const NumberWords said = ReadNumberWords(type);
    if (use_ == LineUse::kPlaced && said.HasKind()) return false;
    if (said.isPreferred) result_.preference = 1;
    const bool isNamed =
        said.isWhole && !said.isOtherKind && (said.HasKind() || said.HasPlace() || said.isPreferred);
    (isNamed ? named_ : result_.words).Add(said);
    return isNamed;
  }

  // A fax that is a mobile as well is a fax; what it is besides stays beside it.
  std::string WeakerTypes() const {
    const NumberWords& words = named_;
    const NumberKind kind = result_.words.kind();
    const Place place = result_.words.place();
    std::string types;
    const auto add = [&types](bool isSaid, std::string_view type) {
      if (isSaid) types.append(types.empty() ? "" : ",").append(type);
    };
    add(words.isPhone && kind == NumberKind::kFax, "voice");
    add(words.isPager && kind != NumberKind::kPager, "pager");
    add(words.isMobile && kind != NumberKind::kMobile, "cell");
    add(words.isOtherKind && kind != NumberKind::kOther, kOtherKindType);
    add(words.isHome && place != Place::kHome, "home");
    add(words.isOtherPlace && place != Place::kOther, "other");
    return types;
  }

  void KeepType(std::string_view type) {
    if (!types_.empty()) types_ += ',';
    types_ += type;
  }

  const LineUse use_;
  CardParams result_;
  std::string types_;  // those that are kept as they came
  NumberWords named_;  // by types that say no more than that
};

}  // namespace

CardParams ReadCardParams(std::string_view params, LineUse use) {
  if (params.empty()) return {};
  return IsUtf8(params) ? ParamReader(use).Read(params) : ParamReader(use).Read(DecodeCharset(params, {}));
}

void AppendParam(std::string* out, std::string_view name, std::string_view value) {
  *out += ';';
  *out += name;
  *out += '=';
  // As a value that is kept, so that reading it leaves it as it is.
  const bool quoted = value.find_first_of(",;:") != std::string_view::npos;
  if (quoted) *out += '"';
  for (const char c : value) {
    constexpr std::string_view kSpecial = "\n\"^", kEscapes = "n'^";
    const std::size_t at = kSpecial.find(c);
    if (at == std::string_view::npos) {
      *out += c;
    } else {
      *out += '^';
      *out += kEscapes[at];
    }
  }
  if (quoted) *out += '"';
}

}  // namespace formats
