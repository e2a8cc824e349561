// Connections wait for each other by short naps, so that a writer gets its turn between the transactions of a long
// import.
#include "providers/book/database.h"

#include <sqlite3.h>

#include <new>

#include "orv/orvcodes.h"
#include "providers/book/engine_memory.h"
#include "providers/book/store.h"
#include "providers/book/text.h"

namespace book {
namespace {

constexpr DWORD kNapMilliseconds = 3;

// A file that another program has opened for itself alone, or that may not be touched, says so by the system's code.
HRESULT CodeOfSystemError(int error, HRESULT otherwise) {
  switch (error) {
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
      return MAPI_E_BUSY;
    case ERROR_ACCESS_DENIED:
    case ERROR_WRITE_PROTECT:
      return MAPI_E_NO_ACCESS;
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
      return MAPI_E_NOT_ENOUGH_DISK;
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
      return MAPI_E_NOT_FOUND;
    default:
      return otherwise;
  }
}

HRESULT CodeOf(sqlite3* handle, int result) {
  switch (result & 0xFF) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
    case SQLITE_PROTOCOL:
      return MAPI_E_BUSY;
    case SQLITE_READONLY:
    case SQLITE_PERM:
    case SQLITE_AUTH:
      return MAPI_E_NO_ACCESS;
    case SQLITE_CORRUPT:
      return MAPI_E_CORRUPT_STORE;
    case SQLITE_NOTADB:
      return MAPI_E_INVALID_OBJECT;
    case SQLITE_FULL:
      return MAPI_E_NOT_ENOUGH_DISK;
    case SQLITE_TOOBIG:
      return MAPI_E_TOO_BIG;
    case SQLITE_CANTOPEN:
      return CodeOfSystemError(sqlite3_system_errno(handle), MAPI_E_NO_ACCESS);
    case SQLITE_IOERR:
      return CodeOfSystemError(sqlite3_system_errno(handle), MAPI_E_DISK_ERROR);
    // A table or column that is not there: the schema is not ours any more.
    case SQLITE_ERROR:
    case SQLITE_SCHEMA:
      return MAPI_E_CORRUPT_STORE;
    default:
      return MAPI_E_CALL_FAILED;
  }
}

int FlagsOf(Database::Access access) {
  switch (access) {
    case Database::Access::kWrite:
      return SQLITE_OPEN_READWRITE;
    case Database::Access::kCreate:
      return SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
    case Database::Access::kRead:
      return SQLITE_OPEN_READONLY;
    default:
      return SQLITE_OPEN_READONLY | SQLITE_OPEN_URI;
  }
}

// As a URI: a file that nobody writes to, on a medium where nothing can be locked.
std::string ImmutableUri(const std::wstring& path) {
  std::string uri = "file:///";
  for (const char c : ToUtf8(path)) {
    if (c == '%' || c == '?' || c == '#') {
      constexpr char kHex[] = "0123456789ABCDEF";
      uri += {'%', kHex[static_cast<uint8_t>(c) >> 4], kHex[c & 0xF]};
    } else {
      uri += c == '\\' ? '/' : c;
    }
  }
  return uri + "?immutable=1";
}

}  // namespace

void Fail(HRESULT code) { throw Failure{code}; }

void Require(sqlite3* handle, int result) {
  if (result == SQLITE_OK || result == SQLITE_ROW || result == SQLITE_DONE) return;
  if ((result & 0xFF) == SQLITE_NOMEM) throw std::bad_alloc();
  Fail(CodeOf(handle, result));
}

// The engine keeps locks of its own, which the system has made something for.
void EndStores() noexcept { sqlite3_shutdown(); }

// `context` is what the connection keeps of its waiting.
int Database::WaitForOthers(void* context, int tries) {
  auto* waiting = static_cast<Waiting*>(context);
  const ULONGLONG now = GetTickCount64();
  if (tries == 0) waiting->since = now;
  if (now - waiting->since >= waiting->patience) return 0;
  Sleep(kNapMilliseconds);
  return 1;
}

