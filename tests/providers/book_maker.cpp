// book_maker PATH COUNT: makes a personal book with so many contacts and a list of the first of them.
// book_maker add PATH: adds a contact, and sets the event "added".
// book_maker title PATH: gives the first entry a job title, and sets the event "titled".
// book_maker hold PATH: opens the file for itself alone, sets the event "held", and stays.
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

void Say(const wchar_t* what) {
  const HANDLE event = OpenEventW(EVENT_MODIFY_STATE, FALSE, what);
  SetEvent(event);
  CloseHandle(event);
}

HRESULT AddOne(const wchar_t* path) {
  std::shared_ptr<book::Store> store;
  HRESULT hr = book::Store::Open(path, {}, &store);
  if (SUCCEEDED(hr)) hr = store->Add(MakeContact(1), nullptr, nullptr);
  if (SUCCEEDED(hr)) Say(L"added");
  return hr;
}

HRESULT Title(const wchar_t* path) {
  std::shared_ptr<book::Store> store;
  std::unique_ptr<book::View> view;
  std::vector<book::Row> rows;
  book::Entry entry;
  HRESULT hr = book::Store::Open(path, {}, &store);
  if (SUCCEEDED(hr)) hr = store->OpenView(&view);
  if (SUCCEEDED(hr)) hr = view->Window(0, 1, &rows);
  if (SUCCEEDED(hr)) hr = view->Read(rows.at(0).key.entry, &entry);
  entry.contact.title = "theirs";
  if (SUCCEEDED(hr)) hr = store->Change(entry.key, entry.contact, entry.version, nullptr);
  if (SUCCEEDED(hr)) Say(L"titled");
  return hr;
}

HRESULT Hold(const wchar_t* path) {
  const HANDLE file = CreateFileW(path, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                  FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return MAPI_E_NO_ACCESS;
  Say(L"held");
  Sleep(INFINITE);
  return S_OK;
}

HRESULT Run(const std::wstring& first, const wchar_t* second) {
  if (first == L"add") return AddOne(second);
  if (first == L"title") return Title(second);
  if (first == L"hold") return Hold(second);
  return Make(first.c_str(), static_cast<int>(std::wcstol(second, nullptr, 10)));
}

}  // namespace

int main() {
  int count = 0;
  wchar_t** const arguments = CommandLineToArgvW(GetCommandLineW(), &count);
  const bool isDone = count == 3 && SUCCEEDED(Run(arguments[1], arguments[2]));
  LocalFree(arguments);
  return isDone ? 0 : 1;
}
