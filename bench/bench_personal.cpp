// The personal address book as a client has it: a container of 200,000 contacts through the library.
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "bench/harness.h"
#include "bench/personal_profile.h"
#include "orv/orvbase.hpp"
#include "orv/orvtags.h"
#include "tests/support/installation.h"
#include "tests/support/redirected_registry.h"

namespace orv::bench {
namespace {

constexpr std::size_t kWindow = 50;

class Book {
 public:
  explicit Book(std::size_t count) : count_(count) {
    installation_.CopyIn(L"xhtpaba.dll", L"xhtpaba.dll");
    const std::wstring path = installation_.Path(L"book.orvab");
    FillBook(path, count);
    StorePersonalProfile(path);
    Require(OrvOpen(0, L"P", MAPI_UNICODE, nullptr, nullptr, nullptr, book_.Put(), session_.Put(), 0) == S_OK,
            "OrvOpen");
    container_ = OpenContainer(*book_.Get());
  }
  ~Book() {
    container_.Reset();
    book_.Reset();
  }

  sdk::ComPtr<IMAPITable> OpenTable() {
    sdk::ComPtr<IMAPITable> table;
    Require(container_->GetContentsTable(MAPI_UNICODE, table.Put()) == S_OK, "no contents");
    return table;
  }
  static void Read(IMAPITable& table, ULONG atLeast = kWindow) {
    sdk::RowSet rows(&OrvFreeBuffer);
    Require(table.QueryRows(kWindow, 0, rows.Put()) == S_OK && rows->cRows >= atLeast, "no rows");
    for (ULONG i = 0; i < rows->cRows; ++i) OrvFreeBuffer(std::exchange(rows->aRow[i].lpProps, nullptr));
  }

  void Resolve(std::size_t names) {
    struct {
      ULONG count = 0;
      ADRENTRY entries[100]{};
    } list;
    struct {
      ULONG count = 0;
      ULONG flags[100]{};
    } flags;
    for (std::size_t i = 0; i < names; ++i) {
      const std::wstring name = NextName();
      void* row = nullptr;
      Require(OrvAllocateBuffer(sizeof(SPropValue), &row) == S_OK, "no memory");
      void* text = nullptr;
      const std::size_t size = (name.size() + 1) * sizeof(WCHAR);
      Require(OrvAllocateMore(static_cast<ULONG>(size), row, &text) == S_OK, "no memory");
      std::copy_n(name.c_str(), name.size() + 1, static_cast<WCHAR*>(text));
      auto* value = static_cast<SPropValue*>(row);
      value->ulPropTag = PR_DISPLAY_NAME;
      value->Value.lpszW = static_cast<WCHAR*>(text);
      list.entries[i] = {0, 1, value};
    }
    list.count = flags.count = static_cast<ULONG>(names);
    Require(container_->ResolveNames(nullptr, MAPI_UNICODE, reinterpret_cast<LPADRLIST>(&list),
                                     reinterpret_cast<LPFlagList>(&flags)) == S_OK,
            "not resolved");
    for (std::size_t i = 0; i < names; ++i) {
      Require(flags.flags[i] == MAPI_RESOLVED, "a name was not resolved");
      OrvFreeBuffer(list.entries[i].rgPropVals);
    }
  }

  std::wstring NextName() { return NameOfPerson(Scatter(++turn_) % count_); }
  // Of the row that stands somewhere.
  std::vector<BYTE> NextId(IMAPITable& table) {
    Require(table.SeekRow(BOOKMARK_BEGINNING, static_cast<LONG>(NextRow()), nullptr) == S_OK, "no row");
    sdk::RowSet rows(&OrvFreeBuffer);
    Require(table.QueryRows(1, 0, rows.Put()) == S_OK && rows->cRows == 1, "no rows");
    const SBinary id = sdk::ValueView(rows->aRow[0]).Binary(PR_ENTRYID);
    return {id.lpb, id.lpb + id.cb};
  }
  std::size_t NextRow() { return Scatter(++turn_) % (count_ - kWindow); }

