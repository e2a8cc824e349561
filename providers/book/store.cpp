// The sessions of this process find each other's store by the file's identity: names of a file are many.
#include "providers/book/store.h"

#include <algorithm>

#include "providers/book/core.h"
#include "providers/book/lookout.h"
#include "providers/book/members.h"
#include "providers/book/schema.h"

namespace book {
namespace {

struct Shared {
  orv::sdk::Lock lock;  // guards `cores`
  std::vector<std::weak_ptr<Core>> cores;
};
Shared g_shared;

// One that may write what may be written now, and reads else.
std::shared_ptr<Core> FindLocked(const FileFacts& facts, const Options& options) {
  std::erase_if(g_shared.cores, [](const std::weak_ptr<Core>& each) { return each.expired(); });
  for (const std::weak_ptr<Core>& each : g_shared.cores) {
    std::shared_ptr<Core> core = each.lock();
    const bool isSame = core != nullptr && core->identity() == facts.identity;
    if (isSame && (options.isReadOnly || core->isReadOnly() != facts.isWritable)) return core;
  }
  return nullptr;
}

std::shared_ptr<Core> OpenCore(const std::wstring& given, const Options& options) {
  const std::wstring path = ResolvePath(given);
  // Held while a book is made and opened, so that sessions that come at once have one.
  const std::lock_guard guard(g_shared.lock);
  if (options.create && !options.isReadOnly && !FileExists(path)) CreateBook(path, options.names);
  const FileFacts facts = ExamineFile(path);
  if (std::shared_ptr<Core> core = FindLocked(facts, options)) return core;
  const auto core = std::make_shared<Core>(path, facts, options);
  g_shared.cores.push_back(core);
  return core;
}

struct CodeAndSentence {
  HRESULT code;
  const char* sentence;
};
constexpr CodeAndSentence kSentences[] = {
    {MAPI_E_NOT_FOUND, "There is no such file. Check the path, or bring the file back from a backup."},
    {MAPI_E_INVALID_OBJECT,
     "This is not an address book. Name the file of a book, not a folder or another program's."},
    {MAPI_E_CORRUPT_STORE,
     "The address book is damaged. Repair it into a new file, or take one of its backups."},
    {MAPI_E_VERSION, "The address book was made by a newer version. Update this program to open it."},
    {MAPI_E_BUSY, "Another program is using the address book. Close that program, or try again later."},
    {MAPI_E_NO_ACCESS,
     "The address book may not be read or written. Check the rights of the file and its folder."},
    {MAPI_E_NOT_ENOUGH_DISK, "The disk is full. Make room, and do the last change again."},
    {MAPI_E_DISK_ERROR, "The disk or the network failed. Check the connection, then check the address book."},
    {MAPI_E_STRING_TOO_LONG, "The path is too long. Move the address book to a folder with a shorter path."},
    {MAPI_E_OBJECT_CHANGED, "Somebody else has changed the entry. Look at it again before it is changed."},
    {MAPI_E_OBJECT_DELETED, "Somebody else has deleted the entry. It can be restored for thirty days."},
    {MAPI_E_COLLISION, "An entry with this UID is there already."},
    {MAPI_E_FOLDER_CYCLE,
     "A list cannot have itself as a member, at once or through other lists. Leave that member out."},
};

Stored RequireEntry(Writer& writer, const EntryKey& key) {
  Stored stored;
  if (!writer.Find(key, &stored)) Fail(MAPI_E_NOT_FOUND);
  if (stored.isDeleted) Fail(MAPI_E_OBJECT_DELETED);
  return stored;
}

Stored RequireList(Writer& writer, const EntryKey& key) {
  const Stored stored = RequireEntry(writer, key);
  if ((stored.flags & kIsList) == 0) Fail(MAPI_E_INVALID_OBJECT);
  return stored;
}

void SetMembers(Writer& writer, int64_t list, const formats::Contact& contact) {
  const std::vector<Member> members = MembersOf(contact);
  RequireNoCycle(writer.database(), list, members);
  ReplaceMembers(writer.database(), list, members);
}

uint32_t AddEntry(Writer& writer, const formats::Contact& contact, bool isMadeHere, EntryKey* key) {
  const uint32_t flags = (contact.isList ? uint32_t{kIsList} : 0) | (isMadeHere ? uint32_t{kHasMadeUid} : 0);
  const Derived derived = DeriveEntry(contact, flags, writer.arrangements());
  *key = KeyOfUid(contact.uid);
  Stored former;
  const bool isThere = writer.Find(*key, &former);
  if (isThere && !former.isDeleted) Fail(MAPI_E_COLLISION);
  if (isThere) {
    writer.Update(former, flags, derived);
  } else {
    writer.Insert(*key, flags, derived, &former.id);
  }
  if (contact.isList) SetMembers(writer, former.id, contact);
  return former.version + 1;
}

uint32_t ChangeEntry(Writer& writer, const EntryKey& key, const formats::Contact& contact,
                     uint32_t expected) {
  const Stored stored = RequireEntry(writer, key);
  if (expected != kAnyVersion && expected != stored.version) Fail(MAPI_E_OBJECT_CHANGED);
  formats::Contact changed = contact;
  changed.uid = writer.Card(stored.id).uid;
  changed.isList = (stored.flags & kIsList) != 0;
  const uint32_t flags = stored.flags & ~kIsMerged;
  writer.Update(stored, flags, DeriveEntry(changed, flags, writer.arrangements()));
  if (changed.isList) SetMembers(writer, stored.id, contact);
  return stored.version + 1;
}

// The entry goes, unless it has fax numbers besides this one. False where it does not have this one.
bool RemoveRow(Writer& writer, const Stored& stored, uint32_t number) {
  formats::Contact contact = writer.Card(stored.id);
  const auto isMeant = [&](const formats::ContactNumber& each) {
    return formats::IsFaxNumber(each) && each.key == number;
  };
  const auto faxes = std::count_if(contact.numbers.begin(), contact.numbers.end(), formats::IsFaxNumber);
  const bool isAll = number == 0 || (faxes < 2 && std::ranges::any_of(contact.numbers, isMeant));
  if (isAll) {
    writer.Delete(stored);
    return true;
  }
  if (std::erase_if(contact.numbers, isMeant) == 0) return false;
  const uint32_t flags = stored.flags & ~kIsMerged;
  writer.Update(stored, flags, DeriveEntry(contact, flags, writer.arrangements()));
  return true;
}

std::vector<std::size_t> RemoveRows(Writer& writer, std::span<const RowKey> rows) {
  std::vector<std::size_t> missing;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    Stored stored;
    const bool isThere = writer.Find(rows[i].entry, &stored) && !stored.isDeleted;
    if (!isThere || !RemoveRow(writer, stored, rows[i].number)) missing.push_back(i);
  }
  return missing;
}

void RestoreEntry(Writer& writer, const EntryKey& key) {
  Stored stored;
  if (!writer.Find(key, &stored)) Fail(MAPI_E_NOT_FOUND);
  if (!stored.isDeleted) return;
  writer.Update(stored, stored.flags,
                DeriveEntry(writer.Card(stored.id), stored.flags, writer.arrangements()));
}

std::vector<Member> WithUids(Writer& writer, std::span<const Member> members) {
  std::vector<Member> named(members.begin(), members.end());
  for (Member& member : named) {
    Stored stored;
    if (member.isOurs && member.uid.empty() && writer.Find(member.key.entry, &stored))
      member.uid = writer.Card(stored.id).uid;
  }
  return named;
}

}  // namespace

