#include "event_queue.hpp"

#include <algorithm>

#include "packer.hpp"

namespace orv::kit {
namespace {

constexpr ULONG kObjectEvents = fnevObjectCreated | fnevObjectDeleted | fnevObjectModified | fnevObjectMoved |
                                fnevObjectCopied | fnevSearchComplete;

bool IsOfObject(const NOTIFICATION& event) noexcept { return (event.ulEventType & kObjectEvents) != 0; }
bool IsOfTable(const NOTIFICATION& event) noexcept { return event.ulEventType == fnevTableModified; }
bool IsOfRow(const NOTIFICATION& event) noexcept {
  const ULONG kind = event.info.tab.ulTableEvent;
  return IsOfTable(event) &&
         (kind == TABLE_ROW_ADDED || kind == TABLE_ROW_DELETED || kind == TABLE_ROW_MODIFIED);
}

SBinary IdOf(ULONG size, const ENTRYID* id) noexcept {
  return {id != nullptr ? size : 0, reinterpret_cast<LPBYTE>(const_cast<ENTRYID*>(id))};
}
SBinary KeyOf(const NOTIFICATION& event) noexcept {
  const SPropValue& key = event.info.tab.propIndex;
  return PROP_TYPE(key.ulPropTag) == PT_BINARY ? key.Value.bin : SBinary{0, nullptr};
}

bool SameObjects(const OBJECT_NOTIFICATION& one, const OBJECT_NOTIFICATION& other) noexcept {
  return SameBytes(IdOf(one.cbEntryID, one.lpEntryID), IdOf(other.cbEntryID, other.lpEntryID)) &&
         SameBytes(IdOf(one.cbParentID, one.lpParentID), IdOf(other.cbParentID, other.lpParentID)) &&
         SameBytes(IdOf(one.cbOldID, one.lpOldID), IdOf(other.cbOldID, other.lpOldID)) &&
         SameBytes(IdOf(one.cbOldParentID, one.lpOldParentID),
                   IdOf(other.cbOldParentID, other.lpOldParentID));
}

bool IsLike(const NOTIFICATION& one, const NOTIFICATION& other) noexcept {
  if (one.ulEventType != other.ulEventType) return false;
  if (IsOfObject(one)) return SameObjects(one.info.obj, other.info.obj);
  return IsOfTable(one) && one.info.tab.ulTableEvent == other.info.tab.ulTableEvent &&
         (!IsOfRow(one) || SameBytes(KeyOf(one), KeyOf(other)));
}

bool SameTags(const SPropTagArray* one, const SPropTagArray* other) noexcept {
  if (one == nullptr || other == nullptr) return one == other;
  return one->cValues == other->cValues &&
         std::equal(one->aulPropTag, one->aulPropTag + one->cValues, other->aulPropTag);
}

// The copies below replace pointers by pointers to copies, in place; what the count says of null is taken back.
void PackId(Packer& packer, ULONG& size, LPENTRYID& id) noexcept {
  if (id == nullptr) size = 0;
  id = reinterpret_cast<LPENTRYID>(packer.Items(reinterpret_cast<const BYTE*>(id), size));
}
void PackTags(Packer& packer, LPSPropTagArray& tags) noexcept {
  if (tags == nullptr) return;
  const auto* bytes = reinterpret_cast<const BYTE*>(tags);
  tags = reinterpret_cast<LPSPropTagArray>(packer.Items(bytes, CbSPropTagArray(tags)));
}
void Pack(Packer& packer, OBJECT_NOTIFICATION& event) noexcept {
  PackId(packer, event.cbEntryID, event.lpEntryID);
  PackId(packer, event.cbParentID, event.lpParentID);
  PackId(packer, event.cbOldID, event.lpOldID);
  PackId(packer, event.cbOldParentID, event.lpOldParentID);
  PackTags(packer, event.lpPropTagArray);
}
void Pack(Packer& packer, TABLE_NOTIFICATION& event) noexcept {
  packer.Value(event.propIndex);
  packer.Value(event.propPrior);
  if (event.row.lpProps == nullptr) event.row.cValues = 0;
  event.row.lpProps = packer.Values(event.row.lpProps, event.row.cValues);
}
void Pack(Packer& packer, ERROR_NOTIFICATION& event) noexcept {
  PackId(packer, event.cbEntryID, event.lpEntryID);
  if (event.lpMAPIError == nullptr) return;
  MAPIERROR error = *event.lpMAPIError;
  event.lpMAPIError = packer.Items(event.lpMAPIError, 1);
  error.lpszError = packer.Text(error.lpszError);
  error.lpszComponent = packer.Text(error.lpszComponent);
  if (packer.IsWriting()) *event.lpMAPIError = error;
}
void Pack(Packer& packer, NEWMAIL_NOTIFICATION& event) noexcept {
  PackId(packer, event.cbEntryID, event.lpEntryID);
  PackId(packer, event.cbParentID, event.lpParentID);
  event.lpszMessageClass = packer.Text(event.lpszMessageClass);
}
void Pack(Packer& packer, EXTENDED_NOTIFICATION& event) noexcept {
  if (event.pbEventParameters == nullptr) event.cb = 0;
  event.pbEventParameters = packer.Items(event.pbEventParameters, event.cb);
}
void Pack(Packer& packer, STATUS_OBJECT_NOTIFICATION& event) noexcept {
  PackId(packer, event.cbEntryID, event.lpEntryID);
  if (event.lpPropVals == nullptr) event.cValues = 0;
  event.lpPropVals = packer.Values(event.lpPropVals, event.cValues);
}

void Pack(Packer& packer, NOTIFICATION& event) noexcept {
  if (IsOfObject(event)) return Pack(packer, event.info.obj);
  switch (event.ulEventType) {
    case fnevTableModified:
      return Pack(packer, event.info.tab);
    case fnevCriticalError:
      return Pack(packer, event.info.err);
    case fnevNewMail:
      return Pack(packer, event.info.newmail);
    case fnevExtended:
      return Pack(packer, event.info.ext);
    case fnevStatusObjectModified:
      return Pack(packer, event.info.statobj);
    default:
      event.info = {};  // of an unknown shape: nothing that could point anywhere
  }
}

}  // namespace

bool SameBytes(SBinary one, SBinary other) noexcept {
  return one.cb == other.cb && (one.cb == 0 || std::memcmp(one.lpb, other.lpb, one.cb) == 0);
}

bool Concerns(const NOTIFICATION& event, SBinary id) noexcept {
  const auto is = [id](ULONG size, const ENTRYID* named) { return SameBytes(id, IdOf(size, named)); };
  if (IsOfObject(event)) {
    const OBJECT_NOTIFICATION& named = event.info.obj;
    return is(named.cbEntryID, named.lpEntryID) || is(named.cbParentID, named.lpParentID) ||
           is(named.cbOldID, named.lpOldID) || is(named.cbOldParentID, named.lpOldParentID);
  }
  const auto& info = event.info;
  if (event.ulEventType == fnevCriticalError) return is(info.err.cbEntryID, info.err.lpEntryID);
  if (event.ulEventType == fnevStatusObjectModified)
    return is(info.statobj.cbEntryID, info.statobj.lpEntryID);
  if (event.ulEventType != fnevNewMail) return true;
  return is(info.newmail.cbEntryID, info.newmail.lpEntryID) ||
         is(info.newmail.cbParentID, info.newmail.lpParentID);
}

void EventQueue::Add(const NOTIFICATION& event) noexcept {
  if (IsOfTable(event) && event.info.tab.ulTableEvent == TABLE_CHANGED) {
    EraseAll(IsOfRow);
    tableChanged_ = true;
    return;
  }
  if (IsTold(event)) return;
  NOTIFICATION joined = event;
  Join(joined);
  MakeRoom();
  if (IsTold(event)) return;
  try {
    Append(joined);
  } catch (const std::bad_alloc&) {
    Overrun();
    objectsOverran_ = objectsOverran_ || IsOfObject(joined);
    tableChanged_ = tableChanged_ || IsOfRow(joined);
  }
}

void EventQueue::MakeRoom() noexcept {
  if (events_.size() >= most_) Overrun();
  if (events_.size() >= most_) Erase(0);
}

// Takes out the event that this one makes superfluous; there is at most one.
void EventQueue::Join(NOTIFICATION& event) noexcept {
  for (size_t i = events_.size(); i-- > 0;) {
    const NOTIFICATION& older = events_[i];
    if (!IsLike(older, event)) continue;
    if (IsOfObject(event) && !SameTags(older.info.obj.lpPropTagArray, event.info.obj.lpPropTagArray))
      event.info.obj.lpPropTagArray = nullptr;
    return Erase(i);
  }
}

// Whoever is told by an overrun reads everything anew, and sees this change as well.
bool EventQueue::IsTold(const NOTIFICATION& event) const noexcept {
  return (IsOfObject(event) && objectsOverran_) || (IsOfRow(event) && tableChanged_);
}

void EventQueue::Append(const NOTIFICATION& event) {
  NOTIFICATION copy;
  auto block = Packer::Pack([&](Packer& packer) {
    copy = event;
    Pack(packer, copy);
  });
  if (events_.size() == events_.capacity()) events_.reserve(2 * events_.size() + 1);
  blocks_.push_back(std::move(block));
  events_.push_back(copy);
}

void EventQueue::Erase(size_t index) noexcept {
  events_.erase(events_.begin() + static_cast<std::ptrdiff_t>(index));
  blocks_.erase(blocks_.begin() + static_cast<std::ptrdiff_t>(index));
}

template <class Which>
void EventQueue::EraseAll(const Which& which) noexcept {
  for (size_t i = events_.size(); i-- > 0;) {
    if (which(events_[i])) Erase(i);
  }
}

void EventQueue::Overrun() noexcept {
  objectsOverran_ = objectsOverran_ || std::any_of(events_.begin(), events_.end(), IsOfObject);
  tableChanged_ = tableChanged_ || std::any_of(events_.begin(), events_.end(), IsOfRow);
  EraseAll([](const NOTIFICATION& event) { return IsOfObject(event) || IsOfRow(event); });
}

ULONG EventQueue::Overruns(SBinary id, NOTIFICATION* more) const noexcept {
  ULONG count = 0;
  if (objectsOverran_) {
    NOTIFICATION& event = more[count++] = {};
    event.ulEventType = fnevObjectModified;
    event.info.obj.cbEntryID = id.cb;
    event.info.obj.lpEntryID = id.cb != 0 ? reinterpret_cast<LPENTRYID>(id.lpb) : nullptr;
  }
  if (tableChanged_) {
    NOTIFICATION& event = more[count++] = {};
    event.ulEventType = fnevTableModified;
    event.info.tab.ulTableEvent = TABLE_CHANGED;
    event.info.tab.propIndex.ulPropTag = event.info.tab.propPrior.ulPropTag = PR_NULL;
  }
  return count;
}

}  // namespace orv::kit
