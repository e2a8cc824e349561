// What foreign code hands out, believed in nothing.
#include <algorithm>
#include <functional>
#include <new>

#include "orv/orvbase.hpp"
#include "props/table_reader.h"
#include "tests/props/samples.h"

namespace orv::test {
namespace {

constexpr TagArray kColumns{PR_ENTRYID, PR_DISPLAY_NAME_W};
using Answer = std::function<HRESULT(LPSRowSet*)>;
using Values = std::vector<SPropValue>;

// Answers reads as it is told, one after another; from the last answer on there is nothing more.
class ToldTable final : public sdk::RefusingTable {
 public:
  explicit ToldTable(std::vector<Answer> answers) : answers_(std::move(answers)) {}
  HRESULT STDMETHODCALLTYPE SetColumns(LPSPropTagArray tags, ULONG) override {
    return List(tags) == List(kColumns.Get()) ? S_OK : MAPI_E_CALL_FAILED;
  }
  HRESULT STDMETHODCALLTYPE SeekRow(BOOKMARK origin, LONG, LONG*) override {
    return origin == BOOKMARK_BEGINNING ? S_OK : MAPI_E_CALL_FAILED;
  }
  HRESULT STDMETHODCALLTYPE QueryRows(LONG count, ULONG, LPSRowSet* rows) override {
    asked.push_back(count);
    return asked.size() > answers_.size() ? S_OK : answers_[asked.size() - 1](rows);
  }
  std::vector<LONG> asked;

 private:
  const std::vector<Answer> answers_;
};

// Rows of these very values, whatever they point at.
Answer Rows(std::vector<Values> rows) {
  return [rows](LPSRowSet* out) {
    EXPECT_EQ(OrvAllocateBuffer(CbNewSRowSet(8), reinterpret_cast<void**>(out)), S_OK);
    for (const Values& row : rows) {
      MapiBuffer<SPropValue> values;
      EXPECT_EQ(values.AllocateArray(row.size()), S_OK);
      std::copy(row.begin(), row.end(), values.Get());
      (*out)->aRow[(*out)->cRows++] = {0, static_cast<ULONG>(row.size()), values.Detach()};
    }
    return S_OK;
  };
}

Answer RowWithoutValues(ULONG count) {
  return [count](LPSRowSet* out) {
    EXPECT_EQ(Rows({})(out), S_OK);
    (*out)->cRows = 1;
    (*out)->aRow[0].cValues = count;
    return S_OK;
  };
}

TEST(TableReader, WhateverATableAnswers) {
  const Values full = {Binary(PR_ENTRYID, "id"), Unicode(PR_DISPLAY_NAME_W, ORV_W("name"))};
  const Values nulls = {Binary(PR_ENTRYID, nullptr, 5), Unicode(PR_DISPLAY_NAME_W, nullptr)};
  const Values otherTypes = {Long(CHANGE_PROP_TYPE(PR_ENTRYID, PT_ERROR), 0),
                             String8(PR_DISPLAY_NAME_A, "x")};
  const Answer fails = [](LPSRowSet* out) {
    *out = reinterpret_cast<LPSRowSet>(std::uintptr_t{64});
    return MAPI_E_NO_ACCESS;
  };
  const Answer throws = [](LPSRowSet*) -> HRESULT { throw 1; };
  const Answer exhausted = [](LPSRowSet*) -> HRESULT { throw std::bad_alloc(); };
  const Answer row = Rows({full}), none = RowWithoutValues(0);
  const struct {
    const char* what;
    std::vector<Answer> answers;
    LONG atOnce;
    std::string seen;  // of each row whether it has: identifier, name, other values
    HRESULT end;
    std::vector<LONG> asked;
  } cases[] = {
      {"rows one by one", {row, row}, 1, "IN,IN,", S_FALSE, {1, 1, 1}},
      {"rows in blocks", {Rows({full, nulls}), row}, 2, "IN,,IN,", S_FALSE, {2, 2, 2}},
      {"more rows than asked for", {Rows({full, full, full})}, 1, "IN,IN,IN,", S_FALSE, {1, 1}},
      {"no array", {}, 1, "", S_FALSE, {1}},
      {"an array without rows", {Rows({}), row}, 1, "", S_FALSE, {1}},
      {"a row without values", {none, row}, 1, ",IN,", S_FALSE, {1, 1, 1}},
      {"a count of values that are not there", {RowWithoutValues(2)}, 1, ",", S_FALSE, {1, 1}},
      {"a short row", {Rows({{full[0]}})}, 1, "I,", S_FALSE, {1, 1}},
      {"other types", {Rows({otherTypes})}, 1, ",", S_FALSE, {1, 1}},
      {"a failure that hands something out", {row, fails}, 1, "IN,", MAPI_E_NO_ACCESS, {1, 1}},
      {"a failing block", {fails, row, row, fails}, 9, "IN,IN,", MAPI_E_NO_ACCESS, {9, 1, 1, 1}},
      {"an exception", {throws}, 1, "", MAPI_E_CALL_FAILED, {1}},
      {"exhaustion", {exhausted}, 1, "", MAPI_E_NOT_ENOUGH_MEMORY, {1}},
  };
  for (const auto& table : cases) {
    SCOPED_TRACE(table.what);
    const auto told = ComPtr<ToldTable>::Adopt(new ToldTable(table.answers));
    TableReader reader;
    ASSERT_EQ(reader.Open(ComPtr<IMAPITable>::Share(told.Get()), kColumns, table.atOnce), S_OK);
    std::string seen;
    HRESULT hr = S_OK;
    while ((hr = reader.Next()) == S_OK) {
      if (BinaryOf(reader.Row().At(0, PR_ENTRYID)) != nullptr) seen += 'I';
      if (TextOf(reader.Row().At(1, PR_DISPLAY_NAME_W)) != nullptr) seen += 'N';
      EXPECT_EQ(reader.Row().At(2, PR_NULL), nullptr);
      seen += ',';
    }
    EXPECT_EQ(hr, table.end);
    EXPECT_EQ(seen, table.seen);
    EXPECT_EQ(told->asked, table.asked);
  }
}

TEST(TableReader, TablesThatCannotBeOpenedAndRowsThatAreKept) {
  TableReader reader;
  EXPECT_EQ(reader.Open(nullptr, kColumns), MAPI_E_CALL_FAILED);
  const auto refusing = ComPtr<IMAPITable>::Adopt(new ToldTable({}));
  EXPECT_EQ(reader.Open(refusing, TagArray{PR_NULL}), MAPI_E_CALL_FAILED);

  const auto table =
      ComPtr<IMAPITable>::Adopt(new ToldTable({Rows({{Long(PR_ROWID, 7)}}), RowWithoutValues(3)}));
  ASSERT_EQ(reader.Open(table, kColumns, 1, TableReader::Start::kWhereItStands), S_OK);
  ASSERT_EQ(reader.Next(), S_OK);
  const PropValues kept = reader.TakeRow();
  EXPECT_EQ(reader.Row().Count(), 0u);
  ASSERT_EQ(reader.Next(), S_OK);
  EXPECT_EQ(reader.TakeRow().count, 0u);
  ASSERT_EQ(kept.count, 1u);
  EXPECT_EQ(NumberOf(ForeignValues(kept).Find(CHANGE_PROP_TYPE(PR_ROWID, PT_UNSPECIFIED))), 7u);
  EXPECT_EQ(NumberOf(ForeignValues(kept).Find(PR_DISPLAY_TYPE), 9), 9u);
}

}  // namespace
}  // namespace orv::test
