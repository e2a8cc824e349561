// A contact is copied only where its card has to say something else than the contact does.
#include "providers/book/derived.h"

#include <algorithm>

#include "formats/contact_io.h"
#include "orv/orvcodes.h"
#include "providers/book/database.h"
#include "providers/book/schema.h"

namespace book {
namespace {

constexpr uint64_t kDigestSeed = 0x6F72766162;
constexpr std::string_view kBehindLast = ", ";

Derived::Number NumberOf(const formats::ContactNumber& number, uint32_t key) {
  const bool isWords = number.kind == formats::NumberKind::kFax && !formats::IsFaxNumber(number);
  const formats::NumberKind kind =
      isWords ? formats::NumberKind::kOther : number.kind;  // a fax number is a row
  Derived::Number result{key, kind, number.place, number.isPreferred, number.text, DigitsOf(number.text), {}};
  result.reversed = Reversed(result.digits);
  return result;
}

std::vector<int32_t> OrdinalsOf(const formats::Contact& contact) {
  std::vector<int32_t> ordinals;
  for (std::size_t i = 0; i < contact.numbers.size() && !contact.isList; ++i) {
    if (formats::IsFaxNumber(contact.numbers[i])) ordinals.push_back(static_cast<int32_t>(i));
  }
  if (ordinals.empty()) ordinals.push_back(kNoNumber);
  return ordinals;
}

// The card names a key only where the number's text does not make it.
uint32_t KeyInCard(const formats::ContactNumber& number, uint32_t key) {
  return key == formats::NumberKey(number.text) ? 0 : key;
}

bool IsAsWritten(const formats::Contact& contact, const std::vector<uint32_t>& keys) {
  for (std::size_t i = 0; i < keys.size(); ++i) {
    if (contact.numbers[i].key != KeyInCard(contact.numbers[i], keys[i])) return false;
  }
  return contact.members.empty();
}

std::string CardOf(const formats::Contact& contact, const std::vector<uint32_t>& keys) {
  std::string card;
  if (IsAsWritten(contact, keys)) {
    formats::WriteCard(contact, &card);
    return card;
  }
  formats::Contact copy = contact;
  copy.members.clear();
  for (std::size_t i = 0; i < keys.size(); ++i) copy.numbers[i].key = KeyInCard(copy.numbers[i], keys[i]);
  formats::WriteCard(copy, &card);
  return card;
}

bool HasWords(std::string_view name, std::string_view words) {
  const auto isEnd = [name](std::size_t at) {
    return at >= name.size() || name[at] == ' ' || name[at] == ',';
  };
  for (std::size_t at = name.find(words); at != name.npos; at = name.find(words, at + 1)) {
    if ((at == 0 || isEnd(at - 1)) && isEnd(at + words.size())) return true;
  }
  return false;
}

// Whether the name itself says all the words of the other form.
bool SaysParts(std::string_view name, std::string_view lastFirst) {
  const std::size_t last = lastFirst.find(kBehindLast);
  if (last == std::string_view::npos) return true;
  return HasWords(name, lastFirst.substr(0, last)) &&
         HasWords(name, lastFirst.substr(last + kBehindLast.size()));
}

bool HasDigits(const Derived& derived) {
  return std::any_of(derived.numbers.begin(), derived.numbers.end(),
                     [](const Derived::Number& number) { return !number.digits.empty(); });
}

int64_t DigestOf(std::string_view card) {
  const auto digest = static_cast<int64_t>(HashOf(card, kDigestSeed));
  return digest == 0 ? 1 : digest;
}

}  // namespace

std::string LastFirstOf(const formats::Contact& contact) {
  if (contact.isList || contact.surname.empty() || contact.given.empty()) return {};
  std::string name = contact.surname + std::string(kBehindLast) + contact.given;
  if (!contact.middle.empty()) name += ' ' + contact.middle;
  return name == contact.name ? std::string() : name;
}

Sought SoughtOf(std::string_view name, std::string_view lastFirst, std::string_view company,
                std::string_view department) {
  Sought sought{PlainLetters(name), PlainLetters(company), PlainLetters(department)};
  if (!SaysParts(name, lastFirst)) sought.name += ' ' + PlainLetters(lastFirst);
  return sought;
}

std::vector<uint32_t> KeysOfNumbers(const formats::Contact& contact) {
  std::vector<uint32_t> keys;
  for (const formats::ContactNumber& number : contact.numbers) keys.push_back(number.key);
  for (std::size_t i = 0; i < keys.size(); ++i) {
    const bool isOwn = keys[i] != 0 && std::find(keys.begin(), keys.begin() + static_cast<std::ptrdiff_t>(i),
                                                 keys[i]) == keys.begin() + static_cast<std::ptrdiff_t>(i);
    if (isOwn) continue;
    uint32_t key = formats::NumberKey(contact.numbers[i].text);
    while (key == 0 || std::find(keys.begin(), keys.end(), key) != keys.end()) ++key;
    keys[i] = key;
  }
  return keys;
}

void SetKeys(formats::Contact* contact) {
  const std::vector<uint32_t> keys = KeysOfNumbers(*contact);
  for (std::size_t i = 0; i < keys.size(); ++i) contact->numbers[i].key = keys[i];
}

Derived DeriveEntry(const formats::Contact& contact, uint32_t flags,
                    std::span<const Arrangement> arrangements) {
  if ((flags & kHasMadeUid) == 0) return Derive(contact, arrangements);
  formats::Contact nameless = contact;
  nameless.uid.clear();
  Derived derived = Derive(nameless, arrangements);
  GiveUid(contact, contact.uid, &derived);
  return derived;
}

void GiveUid(const formats::Contact& contact, const std::string& uid, Derived* derived) {
  formats::Contact copy = contact;
  copy.uid = uid;
  derived->card = CardOf(copy, KeysOfNumbers(copy));
}

Derived Derive(const formats::Contact& contact, std::span<const Arrangement> arrangements) {
  Derived derived;
  derived.name = contact.name;
  derived.company = contact.company;
  derived.department = contact.department;
  derived.title = contact.title;
  if (const formats::ContactEmail* email = formats::MainEmail(contact)) derived.email = email->text;
  derived.lastFirst = LastFirstOf(contact);
  for (const Arrangement& each : arrangements)
    derived.sorts.push_back(each.KeyOf(derived.name, derived.lastFirst));
  const std::vector<uint32_t> numberKeys = KeysOfNumbers(contact);
  for (std::size_t i = 0; i < numberKeys.size(); ++i)
    derived.numbers.push_back(NumberOf(contact.numbers[i], numberKeys[i]));
  derived.ordinals = OrdinalsOf(contact);
  derived.card = CardOf(contact, numberKeys);
  if (contact.uid.empty() && !contact.isList && !HasDigits(derived)) derived.digest = DigestOf(derived.card);
  return derived;
}

formats::Contact ContactOfCard(std::string_view card) {
  formats::Contact contact;
  if (!formats::ReadCard(card, &contact)) Fail(MAPI_E_CORRUPT_STORE);
  SetKeys(&contact);
  return contact;
}

}  // namespace book