const char* Sentence(HRESULT code) {
  for (const CodeAndSentence& each : kSentences) {
    if (each.code == code) return each.sentence;
  }
  return SUCCEEDED(code) ? "The address book can be read." : "The address book cannot be read.";
}

Store::Store(std::shared_ptr<Core> core, NameForm names)
    : core_(std::move(core)), names_(names), patience_(kPatience) {}
Store::Store(const Store& other, ULONGLONG patience)
    : core_(other.core_), names_(other.names_), patience_(patience) {}

HRESULT Store::Open(const std::wstring& path, const Options& options, std::shared_ptr<Store>* store) {
  return Answer([&] {
    const std::shared_ptr<Core> core = OpenCore(path, options);
    core->ArrangeFor(options.names);
    *store = std::make_shared<Store>(core, options.names);
  });
}

const EntryKey& Store::Uid() const { return core_->uid(); }
const std::wstring& Store::Path() const { return core_->path(); }
bool Store::IsReadOnly() const { return core_->isReadOnly(); }

HRESULT Store::OpenView(std::unique_ptr<View>* view) {
  return Answer([&] {
    auto lookout = std::make_unique<Lookout>(core_, names_);
    lookout->Refresh();
    *view = std::make_unique<View>(std::move(lookout));
  });
}

HRESULT Store::Read(const EntryKey& key, Entry* entry) {
  return core_->Look([&](Database& database) {
    Entry read;
    if (!ReadEntry(database, key, &read)) Fail(MAPI_E_NOT_FOUND);
    *entry = std::move(read);
  });
}

