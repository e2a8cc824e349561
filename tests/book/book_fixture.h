// A folder for the books of one test, and the short way to what tests look at.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "providers/book/store.h"

namespace book::test {

using formats::Contact;
using formats::NumberKind;
using formats::Place;

formats::ContactNumber Fax(const std::string& text, Place place = Place::kNone);
formats::ContactNumber Phone(const std::string& text);
Contact Person(const std::string& name, std::vector<formats::ContactNumber> numbers = {},
               const std::string& uid = {});

class BookTest : public testing::Test {
 protected:
  BookTest();
  ~BookTest() override;

  std::wstring PathOf(const std::wstring& name) const { return folder_ + L"\\" + name; }
  std::shared_ptr<Store> OpenBook(const std::wstring& name = L"a.orvab", Options options = {}) const;
  HRESULT TryOpen(const std::wstring& name, Options options = {}) const;
  void WriteFile(const std::wstring& name, const std::string& bytes) const;
  std::string ReadFile(const std::wstring& name) const;
  // Runs statements on the closed file.
  void Tamper(const std::wstring& name, const std::string& sql) const;
  int64_t NumberIn(const std::wstring& name, const std::string& sql) const;
  // As a format before this one left it: nothing that is made of cards is of any use.
  void MakeOlder(const std::wstring& name, int format = 1) const;

 private:
  std::wstring folder_;
};

EntryKey Add(Store& store, const Contact& contact);
std::unique_ptr<View> Look(Store& store);
std::vector<Row> AllRows(View& view);
// "name|number" of each row.
std::vector<std::string> Texts(const std::vector<Row>& rows);
std::vector<std::string> TextsOf(Store& store);
std::vector<std::string> TextsOf(View& view, const std::vector<RowRef>& refs);

using Lines = std::vector<std::string>;

}  // namespace book::test
