// Searches find entries by an index first; their rows are sorted afterwards, so that few hits cost little.
#include "providers/book/search.h"

#include <algorithm>
#include <numeric>
#include <unordered_map>

#include "providers/book/tokens.h"

namespace book {
namespace {

// Where a search is not to end.
int64_t Limit(std::size_t limit) { return static_cast<int64_t>(std::min<std::size_t>(limit, INT64_MAX)); }

std::vector<RowRef> RowsOf(Query& query) {
  std::vector<RowRef> rows;
  while (query.Next()) rows.push_back({query.Integer(0), static_cast<int32_t>(query.Integer(1))});
  return rows;
}

// The first text behind all that begin with these digits.
std::string Behind(const std::string& digits) { return digits + ':'; }

using ColumnText = std::string_view (*)(const Query& query);

bool Matches(std::string_view text, Match match, std::string_view wanted) {
  switch (match) {
    case Match::kExists:
      return !text.empty();
    case Match::kEquals:
      return text == wanted;
    case Match::kPrefix:
      return text.substr(0, wanted.size()) == wanted;
    default:
      return text.find(wanted) != std::string_view::npos;
  }
}

// Texts of one column for each row, in the order of the file. A number is its row's own.
const char* TextsOf(Column column) {
  switch (column) {
    case Column::kNumber:
      return "SELECT entry, ordinal, text FROM number WHERE kind = 0";
    case Column::kName:
      return "SELECT id, 0, name FROM entry WHERE deleted IS NULL";
    case Column::kCompany:
      return "SELECT id, 0, company FROM entry WHERE deleted IS NULL";
    case Column::kDepartment:
      return "SELECT id, 0, department FROM entry WHERE deleted IS NULL";
    case Column::kTitle:
      return "SELECT id, 0, title FROM entry WHERE deleted IS NULL";
    default:
      return "SELECT id, 0, email FROM entry WHERE deleted IS NULL";
  }
}

struct Hit {
  std::string sort;
  RowRef ref;
  friend bool operator<(const Hit& a, const Hit& b) {
    if (a.sort != b.sort) return a.sort < b.sort;
    return a.ref.entry != b.ref.entry ? a.ref.entry < b.ref.entry : a.ref.ordinal < b.ref.ordinal;
  }
};

// The rows of an entry, or the one of a number.
void AddHits(Database& database, int64_t entry, int64_t ordinal, bool isOneRow, std::vector<Hit>* hits) {
  Query query(database,
              "SELECT r.sort, r.ordinal FROM entry e CROSS JOIN row r ON r.sort = e.sort AND r.entry = e.id "
              "WHERE e.id = ?1 AND (NOT ?2 OR r.ordinal = ?3)",
              entry, isOneRow ? 1 : 0, ordinal);
  while (query.Next()) {
    const Bytes sort = query.Blob(0);
    hits->push_back({std::string(sort.begin(), sort.end()), {entry, static_cast<int32_t>(query.Integer(1))}});
  }
}

std::vector<RowRef> InOrder(std::vector<Hit> hits) {
  std::sort(hits.begin(), hits.end());
  std::vector<RowRef> rows;
  rows.reserve(hits.size());
  for (const Hit& hit : hits) rows.push_back(hit.ref);
  return rows;
}

// Ranks of texts: equal ones have one, and keys are made once for each.
class Ranks {
 public:
  // The number by which `text` is known until Settle.
  uint32_t Add(std::string_view text) {
    return numbers_.emplace(text, static_cast<uint32_t>(numbers_.size())).first->second;
  }
  // Rank by number.
  std::vector<uint32_t> Settle(const SortKeys& keys) const;

 private:
  std::unordered_map<std::string, uint32_t> numbers_;
};

std::vector<uint32_t> Ranks::Settle(const SortKeys& keys) const {
  std::vector<std::pair<std::string, uint32_t>> sorted;
  sorted.reserve(numbers_.size());
  for (const auto& [text, number] : numbers_) sorted.emplace_back(keys.Key(text), number);
  std::sort(sorted.begin(), sorted.end());
  std::vector<uint32_t> ranks(sorted.size());
  uint32_t rank = 0;
  for (std::size_t i = 0; i < sorted.size(); ++i) {
    if (i == 0 || sorted[i].first != sorted[i - 1].first) ++rank;
    ranks[sorted[i].second] = rank;
  }
  return ranks;
}

// Ranks of one column by entry, or by entry and number. What is not there comes first.
class ColumnRanks {
 public:
  ColumnRanks(Database& database, const SortKeys& keys, Column column);
  uint32_t Of(RowRef ref) const {
    const auto found = numbers_.find(KeyOf(ref.entry, isNumber_ ? ref.ordinal : 0));
    return found == numbers_.end() ? 0 : ranks_[found->second];
  }

