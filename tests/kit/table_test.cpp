// Tables over sources of rows: reading, seeking, finding, restricting, sorting, following changes.
#include "orv/kit/table.hpp"

#include <atomic>
#include <functional>
#include <limits>
#include <mutex>
#include <numeric>
#include <string>
#include <thread>

#include "tests/kit/kit_values.h"
#include "tests/kit/recording_sink.h"

namespace orv::test {
namespace {

using kit::PropList;
using kit::RowChange;
using Names = std::vector<std::wstring>;

constexpr ULONG kNumber = PROP_TAG(PT_LONG, 0x6701);
constexpr LONG kLeast = std::numeric_limits<LONG>::min(), kGreatest = std::numeric_limits<LONG>::max();

PropList Person(const std::wstring& name, LONG number) {
  PropList person;
  person.Set(PR_DISPLAY_NAME, name);
  person.Set(kNumber, number);
  std::vector<BYTE> key(name.size() * sizeof(WCHAR));
  std::memcpy(key.data(), name.data(), key.size());
  person.Set(PR_INSTANCE_KEY, key);
  return person;
}

std::vector<PropList> People(const Names& names) {
  std::vector<PropList> people;
  for (const auto& name : names) people.push_back(Person(name, static_cast<LONG>(people.size())));
  return people;
}

// Data that changes, as a provider keeps it: constant states, one following the other.
struct Directory {
  using State = std::shared_ptr<const std::vector<PropList>>;

  explicit Directory(const Names& names) : state(std::make_shared<std::vector<PropList>>(People(names))) {}
  State Get(ULONG* seen) {
    const std::lock_guard guard(lock);
    *seen = version;
    return state;
  }
  // Makes the change, and tells of it.
  void Change(const std::function<void(std::vector<PropList>&)>& edit,
              const std::vector<RowChange>& changes) {
    {
      const std::lock_guard guard(lock);
      auto next = std::make_shared<std::vector<PropList>>(*state);
      edit(*next);
      state = next;
      ++version;
    }
    tables.Changed(changes);
  }

  sdk::Lock lock;
  State state;
  ULONG version = 0;
  kit::TableSet tables;
};

// A source that shows one state of it, and can do what a test lets it do.
class DirectoryRows final : public kit::RowSource {
 public:
  explicit DirectoryRows(Directory& directory) : directory_(directory), state_(directory.Get(&version_)) {}

  size_t Count() override { return state_->size(); }
  HRESULT RowAt(size_t row, std::span<const ULONG>, sdk::ValueView* values) override {
    ++reads;
    if (row == failing) return MAPI_E_NETWORK_ERROR;
    *values = (*state_)[row].View();
    return S_OK;
  }
  std::vector<ULONG> Columns() override { return {PR_DISPLAY_NAME_W, kNumber, PR_INSTANCE_KEY}; }
  std::optional<size_t> Seek(ULONG column, const SPropValue& key, bool) override {
    if (!seeks || column != PR_DISPLAY_NAME_W) return std::nullopt;
    const auto isBefore = [&](const PropList& row) { return row.Text(PR_DISPLAY_NAME_W) < key.Value.lpszW; };
    return static_cast<size_t>(std::partition_point(state_->begin(), state_->end(), isBefore) -
                               state_->begin());
  }
  ULONG Refresh() override {
    const ULONG before = version_;
    state_ = directory_.Get(&version_);
    return version_ - before;
  }

  size_t reads = 0;
  size_t failing = SIZE_MAX;
  bool seeks = false;

