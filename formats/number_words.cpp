// The words for the kinds of numbers, and how a text is taken apart into them.
#include "formats/number_words.h"

#include <algorithm>
#include <iterator>
#include <string>

#include "formats/text_codec.h"

namespace formats {
namespace {

enum class Meaning : uint8_t {
  kFax,
  kMobile,
  kPager,
  kPhone,
  kOtherKind,
  kWork,
  kHome,
  kOtherPlace,
  kPreferred,
  kNothing
};

struct Word {
  std::string_view text;  // as FoldWords gives it
  Meaning meaning;
};

// English, German, French, Japanese, Arabic. Where one word begins another the longer one stands first.
constexpr Word kWords[] = {
    {"facsimile", Meaning::kFax},
    {"faksimile", Meaning::kFax},
    {"fax", Meaning::kFax},
    {"telefax", Meaning::kFax},
    {"telecopieur", Meaning::kFax},
    {"telecopier", Meaning::kFax},
    {"telecopie", Meaning::kFax},
    {"fernkopierer", Meaning::kFax},
    {"fernkopie", Meaning::kFax},
    {"ファックス", Meaning::kFax},
    {"ファクス", Meaning::kFax},
    {"ファクシミリ", Meaning::kFax},
    {"ﾌｧｯｸｽ", Meaning::kFax},
    {"ﾌｧｸｽ", Meaning::kFax},
    {"الفاكس", Meaning::kFax},
    {"فاكس", Meaning::kFax},
    {"الناسوخ", Meaning::kFax},
    {"ناسوخ", Meaning::kFax},
    {"mobiltelefon", Meaning::kMobile},
    {"mobilnummer", Meaning::kMobile},
    {"mobilfunk", Meaning::kMobile},
    {"mobile", Meaning::kMobile},
    {"mobil", Meaning::kMobile},
    {"cellular", Meaning::kMobile},
    {"cellphone", Meaning::kMobile},
    {"cell", Meaning::kMobile},
    {"handy", Meaning::kMobile},
    {"iphone", Meaning::kMobile},
    {"portable", Meaning::kMobile},
    {"携帯電話", Meaning::kMobile},
    {"携帯", Meaning::kMobile},
    {"モバイル", Meaning::kMobile},
    {"الجوال", Meaning::kMobile},
    {"جوال", Meaning::kMobile},
    {"المحمول", Meaning::kMobile},
    {"محمول", Meaning::kMobile},
    {"موبايل", Meaning::kMobile},
    {"النقال", Meaning::kMobile},
    {"pager", Meaning::kPager},
    {"beeper", Meaning::kPager},
    {"piepser", Meaning::kPager},
    {"pieper", Meaning::kPager},
    {"recepteur d'appel", Meaning::kPager},
    {"ポケットベル", Meaning::kPager},
    {"ポケベル", Meaning::kPager},
    {"البيجر", Meaning::kPager},
    {"بيجر", Meaning::kPager},
    {"telephone", Meaning::kPhone},
    {"telefonnummer", Meaning::kPhone},
    {"telefon", Meaning::kPhone},
    {"telex", Meaning::kOtherKind},
    {"tel", Meaning::kPhone},
    {"phone", Meaning::kPhone},
    {"voice", Meaning::kPhone},
    {"rufnummer", Meaning::kPhone},
    {"電話番号", Meaning::kPhone},
    {"電話", Meaning::kPhone},
    {"الهاتف", Meaning::kPhone},
    {"هاتف", Meaning::kPhone},
    {"テレックス", Meaning::kOtherKind},
    {"تلكس", Meaning::kOtherKind},
    {"isdn", Meaning::kOtherKind},
    {"modem", Meaning::kOtherKind},
    {"work", Meaning::kWork},
    {"business", Meaning::kWork},
    {"office", Meaning::kWork},
    {"geschaftlich", Meaning::kWork},
    {"geschaftl", Meaning::kWork},
    {"geschafts", Meaning::kWork},
    {"geschaft", Meaning::kWork},
    {"dienstlich", Meaning::kWork},
    {"dienst", Meaning::kWork},
    {"arbeit", Meaning::kWork},
    {"bureau", Meaning::kWork},
    {"buero", Meaning::kWork},
    {"buro", Meaning::kWork},
    {"firmen", Meaning::kWork},
    {"firma", Meaning::kWork},
    {"professionnelle", Meaning::kWork},
    {"professionnel", Meaning::kWork},
    {"travail", Meaning::kWork},
    {"会社", Meaning::kWork},
    {"勤務先", Meaning::kWork},
    {"職場", Meaning::kWork},
    {"仕事", Meaning::kWork},
    {"العمل", Meaning::kWork},
    {"عمل", Meaning::kWork},
    {"المكتب", Meaning::kWork},
    {"home", Meaning::kHome},
    {"private", Meaning::kHome},
    {"privat", Meaning::kHome},
    {"zuhause", Meaning::kHome},
    {"domicile", Meaning::kHome},
    {"maison", Meaning::kHome},
    {"personnelle", Meaning::kHome},
    {"personnel", Meaning::kHome},
    {"自宅", Meaning::kHome},
    {"المنزل", Meaning::kHome},
    {"منزل", Meaning::kHome},
    {"البيت", Meaning::kHome},
    {"other", Meaning::kOtherPlace},
    {"anderes", Meaning::kOtherPlace},
    {"andere", Meaning::kOtherPlace},
    {"weiteres", Meaning::kOtherPlace},
    {"weitere", Meaning::kOtherPlace},
    {"sonstiges", Meaning::kOtherPlace},
    {"sonstige", Meaning::kOtherPlace},
    {"autre", Meaning::kOtherPlace},
    {"その他", Meaning::kOtherPlace},
    {"آخر", Meaning::kOtherPlace},
    {"أخرى", Meaning::kOtherPlace},
    {"preferred", Meaning::kPreferred},
    {"pref", Meaning::kPreferred},
    {"bevorzugt", Meaning::kPreferred},
    {"main", Meaning::kNothing},
    {"primary", Meaning::kNothing},
    {"haupt", Meaning::kNothing},
    {"principale", Meaning::kNothing},
    {"principal", Meaning::kNothing},
    {"numbers", Meaning::kNothing},
    {"number", Meaning::kNothing},
    {"nummer", Meaning::kNothing},
    {"numero", Meaning::kNothing},
    {"num", Meaning::kNothing},
    {"nr", Meaning::kNothing},
    {"no", Meaning::kNothing},
    {"de", Meaning::kNothing},
    {"du", Meaning::kNothing},
    {"番号", Meaning::kNothing},
    {"の", Meaning::kNothing},
    {"رقم", Meaning::kNothing},
    {"الرئيسي", Meaning::kNothing},
};

// Letters of Latin-1 and the few beyond it that our languages use, from U+00C0, without their accents.
constexpr std::string_view kPlainLatin = "aaaaaaaceeeeiiiidnooooo*ouuuuytsaaaaaaaceeeeiiiidnooooo/ouuuuyty";

char32_t FoldPoint(char32_t c) {
  if (c >= 0xFF01 && c <= 0xFF5E) c -= 0xFEE0;
  if (c < 0x80) return static_cast<char32_t>(FoldAscii(static_cast<char>(c)));
  if (c >= 0xC0 && c <= 0xFF && c != 0xD7 && c != 0xF7) return static_cast<char32_t>(kPlainLatin[c - 0xC0]);
  return c;
}

bool IsCombiningMark(char32_t c) { return c >= 0x300 && c <= 0x36F; }

void Apply(Meaning meaning, NumberWords& words) {
  switch (meaning) {
    case Meaning::kFax:
      words.isFax = true;
      return;
    case Meaning::kMobile:
      words.isMobile = true;
      return;
    case Meaning::kPager:
      words.isPager = true;
      return;
    case Meaning::kPhone:
      words.isPhone = true;
      return;
    case Meaning::kOtherKind:
      words.isOtherKind = true;
      return;
    case Meaning::kWork:
      words.isWork = true;
      return;
    case Meaning::kHome:
      words.isHome = true;
      return;
    case Meaning::kOtherPlace:
      words.isOtherPlace = true;
      return;
    case Meaning::kPreferred:
      words.isPreferred = true;
      return;
    case Meaning::kNothing:
      return;
  }
}

bool IsLatin(char c) { return FoldAscii(c) >= 'a' && FoldAscii(c) <= 'z'; }

// Short words that say nothing are words only where no letter follows.
bool IsWordAt(std::string_view text, const Word& word) {
  constexpr std::size_t kShort = 3;
  if (text.front() != word.text.front() || text.substr(0, word.text.size()) != word.text) return false;
  const bool goesOn = text.size() > word.text.size() && IsLatin(text[word.text.size()]);
  return word.meaning != Meaning::kNothing || word.text.size() > kShort || !goesOn;
}

const Word* WordAt(std::string_view text) {
  const auto* found = std::find_if(std::begin(kWords), std::end(kWords),
                                   [text](const Word& word) { return IsWordAt(text, word); });
  return found == std::end(kWords) ? nullptr : found;
}

// The letters that are no word of ours: a whole word, or one byte of another script.
std::string_view UnknownAt(std::string_view text) {
  if (!IsLatin(text.front())) return text.substr(0, 1);
  return text.substr(
      0, static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), IsLatin) - text.begin()));
}

