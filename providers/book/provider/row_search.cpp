#include "providers/book/provider/row_search.h"

#include <algorithm>

#include "providers/book/provider/row_values.h"
#include "providers/book/provider/words.h"
#include "providers/book/text.h"

namespace book {
namespace {

constexpr size_t kWindow = 64;
constexpr size_t kFew =
    256;  // up to here the place of each row is asked for, above all rows are gone through
constexpr ULONG kModeBits = 0xFFFF;

RowRefs Chosen(const RowRefs& refs, const RowRefs& others, bool areIn) {
  const RefSet set(others.begin(), others.end());
  RowRefs chosen;
  std::copy_if(refs.begin(), refs.end(), std::back_inserter(chosen),
               [&](const RowRef& each) { return set.contains(each) == areIn; });
  return chosen;
}

Match MatchOf(ULONG fuzzyLevel) {
  switch (fuzzyLevel & kModeBits) {
    case FL_PREFIX:
      return Match::kPrefix;
    case FL_SUBSTRING:
      return Match::kContains;
    default:
      return Match::kEquals;
  }
}

bool IsText(const SPropValue& value) {
  return PROP_TYPE(value.ulPropTag) == PT_UNICODE && value.Value.lpszW != nullptr && *value.Value.lpszW != 0;
}

// What the store does not tell apart the restriction may: case, accents.
bool IsLoose(const SRestriction& one) {
  constexpr ULONG kBoth = FL_IGNORECASE | FL_IGNORENONSPACE;
  const ULONG level = one.rt == RES_CONTENT ? one.res.resContent.ulFuzzyLevel : 0;
  return (level & FL_LOOSE) != 0 || (level & kBoth) == kBoth;
}

// Of the name in either form.
bool HoldsPlain(const kit::Restriction& restriction, const Row& row, kit::PropList& values) {
  for (const std::string* each : {&row.name, &row.lastFirst}) {
    if (each->empty()) continue;
    values.Set(PR_DISPLAY_NAME, ToWide(*each));
    if (restriction.Holds(values.View())) return true;
  }
  return false;
}

}  // namespace

RowRefs Intersection(const RowRefs& refs, const RowRefs& others) { return Chosen(refs, others, true); }

HRESULT RowSearch::Find(const SRestriction& one, const RowRefs* within, RowRefs* found) {
  switch (one.rt) {
    case RES_AND:
      return FindAll(one.res.resAnd.lpRes, one.res.resAnd.cRes, within, found);
    case RES_OR:
      return FindAny(one.res.resOr.lpRes, one.res.resOr.cRes, within, found);
    case RES_NOT:
      return FindOthers(*one.res.resNot.lpRes, within, found);
    case RES_COMMENT:
      return one.res.resComment.lpRes != nullptr ? Find(*one.res.resComment.lpRes, within, found)
                                                 : All(within, found);
    default:
      return FindLeaf(one, within, found);
  }
}

HRESULT RowSearch::FindAll(const SRestriction* first, ULONG count, const RowRefs* within, RowRefs* found) {
  if (count == 0) return All(within, found);
  RowRefs left;
  for (ULONG i = 0; i < count; ++i) {
    RowRefs satisfied;
    const RowRefs* rest = i == 0 ? within : &left;
    if (const HRESULT hr = Find(first[i], rest, &satisfied); FAILED(hr)) return hr;
    left = std::move(satisfied);
  }
  *found = std::move(left);
  return S_OK;
}

HRESULT RowSearch::FindAny(const SRestriction* first, ULONG count, const RowRefs* within, RowRefs* found) {
  std::vector<RowRefs> parts(count);
  for (ULONG i = 0; i < count; ++i) {
    if (const HRESULT hr = Find(first[i], within, &parts[i]); FAILED(hr)) return hr;
  }
  return Join(parts, found);
}

HRESULT RowSearch::FindOthers(const SRestriction& one, const RowRefs* within, RowRefs* found) {
  RowRefs all, satisfied;
  if (const HRESULT hr = All(within, &all); FAILED(hr)) return hr;
  if (const HRESULT hr = Find(one, &all, &satisfied); FAILED(hr)) return hr;
  *found = Chosen(all, satisfied, false);
  return S_OK;
}

HRESULT RowSearch::FindLeaf(const SRestriction& one, const RowRefs* within, RowRefs* found) {
  bool isFound = false;
  RowRefs refs;
  if (const HRESULT hr = FindText(one, &refs, &isFound); FAILED(hr)) return hr;
  if (isFound) {
    *found = within != nullptr ? Intersection(*within, refs) : std::move(refs);
    return S_OK;
  }
  if (const HRESULT hr = All(within, &refs); FAILED(hr)) return hr;
  return Filter(one, refs, Names::kShown, found);
}

HRESULT RowSearch::FindText(const SRestriction& one, RowRefs* found, bool* isFound) {
  const bool isContent = one.rt == RES_CONTENT;
  const bool isEqual = one.rt == RES_PROPERTY && one.res.resProperty.relop == RELOP_EQ;
  if (!isContent && !isEqual) return S_OK;
  const ULONG tag = isContent ? one.res.resContent.ulPropTag : one.res.resProperty.ulPropTag;
  const SPropValue& value = isContent ? *one.res.resContent.lpProp : *one.res.resProperty.lpProp;
  if (!IsText(value)) return S_OK;
  *isFound = true;
  if (PROP_ID(tag) == PROP_ID(PR_ANR)) return FindKnown(value.Value.lpszW, found);
  const std::optional<Column> column = ColumnOf(tag);
  *isFound = column.has_value();
  if (!column) return S_OK;
  const Match match = isContent ? MatchOf(one.res.resContent.ulFuzzyLevel) : Match::kEquals;
  RowRefs alike;
  HRESULT hr = view_.FindText(*column, match, ToUtf8(value.Value.lpszW), &alike);
  if (FAILED(hr)) return hr;
  if (IsLoose(one) && !alike.empty()) {
    *found = std::move(alike);
    return S_OK;
  }
  hr = Filter(one, alike, Names::kPlain, found);
  if (FAILED(hr) || !found->empty() || tag != PR_DISPLAY_NAME || match != Match::kEquals) return hr;
  hr = FindNamesWith(value.Value.lpszW, &alike);
  return FAILED(hr) ? hr : Filter(one, alike, Names::kShown, found);
}

bool RowSearch::IsIndexed(const SRestriction& one) {
  const bool isContent = one.rt == RES_CONTENT;
  const bool isEqual = one.rt == RES_PROPERTY && one.res.resProperty.relop == RELOP_EQ;
  if (!isContent && !isEqual) return false;
  const SPropValue& value = isContent ? *one.res.resContent.lpProp : *one.res.resProperty.lpProp;
  const ULONG tag = isContent ? one.res.resContent.ulPropTag : one.res.resProperty.ulPropTag;
  if (!IsText(value)) return false;
  if (PROP_ID(tag) == PROP_ID(PR_ANR)) return true;
  const bool isWhere = isEqual || MatchOf(one.res.resContent.ulFuzzyLevel) != Match::kContains;
  const std::optional<Column> column = ColumnOf(tag);
  return isWhere && (column == Column::kName || column == Column::kEmail);
}

// Rows that may be shown so: a name with something behind it.
HRESULT RowSearch::FindNamesWith(std::wstring_view text, RowRefs* found) {
  std::vector<RowRefs> parts;
  for (const std::wstring_view name : PlainNamesOf(text)) {
    const HRESULT hr = view_.FindText(Column::kName, Match::kEquals, ToUtf8(name), &parts.emplace_back());
    if (FAILED(hr)) return hr;
  }
  return Join(parts, found);
}

HRESULT RowSearch::FindKnown(std::wstring_view text, RowRefs* found) {
  const std::string wanted = ToUtf8(text);
  std::vector<RowRefs> parts(3);
  HRESULT hr = view_.FindWords(wanted, most_, &parts[0]);
  if (SUCCEEDED(hr) && IsLikeNumber(text)) hr = view_.FindDigits(wanted, most_, &parts[1]);
  if (SUCCEEDED(hr) && text.find(L'@') != text.npos)
    hr = view_.FindText(Column::kEmail, Match::kPrefix, wanted, &parts[2]);
  if (SUCCEEDED(hr)) hr = Join(parts, found);
  // Behind these there may be others that one of the parts has left out.
  if (SUCCEEDED(hr)) found->resize(std::min(found->size(), most_));
  return hr;
}

HRESULT RowSearch::Filter(const SRestriction& one, const RowRefs& refs, Names names, RowRefs* found) {
  kit::Restriction restriction;
  if (const HRESULT hr = kit::Restriction::Copy(&one, &restriction); FAILED(hr)) return hr;
  const std::vector<ULONG> columns = restriction.Tags();
  kit::PropList values;
  for (size_t first = 0; first < refs.size(); first += kWindow) {
    std::vector<Row> rows;
    const size_t count = std::min(kWindow, refs.size() - first);
    if (const HRESULT hr = view_.Rows(std::span(refs).subspan(first, count), &rows); FAILED(hr)) return hr;
    for (const Row& row : rows) {
      values.Clear();
      if (row.isGone) continue;
      const HRESULT hr = book_.DescribeRowAs(RefOfRow(row), view_, row, columns, values);
      if (FAILED(hr)) return hr;
      if (names == Names::kPlain ? HoldsPlain(restriction, row, values) : restriction.Holds(values.View()))
        found->push_back(row.ref);
    }
  }
  return S_OK;
}

HRESULT RowSearch::All(const RowRefs* within, RowRefs* all) {
  if (within == nullptr) return view_.Refs(0, count_, all);
  *all = *within;
  return S_OK;
}

// In the store's order, each once.
HRESULT RowSearch::Join(const std::vector<RowRefs>& parts, RowRefs* joined) {
  RowRefs refs;
  size_t filled = 0;
  for (const RowRefs& each : parts) {
    filled += !each.empty();
    refs.insert(refs.end(), each.begin(), each.end());
  }
  if (filled > 1 && refs.size() <= kFew) return JoinFew(std::move(refs), joined);
  RowRefs all;
  if (filled > 1) {
    if (const HRESULT hr = All(nullptr, &all); FAILED(hr)) return hr;
  }
  *joined = filled > 1 ? Intersection(all, refs) : std::move(refs);
  return S_OK;
}

HRESULT RowSearch::JoinFew(RowRefs refs, RowRefs* joined) {
  std::vector<std::pair<uint64_t, RowRef>> placed;
  for (const RowRef& each : RefSet(refs.begin(), refs.end())) {
    uint64_t position = 0;
    if (const HRESULT hr = view_.PositionOf(each, &position); FAILED(hr)) return hr;
    placed.emplace_back(position, each);
  }
  std::sort(placed.begin(), placed.end(),
            [](const auto& one, const auto& other) { return one.first < other.first; });
  for (const auto& each : placed) joined->push_back(each.second);
  return S_OK;
}

}  // namespace book
