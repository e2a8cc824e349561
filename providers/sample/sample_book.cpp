#include "sample_book.h"

#include <cstring>
#include <mutex>

#include "formats/file_bytes.h"

namespace sample {
namespace {

constexpr size_t kRefOffset = ORV_ENTRYID_UID_OFFSET + sizeof(MAPIUID);
constexpr size_t kEntryIdSize = kRefOffset + sizeof(EntryRef);
static_assert(kEntryIdSize == 36);

// The file's name without its extension.
std::u16string StemOf(const std::wstring& path) {
  const size_t begin = path.find_last_of(L"\\/:") + 1;
  const size_t dot = path.rfind(L'.');
  const size_t end = dot == std::wstring::npos || dot <= begin ? path.size() : dot;
  return std::u16string(path.begin() + static_cast<ptrdiff_t>(begin),
                        path.begin() + static_cast<ptrdiff_t>(end));
}

}  // namespace

HRESULT OpenFile(const std::wstring& path, std::optional<formats::VCardFile>* file) {
  using formats::FileResult;
  std::string bytes;
  const FileResult result = formats::ReadFileBytes(path, formats::VCardFile::kMaxFileSize, &bytes);
  if (result == FileResult::kNotFound) return MAPI_E_NOT_FOUND;
  if (result == FileResult::kTooLarge) return MAPI_E_TOO_BIG;
  if (result != FileResult::kOk) return MAPI_E_DISK_ERROR;
  *file = formats::VCardFile::FromBytes(std::move(bytes));
  return S_OK;
}

void Book::ReadFile(const std::wstring& path) {
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

// Made when the first row or entry is asked for: logging on must not wait for it.
const KeyIndex& Book::Keys() const {
  const std::lock_guard guard(lock_);
  if (!keys_) keys_.emplace(*file_);
  return *keys_;
}

std::optional<size_t> Book::FindRecord(const EntryRef& ref) const {
  return file_ && ref.kind == EntryKind::kRecord ? Keys().FindRecord(ref.key) : std::nullopt;
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
  const std::u16string name = path_.empty() ? name_ : StemOf(path_);
  Properties properties = ContainerProperties(EntryKind::kContacts, name, AB_RECIPIENTS);
  properties.push_back({PR_CONTENT_COUNT, static_cast<LONGLONG>(size())});
  properties.push_back({PR_ORV_SKIPPED_RECORDS, static_cast<LONGLONG>(file_ ? file_->skipped() : 0)});
  properties.push_back({PR_ORV_BOOK_STATUS, status_});
  properties.push_back({PR_ORV_BOOK_FILE_W, std::u16string(path_.begin(), path_.end())});
  return properties;
}

Properties Book::PropertiesOf(size_t record, const formats::VCard& card) const {
  return WithIdentifier(formats::VCardProperties(card),
                        {EntryKind::kRecord, static_cast<ULONG>(record), Keys().KeyOf(record)});
}

Properties Book::RecordProperties(size_t record, const Tags& columns) const {
  return PropertiesOf(record, file_->Parse(record, formats::VCardFieldsOf(columns)));
}

std::vector<Member> Book::MembersOf(size_t group) const {
  std::vector<Member> members;
  for (formats::VCardMember& each : file_->Parse(group, formats::kVCardMembers).members) {
    const std::optional<size_t> record = file_->FindMember(each);
    const bool isAddress = each.kind == formats::VCardMember::Kind::kEmail;
    if (record || isAddress) members.push_back({record, std::move(each.value)});
  }
  return members;
}

Properties Book::MemberProperties(size_t group, const Member& member, const Tags& columns) const {
  if (member.record) return RecordProperties(*member.record, columns);
  return WithIdentifier(formats::AddressProperties(member.address),
                        {EntryKind::kAddress, static_cast<ULONG>(group), KeyOfAddress(member.address)});
}

std::optional<Properties> Book::EntryProperties(const EntryRef& ref) const {
  if (ref.kind == EntryKind::kRoot) return RootProperties();
  if (ref.kind == EntryKind::kContacts) return ContactsProperties();
  if (const std::optional<size_t> record = FindRecord(ref))
    return PropertiesOf(*record, file_->Parse(*record));
  if (!file_ || ref.kind != EntryKind::kAddress) return std::nullopt;
  const std::u16string* address = Keys().FindAddress(ref.key);
  if (address == nullptr) return std::nullopt;
  return WithIdentifier(formats::AddressProperties(*address), ref);
}

}  // namespace sample
