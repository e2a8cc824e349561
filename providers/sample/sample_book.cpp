// A provider that serves one vCard file, read-only: its settings, its book, and the two functions of the library.
#include <mutex>

#include "formats/file_bytes.h"
#include "formats/vcard_properties.h"
#include "orv/kit/provider.hpp"
#include "sample_keys.h"

namespace sample {
namespace {

namespace kit = orv::kit;

enum Kind : ULONG { kRoot, kContacts, kRecord, kAddress };

// Behind the kind: where the record lay when the identifier was made (of an address: its group), which only tells
// identifiers apart, and the key by which the entry is found.
constexpr kit::KeyForm kForm = kit::KeyOfBytes(12, 12);

kit::EntryRef RefOf(Kind kind, size_t place = 0, ULONGLONG key = 0) {
  const auto record = static_cast<ULONG>(place);
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

// The file has to be readable when it is chosen.
kit::Settings SampleSettings() {
  return kit::Settings().Path(PR_ORV_BOOK_FILE_W, [](const SPropValue& path) {
    std::optional<formats::VCardFile> file;
    return OpenFile(path.Value.lpszW, &file);
  });
}

// A record of the file, or an address that no record has.
struct Member {
  std::optional<size_t> record;
  std::u16string mail;
};

// What the file says never changes after it was opened. One that cannot be read leaves the book empty: a failure
// would fail the logon to everything.
class Book final : public kit::Book {
 public:
  explicit Book(const kit::Logon& logon)
      : kit::Book(logon, {kForm, kForm, kForm, kForm}), path_(logon.settings.Text(PR_ORV_BOOK_FILE_W)) {
    if (!path_.empty()) status_ = OpenFile(path_, &file_);
  }

  std::vector<kit::EntryRef> Containers(const kit::EntryRef& parent) override {
    if (parent != Root()) return {};
    return {RefOf(kContacts)};
  }
  HRESULT Read(const kit::EntryRef& entry, std::span<const ULONG> columns, kit::PropList& values) override;
  kit::RowsPtr Contents(const kit::EntryRef& container) override;

 private:
  void ReadContacts(kit::PropList& values) const;
  void ReadRecord(size_t record, std::span<const ULONG> columns, kit::PropList& values) const;
  void ReadAddress(const std::u16string& mail, const kit::EntryRef& entry, kit::PropList& values) const;
  std::vector<Member> MembersOf(size_t group) const;
  std::optional<size_t> FindRecord(const kit::EntryRef& entry) const;
  const KeyIndex& Keys() const;

  const std::wstring path_;
  std::optional<formats::VCardFile> file_;
  HRESULT status_ = S_OK;
  mutable orv::sdk::Lock lock_;  // guards the making of
  mutable std::optional<KeyIndex> keys_;
};

HRESULT Book::Read(const kit::EntryRef& entry, std::span<const ULONG> columns, kit::PropList& values) {
  const bool isAddress = file_ && entry.kind == kAddress;
  const std::u16string* mail = isAddress ? Keys().FindAddress(KeyOf(entry)) : nullptr;
  if (entry.kind == kContacts) {
    ReadContacts(values);
  } else if (const std::optional<size_t> record = FindRecord(entry)) {
    ReadRecord(*record, columns, values);
  } else if (mail != nullptr) {
    ReadAddress(*mail, entry, values);
  } else {
    return MAPI_E_NOT_FOUND;
  }
  return S_OK;
}

void Book::ReadContacts(kit::PropList& values) const {
  DescribeContainer(values, path_.empty() ? Name() : StemOf(path_), AB_RECIPIENTS | AB_UNMODIFIABLE);
  values.Set(PR_CONTENT_COUNT, file_ ? file_->size() : 0);
  values.Set(PR_ORV_SKIPPED_RECORDS, file_ ? file_->skipped() : 0);
  values.Set(PR_ORV_BOOK_STATUS, status_);
  values.Set(PR_ORV_BOOK_FILE_W, path_);
}

// Read for the columns asked alone. Whatever was asked for, the identifier says where the record lies now.
void Book::ReadRecord(size_t record, std::span<const ULONG> columns, kit::PropList& values) const {
  const auto fields = columns.empty() ? formats::kVCardEverything : formats::VCardFieldsOf(columns);
  formats::SetProperties(formats::VCardProperties(file_->Parse(record, fields)), values);
  Ids().Identify(RefOf(kRecord, record, Keys().KeyOf(record)), values);
}

void Book::ReadAddress(const std::u16string& mail, const kit::EntryRef& entry, kit::PropList& values) const {
  formats::SetProperties(formats::AddressProperties(mail), values);
  Ids().Identify(entry, values);
}

kit::RowsPtr Book::Contents(const kit::EntryRef& container) {
  if (container.kind == kContacts) {
    return kit::RowsMadeBy(file_ ? file_->size() : 0, [this](size_t row, auto columns, auto& values) {
      ReadRecord(row, columns, values);
      return S_OK;
    });
  }
  const std::optional<size_t> group = FindRecord(container);
  if (!group) return nullptr;
  const std::vector<Member> members = MembersOf(*group);
  return kit::RowsMadeBy(members.size(), [=, this](size_t row, auto columns, auto& values) {
    const auto& [record, mail] = members[row];
    if (record) {
      ReadRecord(*record, columns, values);
    } else {
      ReadAddress(mail, RefOf(kAddress, *group, KeyOfAddress(mail)), values);
    }
    return S_OK;
  });
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

// Nothing when it has left the file, or when nobody can tell which one is meant any more.
std::optional<size_t> Book::FindRecord(const kit::EntryRef& entry) const {
  return file_ && entry.kind == kRecord ? Keys().FindRecord(KeyOf(entry)) : std::nullopt;
}

// Made when the first row or entry is asked for: logging on must not wait for it.
const KeyIndex& Book::Keys() const {
  const std::lock_guard guard(lock_);
  if (!keys_) keys_.emplace(*file_);
  return *keys_;
}

}  // namespace
}  // namespace sample

ORV_SERVICE_ENTRY(SampleServiceEntry, orv::kit::ServiceHandler(sample::SampleSettings()))
ORV_PROVIDER(sample::Book, sample::SampleSettings())