bool IsPunctuation(char c) { return static_cast<unsigned char>(c) < 0x80 && !IsLatin(c); }

}  // namespace

NumberKind NumberWords::kind() const {
  if (isFax) return NumberKind::kFax;
  if (isPager) return NumberKind::kPager;
  if (isMobile) return NumberKind::kMobile;
  return isOtherKind ? NumberKind::kOther : NumberKind::kPhone;
}

Place NumberWords::place() const {
  if (isWork) return Place::kWork;
  if (isHome) return Place::kHome;
  return isOtherPlace ? Place::kOther : Place::kNone;
}

void NumberWords::Add(const NumberWords& more) {
  isFax |= more.isFax;
  isMobile |= more.isMobile;
  isPager |= more.isPager;
  isPhone |= more.isPhone;
  isOtherKind |= more.isOtherKind;
  isPreferred |= more.isPreferred;
  isWork |= more.isWork;
  isHome |= more.isHome;
  isOtherPlace |= more.isOtherPlace;
  isWhole &= more.isWhole;
}

NumberWords ReadNumberWords(std::string_view text, std::string* unknown) {
  constexpr std::size_t kLongest = 200;  // nobody calls a number by more
  NumberWords words;
  words.isWhole = text.size() <= kLongest;
  const std::string folded = FoldWords(text.substr(0, kLongest));
  std::string_view left = folded;
  if (left.substr(0, 2) == "x-") left.remove_prefix(2);
  bool isNewWord = false;
  while (!left.empty()) {
    std::string_view step = left.substr(0, 1);
    if (IsPunctuation(left.front())) {
      isNewWord = true;
    } else if (const Word* word = WordAt(left)) {
      Apply(word->meaning, words);
      step = word->text;
    } else {
      step = UnknownAt(left);
      words.isWhole = false;
      // In a compound the fax is still told.
      words.isFax |= step.find("fax") != std::string_view::npos;
      if (unknown != nullptr && isNewWord && !unknown->empty()) *unknown += ' ';
      if (unknown != nullptr) *unknown += step;
      isNewWord = false;
    }
    left.remove_prefix(step.size());
  }
  return words;
}

std::string FoldWords(std::string_view text) {
  std::string folded;
  folded.reserve(text.size());
  for (std::size_t pos = 0; pos < text.size();) {
    const char32_t c = NextCodePoint(text, pos);
    if (!IsCombiningMark(c)) AppendUtf8(folded, FoldPoint(c == kNoCodePoint ? U'?' : c));
  }
  return folded;
}

}  // namespace formats
