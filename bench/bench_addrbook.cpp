// Routing by the address book against the look-up by hand and a direct call; recipients of five providers prepared
// against one linear pass by hand.
#include <array>
#include <memory>
#include <string>
#include <vector>

#include "addrbook/addr_book.h"
#include "bench/harness.h"
#include "bench/values.h"
#include "hosting/provider_list.h"
#include "orv/orvbase.hpp"

namespace orv::bench {
namespace {

constexpr std::size_t kProviders = 5;
constexpr ULONG kIdSize = 28;

// Answers at once: what is measured is the way to it.
class Provider final : public sdk::RefusingAddrBook<sdk::RefusingProp<IAddrBook>> {
 public:
  HRESULT STDMETHODCALLTYPE OpenEntry(ULONG, LPENTRYID, LPCIID, ULONG, ULONG* type, LPUNKNOWN*) override {
    *type = MAPI_MAILUSER;
    return S_OK;
  }
};

class NoSettings final : public SettingsStore {
 public:
  HRESULT Load(PropList&) override { return S_OK; }
  HRESULT Save(const PropList&) override { return S_OK; }
};

MAPIUID UidOf(std::size_t provider) {
  MAPIUID uid;
  std::memset(&uid, static_cast<int>('A' + provider), sizeof uid);
  return uid;
}

// An address book over the providers, the last of which is at the head of the list.
class Book {
 public:
  Book() : list_(CABServiceList::Create()) {
    for (std::size_t i = 0; i < kProviders; ++i) {
      providers[i] = new Provider;
      auto record = std::make_unique<ProviderRecord>(Module(), UidOf(i));
      record->AdoptProvider(providers[i]);
      Require(record->RegisterUid(UidOf(i)) == S_OK, "registering a UID");
      list_->Add(std::move(record));
    }
    const HRESULT hr = CAddrBook::Create(std::make_unique<NoSettings>(), list_.Get(), book_.Put());
    Require(hr == S_OK, "address book");
  }
  ~Book() {
    book_->Shutdown();
    list_->UnloadAll();
  }

  IAddrBook& operator*() const { return *book_; }
  std::array<IAddrBook*, kProviders> providers{};

 private:
  ComPtr<CABServiceList> list_;
  ComPtr<CAddrBook> book_;
};

// Recipients of all providers in turn, one in seventeen of none; each run begins with this order.
class Recipients {
 public:
  explicit Recipients(ULONG count) {
    void* block = nullptr;
    Require(AllocateRoot(CbNewADRLIST(std::size_t{count}), &block) == S_OK, "address list");
    list_.Reset(static_cast<ADRLIST*>(block));
    for (ULONG i = 0; i < count; ++i) list_->aEntries[list_->cEntries++] = Make(i);
    order_.assign(list_->aEntries, list_->aEntries + count);
  }

  ADRLIST& Reordered() {
    std::copy(order_.begin(), order_.end(), list_->aEntries);
    return *list_;
  }

 private:
  static ADRENTRY Make(ULONG number) {
    MapiBuffer<SPropValue> values;
    Require(values.AllocateArray(3) == S_OK, "recipient");
    values[0] = Number(PR_OBJECT_TYPE, MAPI_MAILUSER);
    values[1] = Number(PR_RECIPIENT_TYPE, MAPI_TO);
    values[2].ulPropTag = PR_ENTRYID;
    values[2].Value.bin.cb = kIdSize;
    Require(values.More(kIdSize, &values[2].Value.bin.lpb) == S_OK, "identifier");
    const MAPIUID uid = UidOf(number % 17 == 0 ? kProviders : number % kProviders);
    std::memcpy(values[2].Value.bin.lpb + ORV_ENTRYID_UID_OFFSET, &uid, sizeof uid);
    return {0, 3, values.Detach()};
  }

  AdrListPtr list_;
  std::vector<ADRENTRY> order_;
};

std::size_t ProviderByHand(const BYTE* id, const std::array<MAPIUID, kProviders>& uids) {
  for (std::size_t k = 0; k < kProviders; ++k)
    if (std::memcmp(id + ORV_ENTRYID_UID_OFFSET, &uids[k], sizeof(MAPIUID)) == 0) return k;
  return kProviders;
}

// Whether a block can be read, asked once a page.
class PagesByHand {
 public:
  void Require(const void* block, std::size_t size) {
    const auto first = reinterpret_cast<std::uintptr_t>(block) / kPage;
    const auto last = (reinterpret_cast<std::uintptr_t>(block) + size - 1) / kPage;
    if (first >= first_ && last <= last_) return;
    bench::Require(!IsBadReadPtr(block, size), "a readable recipient");
    first_ = first;
    last_ = last;
  }

