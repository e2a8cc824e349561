#include "sample_book.h"

#include "formats/file_bytes.h"
#include "formats/vcard_properties.h"

namespace sample {
namespace {

enum Kind : ULONG { kRoot, kContacts, kRecord, kAddress };

// Behind the kind: where the record lay when the identifier was made (of an address: its group), which only tells
// identifiers apart, and the key by which the entry is found.
constexpr kit::KeyForm kForm = kit::KeyOfBytes(12, 12);

kit::EntryRef RefOf(Kind kind, ULONG record = 0, ULONGLONG key = 0) {
  BYTE bytes[kForm.most];
  std::memcpy(bytes, &record, sizeof record);
  std::memcpy(bytes + sizeof record, &key, sizeof key);
  return {kind, bytes};
}

ULONGLONG KeyOf(const kit::EntryRef& entry) {
  ULONGLONG key = 0;
  std::memcpy(&key, entry.key.data() + sizeof(ULONG), sizeof key);
  return key;
}

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

// The file's name without its extension.
std::wstring StemOf(const std::wstring& path) {
  const size_t begin = path.find_last_of(L"\\/:") + 1;
  const size_t dot = path.rfind(L'.');
  return path.substr(begin, dot == std::wstring::npos || dot <= begin ? dot : dot - begin);
}

struct SetValue {
  kit::PropList& values;
  ULONG tag;

  void operator()(const std::vector<std::u16string>& texts) const { values.SetTexts(tag, texts); }
  void operator()(const auto& value) const { values.Set(tag, value); }
};

void SetAll(const formats::Properties& properties, kit::PropList& values) {
  for (const formats::Property& each : properties) std::visit(SetValue{values, each.tag}, each.value);
}

}  // namespace

kit::Settings SampleSettings() {
  return kit::Settings().Path(PR_ORV_BOOK_FILE_W, [](const SPropValue& path) {
    std::optional<formats::VCardFile> file;
    return OpenFile(path.Value.lpszW, &file);
  });
}

Book::Book(const kit::Logon& logon)
    : kit::Book(logon, {kForm, kForm, kForm, kForm}), path_(logon.settings.Text(PR_ORV_BOOK_FILE_W)) {
  if (!path_.empty()) status_ = OpenFile(path_, &file_);
}

std::vector<kit::EntryRef> Book::Containers(const kit::EntryRef& parent) {
  if (parent != Root()) return {};
  return {RefOf(kContacts)};
}

HRESULT Book::Read(const kit::EntryRef& entry, std::span<const ULONG> columns, kit::PropList& values) {
  if (entry.kind == kContacts) {
    ReadContacts(values);
    return S_OK;
  }
  if (const std::optional<size_t> record = FindRecord(entry)) return ReadRecord(*record, columns, values);
  const bool isAddress = file_ && entry.kind == kAddress;
  const std::u16string* address = isAddress ? Keys().FindAddress(KeyOf(entry)) : nullptr;
  if (address == nullptr) return MAPI_E_NOT_FOUND;
  SetAll(formats::AddressProperties(*address), values);
  return S_OK;
}

void Book::ReadContacts(kit::PropList& values) const {
  const std::wstring name = path_.empty() ? Name() : StemOf(path_);
  DescribeContainer(values, name, AB_RECIPIENTS | AB_UNMODIFIABLE);
  values.Set(PR_CONTENT_COUNT, file_ ? file_->size() : 0);
  values.Set(PR_ORV_SKIPPED_RECORDS, file_ ? file_->skipped() : 0);
  values.Set(PR_ORV_BOOK_STATUS, status_);
  values.Set(PR_ORV_BOOK_FILE_W, path_);
}

// A record is read for the columns asked alone. Its identifier says where it lies now.
HRESULT Book::ReadRecord(size_t record, std::span<const ULONG> columns, kit::PropList& values) const {
  const formats::VCardFields fields =
      columns.empty() ? formats::kVCardEverything : formats::VCardFieldsOf(columns);
  SetAll(formats::VCardProperties(file_->Parse(record, fields)), values);
  Ids().Identify(RefOf(kRecord, static_cast<ULONG>(record), Keys().KeyOf(record)), values);
  return S_OK;
}

HRESULT Book::ReadMember(ULONG group, const Member& member, std::span<const ULONG> columns,
                         kit::PropList& values) const {
  if (member.record) return ReadRecord(*member.record, columns, values);
  SetAll(formats::AddressProperties(member.address), values);
  Ids().Identify(RefOf(kAddress, group, KeyOfAddress(member.address)), values);
  return S_OK;
}

// In file order, without those that nothing is known of.
std::vector<Member> Book::MembersOf(size_t group) const {
  std::vector<Member> members;
  for (formats::VCardMember& each : file_->Parse(group, formats::kVCardMembers).members) {
    const std::optional<size_t> record = file_->FindMember(each);
    const bool isAddress = each.kind == formats::VCardMember::Kind::kEmail;
    if (record || isAddress) members.push_back({record, std::move(each.value)});
  }
  return members;
}

kit::RowsPtr Book::Contents(const kit::EntryRef& container) {
  if (container.kind == kContacts) {
    return kit::RowsMadeBy(file_ ? file_->size() : 0, [this](size_t row, auto columns, auto& values) {
      return ReadRecord(row, columns, values);
    });
  }
  const std::optional<size_t> group = FindRecord(container);
  if (!group) return nullptr;
  std::vector<Member> members = MembersOf(*group);
  const size_t count = members.size();
  return kit::RowsMadeBy(count, [=, this](size_t row, auto columns, auto& values) {
    return ReadMember(static_cast<ULONG>(*group), members[row], columns, values);
  });
}

// Where the record lies now; nothing when it has left the file, or when nobody can tell which one is meant any more.
std::optional<size_t> Book::FindRecord(const kit::EntryRef& entry) const {
  return file_ && entry.kind == kRecord ? Keys().FindRecord(KeyOf(entry)) : std::nullopt;
}

// Made when the first row or entry is asked for: logging on must not wait for it.
const KeyIndex& Book::Keys() const {
  const std::lock_guard guard(lock_);
  if (!keys_) keys_.emplace(*file_);
  return *keys_;
}

}  // namespace sample

ORV_SERVICE_ENTRY(SampleServiceEntry, orv::kit::ServiceHandler(sample::SampleSettings()))
ORV_PROVIDER(sample::Book, sample::SampleSettings())
