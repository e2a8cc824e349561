// The fixture of the address book's tests: the settings in memory, the loading and unloading of providers.
#include "tests/addrbook/book_fixture.h"

namespace orv::test {
namespace {

class FakeSettings final : public SettingsStore {
 public:
  explicit FakeSettings(FakeProfile& profile) : profile_(profile) { profile_.isOpen = true; }
  ~FakeSettings() override { profile_.isOpen = false; }

  HRESULT Load(PropList& list) override {
    for (auto& [tag, ids] : profile_.settings) {
      std::vector<SBinary> path;
      for (Bytes& id : ids) path.push_back(Binary(id));
      SPropValue value = Array(tag, path.size(), path.data());
      if (tag != PR_AB_SEARCH_PATH) value.Value.bin = path.front();
      list.Set(value);
    }
    return S_OK;
  }
  HRESULT Save(const PropList& list) override {
    ++profile_.saves;
    for (const PropNode& node : list) {
      if (node.flags & PROPNODE_MODIFIED) profile_.savedTags.push_back(node.Tag());
    }
    return profile_.saveResult;
  }

 private:
  FakeProfile& profile_;
};

}  // namespace

std::unique_ptr<SettingsStore> FakeProfile::Open() { return std::make_unique<FakeSettings>(*this); }

BookTest::BookTest() : list(CABServiceList::Create()) {}

BookTest::~BookTest() {
  EndSession();
  for (const auto& script : scripts_) EXPECT_EQ(script->liveObjects, 0) << script->name;
}

void BookTest::LoadScript(std::unique_ptr<FakeScript> owned, const std::vector<Container>& containers) {
  FakeScript& script = *scripts_.emplace_back(std::move(owned));
  const auto node = [&](const std::string& key, const std::string& name) -> FakeNode& {
    FakeNode& made = script.nodes[key];
    made.type = MAPI_ABCONT;
    made.name.assign(name.begin(), name.end());
    return made;
  };
  node("", script.name);
  for (const Container& container : containers) {
    FakeNode& made = node(container.key, container.key);
    made.containerFlags = container.flags;
    made.depth = container.depth;
    script.hierarchy.push_back(container.key);
  }
  LoadObject(MakeFakeProvider(&script, kOwnBuffers), static_cast<BYTE>(script.name.front()));
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