 private:
  test::RedirectedRegistry registry_;
  test::Installation installation_;
  sdk::ComPtr<IOrvSession> session_;
  sdk::ComPtr<IAddrBook> book_;
  sdk::ComPtr<IABContainer> container_;
  const std::size_t count_;
  std::size_t turn_ = 0;
};

SRestriction Content(SPropValue& value, ULONG tag, const std::wstring& text) {
  value = {};
  value.ulPropTag = tag;
  value.Value.lpszW = const_cast<LPWSTR>(text.c_str());
  SRestriction content{};
  content.rt = RES_CONTENT;
  content.res.resContent = {FL_PREFIX | FL_IGNORECASE, tag, &value};
  return content;
}

SRestriction Equal(SPropValue& value, ULONG tag, const std::wstring& text) {
  SRestriction equal = Content(value, tag, text);
  equal.rt = RES_PROPERTY;
  equal.res.resProperty = {RELOP_EQ, tag, &value};
  return equal;
}

void MeasureClient(std::size_t count) {
  Book book(count);
  const std::string of = " of " + std::to_string(count);
  const auto milliseconds = [&](const char* what, double atMost, const Work& work) {
    Report(what + of, Measure(work) / 1e6, 1, "ms", atMost);
  };
  const std::size_t before = CommittedBytes();
  const auto table = book.OpenTable();
  std::size_t most = 0;
  for (std::size_t row = 0; row + kWindow <= count; row += kWindow) {
    Book::Read(*table.Get());
    most = std::max(most, CommittedBytes());
  }
  Report("memory that reading every row of a table takes more" + of,
         static_cast<double>(most - std::min(most, before)) / (1 << 20), 1, "MB", 20);
  SPropValue value;
  milliseconds("contents table opened,", 2, [&] { (void)book.OpenTable(); });
  milliseconds("contents table opened and its first 50 rows read,", 5,
               [&] { Book::Read(*book.OpenTable().Get()); });
  milliseconds("50 rows anywhere in a table", 10, [&] {
    Require(table->SeekRow(BOOKMARK_BEGINNING, static_cast<LONG>(book.NextRow()), nullptr) == S_OK, "no row");
    Book::Read(*table.Get());
  });
  milliseconds("FindRow by a beginning in a table", 2, [&] {
    const std::wstring name = book.NextName().substr(0, 14);
    SRestriction begins = Content(value, PR_DISPLAY_NAME, name);
    Require(table->FindRow(&begins, BOOKMARK_BEGINNING, 0) == S_OK, "not found");
  });
  milliseconds("table restricted to a word and read,", 2, [&] {
    const std::wstring word = book.NextName().substr(5, 12);
    SRestriction known = Content(value, PR_ANR, word);
    Require(table->Restrict(&known, 0) == S_OK, "not restricted");
    Book::Read(*table.Get(), 1);
  });
  const std::wstring common = L"nordhamn";
  milliseconds("table restricted to a word of all and read,", 500, [&] {
    SRestriction known = Content(value, PR_ANR, common);
    Require(table->Restrict(&known, 0) == S_OK, "not restricted");
    Book::Read(*table.Get());
  });
  milliseconds("table restricted to digits that all have and read,", 1000, [&] {
    SRestriction known = Content(value, PR_ANR, L"+46");
    Require(table->Restrict(&known, 0) == S_OK, "not restricted");
    Book::Read(*table.Get());
  });
  milliseconds("50 rows anywhere in it,", 10, [&] {
    Require(table->SeekRow(BOOKMARK_BEGINNING, static_cast<LONG>(book.NextRow()), nullptr) == S_OK, "no row");
    Book::Read(*table.Get());
  });
  milliseconds("FindRow by a beginning in it,", 10, [&] {
    const std::wstring name = book.NextName().substr(0, 14);
    SRestriction begins = Content(value, PR_DISPLAY_NAME, name);
    Require(table->FindRow(&begins, BOOKMARK_BEGINNING, 0) == S_OK, "not found");
  });
  Require(table->Restrict(nullptr, 0) == S_OK, "not all rows");
  const auto find = [&](SRestriction what, ULONG flags) {
    const BOOKMARK from = (flags & DIR_BACKWARD) != 0 ? BOOKMARK_END : BOOKMARK_BEGINNING;
    Require(table->FindRow(&what, from, flags) == S_OK, "not found");
  };
  const std::pair<const char*, ULONG> ways[] = {{"", 0}, {" backward", DIR_BACKWARD}};
  for (const auto& [way, flags] : ways) {
    const auto named = [&, text = std::string(way)](const char* what) { return what + text + " in a table"; };
    milliseconds(named("FindRow by a whole name").c_str(), 2, [&] {
      const std::wstring name = book.NextName();
      find(Equal(value, PR_DISPLAY_NAME, name), flags);
    });
    milliseconds(named("FindRow by a word").c_str(), 2, [&] {
      const std::wstring word = book.NextName().substr(5, 12);
      find(Content(value, PR_ANR, word), flags);
    });
    milliseconds(named("FindRow by identifier").c_str(), 2, [&] {
      const std::vector<BYTE> id = book.NextId(*table.Get());
      value = {};
      value.ulPropTag = PR_ENTRYID;
      value.Value.bin = {static_cast<ULONG>(id.size()), const_cast<BYTE*>(id.data())};
      SRestriction equal{};
      equal.rt = RES_PROPERTY;
      equal.res.resProperty = {RELOP_EQ, PR_ENTRYID, &value};
      find(equal, flags);
    });
  }
  milliseconds("FindRow by digits that all have in a table", 30,
               [&] { find(Content(value, PR_ANR, L"+46"), 0); });
  milliseconds("ResolveNames of 100 names", 40, [&] { book.Resolve(100); });
}

const Benchmark kPersonal("personal", [] {
  for (const std::size_t count : {std::size_t{1'000}, std::size_t{20'000}, std::size_t{200'000}})
    MeasureClient(count);
});

}  // namespace
}  // namespace orv::bench
