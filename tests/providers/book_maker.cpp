// book_maker PATH COUNT: makes a personal book with so many contacts and a list of the first of them.
#include <windows.h>

#include <shellapi.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "providers/book/store.h"

namespace {

formats::Contact MakeContact(int number) {
  formats::Contact contact;
  contact.name = "Person " + std::to_string(number);
  contact.uid = "person-" + std::to_string(number);
  contact.company = number % 3 == 0 ? "Nordhamn" : "";
  contact.numbers.resize(number % 10 == 0 ? 2 : 1);
  for (size_t i = 0; i < contact.numbers.size(); ++i) {
    contact.numbers[i].kind = formats::NumberKind::kFax;
    contact.numbers[i].place = i == 0 ? formats::Place::kWork : formats::Place::kHome;
    contact.numbers[i].text = "+49 40 " + std::to_string(number) + std::to_string(i);
  }
  return contact;
}

HRESULT Make(const wchar_t* path, int count) {
  std::shared_ptr<book::Store> store;
  std::unique_ptr<book::Import> import;
  HRESULT hr = book::Store::Open(path, {}, &store);
  if (SUCCEEDED(hr)) hr = store->BeginImport(false, &import);
  for (int i = 1; SUCCEEDED(hr) && i <= count; ++i) {
    book::PutResult result{};
    hr = import->Put(MakeContact(i), &result, nullptr);
  }
  formats::Contact list;
  list.isList = true;
  list.name = "Everybody";
  list.members.resize(2);
  list.members[0].uid = "person-1";
  list.members[1].uid = "person-2";
  book::PutResult result{};
  if (SUCCEEDED(hr)) hr = import->Put(list, &result, nullptr);
  return SUCCEEDED(hr) ? import->Commit() : hr;
}

}  // namespace

int main() {
  int count = 0;
  wchar_t** const arguments = CommandLineToArgvW(GetCommandLineW(), &count);
  const bool isMade =
      count == 3 && SUCCEEDED(Make(arguments[1], static_cast<int>(std::wcstol(arguments[2], nullptr, 10))));
  LocalFree(arguments);
  return isMade ? 0 : 1;
}
