#include "restriction_rows.hpp"

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

#include "value_layout.hpp"

namespace orv::kit {
namespace {

using Text = std::wstring_view;

constexpr DWORD kIgnoreAll = NORM_IGNORECASE | NORM_IGNORENONSPACE | NORM_IGNOREWIDTH | NORM_IGNOREKANATYPE;

// A text as PT_UNICODE, whatever it was; `room` holds what had to be made.
SPropValue Widened(const SPropValue& value, std::wstring& room) {
  if (PROP_TYPE(value.ulPropTag) != PT_STRING8) return value;
  const char* text = value.Value.lpszA != nullptr ? value.Value.lpszA : "";
  const int length = MultiByteToWideChar(CP_ACP, 0, text, -1, nullptr, 0);
  room.resize(static_cast<size_t>(std::max(length, 1)));
  MultiByteToWideChar(CP_ACP, 0, text, -1, room.data(), length);
  SPropValue wide{};
  wide.ulPropTag = CHANGE_PROP_TYPE(value.ulPropTag, PT_UNICODE);
  wide.Value.lpszW = room.data();
  return wide;
}

Text TextOf(const SPropValue& wide) noexcept {
  return wide.Value.lpszW != nullptr ? Text(wide.Value.lpszW) : Text();
}

// Whether `test` holds for the value or, of an array, for one of its elements.
template <class Test>
bool AnyElement(const SPropValue& value, const Test& test) {
  if (!IsArray(PROP_TYPE(value.ulPropTag))) return test(value);
  for (ULONG i = 0; i < CountOf(value); ++i) {
    if (test(ElementOf(value, i))) return true;
  }
  return false;
}

bool HoldsFor(ULONG relop, int order) noexcept {
  switch (relop) {
    case RELOP_LT:
      return order < 0;
    case RELOP_LE:
      return order <= 0;
    case RELOP_GT:
      return order > 0;
    case RELOP_GE:
      return order >= 0;
    case RELOP_EQ:
      return order == 0;
    default:
      return order != 0;
  }
}

// False for values that have no order between them.
bool Compare(ULONG relop, const SPropValue& one, const SPropValue& other) {
  std::wstring room, otherRoom;
  const SPropValue wide = Widened(one, room), otherWide = Widened(other, otherRoom);
  if (PROP_TYPE(wide.ulPropTag) != PROP_TYPE(otherWide.ulPropTag)) return false;
  return HoldsFor(relop, CompareValues(wide, otherWide));
}

int LengthOf(Text text) noexcept { return static_cast<int>(text.size()); }

DWORD IgnoredBy(ULONG fuzzyLevel) noexcept {
  if ((fuzzyLevel & FL_LOOSE) != 0) return kIgnoreAll;
  const DWORD aboutCase = (fuzzyLevel & FL_IGNORECASE) != 0 ? NORM_IGNORECASE : 0;
  return aboutCase | ((fuzzyLevel & FL_IGNORENONSPACE) != 0 ? NORM_IGNORENONSPACE : 0);
}

bool ContainsExactly(Text text, Text part, ULONG mode) noexcept {
  if (mode == FL_FULLSTRING) return text == part;
  return mode == FL_PREFIX ? text.starts_with(part) : text.find(part) != Text::npos;
}

bool ContainsByOrdinal(Text text, Text part, ULONG mode) noexcept {
  if (mode == FL_FULLSTRING)
    return CompareStringOrdinal(text.data(), LengthOf(text), part.data(), LengthOf(part), TRUE) == CSTR_EQUAL;
  const DWORD where = mode == FL_PREFIX ? FIND_STARTSWITH : FIND_FROMSTART;
  return FindStringOrdinal(where, text.data(), LengthOf(text), part.data(), LengthOf(part), TRUE) >= 0;
}

bool ContainsByLanguage(Text text, Text part, ULONG mode, DWORD ignored) noexcept {
  if (mode == FL_FULLSTRING)
    return CompareStringEx(LOCALE_NAME_USER_DEFAULT, ignored, text.data(), LengthOf(text), part.data(),
                           LengthOf(part), nullptr, nullptr, 0) == CSTR_EQUAL;
  const DWORD where = mode == FL_PREFIX ? FIND_STARTSWITH : FIND_FROMSTART;
  return FindNLSStringEx(LOCALE_NAME_USER_DEFAULT, where | ignored, text.data(), LengthOf(text), part.data(),
                         LengthOf(part), nullptr, nullptr, nullptr, 0) >= 0;
}

// The platform refuses empty texts, so they are answered here.
bool Contains(Text text, Text part, ULONG mode, DWORD ignored) noexcept {
  if (part.empty()) return mode != FL_FULLSTRING || text.empty();
  if (text.empty()) return false;
  if (ignored == 0) return ContainsExactly(text, part, mode);
  return ignored == NORM_IGNORECASE ? ContainsByOrdinal(text, part, mode)
                                    : ContainsByLanguage(text, part, mode, ignored);
}

bool ContainsBytes(const SBinary& bytes, const SBinary& part, ULONG mode) noexcept {
  const std::string_view all(reinterpret_cast<const char*>(bytes.lpb), bytes.cb);
  const std::string_view wanted(reinterpret_cast<const char*>(part.lpb), part.cb);
  if (mode == FL_FULLSTRING) return all == wanted;
  return mode == FL_PREFIX ? all.starts_with(wanted) : all.find(wanted) != std::string_view::npos;
}

bool ContainsValue(const SPropValue& value, const SPropValue& part, ULONG fuzzyLevel) {
  const ULONG mode = fuzzyLevel & kFuzzyMode;
  std::wstring room, partRoom;
  const SPropValue wide = Widened(value, room), widePart = Widened(part, partRoom);
  const ULONG type = PROP_TYPE(wide.ulPropTag);
  if (type != PROP_TYPE(widePart.ulPropTag)) return false;
  if (type == PT_BINARY) return ContainsBytes(wide.Value.bin, widePart.Value.bin, mode);
  return Contains(TextOf(wide), TextOf(widePart), mode, IgnoredBy(fuzzyLevel));
}

// The next word of the text, which is cut off; none: empty. Words are parted by what names are written with.
Text TakeWord(Text& text) noexcept {
  static constexpr Text kBetweenWords = L" \t\r\n,;.\"'()<>-/";
  text.remove_prefix(std::min(text.find_first_not_of(kBetweenWords), text.size()));
  const Text word = text.substr(0, text.find_first_of(kBetweenWords));
  text.remove_prefix(word.size());
  return word;
}

bool HasWordLike(Text text, Text beginning) noexcept {
  for (Text word = TakeWord(text); !word.empty(); word = TakeWord(text)) {
    if (Contains(word, beginning, FL_PREFIX, kIgnoreAll)) return true;
  }
  return false;
}

bool HasAllWordsLike(Text text, Text name) noexcept {
  Text beginning = TakeWord(name);
  if (beginning.empty()) return false;
  for (; !beginning.empty(); beginning = TakeWord(name)) {
    if (!HasWordLike(text, beginning)) return false;
  }
  return true;
}

ULONG BitsOf(const SPropValue& value) noexcept {
  const bool isShort = PROP_TYPE(value.ulPropTag) != PT_LONG;
  return isShort ? value.Value.b : value.Value.ul;
}

size_t SizeOfElement(const SPropValue& value) noexcept {
  switch (PROP_TYPE(value.ulPropTag)) {
    case PT_UNICODE:
      return TextSize(value.Value.lpszW);
    case PT_STRING8:
      return TextSize(value.Value.lpszA);
    case PT_BINARY:
      return value.Value.bin.cb;
    default:
      return FixedSize(PROP_TYPE(value.ulPropTag));
  }
}

size_t SizeOf(const SPropValue& value) noexcept {
  size_t size = 0;
  AnyElement(value, [&size](const SPropValue& element) {
    size += SizeOfElement(element);
    return false;
  });
  return size;
}

}  // namespace

bool RowAnswers::Satisfies(const SRestriction& one) const {
  switch (one.rt) {
    case RES_CONTENT:
      return Has(one.res.resContent);
    case RES_PROPERTY:
      return Has(one.res.resProperty);
    case RES_COMPAREPROPS:
      return Has(one.res.resCompareProps);
    case RES_BITMASK:
      return Has(one.res.resBitMask);
    case RES_SIZE:
      return Has(one.res.resSize);
    case RES_EXIST:
      return Find(one.res.resExist.ulPropTag) != nullptr;
    default:
      return SatisfiesNested(one);
  }
}

bool RowAnswers::SatisfiesNested(const SRestriction& one) const {
  switch (one.rt) {
    case RES_AND:
    case RES_COMMENT:
      return !SatisfiesAnyOf(one, false);
    case RES_OR:
      return SatisfiesAnyOf(one, true);
    case RES_NOT:
      return SatisfiesAnyOf(one, false);
    default:
      return SatisfiesBelow(one.res.resSub);
  }
}

// Whether one of the restrictions in it answers as wanted.
bool RowAnswers::SatisfiesAnyOf(const SRestriction& one, bool wanted) const {
  const Children below = ChildrenOf(one);
  return std::any_of(below.first, below.first + below.count,
                     [&](const SRestriction& each) { return Satisfies(each) == wanted; });
}

bool RowAnswers::SatisfiesBelow(const SSubRestriction& sub) const {
  if (!below_) return false;
  return below_(sub.ulSubObject, [&sub](sdk::ValueView row) {
    const Restriction::AnyBelow nothing;
    return RowAnswers(row, nothing).Satisfies(*sub.lpRes);
  });
}

// A value that can be read, whoever made it.
const SPropValue* RowAnswers::Find(ULONG tag) const noexcept {
  const SPropValue* value = FindValue(row_, tag);
  const bool isThere = value != nullptr && PROP_TYPE(value->ulPropTag) != PT_ERROR;
  return isThere && CheckValue(*value) == S_OK ? value : nullptr;
}

bool RowAnswers::Has(const SContentRestriction& content) const {
  if (IsName(content.ulPropTag)) return IsKnownBy(*content.lpProp);
  const SPropValue* value = Find(content.ulPropTag);
  return value != nullptr && AnyElement(*value, [&content](const SPropValue& element) {
           return ContainsValue(element, *content.lpProp, content.ulFuzzyLevel);
         });
}

bool RowAnswers::Has(const SPropertyRestriction& property) const {
  if (IsName(property.ulPropTag)) return IsKnownBy(*property.lpProp);
  const SPropValue* value = Find(property.ulPropTag);
  if (value == nullptr) return false;
  if (IsArray(PROP_TYPE(property.lpProp->ulPropTag)))
    return Compare(property.relop, *value, *property.lpProp);
  return AnyElement(*value, [&property](const SPropValue& element) {
    return Compare(property.relop, element, *property.lpProp);
  });
}

bool RowAnswers::Has(const SComparePropsRestriction& compare) const {
  const SPropValue* one = Find(compare.ulPropTag1);
  const SPropValue* other = Find(compare.ulPropTag2);
  return one != nullptr && other != nullptr && Compare(compare.relop, *one, *other);
}

bool RowAnswers::Has(const SBitMaskRestriction& bits) const {
  const SPropValue* value = Find(bits.ulPropTag);
  if (value == nullptr) return false;
  const ULONG type = PROP_TYPE(value->ulPropTag);
  if (type != PT_LONG && type != PT_I2 && type != PT_BOOLEAN) return false;
  return ((BitsOf(*value) & bits.ulMask) != 0) == (bits.relBMR == BMR_NEZ);
}

bool RowAnswers::Has(const SSizeRestriction& size) const {
  const SPropValue* value = Find(size.ulPropTag);
  if (value == nullptr) return false;
  const size_t bytes = SizeOf(*value);
  return HoldsFor(size.relop, (bytes > size.cb) - (bytes < size.cb));
}

bool RowAnswers::IsKnownBy(const SPropValue& name) const {
  std::wstring room;
  const Text wanted = TextOf(Widened(name, room));
  const auto textOf = [this](ULONG tag) {
    const SPropValue* value = Find(tag);
    return value != nullptr && PROP_TYPE(value->ulPropTag) == PT_UNICODE ? TextOf(*value) : Text();
  };
  if (HasAllWordsLike(textOf(PR_DISPLAY_NAME_W), wanted)) return true;
  return !wanted.empty() && std::any_of(std::begin(kNameAddresses), std::end(kNameAddresses), [&](ULONG tag) {
    return Contains(textOf(tag), wanted, FL_PREFIX, kIgnoreAll);
  });
}

}  // namespace orv::kit
