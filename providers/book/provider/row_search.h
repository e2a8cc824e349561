// Which rows of a book satisfy a restriction: found by the store's own means where it has them, else row by row.
#pragma once

#include <algorithm>
#include <unordered_set>

#include "orv/kit/restriction.hpp"
#include "providers/book/provider/local_book.h"

namespace book {

using RowRefs = std::vector<RowRef>;

// Those of `refs` that are among the others, in the order of `refs`.
RowRefs Intersection(const RowRefs& refs, const RowRefs& others);

struct HashOfRef {
  size_t operator()(const RowRef& ref) const noexcept {
    constexpr uint64_t kSpread = 0x9E3779B97F4A7C15;
    const uint64_t parts = static_cast<uint64_t>(ref.entry) * kSpread + static_cast<uint32_t>(ref.ordinal);
    return static_cast<size_t>(parts ^ (parts >> 29));
  }
};
using RefSet = std::unordered_set<RowRef, HashOfRef>;
template <class Iterator>
Iterator FirstAmong(Iterator from, Iterator end, const RowRefs& wanted) {
  const RefSet set(wanted.begin(), wanted.end());
  return std::find_if(from, end, [&set](const RowRef& each) { return set.contains(each); });
}

// PR_ANR finds rows one word of whose name, company or department begins so, for every word asked for; or by the digits
// of a number from either end; or by the beginning of an e-mail address. All else is as restrictions of tables say, but
// that names are searched without what is shown behind them; an equal name is also one with it.
class RowSearch {
 public:
  // `count`: of the book's rows, or as many as are asked for.
  RowSearch(LocalBook& book, View& view, size_t count)
      : book_(book), view_(view), count_(count), most_(count) {}

  // Whether what is asked for alone costs no more than what it finds.
  static bool IsIndexed(const SRestriction& restriction);

  // In the store's order.
  HRESULT Find(const SRestriction& restriction, RowRefs* found) { return Find(restriction, nullptr, found); }
  // As many of what IsIndexed, or more.
  HRESULT FindFirst(const SRestriction& restriction, size_t most, RowRefs* found) {
    most_ = most;
    return Find(restriction, found);
  }
  // What PR_ANR finds.
  HRESULT FindKnown(std::wstring_view text, RowRefs* found);

 private:
  HRESULT Find(const SRestriction& restriction, const RowRefs* within, RowRefs* found);
  HRESULT FindAll(const SRestriction* first, ULONG count, const RowRefs* within, RowRefs* found);
  HRESULT FindAny(const SRestriction* first, ULONG count, const RowRefs* within, RowRefs* found);
  HRESULT FindOthers(const SRestriction& restriction, const RowRefs* within, RowRefs* found);
  HRESULT FindLeaf(const SRestriction& restriction, const RowRefs* within, RowRefs* found);
  HRESULT FindText(const SRestriction& restriction, RowRefs* found, bool* isFound);
  HRESULT FindNamesWith(std::wstring_view text, RowRefs* found);
  enum class Names { kShown, kPlain };
  HRESULT Filter(const SRestriction& restriction, const RowRefs& refs, Names names, RowRefs* found);
  HRESULT All(const RowRefs* within, RowRefs* all);
  HRESULT Join(const std::vector<RowRefs>& parts, RowRefs* joined);
  HRESULT JoinFew(RowRefs refs, RowRefs* joined);

  LocalBook& book_;
  View& view_;
  const size_t count_;
  size_t most_;  // of the rows that words and digits find
};

}  // namespace book
