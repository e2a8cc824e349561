#include "providers/book/provider/words.h"

#include <algorithm>

#include "orv/orvcodes.h"
#include "providers/book/text.h"
#include "providers/book/windows/resource.h"

namespace book {
namespace {

UINT TextOf(formats::Place place) {
  switch (place) {
    case formats::Place::kWork:
      return IDS_BUSINESS_FAX;
    case formats::Place::kHome:
      return IDS_HOME_FAX;
    case formats::Place::kOther:
      return IDS_OTHER_FAX;
    default:
      return IDS_FAX;
  }
}

UINT TextOf(HRESULT code) {
  switch (code) {
    case MAPI_E_NOT_FOUND:
      return IDS_BOOK_MISSING;
    case MAPI_E_INVALID_OBJECT:
      return IDS_NO_BOOK;
    case MAPI_E_CORRUPT_STORE:
      return IDS_BOOK_DAMAGED;
    case MAPI_E_BUSY:
      return IDS_BOOK_BUSY;
    case MAPI_E_NO_ACCESS:
      return IDS_BOOK_NO_ACCESS;
    case MAPI_E_VERSION:
      return IDS_BOOK_NEWER;
    case MAPI_E_OBJECT_CHANGED:
      return IDS_BOOK_OTHER;
    default:
      return IDS_BOOK_UNREADABLE;
  }
}

constexpr std::wstring_view kOpening = L" (";

void Add(std::wstring& text, std::wstring_view part) {
  if (!text.empty()) text += L", ";
  text += part;
}

template <class Say>
std::wstring NameOf(const Row& row, const Say& say) {
  const std::wstring name = ToWide(row.Listed());
  const bool isPlain = !row.hasNamesake && !row.isOneOfSeveral && !row.number.empty();
  if (row.isList || isPlain) return name;
  std::wstring behind;
  const std::string& distinction = row.company.empty() ? row.number : row.company;
  if (row.hasNamesake && !distinction.empty()) Add(behind, ToWide(distinction));
  if (row.isOneOfSeveral) Add(behind, say(TextOf(row.place)));
  if (row.number.empty()) Add(behind, say(IDS_NO_FAX));
  return behind.empty() ? name : name + std::wstring(kOpening) + behind + L')';
}

}  // namespace

Wording::Wording(const kit::Language& language) {
  for (UINT each = IDS_FAX; each <= IDS_BOOK_UNREADABLE; ++each) words_.push_back(language.Text(each));
}

const std::wstring& Wording::Say(UINT text) const { return words_[text - IDS_FAX]; }

std::wstring Wording::DisplayNameOf(const Row& row) const {
  return NameOf(row, [this](UINT text) { return Say(text); });
}

bool AreNamedAlike(const Row& one, const Row& other) {
  const auto number = [](UINT text) { return std::to_wstring(text); };
  return NameOf(one, number) == NameOf(other, number);
}

std::vector<std::wstring_view> PlainNamesOf(std::wstring_view text) {
  std::vector<std::wstring_view> names;
  if (!text.ends_with(L')')) return names;
  for (size_t end = text.find(kOpening); end != text.npos; end = text.find(kOpening, end + 1))
    names.push_back(text.substr(0, end));
  return names;
}

bool IsLikeNumber(std::wstring_view text) {
  constexpr std::ptrdiff_t kFewestDigits = 2;
  const auto isDigit = [](wchar_t each) { return each >= L'0' && each <= L'9'; };
  return text.find_first_not_of(L"0123456789 +-()/.\xA0") == text.npos &&
         std::count_if(text.begin(), text.end(), isDigit) >= kFewestDigits;
}

std::wstring Wording::NameOfUnreadable(std::wstring_view name, HRESULT code) const {
  return std::wstring(name) + std::wstring(kOpening) + Say(TextOf(code)) + L')';
}

}  // namespace book
