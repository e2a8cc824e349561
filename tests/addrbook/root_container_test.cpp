// The root container: what it refuses, the order and depth of its hierarchy, deletion across providers, and
// the object that its OpenEntry keeps for ever.
#include "addrbook/root_container.h"

#include "platform/faults.h"
#include "tests/addrbook/book_fixture.h"
#include "tests/support/leaks.h"

// The native leak checker is told of the documented leak; the counters see it all the same.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() { return "leak:CABContainer::OpenEntry"; }

namespace orv::test {
namespace {

using Texts = std::vector<std::string>;

const FakeAnswer kFailures[] = {{MAPI_E_NO_ACCESS, Throws::kNothing}, {S_OK, Throws::kInteger}};

class Root : public BookTest {
 protected:
  IABContainer& OpenRoot() {
    if (!book) Open();
    ULONG type = 0;
    // Null is the root, whatever the size and the interface.
    EXPECT_EQ(book->OpenEntry(999, nullptr, &IID_IMailUser, 0, &type, opened.Put()), S_OK);
    EXPECT_EQ(type, MAPI_ABCONT);
    return *static_cast<IABContainer*>(opened.Get());
  }
  void TearDown() override { opened.Reset(); }

  // "name:depth" of every row, in order.
  Texts Hierarchy(ULONG flags, HRESULT expected = S_OK) {
    Texts rows;
    ComPtr<IMAPITable> table;
    EXPECT_EQ(OpenRoot().GetHierarchyTable(flags, table.Put()), expected);
    RowSetPtr read;
    EXPECT_TRUE(!table || SUCCEEDED(table->QueryRows(1000, 0, read.Put())));
    for (ULONG i = 0; read && i < read->cRows; ++i) {
      EXPECT_EQ(read->aRow[i].cValues, 5u);
      const SPropValue* const values = read->aRow[i].lpProps;
      const std::basic_string_view<WCHAR> name = values[0].Value.lpszW;
      rows.push_back(std::string(name.begin(), name.end()) + ":" + std::to_string(values[4].Value.l));
    }
    return rows;
  }

