#include "sample_book.h"

#include <cstring>
#include <string_view>

namespace sample {
namespace {

using OpenResult = formats::VCardFile::OpenResult;

constexpr size_t kRefOffset = ORV_ENTRYID_UID_OFFSET + sizeof(MAPIUID);
constexpr size_t kEntryIdSize = kRefOffset + sizeof(EntryRef);
static_assert(kEntryIdSize == 36);

ULONGLONG HashOf(std::u16string_view text) {  // FNV-1a: identifiers are stored, so never std::hash
  ULONGLONG hash = 0xCBF29CE484222325;
  for (const char16_t unit : text) hash = (hash ^ unit) * 0x100000001B3;
  return hash;
}

ULONGLONG KeyOf(const formats::VCard& card) {
  if (!card.uid.empty()) return HashOf(card.uid);
  return HashOf(card.displayName + u'\n' + (card.emails.empty() ? u"" : card.emails.front()));
}

}  // namespace

HRESULT OpenFile(const std::filesystem::path& path, std::optional<formats::VCardFile>* file) {
  OpenResult result = OpenResult::kOk;
  *file = formats::VCardFile::Open(path, &result);
  if (result == OpenResult::kNotFound) return MAPI_E_NOT_FOUND;
  if (result == OpenResult::kTooLarge) return MAPI_E_TOO_BIG;
  return result == OpenResult::kOk ? S_OK : MAPI_E_DISK_ERROR;
}

void Book::ReadFile(const std::filesystem::path& path) {
  path_ = path;
  status_ = OpenFile(path, &file_);
}

// Four clear flag bytes (valid for ever), the MAPIUID by which the address book routes, and our own part.
Properties Book::WithIdentifier(Properties properties, const EntryRef& ref) const {
  Bytes id(kEntryIdSize);
  std::memcpy(id.data() + ORV_ENTRYID_UID_OFFSET, &uid_, sizeof(uid_));
  std::memcpy(id.data() + kRefOffset, &ref, sizeof(ref));
  properties.push_back({PR_INSTANCE_KEY, id});
  properties.push_back({PR_ENTRYID, std::move(id)});
  return properties;
}

// A caller's bytes may lie anywhere, so they are copied and never cast.
std::optional<EntryRef> Book::ReadEntryId(ULONG size, const ENTRYID* id) const {
  if (id == nullptr || size != kEntryIdSize) return std::nullopt;
  const auto* bytes = reinterpret_cast<const BYTE*>(id);
  if (std::memcmp(bytes + ORV_ENTRYID_UID_OFFSET, &uid_, sizeof(uid_)) != 0) return std::nullopt;
  EntryRef ref;
  std::memcpy(&ref, bytes + kRefOffset, sizeof(ref));
  return ref;
}

std::optional<size_t> Book::FindRecord(const EntryRef& ref) const {
  if (ref.kind != EntryKind::kRecord) return std::nullopt;
  if (ref.record < size() && KeyOf(file_->Parse(ref.record)) == ref.key) return ref.record;
  for (size_t record = 0; record < size(); ++record) {
    if (KeyOf(file_->Parse(record)) == ref.key) return record;
  }
  return std::nullopt;
}

Properties Book::ContainerProperties(EntryKind kind, std::u16string name, ULONG flags) const {
  return WithIdentifier({{PR_DISPLAY_NAME, std::move(name)},
                         {PR_OBJECT_TYPE, MAPI_ABCONT},
                         {PR_DISPLAY_TYPE, DT_LOCAL},
                         {PR_CONTAINER_FLAGS, flags | AB_UNMODIFIABLE},
                         {PR_DEPTH, 0}},
                        {kind});
}

Properties Book::RootProperties() const {
  return ContainerProperties(EntryKind::kRoot, name_, AB_SUBCONTAINERS);
}

Properties Book::ContactsProperties() const {
  const std::u16string name = path_.empty() ? name_ : path_.stem().u16string();
  Properties properties = ContainerProperties(EntryKind::kContacts, name, AB_RECIPIENTS);
  properties.push_back({PR_CONTENT_COUNT, static_cast<LONGLONG>(size())});
  properties.push_back({PR_ORV_SKIPPED_RECORDS, static_cast<LONGLONG>(file_ ? file_->skipped() : 0)});
  properties.push_back({PR_ORV_BOOK_STATUS, status_});
  properties.push_back({PR_ORV_BOOK_FILE_W, path_.u16string()});
  return properties;
}

Properties Book::RecordProperties(size_t record) const {
  const formats::VCard card = file_->Parse(record);
  return WithIdentifier(formats::VCardProperties(card),
                        {EntryKind::kRecord, static_cast<ULONG>(record), KeyOf(card)});
}

std::vector<Member> Book::MembersOf(size_t group) const {
  std::vector<Member> members;
  for (formats::VCardMember& each : file_->Parse(group).members) {
    const std::optional<size_t> record = file_->FindMember(each);
    const bool isAddress = each.kind == formats::VCardMember::Kind::kEmail;
    if (record || isAddress) members.push_back({record, std::move(each.value)});
  }
  return members;
}

Properties Book::MemberProperties(size_t group, const Member& member) const {
  if (member.record) return RecordProperties(*member.record);
  return WithIdentifier(formats::AddressProperties(member.address),
                        {EntryKind::kAddress, static_cast<ULONG>(group), HashOf(member.address)});
}

std::optional<Properties> Book::EntryProperties(const EntryRef& ref) const {
  if (ref.kind == EntryKind::kRoot) return RootProperties();
  if (ref.kind == EntryKind::kContacts) return ContactsProperties();
  if (const std::optional<size_t> record = FindRecord(ref)) return RecordProperties(*record);
  // The address stands in the group that it names, or in another one since the file has changed.
  for (size_t step = 0; ref.kind == EntryKind::kAddress && step <= size(); ++step) {
    const size_t group = step == 0 ? ref.record : step - 1;
    if (group >= size() || !IsGroup(group)) continue;
    for (const Member& each : MembersOf(group)) {
      if (!each.record && HashOf(each.address) == ref.key) return MemberProperties(group, each);
    }
  }
  return std::nullopt;
}

}  // namespace sample
