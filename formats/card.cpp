// One card as a whole: where it begins and ends, and what it is called.
#include <optional>

#include "formats/card_reader.h"
#include "formats/contact_io.h"
#include "formats/text_codec.h"

namespace formats {

VCardVersion FindCardVersion(std::string_view lines) {
  VCardVersion version = VCardVersion::k30OrLater;
  VCardLineReader reader(lines, version);
  std::size_t depth = 0;
  while (reader.Next()) {
    const std::string_view line = reader.line();
    if (FoldAscii(line.front()) == 'b' && IsVCardBegin(line)) ++depth;
    if (FoldAscii(line.front()) == 'e' && IsVCardEnd(line)) depth -= depth > 0;
    if (depth > 0 || FoldAscii(line.front()) != 'v') continue;
    const auto parts = SplitVCardLine(line);
    if (parts && EqualsFolded(parts->name, "VERSION"))
      version = TrimBlanks(parts->value) == "2.1" ? VCardVersion::k21 : VCardVersion::k30OrLater;
  }
  return version;
}

void ClearContact(Contact* contact) {
  contact->isList = false;
  for (std::string* text :
       {&contact->uid, &contact->name, &contact->given, &contact->middle, &contact->surname, &contact->prefix,
        &contact->suffix, &contact->company, &contact->department, &contact->title, &contact->note})
    text->clear();
  contact->numbers.clear();
  contact->emails.clear();
  contact->addresses.clear();
  contact->members.clear();
  contact->others.clear();
  contact->keepsOrder = false;
}

bool NameContact(Contact* contact) {
  if (contact->name.empty()) contact->name = contact->company;
  if (contact->name.empty()) contact->name = contact->department;
  if (contact->name.empty() && !contact->emails.empty()) contact->name = contact->emails.front().text;
  if (contact->name.empty() && !contact->numbers.empty()) contact->name = contact->numbers.front().text;
  return !contact->name.empty();
}

// A canonical card is known by its first lines and its last; any other is looked through for where it lies.
bool ReadCard(std::string_view card, Contact* contact) {
  constexpr std::string_view kBegin = "BEGIN:VCARD\nVERSION:4.0\n", kEnd = "\nEND:VCARD\n";
  const bool isCanonical = card.size() >= kBegin.size() + kEnd.size() &&
                           card.substr(0, kBegin.size()) == kBegin &&
                           card.substr(card.size() - kEnd.size()) == kEnd;
  if (isCanonical) {
    const std::string_view lines = card.substr(kBegin.size(), card.size() - kBegin.size() - kEnd.size());
    return ReadCardLines(lines, VCardVersion::k30OrLater, {}, contact);
  }
  VCardLineReader reader(card);
  std::optional<std::size_t> begin;
  while (reader.Next()) {
    if (!begin && IsVCardBegin(reader.line())) begin = reader.lineEnd();
    if (!begin || !IsVCardEnd(reader.line())) continue;
    const std::string_view lines = card.substr(*begin, reader.lineBegin() - *begin);
    return ReadCardLines(lines, FindCardVersion(lines), {}, contact);
  }
  ClearContact(contact);
  return false;
}

}  // namespace formats
