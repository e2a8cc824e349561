// The book: the contact file of one service, the entry identifiers of its entries and their properties. What it says
// never changes after it was opened, so all objects share one.
#pragma once

#include <utility>

#include "sample_keys.h"
#include "sample_values.h"

namespace sample {

enum class EntryKind : ULONG { kRoot, kContacts, kRecord, kAddress };

// What stands behind the provider's MAPIUID in our entry identifiers. An entry is found by its key alone; where its
// record (of an address: its group) lay when the identifier was made only tells identifiers apart.
struct EntryRef {
  EntryKind kind = EntryKind::kRoot;
  ULONG record = 0;
  ULONGLONG key = 0;

  bool operator==(const EntryRef&) const = default;
};

// A record of the file, or an address that no record has.
struct Member {
  std::optional<size_t> record;
  std::u16string address;
};

class Book {
 public:
  Book(Allocator allocator, Owned<IOrvSupport> support, const MAPIUID& uid, std::u16string name)
      : allocator_(allocator), support_(std::move(support)), uid_(uid), name_(std::move(name)) {}

  // A file that cannot be read leaves the book empty: a failing service would fail the whole logon.
  void ReadFile(const std::wstring& path);

  const Allocator& allocator() const { return allocator_; }
  IOrvSupport* support() const { return support_.get(); }
  size_t size() const { return file_ ? file_->size() : 0; }
  bool IsGroup(size_t record) const { return file_->IsGroup(record); }

  // Nothing for an identifier that is not of this book.
  std::optional<EntryRef> ReadEntryId(ULONG size, const ENTRYID* id) const;
  // Where the record lies now; nothing when it has left the file, when nobody can tell which one is meant any more,
  // or when a record is not what is meant. Costs one look-up whatever the size of the file.
  std::optional<size_t> FindRecord(const EntryRef& ref) const;

  Properties RootProperties() const;
  Properties ContactsProperties() const;
  // At least those of the columns.
  Properties RecordProperties(size_t record, const Tags& columns) const;
  // The members of a group in file order, without those that nothing is known of.
  std::vector<Member> MembersOf(size_t group) const;
  Properties MemberProperties(size_t group, const Member& member, const Tags& columns) const;
  // Nothing when there is no such entry any more.
  std::optional<Properties> EntryProperties(const EntryRef& ref) const;

 private:
  Properties WithIdentifier(Properties properties, const EntryRef& ref) const;
  Properties ContainerProperties(EntryKind kind, std::u16string name, ULONG flags) const;
  Properties PropertiesOf(size_t record, const formats::VCard& card) const;
  const KeyIndex& Keys() const;

  Allocator allocator_;
  Owned<IOrvSupport> support_;
  MAPIUID uid_;
  std::u16string name_;
  std::wstring path_;
  std::optional<formats::VCardFile> file_;
  HRESULT status_ = S_OK;
  mutable orv::sdk::Lock lock_;  // guards the making of
  mutable std::optional<KeyIndex> keys_;
};
using BookPtr = std::shared_ptr<const Book>;

// Opens a contact file, or says why it cannot be read.
HRESULT OpenFile(const std::wstring& path, std::optional<formats::VCardFile>* file);

}  // namespace sample
