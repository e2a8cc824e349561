// A language has an order for each version of the system's tables: computers that share a file need not agree.
#include "providers/book/arrangement.h"

#include <algorithm>

#include "orv/orvcodes.h"
#include "providers/book/buckets.h"
#include "providers/book/change_log.h"
#include "providers/book/file.h"

namespace book {
namespace {

constexpr int64_t kMostArrangements = 4;
constexpr int64_t kDaysKept = 30;

int64_t DayOfToday() { return Now() / kDay; }

// 0: the file has none for this user.
uint8_t FindExact(Database& database, NameForm form) {
  const SortKeys keys = SortKeys::OfUser();
  Query query(database, "SELECT number FROM arrangement WHERE locale = ? AND version = ? AND number & 1 = ?",
              keys.locale(), keys.version(), static_cast<int>(form));
  return query.Next() ? static_cast<uint8_t>(query.Integer(0)) : uint8_t{0};
}

uint8_t FreeNumber(Database& database, NameForm form) {
  auto number = static_cast<uint8_t>(2 + static_cast<int>(form));
  const auto isTaken = [&] {
    return Query(database, "SELECT 1 FROM arrangement WHERE number = ?", int64_t{number}).Next();
  };
  while (isTaken()) number = static_cast<uint8_t>(number + 2);
  return number;
}

void PlaceEntries(Database& database, const Arrangement& source, const Arrangement& made) {
  Query rows(
      database,
      "SELECT entry, name, last_first FROM row WHERE sort >= ? AND sort < ? ORDER BY sort, entry, ordinal",
      BytesOf(source.begin()), BytesOf(source.end()));
  int64_t last = 0;
  while (rows.Next()) {
    const int64_t entry = rows.Integer(0);
    if (entry == last) continue;
    Execute(database, "INSERT INTO place(entry, arrangement, sort) VALUES(?, ?, ?)", entry,
            int64_t{made.number()}, BytesOf(made.KeyOf(rows.Text(1), rows.Text(2))));
    last = entry;
  }
}

// Written in their order, which fills the pages.
void CopyRows(Database& database, const Arrangement& source, const Arrangement& made) {
  PlaceEntries(database, source, made);
  Execute(
      database,
      "INSERT INTO row SELECT p.sort, r.entry, r.ordinal, r.key, r.flags, r.version, r.name, r.last_first, "
      "r.company, r.department, r.title, r.email, r.number_key, r.number, r.place, r.preferred FROM place "
      "p CROSS JOIN place s ON s.entry = p.entry AND s.arrangement = ? CROSS JOIN row r ON r.sort = s.sort "
      "AND r.entry = s.entry WHERE p.arrangement = ? ORDER BY p.sort, r.entry, r.ordinal",
      int64_t{source.number()}, int64_t{made.number()});
  Buckets buckets(made);
  buckets.Rebuild(database);
  buckets.Save(database);
}

void Drop(Database& database, const Arrangement& arrangement) {
  const std::string begin = arrangement.begin(), end = arrangement.end();
  Execute(database, "DELETE FROM row WHERE sort >= ? AND sort < ?", BytesOf(begin), BytesOf(end));
  Execute(database, "DELETE FROM bucket WHERE sort >= ? AND sort < ?", BytesOf(begin), BytesOf(end));
  Execute(database, "DELETE FROM place WHERE arrangement = ?", int64_t{arrangement.number()});
  Execute(database, "DELETE FROM arrangement WHERE number = ?", int64_t{arrangement.number()});
}

void Touch(Database& database, uint8_t number) {
  Execute(database, "UPDATE arrangement SET used = ? WHERE number = ?", DayOfToday(), int64_t{number});
}

bool IsTouched(Database& database, uint8_t number) {
  Query query(database, "SELECT used FROM arrangement WHERE number = ?", int64_t{number});
  return query.Next() && query.Integer(0) >= DayOfToday();
}

}  // namespace

std::vector<Arrangement> ReadArrangements(Database& database) {
  std::vector<Arrangement> found;
  Query query(database, "SELECT number, locale FROM arrangement ORDER BY number & 1, number");
  while (query.Next()) found.emplace_back(static_cast<uint8_t>(query.Integer(0)), std::string(query.Text(1)));
  if (found.empty()) Fail(MAPI_E_CORRUPT_STORE);
  return found;
}

Arrangement ArrangementFor(Database& database, NameForm form) {
  const std::string locale = SortKeys::OfUser().locale();
  const uint8_t exact = FindExact(database, form);
  std::vector<Arrangement> all = ReadArrangements(database);
  const auto likeness = [&](const Arrangement& each) {
    return (each.number() == exact ? 4 : 0) + (each.form() == form ? 2 : 0) +
           (each.keys().locale() == locale ? 1 : 0);
  };
  return *std::max_element(all.begin(), all.end(), [&](const Arrangement& one, const Arrangement& other) {
    return likeness(one) < likeness(other);
  });
}

Arrangement AddArrangement(Database& database, NameForm form) {
  const SortKeys keys = SortKeys::OfUser();
  const uint8_t number = FreeNumber(database, form);
  Execute(database, "INSERT INTO arrangement(number, locale, version, used) VALUES(?, ?, ?, ?)",
          int64_t{number}, keys.locale(), keys.version(), DayOfToday());
  return {number, keys.locale()};
}

void Arrange(Database& database, NameForm form) {
  const uint8_t known = FindExact(database, form);
  if (known != 0 && IsTouched(database, known)) return;
  Transaction transaction(database);
  const uint8_t exact = FindExact(database, form);
  if (exact != 0) Touch(database, exact);
  if (exact == 0 && database.Number("SELECT count(*) FROM arrangement") < kMostArrangements) {
    const Arrangement source = ArrangementFor(database, form);
    CopyRows(database, source, AddArrangement(database, form));
  }
  transaction.Commit();
}

void DropUnused(Database& database, std::span<const NameForm> used) {
  for (const NameForm form : used) Touch(database, ArrangementFor(database, form).number());
  bool hasDropped = false;
  for (const Arrangement& each : ReadArrangements(database)) {
    Query query(database, "SELECT 1 FROM arrangement WHERE number = ? AND used < ?", int64_t{each.number()},
                DayOfToday() - kDaysKept);
    if (!query.Next()) continue;
    Drop(database, each);
    hasDropped = true;
  }
  if (hasDropped) WriteUntold(database);
}

}  // namespace book
