// Every row is looked up by itself: what a table shows lies in three places, each found by its key.
#include "providers/book/rows.h"

#include <algorithm>

#include "orv/orvcodes.h"
#include "providers/book/derived.h"
#include "providers/book/members.h"
#include "providers/book/schema.h"

namespace book {
namespace {

// Namesakes and further numbers of the contact stand beside the row.
#define ORV_ROW_COLUMNS                                                                                    \
  "r.key, r.flags, r.version, r.name, r.company, r.department, r.title, r.email, r.number_key, r.number, " \
  "r.place, "                                                                                              \
  "r.preferred, EXISTS(SELECT 1 FROM row x WHERE x.sort = r.sort AND x.entry <> r.entry), "                \
  "EXISTS(SELECT 1 FROM row x WHERE x.sort = r.sort AND x.entry = r.entry AND x.ordinal <> r.ordinal), "   \
  "r.entry, r.ordinal, r.last_first, r.sort "

Row RowIn(const Query& query) {
  Row row;
  row.key = {KeyOfBytes(query.Blob(0)), static_cast<uint32_t>(query.Integer(8))};
  row.ref = {query.Integer(14), static_cast<int32_t>(query.Integer(15))};
  row.isList = (query.Integer(1) & kIsList) != 0;
  row.version = static_cast<uint32_t>(query.Integer(2));
  row.name = query.Text(3);
  row.lastFirst = query.Text(16);
  const Bytes sort = query.Blob(17);
  row.isLastFirst = !sort.empty() && Arrangement::FormOf(sort.front()) == NameForm::kLastFirst;
  row.company = query.Text(4);
  row.department = query.Text(5);
  row.title = query.Text(6);
  row.email = query.Text(7);
  row.number = query.Text(9);
  row.place = static_cast<formats::Place>(query.Integer(10));
  row.isPreferred = query.Integer(11) != 0;
  row.hasNamesake = query.Integer(12) != 0;
  row.isOneOfSeveral = query.Integer(13) != 0;
  return row;
}

class FileOrder final : public RowOrder {
 public:
  FileOrder(Database& database, const Arrangement& arrangement)
      : database_(database), arrangement_(arrangement), buckets_(arrangement) {
    buckets_.Load(database);
  }

  uint64_t Count() const override { return buckets_.Count(); }

  std::vector<RowRef> Refs(uint64_t first, std::size_t count) const override {
    std::vector<RowRef> refs;
    if (first >= Count()) return refs;
    count =
        std::min(count, static_cast<std::size_t>(Count() - first));  // behind these lie others' arrangements
    uint64_t skip = 0;
    const RowPlace& from = buckets_.Find(first, &skip);
    Query query(database_,
                "SELECT entry, ordinal FROM row WHERE (sort, entry, ordinal) >= (?, ?, ?) ORDER BY sort, "
                "entry, ordinal LIMIT ? OFFSET ?",
                BytesOf(from.sort), from.entry, from.ordinal, static_cast<int64_t>(count),
                static_cast<int64_t>(skip));
    while (query.Next()) refs.push_back({query.Integer(0), static_cast<int32_t>(query.Integer(1))});
    return refs;
  }

  std::vector<Row> Rows(uint64_t first, std::size_t count) const override {
    std::vector<Row> rows;
    if (first >= Count()) return rows;
    count = std::min(count, static_cast<std::size_t>(Count() - first));
    uint64_t skip = 0;
    const RowPlace& from = buckets_.Find(first, &skip);
    Query query(database_,
                "SELECT " ORV_ROW_COLUMNS
                "FROM row r WHERE (r.sort, r.entry, r.ordinal) >= (?, ?, ?) ORDER BY r.sort, r.entry, "
                "r.ordinal LIMIT ? "
                "OFFSET ?",
                BytesOf(from.sort), from.entry, from.ordinal, static_cast<int64_t>(count),
                static_cast<int64_t>(skip));
    while (query.Next()) rows.push_back(RowIn(query));
    return rows;
  }

  uint64_t Before(const RowPlace& place) const override {
    uint64_t rows = 0;
    const RowPlace& from = buckets_.Before(place, &rows);
    return rows + CountRows(database_, from, place);
  }

  std::vector<PlacedRow> OfEntry(int64_t entry) const override {
    Query query(
        database_,
        "SELECT r.sort, r.ordinal FROM place p CROSS JOIN row r ON r.sort = p.sort AND r.entry = p.entry "
        "WHERE p.entry = ? AND p.arrangement = ? ORDER BY r.ordinal",
        entry, int64_t{arrangement_.number()});
    std::vector<PlacedRow> rows;
    while (query.Next()) {
      const RowRef ref{entry, static_cast<int32_t>(query.Integer(1))};
      const Bytes sort = query.Blob(0);
      const uint64_t position = rows.empty()
                                    ? Before({std::string(sort.begin(), sort.end()), entry, ref.ordinal})
                                    : rows.back().position + 1;
      rows.push_back({position, ref});
    }
    return rows;
  }

 private:
  Database& database_;
  const Arrangement arrangement_;
  Buckets buckets_;
};

// The sort keys lie one behind the other, as many small ones would take twice the room.
class HeldOrder final : public RowOrder {
 public:
  HeldOrder(Database& database, const Arrangement& arrangement)
      : database_(database), arrangement_(arrangement) {
    Query query(
        database,
        "SELECT sort, entry, ordinal FROM row WHERE sort >= ? AND sort < ? ORDER BY sort, entry, ordinal",
        BytesOf(arrangement.begin()), BytesOf(arrangement.end()));
    while (query.Next()) {
      const Bytes sort = query.Blob(0);
      rows_.push_back({{query.Integer(1), static_cast<int32_t>(query.Integer(2))},
                       static_cast<uint32_t>(sort.size()),
                       sorts_.size()});
      sorts_.append(sort.begin(), sort.end());
    }
  }

