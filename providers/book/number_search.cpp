// Numbers are found by their digits from either end, through an index for each.
#include <algorithm>

#include "providers/book/row_scan.h"
#include "providers/book/search.h"
#include "providers/book/text.h"

namespace book {
namespace {

// The first text behind all that begin with these digits.
std::string Behind(const std::string& digits) { return digits.empty() ? digits : digits + ':'; }

// The same number as others write it: 0049 is +49, and a number that is dialled within its country with one zero ends
// what stands behind the country's code. Empty where there is no such spelling, or nearly every number would end so.
struct OtherSpelling {
  explicit OtherSpelling(std::string_view digits) {
    constexpr std::size_t kFewestDigits = 3;
    const std::size_t zeros = std::min(digits.find_first_not_of('0'), digits.size());
    const std::string_view rest = digits.substr(zeros);
    if (zeros == 0 || zeros > 2 || rest.size() < kFewestDigits) return;
    if (zeros == 2) begin = rest;
    end = rest;
  }

  std::string begin, end;
};

// What numbers are to begin or end with, the ends turned round as the file has them.
struct WantedDigits {
  explicit WantedDigits(const std::string& digits) : begin(digits), end(Reversed(digits)) {
    const OtherSpelling other(digits);
    otherBegin = other.begin;
    otherEnd = Reversed(other.end);
  }

  std::string begin, end, otherBegin, otherEnd;
};

// A statement that calls the bounds of the wanted digits ?1 to ?8, and what follows ?9 and so on.
template <class... More>
Query Ask(Database& database, const char* sql, const WantedDigits& wanted, const More&... more) {
  return Query(database, sql, wanted.begin, Behind(wanted.begin), wanted.end, Behind(wanted.end),
               wanted.otherBegin, Behind(wanted.otherBegin), wanted.otherEnd, Behind(wanted.otherEnd),
               more...);
}

// Without an index: of a number that is at hand.
#define ORV_NUMBER_FITS                                                                                   \
  "n.digits <> '' AND ((+n.digits >= ?1 AND +n.digits < ?2) OR (+n.reversed >= ?3 AND +n.reversed < ?4) " \
  "OR (+n.digits >= ?5 AND +n.digits < ?6) OR (+n.reversed >= ?7 AND +n.reversed < ?8)) "
// A fax number has a row of its own, any other is that of all rows of its contact; a list has but one row.
#define ORV_ROW_FITS                                                                                         \
  "EXISTS(SELECT 1 FROM number n WHERE n.entry = r.entry AND (n.kind <> 0 OR r.ordinal IN (n.ordinal, -1)) " \
  "AND " ORV_NUMBER_FITS ") "

bool HasMany(Database& database, const WantedDigits& wanted) {
  Query query =
      Ask(database,
          "SELECT count(*) FROM (SELECT * FROM (SELECT 1 FROM number WHERE digits <> '' AND digits >= ?1 AND "
          "digits < ?2 LIMIT ?9) UNION ALL SELECT * FROM (SELECT 1 FROM number WHERE reversed <> '' AND "
          "reversed >= ?3 AND reversed < ?4 LIMIT ?9) UNION ALL SELECT * FROM (SELECT 1 FROM number WHERE "
          "digits <> '' AND digits >= ?5 AND digits < ?6 LIMIT ?9) UNION ALL SELECT * FROM (SELECT 1 FROM "
          "number WHERE reversed <> '' AND reversed >= ?7 AND reversed < ?8 LIMIT ?9))",
          wanted, kManyHits);
  return query.Next() && query.Integer(0) >= kManyHits;
}

// Fewer than asked for: among the first rows there are no more.
std::vector<RowRef> FirstRows(Database& database, const Arrangement& arrangement, const WantedDigits& wanted,
                              std::size_t limit) {
  Query query =
      Ask(database,
          "SELECT r.entry, r.ordinal FROM (SELECT sort, entry, ordinal FROM row WHERE sort >= ?9 AND "
          "sort < ?10 ORDER BY sort, entry, ordinal LIMIT ?11) r WHERE " ORV_ROW_FITS "LIMIT ?12",
          wanted, BytesOf(arrangement.begin()), BytesOf(arrangement.end()), kMostWalked, Limit(limit));
  return RowsOf(query);
}

std::vector<RowRef> AllRows(Database& database, const Arrangement& arrangement, const WantedDigits& wanted) {
  EntrySet found, byPhone;
  std::vector<RowRef> byFax;  // by entry and ordinal, as the table has them
  Query numbers = Ask(database,
                      "SELECT n.entry, n.ordinal, n.kind FROM number n WHERE " ORV_NUMBER_FITS
                      "ORDER BY n.entry, n.ordinal",
                      wanted);
  while (numbers.Next()) {
    const RowRef row = RefIn(numbers);
    found.Insert(row.entry);
    if (numbers.Integer(2) == 0) byFax.push_back(row);
    if (numbers.Integer(2) != 0) byPhone.Insert(row.entry);
  }
  const auto isBefore = [](const RowRef& a, const RowRef& b) {
    return a.entry != b.entry ? a.entry < b.entry : a.ordinal < b.ordinal;
  };
  return RowsWhere(database, arrangement, [&](const RowRef& row) {
    if (!found.Contains(row.entry)) return false;
    return row.ordinal == kNoNumber || byPhone.Contains(row.entry) ||
           std::binary_search(byFax.begin(), byFax.end(), row, isBefore);
  });
}

}  // namespace

std::vector<RowRef> RowsWithDigits(Database& database, const Arrangement& arrangement,
                                   std::string_view number, std::size_t limit) {
  const std::string digits = DigitsOf(number);
  if (digits.empty()) return {};
  const WantedDigits wanted(digits);
  if (HasMany(database, wanted)) {
    if (limit > kFewRows) return AllRows(database, arrangement, wanted);
    std::vector<RowRef> first = FirstRows(database, arrangement, wanted, limit);
    if (first.size() == limit) return first;
  }
  // Rows lie far apart: only those are looked up that come first.
  Query query = Ask(
      database,
      "SELECT r.entry, r.ordinal FROM (SELECT p.sort, p.entry FROM (SELECT entry FROM number WHERE digits <> "
      "'' AND digits >= ?1 AND digits < ?2 UNION SELECT entry FROM number WHERE reversed <> '' AND reversed "
      ">= ?3 AND reversed < ?4 UNION SELECT entry FROM number WHERE digits <> '' AND digits >= ?5 AND digits "
      "< ?6 UNION SELECT entry FROM number WHERE reversed <> '' AND reversed >= ?7 AND reversed < ?8) f "
      "CROSS "
      "JOIN place p ON p.entry = f.entry AND p.arrangement = ?9 ORDER BY p.sort, p.entry LIMIT ?10) e CROSS "
      "JOIN row r ON r.sort = e.sort AND r.entry = e.entry WHERE " ORV_ROW_FITS
      "ORDER BY r.sort, r.entry, r.ordinal LIMIT ?10",
      wanted, int64_t{arrangement.number()}, Limit(limit));
  return RowsOf(query);
}

bool FindNumber(Database& database, const EntryKey& entry, std::string_view number, RowRef* ref) {
  Query query(
      database,
      "SELECT e.id, n.ordinal FROM entry e CROSS JOIN number n ON n.entry = e.id WHERE e.key = ? AND "
      "e.deleted IS NULL AND n.kind = 0 AND n.digits = ? AND n.digits <> '' ORDER BY n.ordinal LIMIT 1",
      entry, DigitsOf(number));
  if (!query.Next()) return false;
  *ref = RefIn(query);
  return true;
}

}  // namespace book
