#include "providers/book/provider/row_values.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "formats/contact_io.h"
#include "formats/contact_properties.h"
#include "orv/orvbook.h"
#include "orv/orvtags.h"
#include "providers/book/derived.h"
#include "providers/book/members.h"
#include "providers/book/store.h"
#include "providers/book/text.h"

namespace book {
namespace {

constexpr wchar_t kFaxType[] = L"FAX", kMailType[] = L"SMTP", kListType[] = L"MAPIPDL";

constexpr ULONG kRowTags[] = {PR_DISPLAY_NAME,    PR_ENTRYID,      PR_OBJECT_TYPE,
                              PR_DISPLAY_TYPE,    PR_INSTANCE_KEY, PR_ADDRTYPE,
                              PR_EMAIL_ADDRESS,   PR_COMPANY_NAME, PR_TRANSMITABLE_DISPLAY_NAME,
                              PR_DEPARTMENT_NAME, PR_TITLE,        PR_SMTP_ADDRESS};

void SetText(kit::PropList& values, ULONG tag, const std::string& text) {
  if (!text.empty()) values.Set(tag, ToWide(text));
}

void DescribeKind(kit::PropList& values, bool isList) {
  values.Set(PR_OBJECT_TYPE, isList ? MAPI_DISTLIST : MAPI_MAILUSER);
  values.Set(PR_DISPLAY_TYPE, isList ? DT_PRIVATE_DISTLIST : DT_MAILUSER);
  values.Set(PR_ADDRTYPE, isList ? kListType : kFaxType);
}

FILETIME TimeOf(int64_t seconds) {
  constexpr int64_t kTicksPerSecond = 10'000'000, kSecondsTo1970 = 11'644'473'600;
  const int64_t ticks = (seconds + kSecondsTo1970) * kTicksPerSecond;
  return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

bool Holds(const std::vector<ULONG>& tags, ULONG tag) {
  return std::any_of(tags.begin(), tags.end(), [tag](ULONG each) { return PROP_ID(each) == PROP_ID(tag); });
}

std::string TextIn(const kit::PropList& values, ULONG tag) { return ToUtf8(values.Text(tag)); }

void ApplyEmails(const SPropValue& value, formats::Contact* contact) {
  std::vector<std::string> texts;
  for (ULONG i = 0; i < value.Value.MVszW.cValues; ++i) texts.push_back(ToUtf8(value.Value.MVszW.lppszW[i]));
  formats::SetContactEmails(contact, texts);
}

// What a row shows as its name is not what the entry is called: set back, it changes nothing. A copy of another
// entry brings both, the plain one under a tag of its own.
bool IsDecoration(const Wording& words, const kit::Changes& changes, const Row* shown,
                  const formats::Contact& contact) {
  const std::wstring_view name = changes.values.Text(PR_DISPLAY_NAME);
  if (shown != nullptr && name == words.DisplayNameOf(*shown)) return true;
  const std::wstring plain(changes.values.Text(PR_TRANSMITABLE_DISPLAY_NAME));
  const std::wstring lastFirst = ToWide(LastFirstOf(contact));
  std::vector<std::wstring_view> names = PlainNamesOf(name);
  names.push_back(name);
  return Holds(changes.set, PR_TRANSMITABLE_DISPLAY_NAME) &&
         std::any_of(names.begin(), names.end(), [&](std::wstring_view each) {
           return !each.empty() && (each == plain || each == lastFirst);
         });
}

void ApplyAddress(const kit::Changes& changes, uint32_t number, formats::Contact* contact) {
  const std::wstring_view type = changes.values.Text(PR_ADDRTYPE);
  const std::string address = TextIn(changes.values, PR_EMAIL_ADDRESS);
  if (type == kMailType) {
    formats::SetContactText(contact, PR_SMTP_ADDRESS, address);
  } else if (type.empty() || type == kFaxType) {
    formats::SetContactAddress(contact, number, address);
  }
}

void ApplySet(const kit::Changes& changes, ULONG tag, formats::Contact* contact) {
  const SPropValue* value = changes.values.Find(tag);
  if (value == nullptr) return;
  if (value->ulPropTag == PR_CONTACT_EMAIL_ADDRESSES) return ApplyEmails(*value, contact);
  formats::SetContactText(contact, tag, TextIn(changes.values, tag));
}

void ApplyRemoved(ULONG tag, uint32_t number, formats::Contact* contact) {
  if (PROP_ID(tag) == PROP_ID(PR_EMAIL_ADDRESS)) {
    formats::SetContactAddress(contact, number, {});
  } else if (PROP_ID(tag) == PROP_ID(PR_CONTACT_EMAIL_ADDRESSES)) {
    contact->emails.clear();
  } else {
    formats::SetContactText(contact, tag, {});
  }
}

// A number's key is said only where its text does not make it.
std::string CardOf(formats::Contact contact) {
  std::string card;
  for (formats::ContactNumber& each : contact.numbers)
    each.key = each.key == formats::NumberKey(each.text) ? 0 : each.key;
  formats::WriteCard(contact, &card);
  return card;
}

// The whole is what the card says but for the UID of an entry that has one, and for what kind of entry it is.
bool ApplyCard(const kit::Changes& changes, formats::Contact* contact) {
  formats::Contact whole;
  if (!formats::ReadCard(TextIn(changes.values, PR_ORV_CONTACT_CARD_W), &whole)) return false;
  whole.isList = contact->isList;
  if (!contact->uid.empty()) whole.uid = contact->uid;
  *contact = std::move(whole);
  return true;
}

// What a copy sets beside the card is the same once more, less exactly: the number of a row, one of several addresses.
class CardsWords {
 public:
  explicit CardsWords(const formats::Contact& contact) : contact_(contact) {
    formats::SetProperties(formats::ContactProperties(contact, formats::MainFax(contact)), said_);
  }
  bool Says(const kit::PropList& values, ULONG tag) const {
    const std::string text = TextIn(values, tag);
    const bool isNumber = PROP_ID(tag) == PROP_ID(PR_EMAIL_ADDRESS) &&
                          std::any_of(contact_.numbers.begin(), contact_.numbers.end(),
                                      [&text](const auto& each) { return each.text == text; });
    return isNumber || (PROP_TYPE(tag) == PT_UNICODE && said_.Text(tag) == values.Text(tag));
  }

 private:
  const formats::Contact contact_;
  kit::PropList said_;
};

// As the readers of contact files do it.
void NameIt(formats::Contact* contact) {
  std::string& name = contact->name;
  if (name.find_first_not_of(' ') != name.npos) return;
  name = contact->given;
  if (!contact->surname.empty()) name += (name.empty() ? "" : " ") + contact->surname;
  if (name.empty()) name = contact->company;
  if (name.empty() && !contact->emails.empty()) name = contact->emails.front().text;
  if (name.empty() && !contact->numbers.empty()) name = contact->numbers.front().text;
}

}  // namespace

std::vector<ULONG> RowColumns() { return {std::begin(kRowTags), std::end(kRowTags)}; }

bool AreRowColumns(std::span<const ULONG> columns) {
  const auto isKnown = [](ULONG tag) {
    return PROP_ID(tag) == PROP_ID(PR_NULL) ||
           std::any_of(std::begin(kRowTags), std::end(kRowTags),
                       [tag](ULONG each) { return PROP_ID(each) == PROP_ID(tag); });
  };
  return !columns.empty() && std::all_of(columns.begin(), columns.end(), isKnown);
}

std::optional<Column> ColumnOf(ULONG tag) {
  switch (PROP_ID(tag)) {
    case PROP_ID(PR_DISPLAY_NAME):
    case PROP_ID(PR_TRANSMITABLE_DISPLAY_NAME):
      return Column::kName;
    case PROP_ID(PR_EMAIL_ADDRESS):
      return Column::kNumber;
    case PROP_ID(PR_COMPANY_NAME):
      return Column::kCompany;
    case PROP_ID(PR_DEPARTMENT_NAME):
      return Column::kDepartment;
    case PROP_ID(PR_TITLE):
      return Column::kTitle;
    case PROP_ID(PR_SMTP_ADDRESS):
      return Column::kEmail;
    default:
      return std::nullopt;
  }
}

void DescribeRow(const Wording& words, const Row& row, kit::PropList& values) {
  values.Set(PR_DISPLAY_NAME, words.DisplayNameOf(row));
  SetText(values, PR_TRANSMITABLE_DISPLAY_NAME, row.name);
  DescribeKind(values, row.isList);
  SetText(values, PR_EMAIL_ADDRESS, row.number);
  SetText(values, PR_COMPANY_NAME, row.company);
  SetText(values, PR_DEPARTMENT_NAME, row.department);
  SetText(values, PR_TITLE, row.title);
  SetText(values, PR_SMTP_ADDRESS, row.email);
}

void DescribeEntry(const Wording& words, const Entry& entry, const Row& row, std::span<const ULONG> columns,
                   kit::PropList& values) {
  const formats::ContactNumber* number = formats::FindNumber(entry.contact, row.key.number);
  values.Set(PR_DISPLAY_NAME, L"");
  formats::SetProperties(formats::ContactProperties(entry.contact, number), values);
  values.Set(PR_DISPLAY_NAME, words.DisplayNameOf(row));
  SetText(values, PR_ORV_CONTACT_UID_W, entry.contact.uid);
  values.SetBytes(PR_ORV_CONTACT_VERSION, &entry.version, sizeof entry.version);
  values.Set(PR_CREATION_TIME, TimeOf(entry.created));
  values.Set(PR_LAST_MODIFICATION_TIME, TimeOf(entry.changed));
  const auto isCard = [](ULONG tag) { return PROP_ID(tag) == PROP_ID(PR_ORV_CONTACT_CARD_W); };
  if (columns.empty() || std::any_of(columns.begin(), columns.end(), isCard))
    values.Set(PR_ORV_CONTACT_CARD_W, ToWide(CardOf(entry.contact)));
}

void DescribeLoneMember(const Member& member, kit::PropList& values) {
  const bool isMail = !member.email.empty();
  const std::string& address = isMail ? member.email : member.number;
  values.Set(PR_DISPLAY_NAME, ToWide(member.name.empty() ? address : member.name));
  DescribeKind(values, false);
  if (isMail) values.Set(PR_ADDRTYPE, kMailType);
  // Of an entry that is not here the number is only told.
  if (!member.isOurs) return SetText(values, PR_EMAIL_ADDRESS, address);
  SetText(values, PR_PRIMARY_FAX_NUMBER, member.number.empty() ? NotedAddress(member.rest) : member.number);
}

void DescribeDeleted(const DeletedEntry& entry, kit::PropList& values) {
  values.Set(PR_DISPLAY_NAME, ToWide(entry.name));
  values.Set(PR_OBJECT_TYPE, entry.isList ? MAPI_DISTLIST : MAPI_MAILUSER);
  values.Set(PR_ORV_DELETED_TIME, TimeOf(entry.deleted));
}

uint32_t VersionOf(const kit::PropList& values) {
  const SBinary bytes = values.Bytes(PR_ORV_CONTACT_VERSION);
  uint32_t version = kAnyVersion;
  if (bytes.cb == sizeof version) std::memcpy(&version, bytes.lpb, sizeof version);
  return version;
}

HRESULT CheckSetValue(const SPropValue& value) {
  const ULONG tag = value.ulPropTag;
  const bool isKnown = formats::IsContactProperty(tag) || tag == PR_ADDRTYPE || tag == PR_EMAIL_ADDRESS ||
                       tag == PR_ORV_CONTACT_CARD_W;
  if (!isKnown) return MAPI_E_NO_SUPPORT;
  const bool isName = tag == PR_DISPLAY_NAME || tag == PR_TRANSMITABLE_DISPLAY_NAME;
  const bool isEmpty =
      PROP_TYPE(tag) == PT_UNICODE && (value.Value.lpszW == nullptr || *value.Value.lpszW == 0);
  return isName && isEmpty ? MAPI_E_BAD_VALUE : S_OK;
}

HRESULT CheckDeleteTag(ULONG tag) {
  const bool isName =
      PROP_ID(tag) == PROP_ID(PR_DISPLAY_NAME) || PROP_ID(tag) == PROP_ID(PR_TRANSMITABLE_DISPLAY_NAME);
  const bool isKnown = formats::IsContactProperty(CHANGE_PROP_TYPE(tag, PT_UNICODE)) ||
                       PROP_ID(tag) == PROP_ID(PR_CONTACT_EMAIL_ADDRESSES) ||
                       PROP_ID(tag) == PROP_ID(PR_EMAIL_ADDRESS);
  return isKnown && !isName ? S_OK : MAPI_E_NO_ACCESS;
}

HRESULT ApplyChanges(const Wording& words, const kit::Changes& changes, const Row* shown, uint32_t number,
                     formats::Contact* contact) {
  const bool hasCard = Holds(changes.set, PR_ORV_CONTACT_CARD_W);
  if (hasCard && !ApplyCard(changes, contact)) return MAPI_E_BAD_VALUE;
  const CardsWords card(hasCard ? *contact : formats::Contact());
  const auto isSaid = [&](ULONG tag) { return hasCard && card.Says(changes.values, tag); };
  for (const ULONG tag : changes.removed) ApplyRemoved(tag, number, contact);
  for (const ULONG tag : changes.set) {
    const bool isLater =
        PROP_ID(tag) == PROP_ID(PR_EMAIL_ADDRESS) || PROP_ID(tag) == PROP_ID(PR_DISPLAY_NAME);
    if (!isLater && !isSaid(tag)) ApplySet(changes, tag, contact);
  }
  // Behind the parts of the name, which it may be made of.
  const bool isNamed = Holds(changes.set, PR_DISPLAY_NAME) && !isSaid(PR_DISPLAY_NAME);
  if (isNamed && !IsDecoration(words, changes, shown, *contact)) ApplySet(changes, PR_DISPLAY_NAME, contact);
  // Last: what it names may be one of the numbers that were set.
  if (Holds(changes.set, PR_EMAIL_ADDRESS) && !isSaid(PR_EMAIL_ADDRESS))
    ApplyAddress(changes, number, contact);
  NameIt(contact);
  return contact->name.empty() ? MAPI_E_MISSING_REQUIRED_COLUMN : S_OK;
}

}  // namespace book
