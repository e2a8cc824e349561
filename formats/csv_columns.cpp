// The columns that mail programs, phones and fax programs write, by name.
#include <algorithm>
#include <iterator>
#include <utility>

#include "formats/contact_csv.h"
#include "formats/contact_io.h"
#include "formats/number_words.h"
#include "formats/text_codec.h"

namespace formats {
namespace {

struct NamedField {
  std::string_view name;  // as Normalise gives it
  CsvField field;
};

// English, German, French, Japanese, Arabic; within a field in this order.
constexpr NamedField kNames[] = {
    {"name", CsvField::kName},
    {"full name", CsvField::kName},
    {"display name", CsvField::kName},
    {"contact", CsvField::kName},
    {"contact name", CsvField::kName},
    {"recipient", CsvField::kName},
    {"recipient name", CsvField::kName},
    {"file as", CsvField::kName},
    {"anzeigename", CsvField::kName},
    {"vollstandiger name", CsvField::kName},
    {"empfanger", CsvField::kName},
    {"nom complet", CsvField::kName},
    {"nom a afficher", CsvField::kName},
    {"nom affiche", CsvField::kName},
    {"destinataire", CsvField::kName},
    {"名前", CsvField::kName},
    {"氏名", CsvField::kName},
    {"表示名", CsvField::kName},
    {"宛先名", CsvField::kName},
    {"الاسم", CsvField::kName},
    {"الاسم الكامل", CsvField::kName},
    {"اسم العرض", CsvField::kName},
    {"first name", CsvField::kGiven},
    {"given name", CsvField::kGiven},
    {"firstname", CsvField::kGiven},
    {"forename", CsvField::kGiven},
    {"vorname", CsvField::kGiven},
    {"prenom", CsvField::kGiven},
    {"名", CsvField::kGiven},
    {"الاسم الأول", CsvField::kGiven},
    {"middle name", CsvField::kMiddle},
    {"additional name", CsvField::kMiddle},
    {"middle initial", CsvField::kMiddle},
    {"weitere vornamen", CsvField::kMiddle},
    {"zweiter vorname", CsvField::kMiddle},
    {"deuxieme prenom", CsvField::kMiddle},
    {"ミドル ネーム", CsvField::kMiddle},
    {"ミドルネーム", CsvField::kMiddle},
    {"الاسم الأوسط", CsvField::kMiddle},
    {"last name", CsvField::kSurname},
    {"family name", CsvField::kSurname},
    {"surname", CsvField::kSurname},
    {"lastname", CsvField::kSurname},
    {"nachname", CsvField::kSurname},
    {"familienname", CsvField::kSurname},
    {"nom de famille", CsvField::kSurname},
    {"nom", CsvField::kSurname},
    {"姓", CsvField::kSurname},
    {"اسم العائلة", CsvField::kSurname},
    {"الاسم الأخير", CsvField::kSurname},
    {"name prefix", CsvField::kPrefix},
    {"prefix", CsvField::kPrefix},
    {"salutation", CsvField::kPrefix},
    {"anrede", CsvField::kPrefix},
    {"civilite", CsvField::kPrefix},
    {"敬称", CsvField::kPrefix},
    {"اللقب", CsvField::kPrefix},
    {"suffix", CsvField::kSuffix},
    {"name suffix", CsvField::kSuffix},
    {"namenszusatz", CsvField::kSuffix},
    {"suffixe", CsvField::kSuffix},
    {"サフィックス", CsvField::kSuffix},
    {"اللاحقة", CsvField::kSuffix},
    {"company", CsvField::kCompany},
    {"company name", CsvField::kCompany},
    {"organization", CsvField::kCompany},
    {"organisation", CsvField::kCompany},
    {"organization name", CsvField::kCompany},
    {"business", CsvField::kCompany},
    {"firma", CsvField::kCompany},
    {"unternehmen", CsvField::kCompany},
    {"societe", CsvField::kCompany},
    {"entreprise", CsvField::kCompany},
    {"会社", CsvField::kCompany},
    {"会社名", CsvField::kCompany},
    {"勤務先", CsvField::kCompany},
    {"組織", CsvField::kCompany},
    {"الشركة", CsvField::kCompany},
    {"اسم الشركة", CsvField::kCompany},
    {"المؤسسة", CsvField::kCompany},
    {"department", CsvField::kDepartment},
    {"organization department", CsvField::kDepartment},
    {"abteilung", CsvField::kDepartment},
    {"service", CsvField::kDepartment},
    {"departement", CsvField::kDepartment},
    {"部署", CsvField::kDepartment},
    {"部門", CsvField::kDepartment},
    {"القسم", CsvField::kDepartment},
    {"الإدارة", CsvField::kDepartment},
    {"job title", CsvField::kTitle},
    {"organization title", CsvField::kTitle},
    {"position", CsvField::kTitle},
    {"berufsbezeichnung", CsvField::kTitle},
    {"fonction", CsvField::kTitle},
    {"titre (poste)", CsvField::kTitle},
    {"profession", CsvField::kTitle},
    {"役職", CsvField::kTitle},
    {"المسمى الوظيفي", CsvField::kTitle},
    {"الوظيفة", CsvField::kTitle},
    {"title", CsvField::kAnyTitle},
    {"titel", CsvField::kAnyTitle},
    {"titre", CsvField::kAnyTitle},
    {"肩書き", CsvField::kAnyTitle},
    {"notes", CsvField::kNote},
    {"note", CsvField::kNote},
    {"comment", CsvField::kNote},
    {"comments", CsvField::kNote},
    {"remark", CsvField::kNote},
    {"remarks", CsvField::kNote},
    {"notizen", CsvField::kNote},
    {"notiz", CsvField::kNote},
    {"bemerkung", CsvField::kNote},
    {"bemerkungen", CsvField::kNote},
    {"kommentar", CsvField::kNote},
    {"remarque", CsvField::kNote},
    {"remarques", CsvField::kNote},
    {"commentaires", CsvField::kNote},
    {"メモ", CsvField::kNote},
    {"備考", CsvField::kNote},
    {"ملاحظات", CsvField::kNote},
    {"uid", CsvField::kUid},
    {"nickname", CsvField::kNickname},
    {"spitzname", CsvField::kNickname},
    {"surnom", CsvField::kNickname},
    {"ニックネーム", CsvField::kNickname},
    {"web page", CsvField::kWebPage},
    {"website", CsvField::kWebPage},
    {"webseite", CsvField::kWebPage},
    {"page web", CsvField::kWebPage},
    {"web ページ", CsvField::kWebPage},
    {"contact type", CsvField::kType},
    {"members", CsvField::kMembers},
    {"number order", CsvField::kNumberOrder},
    {"other numbers", CsvField::kMoreNumbers},
    {"other e-mail addresses", CsvField::kMoreEmails},
};

// What is left of the name of an address's column when the words for its place are gone.
constexpr NamedField kAddressParts[] = {
    {"street", CsvField::kStreet},
    {"street address", CsvField::kStreet},
    {"address", CsvField::kStreet},
    {"strase", CsvField::kStreet},
    {"strasse", CsvField::kStreet},
    {"adresse", CsvField::kStreet},
    {"anschrift", CsvField::kStreet},
    {"rue", CsvField::kStreet},
    {"番地", CsvField::kStreet},
    {"住所", CsvField::kStreet},
    {"شارع", CsvField::kStreet},
    {"الشارع", CsvField::kStreet},
    {"عنوان", CsvField::kStreet},
    {"العنوان", CsvField::kStreet},
    {"extended address", CsvField::kExtended},
    {"city", CsvField::kLocality},
    {"town", CsvField::kLocality},
    {"ort", CsvField::kLocality},
    {"stadt", CsvField::kLocality},
    {"ville", CsvField::kLocality},
    {"市区町村", CsvField::kLocality},
    {"المدينة", CsvField::kLocality},
    {"مدينة", CsvField::kLocality},
    {"state", CsvField::kRegion},
    {"region", CsvField::kRegion},
    {"province", CsvField::kRegion},
    {"bundesland", CsvField::kRegion},
    {"kanton", CsvField::kRegion},
    {"dep region", CsvField::kRegion},
    {"都道府県", CsvField::kRegion},
    {"المنطقة", CsvField::kRegion},
    {"الولاية", CsvField::kRegion},
    {"postal code", CsvField::kPostalCode},
    {"zip", CsvField::kPostalCode},
    {"zip code", CsvField::kPostalCode},
    {"zipcode", CsvField::kPostalCode},
    {"postleitzahl", CsvField::kPostalCode},
    {"plz", CsvField::kPostalCode},
    {"code postal", CsvField::kPostalCode},
    {"郵便", CsvField::kPostalCode},
    {"الرمز البريدي", CsvField::kPostalCode},
    {"country", CsvField::kCountry},
    {"country region", CsvField::kCountry},
    {"land", CsvField::kCountry},
    {"land region", CsvField::kCountry},
    {"pays", CsvField::kCountry},
    {"pays region", CsvField::kCountry},
    {"国", CsvField::kCountry},
    {"国 地域", CsvField::kCountry},
    {"البلد", CsvField::kCountry},
    {"الدولة", CsvField::kCountry},
    {"po box", CsvField::kPostOfficeBox},
    {"postfach", CsvField::kPostOfficeBox},
    {"boite postale", CsvField::kPostOfficeBox},
    {"b p", CsvField::kPostOfficeBox},
    {"私書箱", CsvField::kPostOfficeBox},
    {"صندوق البريد", CsvField::kPostOfficeBox},
};

// Words that make a column one of e-mail, and those that make it say something about an address instead.
constexpr std::string_view kEmailWords[] = {"e-mail",     "email",  "courriel",
                                            "messagerie", "メール", "البريد الإلكتروني"};
constexpr std::string_view kAboutWords[] = {
    "typ", "display name", "anzeigename", "nom complet", "nom a afficher", "表示名", "種類", "label"};

bool Contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

template <std::size_t kCount>
bool ContainsAny(std::string_view text, const std::string_view (&parts)[kCount]) {
  return std::any_of(std::begin(parts), std::end(parts),
                     [text](std::string_view part) { return Contains(text, part); });
}

template <std::size_t kCount>
std::optional<CsvField> Find(const NamedField (&fields)[kCount], std::string_view name) {
  for (const NamedField& each : fields) {
    if (each.name == name) return each.field;
  }
  return std::nullopt;
}

// Folded, with single blanks, without underlines and what stands round names for show.
std::string Normalise(std::string_view name) {
  std::string out;
  for (char c : FoldWords(name)) {
    if (c == '_' || c == '\t' || c == '\n') c = ' ';
    if (c == ' ' && (out.empty() || out.back() == ' ')) continue;
    if (c != '"' && c != '*') out += c;
  }
  while (!out.empty() && (out.back() == ' ' || out.back() == ':')) out.pop_back();
  return out;
}

unsigned OrdinalIn(std::string_view name) {
  constexpr unsigned kMost = 1000;
  unsigned ordinal = 0;
  for (const char c : name) {
    if (c >= '0' && c <= '9' && ordinal < kMost) ordinal = ordinal * 10 + static_cast<unsigned>(c - '0');
  }
  return ordinal;
}

// "Phone 2 - Value" and its like: what it is, its ordinal, and which part of it.
std::optional<CsvColumn> FindNumbered(std::string_view name) {
  const std::size_t dash = name.find(" - ");
  if (dash == std::string_view::npos) return std::nullopt;
  const std::string_view thing = name.substr(0, dash), part = name.substr(dash + 3);
  CsvColumn column;
  column.ordinal = OrdinalIn(thing);
  const bool isType = part == "type" || part == "label";
  if (column.ordinal == 0) return std::nullopt;
  if (ContainsAny(thing, kEmailWords)) {
    column.field = isType ? CsvField::kEmailType : CsvField::kEmail;
  } else if (Contains(thing, "phone") || Contains(thing, "fax")) {
    column.field = isType ? CsvField::kNumberType : CsvField::kNumber;
    column.kind = ReadNumberWords(thing).kind();
  } else if (Contains(thing, "address")) {
    column.field = isType ? CsvField::kAddressType : Find(kAddressParts, part).value_or(CsvField::kIgnored);
  } else if (Contains(thing, "organization") && column.ordinal == 1) {
    column.field = Find(kNames, "organization " + std::string(part)).value_or(CsvField::kIgnored);
    column.ordinal = 0;
  } else if (Contains(thing, "web") && !isType) {
    column.field = CsvField::kWebPage;
  }
  // The whole of an address says no more than its parts.
  const bool isKnown = column.field != CsvField::kIgnored || part == "formatted";
  return isKnown ? std::optional(column) : std::nullopt;
}

std::optional<CsvColumn> FindEmail(std::string_view name) {
  CsvColumn column;
  if (!ContainsAny(name, kEmailWords)) return std::nullopt;
  if (!ContainsAny(name, kAboutWords)) column.field = CsvField::kEmail;
  column.place = ReadNumberWords(name).place();
  return column;
}

std::optional<CsvColumn> FindAddressPart(std::string_view name, std::string_view left, Place place) {
  std::optional<CsvField> field = Find(kAddressParts, left);
  if (!field) return std::nullopt;
  if (*field == CsvField::kStreet && OrdinalIn(name) == 2) field = CsvField::kExtended;
  return CsvColumn{*field, NumberKind::kPhone, place, 0};
}

// The names that a user's map of columns is written in.
constexpr std::pair<std::string_view, CsvColumn> kFieldNames[] = {
    {"ignore", {}},
    {"name", {CsvField::kName}},
    {"given name", {CsvField::kGiven}},
    {"middle name", {CsvField::kMiddle}},
    {"surname", {CsvField::kSurname}},
    {"prefix", {CsvField::kPrefix}},
    {"suffix", {CsvField::kSuffix}},
    {"company", {CsvField::kCompany}},
    {"department", {CsvField::kDepartment}},
    {"title", {CsvField::kTitle}},
    {"note", {CsvField::kNote}},
    {"uid", {CsvField::kUid}},
    {"members", {CsvField::kMembers}},
    {"fax", {CsvField::kNumber, NumberKind::kFax}},
    {"fax work", {CsvField::kNumber, NumberKind::kFax, Place::kWork}},
    {"fax home", {CsvField::kNumber, NumberKind::kFax, Place::kHome}},
    {"fax other", {CsvField::kNumber, NumberKind::kFax, Place::kOther}},
    {"phone", {CsvField::kNumber}},
    {"phone work", {CsvField::kNumber, NumberKind::kPhone, Place::kWork}},
    {"phone home", {CsvField::kNumber, NumberKind::kPhone, Place::kHome}},
    {"phone other", {CsvField::kNumber, NumberKind::kPhone, Place::kOther}},
    {"mobile", {CsvField::kNumber, NumberKind::kMobile}},
    {"pager", {CsvField::kNumber, NumberKind::kPager}},
    {"email", {CsvField::kEmail}},
    {"email work", {CsvField::kEmail, NumberKind::kPhone, Place::kWork}},
    {"email home", {CsvField::kEmail, NumberKind::kPhone, Place::kHome}},
    {"street", {CsvField::kStreet, NumberKind::kPhone, Place::kWork}},
    {"city", {CsvField::kLocality, NumberKind::kPhone, Place::kWork}},
    {"region", {CsvField::kRegion, NumberKind::kPhone, Place::kWork}},
    {"postal code", {CsvField::kPostalCode, NumberKind::kPhone, Place::kWork}},
    {"country", {CsvField::kCountry, NumberKind::kPhone, Place::kWork}},
    {"po box", {CsvField::kPostOfficeBox, NumberKind::kPhone, Place::kWork}},
    {"street home", {CsvField::kStreet, NumberKind::kPhone, Place::kHome}},
    {"city home", {CsvField::kLocality, NumberKind::kPhone, Place::kHome}},
    {"region home", {CsvField::kRegion, NumberKind::kPhone, Place::kHome}},
    {"postal code home", {CsvField::kPostalCode, NumberKind::kPhone, Place::kHome}},
    {"country home", {CsvField::kCountry, NumberKind::kPhone, Place::kHome}},
};

bool Has(const std::vector<CsvColumn>& columns, CsvField field) {
  return std::any_of(columns.begin(), columns.end(),
                     [field](const CsvColumn& each) { return each.field == field; });
}

}  // namespace

std::optional<CsvColumn> FindCsvColumn(std::string_view name) {
  const std::string normal = Normalise(name);
  if (const auto field = Find(kNames, normal)) return CsvColumn{*field};
  if (const auto numbered = FindNumbered(normal)) return numbered;
  if (const auto email = FindEmail(normal)) return email;
  std::string left;
  const NumberWords words = ReadNumberWords(normal, &left);
  if (const auto part = FindAddressPart(normal, left, words.place())) return part;
  const bool isNumber = words.isFax || (words.HasKind() && words.isWhole);
  if (!isNumber || ContainsAny(normal, kAboutWords)) return std::nullopt;
  return CsvColumn{CsvField::kNumber, words.kind(), words.place(), 0};
}

std::optional<CsvColumn> FindFieldName(std::string_view name) {
  const std::string normal = Normalise(name);
  for (const auto& [known, column] : kFieldNames) {
    if (known == normal) return column;
  }
  return std::nullopt;
}

std::vector<std::string_view> FieldNames() {
  std::vector<std::string_view> names;
  for (const auto& [name, column] : kFieldNames) names.push_back(name);
  return names;
}

// Beside a given name "Name" is the surname, and where nothing else is a full name "Nom" alone is one. Beside a job's
// title "Title" is how a person is addressed; alone it is told by what its cells hold.
void SettleCsvColumns(std::vector<CsvColumn>* columns) {
  const bool hasGiven = Has(*columns, CsvField::kGiven), hasSurname = Has(*columns, CsvField::kSurname);
  const bool hasName = Has(*columns, CsvField::kName), hasTitle = Has(*columns, CsvField::kTitle);
  for (CsvColumn& column : *columns) {
    if (column.field == CsvField::kAnyTitle && hasTitle) column.field = CsvField::kPrefix;
    if (column.field == CsvField::kName && hasGiven && !hasSurname) column.field = CsvField::kSurname;
    if (column.field == CsvField::kSurname && !hasGiven && hasSurname && !hasName)
      column.field = CsvField::kName;
  }
}

bool CanNameContact(const std::vector<CsvColumn>& columns) {
  constexpr CsvField kNaming[] = {CsvField::kName,    CsvField::kGiven,  CsvField::kSurname,
                                  CsvField::kCompany, CsvField::kNumber, CsvField::kEmail};
  return std::any_of(std::begin(kNaming), std::end(kNaming),
                     [&](CsvField field) { return Has(columns, field); });
}

}  // namespace formats