  uint64_t Count() const override { return rows_.size(); }

  std::vector<RowRef> Refs(uint64_t first, std::size_t count) const override {
    std::vector<RowRef> refs;
    for (uint64_t i = first; i < rows_.size() && refs.size() < count; ++i) refs.push_back(rows_[i].ref);
    return refs;
  }

  std::vector<Row> Rows(uint64_t first, std::size_t count) const override {
    std::vector<Row> rows;
    for (const RowRef ref : Refs(first, count)) rows.push_back(ReadRow(database_, arrangement_, ref));
    return rows;
  }

  uint64_t Before(const RowPlace& place) const override {
    const auto end = std::partition_point(rows_.begin(), rows_.end(),
                                          [&](const Held& row) { return PlaceOf(row) < place; });
    return static_cast<uint64_t>(end - rows_.begin());
  }

  std::vector<PlacedRow> OfEntry(int64_t entry) const override {
    std::vector<PlacedRow> rows;
    for (std::size_t i = 0; i < rows_.size(); ++i) {
      if (rows_[i].ref.entry == entry) rows.push_back({i, rows_[i].ref});
    }
    return rows;
  }

 private:
  struct Held {
    RowRef ref;
    uint32_t size = 0;
    std::size_t begin = 0;
  };
  RowPlace PlaceOf(const Held& row) const {
    return {sorts_.substr(row.begin, row.size), row.ref.entry, row.ref.ordinal};
  }

  Database& database_;
  const Arrangement arrangement_;
  std::string sorts_;
  std::vector<Held> rows_;
};

}  // namespace

Row ReadRow(Database& database, const Arrangement& arrangement, RowRef ref) {
  Query query(database,
              "SELECT " ORV_ROW_COLUMNS
              "FROM place p CROSS JOIN row r ON r.sort = p.sort AND r.entry = p.entry AND r.ordinal = ? "
              "WHERE p.entry "
              "= ? AND p.arrangement = ?",
              ref.ordinal, ref.entry, int64_t{arrangement.number()});
  if (query.Next()) return RowIn(query);
  Row gone;
  gone.ref = ref;
  gone.isGone = true;
  return gone;
}

int64_t IdOf(Database& database, const EntryKey& key) {
  Query query(database, "SELECT id FROM entry WHERE key = ? AND deleted IS NULL", key);
  return query.Next() ? query.Integer(0) : 0;
}

int64_t IdOfKey(Database& database, const EntryKey& key) {
  Query query(database, "SELECT id FROM entry WHERE key = ?", key);
  return query.Next() ? query.Integer(0) : 0;
}

bool FindRow(Database& database, const Arrangement& arrangement, const RowKey& key, RowRef* ref) {
  const int64_t id = IdOf(database, key.entry);
  if (id == 0) return false;
  const auto work = static_cast<int>(formats::Place::kWork);
  Query query(database,
              "SELECT r.ordinal FROM place p CROSS JOIN row r ON r.sort = p.sort AND r.entry = p.entry WHERE "
              "p.entry = ?1 AND p.arrangement = ?4 AND (?2 = 0 OR r.number_key = ?2) ORDER BY r.preferred "
              "DESC, r.place = ?3 DESC, r.ordinal LIMIT 1",
              id, key.number, work, int64_t{arrangement.number()});
  if (!query.Next()) return false;
  *ref = {id, static_cast<int32_t>(query.Integer(0))};
  return true;
}

bool FindPlace(Database& database, const Arrangement& arrangement, RowRef ref, RowPlace* place) {
  Query query(database,
              "SELECT r.sort FROM place p CROSS JOIN row r ON r.sort = p.sort AND r.entry = p.entry AND "
              "r.ordinal = ? WHERE p.entry = ? AND p.arrangement = ?",
              ref.ordinal, ref.entry, int64_t{arrangement.number()});
  if (!query.Next()) return false;
  const Bytes sort = query.Blob(0);
  *place = {std::string(sort.begin(), sort.end()), ref.entry, ref.ordinal};
  return true;
}

bool ReadEntry(Database& database, const EntryKey& key, Entry* entry) {
  Query query(database,
              "SELECT e.id, e.version, e.created, e.changed, c.text FROM entry e JOIN card c ON c.entry = "
              "e.id WHERE e.key = ? AND e.deleted IS NULL",
              key);
  if (!query.Next()) return false;
  *entry = {key, static_cast<uint32_t>(query.Integer(1)), query.Integer(2), query.Integer(3),
            ContactOfCard(query.Text(4))};
  for (const Member& member : ReadMembers(database, query.Integer(0), 0, -1))
    entry->contact.members.push_back(ContactMemberOf(member));
  return true;
}

std::vector<DeletedEntry> ReadDeleted(Database& database) {
  Query query(database,
              "SELECT key, deleted, flags, name FROM entry WHERE deleted IS NOT NULL ORDER BY deleted DESC");
  std::vector<DeletedEntry> entries;
  while (query.Next())
    entries.push_back({KeyOfBytes(query.Blob(0)), query.Integer(1), (query.Integer(2) & kIsList) != 0,
                       std::string(query.Text(3))});
  return entries;
}

std::unique_ptr<RowOrder> OrderInFile(Database& database, const Arrangement& arrangement) {
  return std::make_unique<FileOrder>(database, arrangement);
}

std::unique_ptr<RowOrder> OrderInMemory(Database& database, const Arrangement& arrangement) {
  return std::make_unique<HeldOrder>(database, arrangement);
}

}  // namespace book
