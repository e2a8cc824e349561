// The expansion of a distribution list against copying, holding and freeing the same rows by hand.
#include <algorithm>
#include <array>
#include <cstring>
#include <deque>
#include <string>
#include <vector>

#include "addrbook/recipient_expansion.h"
#include "bench/harness.h"
#include "bench/values.h"
#include "orv/orvbase.hpp"
#include "platform/com_ptr.h"
#include "props/base_table.h"

namespace orv::bench {
namespace {

// A provider with one distribution list, whose members lie in a snapshot table that every opening shares.
class DistList final : public sdk::RefusingContainer<sdk::RefusingProp<IABContainer, IMAPIContainer>> {
 public:
  explicit DistList(ComPtr<IMAPITable> members) : members_(std::move(members)) {}

  HRESULT STDMETHODCALLTYPE GetContentsTable(ULONG, LPMAPITABLE* table) override {
    *table = ComPtr<IMAPITable>(members_).Detach();
    return S_OK;
  }

 private:
  ComPtr<IMAPITable> members_;
};

class ListProvider final : public sdk::RefusingAddrBook<sdk::RefusingProp<IAddrBook>> {
 public:
  explicit ListProvider(ComPtr<IMAPITable> members)
      : list_(ComPtr<DistList>::Adopt(new DistList(std::move(members)))) {}

  HRESULT STDMETHODCALLTYPE OpenEntry(ULONG, LPENTRYID, LPCIID, ULONG, ULONG* type,
                                      LPUNKNOWN* object) override {
    *type = MAPI_DISTLIST;
    *object = ComPtr<DistList>(list_).Detach();
    return S_OK;
  }

 private:
  ComPtr<DistList> list_;
};

constexpr ULONG kIdSize = 28;
constexpr ULONG kColumns = 5;

// Members as a provider keeps them, each with the columns that an expansion asks for.
class Members {
 public:
  explicit Members(ULONG count) {
    for (ULONG i = 0; i < count; ++i) {
      Member& member = members_.emplace_back();
      member.name = L"Recipient number " + std::to_wstring(i);
      std::memcpy(member.id.data() + kIdSize - sizeof i, &i, sizeof i);
      member.values = {Number(PR_ENTRYID, 0), Number(PR_NULL, 0), Text(PR_DISPLAY_NAME_W, member.name),
                       Text(PR_ADDRTYPE_W, type_), Number(PR_OBJECT_TYPE, MAPI_MAILUSER)};
      member.values[0].Value.bin = {kIdSize, member.id.data()};
      std::transform(member.values.begin(), member.values.end(), member.known.begin(), WithLength);
    }
  }

  ULONG Count() const { return static_cast<ULONG>(members_.size()); }
  const HandValue* operator[](ULONG index) const { return members_[index].known.data(); }

  ComPtr<IMAPITable> MakeTable() const {
    MapiBuffer<SRowSet> set;
    Require(set.Allocate(CbNewSRowSet(std::size_t{Count()})) == S_OK, "row set");
    set->cRows = Count();
    // A new table shows its rows in the opposite order.
    for (ULONG i = 0; i < set->cRows; ++i)
      set->aRow[set->cRows - 1 - i] = {0, kColumns, const_cast<SPropValue*>(members_[i].values.data())};
    ComPtr<IMAPITable> table;
    Require(CreateTable(set.Get(), table.Put()) == S_OK, "table");
    return table;
  }

 private:
  struct Member {
    WString name;
    std::array<BYTE, kIdSize> id{};
    std::array<SPropValue, kColumns> values;
    std::array<HandValue, kColumns> known;
  };
  const WString type_ = L"FAX";
  std::deque<Member> members_;
};

AdrListPtr MakeGiven() {
  MapiBuffer<SPropValue> values;
  MapiBuffer<ADRLIST> list;
  Require(values.AllocateArray(3) == S_OK && list.Allocate(CbNewADRLIST(1)) == S_OK, "address list");
  values[0] = Number(PR_ENTRYID, 0);
  Require(values.More(kIdSize, &values[0].Value.bin.lpb) == S_OK, "identifier");
  values[0].Value.bin.cb = kIdSize;
  values[1] = Number(PR_OBJECT_TYPE, MAPI_DISTLIST);
  values[2] = Number(PR_RECIPIENT_TYPE, MAPI_TO);
  list->cEntries = 1;
  list->aEntries[0] = {0, 3, values.Detach()};
  return AdrListPtr(list.Detach());
}

void Expand(IAddrBook& book, ULONG count) {
  ADRLIST* list = MakeGiven().Detach();
  const HRESULT hr = ExpandRecipientLists(&book, &list);
  const AdrListPtr result(list);
  Require(hr == S_OK && result->cEntries == count, "ExpandRecipients");
}

// Whoever wants all members holds all rows, each handed out in a row set of its own, and frees them at the end.
void CopyAllByHand(const Members& members) {
  std::vector<SPropValue*> held;
  for (ULONG i = 0; i < members.Count(); ++i) {
    auto* set = static_cast<SRowSet*>(AllocateByHand(CbNewSRowSet(1), nullptr));
    set->aRow[0] = {0, kColumns, CopyByHand(members[i], kColumns)};
    held.push_back(set->aRow[0].lpProps);
    FreeByHand(set);
  }
  for (SPropValue* member : held) FreeByHand(member);
}

void CompareExpansion() {
  Comparison smallest;
  for (const ULONG count : {1'000u, 10'000u, 100'000u}) {
    const Members members(count);
    const auto book = ComPtr<ListProvider>::Adopt(new ListProvider(members.MakeTable()));
    const Comparison result = Compare([&] { Expand(*book, count); }, [&] { CopyAllByHand(members); });
    Report("`ExpandRecipients` of " + std::to_string(count) + " members", result, 1.4);
    if (count == 1'000) smallest = result;
    // Memory gets slower the more of it is held, for us as for the floor: our part of the cost must not grow.
    if (count > 1'000)
      ReportGrowth("the same: ratio at " + std::to_string(count) + " to ratio at 1000", result, smallest,
                   1.5);
  }
}

const Benchmark kExpansion("expansion", CompareExpansion);

}  // namespace
}  // namespace orv::bench
