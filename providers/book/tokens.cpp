// The engine's own tokenizer is asked, so that what is looked for is what was stored.
#include "providers/book/tokens.h"

#include <sqlite3.h>

#include <new>

#include "orv/orvcodes.h"
#include "providers/book/text.h"

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

int TakeToken(void* words, int, const char* token, int size, int, int) {
  try {
    static_cast<std::vector<std::string>*>(words)->emplace_back(token, static_cast<std::size_t>(size));
    return SQLITE_OK;
  } catch (const std::bad_alloc&) {
    return SQLITE_NOMEM;
  }
}

}  // namespace

struct Tokenizer::State {
  fts5_tokenizer methods{};
  Fts5Tokenizer* tokenizer = nullptr;
};

Tokenizer::Tokenizer(Database& database) : database_(database), state_(std::make_unique<State>()) {
  fts5_api* api = Api(database);
  void* context = nullptr;
  Require(database.get(), api->xFindTokenizer(api, "unicode61", &context, &state_->methods));
  const char* arguments[] = {"remove_diacritics", "2"};
  Require(database.get(), state_->methods.xCreate(context, arguments, 2, &state_->tokenizer));
}

Tokenizer::~Tokenizer() { state_->methods.xDelete(state_->tokenizer); }

std::vector<std::string> Tokenizer::Words(std::string_view text) {
  std::vector<std::string> words;
  const int size = static_cast<int>(text.size());
  Require(database_.get(), state_->methods.xTokenize(state_->tokenizer, &words, FTS5_TOKENIZE_QUERY,
                                                     text.data(), size, TakeToken));
  return words;
}

// Words hold letters and digits only: nothing in them ends the quotes.
std::string MatchOf(const std::vector<std::string>& words) {
  std::string match;
  for (const std::string& each : words) match += '"' + each + "\"* ";
  return match;
}

std::string MatchOfWords(Database& database, std::string_view text) {
  return text.empty() ? std::string() : MatchOf(Tokenizer(database).Words(PlainLetters(text)));
}

}  // namespace book