 private:
  static uint64_t KeyOf(int64_t entry, int64_t ordinal) {
    return static_cast<uint64_t>(entry) << 16 ^ static_cast<uint64_t>(ordinal & 0xFFFF);
  }

  const bool isNumber_;
  std::unordered_map<uint64_t, uint32_t> numbers_;
  std::vector<uint32_t> ranks_;
};

ColumnRanks::ColumnRanks(Database& database, const SortKeys& keys, Column column)
    : isNumber_(column == Column::kNumber) {
  Ranks ranks;
  Query query(database, TextsOf(column));
  while (query.Next()) {
    const std::string_view text = query.Text(2);
    if (!text.empty()) numbers_[KeyOf(query.Integer(0), query.Integer(1))] = ranks.Add(text);
  }
  ranks_ = ranks.Settle(keys);
}

}  // namespace

std::vector<RowRef> RowsNamed(Database& database, std::string_view sortKey, std::size_t limit) {
  Query query(database, "SELECT entry, ordinal FROM row WHERE sort = ? ORDER BY entry, ordinal LIMIT ?",
              BytesOf(sortKey), Limit(limit));
  return RowsOf(query);
}

std::vector<RowRef> RowsWithWords(Database& database, std::string_view words, std::size_t limit) {
  const std::string match = MatchOfWords(database, words);
  if (match.empty()) return {};
  Query query(
      database,
      "SELECT r.entry, r.ordinal FROM word w CROSS JOIN entry e ON e.id = w.rowid CROSS JOIN row r ON "
      "r.sort = e.sort AND r.entry = e.id WHERE w.word MATCH ? ORDER BY r.sort, r.entry, r.ordinal LIMIT ?",
      match, Limit(limit));
  return RowsOf(query);
}

std::vector<RowRef> RowsWithDigits(Database& database, std::string_view number, std::size_t limit) {
  const std::string digits = DigitsOf(number);
  if (digits.empty()) return {};
  const std::string reversed = Reversed(digits);
  Query query(
      database,
      "SELECT r.entry, r.ordinal FROM (SELECT entry, ordinal FROM number WHERE digits <> '' AND digits >= ?1 "
      "AND "
      "digits < ?2 UNION SELECT entry, ordinal FROM number WHERE reversed <> '' AND reversed >= ?3 AND "
      "reversed < ?4) f CROSS JOIN number n ON n.entry = f.entry AND n.ordinal = f.ordinal CROSS JOIN entry "
      "e "
      "ON e.id = n.entry CROSS JOIN row r ON r.sort = e.sort AND r.entry = e.id WHERE n.kind <> 0 OR "
      "r.ordinal = n.ordinal GROUP BY r.sort, r.entry, r.ordinal ORDER BY r.sort, r.entry, r.ordinal LIMIT "
      "?5",
      digits, Behind(digits), reversed, Behind(reversed), Limit(limit));
  return RowsOf(query);
}

bool FindNumber(Database& database, const EntryKey& entry, std::string_view number, RowRef* ref) {
  Query query(
      database,
      "SELECT e.id, n.ordinal FROM entry e CROSS JOIN number n ON n.entry = e.id WHERE e.key = ? AND "
      "e.deleted IS NULL AND n.kind = 0 AND n.digits = ? AND n.digits <> '' ORDER BY n.ordinal LIMIT 1",
      entry, DigitsOf(number));
  if (!query.Next()) return false;
  *ref = {query.Integer(0), static_cast<int32_t>(query.Integer(1))};
  return true;
}

std::vector<RowRef> RowsWithText(Database& database, Column column, Match match, std::string_view text) {
  const std::string wanted = Folded(text);
  const bool isNumber = column == Column::kNumber;
  std::vector<Hit> hits;
  Query query(database, TextsOf(column));
  while (query.Next()) {
    const std::string_view each = query.Text(2);
    if (match == Match::kExists ? !each.empty() : Matches(Folded(each), match, wanted))
      AddHits(database, query.Integer(0), query.Integer(1), isNumber, &hits);
  }
  return InOrder(std::move(hits));
}

void SortRows(Database& database, const SortKeys& keys, std::span<const SortColumn> columns,
              std::vector<RowRef>* rows) {
  // The last column first: each sort keeps the order of those that it finds equal.
  for (auto column = columns.rbegin(); column != columns.rend(); ++column) {
    const ColumnRanks ranks(database, keys, column->column);
    const bool isDescending = column->isDescending;
    std::stable_sort(rows->begin(), rows->end(), [&](RowRef a, RowRef b) {
      return isDescending ? ranks.Of(b) < ranks.Of(a) : ranks.Of(a) < ranks.Of(b);
    });
  }
}

}  // namespace book
