// Grouping by counting: each recipient is looked up once and moved twice, whatever their number; see
// prepare_recips.h. A list may be long, so the UIDs are gathered once and lie side by side.
#include "addrbook/prepare_recips.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "hosting/provider_list.h"
#include "orv/orvtags.h"
#include "platform/boundary.h"
#include "platform/buffer.h"
#include "props/entry_id.h"
#include "props/prop_value.h"

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

// A UID that some provider has registered. The provider nearer to the head comes first and wins.
struct KnownUid {
  MAPIUID uid;
  ULONG group;
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
  void AddProviders(const CABServiceList& providers);
  ULONG GroupOf(const ADRENTRY& entry) const;

  std::vector<KnownUid> uids_;
  std::vector<Group> groups_;
  std::vector<ULONG> groupOf_;  // by the recipient's position in the caller's list
};

Grouping::Grouping(const CABServiceList* providers, const ADRLIST& list) {
  if (providers != nullptr) AddProviders(*providers);
  groups_.emplace_back();
  groupOf_.reserve(list.cEntries);
  for (ULONG i = 0; i < list.cEntries; ++i) {
    const ULONG group = GroupOf(list.aEntries[i]);
    groupOf_.push_back(group);
    ++groups_[group].size;
  }
}

void Grouping::AddProviders(const CABServiceList& providers) {
  for (const auto& record : providers.All()) {
    const auto group = static_cast<ULONG>(groups_.size());
    for (const MAPIUID& uid : record->Registered()) uids_.push_back({uid, group});
    groups_.emplace_back().provider = record->Provider();
  }
}

ULONG Grouping::GroupOf(const ADRENTRY& entry) const {
  const auto unclaimed = static_cast<ULONG>(groups_.size() - 1);
  if (entry.rgPropVals == nullptr) return unclaimed;
  const SPropValue* id = FindValue(entry.rgPropVals, entry.cValues, PR_ENTRYID);
  if (id == nullptr) return unclaimed;
  const SBinary& bytes = id->Value.bin;
  const MAPIUID* uid = RoutingUid(bytes.cb, reinterpret_cast<const ENTRYID*>(bytes.lpb));
  if (uid == nullptr) return unclaimed;
  for (const KnownUid& known : uids_) {
    if (std::memcmp(&known.uid, uid, sizeof(MAPIUID)) == 0) return known.group;
  }
  return unclaimed;
}

HRESULT Grouping::Split(const ADRLIST& list) {
  std::vector<ADRENTRY*> next;
  for (Group& group : groups_) {
    if (const HRESULT hr = group.entries.Allocate(CbNewADRLIST(group.size)); FAILED(hr)) return hr;
    group.entries->cEntries = group.size;
    next.push_back(group.entries->aEntries);
  }
  for (ULONG i = 0; i < list.cEntries; ++i) *next[groupOf_[i]]++ = list.aEntries[i];
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
