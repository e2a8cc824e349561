// A record is compared with its entry by card: what books keep is canonical, so the same contact makes the same text.
//
// A file may hold a contact twice. Its later records only add to the entry, which is marked; so the file, read again, finds
// all of them in it.
#include "formats/contact_io.h"
#include "providers/book/core.h"
#include "providers/book/members.h"
#include "providers/book/merge.h"
#include "providers/book/row_scan.h"
#include "providers/book/schema.h"

namespace book {
namespace {

constexpr int kRecordsPerTransaction = 10'000;
constexpr ULONGLONG kLongestTransaction = 2000;  // milliseconds; others wait for five seconds at most
constexpr DWORD kPauseForOthers = 8;             // more than their naps
constexpr int kCacheKilobytes = 20 * 1024;
// Pages that every transaction writes again are carried over to the file now and then, not each time.
constexpr char kRareCheckpoints[] = "PRAGMA wal_autocheckpoint = 16000";
constexpr char kCheckpoint[] = "PRAGMA wal_checkpoint(PASSIVE)";

}  // namespace

struct Import::Run {
  Run(std::shared_ptr<Core> sharedCore, bool isTrialRun)
      : core(std::move(sharedCore)), writer(core->path(), kCacheKilobytes), isTrial(isTrialRun) {
    writer.database().Run(kRareCheckpoints);
  }
  ~Run() { writer.Abandon(); }

  void Begin();
  void Commit();
  void CommitWhenDue();
  void CommitNow();

  PutResult Put(const formats::Contact& contact, EntryKey* key);
  PutResult PutNew(const formats::Contact& contact, Derived derived, EntryKey* key);
  PutResult PutInto(const Stored& stored, const formats::Contact& contact, const Derived& derived);
  PutResult Compare(const Stored& stored, const std::string& card, formats::Contact record, bool adds,
                    bool again);
  bool SaysMembers(const formats::Contact& contact) const;
  bool PutMembers(const Stored& stored, const formats::Contact& contact, bool adds);

  bool FindOwner(const formats::Contact& contact, const Derived& derived, Stored* owner);
  bool FindByNumber(const formats::Contact& contact, const Derived& derived, Stored* owner);
  bool FindByContent(const Derived& derived, Stored* owner);
  bool FindListByName(const Derived& derived, bool hasUid, Stored* owner);
  bool FindById(int64_t id, Stored* owner);

