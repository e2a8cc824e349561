// Any bytes as a contact file. Beyond the sanitizers: a served record has a name, the index says of it what the
// record says of itself, it is found by its identifier and addresses, no text holds a control character, and a part
// reads the same whether it is asked for alone or with the rest; and every record goes out and in again unchanged.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "formats/vcard.h"
#include "fuzz/contact_round_trip.h"

namespace {

using fuzz::Demand;

bool IsClean(const std::u16string& text) {
  return std::none_of(text.begin(), text.end(),
                      [](char16_t c) { return c < 0x20 && c != u'\n' && c != u'\t'; });
}

void TryParts(const formats::VCardFile& file, std::size_t index, const formats::VCard& card) {
  using namespace formats;
  const VCard named = file.Parse(index, kVCardDisplayName | kVCardEmails);
  Demand(named.displayName == card.displayName && named.emails == card.emails &&
         named.isGroup == card.isGroup);
  Demand(file.Parse(index, kVCardUid).uid == card.uid);
  const VCard listed = file.Parse(index, kVCardPhones | kVCardMembers);
  Demand(listed.phones.size() == card.phones.size() && listed.members.size() == card.members.size());
  for (std::size_t i = 0; i < card.phones.size(); ++i) Demand(listed.phones[i].fax == card.phones[i].fax);
}

void TryRecord(const formats::VCardFile& file, std::size_t index) {
  const formats::VCard card = file.Parse(index);
  TryParts(file, index, card);
  Demand(!card.displayName.empty() && card.displayName.find(u'\n') == std::u16string::npos);
  Demand(card.isGroup == file.IsGroup(index));
  Demand(IsClean(card.displayName) && IsClean(card.note) && IsClean(card.organisation));
  Demand(card.uid.empty() || file.FindByUid(card.uid).value_or(file.size()) <= index);
  for (const std::u16string& email : card.emails) {
    Demand(IsClean(email) && file.FindByEmail(email).value_or(file.size()) <= index);
  }
  for (const formats::VCardPhone& phone : card.phones) Demand(!phone.number.empty() && IsClean(phone.number));
  for (const formats::VCardMember& member : card.members) {
    Demand(!member.value.empty() && file.FindMember(member).value_or(0) < file.size());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::CheckFile(std::string(data, data + size), formats::FileFormat::kVCard);
  const auto file = formats::VCardFile::FromBytes(std::string(data, data + size));
  for (std::size_t i = 0; i < file.size(); ++i) TryRecord(file, i);
  return 0;
}
