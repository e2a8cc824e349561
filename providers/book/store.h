// A local book: one file, any number of sessions, threads and processes. What a call acknowledges is in the file: a
// process that is killed loses nothing. Codes of every call:
//   MAPI_E_NOT_FOUND        no such file or entry             MAPI_E_BUSY             another holds the file for long
//   MAPI_E_INVALID_OBJECT   a folder, or no book              MAPI_E_NO_ACCESS        may not be read, or not be written
//   MAPI_E_CORRUPT_STORE    the book is damaged               MAPI_E_NOT_ENOUGH_DISK  no room
//   MAPI_E_VERSION          made by a newer program           MAPI_E_DISK_ERROR       reading or writing failed
//   MAPI_E_STRING_TOO_LONG  the path is too long
// Memory exhaustion is thrown, nothing else is.
#pragma once

#include <windows.h>

#include <memory>
#include <span>

#include "formats/source_scope.h"
#include "orv/orvcodes.h"
#include "providers/book/types.h"

namespace book {

// What a code of opening or of a call says to a person, and what to do about it.
const char* Sentence(HRESULT code);

struct Options {
  bool create = true;       // a missing file is made, with its folders
  bool isReadOnly = false;  // also where nobody may write to the file
  bool keepsBackups = true;
  NameForm names = NameForm::kAsWritten;  // of the looks of this store
  // Computers share the file, as they do on every remote drive: nothing is kept in memory that only one of them has.
  bool isRemote = false;
};

// Is told of changes of this process when they are done and of others' when Store::Poll sees them, without a lock held
// and on the thread of that call.
class Listener {
 public:
  virtual ~Listener() = default;
  virtual void BookChanged(const Changes& changes) = 0;
};

class Core;
class Lookout;

// A consistent look at the book, in its default order: by name, as it is listed and as the user's language sorts, then by
// age of the entry, then by number. Used by one thread at a time. Outlives its Store.
class View {
 public:
  explicit View(std::unique_ptr<Lookout> lookout);
  ~View();
  View(const View&) = delete;
  View& operator=(const View&) = delete;

  // Looks anew. `changed` (may be null): whether anything may be different from before.
  HRESULT Refresh(bool* changed);

  // What was changed between this look and a newer one at the same book.
  HRESULT ChangesUntil(const View& newer, Changes* changes) const;
  // The number of the last change that is seen, as Store::LastChange tells it.
  int64_t LastChange() const;
  // Whether rows are read as they were when the look was taken. Of a book that computers share only their order is.
  bool IsSnapshot() const;

  HRESULT Count(uint64_t* rows);
  // At most `count` rows from position `first` on; less only at the end.
  HRESULT Window(uint64_t first, std::size_t count, std::vector<Row>* rows);
  HRESULT Refs(uint64_t first, std::size_t count, std::vector<RowRef>* refs);
  // One row for each reference, in their order.
  HRESULT Rows(std::span<const RowRef> refs, std::vector<Row>* rows);
  // The row that the key means; a number that is gone is MAPI_E_NOT_FOUND.
  HRESULT RowOf(const RowKey& key, Row* row);
  // Rows before this one. MAPI_E_NOT_FOUND: not in the book any more.
  HRESULT PositionOf(RowRef ref, uint64_t* position);
  // The rows of an entry, in their order; none where it has none.
  HRESULT ShownOf(const EntryKey& key, std::vector<ShownRow>* rows);

  // The rows whose names begin with `prefix`, without regard to case and accents, are [first, end).
  HRESULT SeekName(std::string_view prefix, uint64_t* first, uint64_t* end);
  // Rows with exactly this name but for case, as it is written or listed, at most `limit`.
  HRESULT FindName(std::string_view name, std::size_t limit, std::vector<RowRef>* refs);
  // The same, the rows themselves; of so many that nobody has more namesakes on purpose.
  HRESULT Namesakes(std::string_view name, std::vector<Row>* rows);

  // All in default order. Words: each begins a word of name, company or department, accents aside; none finds nothing.
  HRESULT FindWords(std::string_view words, std::size_t limit, std::vector<RowRef>* refs);
  // Rows one of whose contact's numbers begins or ends with these digits; other characters do not matter. A fax number
  // finds its own row, any other all rows of its contact.
  HRESULT FindDigits(std::string_view digits, std::size_t limit, std::vector<RowRef>* refs);
  HRESULT FindText(Column column, Match match, std::string_view text, std::vector<RowRef>* refs);
  // All rows in another order; equal ones stay in the default one. No column is the default order itself.
  HRESULT Order(std::span<const SortColumn> columns, std::vector<RowRef>* refs);

  HRESULT Read(const EntryKey& key, Entry* entry);
  HRESULT MemberCount(const EntryKey& list, uint64_t* count);
  HRESULT Members(const EntryKey& list, uint64_t first, std::size_t count, std::vector<Member>* members);

 private:
  std::unique_ptr<Lookout> lookout_;
};

// A large change in transactions of about ten thousand records. Other writers wait in between only. Used by one thread.
// What is not committed when it goes is not in the book.
class Import {
 public:
  Import(std::shared_ptr<Core> core, bool isTrial);
  ~Import();
  Import(const Import&) = delete;
  Import& operator=(const Import&) = delete;

