// A new file is made under a name of its own and put in place when it is complete, so that an empty one is always a
// damaged one.
#include "providers/book/schema.h"

#include <windows.h>

#include "orv/orvcodes.h"
#include "providers/book/backup.h"
#include "providers/book/buckets.h"
#include "providers/book/change_log.h"
#include "providers/book/derived.h"
#include "providers/book/file.h"

namespace book {
namespace {

constexpr char kPragmas[] = "PRAGMA application_id = 0x4F525642; PRAGMA user_version = 3;";
static_assert(kApplicationId == 0x4F525642 && kFormat == 3, "the statement above says both");

// Rows without the engine's own number where they are found by their key alone.
constexpr char kTruth[] =
    "CREATE TABLE meta(name TEXT PRIMARY KEY, value TEXT) WITHOUT ROWID;CREATE TABLE entry(id INTEGER "
    "PRIMARY KEY, key BLOB NOT NULL UNIQUE, flags INTEGER NOT NULL, version INTEGER NOT NULL, created "
    "INTEGER NOT NULL, changed INTEGER NOT NULL, deleted INTEGER, name TEXT, digest "
    "INTEGER);CREATE INDEX entry_deleted ON entry(deleted) WHERE deleted IS NOT NULL;CREATE INDEX "
    "entry_digest ON entry(digest) WHERE digest IS NOT NULL;CREATE TABLE card(entry INTEGER PRIMARY KEY, "
    "text TEXT NOT NULL);CREATE TABLE member(list INTEGER, ordinal INTEGER, id INTEGER, key BLOB, number_key "
    "INTEGER, uid TEXT, foreign_id BLOB, number TEXT, email TEXT, name TEXT, rest TEXT, PRIMARY KEY(list, "
    "ordinal)) WITHOUT ROWID;CREATE TABLE change(seq INTEGER PRIMARY KEY, author INTEGER, key BLOB, what "
    "INTEGER);";

constexpr char kDerived[] =
    "CREATE TABLE arrangement(number INTEGER PRIMARY KEY, locale TEXT, version TEXT, used INTEGER);CREATE "
    "TABLE place(entry INTEGER, arrangement INTEGER, sort BLOB, PRIMARY KEY(entry, arrangement)) WITHOUT "
    "ROWID;CREATE TABLE row(sort BLOB, entry INTEGER, ordinal INTEGER, key BLOB, flags INTEGER, version "
    "INTEGER, name TEXT, last_first TEXT, company TEXT, department TEXT, title TEXT, email TEXT, number_key "
    "INTEGER, number TEXT, "
    "place INTEGER, preferred INTEGER, PRIMARY KEY(sort, entry, ordinal)) WITHOUT ROWID;CREATE TABLE "
    "bucket(sort BLOB, entry INTEGER, ordinal INTEGER, count INTEGER, PRIMARY KEY(sort, entry, ordinal)) "
    "WITHOUT ROWID;CREATE TABLE number(entry INTEGER, ordinal INTEGER, key INTEGER, kind INTEGER, text TEXT, "
    "digits TEXT, reversed TEXT, PRIMARY KEY(entry, ordinal)) WITHOUT ROWID;CREATE INDEX number_digits ON "
    "number(digits) WHERE digits <> '';CREATE INDEX number_reversed ON number(reversed) WHERE reversed <> "
    "'';CREATE TABLE mail(email TEXT, entry INTEGER, PRIMARY KEY(email, entry)) WITHOUT ROWID;CREATE VIRTUAL "
    "TABLE word USING fts5(name, company, department, content='', detail=none, columnsize=0, prefix='2 3', "
    "tokenize=\"unicode61 remove_diacritics 2\");";

constexpr char kDropDerived[] =
    "DROP TABLE IF EXISTS arrangement; DROP TABLE IF EXISTS place; DROP TABLE IF EXISTS row; DROP TABLE IF "
    "EXISTS bucket; DROP TABLE IF EXISTS number; DROP TABLE IF "
    "EXISTS word; DROP TABLE IF EXISTS mail;";

// Up to format 2 a file had one order, and entries their keys in it.
constexpr char kDropKeysOfEntries[] =
    "ALTER TABLE entry DROP COLUMN sort; DELETE FROM meta WHERE name IN ('locale', 'locale version')";

void MakeTables(Database& database, NameForm form, const std::string& uid) {
  Transaction transaction(database);
  database.Run(kPragmas);
  database.Run(kTruth);
  database.Run(kDerived);
  SetMeta(database, "uid", uid.empty() ? NewUid() : uid);
  AddArrangement(database, form);
  transaction.Commit();
}

void CountPositions(Database& database, const Arrangement& arrangement) {
  Buckets buckets(arrangement);
  buckets.Rebuild(database);
  buckets.Save(database);
}

void InsertNumber(Database& database, int64_t entry, int32_t ordinal, const Derived::Number& number) {
  Execute(database,
          "INSERT INTO number(entry, ordinal, key, kind, text, digits, reversed) VALUES(?, ?, ?, ?, ?, ?, ?)",
          entry, ordinal, number.key, static_cast<int>(number.kind), number.text, number.digits,
          number.reversed);
}

void InsertRow(Database& database, std::string_view sort, const RowOwner& owner, int32_t ordinal,
               const Derived& derived) {
  static const Derived::Number kNone;
  const Derived::Number& number =
      ordinal == kNoNumber ? kNone : derived.numbers[static_cast<std::size_t>(ordinal)];
  Execute(
      database,
      "INSERT INTO row(sort, entry, ordinal, key, flags, version, name, last_first, company, department, "
      "title, email, number_key, number, place, preferred) VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, "
      "?, ?)",
      BytesOf(sort), owner.entry, ordinal, owner.key, owner.flags, owner.version, derived.name,
      derived.lastFirst, derived.company, derived.department, derived.title, derived.email, number.key,
      number.text, static_cast<int>(number.place), number.isPreferred ? 1 : 0);
}

void RemoveMail(Database& database, int64_t entry) {
  Query row(database,
            "SELECT r.email FROM place p CROSS JOIN row r ON r.sort = p.sort AND r.entry = p.entry WHERE "
            "p.entry = ? LIMIT 1",
            entry);
  if (row.Next())
    Execute(database, "DELETE FROM mail WHERE email = ? AND entry = ?", Folded(row.Text(0)), entry);
}

// The index of words holds no texts: what is taken out of it has to be said again.
void RemoveWords(Database& database, int64_t entry) {
  Query row(database,
            "SELECT r.name, r.last_first, r.company, r.department FROM place p CROSS JOIN row r ON r.sort = "
            "p.sort AND r.entry = p.entry WHERE p.entry = ? LIMIT 1",
            entry);
  if (!row.Next()) return;
  const Sought sought = SoughtOf(row.Text(0), row.Text(1), row.Text(2), row.Text(3));
  Execute(database, "INSERT INTO word(word, rowid, name, company, department) VALUES('delete', ?, ?, ?, ?)",
          entry, sought.name, sought.company, sought.department);
}

}  // namespace

void AddDerivedRows(Database& database, std::span<const Arrangement> arrangements, const RowOwner& owner,
                    const Derived& derived) {
  int32_t ordinal = 0;
  for (const Derived::Number& number : derived.numbers)
    InsertNumber(database, owner.entry, ordinal++, number);
  for (std::size_t i = 0; i < arrangements.size(); ++i) {
    Execute(database, "INSERT INTO place(entry, arrangement, sort) VALUES(?, ?, ?)", owner.entry,
            int64_t{arrangements[i].number()}, BytesOf(derived.sorts[i]));
    for (const int32_t each : derived.ordinals) InsertRow(database, derived.sorts[i], owner, each, derived);
  }
  if (!derived.email.empty())
    Execute(database, "INSERT INTO mail(email, entry) VALUES(?, ?)", Folded(derived.email), owner.entry);
  const Sought sought = SoughtOf(derived.name, derived.lastFirst, derived.company, derived.department);
  Execute(database, "INSERT INTO word(rowid, name, company, department) VALUES(?, ?, ?, ?)", owner.entry,
          sought.name, sought.company, sought.department);
}

void RemoveDerivedRows(Database& database, int64_t entry) {
  RemoveMail(database, entry);
  RemoveWords(database, entry);
  Execute(database, "DELETE FROM row WHERE sort IN (SELECT sort FROM place WHERE entry = ?) AND entry = ?",
          entry, entry);
  Execute(database, "DELETE FROM place WHERE entry = ?", entry);
  Execute(database, "DELETE FROM number WHERE entry = ?", entry);
}

void ConfigureWriter(Database& database, int cacheKilobytes) {
  database.Run("PRAGMA synchronous = FULL; PRAGMA journal_size_limit = 16777216");
  database.Run(("PRAGMA cache_size = -" + std::to_string(cacheKilobytes)).c_str());
}

namespace {

// A new book before it has its name; what is not wanted any more goes in any case.
struct NewDraft {
  explicit NewDraft(const std::wstring& book)
      : path(book + L'.' + std::to_wstring(GetCurrentProcessId()) + L".new") {
    Remove();
  }
  ~NewDraft() { Remove(); }
  NewDraft(const NewDraft&) = delete;
  NewDraft& operator=(const NewDraft&) = delete;

