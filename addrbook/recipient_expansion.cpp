// Recipients and lists wait in two queues; a hash over entry identifiers keeps each from entering one twice.
#include "addrbook/recipient_expansion.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <string_view>
#include <utility>
#include <vector>

#include "orv/orvflags.h"
#include "orv/orvtags.h"
#include "platform/boundary.h"
#include "platform/buffer.h"
#include "platform/com_ptr.h"
#include "props/prop_value.h"

namespace orv {
namespace {

// Columns asked of a list's contents; the placeholder's slot receives the recipient type.
constexpr ULONG kRecipientTypeSlot = 1;
constexpr SizedSPropTagArray(5, kMemberColumns) = {
    5, {PR_ENTRYID, PR_NULL, PR_DISPLAY_NAME_W, PR_ADDRTYPE_W, PR_OBJECT_TYPE}};

// Entry identifiers seen, by open addressing over small slots: no heap block an identifier, and the last of a hundred
// thousand is found as fast as the first. The bytes belong to the queues.
class IdentifierSet {
 public:
  // False when an equal identifier is in the set already.
  bool Insert(const SBinary& identifier) {
    if ((identifiers_.size() + 1) * 2 > slots_.size()) Grow();
    const std::string_view bytes = BytesOf(identifier);
    const auto hash = static_cast<std::uint32_t>(std::hash<std::string_view>()(bytes));
    std::size_t at = hash & Mask();
    for (; slots_[at].position != 0; at = (at + 1) & Mask()) {
      if (slots_[at].hash == hash && identifiers_[slots_[at].position - 1] == bytes) return false;
    }
    identifiers_.push_back(bytes);
    slots_[at] = {hash, static_cast<std::uint32_t>(identifiers_.size())};
    return true;
  }

 private:
  static constexpr std::size_t kSmallest = 16;

  struct Slot {
    std::uint32_t hash = 0;
    std::uint32_t position = 0;  // counts from 1; 0 is a free slot
  };

  static std::string_view BytesOf(const SBinary& identifier) {
    if (identifier.cb == 0) return {};
    return {reinterpret_cast<const char*>(identifier.lpb), identifier.cb};
  }

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

  std::vector<std::string_view> identifiers_;
  std::vector<Slot> slots_;
};

struct QueuedList {
  LONG recipientType = 0;
  std::vector<BYTE> identifier;
};

const SPropValue* Find(const ADRENTRY& entry, ULONG tag) {
  return FindValue(entry.rgPropVals, entry.cValues, tag);
}

bool IsList(const SPropValue* objectType) {
  return objectType != nullptr && objectType->Value.l == MAPI_DISTLIST;
}

// One expansion: collects, then hands over what it owns.
class Expansion {
 public:
  explicit Expansion(IAddrBook* book) : book_(book) {}
  ~Expansion() {
    for (const ADRENTRY& recipient : recipients_) OrvFreeBuffer(recipient.rgPropVals);
  }
  Expansion(const Expansion&) = delete;
  Expansion& operator=(const Expansion&) = delete;

  HRESULT Collect(ADRLIST& given);
  HRESULT Deliver(HRESULT collected, ADRLIST** list);

 private:
  HRESULT AddGiven(ADRENTRY& entry);
  HRESULT AddRecipient(ADRENTRY& entry);
  HRESULT AddList(const ADRENTRY& entry);
  HRESULT ExpandList(const QueuedList& list);
  HRESULT ReadMembers(IMAPIContainer* container, LONG recipientType);
  HRESULT AddMember(ADRENTRY& member, LONG recipientType);

