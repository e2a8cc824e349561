// Grouping by counting: each recipient is looked up once and moved twice, whatever their number. A list may be long, so
// the UIDs are gathered once and lie side by side.
#include "addrbook/prepare_recips.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include "addrbook/recipients.h"
#include "hosting/provider_list.h"
#include "platform/boundary.h"
#include "platform/buffer.h"
#include "platform/pointer_check.h"
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
  explicit Grouping(const CABServiceList* providers);

  // MAPI_E_INVALID_PARAMETER for an entry or an identifier that cannot be read.
  HRESULT Assign(const ADRLIST& list);
  // The groups' own lists, in the order of the caller's.
  HRESULT Split(const ADRLIST& list);
  std::vector<Group>& Groups() { return groups_; }

  void WriteBackGrouped(ADRLIST& list) const;
  void WriteBackInPlace(ADRLIST& list) noexcept;

 private:
  void AddProviders(const CABServiceList& providers);
  ULONG GroupOf(const SBinary* identifier) const;

  std::vector<KnownUid> uids_;
  std::vector<Group> groups_;
  std::unique_ptr<ULONG[]> groupOf_;  // by the recipient's position in the caller's list
};

Grouping::Grouping(const CABServiceList* providers) {
  if (providers != nullptr) AddProviders(*providers);
  groups_.emplace_back();
}

void Grouping::AddProviders(const CABServiceList& providers) {
  for (const auto& record : providers.All()) {
    const auto group = static_cast<ULONG>(groups_.size());
    for (const MAPIUID& uid : record->Registered()) uids_.push_back({uid, group});
    groups_.emplace_back().provider = record->Provider();
  }
}

HRESULT Grouping::Assign(const ADRLIST& list) {
  groupOf_ = std::make_unique_for_overwrite<ULONG[]>(list.cEntries);
  RecipientPages pages;
  for (ULONG i = 0; i < list.cEntries; ++i) {
    const ADRENTRY& entry = list.aEntries[i];
    if (!pages.Hold(entry)) return MAPI_E_INVALID_PARAMETER;
    const SBinary* identifier = IdentifierOf(entry);
    // Without bytes there is no identifier, whatever its count says.
    if (identifier != nullptr && identifier->lpb == nullptr) identifier = nullptr;
    if (identifier != nullptr && !pages.Hold(*identifier)) return MAPI_E_INVALID_PARAMETER;
    groupOf_[i] = GroupOf(identifier);
    ++groups_[groupOf_[i]].size;
  }
  return S_OK;
}

ULONG Grouping::GroupOf(const SBinary* identifier) const {
  const auto unclaimed = static_cast<ULONG>(groups_.size() - 1);
  if (identifier == nullptr || identifier->cb < ORV_MIN_ENTRYID) return unclaimed;
  const BYTE* uid = identifier->lpb + ORV_ENTRYID_UID_OFFSET;
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

// Doubles in an array can be stored nowhere, but here they only pass through: eight bytes each, like any other.
HRESULT CopyThrough(SPropValue& destination, const SPropValue& source, void* root) {
  const ULONG type = PROP_TYPE(source.ulPropTag);
  if (type != PT_MV_DOUBLE && type != PT_MV_APPTIME) return CopyValue(destination, source, root);
  SPropValue words = source;
  words.ulPropTag = CHANGE_PROP_TYPE(source.ulPropTag, PT_MV_I8);
  const HRESULT hr = CopyValue(destination, words, root);
  destination.ulPropTag = source.ulPropTag;
  return hr;
}

// Whether the value is what one of the tags asks for, or what an earlier call put there for a tag that had none.
bool IsAskedFor(const SPropValue& value, const SPropTagArray& tags) {
  return std::any_of(tags.aulPropTag, tags.aulPropTag + tags.cValues, [&](ULONG tag) {
    return tag == value.ulPropTag ||
           (PROP_ID(tag) == PROP_ID(value.ulPropTag) &&
            (PROP_TYPE(tag) == PT_UNSPECIFIED || PROP_TYPE(value.ulPropTag) == PT_ERROR));
  });
}

// One value a tag, whether asked for before or twice, then the entry's other properties. Unchanged after a failure.
HRESULT Rebuild(const SPropTagArray& tags, ADRENTRY& entry) {
  std::vector<const SPropValue*> others;
  for (ULONG i = 0; i < entry.cValues; ++i) {
    if (!IsAskedFor(entry.rgPropVals[i], tags)) others.push_back(&entry.rgPropVals[i]);
  }
  const std::size_t count = tags.cValues + others.size();
  MapiBuffer<SPropValue> rebuilt;
  if (const HRESULT hr = rebuilt.AllocateArray(count); FAILED(hr)) return hr;
  for (std::size_t i = 0; i < count; ++i) {
    const bool asked = i < tags.cValues;
    const SPropValue* value =
        asked ? FindValue(entry.rgPropVals, entry.cValues, tags.aulPropTag[i]) : others[i - tags.cValues];
    if (value == nullptr) {
      SetNotFound(rebuilt[i], tags.aulPropTag[i]);
    } else if (const HRESULT hr = CopyThrough(rebuilt[i], *value, rebuilt.Get()); FAILED(hr)) {
      return hr;
    }
  }
  OrvFreeBuffer(entry.rgPropVals);
  entry.cValues = static_cast<ULONG>(count);
  entry.rgPropVals = rebuilt.Detach();
  return S_OK;
}

// Nobody answers for these recipients: what was asked for comes from what they bring, in the order asked for.
HRESULT CompleteUnclaimed(const SPropTagArray* tags, ADRLIST& entries) {
  if (tags == nullptr) return S_OK;
  for (ULONG i = 0; i < entries.cEntries; ++i) {
    if (const HRESULT hr = Rebuild(*tags, entries.aEntries[i]); FAILED(hr)) return hr;
  }
  return S_OK;
}

// Every provider is asked, with an empty list too: it may prepare something for the whole message.
HRESULT Complete(Group& group, bool unclaimed, SPropTagArray* tags) {
  if (unclaimed) return Guarded([&] { return CompleteUnclaimed(tags, *group.entries); });
  if (group.provider == nullptr) return S_OK;
  return GuardedForeign([&] { return group.provider->PrepareRecips(0, tags, group.entries.Get()); });
}

// In the order of the groups, up to the first failure. A provider's remark, such as that values are missing, is the
// caller's to hear.
HRESULT CompleteAll(std::vector<Group>& groups, SPropTagArray* tags) {
  HRESULT result = S_OK;
  for (Group& group : groups) {
    const HRESULT hr = Complete(group, &group == &groups.back(), tags);
    if (FAILED(hr)) return hr;
    if (hr != S_OK) result = hr;
  }
  return result;
}

}  // namespace

HRESULT PrepareRecipients(const CABServiceList* providers, SPropTagArray* tags, ADRLIST& list) {
  if (tags != nullptr && !IsReadableTagArray(tags)) return MAPI_E_INVALID_PARAMETER;
  Grouping grouping(providers);
  if (const HRESULT hr = grouping.Assign(list); FAILED(hr)) return hr;
  if (const HRESULT hr = grouping.Split(list); FAILED(hr)) return hr;
  const HRESULT hr = CompleteAll(grouping.Groups(), tags);
  if (FAILED(hr)) {
    grouping.WriteBackInPlace(list);
  } else {
    grouping.WriteBackGrouped(list);
  }
  return hr;
}

}  // namespace orv