 private:
  static constexpr std::uintptr_t kPage = 4096;
  std::uintptr_t first_ = 1, last_ = 0;
};

std::size_t GroupByHand(const ADRENTRY& entry, const std::array<MAPIUID, kProviders>& uids,
                        PagesByHand& arrays, PagesByHand& identifiers) {
  arrays.Require(entry.rgPropVals, entry.cValues * sizeof(SPropValue));
  for (ULONG i = 0; i < entry.cValues; ++i) {
    const SPropValue& value = entry.rgPropVals[i];
    if (value.ulPropTag != PR_ENTRYID || value.Value.bin.cb < ORV_MIN_ENTRYID) continue;
    identifiers.Require(value.Value.bin.lpb, value.Value.bin.cb);
    return ProviderByHand(value.Value.bin.lpb, uids);
  }
  return kProviders;
}

// The same tests, buffers, reads, calls and moves, by somebody who knows how many providers there are.
void PrepareByHand(const Book& book, const std::array<MAPIUID, kProviders>& uids, ADRLIST& list) {
  std::vector<unsigned char> groups(list.cEntries);
  std::array<ULONG, kProviders + 1> sizes{};
  PagesByHand arrays, identifiers;
  for (ULONG i = 0; i < list.cEntries; ++i) {
    groups[i] = static_cast<unsigned char>(GroupByHand(list.aEntries[i], uids, arrays, identifiers));
    ++sizes[groups[i]];
  }
  std::array<ADRLIST*, kProviders + 1> lists{};
  for (std::size_t k = 0; k <= kProviders; ++k)
    Require(AllocateRoot(CbNewADRLIST(std::size_t{sizes[k]}), reinterpret_cast<void**>(&lists[k])) == S_OK,
            "list");
  for (ULONG i = 0; i < list.cEntries; ++i) {
    ADRLIST& group = *lists[groups[i]];
    group.aEntries[group.cEntries++] = list.aEntries[i];
  }
  ADRENTRY* next = list.aEntries;
  for (std::size_t k = 0; k <= kProviders; ++k) {
    if (k < kProviders) book.providers[k]->PrepareRecips(0, nullptr, lists[k]);
    next = std::copy_n(lists[k]->aEntries, lists[k]->cEntries, next);
    OrvFreeBuffer(lists[k]);
  }
}

std::array<MAPIUID, kProviders> UidsInListOrder() {
  std::array<MAPIUID, kProviders> uids;
  for (std::size_t i = 0; i < kProviders; ++i) uids[i] = UidOf(kProviders - 1 - i);
  return uids;
}

void CompareRouting() {
  constexpr int kCalls = 1000;
  constexpr double kRoutingNanoseconds = 100;
  const Book book;
  const auto uids = UidsInListOrder();
  // The provider loaded first is asked about last.
  std::array<BYTE, kIdSize> bytes{};
  std::memcpy(bytes.data() + ORV_ENTRYID_UID_OFFSET, &uids.back(), sizeof uids.back());
  auto* id = reinterpret_cast<ENTRYID*>(bytes.data());
  ULONG type = 0;
  IUnknown* object = nullptr;
  const auto open = [&](IAddrBook& through) {
    Require(through.OpenEntry(kIdSize, id, nullptr, 0, &type, &object) == S_OK, "OpenEntry");
  };
  const auto ours = [&] {
    for (int i = 0; i < kCalls; ++i) open(*book);
  };
  const auto floor = [&] {
    for (int i = 0; i < kCalls; ++i)
      open(*book.providers[kProviders - 1 - ProviderByHand(bytes.data(), uids)]);
  };
  ReportAdded("`OpenEntry` routed to the last of 5 providers", Compare(ours, floor), kCalls,
              kRoutingNanoseconds);
}

void ComparePreparing() {
  const Book book;
  std::array<MAPIUID, kProviders> uids;
  for (std::size_t i = 0; i < kProviders; ++i) uids[i] = UidOf(i);
  std::array<Comparison, 2> results;
  const std::array<ULONG, 2> counts = {1000, 100000};
  for (std::size_t i = 0; i < counts.size(); ++i) {
    Recipients recipients(counts[i]);
    const auto ours = [&] {
      Require((*book).PrepareRecips(0, nullptr, &recipients.Reordered()) == S_OK, "PrepareRecips");
    };
    results[i] = Compare(ours, [&] { PrepareByHand(book, uids, recipients.Reordered()); });
    Report("`PrepareRecips` of " + std::to_string(counts[i]) + " recipients, 5 providers", results[i], 1.10);
  }
  // Caches end between the two for both of them: what must not grow is the ratio.
  ReportGrowth("the same: ratio at 100000 to ratio at 1000", results[1], results[0], 1.2);
}

const Benchmark kRouting("routing", CompareRouting);
const Benchmark kRecipients("recipients", ComparePreparing);

}  // namespace
}  // namespace orv::bench
