// One connection that writes: entries with all that is made of them, within transactions.
#pragma once

#include <string>
#include <vector>

#include "providers/book/buckets.h"
#include "providers/book/database.h"
#include "providers/book/derived.h"
#include "providers/book/schema.h"
#include "providers/book/text.h"
#include "providers/book/types.h"

namespace book {

// An entry without its card.
struct Stored {
  int64_t id = 0;
  EntryKey key{};
  uint32_t flags = 0;
  uint32_t version = 0;
  bool isDeleted = false;
};

class Writer {
 public:
  // `cacheKilobytes`: of the file's pages held in memory.
  Writer(const std::wstring& path, int cacheKilobytes);

  // Sees what others have written. Nothing below is called without it.
  void Begin();
  // Writes positions and the log of changes too. `changes` is what listeners are to be told.
  void Commit(Changes* changes);
  void Abandon() noexcept;

  bool Find(const EntryKey& key, Stored* stored);  // deleted entries too
  formats::Contact Card(int64_t id);               // with keys, without members
  std::string CardText(int64_t id);

  // False where an entry, deleted or not, has the key.
  bool Insert(const EntryKey& key, uint32_t flags, const Derived& derived, int64_t* id);
  // A deleted one comes back.
  void Update(const Stored& stored, uint32_t flags, const Derived& derived);
  void Delete(const Stored& stored);
  // Members of the list are different from before.
  void Touch(const Stored& stored);

  Database& database() { return database_; }
  const std::vector<Arrangement>& arrangements() const { return arrangements_; }

 private:
  void LookAnew();
  void AddRows(const RowOwner& owner, const Derived& derived);
  void RemoveRows(int64_t id);
  Buckets& BucketsOf(int64_t arrangement);
  void Note(const EntryKey& key, What what, uint32_t flags);

  Database database_;
  std::vector<Arrangement> arrangements_;
  std::vector<Buckets> buckets_;  // of each
  int64_t seenVersion_ = -1;      // of the file, when these were read
  std::vector<Change> changes_;
};

}  // namespace book
