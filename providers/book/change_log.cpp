// An entry without a key in the log stands for more than is worth telling one by one.
#include "providers/book/change_log.h"

#include "providers/book/text.h"

namespace book {
namespace {

constexpr int kChangesKept = 4000;
constexpr int kOfList = 8;  // added to what became of the entry

// Of this process: two that have one number after each other are not the same.
int64_t OwnToken() {
  static const auto token = static_cast<int64_t>(HashOf(NewUid(), 0));
  return token;
}

void Write(Database& database, const Change& change) {
  Execute(database, "INSERT INTO change(author, key, what) VALUES(?, ?, ?)", OwnToken(), change.key,
          static_cast<int>(change.what) + (change.isList ? kOfList : 0));
}

}  // namespace

void WriteUntold(Database& database) {
  Execute(database, "INSERT INTO change(author) VALUES(?)", OwnToken());
}

void WriteChanges(Database& database, const Changes& changes) {
  for (const Change& change : changes.entries) Write(database, change);
  if (changes.isEverything) WriteUntold(database);
  Execute(database, "DELETE FROM change WHERE seq < (SELECT max(seq) FROM change) - ?", kChangesKept);
}

int64_t LastChange(Database& database) { return database.Number("SELECT max(seq) FROM change"); }

Changes ReadChanges(Database& database, int64_t* last, bool ofOthers) {
  Changes changes;
  changes.isEverything = database.Number("SELECT min(seq) FROM change") > *last + 1;
  Query query(database, "SELECT seq, author, key, what FROM change WHERE seq > ? ORDER BY seq", *last);
  while (query.Next()) {
    *last = query.Integer(0);
    if (ofOthers && query.Integer(1) == OwnToken()) continue;
    const Bytes key = query.Blob(2);
    const int64_t what = query.Integer(3);
    changes.isEverything = changes.isEverything || key.size() != kKeySize;
    changes.entries.push_back({KeyOfBytes(key), static_cast<What>(what % kOfList), what > kOfList});
  }
  if (changes.isEverything) changes.entries.clear();
  return changes;
}

}  // namespace book
