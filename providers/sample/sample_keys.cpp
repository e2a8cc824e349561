#include "sample_keys.h"

#include <type_traits>

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
ULONGLONG NarrowKey(const formats::VCardFile& file, size_t record) {
  using namespace formats;
  const std::u16string uid = file.Parse(record, kVCardUid).uid;
  if (!uid.empty()) return HashOf(uid);
  const VCard card = file.Parse(record, kVCardDisplayName | kVCardEmails | kVCardPhones);
  std::u16string text = card.displayName + u'\n' + (card.emails.empty() ? u"" : card.emails.front());
  for (const VCardPhone& phone : card.phones) text += u'\n' + phone.number;
  return HashOf(text);
}

}  // namespace

KeyIndex::KeyIndex(const formats::VCardFile& file) {
  keys_.reserve(file.size());
  records_.reserve(2 * file.size());
  for (size_t record = 0; record < file.size(); ++record) {
    keys_.push_back({NarrowKey(file, record), HashOf(file.Text(record))});
    AddKey(keys_.back().narrow, record);
    AddKey(keys_.back().exact, record);
    if (file.IsGroup(record)) AddAddresses(file, record);
  }
}

void KeyIndex::AddKey(ULONGLONG key, size_t record) {
  const auto [place, isNew] = records_.emplace(key, record);
  if (!isNew) place->second = kSeveral;
}

void KeyIndex::AddAddresses(const formats::VCardFile& file, size_t group) {
  for (const formats::VCardMember& member : file.Parse(group, formats::kVCardMembers).members) {
    if (member.kind != formats::VCardMember::Kind::kEmail || file.FindMember(member)) continue;
    addresses_.emplace(KeyOfAddress(member.value), member.value);
  }
}

ULONGLONG KeyIndex::KeyOf(size_t record) const {
  const Keys& keys = keys_[record];
  return FindRecord(keys.narrow) ? keys.narrow : keys.exact;
}

std::optional<size_t> KeyIndex::FindRecord(ULONGLONG key) const {
  const auto found = records_.find(key);
  if (found == records_.end() || found->second == kSeveral) return std::nullopt;
  return found->second;
}

const std::u16string* KeyIndex::FindAddress(ULONGLONG key) const {
  const auto found = addresses_.find(key);
  return found == addresses_.end() ? nullptr : &found->second;
}

ULONGLONG KeyOfAddress(std::u16string_view address) { return HashOf(address); }

}  // namespace sample