  const std::shared_ptr<Core> core;
  Writer writer;
  const bool isTrial;
  formats::SourceScope scope;
  EntrySet touched;        // entries that a record of this run has meant
  bool sharesUid = false;  // the last record, with an earlier one of another name
  bool isOpen = false;
  bool hasLists = false;
  int records = 0;
  ULONGLONG begun = 0;
};

void Import::Run::Begin() {
  if (isOpen) return;
  writer.Begin();
  isOpen = true;
  records = 0;
  begun = GetTickCount64();
}

void Import::Run::Commit() {
  if (!isOpen || isTrial) return;
  if (hasLists) SettleNames(writer.database(), writer.arrangements().front());
  CommitNow();
  // What was committed is in the book, whether its log can be taken over now or by the next one.
  static_cast<void>(Answer([this] { writer.database().Run(kCheckpoint); }));
}

void Import::Run::CommitWhenDue() {
  const bool isDue = ++records >= kRecordsPerTransaction || GetTickCount64() - begun > kLongestTransaction;
  if (!isDue || isTrial) return;
  CommitNow();
  Sleep(kPauseForOthers);
}

void Import::Run::CommitNow() {
  Changes changes;
  writer.Commit(&changes);
  isOpen = false;
  core->Tell(changes);
}

bool Import::Run::FindById(int64_t id, Stored* owner) {
  Query query(writer.database(), "SELECT key, flags, version FROM entry WHERE id = ? AND deleted IS NULL",
              id);
  if (!query.Next()) return false;
  *owner = {id, KeyOfBytes(query.Blob(0)), static_cast<uint32_t>(query.Integer(1)),
            static_cast<uint32_t>(query.Integer(2)), false};
  return true;
}

// Two contacts that each came with a UID are two, whatever else they share.
bool Import::Run::FindByNumber(const formats::Contact& contact, const Derived& derived, Stored* owner) {
  for (const Derived::Number& number : derived.numbers) {
    if (number.digits.empty()) continue;
    Query query(
        writer.database(),
        "SELECT e.id, n.text FROM number n CROSS JOIN entry e ON e.id = n.entry WHERE n.digits = ?1 AND "
        "n.digits <> '' AND e.name = ?2 AND (?3 OR (e.flags & 2) <> 0) AND (e.flags & 1) = 0 ORDER BY e.id",
        number.digits, derived.name, contact.uid.empty() ? 1 : 0);
    while (query.Next()) {
      const bool isSame = formats::CanonicalNumber(query.Text(1)) == formats::CanonicalNumber(number.text);
      if (isSame) return FindById(query.Integer(0), owner);
    }
  }
  return false;
}

bool Import::Run::FindByContent(const Derived& derived, Stored* owner) {
  Query query(writer.database(), "SELECT id FROM entry WHERE digest = ? AND deleted IS NULL AND name = ?",
              derived.digest, derived.name);
  return query.Next() && FindById(query.Integer(0), owner);
}

bool Import::Run::FindListByName(const Derived& derived, bool hasUid, Stored* owner) {
  Query query(writer.database(),
              "SELECT e.id FROM row r CROSS JOIN entry e ON e.id = r.entry WHERE r.sort = ? AND (e.flags & "
              "1) <> 0 AND e.name = ? AND (? OR (e.flags & 2) <> 0) ORDER BY e.id",
              BytesOf(derived.sorts.front()), derived.name, hasUid ? 0 : 1);
  return query.Next() && FindById(query.Integer(0), owner);
}

bool Import::Run::FindOwner(const formats::Contact& contact, const Derived& derived, Stored* owner) {
  if (contact.isList) return FindListByName(derived, !contact.uid.empty(), owner);
  if (FindByNumber(contact, derived, owner)) return true;
  return derived.digest != 0 && FindByContent(derived, owner);
}

PutResult Import::Run::Put(const formats::Contact& contact, EntryKey* key) {
  sharesUid = false;
  if (contact.name.empty()) return PutResult::kRejected;
  Begin();
  Derived derived = Derive(contact, writer.arrangements());
  if (derived.card.size() > formats::kMaxRecordSize) return PutResult::kRejected;
  hasLists = hasLists || contact.isList;
  Stored owner;
  const bool hasUid = !contact.uid.empty();
  const bool isKnown =
      (hasUid && writer.Find(KeyOfUid(contact.uid), &owner)) || FindOwner(contact, derived, &owner);
  const PutResult result =
      isKnown ? PutInto(owner, contact, derived) : PutNew(contact, std::move(derived), &owner.key);
  *key = owner.key;
  CommitWhenDue();
  return result;
}

PutResult Import::Run::PutNew(const formats::Contact& contact, Derived derived, EntryKey* key) {
  uint32_t flags = contact.isList ? uint32_t{kIsList} : 0;
  std::string uid = contact.uid;
  if (uid.empty()) {
    uid = NewUid();
    flags |= kHasMadeUid;
    GiveUid(contact, uid, &derived);
  }
  *key = KeyOfUid(uid);
  int64_t id = 0;
  writer.Insert(*key, flags, derived, &id);
  touched.Insert(id);
  if (contact.isList) ReplaceMembers(writer.database(), id, MembersOf(contact));
  return PutResult::kAdded;
}

PutResult Import::Run::PutInto(const Stored& stored, const formats::Contact& contact,
                               const Derived& derived) {
  const bool again = !touched.Insert(stored.id);
  const std::string card = writer.CardText(stored.id);
  const bool adds = again || (stored.flags & kIsMerged) != 0;
  PutResult result = PutResult::kEqual;
  if (derived.card != card || stored.isDeleted) result = Compare(stored, card, contact, adds, again);
  if (!contact.isList || !SaysMembers(contact) || !PutMembers(stored, contact, adds)) return result;
  if (result == PutResult::kEqual) writer.Touch(stored);
  return result == PutResult::kEqual ? PutResult::kUpdated : result;
}

PutResult Import::Run::Compare(const Stored& stored, const std::string& card, formats::Contact record,
                               bool adds, bool again) {
  const formats::Contact former = ContactOfCard(card);
  record.uid = former.uid;
  record.isList = former.isList;
  if (!stored.isDeleted) record = formats::WithUnsaid(former, std::move(record), scope);
  sharesUid = again && record.name != former.name;
  TakeOverKeys(former, &record);
  Derived derived = DeriveEntry(record, stored.flags, writer.arrangements());
  if (stored.isDeleted) {
    writer.Update(stored, stored.flags & ~kIsMerged, derived);
    return PutResult::kAdded;
  }
  if (derived.card == card) return PutResult::kEqual;
  uint32_t flags = stored.flags & ~kIsMerged;
  if (adds) {
    Derived merged = DeriveEntry(Merged(former, record), stored.flags, writer.arrangements());
    if (merged.card == card) return PutResult::kEqual;
    if (again) derived = std::move(merged);
    if (again) flags |= kIsMerged;
  }
  writer.Update(stored, flags, derived);
  return PutResult::kUpdated;
}

bool Import::Run::SaysMembers(const formats::Contact& contact) const {
  const bool isSilent = scope.isOpen && contact.members.empty();
  return scope.isWhole || (scope.saysMembers && !isSilent);
}

bool Import::Run::PutMembers(const Stored& stored, const formats::Contact& contact, bool adds) {
  const std::vector<Member> former = ReadMembers(writer.database(), stored.id, 0, -1);
  std::vector<Member> members = MembersOf(contact);
  if (!scope.isWhole) members = WithForeign(former, std::move(members));
  if (AreSameMembers(former, members)) return false;
  if (adds) return AppendMembers(writer.database(), stored.id, WithoutNames(members, former));
  ReplaceMembers(writer.database(), stored.id, members);
  return true;
}

Import::Import(std::shared_ptr<Core> core, bool isTrial)
    : run_(std::make_unique<Run>(std::move(core), isTrial)) {}
Import::~Import() = default;

void Import::SetScope(formats::SourceScope scope) { run_->scope = std::move(scope); }

HRESULT Import::Put(const formats::Contact& contact, PutResult* result, EntryKey* key) {
  return Answer([&] {
    EntryKey put{};
    try {
      *result = run_->Put(contact, &put);
    } catch (...) {
      run_->writer.Abandon();
      run_->isOpen = false;
      throw;
    }
    if (key != nullptr) *key = put;
  });
}

bool Import::SharesUid() const { return run_->sharesUid; }

bool Import::HasPending() const { return run_->isOpen; }

HRESULT Import::Commit() {
  return Answer([&] { run_->Commit(); });
}

}  // namespace book
