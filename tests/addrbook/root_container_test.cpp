// The root container: what it refuses, the order and depth of its hierarchy, deletion across providers, and
// the object that its OpenEntry keeps for ever.
#include "addrbook/root_container.h"

#include "platform/faults.h"
#include "tests/addrbook/book_fixture.h"
#include "tests/support/leaks.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#include <sanitizer/lsan_interface.h>
#define ORV_LEAK_CHECKER 1
#endif
#endif

namespace orv::test {
namespace {

// The native leak checker is told of a documented leak where it happens; the counters see it all the same.
class DocumentedLeak {
 public:
#if defined(ORV_LEAK_CHECKER)
  DocumentedLeak() { __lsan_disable(); }
  ~DocumentedLeak() { __lsan_enable(); }
#else
  DocumentedLeak() {}
#endif
};

class Root : public BookTest {
 protected:
  IABContainer& OpenRoot() {
    if (!book) Open();
    ULONG type = 0;
    EXPECT_EQ(S_OK, book->OpenEntry(0, nullptr, nullptr, 0, &type, opened.Put()));
    return *static_cast<IABContainer*>(opened.Get());
  }
  void TearDown() override { opened.Reset(); }

  // "name:depth" of every row, in order.
  std::vector<std::string> Hierarchy(ULONG flags, HRESULT expected = S_OK) {
    std::vector<std::string> rows;
    ComPtr<IMAPITable> table;
    EXPECT_EQ(expected, OpenRoot().GetHierarchyTable(flags, table.Put()));
    if (!table) return rows;
    RowSetPtr read;
    EXPECT_EQ(S_OK, table->QueryRows(1000, 0, read.Put()));
    for (ULONG i = 0; i < read->cRows; ++i) {
      const SRow& row = read->aRow[i];
      const FakeText name = row.lpProps[0].Value.lpszW;
      std::string text(name.size(), ' ');
      for (std::size_t k = 0; k < name.size(); ++k) text[k] = static_cast<char>(name[k]);
      rows.push_back(text + ":" + std::to_string(row.lpProps[4].Value.l));
      EXPECT_EQ(5u, row.cValues);
    }
    return rows;
  }