Database::Database(const std::wstring& path, Access access) : waiting_(std::make_unique<Waiting>()) {
  GiveEngineMemory();
  const std::string name = access == Access::kReadImmutable ? ImmutableUri(path) : ToUtf8(path);
  const int result = sqlite3_open_v2(name.c_str(), &handle_, FlagsOf(access), nullptr);
  if (result == SQLITE_OK) {
    sqlite3_busy_handler(handle_, WaitForOthers, waiting_.get());
    return;
  }
  const HRESULT code = handle_ == nullptr ? MAPI_E_NOT_ENOUGH_MEMORY : CodeOf(handle_, result);
  sqlite3_close(handle_);
  Fail(code);
}

Database::~Database() {
  for (const auto& each : statements_) sqlite3_finalize(each.second);
  sqlite3_close(handle_);
}

void Database::Run(const char* sql) {
  Require(handle_, sqlite3_exec(handle_, sql, nullptr, nullptr, nullptr));
}

int64_t Database::Number(const char* sql) {
  Query query(*this, sql);
  return query.Next() ? query.Integer(0) : 0;
}

bool Database::IsInTransaction() const { return sqlite3_get_autocommit(handle_) == 0; }

void Database::Rollback() noexcept {
  if (IsInTransaction()) sqlite3_exec(handle_, "ROLLBACK", nullptr, nullptr, nullptr);
}

int64_t Database::LastId() const { return sqlite3_last_insert_rowid(handle_); }

int64_t Database::ChangedRows() const { return sqlite3_changes64(handle_); }

sqlite3_stmt* Database::Prepare(const char* sql) {
  sqlite3_stmt* statement = nullptr;
  Require(handle_, sqlite3_prepare_v3(handle_, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr));
  return statement;
}

sqlite3_stmt* Database::Borrow(const char* sql) {
  sqlite3_stmt*& statement = statements_[sql];
  if (statement == nullptr) statement = Prepare(sql);
  return statement;
}

Query::Query(Database& database, const char* sql, Binding binding)
    : statement_(database.Borrow(sql)), handle_(database.get()), binding_(binding) {}

Query::~Query() {
  sqlite3_reset(statement_);
  sqlite3_clear_bindings(statement_);
}

bool Query::Next() {
  const int result = sqlite3_step(statement_);
  Require(handle_, result);
  return result == SQLITE_ROW;
}

int64_t Query::Integer(int column) const { return sqlite3_column_int64(statement_, column); }

std::string_view Query::Text(int column) const {
  const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
  if (text == nullptr) return {};
  return {text, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))};
}

Bytes Query::Blob(int column) const {
  const auto* bytes = static_cast<const uint8_t*>(sqlite3_column_blob(statement_, column));
  return {bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))};
}

bool Query::IsNull(int column) const { return sqlite3_column_type(statement_, column) == SQLITE_NULL; }

void Query::Bind(int index, int64_t value) { Require(handle_, sqlite3_bind_int64(statement_, index, value)); }

void Query::Bind(int index, std::string_view text) {
  // A null pointer would bind NULL.
  const char* start = text.data() == nullptr ? "" : text.data();
  Require(handle_, sqlite3_bind_text64(statement_, index, start, text.size(), Lifetime(), SQLITE_UTF8));
}

void Query::Bind(int index, Bytes bytes) {
  const void* start = bytes.data() == nullptr ? "" : static_cast<const void*>(bytes.data());
  Require(handle_, sqlite3_bind_blob64(statement_, index, start, bytes.size(), Lifetime()));
}

void (*Query::Lifetime() const)(void*) {
  return binding_ == Binding::kCopies ? SQLITE_TRANSIENT : SQLITE_STATIC;
}

Transaction::Transaction(Database& database) : database_(database) { database_.Run("BEGIN IMMEDIATE"); }

}  // namespace book
