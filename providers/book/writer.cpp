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

Writer::Writer(const std::wstring& path, int cacheKilobytes) : database_(path, Database::Access::kWrite) {
  ConfigureWriter(database_, cacheKilobytes);
}

void Writer::Begin() {
  database_.Run("BEGIN IMMEDIATE");
  changes_.clear();
  const int64_t version = database_.Number("PRAGMA data_version");
  if (version == seenVersion_) return;
  LookAnew();
  seenVersion_ = version;
}

void Writer::LookAnew() {
  arrangements_ = ReadArrangements(database_);
  buckets_.clear();
  for (const Arrangement& each : arrangements_) buckets_.emplace_back(each).Load(database_);
}

void Writer::Commit(Changes* changes) {
  for (Buckets& each : buckets_) each.Save(database_);
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
          "INSERT INTO entry(key, flags, version, created, changed, name, digest) VALUES(?, ?, 1, ?, ?, ?, "
          "nullif(?, 0)) ON CONFLICT(key) DO NOTHING",
          key, flags, now, now, derived.name, derived.digest);
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
          "UPDATE entry SET flags = ?, version = ?, changed = ?, deleted = NULL, name = ?, "
          "digest = nullif(?, 0) WHERE id = ?",
          flags, stored.version + 1, Now(), derived.name, derived.digest, stored.id);
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
          "UPDATE row SET version = version + 1 WHERE sort IN (SELECT sort FROM place WHERE entry = ?1) AND "
          "entry = ?1",
          stored.id);
  Note(stored.key, What::kChanged, stored.flags);
}

void Writer::Note(const EntryKey& key, What what, uint32_t flags) {
  changes_.push_back({key, what, (flags & kIsList) != 0});
}

void Writer::AddRows(const RowOwner& owner, const Derived& derived) {
  AddDerivedRows(database_, arrangements_, owner, derived);
  for (std::size_t i = 0; i < buckets_.size(); ++i) {
    for (const int32_t ordinal : derived.ordinals)
      buckets_[i].Add(database_, {derived.sorts[i], owner.entry, ordinal});
  }
}

Buckets& Writer::BucketsOf(int64_t arrangement) {
  std::size_t i = 0;
  while (i + 1 < arrangements_.size() && arrangements_[i].number() != arrangement) ++i;
  return buckets_[i];
}

void Writer::RemoveRows(int64_t id) {
  Query rows(
      database_,
      "SELECT r.sort, r.entry, r.ordinal, p.arrangement FROM place p CROSS JOIN row r ON r.sort = p.sort "
      "AND r.entry = p.entry WHERE p.entry = ?",
      id);
  while (rows.Next()) {
    const Bytes sort = rows.Blob(0);
    BucketsOf(rows.Integer(3))
        .Remove({std::string(sort.begin(), sort.end()), id, static_cast<int32_t>(rows.Integer(2))});
  }
  RemoveDerivedRows(database_, id);
}

}  // namespace book
