// Recipients and lists wait in two queues; a hash over entry identifiers keeps each from entering one twice.
#include "addrbook/recipient_expansion.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>
#include <utility>
#include <vector>

#include "addrbook/recipients.h"
#include "hosting/open_entry.h"
#include "orv/orvflags.h"
#include "orv/orvtags.h"
#include "platform/boundary.h"
#include "platform/buffer.h"
#include "platform/com_ptr.h"
#include "props/entry_id.h"
#include "props/foreign_values.h"
#include "props/prop_value.h"
#include "props/table_reader.h"

namespace orv {
namespace {

// Columns asked of a list's contents; the spare column receives the recipient type.
constexpr ULONG kRecipientTypeSlot = 1;
constexpr TagArray kMemberColumns{PR_ENTRYID, PR_NULL, PR_DISPLAY_NAME_W, PR_ADDRTYPE_W, PR_OBJECT_TYPE};

// Which identifiers a queue holds, by open addressing over small slots: no heap block an identifier, and the last of a
// hundred thousand is found as fast as the first. The bytes stay with the queue.
class IdentifierSet {
 public:
  // False when an equal identifier is in the queue, of which `bytesAt` tells the bytes at a position; else the queue
  // must append it.
  template <class BytesAt>
  bool Insert(std::string_view bytes, const BytesAt& bytesAt) {
    if ((count_ + 1) * 2 > slots_.size()) Grow();
    const auto hash = static_cast<std::uint32_t>(std::hash<std::string_view>()(bytes));
    std::size_t at = hash & Mask();
    for (; slots_[at].position != 0; at = (at + 1) & Mask()) {
      if (slots_[at].hash == hash && bytesAt(slots_[at].position - 1) == bytes) return false;
    }
    slots_[at] = {hash, static_cast<std::uint32_t>(++count_)};
    return true;
  }

 private:
  static constexpr std::size_t kSmallest = 16;

  struct Slot {
    std::uint32_t hash = 0;
    std::uint32_t position = 0;  // counts from 1; 0 is a free slot
  };

  std::size_t Mask() const { return slots_.size() - 1; }

  void Grow() {
    std::vector<Slot> old(slots_.empty() ? kSmallest : slots_.size() * 2);
    old.swap(slots_);
    for (const Slot& slot : old) {
      if (slot.position == 0) continue;
      std::size_t at = slot.hash & Mask();
      while (slots_[at].position != 0) at = (at + 1) & Mask();
      slots_[at] = slot;
    }
  }

  std::size_t count_ = 0;
  std::vector<Slot> slots_;
};

struct QueuedList {
  LONG recipientType;
  EntryId identifier;
};

bool IsList(const SPropValue* objectType) { return NumberOf(objectType) == MAPI_DISTLIST; }

// One expansion: collects, then hands over what it owns.
class Expansion {
 public:
  explicit Expansion(IAddrBook& book) : book_(book) {}
  ~Expansion() {
    for (const ADRENTRY& recipient : recipients_) OrvFreeBuffer(recipient.rgPropVals);
  }
  Expansion(const Expansion&) = delete;
  Expansion& operator=(const Expansion&) = delete;

  HRESULT Collect(ADRLIST& given);
  HRESULT Deliver(HRESULT collected, ADRLIST** list);

 private:
  HRESULT AddGiven(ADRENTRY& entry);
  HRESULT AddRecipient(PropValues entry);
  HRESULT AddList(const ForeignValues& entry);
  HRESULT ExpandList(const QueuedList& list);
  HRESULT AddMember(TableReader& members, LONG recipientType);