  // What the records that follow can say; everything unless set. An entry keeps what they cannot.
  void SetScope(formats::SourceScope scope);
  // Which entry a record belongs to: that of its UID; else one of the same name with one same number; else, without a
  // number, one that says the same. A second record for an entry adds to it what is not there yet. `key` may be null.
  // kRejected: no name, or over four million bytes.
  HRESULT Put(const formats::Contact& contact, PutResult* result, EntryKey* key);
  // Whether the last record had the UID of an earlier one of these that has another name: both are one entry now.
  bool SharesUid() const;
  // Whether some of what was put is not in the file yet; a failing Put or Commit loses it.
  bool HasPending() const;
  // What was put is in the file; members that a list names by nothing but a name are looked up here.
  HRESULT Commit();

 private:
  struct Run;
  std::unique_ptr<Run> run_;
};

inline constexpr uint32_t kAnyVersion = 0;

class Store {
 public:
  Store(std::shared_ptr<Core> core, NameForm names);
  // The same book, whose changes wait no longer than so many milliseconds for another program.
  Store(const Store& other, ULONGLONG patience);

  // Sessions of a process that name the same file share what they need. `store` is set on success only.
  static HRESULT Open(const std::wstring& path, const Options& options, std::shared_ptr<Store>* store);

  // Of the book, for ever and wherever the file lies.
  const EntryKey& Uid() const;
  const std::wstring& Path() const;
  bool IsReadOnly() const;

  HRESULT OpenView(std::unique_ptr<View>* view);

  // A look of its own each.
  HRESULT Read(const EntryKey& key, Entry* entry);
  HRESULT Deleted(std::vector<DeletedEntry>* entries);

  // `key` and `version` may be null. A UID that an entry has is MAPI_E_COLLISION; a deleted entry comes back as this.
  HRESULT Add(const formats::Contact& contact, EntryKey* key, uint32_t* version);
  // The UID and whether it is a list stay as they are. `expected` is the version that was read, or kAnyVersion;
  // otherwise MAPI_E_OBJECT_CHANGED, and MAPI_E_OBJECT_DELETED where the entry is gone.
  HRESULT Change(const EntryKey& key, const formats::Contact& contact, uint32_t expected, uint32_t* version);
  // In one transaction. A row of a contact with further fax numbers takes its number along, any other the entry.
  // `missing` (may be null): which of the rows, by number, were not there.
  HRESULT Remove(std::span<const RowKey> rows, std::vector<std::size_t>* missing);
  HRESULT Restore(const EntryKey& key);

  // `members` need key, foreign, number or email and a name; ids are given out. One that the list has is left out.
  // MAPI_E_FOLDER_CYCLE: the list would be in itself, at once or through other lists. So are Add and Change.
  HRESULT AddMembers(const EntryKey& list, std::span<const Member> members);
  HRESULT RemoveMembers(const EntryKey& list, std::span<const uint32_t> ids);
  // The member then stands at `position`.
  HRESULT MoveMember(const EntryKey& list, uint32_t id, uint64_t position);

  // A trial answers as the import would and leaves nothing.
  HRESULT BeginImport(bool isTrial, std::unique_ptr<Import>* import);

  // Told for as long as it lives.
  void Listen(const std::shared_ptr<Listener>& listener);
  // Looks for changes of other processes; some tenths of a millisecond without any.
  HRESULT Poll();
  // The number of the last change of anybody.
  HRESULT LastChange(int64_t* number);
  // What is due once a day, and nothing on every other call: the backup, and the end of entries deleted a month ago. For
  // a worker of the caller's: a backup copies the whole file.
  HRESULT Tend();

 private:
  const std::shared_ptr<Core> core_;
  const NameForm names_;
  const ULONGLONG patience_;
};

// Gives back what serves all books of the module. Called when it is unloaded, after the last of them has gone.
void EndStores() noexcept;

// What is wrong with a book, or was lost of it.
enum class Fault : uint8_t {
  kFile,        // the engine says so
  kTables,      // cannot be gone through
  kCard,        // cannot be read
  kIdentifier,  // is not that of the card, and so on
  kListing,
  kNumbers,
  kRows,
  kMails,
  kPositions,
  kUncounted,  // what else is lost is not known
};
struct Finding {
  Fault fault = Fault::kFile;
  int64_t entry = 0;         // its number in the file; 0: it concerns the file
  std::string name;          // of the entry, as far as it can be read
  std::string text, advice;  // what is wrong and what to do, a sentence each
};

struct Health {
  HRESULT code = S_OK;  // of opening, or MAPI_E_CORRUPT_STORE
  uint64_t contacts = 0, lists = 0, rows = 0, deleted = 0;
  uint64_t damaged = 0;           // entries whose card cannot be read
  std::vector<Finding> findings;  // at most a hundred; none in a healthy book
};
// Reads the whole file, changes nothing.
HRESULT Check(const std::wstring& path, Health* health);

struct Salvage {
  uint64_t saved = 0, lost = 0;
  bool isMoreLost = false;        // perhaps: tables that would tell cannot be read
  std::vector<Finding> findings;  // what was lost, as far as it is known
};
// Writes what can be read of `damaged` into a new book at `path`, which must not be there (MAPI_E_NO_ACCESS).
// MAPI_E_CORRUPT_DATA: nothing could be saved. After a failure there is no new book.
HRESULT Repair(const std::wstring& damaged, const std::wstring& path, Salvage* salvage);

}  // namespace book
