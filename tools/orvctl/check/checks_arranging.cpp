// What a table shows after Restrict and SortTable, where it offers them.
#include <algorithm>
#include <set>

#include "tools/orvctl/check/table_rows.h"

namespace orvctl::check {
namespace {

// Of longer tables only so many rows are looked at.
constexpr size_t kMostRows = 5000;

bool IsDeclined(HRESULT result) { return result == MAPI_E_NO_SUPPORT || result == MAPI_E_TOO_COMPLEX; }

// In languages that see more in common: accents, width and case apart.
bool AreAlike(const WideString& one, const WideString& other) {
  constexpr DWORD kLoosely = NORM_IGNORECASE | NORM_IGNORENONSPACE | NORM_IGNOREWIDTH | NORM_IGNOREKANATYPE;
  const auto compare = [&](DWORD flags) {
    return CompareStringEx(LOCALE_NAME_USER_DEFAULT, flags, one.c_str(), -1, other.c_str(), -1, nullptr,
                           nullptr, 0);
  };
  return CompareStringOrdinal(one.c_str(), -1, other.c_str(), -1, TRUE) == CSTR_EQUAL ||
         compare(kLoosely) == CSTR_EQUAL;
}

// A condition on names, in memory that becomes something else once it was handed over.
class NameCondition {
 public:
  NameCondition(bool isPrefix, const WideString& name) : isPrefix_(isPrefix), name_(name), text_(name) {
    value_ = TextValue(PR_DISPLAY_NAME_W, text_);
    condition_.rt = isPrefix ? RES_CONTENT : RES_PROPERTY;
    if (isPrefix) {
      condition_.res.resContent = {FL_PREFIX | FL_IGNORECASE, PR_DISPLAY_NAME_W, &value_};
    } else {
      condition_.res.resProperty = {RELOP_EQ, PR_DISPLAY_NAME_W, &value_};
    }
  }

  HRESULT Apply(Probe& probe, IMAPITable* table) {
    const HRESULT result =
        probe.Call("IMAPITable::Restrict", [&] { return table->Restrict(&condition_, 0); });
    std::fill(text_.begin(), text_.end(), kNobody[0]);
    value_ = {};
    condition_ = {};
    return result;
  }
  // Names that surely satisfy it, and those that may in some language.
  bool Holds(const WideString& name) const { return Compared(name) == name_; }
  bool MayHold(const WideString& name) const { return AreAlike(Compared(name), name_); }
  std::string Describe() const {
    return (isPrefix_ ? "names that begin with '" : "the name '") + ToUtf8(name_) + "'";
  }

 private:
  WideString Compared(const WideString& name) const {
    return isPrefix_ ? name.substr(0, name_.size()) : name;
  }

  const bool isPrefix_;
  const WideString name_;
  WideString text_;
  SPropValue value_{};
  SRestriction condition_{};
};

// A table and what it showed at first.
struct Arranged {
  explicit Arranged(const Stage& stage) : longest(stage, 2), probe(stage.probe), table(longest.Make()) {
    Tour(stage).RequireColumn(PR_DISPLAY_NAME_W);
    before = ReadOn(probe, table.Get(), kMostRows);
    if (before.empty()) FailOf("table.count", "no row can be read of " + std::to_string(longest.rows));
  }
  bool IsWhole() const { return before.size() < kMostRows; }
  std::vector<RowKey> Read() const {
    Seek(probe, table.Get(), BOOKMARK_BEGINNING, 0);
    return ReadOn(probe, table.Get(), kMostRows);
  }
  void RequireAsBefore(const std::string& when) const {
    const std::vector<RowKey> now = Read();
    Require(now.size() == before.size(), when + " it shows " + Count(now.size(), "row") +
                                             ", before there were " + std::to_string(before.size()));
    RequireRows(now, before, 0, before.size(), when);
  }

