// From chosen entries to an ADRLIST of the caller's.
#include "ui/address/address_result.h"

#include <string_view>
#include <unordered_map>
#include <utility>

#include "hosting/open_entry.h"
#include "orv/orvtags.h"
#include "platform/boundary.h"
#include "platform/buffer.h"
#include "props/foreign_values.h"
#include "ui/address/entry_facts.h"

namespace orv::ui {
namespace {

constexpr TagArray kRecipientTags{PR_ENTRYID, PR_RECIPIENT_TYPE, PR_DISPLAY_NAME_W, PR_ADDRTYPE_W,
                                  PR_OBJECT_TYPE};
constexpr ULONG kTypeColumn = 1;

// Moves entries of the caller's list into the result and, unless told that all went well, back again.
class EntryMover {
 public:
  EntryMover(ADRLIST* from, ADRLIST& to) : from_(from), to_(to) {}
  ~EntryMover() {
    for (const auto& [source, target] : moved_) std::swap(from_->aEntries[source], to_.aEntries[target]);
  }
  EntryMover(const EntryMover&) = delete;
  EntryMover& operator=(const EntryMover&) = delete;

  // False when no entry of that identifier is left.
  bool Move(const EntryId& entryId, ULONG target) {
    if (!indexed_) Index();
    const auto found = byIdentifier_.find(entryId.Bytes());
    if (found == byIdentifier_.end() || found->second.empty()) return false;
    const ULONG source = found->second.back();
    moved_.emplace_back(source, target);
    found->second.pop_back();
    std::swap(from_->aEntries[source], to_.aEntries[target]);
    return true;
  }
  void Keep() noexcept { moved_.clear(); }

 private:
  // Only when the first entry could not be opened; the views point into arrays that stay where they are.
  void Index() {
    indexed_ = true;
    for (ULONG i = from_ == nullptr ? 0 : from_->cEntries; i-- > 0;) {
      const SBinary* id = BinaryOf(ForeignValues(from_->aEntries[i]).Find(PR_ENTRYID));
      if (id != nullptr) byIdentifier_[EntryId::BytesOf(*id)].push_back(i);
    }
  }

  ADRLIST* from_;
  ADRLIST& to_;
  bool indexed_ = false;
  // Entries of one identifier, the first of the list at the back.
  std::unordered_map<std::string_view, std::vector<ULONG>> byIdentifier_;
  std::vector<std::pair<ULONG, ULONG>> moved_;
};

// The properties of an entry for a list of recipients, the wanted type in second place.
HRESULT ReadRecipient(IAddrBook& book, const ChosenRecipient& chosen, ADRENTRY& entry) {
  ComPtr<IMAPIProp> opened;
  if (const HRESULT hr = OpenListed(book, chosen.entry, opened); FAILED(hr)) return hr;
  PropValues values;
  if (const HRESULT hr = ReadProps(*opened, kRecipientTags, values); FAILED(hr)) return hr;
  if (ForeignValues(values).Count() != kRecipientTags.cValues) return MAPI_E_CALL_FAILED;
  SPropValue& type = values.values[kTypeColumn];
  type.ulPropTag = PR_RECIPIENT_TYPE;
  type.Value.l = static_cast<LONG>(chosen.recipientType);
  entry.cValues = values.count;
  entry.rgPropVals = values.values.Detach();
  return S_OK;
}

HRESULT FillRecipients(IAddrBook& book, const std::vector<ChosenRecipient>& chosen, ADRLIST& result,
                       EntryMover& mover) {
  for (const ChosenRecipient& recipient : chosen) {
    const ULONG index = result.cEntries++;
    const HRESULT hr = ReadRecipient(book, recipient, result.aEntries[index]);
    if (SUCCEEDED(hr) || mover.Move(recipient.entry, index)) continue;
    return hr == MAPI_E_NOT_ENOUGH_MEMORY ? hr : MAPI_E_NOT_FOUND;
  }
  return S_OK;
}

HRESULT AllocateList(std::size_t entries, AdrListPtr& list) {
  return AllocateRoot(CbNewADRLIST(entries), reinterpret_cast<void**>(list.Put()));
}

}  // namespace

HRESULT ReplaceByOne(IAddrBook& book, const ChosenRecipient& chosen, ADRLIST*& list) {
  AdrListPtr result;
  if (const HRESULT hr = AllocateList(1, result); FAILED(hr)) return hr;
  if (const HRESULT hr = ReadRecipient(book, chosen, result->aEntries[0]); FAILED(hr)) return hr;
  result->cEntries = 1;
  OrvFreePadrlist(std::exchange(list, result.Detach()));
  return S_OK;
}

HRESULT ReplaceByRecipients(IAddrBook& book, const std::vector<ChosenRecipient>& chosen, ADRLIST*& list) {
  return Guarded([&]() -> HRESULT {
    AdrListPtr result;
    if (const HRESULT hr = AllocateList(chosen.size(), result); FAILED(hr)) return hr;
    EntryMover mover(list, *result);
    if (const HRESULT hr = FillRecipients(book, chosen, *result, mover); FAILED(hr)) return hr;
    mover.Keep();
    OrvFreePadrlist(std::exchange(list, result.Detach()));
    return S_OK;
  });
}

}  // namespace orv::ui
