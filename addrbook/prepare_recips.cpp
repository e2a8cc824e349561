// Grouping by counting: two passes over the list, whatever the number of recipients; see prepare_recips.h.
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

// The recipients of one provider, or of none: where they stood, and the copies that the provider works on.
struct Group {
  IAddrBook* provider = nullptr;
  std::vector<ULONG> positions;
  MapiBuffer<ADRLIST> entries;

  // What the group came back with. A provider may drop recipients; more than it was given there cannot be.
  ULONG Returned() const { return std::min(entries->cEntries, static_cast<ULONG>(positions.size())); }
};

std::size_t GroupOf(const ADRENTRY& entry, const CABServiceList* providers, std::size_t unclaimed) {
  if (providers == nullptr || entry.rgPropVals == nullptr) return unclaimed;
  const SPropValue* id = FindValue(entry.rgPropVals, entry.cValues, PR_ENTRYID);
  if (id == nullptr) return unclaimed;
  IAddrBook* provider = nullptr;
  std::size_t index = unclaimed;
  const auto* bytes = reinterpret_cast<const ENTRYID*>(id->Value.bin.lpb);
  return FAILED(providers->FindByEntryId(id->Value.bin.cb, bytes, &provider, &index)) ? unclaimed : index;
}

std::vector<Group> MakeGroups(const CABServiceList* providers, const ADRLIST& list) {
  std::vector<Group> groups;
  if (providers != nullptr) {
    for (const auto& record : providers->All()) groups.emplace_back().provider = record->Provider();
  }
  const std::size_t unclaimed = groups.size();
  groups.emplace_back();
  for (ULONG i = 0; i < list.cEntries; ++i) {
    groups[GroupOf(list.aEntries[i], providers, unclaimed)].positions.push_back(i);
  }
  return groups;
}

HRESULT CopyEntries(Group& group, const ADRLIST& list) {
  if (const HRESULT hr = group.entries.Allocate(CbNewADRLIST(group.positions.size())); FAILED(hr)) return hr;
  ADRENTRY* next = group.entries->aEntries;
  for (const ULONG position : group.positions) *next++ = list.aEntries[position];
  group.entries->cEntries = static_cast<ULONG>(group.positions.size());
  return S_OK;
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
HRESULT CompleteGroup(Group& group, bool unclaimed, SPropTagArray* tags) {
  if (unclaimed) return CompleteUnclaimed(tags, *group.entries);
  if (group.provider == nullptr) return S_OK;
  return GuardedForeign([&] { return group.provider->PrepareRecips(0, tags, group.entries.Get()); });
}

void WriteBackGrouped(const std::vector<Group>& groups, ADRLIST& list) {
  ADRENTRY* next = list.aEntries;
  for (const Group& group : groups) next = std::copy_n(group.entries->aEntries, group.Returned(), next);
  list.cEntries = static_cast<ULONG>(next - list.aEntries);
}

// Providers replace property arrays: the caller's entries must not be left with those that are gone.
void WriteBackInPlace(const std::vector<Group>& groups, ADRLIST& list) {
  for (const Group& group : groups) {
    if (!group.entries) return;
    const ULONG returned = group.Returned();
    for (ULONG i = 0; i < group.positions.size(); ++i) {
      list.aEntries[group.positions[i]] = i < returned ? group.entries->aEntries[i] : ADRENTRY{};
    }
  }
}

}  // namespace

HRESULT PrepareRecipients(const CABServiceList* providers, SPropTagArray* tags, ADRLIST& list) {
  std::vector<Group> groups = MakeGroups(providers, list);
  HRESULT result = S_OK;
  for (Group& group : groups) {
    HRESULT hr = CopyEntries(group, list);
    if (SUCCEEDED(hr)) hr = CompleteGroup(group, &group == &groups.back(), tags);
    if (FAILED(hr)) {
      WriteBackInPlace(groups, list);
      return hr;
    }
    // A provider's remark, such as that values are missing, is the caller's to hear.
    if (hr != S_OK) result = hr;
  }
  WriteBackGrouped(groups, list);
  return result;
}

}  // namespace orv
