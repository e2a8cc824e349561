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

// Texts of one column for each row, in the default order.
const char* TextsOf(Column column) {
  switch (column) {
    case Column::kName:
      return "SELECT entry, ordinal, name FROM row ORDER BY sort, entry, ordinal";
    case Column::kNumber:
      return "SELECT entry, ordinal, number FROM row ORDER BY sort, entry, ordinal";
    case Column::kCompany:
      return "SELECT entry, ordinal, company FROM row ORDER BY sort, entry, ordinal";
    case Column::kDepartment:
      return "SELECT entry, ordinal, department FROM row ORDER BY sort, entry, ordinal";
    case Column::kTitle:
      return "SELECT entry, ordinal, title FROM row ORDER BY sort, entry, ordinal";
    default:
      return "SELECT entry, ordinal, email FROM row ORDER BY sort, entry, ordinal";
  }
}

// Of rows and their texts.
std::vector<RowRef> MatchingRows(Query& query, Match match, std::string_view wanted) {
  std::vector<RowRef> rows;
  while (query.Next()) {
    const std::string_view each = query.Text(2);
    if (match == Match::kExists ? !each.empty() : Matches(Folded(each), match, wanted))
      rows.push_back({query.Integer(0), static_cast<int32_t>(query.Integer(1))});
  }
  return rows;
}

// No byte of a text or of a sort key is greater.
constexpr char kLast = '\xFF';

std::vector<RowRef> RowsWithMail(Database& database, Match match, const std::string& wanted) {
  Query query(
      database,
      "SELECT r.entry, r.ordinal FROM mail m CROSS JOIN entry e ON e.id = m.entry CROSS JOIN row r ON r.sort "
      "= "
      "e.sort AND r.entry = e.id WHERE m.email >= ? AND m.email <= ? ORDER BY r.sort, r.entry, r.ordinal",
      wanted, match == Match::kEquals ? wanted : wanted + kLast);
  return RowsOf(query);
}

// Names that begin alike lie side by side; what their sort keys do not tell is compared.
std::vector<RowRef> RowsWithName(Database& database, const SortKeys& keys, Match match,
                                 std::string_view text) {
  const std::string first = keys.Prefix(text), last = first + kLast;
  Query query(
      database,
      "SELECT entry, ordinal, name FROM row WHERE sort >= ? AND sort <= ? ORDER BY sort, entry, ordinal",
      BytesOf(first), BytesOf(last));
  return MatchingRows(query, match, Folded(text));
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

// Each row with what it is sorted by, in the default order.
std::vector<std::pair<uint32_t, RowRef>> RankedRows(Database& database, const SortKeys& keys, Column column) {
  Ranks ranks;
  std::vector<std::pair<uint32_t, RowRef>> rows;
  Query query(database, TextsOf(column));
  while (query.Next())
    rows.push_back({ranks.Add(query.Text(2)), {query.Integer(0), static_cast<int32_t>(query.Integer(1))}});
  const std::vector<uint32_t> settled = ranks.Settle(keys);
  for (auto& row : rows) row.first = settled[row.first];
  return rows;
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
      "SELECT r.entry, r.ordinal FROM word w CROSS JOIN entry e ON e.id = w.rowid CROSS JOIN row r ON r.sort "
      "= e.sort AND r.entry = e.id WHERE w.word MATCH ? ORDER BY r.sort, r.entry, r.ordinal LIMIT ?",
      match, Limit(limit));
  return RowsOf(query);
}

std::vector<RowRef> RowsWithDigits(Database& database, std::string_view number, std::size_t limit) {
  const std::string digits = DigitsOf(number);
  if (digits.empty()) return {};
  const OtherSpelling other(digits);
  const std::string reversed = Reversed(digits), otherEnd = Reversed(other.end);
  Query query(
      database,
      "SELECT r.entry, r.ordinal FROM (SELECT entry, ordinal FROM number WHERE digits <> '' AND "
      "digits >= ?1 AND digits < ?2 UNION SELECT entry, ordinal FROM number WHERE reversed <> '' AND "
      "reversed >= ?3 AND reversed < ?4 UNION SELECT entry, ordinal FROM number WHERE digits <> '' "
      "AND digits >= ?5 AND digits < ?6 UNION SELECT entry, ordinal FROM number WHERE reversed <> '' "
      "AND reversed >= ?7 AND reversed < ?8) f CROSS JOIN number n ON n.entry = f.entry AND n.ordinal "
      "= f.ordinal CROSS JOIN entry e ON e.id = n.entry CROSS JOIN row r ON r.sort = e.sort AND "
      "r.entry = e.id WHERE n.kind <> 0 OR r.ordinal = n.ordinal GROUP BY r.sort, r.entry, r.ordinal "
      "ORDER BY r.sort, r.entry, r.ordinal LIMIT ?9",
      digits, Behind(digits), reversed, Behind(reversed), other.begin, Behind(other.begin), otherEnd,
      Behind(otherEnd), Limit(limit));
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

std::vector<RowRef> RowsWithText(Database& database, const SortKeys& keys, Column column, Match match,
                                 std::string_view text) {
  const std::string wanted = Folded(text);
  const bool isBeginning = (match == Match::kPrefix || match == Match::kEquals) && !wanted.empty();
  if (isBeginning && column == Column::kEmail) return RowsWithMail(database, match, wanted);
  if (isBeginning && column == Column::kName) return RowsWithName(database, keys, match, text);
  Query query(database, TextsOf(column));
  return MatchingRows(query, match, wanted);
}

// Every column has its ranks by position in the default order, in which equal rows stay.
std::vector<RowRef> SortedRows(Database& database, const SortKeys& keys,
                               std::span<const SortColumn> columns) {
  std::vector<std::vector<std::pair<uint32_t, RowRef>>> ranked;
  for (const SortColumn& column : columns) ranked.push_back(RankedRows(database, keys, column.column));
  std::vector<uint32_t> positions(ranked.front().size());
  std::iota(positions.begin(), positions.end(), 0u);
  std::stable_sort(positions.begin(), positions.end(), [&](uint32_t a, uint32_t b) {
    for (std::size_t i = 0; i < columns.size(); ++i) {
      const uint32_t left = ranked[i][a].first, right = ranked[i][b].first;
      if (left != right) return columns[i].isDescending ? right < left : left < right;
    }
    return false;
  });
  std::vector<RowRef> rows;
  rows.reserve(positions.size());
  for (const uint32_t position : positions) rows.push_back(ranked.front()[position].second);
  return rows;
}

}  // namespace book
