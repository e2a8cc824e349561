#include "tools/orvctl/contact_writer.h"

#include <algorithm>

#include "formats/contact_io.h"
#include "tools/orvctl/errors.h"
#include "tools/orvctl/table.h"

namespace orvctl {
namespace {

bool IsFax(const FieldValue& value) {
  return value.tag == PR_BUSINESS_FAX_NUMBER_W || value.tag == PR_HOME_FAX_NUMBER_W ||
         value.tag == PR_PRIMARY_FAX_NUMBER_W;
}

formats::Place PlaceOf(KindOfNumber kind) {
  switch (kind) {
    case KindOfNumber::kBusiness:
      return formats::Place::kWork;
    case KindOfNumber::kHome:
      return formats::Place::kHome;
    case KindOfNumber::kOther:
      return formats::Place::kOther;
    case KindOfNumber::kPreferred:
    case KindOfNumber::kMobile:
      break;
  }
  return formats::Place::kNone;
}

bool Has(const formats::Contact& contact, const formats::ContactNumber& number) {
  return std::any_of(contact.numbers.begin(), contact.numbers.end(), [&](const formats::ContactNumber& each) {
    return each.kind == number.kind && each.text == number.text;
  });
}

// Those that the contact does not have.
void AddNumbers(const std::vector<std::string>& texts, formats::NumberKind kind, formats::Contact& contact) {
  for (const std::string& text : texts) {
    const TypedNumber typed = ParseNumber(text).value_or(TypedNumber{});
    if (typed.number.empty()) continue;
    formats::ContactNumber number;
    number.text = typed.number;
    number.kind = typed.kind == KindOfNumber::kMobile ? formats::NumberKind::kMobile : kind;
    number.place = PlaceOf(typed.kind);
    number.isPreferred = typed.kind == KindOfNumber::kPreferred;
    if (!Has(contact, number)) contact.numbers.push_back(std::move(number));
  }
}

// All that the book knows of an entry; false where it does not tell.
bool ReadCardOf(const EditableBook& book, IMAPIProp* entry, formats::Contact* contact) {
  TagArray tags{PR_ORV_CONTACT_CARD_W};
  const Properties properties(book.library(), entry, tags.Get(), "read the whole entry");
  const std::string card = TextOf(properties.view(), PR_ORV_CONTACT_CARD_W);
  return !card.empty() && formats::ReadCard(card, contact);
}

}  // namespace

ContactWriter::ContactWriter(const EditableBook& book, const ContactFields& fields)
    : book_(book), fields_(fields) {}

void ContactWriter::Write(IMAPIProp* entry) {
  std::vector<FieldValue> set, removed;
  for (FieldValue& value : FieldValues(fields_)) {
    if (value.tag == PR_NULL) {
      if (!value.text.empty()) refused_.push_back(std::move(value));
    } else {
      (value.text.empty() ? removed : set).push_back(std::move(value));
    }
  }
  Set(entry, std::move(set));
  Remove(entry, removed);
  const auto fax = std::find_if(refused_.begin(), refused_.end(), IsFax);
  if (!hasAddress_ && fax != refused_.end()) SetAddress(entry);
}

void ContactWriter::Set(IMAPIProp* entry, std::vector<FieldValue> values) {
  const std::string doing = "set the properties of the entry";
  std::vector<OwnedValue> owned;
  std::vector<SPropValue> raw;
  for (const FieldValue& value : values) owned.push_back(OwnedValue::String(value.tag, value.text));
  for (OwnedValue& value : owned) raw.push_back(value.Get());
  if (raw.empty()) return;
  auto problems = book_.library().allocator().Own<SPropProblemArray>();
  Check(Foreign(doing,
                [&] { return entry->SetProps(static_cast<ULONG>(raw.size()), raw.data(), problems.Put()); }),
        doing);
  std::vector<bool> isRefused(values.size());
  for (ULONG i = 0; problems && i < problems->cProblem; ++i) {
    const SPropProblem& problem = problems->aProblem[i];
    if (problem.ulIndex >= values.size()) continue;
    const FieldValue& value = values[problem.ulIndex];
    if (value.tag == PR_DISPLAY_NAME_W) Check(problem.scode, "set the " + value.what);
    isRefused[problem.ulIndex] = true;
  }
  for (size_t i = 0; i < values.size(); ++i) {
    hasAddress_ |= !isRefused[i] && IsFax(values[i]);
    if (isRefused[i]) refused_.push_back(std::move(values[i]));
  }
}

// What is not there need not be taken away.
void ContactWriter::Remove(IMAPIProp* entry, const std::vector<FieldValue>& values) {
  const std::string doing = "take properties of the entry away";
  for (const FieldValue& value : values) {
    if (value.tag == PR_DISPLAY_NAME_W) throw CommandError(kUsage, "a name cannot be taken away");
    TagArray tags{value.tag};
    Check(Foreign(doing, [&] { return entry->DeleteProps(tags.Get(), nullptr); }), doing);
  }
}

// A book that keeps one number keeps it as the address.
void ContactWriter::SetAddress(IMAPIProp* entry) {
  const auto fax = std::find_if(refused_.begin(), refused_.end(), IsFax);
  FieldValue address = *fax;
  address.tag = PR_EMAIL_ADDRESS_W;
  refused_.erase(fax);
  Set(entry, {{PR_ADDRTYPE_W, "FAX", "address type"}, std::move(address)});
}

void ContactWriter::AddRest(const Match& entry) {
  const auto hasNoProperty = [](const FieldValue& value) { return value.tag == PR_NULL; };
  if (std::none_of(refused_.begin(), refused_.end(), hasNoProperty)) return;
  const ComPtr<IMAPIProp> object = book_.OpenForChange(entry);
  formats::Contact contact;
  if (!ReadCardOf(book_, object.Get(), &contact)) return;
  AddNumbers(fields_.faxes, formats::NumberKind::kFax, contact);
  AddNumbers(fields_.phones, formats::NumberKind::kPhone, contact);
  std::string card;
  formats::WriteCard(contact, &card);
  Set(object.Get(), {{PR_ORV_CONTACT_CARD_W, std::move(card), "other numbers"}});
  const std::string doing = "add the other numbers of '" + entry.name + "'";
  Check(Foreign(doing, [&] { return object->SaveChanges(KEEP_OPEN_READONLY); }), doing);
  refused_.erase(std::remove_if(refused_.begin(), refused_.end(), hasNoProperty), refused_.end());
}

std::vector<Message> ContactWriter::TakeMessages() {
  std::vector<Message> messages;
  for (const FieldValue& value : refused_)
    messages.push_back({"'" + book_.name() + "' has no place for the " + value.what + "; it is left out"});
  return messages;
}

}  // namespace orvctl