HRESULT Store::Deleted(std::vector<DeletedEntry>* entries) {
  return core_->Look([&](Database& database) { *entries = ReadDeleted(database); });
}

HRESULT Store::Add(const formats::Contact& contact, EntryKey* key, uint32_t* version) {
  return core_->Write(patience_, [&](Writer& writer) {
    formats::Contact named = contact;
    if (named.uid.empty()) named.uid = NewUid();
    EntryKey added{};
    const uint32_t newVersion = AddEntry(writer, named, contact.uid.empty(), &added);
    if (key != nullptr) *key = added;
    if (version != nullptr) *version = newVersion;
  });
}

HRESULT Store::Change(const EntryKey& key, const formats::Contact& contact, uint32_t expected,
                      uint32_t* version) {
  return core_->Write(patience_, [&](Writer& writer) {
    const uint32_t changed = ChangeEntry(writer, key, contact, expected);
    if (version != nullptr) *version = changed;
  });
}

HRESULT Store::Remove(std::span<const RowKey> rows, std::vector<std::size_t>* missing) {
  return core_->Write(patience_, [&](Writer& writer) {
    std::vector<std::size_t> absent = RemoveRows(writer, rows);
    if (missing != nullptr) *missing = std::move(absent);
  });
}

HRESULT Store::Restore(const EntryKey& key) {
  return core_->Write(patience_, [&](Writer& writer) { RestoreEntry(writer, key); });
}

HRESULT Store::AddMembers(const EntryKey& list, std::span<const Member> members) {
  return core_->Write(patience_, [&](Writer& writer) {
    const Stored stored = RequireList(writer, list);
    RequireNoCycle(writer.database(), stored.id, members);
    if (AppendMembers(writer.database(), stored.id, WithUids(writer, members))) writer.Touch(stored);
  });
}

HRESULT Store::RemoveMembers(const EntryKey& list, std::span<const uint32_t> ids) {
  return core_->Write(patience_, [&](Writer& writer) {
    const Stored stored = RequireList(writer, list);
    bool hasChanged = false;
    for (const uint32_t id : ids) hasChanged = DeleteMember(writer.database(), stored.id, id) || hasChanged;
    if (hasChanged) writer.Touch(stored);
  });
}

HRESULT Store::MoveMember(const EntryKey& list, uint32_t id, uint64_t position) {
  return core_->Write(patience_, [&](Writer& writer) {
    const Stored stored = RequireList(writer, list);
    if (!MoveMemberTo(writer.database(), stored.id, id, position)) Fail(MAPI_E_NOT_FOUND);
    writer.Touch(stored);
  });
}

HRESULT Store::BeginImport(bool isTrial, std::unique_ptr<Import>* import) {
  return Answer([&] {
    core_->RequireWritable();
    *import = std::make_unique<Import>(core_, isTrial);
  });
}

void Store::Listen(const std::shared_ptr<Listener>& listener) { core_->Listen(listener); }

HRESULT Store::Poll() {
  return Answer([&] { core_->Poll(); });
}

HRESULT Store::LastChange(int64_t* number) {
  return Answer([&] { *number = core_->LastChange(); });
}

HRESULT Store::Tend() {
  return Answer([&] { core_->Tend(patience_); });
}

}  // namespace book