  IAddrBook& book_;
  std::vector<ADRENTRY> recipients_;
  IdentifierSet seenRecipients_;
  std::vector<QueuedList> lists_;
  IdentifierSet seenLists_;
};

HRESULT Expansion::Collect(ADRLIST& given) {
  for (ULONG i = 0; i < given.cEntries; ++i) {
    if (const HRESULT hr = AddGiven(given.aEntries[i]); FAILED(hr)) return hr;
  }
  for (std::size_t i = 0; i < lists_.size(); ++i) {
    // A copy: nested lists are appended during the walk.
    const QueuedList list = lists_[i];
    if (const HRESULT hr = ExpandList(list); FAILED(hr)) return hr;
  }
  return S_OK;
}

// A list stays the caller's; a recipient's properties go over to the queue.
HRESULT Expansion::AddGiven(ADRENTRY& entry) {
  const ForeignValues values(entry);
  const SPropValue* objectType = values.Find(PR_OBJECT_TYPE);
  if (objectType == nullptr) return MAPI_E_MISSING_REQUIRED_COLUMN;
  if (IsList(objectType)) return AddList(values);
  return AddRecipient(
      {std::exchange(entry.cValues, 0), MapiBuffer<SPropValue>(std::exchange(entry.rgPropVals, nullptr))});
}

// A recipient that is in the queue already goes away here. A failure ends the expansion, so that the set need not be
// mended.
HRESULT Expansion::AddRecipient(PropValues entry) {
  const ADRENTRY recipient = {0, entry.count, entry.values.Get()};
  const SBinary* identifier = IdentifierOf(recipient);
  // Bytes that are null where their count says otherwise name nobody.
  if (identifier == nullptr || (identifier->cb != 0 && identifier->lpb == nullptr))
    return MAPI_E_MISSING_REQUIRED_COLUMN;
  const auto bytesAt = [this](std::size_t at) { return EntryId::BytesOf(*IdentifierOf(recipients_[at])); };
  if (!seenRecipients_.Insert(EntryId::BytesOf(*identifier), bytesAt)) return S_OK;
  recipients_.push_back(recipient);
  static_cast<void>(entry.values.Detach());
  return S_OK;
}

HRESULT Expansion::AddList(const ForeignValues& entry) {
  const SBinary* identifier = BinaryOf(entry.Find(PR_ENTRYID));
  const SPropValue* recipientType = entry.Find(PR_RECIPIENT_TYPE);
  if (identifier == nullptr || recipientType == nullptr) return MAPI_E_MISSING_REQUIRED_COLUMN;
  const auto bytesAt = [this](std::size_t at) { return lists_[at].identifier.Bytes(); };
  if (seenLists_.Insert(EntryId::BytesOf(*identifier), bytesAt))
    lists_.push_back({recipientType->Value.l, EntryId(*identifier)});
  return S_OK;
}

// Only a list or a container has contents to ask for.
HRESULT Expansion::ExpandList(const QueuedList& list) {
  static constexpr ULONG kTypes[] = {MAPI_DISTLIST, MAPI_ABCONT};
  ComPtr<IMAPIContainer> container;
  HRESULT hr = OpenEntryAs(book_, list.identifier.Binary(), kTypes, container);
  if (FAILED(hr)) return hr;
  ComPtr<IMAPITable> table;
  hr = HandedOut(table, [&] { return container->GetContentsTable(MAPI_UNICODE, table.Put()); });
  if (FAILED(hr)) return hr;
  TableReader members;
  hr = members.Open(std::move(table), kMemberColumns);
  while (SUCCEEDED(hr) && (hr = members.Next()) == S_OK) hr = AddMember(members, list.recipientType);
  return FAILED(hr) ? hr : S_OK;
}

HRESULT Expansion::AddMember(TableReader& members, LONG recipientType) {
  if (members.Row().Count() <= kRecipientTypeSlot) return MAPI_E_MISSING_REQUIRED_COLUMN;
  PropValues member = members.TakeRow();
  SPropValue& spare = member.values[kRecipientTypeSlot];
  spare.ulPropTag = PR_RECIPIENT_TYPE;
  spare.Value.l = recipientType;
  const bool isList = IsList(FindValue(member.values.Get(), member.count, PR_OBJECT_TYPE));
  return isList ? AddList(ForeignValues(member)) : AddRecipient(std::move(member));
}

// Puts the queue into the caller's list, or into a new one when that is too small or the expansion failed.
HRESULT Expansion::Deliver(HRESULT collected, ADRLIST** list) {
  const ULONG count = static_cast<ULONG>(recipients_.size());
  AdrListPtr given(std::exchange(*list, nullptr));
  if (FAILED(collected) || count > given->cEntries) {
    given.Reset();
    MapiBuffer<ADRLIST> larger;
    if (FAILED(larger.Allocate(CbNewADRLIST(recipients_.size())))) {
      return FAILED(collected) ? collected : MAPI_E_NOT_ENOUGH_MEMORY;
    }
    given.Reset(larger.Detach());
  } else {
    // What the list still holds are the lists that gave way to their members.
    for (ULONG i = 0; i < given->cEntries; ++i) OrvFreeBuffer(given->aEntries[i].rgPropVals);
  }
  std::copy(recipients_.begin(), recipients_.end(), given->aEntries);
  given->cEntries = count;
  recipients_.clear();
  *list = given.Detach();
  return collected;
}

bool HoldsReadableEntries(const ADRLIST& list) {
  RecipientPages pages;
  return std::all_of(list.aEntries, list.aEntries + list.cEntries, [&](const ADRENTRY& entry) {
    if (!pages.Hold(entry)) return false;
    const SBinary* identifier = IdentifierOf(entry);
    return identifier == nullptr || pages.Hold(*identifier);
  });
}

}  // namespace

HRESULT ExpandRecipientLists(IAddrBook* book, ADRLIST** list) {
  if (!HoldsReadableEntries(**list)) return MAPI_E_INVALID_PARAMETER;
  Expansion expansion(*book);
  const HRESULT collected = GuardedForeign([&] { return expansion.Collect(**list); });
  return expansion.Deliver(collected, list);
}

}  // namespace orv
