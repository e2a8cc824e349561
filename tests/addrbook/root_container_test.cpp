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

using Texts = std::vector<std::string>;
using Throws = FakeAnswer::Throws;

const FakeAnswer kFailures[] = {{MAPI_E_NO_ACCESS, Throws::kNothing}, {S_OK, Throws::kInteger}};

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
      std::string text;
      for (const WCHAR* at = row.lpProps[0].Value.lpszW; *at != 0; ++at) text += static_cast<char>(*at);
      rows.push_back(text + ":" + std::to_string(row.lpProps[4].Value.l));
      EXPECT_EQ(5u, row.cValues);
    }
    return rows;
  }

  ComPtr<IUnknown> opened;
};

TEST_F(Root, RefusalsAndChecks) {
  IABContainer& root = OpenRoot();
  Bytes id(20, 'A');
  IMAPITable* table = nullptr;
  IMAPIProp* entry = nullptr;
  IUnknown* object = nullptr;
  ADRLIST nobody = {};
  SBinary one = Binary(id);
  ENTRYLIST none = {0, nullptr}, some = {1, &one}, torn = {1, nullptr};
  const HRESULT refused[] = {root.GetContentsTable(0, &table), root.CreateEntry(20, Id(id), 0, &entry),
                             root.CopyEntries(&some, 0, nullptr, 0),
                             root.ResolveNames(nullptr, 0, &nobody, nullptr)};
  for (const HRESULT hr : refused) EXPECT_EQ(MAPI_E_NO_SUPPORT, hr);
  const HRESULT invalid[] = {root.GetContentsTable(0, nullptr),
                             root.GetHierarchyTable(0, nullptr),
                             root.CreateEntry(0, Id(id), 0, &entry),
                             root.CopyEntries(nullptr, 0, nullptr, 0),
                             root.DeleteEntries(nullptr, 0),
                             root.DeleteEntries(&torn, 0),
                             root.ResolveNames(nullptr, 0, nullptr, nullptr)};
  for (const HRESULT hr : invalid) EXPECT_EQ(MAPI_E_INVALID_PARAMETER, hr);
  EXPECT_EQ(S_OK, root.CopyEntries(&none, 0, nullptr, 0));
  EXPECT_EQ(S_OK, root.DeleteEntries(&none, 0));
  EXPECT_EQ(MAPI_E_INTERFACE_NOT_SUPPORTED,
            root.OpenProperty(PR_CONTAINER_CONTENTS, &IID_IMAPITable, 0, 0, &object));
  EXPECT_EQ(MAPI_E_INTERFACE_NOT_SUPPORTED,
            root.OpenProperty(PR_CONTAINER_HIERARCHY, &IID_IUnknown, 0, 0, &object));
  ComPtr<IUnknown> hierarchy;
  EXPECT_EQ(S_OK, root.OpenProperty(PR_CONTAINER_HIERARCHY, &IID_IMAPITable, 0, 0, hierarchy.Put()));
}

TEST_F(Root, TheHierarchyFollowsTheProvidersNewestFirst) {
  EXPECT_EQ((Texts{}), Hierarchy(CONVENIENT_DEPTH)) << "no providers, no rows, no failure";
  Load("A", {{"a1", 0, 0}, {"a2", 0, 1}});
  FakeScript& b = Load("B", {{"b1", 0, 3}});
  b.nodes[""].depth = 2;
  LoadObject(nullptr, 'N');
  Load("C");
  EXPECT_EQ((Texts{"C:0", "B:2", "A:0"}), Hierarchy(0));
  EXPECT_EQ((Texts{"C:0", "B:2", "b1:4", "A:0", "a1:1", "a2:2"}), Hierarchy(CONVENIENT_DEPTH | MAPI_UNICODE));
}

TEST_F(Root, AFailingProviderIsLeftOutUnlessItIsTheLast) {
  FakeScript& a = Load("A", {{"a1", 0, 0}});
  FakeScript& b = Load("B", {{"b1", 0, 0}});
  const std::pair<FakeAnswer, HRESULT> cases[] = {{{MAPI_E_NETWORK_ERROR}, MAPI_E_NETWORK_ERROR},
                                                  {{S_OK, Throws::kInteger}, MAPI_E_CALL_FAILED}};
  for (const auto& [answer, expected] : cases) {
    a.answers.clear();
    b.answers = {{"GetProps", answer}};
    EXPECT_EQ((Texts{"A:0", "a1:1"}), Hierarchy(CONVENIENT_DEPTH));
    std::swap(a.answers, b.answers);
    EXPECT_TRUE(Hierarchy(CONVENIENT_DEPTH, expected).empty());
  }
}

TEST_F(Root, AProvidersContainersFailWithoutItsRow) {
  FakeScript& a = Load("A", {{"a1", 0, 0}});
  Load("B", {{"b1", 0, 0}});
  for (const char* operation :
       {"OpenEntry", "Object:GetHierarchyTable", "Table:SetColumns", "Table:SeekRow", "Table:QueryRows"}) {
    for (const FakeAnswer& answer : kFailures) {
      a.answers = {{operation, answer}};
      EXPECT_EQ((Texts{"B:0", "b1:1", "A:0"}), Hierarchy(CONVENIENT_DEPTH)) << operation;
    }
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
  EXPECT_EQ(S_OK, root.DeleteEntries(&all, 0));
  EXPECT_EQ((Texts{"x", "z"}), a.deleted);
  EXPECT_EQ((Texts{"y"}), b.deleted);
  EXPECT_TRUE(c.deleted.empty());
  EXPECT_EQ(0u, log.Count("C.GetProps")) << "a provider without an entry is not asked";
  EXPECT_EQ(1u, log.Count("A.Object:DeleteEntries"));

  for (const char* operation : {"GetProps", "OpenEntry", "Object:DeleteEntries"}) {
    for (const FakeAnswer& answer : kFailures) {
      b.answers = {{operation, answer}};
      a.deleted.clear();
      EXPECT_EQ(S_OK, root.DeleteEntries(&all, 0)) << operation;
      EXPECT_EQ(2u, a.deleted.size()) << operation;
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
    LoadObject(MakeFakeProvider(&a, kOwnBuffers), 'A');
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