  ComPtr<IUnknown> opened;
};

TEST_F(Root, NothingWorksBeforeInitialisation) {
  const auto fresh = ComPtr<CABContainer>::Adopt(new CABContainer);
  IABContainer& root = *fresh;
  const HRESULT answers[] = {root.GetLastError(S_OK, 0, nullptr),
                             root.SaveChanges(0),
                             root.GetProps(nullptr, 0, nullptr, nullptr),
                             root.GetPropList(0, nullptr),
                             root.OpenProperty(0, nullptr, 0, 0, nullptr),
                             root.SetProps(0, nullptr, nullptr),
                             root.DeleteProps(nullptr, nullptr),
                             root.CopyTo(0, nullptr, nullptr, 0, nullptr, nullptr, nullptr, 0, nullptr),
                             root.CopyProps(nullptr, 0, nullptr, nullptr, nullptr, 0, nullptr),
                             root.GetNamesFromIDs(nullptr, nullptr, 0, nullptr, nullptr),
                             root.GetIDsFromNames(0, nullptr, 0, nullptr),
                             root.GetContentsTable(0, nullptr),
                             root.GetHierarchyTable(0, nullptr),
                             root.OpenEntry(0, nullptr, nullptr, 0, nullptr, nullptr),
                             root.SetSearchCriteria(nullptr, nullptr, 0),
                             root.GetSearchCriteria(0, nullptr, nullptr, nullptr),
                             root.CreateEntry(0, nullptr, 0, nullptr),
                             root.CopyEntries(nullptr, 0, nullptr, 0),
                             root.DeleteEntries(nullptr, 0),
                             root.ResolveNames(nullptr, 0, nullptr, nullptr)};
  for (const HRESULT& hr : answers) EXPECT_EQ(hr, MAPI_E_NOT_INITIALIZED) << &hr - answers;
  EXPECT_EQ(fresh->Initialize(list.Get(), nullptr), MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(fresh->Initialize(nullptr, &Open()), MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(root.SaveChanges(0), MAPI_E_NOT_INITIALIZED);
}

// A provider that says success and hands out no array, no values, too few of them or null pointers.
TEST_F(Root, WhatALyingProviderHandsOutIsNotBelieved) {
  Load("A", {{"honest", AB_RECIPIENTS | AB_MODIFIABLE, 0}});
  FakeScript& b = Load("B", {{"b1", AB_RECIPIENTS | AB_MODIFIABLE, 0}});
  Bytes id = b.EntryId("b1");
  SBinary entry = Binary(id);
  ENTRYLIST entries = {1, &entry};
  for (const FakeLie lie : {FakeLie::kNoArray, FakeLie::kNoValues, FakeLie::kShort, FakeLie::kNulls}) {
    SCOPED_TRACE(static_cast<int>(lie));
    b.lie = lie;
    IABContainer& root = OpenRoot();
    ComPtr<IMAPITable> table;
    ULONG rows = 0;
    ASSERT_EQ(root.GetHierarchyTable(CONVENIENT_DEPTH, table.Put()), S_OK);
    EXPECT_EQ(table->GetRowCount(0, &rows), S_OK);
    // Its own row, where a table can hold it, and none of its containers.
    EXPECT_EQ(rows, lie == FakeLie::kShort ? 3u : 2u);
    EXPECT_EQ(root.DeleteEntries(&entries, 0), S_OK);
    // One value is all that is asked of a root here.
    EXPECT_EQ(std::exchange(b.deleted, {}).size(), lie == FakeLie::kShort ? 1u : 0u);
    ULONG size = 0;
    MapiBuffer<ENTRYID> found;
    EXPECT_EQ(book->GetPAB(&size, found.Put()), S_OK);
    EXPECT_EQ(size, ORV_MIN_ENTRYID + std::strlen("honest"));
  }
}

TEST_F(Root, TheHierarchyFollowsTheProvidersNewestFirst) {
  EXPECT_EQ(Hierarchy(CONVENIENT_DEPTH), (Texts{})) << "no providers, no rows, no failure";
  Load("A", {{"a1", 0, 0}, {"a2", 0, 1}});
  FakeScript& b = Load("B", {{"b1", 0, 3}});
  b.nodes[""].depth = 2;
  LoadObject(nullptr, 'N');
  Load("C");
  EXPECT_EQ(Hierarchy(0), (Texts{"C:0", "B:2", "A:0"}));
  EXPECT_EQ(Hierarchy(CONVENIENT_DEPTH | MAPI_UNICODE), (Texts{"C:0", "B:2", "b1:4", "A:0", "a1:1", "a2:2"}));
}

TEST_F(Root, AFailingProviderIsLeftOutUnlessItIsTheLast) {
  FakeScript& a = Load("A", {{"a1", 0, 0}});
  FakeScript& b = Load("B", {{"b1", 0, 0}});
  for (const FakeAnswer& answer : kFailures) {
    b.answers = {{"GetProps", answer}};
    EXPECT_EQ(Hierarchy(CONVENIENT_DEPTH), (Texts{"A:0", "a1:1"}));
    std::swap(a.answers, b.answers);
    EXPECT_TRUE(
        Hierarchy(CONVENIENT_DEPTH, FAILED(answer.result) ? answer.result : MAPI_E_CALL_FAILED).empty());
    a.answers.clear();
    // Its containers alone fail without its row.
    for (const char* operation :
         {"OpenEntry", "Object:GetHierarchyTable", "Table:SetColumns", "Table:SeekRow", "Table:QueryRows"}) {
      a.answers = {{operation, answer}};
      EXPECT_EQ(Hierarchy(CONVENIENT_DEPTH), (Texts{"B:0", "b1:1", "A:0"})) << operation;
    }
    a.answers.clear();
  }
}

TEST_F(Root, DeletionGoesToTheProvidersThatOwnTheEntries) {
  FakeScript& a = Load("A");
  FakeScript& b = Load("B");
  FakeScript& c = Load("C");
  IABContainer& root = OpenRoot();
  Bytes ids[] = {a.EntryId("x"), b.EntryId("y"), Bytes(20, 'Z'), a.EntryId("z"), Bytes(5, 'A')};
  std::vector<SBinary> entries;
  for (Bytes& id : ids) entries.push_back(Binary(id));
  ENTRYLIST all = {static_cast<ULONG>(entries.size()), entries.data()};
  log.lines.clear();
  EXPECT_EQ(root.DeleteEntries(&all, 0), S_OK);
  EXPECT_EQ(a.deleted, (Texts{"x", "z"}));
  EXPECT_EQ(b.deleted, (Texts{"y"}));
  EXPECT_TRUE(c.deleted.empty());
  EXPECT_EQ(log.Count("C.GetProps"), 0u) << "a provider without an entry is not asked";
  EXPECT_EQ(log.Count("A.Object:DeleteEntries"), 1u);

  for (const char* operation : {"GetProps", "OpenEntry", "Object:DeleteEntries"}) {
    for (const FakeAnswer& answer : kFailures) {
      b.answers = {{operation, answer}};
      a.deleted.clear();
      EXPECT_EQ(root.DeleteEntries(&all, 0), S_OK) << operation;
      EXPECT_EQ(a.deleted.size(), 2u) << operation;
    }
  }
}

// One root container stays, and with it what it holds: the book, its connections, the list. No buffer does.
TEST_F(Root, OpenEntryKeepsOneRootForEver) {
  FakeScript& a = Load("A", {{"mine", AB_MODIFIABLE | AB_RECIPIENTS, 0}});
  const long objectsBefore = faults::LiveObjects();
  const long blocksBefore = faults::LiveTaskBlocks();
  IUnknown* object = reinterpret_cast<IUnknown*>(this);
  {
    list = CABServiceList::Create();
    LoadObject(MakeFakeProvider(&a, kOwnBuffers), 'A');
    IABContainer& root = OpenRoot();
    const long before = faults::LiveObjects();
    Bytes id = a.EntryId("mine");
    ULONG type = 0;
    EXPECT_EQ(root.OpenEntry(Size(id), Id(id), nullptr, 0, &type, nullptr), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(faults::LiveObjects(), before);
    EXPECT_EQ(root.OpenEntry(Size(id), Id(id), nullptr, 0, &type, &object), S_OK);
    EXPECT_EQ(type, MAPI_ABCONT);
    EXPECT_EQ(book->SetPAB(Size(id), Id(id)), S_OK);
  }
  EXPECT_EQ(object, reinterpret_cast<IUnknown*>(this)) << "nothing is handed out";
  opened.Reset();
  EndSession();
  list.Reset();
  EXPECT_EQ(profile.savedTags, std::vector<ULONG>{PR_AB_DEFAULT_PAB}) << "the leak loses no setting";
  EXPECT_EQ(faults::LiveObjects() - objectsBefore + 1, 4)
      << "root, book, connections, list; less the first list";
  EXPECT_EQ(faults::LiveTaskBlocks(), blocksBefore);
  ExpectLeakedObjects(4);
}

}  // namespace
}  // namespace orv::test
