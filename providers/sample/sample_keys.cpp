#include "sample_keys.h"

#include <algorithm>
#include <type_traits>

#include "formats/contact_properties.h"
#include "formats/text_codec.h"

namespace sample {
namespace {

template <class Text>
ULONGLONG HashOf(const Text& text) {  // FNV-1a: identifiers are stored, so never std::hash
  using Unit = std::make_unsigned_t<typename Text::value_type>;
  ULONGLONG hash = 0xCBF29CE484222325;
  for (const auto unit : text) hash = (hash ^ static_cast<Unit>(unit)) * 0x100000001B3;
  return hash;
}

// Two people may have one name and neither a UID: their numbers belong to the key, or the identifier of one who has
// left the file would reach the other.
ULONGLONG NarrowKey(const formats::Contact& contact) {
  if (!contact.uid.empty()) return HashOf(formats::ToUtf16(contact.uid));
  std::vector<formats::ContactNumber> numbers = contact.numbers;
  std::stable_partition(numbers.begin(), numbers.end(), [](const auto& each) { return each.isPreferred; });
  const formats::ContactEmail* email = formats::MainEmail(contact);
  std::string text = contact.name + '\n' + (email != nullptr ? email->text : "");
  for (const formats::ContactNumber& number : numbers) text += '\n' + number.text;
  return HashOf(formats::ToUtf16(text));
}

ULONGLONG Reference(char kind, std::string_view text) { return HashOf(kind + formats::FoldAscii(text)); }
ULONGLONG NumberReference(std::string_view number) {
  return Reference('n', formats::CanonicalNumber(number));
}

// What a list may say of a member, the surest first.
std::vector<ULONGLONG> ReferencesOf(const formats::ContactMember& member) {
  std::vector<ULONGLONG> references;
  if (!member.uid.empty()) references.push_back(Reference('u', member.uid));
  if (!member.uid.empty() && member.uid == member.name) references.push_back(Reference('f', member.name));
  if (!member.email.empty()) references.push_back(Reference('e', member.email));
  if (!formats::CanonicalNumber(member.number).empty()) references.push_back(NumberReference(member.number));
  return references;
}

std::vector<ULONGLONG> ReferencesTo(const formats::Contact& contact) {
  std::vector<ULONGLONG> references{Reference('f', contact.name)};
  if (!contact.uid.empty()) references.push_back(Reference('u', contact.uid));
  for (const formats::ContactEmail& each : contact.emails) references.push_back(Reference('e', each.text));
  for (const formats::ContactNumber& each : contact.numbers) references.push_back(NumberReference(each.text));
  return references;
}

}  // namespace

KeyIndex::KeyIndex(const ContactCards& cards) {
  keys_.reserve(cards.size());
  contacts_.reserve(2 * cards.size());
  std::vector<size_t> lists;
  for (size_t i = 0; i < cards.size(); ++i) {
    const formats::Contact contact = cards.Contact(i);
    keys_.push_back({NarrowKey(contact), HashOf(cards.Card(i))});
    AddKey(keys_.back().narrow, i);
    AddKey(keys_.back().exact, i);
    if (contact.isList) lists.push_back(i);
    for (const formats::ContactMember& member : contact.members) {
      for (const ULONGLONG reference : ReferencesOf(member)) meant_.emplace(reference, kNobody);
    }
  }
  if (!meant_.empty()) FindMeant(cards);
  for (const size_t list : lists) AddOutsiders(cards.Contact(list));
}

void KeyIndex::AddKey(ULONGLONG key, size_t contact) {
  const auto [place, isNew] = contacts_.emplace(key, contact);
  if (!isNew) place->second = kNobody;
}

void KeyIndex::FindMeant(const ContactCards& cards) {
  for (size_t i = 0; i < cards.size(); ++i) {
    for (const ULONGLONG reference : ReferencesTo(cards.Contact(i))) {
      const auto place = meant_.find(reference);
      if (place != meant_.end() && place->second == kNobody) place->second = i;
    }
  }
}

void KeyIndex::AddOutsiders(const formats::Contact& list) {
  for (const formats::ContactMember& member : list.members) {
    if (FindMember(member)) continue;
    if (std::optional<formats::Contact> outsider = OutsiderOf(member))
      outsiders_.emplace(KeyOfOutsider(*outsider), std::move(*outsider));
  }
}

ULONGLONG KeyIndex::KeyOf(size_t contact) const {
  const Keys& keys = keys_[contact];
  return FindContact(keys.narrow) ? keys.narrow : keys.exact;
}

std::optional<size_t> KeyIndex::FindContact(ULONGLONG key) const {
  const auto found = contacts_.find(key);
  if (found == contacts_.end() || found->second == kNobody) return std::nullopt;
  return found->second;
}

std::optional<size_t> KeyIndex::FindMember(const formats::ContactMember& member) const {
  for (const ULONGLONG reference : ReferencesOf(member)) {
    const auto found = meant_.find(reference);
    if (found != meant_.end() && found->second != kNobody) return found->second;
  }
  return std::nullopt;
}

const formats::Contact* KeyIndex::FindOutsider(ULONGLONG key) const {
  const auto found = outsiders_.find(key);
  return found == outsiders_.end() ? nullptr : &found->second;
}

std::optional<formats::Contact> OutsiderOf(const formats::ContactMember& member) {
  formats::Contact outsider;
  outsider.name = !member.email.empty() ? member.email : member.number;
  if (outsider.name.empty()) return std::nullopt;
  if (!member.email.empty())
    outsider.emails.emplace_back().text = member.email;
  else
    outsider.numbers.push_back(
        {member.number, formats::NumberKind::kFax, formats::Place::kNone, false, 0, {}});
  return outsider;
}

ULONGLONG KeyOfOutsider(const formats::Contact& outsider) { return HashOf(formats::ToUtf16(outsider.name)); }

}  // namespace sample
