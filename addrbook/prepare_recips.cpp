// Grouping by counting: each recipient is looked up once and moved twice, whatever their number; see
// prepare_recips.h.
#include "addrbook/prepare_recips.h"

#include <algorithm>
#include <vector>

#include "orv/orvtags.h"
#include "platform/boundary.h"
#include "props/prop_value.h"
#include "session/buffer.h"
#include "session/service_list.h"

namespace orv {
namespace {

// The recipients of one provider, or of none: copies of the caller's entries, for the provider to work on.
struct Group {
  IAddrBook* provider = nullptr;
  ULONG size = 0;
  ULONG writtenBack = 0;
  MapiBuffer<ADRLIST> entries;

  // What the group came back with. A provider may drop recipients; more than it was given there cannot be.
  ULONG Returned() const { return std::min(entries->cEntries, size); }
};

// Which group each recipient of a list belongs to. The last group is that of nobody's recipients.
class Grouping {
 public:
  Grouping(const CABServiceList* providers, const ADRLIST& list);

  // The groups' own lists, in the order of the caller's.
  HRESULT Split(const ADRLIST& list);
  std::vector<Group>& Groups() { return groups_; }

  void WriteBackGrouped(ADRLIST& list) const;
  void WriteBackInPlace(ADRLIST& list) noexcept;

 private:
  ULONG GroupOf(const ADRENTRY& entry, const CABServiceList& providers) const;

  std::vector<Group> groups_;
  std::vector<ULONG> groupOf_;  // by the recipient's position in the caller's list
};

Grouping::Grouping(const CABServiceList* providers, const ADRLIST& list) {
  if (providers != nullptr) {
    for (const auto& record : providers->All()) groups_.emplace_back().provider = record->Provider();
  }
  groups_.emplace_back();
  groupOf_.reserve(list.cEntries);
  for (ULONG i = 0; i < list.cEntries; ++i) {
    groupOf_.push_back(providers == nullptr ? 0 : GroupOf(list.aEntries[i], *providers));
    ++groups_[groupOf_.back()].size;
  }
}

ULONG Grouping::GroupOf(const ADRENTRY& entry, const CABServiceList& providers) const {
  std::size_t index = groups_.size() - 1;
  const SPropValue* id =
      entry.rgPropVals == nullptr ? nullptr : FindValue(entry.rgPropVals, entry.cValues, PR_ENTRYID);
  if (id != nullptr) {
    IAddrBook* provider = nullptr;
    const auto* bytes = reinterpret_cast<const ENTRYID*>(id->Value.bin.lpb);
    // One that nobody claims leaves the index where it stands.
    (void)providers.FindByEntryId(id->Value.bin.cb, bytes, &provider, &index);
  }
  return static_cast<ULONG>(index);
}

HRESULT Grouping::Split(const ADRLIST& list) {
  for (Group& group : groups_) {
    if (const HRESULT hr = group.entries.Allocate(CbNewADRLIST(group.size)); FAILED(hr)) return hr;
  }
  for (ULONG i = 0; i < list.cEntries; ++i) {
    ADRLIST& entries = *groups_[groupOf_[i]].entries;
    entries.aEntries[entries.cEntries++] = list.aEntries[i];
  }
  return S_OK;
}

void Grouping::WriteBackGrouped(ADRLIST& list) const {
  ADRENTRY* next = list.aEntries;
  for (const Group& group : groups_) next = std::copy_n(group.entries->aEntries, group.Returned(), next);
  list.cEntries = static_cast<ULONG>(next - list.aEntries);
}

// Providers replace property arrays: the caller's entries must not be left with those that are gone.
void Grouping::WriteBackInPlace(ADRLIST& list) noexcept {
  for (ULONG i = 0; i < list.cEntries; ++i) {
    Group& group = groups_[groupOf_[i]];
    const ULONG at = group.writtenBack++;
    list.aEntries[i] = at < group.Returned() ? group.entries->aEntries[at] : ADRENTRY{};
  }
}

// Nobody answers for these recipients: what was asked for comes from what they bring, in the order asked for.
HRESULT CompleteUnclaimed(const SPropTagArray* tags, ADRLIST& entries) {
  if (tags == nullptr) return S_OK;
  for (ULONG i = 0; i < entries.cEntries; ++i) {
    ADRENTRY& entry = entries.aEntries[i];
    const SRow own = {0, entry.cValues, entry.rgPropVals};
    if (const HRESULT hr = MergeIntoAddressEntry(*tags, own, entry); FAILED(hr)) return hr;
  }
  return S_OK;
}

// Every provider is asked, with an empty list too: it may prepare something for the whole message.
HRESULT Complete(Group& group, bool unclaimed, SPropTagArray* tags) {
  if (unclaimed) return CompleteUnclaimed(tags, *group.entries);
  if (group.provider == nullptr) return S_OK;
  return GuardedForeign([&] { return group.provider->PrepareRecips(0, tags, group.entries.Get()); });
}

}  // namespace

HRESULT PrepareRecipients(const CABServiceList* providers, SPropTagArray* tags, ADRLIST& list) {
  Grouping grouping(providers, list);
  if (const HRESULT hr = grouping.Split(list); FAILED(hr)) return hr;
  HRESULT result = S_OK;
  for (Group& group : grouping.Groups()) {
    const HRESULT hr = Complete(group, &group == &grouping.Groups().back(), tags);
    if (FAILED(hr)) {
      grouping.WriteBackInPlace(list);
      return hr;
    }
    // A provider's remark, such as that values are missing, is the caller's to hear.
    if (hr != S_OK) result = hr;
  }
  grouping.WriteBackGrouped(list);
  return result;
}

}  // namespace orv
