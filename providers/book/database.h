// Owners over the database engine: a connection, and statements that are prepared once. A failing call is thrown as the
// code that the book answers with.
#pragma once

#include <windows.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>

struct sqlite3;
struct sqlite3_stmt;

namespace book {

// What every public call turns into its result.
struct Failure {
  HRESULT code;
};
[[noreturn]] void Fail(HRESULT code);

// The boundary of public calls; memory exhaustion passes.
template <class Body>
HRESULT Answer(Body&& body) {
  try {
    body();
    return S_OK;
  } catch (const Failure& failure) {
    return failure.code;
  }
}

using Bytes = std::span<const uint8_t>;
inline Bytes BytesOf(std::string_view text) {
  return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

// Milliseconds that a connection waits for another program before it is MAPI_E_BUSY.
inline constexpr ULONGLONG kPatience = 5000;

class Database {
 public:
  enum class Access { kRead, kWrite, kCreate, kReadImmutable };

  Database(const std::wstring& path, Access access);
  ~Database();
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  void SetPatience(ULONGLONG milliseconds) { waiting_->patience = milliseconds; }

  // Statements without parameters and results, several at once.
  void Run(const char* sql);
  int64_t Number(const char* sql);  // the first column of the first row; 0 without one

  bool IsInTransaction() const;
  // Nothing where none is open; never fails.
  void Rollback() noexcept;
  int64_t LastId() const;
  int64_t ChangedRows() const;
  sqlite3* get() const { return handle_; }

 private:
  friend class Query;
  sqlite3_stmt* Prepare(const char* sql);
  sqlite3_stmt* Borrow(const char* sql);

  struct Waiting {
    ULONGLONG since = 0, patience = kPatience;
  };
  static int WaitForOthers(void* context, int tries);

  sqlite3* handle_ = nullptr;
  std::unique_ptr<Waiting> waiting_;
  std::unordered_map<const char*, sqlite3_stmt*>
      statements_;  // by the address of their text, which is a literal
};

// Checks a result of the engine on this connection.
void Require(sqlite3* handle, int result);

// One run of a statement, of which only one goes on at a time; `sql` is a literal. What is bound is copied unless Execute
// runs it at once.
class Query {
 public:
  template <class... Arguments>
  explicit Query(Database& database, const char* sql, const Arguments&... arguments)
      : Query(database, sql, Binding::kCopies) {
    BindAll(arguments...);
  }
  ~Query();
  Query(const Query&) = delete;
  Query& operator=(const Query&) = delete;

  bool Next();
  int64_t Integer(int column) const;
  std::string_view Text(int column) const;  // until Next
  Bytes Blob(int column) const;             // until Next
  bool IsNull(int column) const;

 private:
  enum class Binding { kCopies, kRefers };
  template <class... Arguments>
  friend void Execute(Database& database, const char* sql, const Arguments&... arguments);

  Query(Database& database, const char* sql, Binding binding);
  template <class... Arguments>
  void BindAll(const Arguments&... arguments) {
    [[maybe_unused]] int index = 0;
    (Bind(++index, arguments), ...);
  }
  void Bind(int index, int64_t value);
  void Bind(int index, int value) { Bind(index, int64_t{value}); }
  void Bind(int index, uint32_t value) { Bind(index, int64_t{value}); }
  void Bind(int index, std::string_view text);
  void Bind(int index, const std::string& text) { Bind(index, std::string_view(text)); }
  void Bind(int index, Bytes bytes);
  void Bind(int index, const std::array<uint8_t, 16>& key) { Bind(index, Bytes(key)); }
  void (*Lifetime() const)(void*);

  sqlite3_stmt* const statement_;
  sqlite3* const handle_;
  const Binding binding_;
};

// Runs a statement for what it does. Without copies: the arguments live until it is done.
template <class... Arguments>
void Execute(Database& database, const char* sql, const Arguments&... arguments) {
  Query query(database, sql, Query::Binding::kRefers);
  query.BindAll(arguments...);
  while (query.Next()) {
  }
}

// BEGIN IMMEDIATE to Commit; without one nothing has happened.
class Transaction {
 public:
  explicit Transaction(Database& database);
  ~Transaction() { database_.Rollback(); }
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  void Commit() { database_.Run("COMMIT"); }

 private:
  Database& database_;
};

}  // namespace book
