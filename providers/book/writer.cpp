// Positions are kept in memory from one transaction to the next while nobody else writes.
#include "providers/book/writer.h"

#include "orv/orvcodes.h"
#include "providers/book/change_log.h"
#include "providers/book/file.h"
#include "providers/book/schema.h"

namespace book {
namespace {

constexpr std::size_t kMostChangesTold = 256;

}  // namespace

Writer::Writer(const std::wstring& path, int cacheKilobytes)
    : database_(path, Database::Access::kWrite), keys_(SortKeys::OfUser()) {
  ConfigureWriter(database_, cacheKilobytes);
}

void Writer::Begin() {
  database_.Run("BEGIN IMMEDIATE");
  changes_.clear();
  const int64_t version = database_.Number("PRAGMA data_version");
  if (version == seenVersion_) return;
  keys_ = KeysOfBook(database_);
  buckets_.Load(database_);
  seenVersion_ = version;
}

void Writer::Commit(Changes* changes) {
  buckets_.Save(database_);
  *changes = {};
  changes->isEverything = changes_.size() > kMostChangesTold;
  if (!changes->isEverything) changes->entries = std::move(changes_);
  changes_.clear();
  WriteChanges(database_, *changes);
  database_.Run("COMMIT");
}

void Writer::Abandon() noexcept {
  database_.Rollback();
  changes_.clear();
  seenVersion_ = -1;
}

bool Writer::Find(const EntryKey& key, Stored* stored) {
  Query query(database_, "SELECT id, flags, version, deleted FROM entry WHERE key = ?", key);
  if (!query.Next()) return false;
  *stored = {query.Integer(0), key, static_cast<uint32_t>(query.Integer(1)),
             static_cast<uint32_t>(query.Integer(2)), !query.IsNull(3)};
  return true;
}

std::string Writer::CardText(int64_t id) {
  Query query(database_, "SELECT text FROM card WHERE entry = ?", id);
  if (!query.Next()) Fail(MAPI_E_CORRUPT_STORE);
  return std::string(query.Text(0));
}

formats::Contact Writer::Card(int64_t id) { return ContactOfCard(CardText(id)); }

bool Writer::Insert(const EntryKey& key, uint32_t flags, const Derived& derived, int64_t* id) {
  const int64_t now = Now();
  Execute(database_,
          "INSERT INTO entry(key, flags, version, created, changed, name, sort, digest) "
          "VALUES(?, ?, 1, ?, ?, ?, ?, nullif(?, 0)) ON CONFLICT(key) DO NOTHING",
          key, flags, now, now, derived.name, BytesOf(derived.sort), derived.digest);
  if (database_.ChangedRows() == 0) return false;
  *id = database_.LastId();
  Execute(database_, "INSERT INTO card(entry, text) VALUES(?, ?)", *id, derived.card);
  AddRows({*id, key, flags, 1}, derived);
  Note(key, What::kAdded, flags);
  return true;
}

void Writer::Update(const Stored& stored, uint32_t flags, const Derived& derived) {
  if (!stored.isDeleted) RemoveRows(stored.id);
  Execute(database_,
          "UPDATE entry SET flags = ?, version = ?, changed = ?, deleted = NULL, name = ?, sort = ?, "
          "digest = nullif(?, 0) WHERE id = ?",
          flags, stored.version + 1, Now(), derived.name, BytesOf(derived.sort), derived.digest, stored.id);
  Execute(database_, "UPDATE card SET text = ? WHERE entry = ?", derived.card, stored.id);
  AddRows({stored.id, stored.key, flags, stored.version + 1}, derived);
  Note(stored.key, stored.isDeleted ? What::kAdded : What::kChanged, flags);
}

void Writer::Delete(const Stored& stored) {
  RemoveRows(stored.id);
  Execute(database_, "UPDATE entry SET version = version + 1, deleted = ? WHERE id = ?", Now(), stored.id);
  Note(stored.key, What::kRemoved, stored.flags);
}

void Writer::Touch(const Stored& stored) {
  Execute(database_, "UPDATE entry SET version = version + 1, changed = ? WHERE id = ?", Now(), stored.id);
  Execute(database_,
          "UPDATE row SET version = version + 1 WHERE sort = (SELECT sort FROM entry WHERE id = ?1) AND "
          "entry = ?1",
          stored.id);
  Note(stored.key, What::kChanged, stored.flags);
}

void Writer::Note(const EntryKey& key, What what, uint32_t flags) {
  changes_.push_back({key, what, (flags & kIsList) != 0});
}

void Writer::AddRows(const RowOwner& owner, const Derived& derived) {
  AddDerivedRows(database_, owner, derived);
  for (const int32_t ordinal : derived.ordinals)
    buckets_.Add(database_, {derived.sort, owner.entry, ordinal});
}

void Writer::RemoveRows(int64_t id) {
  Query rows(database_,
             "SELECT r.sort, r.entry, r.ordinal FROM entry e CROSS JOIN row r ON r.sort = e.sort AND r.entry "
             "= e.id WHERE e.id = ?",
             id);
  while (rows.Next()) {
    const Bytes sort = rows.Blob(0);
    buckets_.Remove({std::string(sort.begin(), sort.end()), id, static_cast<int32_t>(rows.Integer(2))});
  }
  RemoveDerivedRows(database_, id);
}

}  // namespace book
