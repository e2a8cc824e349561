#include "providers/book/provider/words.h"

#include <algorithm>
#include <iterator>

#include "orv/orvcodes.h"
#include "providers/book/text.h"

namespace book {
namespace {

enum Word {
  kFax,
  kBusinessFax,
  kHomeFax,
  kOtherFax,
  kNoFax,
  kMissing,
  kNoBook,
  kDamaged,
  kBusy,
  kNoAccess,
  kNewer,
  kUnreadable,
  kWordCount
};

struct Language {
  WORD primary;
  const wchar_t* words[kWordCount];
};

// English is last: it stands for every other language.
constexpr Language kLanguages[] = {
    {LANG_GERMAN,
     {L"Fax", L"Fax geschäftlich", L"Fax privat", L"weiteres Fax", L"keine Faxnummer", L"Datei fehlt",
      L"kein Adressbuch", L"beschädigt", L"in Gebrauch", L"kein Zugriff", L"von einer neueren Version",
      L"nicht lesbar"}},
    {LANG_FRENCH,
     {L"télécopie", L"télécopie bureau", L"télécopie domicile", L"autre télécopie",
      L"sans numéro de télécopie", L"fichier introuvable", L"pas un carnet d’adresses", L"endommagé",
      L"en cours d’utilisation", L"accès refusé", L"d’une version plus récente", L"illisible"}},
    {LANG_JAPANESE,
     {L"ファックス", L"勤務先ファックス", L"自宅ファックス", L"その他のファックス", L"ファックス番号なし",
      L"ファイルがありません", L"アドレス帳ではありません", L"破損しています", L"使用中",
      L"アクセスできません", L"新しいバージョンで作成", L"読み取れません"}},
    {LANG_ARABIC,
     {L"فاكس", L"فاكس العمل", L"فاكس المنزل", L"فاكس آخر", L"بدون رقم فاكس", L"الملف غير موجود",
      L"ليس دفتر عناوين", L"تالف", L"قيد الاستخدام", L"لا يمكن الوصول إليه", L"من إصدار أحدث",
      L"لا يمكن قراءته"}},
    {LANG_ENGLISH,
     {L"fax", L"business fax", L"home fax", L"other fax", L"no fax number", L"file is missing",
      L"not an address book", L"damaged", L"in use", L"no access", L"made by a newer version",
      L"cannot be read"}},
};

const wchar_t* Say(Word word) {
  const WORD primary = PRIMARYLANGID(GetUserDefaultUILanguage());
  const auto found = std::find_if(std::begin(kLanguages), std::end(kLanguages) - 1,
                                  [primary](const Language& each) { return each.primary == primary; });
  return found->words[word];
}

Word WordOf(formats::Place place) {
  switch (place) {
    case formats::Place::kWork:
      return kBusinessFax;
    case formats::Place::kHome:
      return kHomeFax;
    case formats::Place::kOther:
      return kOtherFax;
    default:
      return kFax;
  }
}

Word WordOf(HRESULT code) {
  switch (code) {
    case MAPI_E_NOT_FOUND:
      return kMissing;
    case MAPI_E_INVALID_OBJECT:
      return kNoBook;
    case MAPI_E_CORRUPT_STORE:
      return kDamaged;
    case MAPI_E_BUSY:
      return kBusy;
    case MAPI_E_NO_ACCESS:
      return kNoAccess;
    case MAPI_E_VERSION:
      return kNewer;
    default:
      return kUnreadable;
  }
}

constexpr std::wstring_view kOpening = L" (";

void Add(std::wstring& text, std::wstring_view part) {
  if (!text.empty()) text += L", ";
  text += part;
}

}  // namespace

std::wstring DisplayNameOf(const Row& row) {
  const std::wstring name = ToWide(row.name);
  const bool isPlain = !row.hasNamesake && !row.isOneOfSeveral && !row.number.empty();
  if (row.isList || isPlain) return name;
  std::wstring behind;
  const std::string& distinction = row.company.empty() ? row.number : row.company;
  if (row.hasNamesake && !distinction.empty()) Add(behind, ToWide(distinction));
  if (row.isOneOfSeveral) Add(behind, Say(WordOf(row.place)));
  if (row.number.empty()) Add(behind, Say(kNoFax));
  return behind.empty() ? name : name + std::wstring(kOpening) + behind + L')';
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

std::wstring NameOfUnreadable(std::wstring_view name, HRESULT code) {
  return std::wstring(name) + std::wstring(kOpening) + Say(WordOf(code)) + L')';
}

}  // namespace book