  IAddrBook* book_;
  std::vector<ADRENTRY> recipients_;
  IdentifierSet seenRecipients_;
  // Entries stay where they are while nested lists are appended during the walk.
  std::list<QueuedList> lists_;
  IdentifierSet seenLists_;
};

HRESULT Expansion::Collect(ADRLIST& given) {
  for (ULONG i = 0; i < given.cEntries; ++i) {
    if (const HRESULT hr = AddGiven(given.aEntries[i]); FAILED(hr)) return hr;
  }
  for (const QueuedList& list : lists_) {
    if (const HRESULT hr = ExpandList(list); FAILED(hr)) return hr;
  }
  return S_OK;
}

HRESULT Expansion::AddGiven(ADRENTRY& entry) {
  const SPropValue* objectType = Find(entry, PR_OBJECT_TYPE);
  if (objectType == nullptr) return MAPI_E_MISSING_REQUIRED_COLUMN;
  return IsList(objectType) ? AddList(entry) : AddRecipient(entry);
}

// Takes the entry's properties: into the queue, or away when the recipient is there already. A failure ends the
// expansion, so that the set need not be mended.
HRESULT Expansion::AddRecipient(ADRENTRY& entry) {
  const SPropValue* identifier = Find(entry, PR_ENTRYID);
  if (identifier == nullptr) return MAPI_E_MISSING_REQUIRED_COLUMN;
  if (seenRecipients_.Insert(identifier->Value.bin)) {
    recipients_.push_back(entry);
  } else {
    OrvFreeBuffer(entry.rgPropVals);
  }
  entry.cValues = 0;
  entry.rgPropVals = nullptr;
  return S_OK;
}

// The entry stays its owner's; the queue keeps a copy of the identifier.
HRESULT Expansion::AddList(const ADRENTRY& entry) {
  const SPropValue* identifier = Find(entry, PR_ENTRYID);
  const SPropValue* recipientType = Find(entry, PR_RECIPIENT_TYPE);
  if (identifier == nullptr || recipientType == nullptr) return MAPI_E_MISSING_REQUIRED_COLUMN;
  const SBinary& bytes = identifier->Value.bin;
  QueuedList& list = lists_.emplace_back();
  list.recipientType = recipientType->Value.l;
  list.identifier.assign(bytes.lpb, bytes.lpb + bytes.cb);
  if (!seenLists_.Insert({bytes.cb, list.identifier.data()})) lists_.pop_back();
  return S_OK;
}

HRESULT Expansion::ExpandList(const QueuedList& list) {
  ComPtr<IUnknown> object;
  // A provider that does not tell the type is believed to have opened what was asked for.
  ULONG type = MAPI_DISTLIST;
  ENTRYID* identifier = reinterpret_cast<ENTRYID*>(const_cast<BYTE*>(list.identifier.data()));
  const HRESULT hr = book_->OpenEntry(static_cast<ULONG>(list.identifier.size()), identifier, nullptr, 0,
                                      &type, object.Put());
  if (FAILED(hr)) return hr;
  // Anything else has no contents table to ask for.
  if (!object || (type != MAPI_DISTLIST && type != MAPI_ABCONT)) return MAPI_E_INVALID_OBJECT;
  return ReadMembers(static_cast<IMAPIContainer*>(object.Get()), list.recipientType);
}

HRESULT Expansion::ReadMembers(IMAPIContainer* container, LONG recipientType) {
  ComPtr<IMAPITable> table;
  if (const HRESULT hr = container->GetContentsTable(MAPI_UNICODE, table.Put()); FAILED(hr)) return hr;
  if (!table) return MAPI_E_CALL_FAILED;
  auto columns = kMemberColumns;
  if (const HRESULT hr = table->SetColumns(reinterpret_cast<SPropTagArray*>(&columns), 0); FAILED(hr))
    return hr;
  if (const HRESULT hr = table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr); FAILED(hr)) return hr;
  for (;;) {
    RowSetPtr rows;
    if (const HRESULT hr = table->QueryRows(1, 0, rows.Put()); FAILED(hr)) return hr;
    if (!rows || rows->cRows == 0) return S_OK;
    // The row gives its properties up only to a queue that took them.
    SRow& row = rows->aRow[0];
    ADRENTRY member{0, row.cValues, row.lpProps};
    const HRESULT added = AddMember(member, recipientType);
    row.cValues = member.cValues;
    row.lpProps = member.rgPropVals;
    if (FAILED(added)) return added;
  }
}

HRESULT Expansion::AddMember(ADRENTRY& member, LONG recipientType) {
  if (member.cValues <= kRecipientTypeSlot) return MAPI_E_MISSING_REQUIRED_COLUMN;
  member.rgPropVals[kRecipientTypeSlot].ulPropTag = PR_RECIPIENT_TYPE;
  member.rgPropVals[kRecipientTypeSlot].Value.l = recipientType;
  return IsList(Find(member, PR_OBJECT_TYPE)) ? AddList(member) : AddRecipient(member);
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

}  // namespace

HRESULT ExpandRecipientLists(IAddrBook* book, ADRLIST** list) {
  Expansion expansion(book);
  const HRESULT collected = GuardedForeign([&] { return expansion.Collect(**list); });
  return expansion.Deliver(collected, list);
}

}  // namespace orv
