// The engine's own tokenizer is asked, so that what is looked for is what was stored.
#include "providers/book/tokens.h"

#include <sqlite3.h>

#include <new>

#include "orv/orvcodes.h"

namespace book {
namespace {

fts5_api* Api(Database& database) {
  fts5_api* api = nullptr;
  sqlite3_stmt* statement = nullptr;
  Require(database.get(), sqlite3_prepare_v2(database.get(), "SELECT fts5(?1)", -1, &statement, nullptr));
  sqlite3_bind_pointer(statement, 1, &api, "fts5_api_ptr", nullptr);
  sqlite3_step(statement);
  sqlite3_finalize(statement);
  if (api == nullptr) Fail(MAPI_E_CALL_FAILED);
  return api;
}

class Tokenizer {
 public:
  explicit Tokenizer(Database& database) : database_(database) {
    fts5_api* api = Api(database);
    void* context = nullptr;
    Require(database.get(), api->xFindTokenizer(api, "unicode61", &context, &methods_));
    const char* arguments[] = {"remove_diacritics", "2"};
    Require(database.get(), methods_.xCreate(context, arguments, 2, &tokenizer_));
  }
  ~Tokenizer() { methods_.xDelete(tokenizer_); }
  Tokenizer(const Tokenizer&) = delete;
  Tokenizer& operator=(const Tokenizer&) = delete;

  void Run(std::string_view text, std::string* match) {
    Require(database_.get(), methods_.xTokenize(tokenizer_, match, FTS5_TOKENIZE_QUERY, text.data(),
                                                static_cast<int>(text.size()), TakeToken));
  }

 private:
  // Tokens hold letters and digits only: nothing in them ends the quotes.
  static int TakeToken(void* match, int, const char* token, int size, int, int) {
    try {
      *static_cast<std::string*>(match) += '"' + std::string(token, static_cast<std::size_t>(size)) + "\"* ";
      return SQLITE_OK;
    } catch (const std::bad_alloc&) {
      return SQLITE_NOMEM;
    }
  }

  Database& database_;
  fts5_tokenizer methods_{};
  Fts5Tokenizer* tokenizer_ = nullptr;
};

}  // namespace

std::string MatchOfWords(Database& database, std::string_view words) {
  std::string match;
  if (!words.empty()) Tokenizer(database).Run(words, &match);
  return match;
}

}  // namespace book