  const LongestTable longest;
  Probe& probe;
  const ComPtr<IMAPITable> table;
  std::vector<RowKey> before;
};

void RequireOnly(const Arranged& arranged, const NameCondition& condition) {
  const std::vector<RowKey> shown = arranged.Read();
  const std::string when = "restricted to " + condition.Describe();
  std::set<Bytes> ids;
  for (const RowKey& each : shown) {
    Require(condition.MayHold(each.name), when + " it shows '" + ToUtf8(each.name) + "'");
    ids.insert(each.id);
  }
  if (shown.size() == kMostRows) return;
  for (const RowKey& each : arranged.before)
    Require(!condition.Holds(each.name) || ids.contains(each.id),
            when + " it does not show '" + ToUtf8(each.name) + "'");
  const ULONG count = RowCount(arranged.probe, arranged.table.Get());
  Require(count == shown.size(), when + " GetRowCount says " + std::to_string(count) + ", and " +
                                     Count(shown.size(), "row") + " can be read");
}

// False where it is not offered.
bool TryRestriction(const Arranged& arranged, NameCondition condition) {
  const HRESULT result = condition.Apply(arranged.probe, arranged.table.Get());
  if (IsDeclined(result)) return false;
  Require(SUCCEEDED(result), "restricted to " + condition.Describe() + " it answered " + Name(result));
  RequireOnly(arranged, condition);
  return true;
}

Verdict CheckRestrict(Probe& probe) {
  const Stage stage(probe);
  const Arranged arranged(stage);
  const WideString& name = arranged.before[arranged.before.size() / 2].name;
  size_t offered = 0;
  offered += TryRestriction(arranged, {false, name});
  offered += TryRestriction(arranged, {false, kNobody});
  if (name.size() > 1) offered += TryRestriction(arranged, {true, name.substr(0, 2)});
  if (offered == 0) NotOffered("there are no restrictions on names");
  probe.Succeed("IMAPITable::Restrict with null", [&] { return arranged.table->Restrict(nullptr, 0); });
  arranged.RequireAsBefore("with the restriction taken back");
  return Ok(Count(offered, "restriction") + " kept, and taken back");
}

// Which of two names comes first depends on the language; wrong is what is wrong in all of them.
bool IsSurelyBehind(const WideString& one, const WideString& other) {
  const auto isBehind = [&](DWORD flags) {
    return CompareStringEx(LOCALE_NAME_USER_DEFAULT, flags, one.c_str(), -1, other.c_str(), -1, nullptr,
                           nullptr, 0) == CSTR_GREATER_THAN;
  };
  return one > other && isBehind(0) && isBehind(NORM_IGNORECASE) && isBehind(SORT_STRINGSORT) &&
         CompareStringOrdinal(one.c_str(), -1, other.c_str(), -1, TRUE) == CSTR_GREATER_THAN;
}

HRESULT Sort(Probe& probe, IMAPITable* table, ULONG keys, ULONG order) {
  SSortOrderSet set{};
  set.cSorts = keys;
  set.aSort[0] = {PR_DISPLAY_NAME_W, order};
  return probe.Call("IMAPITable::SortTable", [&] { return table->SortTable(&set, 0); });
}

std::multiset<Bytes> IdsOf(const std::vector<RowKey>& rows) {
  std::multiset<Bytes> ids;
  for (const RowKey& each : rows) ids.insert(each.id);
  return ids;
}

void RequireSorted(const Arranged& arranged, ULONG order) {
  const std::string when =
      std::string("sorted by name") + (order == TABLE_SORT_DESCEND ? ", last ones first, " : ", ");
  const HRESULT result = Sort(arranged.probe, arranged.table.Get(), 1, order);
  if (IsDeclined(result)) NotOffered("SortTable answered " + Name(result));
  Require(SUCCEEDED(result), when + "it answered " + Name(result));
  const std::vector<RowKey> rows = arranged.Read();
  for (size_t i = 1; i < rows.size(); ++i) {
    const size_t low = order == TABLE_SORT_DESCEND ? i : i - 1,
                 high = order == TABLE_SORT_DESCEND ? i - 1 : i;
    Require(!IsSurelyBehind(rows[low].name, rows[high].name),
            when + "'" + ToUtf8(rows[i - 1].name) + "' stands before '" + ToUtf8(rows[i].name) + "'");
  }
  Require(!arranged.IsWhole() || IdsOf(rows) == IdsOf(arranged.before),
          when + "it does not show the same rows");
}

Verdict CheckSort(Probe& probe) {
  const Stage stage(probe);
  const Arranged arranged(stage);
  RequireSorted(arranged, TABLE_SORT_DESCEND);
  RequireSorted(arranged, TABLE_SORT_ASCEND);
  const HRESULT back = Sort(probe, arranged.table.Get(), 0, TABLE_SORT_ASCEND);
  Require(SUCCEEDED(back), "an order without keys answered " + Name(back));
  arranged.RequireAsBefore("with the order taken back");
  return Ok(Count(arranged.before.size(), "row") + " both ways, and taken back");
}

constexpr NamedCheck kArrangingChecks[] = {{"table.restrict", CheckRestrict}, {"table.sort", CheckSort}};

}  // namespace

std::span<const NamedCheck> ArrangingChecks() { return kArrangingChecks; }

}  // namespace orvctl::check