  void Remove() const {
    for (const wchar_t* part : {L"", L"-journal"}) DeleteFileW((path + part).c_str());
  }

  const std::wstring path;
};

}  // namespace

void CreateBook(const std::wstring& path, NameForm form, const std::string& uid) {
  MakeFoldersFor(path);
  const NewDraft draft(path);
  const HRESULT made = Answer([&] {
    Database database(draft.path, Database::Access::kCreate);
    MakeTables(database, form, uid);
  });
  // The engine's last question is whether there is a file to be read.
  const bool isRefused = made == MAPI_E_NOT_FOUND && FileExists(path.substr(0, path.rfind(L'\\') + 1));
  if (FAILED(made)) Fail(isRefused ? MAPI_E_NO_ACCESS : made);
  if (MoveFileExW(draft.path.c_str(), path.c_str(), MOVEFILE_WRITE_THROUGH)) return;
  const DWORD error = GetLastError();
  if (!FileExists(path)) Fail(error == ERROR_ACCESS_DENIED ? MAPI_E_NO_ACCESS : MAPI_E_DISK_ERROR);
}

std::string MetaText(Database& database, const char* name) {
  Query query(database, "SELECT value FROM meta WHERE name = ?", std::string_view(name));
  return query.Next() ? std::string(query.Text(0)) : std::string();
}

void SetMeta(Database& database, const char* name, std::string_view value) {
  Execute(database, "INSERT OR REPLACE INTO meta(name, value) VALUES(?, ?)", std::string_view(name), value);
}

void RebuildDerived(Database& database, NameForm form) {
  database.Run(kDropDerived);
  database.Run(kDerived);
  const Arrangement arrangement = AddArrangement(database, form);
  Query entries(database,
                "SELECT e.id, e.key, e.flags, e.version, c.text FROM entry e JOIN card c ON c.entry = e.id "
                "WHERE e.deleted IS NULL");
  while (entries.Next()) {
    const auto flags = static_cast<uint32_t>(entries.Integer(2));
    const Derived derived = DeriveEntry(ContactOfCard(entries.Text(4)), flags, {&arrangement, 1});
    const RowOwner owner{entries.Integer(0), KeyOfBytes(entries.Blob(1)), flags,
                         static_cast<uint32_t>(entries.Integer(3))};
    Execute(database, "UPDATE entry SET name = ? WHERE id = ?", derived.name, owner.entry);
    AddDerivedRows(database, {&arrangement, 1}, owner, derived);
  }
  CountPositions(database, arrangement);
}

void Upgrade(Database& database, const std::wstring& path, NameForm form) {
  if (database.Number("PRAGMA user_version") == kFormat) return;
  // One program alone makes the copy, before it changes anything: the next one finds nothing left to do.
  Transaction transaction(database);
  const int64_t format = database.Number("PRAGMA user_version");
  if (format == kFormat) return;
  if (format > kFormat) Fail(MAPI_E_VERSION);
  if (format < kOldestFormat) Fail(MAPI_E_CORRUPT_STORE);
  Database former(path, Database::Access::kRead);
  CopyBook(former, path + L'.' + std::to_wstring(format) + L".bak");
  database.Run(kDropKeysOfEntries);
  RebuildDerived(database, form);
  database.Run(kPragmas);
  transaction.Commit();
}

}  // namespace book
