// Searches find entries by an index first; their rows are sorted afterwards, so that few hits cost little.
#include "providers/book/search.h"

#include <algorithm>
#include <numeric>
#include <unordered_map>

#include "providers/book/derived.h"
#include "providers/book/row_scan.h"
#include "providers/book/tokens.h"

namespace book {
namespace {

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

// Texts of one column for each row of an arrangement, and what else it says there.
#define ORV_TEXTS_OF(columns) \
  "SELECT entry, ordinal, " columns " FROM row WHERE sort >= ? AND sort < ? ORDER BY sort, entry, ordinal"
const char* TextsOf(Column column) {
  switch (column) {
    case Column::kName:
      return ORV_TEXTS_OF("name, last_first");
    case Column::kNumber:
      return ORV_TEXTS_OF("number, ''");
    case Column::kCompany:
      return ORV_TEXTS_OF("company, ''");
    case Column::kDepartment:
      return ORV_TEXTS_OF("department, ''");
    case Column::kTitle:
      return ORV_TEXTS_OF("title, ''");
    default:
      return ORV_TEXTS_OF("email, ''");
  }
}
#undef ORV_TEXTS_OF

bool IsLike(std::string_view text, Match match, std::string_view wanted) {
  return match == Match::kExists ? !text.empty() : !text.empty() && Matches(Folded(text), match, wanted);
}

// Of rows, their texts, and these in another form.
std::vector<RowRef> MatchingRows(Query& query, Match match, std::string_view wanted) {
  std::vector<RowRef> rows;
  while (query.Next()) {
    if (IsLike(query.Text(2), match, wanted) || IsLike(query.Text(3), match, wanted))
      rows.push_back(RefIn(query));
  }
  return rows;
}

// No byte of a text or of a sort key is greater.
constexpr char kLast = '\xFF';

std::vector<RowRef> RowsWithMail(Database& database, const Arrangement& arrangement, Match match,
                                 const std::string& wanted) {
  Query query(
      database,
      "SELECT r.entry, r.ordinal FROM mail m CROSS JOIN place p ON p.entry = m.entry AND p.arrangement = "
      "? CROSS JOIN row r ON r.sort = p.sort AND r.entry = p.entry WHERE m.email >= ? AND m.email <= ? "
      "ORDER BY r.sort, r.entry, r.ordinal",
      int64_t{arrangement.number()}, wanted, match == Match::kEquals ? wanted : wanted + kLast);
  return RowsOf(query);
}

constexpr char kNamesWithWords[] =
    "SELECT r.entry, r.ordinal, r.name, r.last_first FROM word w CROSS JOIN place p ON p.entry = w.rowid AND "
    "p.arrangement = ? CROSS JOIN row r ON r.sort = p.sort AND r.entry = p.entry WHERE w.word MATCH ? ORDER "
    "BY "
    "r.sort, r.entry, r.ordinal";

// Names that begin alike lie side by side; what their sort keys do not tell is compared.
std::vector<RowRef> RowsListed(Database& database, const Arrangement& arrangement, Match match,
                               std::string_view text) {
  const std::string first = arrangement.Prefix(text), last = first + kLast;
  const bool isLastFirst = arrangement.form() == NameForm::kLastFirst;
  Query query(
      database,
      "SELECT entry, ordinal, CASE WHEN ? AND last_first <> '' THEN last_first ELSE name END, '' FROM row "
      "WHERE sort >= ? AND sort <= ? ORDER BY sort, entry, ordinal",
      isLastFirst ? 1 : 0, BytesOf(first), BytesOf(last));
  return MatchingRows(query, match, Folded(text));
}

std::vector<RowRef> RowsWithName(Database& database, const Arrangement& arrangement, Match match,
                                 std::string_view text) {
  std::vector<RowRef> listed = RowsListed(database, arrangement, match, text);
  const std::string words = listed.empty() ? MatchOfWords(database, text) : std::string();
  if (words.empty()) return listed;
  Query query(database, kNamesWithWords, int64_t{arrangement.number()}, words);
  return MatchingRows(query, match, Folded(text));
}

constexpr int64_t kManyStarts = 1000;
constexpr int64_t kGlancedAt = 600;  // what very many have is seen there, before hits are counted

// Columns of a row that is walked over.
constexpr int kFirstText = 2, kLastText = 5;

bool HasManyWith(Database& database, const std::string& match, int64_t many) {
  Query query(database, "SELECT count(*) FROM (SELECT 1 FROM word WHERE word MATCH ? LIMIT ?)", match, many);
  return query.Next() && query.Integer(0) == many;
}

// The first three characters, which the index of words has by themselves: it counts these without having read all.
std::string StartOf(const std::string& word) {
  constexpr int kIndexed = 3;
  std::size_t end = 0;
  for (int i = 0; i < kIndexed && end < word.size(); ++i) {
    do ++end;
    while (end < word.size() && (static_cast<unsigned char>(word[end]) & 0xC0) == 0x80);
  }
  return word.substr(0, end);
}

bool MayBeMany(Database& database, const std::vector<std::string>& wanted) {
  return std::all_of(wanted.begin(), wanted.end(), [&database](const std::string& each) {
    return HasManyWith(database, MatchOf({StartOf(each)}), kManyStarts);
  });
}

bool HasAll(const std::vector<std::string>& wanted, const std::vector<std::string>& words) {
  return std::all_of(wanted.begin(), wanted.end(), [&words](const std::string& each) {
    return std::any_of(words.begin(), words.end(),
                       [&each](const std::string& word) { return word.starts_with(each); });
  });
}

// False for most rows without their words being taken apart.
bool MayHaveAll(const std::vector<std::string>& wanted, const Query& row, std::string* text) {
  text->clear();
  for (int column = kFirstText; column <= kLastText; ++column) {
    for (const char c : row.Text(column)) {
      if (static_cast<signed char>(c) < 0) return true;
      *text += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    *text += '\n';
  }
  return std::all_of(wanted.begin(), wanted.end(),
                     [text](const std::string& each) { return text->find(each) != text->npos; });
}

bool HasWordsOf(const std::vector<std::string>& wanted, const Query& row, Tokenizer& tokenizer) {
  const Sought sought =
      SoughtOf(row.Text(kFirstText), row.Text(kFirstText + 1), row.Text(kLastText - 1), row.Text(kLastText));
  return HasAll(wanted, tokenizer.Words(sought.name + '\n' + sought.company + '\n' + sought.department));
}

std::vector<RowRef> AllRowsWith(Database& database, const Arrangement& arrangement,
                                const std::string& match) {
  EntrySet entries;
  Query hits(database, "SELECT rowid FROM word WHERE word MATCH ?", match);
  while (hits.Next()) entries.Insert(hits.Integer(0));
  return RowsWhere(database, arrangement, [&](const RowRef& row) { return entries.Contains(row.entry); });
}

// False: there are not as many as asked for among the first rows.
bool WalkForWords(Database& database, const Arrangement& arrangement, const std::vector<std::string>& wanted,
                  int64_t most, std::size_t limit, std::vector<RowRef>* rows) {
  Tokenizer tokenizer(database);
  Query query(
      database,
      "SELECT entry, ordinal, name, last_first, company, department FROM row WHERE sort >= ? AND sort < ? "
      "ORDER BY sort, entry, ordinal LIMIT ?",
      BytesOf(arrangement.begin()), BytesOf(arrangement.end()), most);
  std::vector<RowRef> found;
  std::string text;
  while (found.size() < limit && query.Next()) {
    if (MayHaveAll(wanted, query, &text) && HasWordsOf(wanted, query, tokenizer))
      found.push_back(RefIn(query));
  }
  if (found.size() < limit) return false;
  *rows = std::move(found);
  return true;
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
std::vector<std::pair<uint32_t, RowRef>> RankedRows(Database& database, const Arrangement& arrangement,
                                                    Column column) {
  Ranks ranks;
  std::vector<std::pair<uint32_t, RowRef>> rows;
  Query query(database, TextsOf(column), BytesOf(arrangement.begin()), BytesOf(arrangement.end()));
  while (query.Next()) {
    const bool isOther = arrangement.form() == NameForm::kLastFirst && !query.Text(3).empty();
    rows.push_back({ranks.Add(query.Text(isOther ? 3 : 2)), RefIn(query)});
  }
  const std::vector<uint32_t> settled = ranks.Settle(arrangement.keys());
  for (auto& row : rows) row.first = settled[row.first];
  return rows;
}

}  // namespace

std::vector<RowRef> RowsNamed(Database& database, const Arrangement& arrangement, std::string_view name,
                              std::size_t limit) {
  Query query(database, "SELECT entry, ordinal FROM row WHERE sort = ? ORDER BY entry, ordinal LIMIT ?",
              BytesOf(arrangement.Key(name)), Limit(limit));
  std::vector<RowRef> rows = RowsOf(query);
  const bool isListed = arrangement.form() == NameForm::kAsWritten && name.find(',') == name.npos;
  const std::string words = isListed ? std::string() : MatchOfWords(database, name);
  if (words.empty()) return rows;
  Query others(database, kNamesWithWords, int64_t{arrangement.number()}, words);
  for (const RowRef& each : MatchingRows(others, Match::kEquals, Folded(name))) {
    const bool isNew = std::find(rows.begin(), rows.end(), each) == rows.end();
    if (isNew && rows.size() < limit) rows.push_back(each);
  }
  return rows;
}

std::vector<RowRef> RowsWithWords(Database& database, const Arrangement& arrangement, std::string_view words,
                                  std::size_t limit) {
  if (words.empty()) return {};
  const std::vector<std::string> wanted = Tokenizer(database).Words(PlainLetters(words));
  const std::string match = MatchOf(wanted);
  std::vector<RowRef> rows;
  if (match.empty()) return rows;
  const auto walk = [&](int64_t most) {
    return WalkForWords(database, arrangement, wanted, most, limit, &rows);
  };
  const bool isFew = limit <= kFewRows;
  if (MayBeMany(database, wanted)) {
    if (isFew && walk(kGlancedAt)) return rows;
    const bool isMany = HasManyWith(database, match, kManyHits);
    if (isMany && !isFew) return AllRowsWith(database, arrangement, match);
    if (isMany && walk(kMostWalked)) return rows;
  }
  // Rows lie far apart: only those are looked up that come first.
  Query query(
      database,
      "SELECT r.entry, r.ordinal FROM (SELECT p.sort, p.entry FROM word w CROSS JOIN place p ON p.entry = "
      "w.rowid AND p.arrangement = ?1 WHERE w.word MATCH ?2 ORDER BY p.sort, p.entry LIMIT ?3) f CROSS JOIN "
      "row r ON r.sort = f.sort AND r.entry = f.entry ORDER BY r.sort, r.entry, r.ordinal LIMIT ?3",
      int64_t{arrangement.number()}, match, Limit(limit));
  return RowsOf(query);
}

std::vector<RowRef> RowsWithText(Database& database, const Arrangement& arrangement, Column column,
                                 Match match, std::string_view text) {
  const std::string wanted = Folded(text);
  const bool isBeginning = (match == Match::kPrefix || match == Match::kEquals) && !wanted.empty();
  if (isBeginning && column == Column::kEmail) return RowsWithMail(database, arrangement, match, wanted);
  if (isBeginning && column == Column::kName) return RowsWithName(database, arrangement, match, text);
  Query query(database, TextsOf(column), BytesOf(arrangement.begin()), BytesOf(arrangement.end()));
  return MatchingRows(query, match, wanted);
}

// Every column has its ranks by position in the default order, in which equal rows stay.
std::vector<RowRef> SortedRows(Database& database, const Arrangement& arrangement,
                               std::span<const SortColumn> columns) {
  std::vector<std::vector<std::pair<uint32_t, RowRef>>> ranked;
  for (const SortColumn& column : columns) ranked.push_back(RankedRows(database, arrangement, column.column));
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