 private:
  Directory& directory_;
  ULONG version_ = 0;
  Directory::State state_;
};

struct Rows {
  explicit Rows(IMAPITable& table, LONG count = kGreatest, ULONG flags = 0) : set(&OrvFreeBuffer) {
    result = table.QueryRows(count, flags, set.Put());
  }
  Names All() const {
    Names names;
    for (ULONG i = 0; set && i < set->cRows; ++i) {
      const WCHAR* name = sdk::ValueView(set->aRow[i]).Text(PR_DISPLAY_NAME_W);
      names.emplace_back(name != nullptr ? name : L"(none)");
    }
    return names;
  }
  HRESULT result = S_OK;
  sdk::RowSet set;
};
Names AllOf(IMAPITable& table) {
  EXPECT_EQ(table.SeekRow(BOOKMARK_BEGINNING, 0, nullptr), S_OK);
  return Rows(table).All();
}
ULONG PositionOf(IMAPITable& table) {
  ULONG row = 0, numerator = 0, denominator = 0;
  EXPECT_EQ(table.QueryPosition(&row, &numerator, &denominator), S_OK);
  return row;
}
sdk::ComPtr<IMAPITable> TableOf(const Names& names) { return kit::MakeTable(Buffers(), People(names)); }

struct Name {
  Name(const WCHAR* text, ULONG fuzzy) : value(Unicode(PR_DISPLAY_NAME_W, text)) {
    restriction.rt = RES_CONTENT;
    restriction.res.resContent = {fuzzy, PR_DISPLAY_NAME_W, &value};
  }
  SPropValue value;
  SRestriction restriction{};
};
struct AtLeast {
  explicit AtLeast(SPropValue bound) : value(bound) {
    restriction.rt = RES_PROPERTY;
    restriction.res.resProperty = {RELOP_GE, bound.ulPropTag, &value};
  }
  SPropValue value;
  SRestriction restriction{};
};

struct Order {
  Order(std::initializer_list<SSortOrder> keys, ULONG categories = 0) {
    set.cSorts = static_cast<ULONG>(keys.size());
    set.cCategories = categories;
    std::copy(keys.begin(), keys.end(), set.aSort);
  }
  LPSSortOrderSet Get() { return reinterpret_cast<LPSSortOrderSet>(&set); }
  SizedSSortOrderSet(4, set){};
};

const Names kFive = {L"a", L"b", L"c", L"d", L"e"};

TEST(KitTableTest, SeeksStopAtTheEndsWhateverIsAsked) {
  const auto table = TableOf(kFive);
  const struct {
    BOOKMARK origin;
    LONG wanted;
    ULONG start, end;
    LONG moved;
  } cases[] = {{BOOKMARK_BEGINNING, 2, 4, 2, 2},      {BOOKMARK_CURRENT, -1, 3, 2, -1},
               {BOOKMARK_END, -2, 0, 3, -2},          {BOOKMARK_CURRENT, kGreatest, 3, 5, 2},
               {BOOKMARK_CURRENT, kLeast, 3, 0, -3},  {BOOKMARK_END, kGreatest, 1, 5, 0},
               {BOOKMARK_BEGINNING, kLeast, 1, 0, 0}, {BOOKMARK_END, kLeast, 1, 0, -5}};
  for (const auto& each : cases) {
    table->SeekRow(BOOKMARK_BEGINNING, static_cast<LONG>(each.start), nullptr);
    LONG moved = 99;
    EXPECT_EQ(table->SeekRow(each.origin, each.wanted, &moved), S_OK);
    EXPECT_EQ(moved, each.moved);
    EXPECT_EQ(PositionOf(*table), each.end);
  }
  EXPECT_EQ(table->SeekRow(BOOKMARK_END + 1, 0, nullptr), MAPI_E_INVALID_BOOKMARK);
  constexpr ULONG kMany = std::numeric_limits<ULONG>::max();
  const ULONG fractions[][3] = {{0, 1, 0}, {1, 2, 2}, {kMany - 1, kMany, 4}, {kMany, 1, 5}, {3, 3, 5}};
  for (const auto& [numerator, denominator, row] : fractions) {
    EXPECT_EQ(table->SeekRowApprox(numerator, denominator), S_OK);
    EXPECT_EQ(PositionOf(*table), row);
  }
  EXPECT_EQ(table->SeekRowApprox(1, 0), MAPI_E_INVALID_PARAMETER);
  ULONG row = 0, numerator = 0, denominator = 0;
  EXPECT_EQ(TableOf({})->QueryPosition(&row, &numerator, &denominator), S_OK);
  EXPECT_EQ(denominator, 1u);  // a fraction all the same
}

TEST(KitTableTest, RowsComeInTableOrderBothWays) {
  const auto table = TableOf(kFive);
  const struct {
    ULONG start;
    LONG wanted;
    ULONG flags;
    Names rows;
    ULONG end;
  } cases[] = {{0, 2, 0, {L"a", L"b"}, 2},
               {3, kGreatest, 0, {L"d", L"e"}, 5},
               {5, 1, 0, {}, 5},
               {3, -2, 0, {L"b", L"c"}, 1},
               {2, kLeast, 0, {L"a", L"b"}, 0},
               {0, -1, 0, {}, 0},
               {1, 2, TBL_NOADVANCE, {L"b", L"c"}, 1},
               {4, -1, TBL_NOADVANCE, {L"d"}, 4}};
  for (const auto& each : cases) {
    table->SeekRow(BOOKMARK_BEGINNING, static_cast<LONG>(each.start), nullptr);
    EXPECT_EQ(Rows(*table, each.wanted, each.flags).All(), each.rows);
    EXPECT_EQ(PositionOf(*table), each.end);
  }
  EXPECT_EQ(Rows(*table, 0).result, MAPI_E_INVALID_PARAMETER);
}

TEST(KitTableTest, ColumnsAreThoseSet) {
  const auto table = TableOf(kFive);
  const auto columnsOf = [&](ULONG flags) {
    sdk::Buffer<SPropTagArray> tags(&OrvFreeBuffer);
    EXPECT_EQ(table->QueryColumns(flags, tags.Put()), S_OK);
    return List(tags.Get());
  };
  const std::vector<ULONG> all = {PR_DISPLAY_NAME_W, kNumber, PR_INSTANCE_KEY};
  EXPECT_EQ(columnsOf(0), all);
  Tags wanted = {kNumber, PR_NULL, PR_TITLE_W, PROP_TAG(PT_UNSPECIFIED, PROP_ID(PR_DISPLAY_NAME_W))};
  EXPECT_EQ(table->SetColumns(wanted.Get(), TBL_NOWAIT), S_OK);
  EXPECT_EQ(columnsOf(0), List(wanted.Get()));
  EXPECT_EQ(columnsOf(TBL_ALL_COLUMNS), all);
  const Rows rows(*table, 1);
  ASSERT_EQ(rows.set->aRow[0].cValues, 4u);
  const SPropValue* row = rows.set->aRow[0].lpProps;
  EXPECT_EQ(row[1].ulPropTag, ULONG{PR_NULL});
  EXPECT_EQ(row[2].ulPropTag, CHANGE_PROP_TYPE(PR_TITLE_W, PT_ERROR));
  EXPECT_EQ(row[3].ulPropTag, PR_DISPLAY_NAME_W);
  Tags none = {}, hostile = {PR_NULL};
  hostile.words[0] = std::numeric_limits<ULONG>::max();
  EXPECT_EQ(table->SetColumns(none.Get(), 0), MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(table->SetColumns(hostile.Get(), 0), MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(columnsOf(0).size(), 4u);
}

TEST(KitTableTest, NullArgumentsAreRefusedAndCategoriesTooComplex) {
  const auto table = TableOf(kFive);
  ULONG any = 0;
  SPropTagArray** noTags = nullptr;
  for (const HRESULT hr :
       {table->SetColumns(nullptr, 0), table->QueryColumns(0, noTags), table->GetRowCount(0, nullptr),
        table->QueryPosition(nullptr, &any, &any), table->FindRow(nullptr, BOOKMARK_BEGINNING, 0),
        table->CreateBookmark(nullptr), table->SortTable(nullptr, 0), table->QuerySortOrder(nullptr),
        table->QueryRows(1, 0, nullptr), table->GetStatus(nullptr, &any),
        table->Advise(fnevTableModified, nullptr, &any)})
    EXPECT_EQ(hr, MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(table->SortTable(Order({{kNumber, TABLE_SORT_ASCEND}}, 1).Get(), 0), MAPI_E_TOO_COMPLEX);
  EXPECT_EQ(table->SortTable(Order({{kNumber, TABLE_SORT_COMBINE}}).Get(), 0), MAPI_E_TOO_COMPLEX);
  EXPECT_EQ(table->SortTable(Order({{kNumber | MVI_FLAG, TABLE_SORT_ASCEND}}).Get(), 0), MAPI_E_TOO_COMPLEX);
  EXPECT_EQ(table->SortTable(Order({{kNumber, 7}}).Get(), 0), MAPI_E_INVALID_PARAMETER);
  SRestriction inner{}, below{};
  inner.rt = RES_EXIST;
  below.rt = RES_SUBRESTRICTION;
  below.res.resSub = {PR_CONTAINER_CONTENTS, &inner};
  EXPECT_EQ(table->Restrict(&below, 0), MAPI_E_TOO_COMPLEX);
  EXPECT_EQ(table->FindRow(&below, BOOKMARK_BEGINNING, 0), MAPI_E_TOO_COMPLEX);
  ULONG status = 1, type = 1;
  EXPECT_EQ(table->GetStatus(&status, &type), S_OK);
  EXPECT_EQ(type, TBLTYPE_SNAPSHOT);
  EXPECT_EQ(table->WaitForCompletion(0, 0, &status), S_OK);
  EXPECT_EQ(status, TBLSTAT_COMPLETE);
  EXPECT_EQ(table->Abort(), S_OK);
  EXPECT_EQ(table->ExpandRow(0, nullptr, 0, 0, nullptr, nullptr), MAPI_E_NO_SUPPORT);
}

// Found by reading, and by the source's seek where it offers one: the same rows either way.
TEST(KitTableTest, FindsBothWaysFromEveryStart) {
  Directory directory({L"ann", L"anna", L"bob", L"bob", L"boris"});
  const struct {
    const WCHAR* text;
    ULONG fuzzy;
    BOOKMARK origin;
    ULONG flags, found;
  } cases[] = {{L"an", FL_PREFIX, BOOKMARK_BEGINNING, 0, 0},
               {L"bo", FL_PREFIX, BOOKMARK_BEGINNING, 0, 2},
               {L"bo", FL_PREFIX, BOOKMARK_CURRENT, 0, 3},  // from the fourth row
               {L"an", FL_PREFIX, BOOKMARK_CURRENT, 0, ULONG_MAX},
               {L"an", FL_PREFIX, BOOKMARK_CURRENT, DIR_BACKWARD, 1},
               {L"bo", FL_PREFIX, BOOKMARK_CURRENT, DIR_BACKWARD, 3},
               {L"bob", FL_FULLSTRING, BOOKMARK_END, DIR_BACKWARD, 3},
               {L"BOB", FL_FULLSTRING | FL_IGNORECASE, BOOKMARK_BEGINNING, 0, 2},
               {L"nn", FL_SUBSTRING, BOOKMARK_CURRENT, DIR_BACKWARD, 1},
               {L"x", FL_SUBSTRING, BOOKMARK_BEGINNING, 0, ULONG_MAX},
               {L"", FL_PREFIX, BOOKMARK_END, 0, ULONG_MAX}};
  for (const bool seeks : {false, true}) {
    auto source = std::make_shared<DirectoryRows>(directory);
    source->seeks = seeks;
    const auto table = kit::MakeTable(Buffers(), source);
    for (auto each : cases) {
      table->SeekRow(BOOKMARK_BEGINNING, 3, nullptr);
      Name name(each.text, each.fuzzy);
      const bool isFound = each.found != ULONG_MAX;
      EXPECT_EQ(table->FindRow(&name.restriction, each.origin, each.flags),
                isFound ? S_OK : MAPI_E_NOT_FOUND);
      EXPECT_EQ(PositionOf(*table), isFound ? each.found : 3) << each.found;
    }
    AtLeast bound(Unicode(PR_DISPLAY_NAME_W, L"b"));
    EXPECT_EQ(table->FindRow(&bound.restriction, BOOKMARK_BEGINNING, 0), S_OK);
    EXPECT_EQ(PositionOf(*table), 2u);
    EXPECT_EQ(table->FindRow(&bound.restriction, 77, 0), MAPI_E_INVALID_BOOKMARK);
    source->reads = 0;
    Name last(L"boris", FL_PREFIX);
    EXPECT_EQ(table->FindRow(&last.restriction, BOOKMARK_BEGINNING, 0), S_OK);
    EXPECT_EQ(source->reads, seeks ? 1u : 5u);
  }
}

TEST(KitTableTest, RestrictsAndSortsTogether) {
  const auto table = TableOf({L"Émile", L"bob", L"Bo", L"ab", L"émile", L"", L"zoe"});
  const auto byName = [](ULONG order) { return SSortOrder{PR_DISPLAY_NAME_W, order}; };
  const SSortOrder byNumberDown = {kNumber, TABLE_SORT_DESCEND};
  EXPECT_EQ(table->SortTable(Order({byName(TABLE_SORT_ASCEND)}).Get(), 0), S_OK);
  EXPECT_EQ(AllOf(*table), (Names{L"", L"ab", L"Bo", L"bob", L"Émile", L"émile", L"zoe"}));
  EXPECT_EQ(table->SortTable(Order({byName(TABLE_SORT_DESCEND), byNumberDown}).Get(), 0), S_OK);
  EXPECT_EQ(AllOf(*table), (Names{L"zoe", L"émile", L"Émile", L"bob", L"Bo", L"ab", L""}));
  BOOKMARK bookmark = 0;
  EXPECT_EQ(table->CreateBookmark(&bookmark), S_OK);
  Name b(L"b", FL_SUBSTRING | FL_IGNORECASE);
  EXPECT_EQ(table->Restrict(&b.restriction, 0), S_OK);
  EXPECT_EQ(PositionOf(*table), 0u);
  EXPECT_EQ(table->SeekRow(bookmark, 0, nullptr), MAPI_E_INVALID_BOOKMARK);
  EXPECT_EQ(AllOf(*table), (Names{L"bob", L"Bo", L"ab"}));
  sdk::Buffer<SSortOrderSet> order(&OrvFreeBuffer);
  EXPECT_EQ(table->QuerySortOrder(order.Put()), S_OK);
  ASSERT_EQ(order->cSorts, 2u);
  EXPECT_EQ(order->aSort[1].ulPropTag, kNumber);
  EXPECT_EQ(table->SortTable(Order({}).Get(), 0), S_OK);
  EXPECT_EQ(AllOf(*table), (Names{L"bob", L"Bo", L"ab"}));
  EXPECT_EQ(table->SortTable(Order({byNumberDown}).Get(), 0), S_OK);
  EXPECT_EQ(AllOf(*table), (Names{L"ab", L"Bo", L"bob"}));
  EXPECT_EQ(table->Restrict(nullptr, 0), S_OK);
  ULONG count = 0;
  EXPECT_EQ(table->GetRowCount(0, &count), S_OK);
  EXPECT_EQ(count, 7u);
}

// Keys that a table sorts by and CompareValues are two statements of one order.
TEST(KitTableTest, SortsEveryTypeAsValuesCompare) {
  const WCHAR* texts[] = {L"",      L"a",     L"A",    L"ab", L"a b", L"Äpfel", L"äpfel",
                          L"apfel", L"co-op", L"coop", L"Z",  L"ß",   L"ss"};
  const double reals[] = {-1e300, -1, -0.0, 0.0, 1e-300, 2, std::numeric_limits<double>::quiet_NaN()};
  const BYTE bytes[] = {0, 0, 1, 0xFF, 0};
  std::vector<std::vector<SPropValue>> kinds(4);
  for (const auto* text : texts) kinds[0].push_back(Unicode(PROP_TAG(PT_UNICODE, 0x6702), text));
  for (const double real : reals)
    kinds[1].push_back(Value(PROP_TAG(PT_DOUBLE, 0x6702))), kinds[1].back().Value.dbl = real;
  for (const LONG number : {kLeast, -1L, 0L, 1L, kGreatest})
    kinds[2].push_back(Long(PROP_TAG(PT_LONG, 0x6702), number));
  for (size_t from = 0; from < 5; ++from) {
    for (size_t size = 0; from + size <= 5; ++size)
      kinds[3].push_back(Binary(PROP_TAG(PT_BINARY, 0x6702), bytes + from, size));
  }
  for (const auto& values : kinds) {
    std::vector<PropList> rows(values.size() + 1);  // the last has none, and stays last
    for (size_t i = 0; i < values.size(); ++i) ASSERT_EQ(rows[i].Set(values[values.size() - 1 - i]), S_OK);
    for (const ULONG direction : {TABLE_SORT_ASCEND, TABLE_SORT_DESCEND}) {
      const auto table = kit::MakeTable(Buffers(), rows);
      ASSERT_EQ(table->SortTable(Order({{values[0].ulPropTag, direction}}).Get(), 0), S_OK);
      const Rows sorted(*table);
      const auto valueAt = [&](size_t i) -> const SPropValue& { return sorted.set->aRow[i].lpProps[0]; };
      for (size_t i = 1; i < values.size(); ++i) {
        const int order = kit::CompareValues(valueAt(i - 1), valueAt(i));
        EXPECT_TRUE(direction == TABLE_SORT_ASCEND ? order <= 0 : order >= 0)
            << std::hex << values[0].ulPropTag << i;
      }
      EXPECT_EQ(PROP_TYPE(valueAt(values.size()).ulPropTag), PT_ERROR);
    }
  }
}

TEST(KitTableTest, BookmarksStayWithTheirRows) {
  Directory directory(kFive);
  const auto table = kit::MakeTable(Buffers(), std::make_shared<DirectoryRows>(directory), &directory.tables);
  BOOKMARK marks[5] = {};
  for (LONG i = 0; i < 5; ++i) {
    table->SeekRow(BOOKMARK_BEGINNING, i, nullptr);
    ASSERT_EQ(table->CreateBookmark(&marks[i]), S_OK);
  }
  table->SeekRow(BOOKMARK_END, 0, nullptr);
  // b goes, x comes second, y last.
  directory.Change(
      [](auto& rows) {
        rows.erase(rows.begin() + 1);
        rows.insert(rows.begin() + 1, Person(L"x", 9));
        rows.push_back(Person(L"y", 9));
      },
      {{RowChange::kDeleted, 1}, {RowChange::kAdded, 1}, {RowChange::kAdded, 5}});
  EXPECT_EQ(Rows(*table).All(), Names{L"y"});  // what is appended is read next
  const struct {
    HRESULT result;
    const WCHAR* row;
  } expected[] = {{S_OK, L"a"}, {MAPI_W_POSITION_CHANGED, L"c"}, {S_OK, L"c"}, {S_OK, L"d"}, {S_OK, L"e"}};
  for (size_t i = 0; i < 5; ++i) {
    EXPECT_EQ(table->SeekRow(marks[i], 0, nullptr), expected[i].result);
    EXPECT_EQ(Rows(*table, 1, TBL_NOADVANCE).All(), Names{expected[i].row});
    EXPECT_EQ(table->SeekRow(marks[i], 0, nullptr), S_OK);  // said once
  }
  EXPECT_EQ(table->FreeBookmark(marks[0]), S_OK);
  EXPECT_EQ(table->FreeBookmark(marks[0]), MAPI_E_INVALID_BOOKMARK);
  EXPECT_EQ(table->FreeBookmark(BOOKMARK_CURRENT), S_OK);
  BOOKMARK one = 0;
  for (size_t i = 4; i < kit::kMostBookmarks; ++i) ASSERT_EQ(table->CreateBookmark(&one), S_OK);
  EXPECT_EQ(table->CreateBookmark(&one), MAPI_E_UNABLE_TO_COMPLETE);
}

// One table plain, one restricted and sorted, over the same data: each hears of what it shows.
TEST(KitTableTest, TellsEachTableWhatItShows) {
  Directory directory({L"b1", L"c", L"b3"});
  const auto plain = kit::MakeTable(Buffers(), std::make_shared<DirectoryRows>(directory), &directory.tables);
  const auto some = kit::MakeTable(Buffers(), std::make_shared<DirectoryRows>(directory), &directory.tables);
  Name b(L"b", FL_PREFIX);
  ASSERT_EQ(some->Restrict(&b.restriction, 0), S_OK);
  ASSERT_EQ(some->SortTable(Order({{PR_DISPLAY_NAME_W, TABLE_SORT_DESCEND}}).Get(), 0), S_OK);
  const auto heardAll = RecordingSink::Make(), heardSome = RecordingSink::Make();
  ULONG connection = 0, other = 0;
  ASSERT_EQ(plain->Advise(fnevTableModified, heardAll.Get(), &connection), S_OK);
  ASSERT_EQ(some->Advise(fnevTableModified, heardSome.Get(), &other), S_OK);
  const struct {
    std::function<void(std::vector<PropList>&)> edit;
    std::vector<RowChange> changes;
    Names all, some;
  } steps[] = {
      {[](auto& rows) { rows.push_back(Person(L"b2", 1)); },
       {{RowChange::kAdded, 3}},
       {L"added b2 after b3"},
       {L"added b2 after b3"}},
      {[](auto& rows) { rows[1] = Person(L"b4", 1); },
       {{RowChange::kModified, 1}},
       {L"modified b4 after b1"},
       {L"added b4"}},
      {[](auto& rows) { rows[1] = Person(L"b0", 1); },
       {{RowChange::kModified, 1}},
       {L"modified b0 after b1"},
       {L"modified b0 after b1"}},
      {[](auto& rows) { rows[1] = Person(L"d", 1); },
       {{RowChange::kModified, 1}},
       {L"modified d after b1"},
       {L"deleted d"}},
      {[](auto& rows) { rows.erase(rows.begin()); },
       {{RowChange::kDeleted, 0}},
       {L"deleted b1"},
       {L"deleted b1"}},
      {[](auto& rows) { rows.clear(); }, {}, {L"changed"}, {L"changed"}},
      {[](auto& rows) { rows = People(kFive); }, {{RowChange::kAdded, 0}}, {L"changed"}, {}},
  };
  for (const auto& step : steps) {
    directory.Change(step.edit, step.changes);
    EXPECT_EQ(heardAll->Take(), step.all);
    if (!step.some.empty()) {
      EXPECT_EQ(heardSome->Take(), step.some);
    }
    const auto fresh = kit::MakeTable(Buffers(), std::make_shared<DirectoryRows>(directory));
    EXPECT_EQ(AllOf(*plain), AllOf(*fresh));
    ASSERT_EQ(fresh->Restrict(&b.restriction, 0), S_OK);
    ASSERT_EQ(fresh->SortTable(Order({{PR_DISPLAY_NAME_W, TABLE_SORT_DESCEND}}).Get(), 0), S_OK);
    EXPECT_EQ(AllOf(*some), AllOf(*fresh));
  }
  EXPECT_EQ(plain->Unadvise(connection), S_OK);
  EXPECT_EQ(plain->Unadvise(connection), MAPI_E_NOT_FOUND);
  directory.Change([](auto& rows) { rows.clear(); }, {});
  EXPECT_EQ(heardAll->Take(), Names{});
}

TEST(KitTableTest, ARowThatCannotBeReadFailsItsCallAlone) {
  Directory directory(kFive);
  auto source = std::make_shared<DirectoryRows>(directory);
  const auto table = kit::MakeTable(Buffers(), source);
  ASSERT_EQ(table->SortTable(Order({{kNumber, TABLE_SORT_DESCEND}}).Get(), 0), S_OK);
  source->failing = 2;
  Name any(L"", FL_SUBSTRING);
  EXPECT_EQ(Rows(*table).result, MAPI_E_NETWORK_ERROR);
  EXPECT_EQ(PositionOf(*table), 0u);
  EXPECT_EQ(table->Restrict(&any.restriction, 0), MAPI_E_NETWORK_ERROR);
  EXPECT_EQ(table->SortTable(Order({{PR_DISPLAY_NAME_W, 0}}).Get(), 0), MAPI_E_NETWORK_ERROR);
  source->failing = SIZE_MAX;
  EXPECT_EQ(AllOf(*table), (Names{L"e", L"d", L"c", L"b", L"a"}));
}

// Eight threads read, search, sort, advise and change tables over one directory, for half a second.
TEST(KitTableTest, ManyThreadsShareTablesAndTheirChanges) {
  Directory directory(kFive);
  std::vector<sdk::ComPtr<IMAPITable>> tables;
  for (int i = 0; i < 3; ++i)
    tables.push_back(
        kit::MakeTable(Buffers(), std::make_shared<DirectoryRows>(directory), &directory.tables));
  const auto sink = RecordingSink::Make();
  std::atomic<bool> stop{false};
  std::atomic<int> wrong{0};
  const auto change = [&](LONG number) {
    directory.Change(
        [&](auto& rows) {
          rows.push_back(Person(L"n" + std::to_wstring(number), number));
          if (rows.size() > 40) rows.erase(rows.begin(), rows.begin() + 20);
        },
        {{RowChange::kAdded, 5}});
  };
  const auto use = [&](unsigned seed) {
    Name part(L"n", FL_SUBSTRING);
    for (unsigned i = seed; !stop; ++i) {
      IMAPITable& table = *tables[i % tables.size()];
      ULONG connection = 0;
      if (table.Advise(fnevTableModified, sink.Get(), &connection) != S_OK) ++wrong;
      const Rows rows(table, static_cast<LONG>(i % 7) - 3 != 0 ? static_cast<LONG>(i % 7) - 3 : 1);
      if (FAILED(rows.result)) ++wrong;
      if (i % 5 == 0 && FAILED(table.Restrict(i % 10 == 0 ? &part.restriction : nullptr, 0))) ++wrong;
      if (i % 7 == 0 && FAILED(table.SortTable(Order({{PR_DISPLAY_NAME_W, i % 2}}).Get(), 0))) ++wrong;
      const HRESULT found = table.FindRow(&part.restriction, BOOKMARK_BEGINNING, 0);
      if (FAILED(found) && found != MAPI_E_NOT_FOUND) ++wrong;
      if (i % 3 == 0) change(static_cast<LONG>(i));
      if (table.Unadvise(connection) != S_OK) ++wrong;
    }
  };
  std::vector<std::thread> threads;
  for (unsigned i = 0; i < 8; ++i) threads.emplace_back(use, i * 1000);
  Sleep(500);
  stop = true;
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
  directory.tables.Changed();
  ULONG seen = 0;
  for (const auto& table : tables) {
    ASSERT_EQ(table->Restrict(nullptr, 0), S_OK);
    EXPECT_EQ(AllOf(*table).size(), directory.Get(&seen)->size());
  }
}

}  // namespace
}  // namespace orv::test
