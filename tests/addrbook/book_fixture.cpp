// The fixture of the address book's tests; see book_fixture.h.
#include "tests/addrbook/book_fixture.h"

namespace orv::test {
namespace {

class FakeSettings final : public SettingsStore {
 public:
  explicit FakeSettings(FakeProfile& profile) : profile_(profile) { profile_.state = "open"; }
  ~FakeSettings() override { profile_.state = "closed"; }

  HRESULT Load(PropList& list) override {
    std::vector<SBinary> path;
    for (Bytes& id : profile_.searchPath) path.push_back(Binary(id));
    if (profile_.hasSearchPath || !path.empty()) list.Set(Array(PR_AB_SEARCH_PATH, path.size(), path.data()));
    const auto set = [&](ULONG tag, const Bytes& id) {
      if (!id.empty()) list.Set(Binary(tag, id.data(), id.size()));
    };
    set(PR_AB_DEFAULT_PAB, profile_.pab);
    set(PR_AB_DEFAULT_DIR, profile_.defaultDir);
    return S_OK;
  }

  HRESULT Save(const PropList& list) override {
    ++profile_.saves;
    for (const PropNode& node : list) {
      if (!(node.flags & PROPNODE_MODIFIED)) continue;
      profile_.savedTags.push_back(node.Tag());
      if (node.Tag() != PR_AB_SEARCH_PATH) continue;
      SPropValue value = {};
      if (FAILED(ReadNode(node, nullptr, value))) continue;
      const MapiBuffer<SBinary> ids(node.record.dataLength != 0 ? value.Value.MVbin.lpbin : nullptr);
      for (ULONG i = 0; i < value.Value.MVbin.cValues; ++i)
        profile_.savedPath.emplace_back(ids[i].lpb, ids[i].lpb + ids[i].cb);
    }
    return profile_.saveResult;
  }

 private:
  FakeProfile& profile_;
};

}  // namespace

std::unique_ptr<SettingsStore> FakeProfile::Open() { return std::make_unique<FakeSettings>(*this); }

std::vector<Bytes> PathOf(const SRowSet* rows) {
  std::vector<Bytes> path;
  for (ULONG i = 0; i < rows->cRows; ++i) {
    const SRow& row = rows->aRow[i];
    EXPECT_EQ(row.cValues, 1u);
    EXPECT_EQ(row.lpProps->ulPropTag, PR_ENTRYID);
    path.emplace_back(row.lpProps->Value.bin.lpb, row.lpProps->Value.bin.lpb + row.lpProps->Value.bin.cb);
  }
  return path;
}

BookTest::BookTest() : list(CABServiceList::Create()) {}

BookTest::~BookTest() {
  EndSession();
  for (const auto& script : scripts_) EXPECT_EQ(script->liveObjects, 0) << script->name;
}

FakeScript& BookTest::Load(const std::string& name, const std::vector<Container>& containers) {
  const auto fill = static_cast<BYTE>(name.front());
  scripts_.push_back(std::make_unique<FakeScript>(name, FakeUid(fill), &log));
  FakeScript& script = *scripts_.back();
  FakeNode& root = script.nodes[""];
  root.type = MAPI_ABCONT;
  root.name = FakeText(name.begin(), name.end());
  for (const Container& container : containers) {
    FakeNode& node = script.nodes[container.key];
    node.type = MAPI_ABCONT;
    node.name = FakeText(container.key.begin(), container.key.end());
    node.containerFlags = container.flags;
    node.depth = container.depth;
    script.hierarchy.push_back(container.key);
  }
  LoadObject(MakeFakeProvider(&script, kOwnBuffers), fill);
  return script;
}

ProviderRecord& BookTest::LoadObject(IAddrBook* provider, BYTE uid) {
  auto record = std::make_unique<ProviderRecord>(Module(), FakeUid(uid));
  record->AdoptProvider(provider);
  EXPECT_EQ(record->RegisterUid(FakeUid(uid)), S_OK);
  list->Add(std::move(record));
  return *list->All().front();
}

CAddrBook& BookTest::Open() {
  EXPECT_EQ(CAddrBook::Create(profile.Open(), list.Get(), book.Put()), S_OK);
  log.lines.clear();
  return *book;
}

void BookTest::EndSession() {
  if (book) book->Shutdown();
  book.Reset();
  if (list) list->UnloadAll();
}

}  // namespace orv::test
