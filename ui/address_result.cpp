// From chosen entries to an ADRLIST of the caller's.
#include "ui/address_result.h"

#include <string_view>
#include <unordered_map>
#include <utility>

#include "orv/orvflags.h"
#include "orv/orvtags.h"
#include "platform/com_ptr.h"
#include "props/prop_value.h"

namespace orv::ui {
namespace {

constexpr ULONG kRecipientColumns = 5;
SizedSPropTagArray(kRecipientColumns, g_recipientTags) = {
    kRecipientColumns,
    {PR_ENTRYID, PR_RECIPIENT_TYPE, PR_DISPLAY_NAME_W, PR_ADDRTYPE_W, PR_OBJECT_TYPE}};
constexpr ULONG kTypeColumn = 1;

std::string_view Bytes(const SBinary& binary) {
  return {reinterpret_cast<const char*>(binary.lpb), binary.cb};
}

// Moves entries of the caller's list into the result and, unless told that all went well, back again.
class EntryMover {
 public:
  EntryMover(ADRLIST* from, ADRLIST& to) : from_(from), to_(to) {}
  ~EntryMover() {
    for (const auto& [source, target] : moved_) Exchange(from_->aEntries[source], to_.aEntries[target]);
  }
  EntryMover(const EntryMover&) = delete;
  EntryMover& operator=(const EntryMover&) = delete;

  // False when no entry of that identifier is left.
  bool Move(const SBinary& entryId, ULONG target) {
    if (!indexed_) Index();
    const auto found = byIdentifier_.find(Bytes(entryId));
    if (found == byIdentifier_.end() || found->second.empty()) return false;
    const ULONG source = found->second.back();
    moved_.emplace_back(source, target);
    found->second.pop_back();
    Exchange(from_->aEntries[source], to_.aEntries[target]);
    return true;
  }
  void Keep() noexcept { moved_.clear(); }

 private:
  static void Exchange(ADRENTRY& a, ADRENTRY& b) noexcept { std::swap(a, b); }

  // Only when the first entry could not be opened; the views point into arrays that stay where they are.
  void Index() {
    indexed_ = true;
    for (ULONG i = from_ == nullptr ? 0 : from_->cEntries; i-- > 0;) {
      ADRENTRY& entry = from_->aEntries[i];
      const SPropValue* id = FindValue(entry.rgPropVals, entry.cValues, PR_ENTRYID);
      if (id != nullptr) byIdentifier_[Bytes(id->Value.bin)].push_back(i);
    }
  }

  ADRLIST* from_;
  ADRLIST& to_;
  bool indexed_ = false;
  // Entries of one identifier, the first of the list at the back.
  std::unordered_map<std::string_view, std::vector<ULONG>> byIdentifier_;
  std::vector<std::pair<ULONG, ULONG>> moved_;
};

HRESULT FillRecipients(IAddrBook& book, const std::vector<ChosenRecipient>& chosen, ADRLIST& result,
                       EntryMover& mover) {
  for (const ChosenRecipient& recipient : chosen) {
    const ULONG index = result.cEntries++;
    HRESULT hr = ReadRecipient(book, recipient, result.aEntries[index]);
    if (hr == MAPI_E_NOT_ENOUGH_MEMORY) return hr;
    if (FAILED(hr) && !mover.Move(recipient.entryId, index)) return MAPI_E_NOT_FOUND;
  }
  return S_OK;
}

}  // namespace

HRESULT ReadRecipient(IAddrBook& book, const ChosenRecipient& chosen, ADRENTRY& entry) {
  ULONG type = 0;
  ComPtr<IUnknown> unknown;
  HRESULT hr = book.OpenEntry(chosen.entryId.cb, reinterpret_cast<LPENTRYID>(chosen.entryId.lpb), nullptr, 0,
                              &type, unknown.Put());
  if (FAILED(hr)) return hr;
  if (!unknown) return MAPI_E_CALL_FAILED;
  ComPtr<IMAPIProp> properties;
  hr = unknown->QueryInterface(IID_IMAPIProp, reinterpret_cast<void**>(properties.Put()));
  if (FAILED(hr)) return hr;
  PropValues values;
  hr = properties->GetProps(reinterpret_cast<LPSPropTagArray>(&g_recipientTags), MAPI_UNICODE, &values.count,
                            values.values.Put());
  if (FAILED(hr)) return hr;
  if (!values.values || values.count != kRecipientColumns) return MAPI_E_CALL_FAILED;
  values.values[kTypeColumn].ulPropTag = PR_RECIPIENT_TYPE;
  values.values[kTypeColumn].Value.l = static_cast<LONG>(chosen.recipientType);
  entry.cValues = values.count;
  entry.rgPropVals = values.values.Detach();
  return S_OK;
}

HRESULT ReplaceByRecipients(IAddrBook& book, const std::vector<ChosenRecipient>& chosen, ADRLIST*& list) {
  AdrListPtr result;
  const HRESULT allocated = AllocateRoot(CbNewADRLIST(chosen.size()), reinterpret_cast<void**>(result.Put()));
  if (FAILED(allocated)) return allocated;
  EntryMover mover(list, *result);
  if (const HRESULT hr = FillRecipients(book, chosen, *result, mover); FAILED(hr)) return hr;
  mover.Keep();
  OrvFreePadrlist(std::exchange(list, result.Detach()));
  return S_OK;
}

}  // namespace orv::ui
