// book_writer MODE PATH FROM: changes a book for ever and says what it has been told is done, one line each, at once.
#include <windows.h>

#include <shellapi.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "providers/book/store.h"
#include "providers/book/text.h"

namespace {

// Ends when nobody listens any more.
void Say(int number) {
  if (std::printf("%d\n", number) < 0) std::exit(0);
}

[[noreturn]] void End(const char* what, HRESULT hr) {
  std::printf("failed %s %08lx\n", what, static_cast<unsigned long>(hr));
  std::exit(3);
}
void Require(const char* what, HRESULT hr) {
  if (hr != S_OK) End(what, hr);
}

formats::Contact Numbered(int number) {
  formats::Contact contact;
  contact.name = "Person " + std::to_string(number);
  contact.uid = "person-" + std::to_string(number);
  contact.numbers.resize(1);
  contact.numbers[0].text = "+1 555 " + std::to_string(number);
  contact.numbers[0].kind = formats::NumberKind::kFax;
  return contact;
}

void AddForEver(book::Store& store, int from) {
  for (int i = from;; ++i) {
    const HRESULT hr = store.Add(Numbered(i), nullptr, nullptr);
    // Done by one that was killed before it could say so.
    if (hr != MAPI_E_COLLISION) Require("add", hr);
    Say(i);
  }
}

// Every change says a greater number; the line of a change that was answered stands in the book or was written over.
void EditForEver(book::Store& store, int from) {
  for (int i = from;; ++i) {
    formats::Contact contact = Numbered(0);
    contact.title = std::to_string(i);
    const HRESULT hr = store.Change(book::KeyOfUid(contact.uid), contact, book::kAnyVersion, nullptr);
    if (hr == MAPI_E_NOT_FOUND) {
      Require("first", store.Add(contact, nullptr, nullptr));
    } else {
      Require("edit", hr);
    }
    Say(i);
  }
}

void ImportForEver(book::Store& store, int from) {
  constexpr int kRecords = 200;
  for (int i = from;;) {
    std::unique_ptr<book::Import> import;
    Require("import", store.BeginImport(false, &import));
    for (int end = i + kRecords; i < end; ++i) {
      book::PutResult result{};
      Require("put", import->Put(Numbered(i), &result, nullptr));
    }
    Require("commit", import->Commit());
    Say(i - 1);
  }
}

int Run(const std::string& mode, const std::wstring& path, int from) {
  std::shared_ptr<book::Store> store;
  Require("open", book::Store::Open(path, {}, &store));
  std::printf("open\n");
  if (mode == "add") AddForEver(*store, from);
  if (mode == "edit") EditForEver(*store, from);
  if (mode == "import") ImportForEver(*store, from);
  if (mode == "once") Require("add", store->Add(Numbered(from), nullptr, nullptr));
  if (mode == "drop") {
    const book::RowKey row{book::KeyOfUid(Numbered(from).uid), 0};
    Require("remove", store->Remove({&row, 1}, nullptr));
  }
  return 0;  // "open": that was all
}

}  // namespace

int main() {
  std::setvbuf(stdout, nullptr, _IONBF, 0);
  int count = 0;
  wchar_t** arguments = CommandLineToArgvW(GetCommandLineW(), &count);
  if (count != 4) return 2;
  return Run(book::ToUtf8(arguments[1]), arguments[2], _wtoi(arguments[3]));
}