  ComPtr<IUnknown> opened;
};

TEST_F(Root, BeforeInitialisationOnlyItsIdentityAnswers) {
  const auto container = ComPtr<CABContainer>::Adopt(new CABContainer);
  ULONG number = 0;
  IUnknown* object = nullptr;
  ENTRYLIST none = {};
  auto& c = *container;
  // Before any argument is looked at.
  const HRESULT refused[] = {c.GetLastError(0, 0, nullptr),
                             c.OpenProperty(PR_CONTAINER_HIERARCHY, &IID_IMAPITable, 0, 0, &object),
                             c.GetContentsTable(0, nullptr),
                             c.GetHierarchyTable(0, nullptr),
                             c.OpenEntry(0, nullptr, nullptr, 0, &number, &object),
                             c.CreateEntry(0, nullptr, 0, nullptr),
                             c.CopyEntries(&none, 0, nullptr, 0),
                             c.DeleteEntries(&none, 0),
                             c.ResolveNames(nullptr, 0, nullptr, nullptr)};
  for (const HRESULT hr : refused) EXPECT_EQ(MAPI_E_NOT_INITIALIZED, hr);
  EXPECT_EQ(MAPI_E_INVALID_PARAMETER, c.Initialize(nullptr, nullptr));
  EXPECT_EQ(MAPI_E_INVALID_PARAMETER, c.Initialize(list.Get(), nullptr));
  ComPtr<IUnknown> self;
  EXPECT_EQ(S_OK, c.QueryInterface(IID_IMAPIContainer, reinterpret_cast<void**>(self.Put())));
}

TEST_F(Root, RefusalsAndChecks) {
  IABContainer& root = OpenRoot();
  Bytes id(20, 'A');
  IMAPITable* table = nullptr;
  IMAPIProp* entry = nullptr;
  IUnknown* object = nullptr;
  ADRLIST nobody = {};
  SBinary one = Binary(id);
  ENTRYLIST none = {0, nullptr}, some = {1, &one}, torn = {1, nullptr};
  EXPECT_EQ(MAPI_E_NO_SUPPORT, root.GetLastError(0, 0, nullptr));
  EXPECT_EQ(MAPI_E_NO_SUPPORT, root.SaveChanges(0));
  EXPECT_EQ(MAPI_E_NO_SUPPORT, root.GetContentsTable(0, &table));
  EXPECT_EQ(MAPI_E_INVALID_PARAMETER, root.GetContentsTable(0, nullptr));
  EXPECT_EQ(MAPI_E_INVALID_PARAMETER, root.GetHierarchyTable(0, nullptr));
  EXPECT_EQ(MAPI_E_INVALID_PARAMETER, root.CreateEntry(0, Id(id), 0, &entry));
  EXPECT_EQ(MAPI_E_INVALID_PARAMETER, root.CreateEntry(20, nullptr, 0, &entry));
  EXPECT_EQ(MAPI_E_NO_SUPPORT, root.CreateEntry(20, Id(id), 0, &entry));
  EXPECT_EQ(MAPI_E_INVALID_PARAMETER, root.CopyEntries(nullptr, 0, nullptr, 0));
  EXPECT_EQ(S_OK, root.CopyEntries(&none, 0, nullptr, 0));
  EXPECT_EQ(MAPI_E_NO_SUPPORT, root.CopyEntries(&some, 0, nullptr, 0));
  EXPECT_EQ(MAPI_E_INVALID_PARAMETER, root.DeleteEntries(nullptr, 0));
  EXPECT_EQ(MAPI_E_INVALID_PARAMETER, root.DeleteEntries(&torn, 0));
  EXPECT_EQ(S_OK, root.DeleteEntries(&none, 0));
  EXPECT_EQ(MAPI_E_INVALID_PARAMETER, root.ResolveNames(nullptr, 0, nullptr, nullptr));
  EXPECT_EQ(MAPI_E_NO_SUPPORT, root.ResolveNames(nullptr, 0, &nobody, nullptr));
  EXPECT_EQ(MAPI_E_INTERFACE_NOT_SUPPORTED,
            root.OpenProperty(PR_CONTAINER_CONTENTS, &IID_IMAPITable, 0, 0, &object));
  EXPECT_EQ(MAPI_E_INTERFACE_NOT_SUPPORTED,
            root.OpenProperty(PR_CONTAINER_HIERARCHY, nullptr, 0, 0, &object));
  EXPECT_EQ(MAPI_E_INTERFACE_NOT_SUPPORTED,
            root.OpenProperty(PR_CONTAINER_HIERARCHY, &IID_IUnknown, 0, 0, &object));
  ComPtr<IUnknown> hierarchy;
  EXPECT_EQ(S_OK, root.OpenProperty(PR_CONTAINER_HIERARCHY, &IID_IMAPITable, 0, 0, hierarchy.Put()));
}

TEST_F(Root, TheHierarchyFollowsTheProvidersNewestFirst) {
  EXPECT_EQ((std::vector<std::string>{}), Hierarchy(CONVENIENT_DEPTH)) << "no providers, no rows, no failure";
  Load("A", {{"a1", 0, 0}, {"a2", 0, 1}});
  FakeScript& b = Load("B", {{"b1", 0, 3}});
  b.nodes[""].depth = 2;
  LoadObject(nullptr, 'N');
  Load("C");
  EXPECT_EQ((std::vector<std::string>{"C:0", "B:2", "A:0"}), Hierarchy(0));
  EXPECT_EQ((std::vector<std::string>{"C:0", "B:2", "b1:4", "A:0", "a1:1", "a2:2"}),
            Hierarchy(CONVENIENT_DEPTH | MAPI_UNICODE));
}

TEST_F(Root, AFailingProviderIsLeftOutUnlessItIsTheLast) {
  FakeScript& a = Load("A", {{"a1", 0, 0}});
  FakeScript& b = Load("B", {{"b1", 0, 0}});
  using Throws = FakeAnswer::Throws;
  b.answers["GetProps"].result = MAPI_E_NETWORK_ERROR;
  EXPECT_EQ((std::vector<std::string>{"A:0", "a1:1"}), Hierarchy(CONVENIENT_DEPTH));
  b.answers["GetProps"].throws = Throws::kInteger;
  EXPECT_EQ((std::vector<std::string>{"A:0", "a1:1"}), Hierarchy(CONVENIENT_DEPTH));
  b.answers.clear();
  a.answers["GetProps"].result = MAPI_E_NETWORK_ERROR;
  EXPECT_TRUE(Hierarchy(CONVENIENT_DEPTH, MAPI_E_NETWORK_ERROR).empty());
  a.answers["GetProps"].throws = Throws::kInteger;
  EXPECT_TRUE(Hierarchy(CONVENIENT_DEPTH, MAPI_E_CALL_FAILED).empty());
}

TEST_F(Root, AProvidersContainersFailWithoutItsRow) {
  FakeScript& a = Load("A", {{"a1", 0, 0}});
  Load("B", {{"b1", 0, 0}});
  using Throws = FakeAnswer::Throws;
  for (const char* operation :
       {"OpenEntry", "Object:GetHierarchyTable", "Table:SetColumns", "Table:SeekRow", "Table:QueryRows"}) {
    for (const FakeAnswer& answer :
         {FakeAnswer{MAPI_E_NO_ACCESS, Throws::kNothing}, FakeAnswer{S_OK, Throws::kRuntimeError}}) {
      SCOPED_TRACE(operation);
      a.answers = {{operation, answer}};
      EXPECT_EQ((std::vector<std::string>{"B:0", "b1:1", "A:0"}), Hierarchy(CONVENIENT_DEPTH));
    }
  }
}

// Shortages of the provider only shorten the table; our own fail the call.
TEST_F(Root, TheTableIsWholeShorterOrNotThere) {
  Load("A", {{"a1", 0, 0}, {"a2", 0, 0}});
  IABContainer& root = OpenRoot();
  bool fired = true;
  std::size_t nth = 1;
  for (; fired; ++nth) {
    ComPtr<IMAPITable> table;
    faults::Arm(faults::Site::kTaskAllocation, nth);
    const HRESULT hr = root.GetHierarchyTable(CONVENIENT_DEPTH, table.Put());
    fired = faults::Fired(faults::Site::kTaskAllocation);
    faults::Arm(faults::Site::kTaskAllocation, 0);
    EXPECT_EQ(SUCCEEDED(hr), static_cast<bool>(table));
    EXPECT_EQ(FAILED(hr) ? MAPI_E_NOT_ENOUGH_MEMORY : S_OK, hr);
    ULONG rows = 0;
    EXPECT_EQ(S_OK, table ? table->GetRowCount(0, &rows) : S_OK);
    EXPECT_TRUE(fired || rows == 3);
  }
  EXPECT_GT(nth, 10u);
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
  EXPECT_EQ(S_OK, root.DeleteEntries(&all, 0));
  EXPECT_EQ((std::vector<std::string>{"x", "z"}), a.deleted);
  EXPECT_EQ((std::vector<std::string>{"y"}), b.deleted);
  EXPECT_TRUE(c.deleted.empty());
  EXPECT_EQ(0u, log.Count("C.GetProps")) << "a provider without an entry is not asked";
  EXPECT_EQ(1u, log.Count("A.Object:DeleteEntries"));

  using Throws = FakeAnswer::Throws;
  for (const char* operation : {"GetProps", "OpenEntry", "Object:DeleteEntries"}) {
    for (const FakeAnswer& answer :
         {FakeAnswer{MAPI_E_NO_ACCESS, Throws::kNothing}, FakeAnswer{S_OK, Throws::kInteger}}) {
      SCOPED_TRACE(operation);
      b.answers = {{operation, answer}};
      a.deleted.clear();
      EXPECT_EQ(S_OK, root.DeleteEntries(&all, 0));
      EXPECT_EQ(2u, a.deleted.size());
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
    const DocumentedLeak leak;
    list = CABServiceList::Create();
    LoadObject(MakeFakeProvider(&a, OurBuffers()), 'A');
    IABContainer& root = OpenRoot();
    const long before = faults::LiveObjects();
    Bytes id = a.EntryId("mine");
    ULONG type = 0;
    EXPECT_EQ(MAPI_E_INVALID_PARAMETER, root.OpenEntry(20, Id(id), nullptr, 0, &type, nullptr));
    EXPECT_EQ(before, faults::LiveObjects());
    EXPECT_EQ(S_OK, root.OpenEntry(Size(id), Id(id), nullptr, 0, &type, &object));
    EXPECT_EQ(MAPI_ABCONT, type);
    EXPECT_EQ(before + 1, faults::LiveObjects());
    EXPECT_EQ(S_OK, book->SetPAB(Size(id), Id(id)));
  }
  EXPECT_EQ(reinterpret_cast<IUnknown*>(this), object) << "nothing is handed out";
  opened.Reset();
  EndSession();
  list.Reset();
  EXPECT_EQ(std::vector<ULONG>{PR_AB_DEFAULT_PAB}, profile.savedTags) << "the leak loses no setting";
  EXPECT_EQ(4, faults::LiveObjects() - objectsBefore + 1)
      << "root, book, connections, list; less the first list";
  EXPECT_EQ(blocksBefore, faults::LiveTaskBlocks());
  ExpectLeaks({4, 0});
}

}  // namespace
}  // namespace orv::test
