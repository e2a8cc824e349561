// The fake provider's objects. Every call is told to the script first, which says how it answers.
#include <algorithm>

#include "orv/orvbase.hpp"
#include "tests/support/fake_provider/fake_script.h"

namespace orv::test {
namespace {

struct FakeWorld {
  FakeScript* script;
  sdk::Allocator allocator;

  HRESULT Play(const char* operation) const { return PlayFake(*script, operation); }
  // What the operation's values are told as, and whether it hands out nothing at all.
  FakeLie Lie(const char* operation) const {
    const auto lie = script->lies.find(operation);
    return lie == script->lies.end() ? script->lie : lie->second;
  }
  bool HandsOutNothing(const char* operation) const { return Lie(operation) == FakeLie::kNothing; }
  // A key without a node is a user of that name.
  const FakeNode& Node(const std::string& key) const {
    static const FakeNode user;
    const auto node = script->nodes.find(key);
    return node == script->nodes.end() ? user : node->second;
  }
};

// What every object below has; `Base` refuses the methods that it does not offer.
template <class Base>
class Fake : public Base {
 public:
  explicit Fake(const FakeWorld& world) : world_(world) { ++world_.script->liveObjects; }

 protected:
  ~Fake() override { --world_.script->liveObjects; }
  const FakeWorld& World() const { return world_; }

 private:
  FakeWorld world_;
};

std::vector<ULONG> TagsOf(const FakeNode& node) {
  std::vector<ULONG> tags = {PR_ENTRYID, PR_DISPLAY_NAME_W, PR_OBJECT_TYPE};
  if (node.type == MAPI_ABCONT) {
    tags.insert(tags.end(), {PR_CONTAINER_FLAGS, PR_DEPTH});
  } else {
    tags.push_back(PR_ADDRTYPE_W);
  }
  for (const auto& text : node.texts) tags.push_back(text.first);
  for (const auto& number : node.numbers) tags.push_back(number.first);
  return tags;
}

// `value` has its tag; what it points at lives with `root`. A missing property is PT_ERROR.
void Fill(SPropValue& value, const FakeWorld& world, const std::string& key, void* root) {
  const FakeNode& node = world.Node(key);
  const ULONG tag = value.ulPropTag;
  if (const auto text = node.texts.find(tag); text != node.texts.end()) {
    value.Value.lpszW = world.allocator.CopyText(root, text->second);
  } else if (const auto number = node.numbers.find(tag); number != node.numbers.end()) {
    value.Value.l = number->second;
  } else if (tag == PR_ENTRYID) {
    const std::vector<BYTE> id = world.script->EntryId(key);
    value.Value.bin = world.allocator.CopyBytes(root, id.data(), id.size());
  } else if (tag == PR_DISPLAY_NAME_W) {
    const bool named = world.script->nodes.contains(key);
    value.Value.lpszW = world.allocator.CopyText(root, named ? node.name : FakeText(key.begin(), key.end()));
  } else if (tag == PR_ADDRTYPE_W) {
    value.Value.lpszW = world.allocator.CopyText(root, node.addressType);
  } else if (tag == PR_OBJECT_TYPE) {
    value.Value.ul = node.type;
  } else if (tag == PR_CONTAINER_FLAGS) {
    value.Value.ul = node.containerFlags;
  } else if (tag == PR_DEPTH) {
    value.Value.ul = node.depth;
  } else if (tag != PR_NULL) {
    value.ulPropTag = CHANGE_PROP_TYPE(tag, PT_ERROR);
    value.Value.err = MAPI_E_NOT_FOUND;
  }
}

struct FakeRow {
  sdk::Allocator::Root values;
  ULONG count;
};

// Values of a node, all of them without tags, as a provider allocates them; then what the lie leaves of them.
FakeRow MakeRow(const FakeWorld& world, const std::string& key, std::vector<ULONG> tags, FakeLie lie) {
  if (tags.empty()) tags = TagsOf(world.Node(key));
  FakeRow row{world.allocator.AllocateRoot(tags.size() * sizeof(SPropValue)),
              static_cast<ULONG>(tags.size())};
  for (ULONG i = 0; i < row.count; ++i) {
    SPropValue& value = static_cast<SPropValue*>(row.values.get())[i];
    value.ulPropTag = tags[i];
    Fill(value, world, key, row.values.get());
    if (lie != FakeLie::kNulls) continue;
    if (PROP_TYPE(value.ulPropTag) == PT_BINARY) value.Value.bin.lpb = nullptr;
    if (PROP_TYPE(value.ulPropTag) == PT_UNICODE) value.Value.lpszW = nullptr;
  }
  if (lie == FakeLie::kNoArray) row.values.reset();
  if (lie == FakeLie::kNoValues || lie == FakeLie::kShort) row.count = lie == FakeLie::kShort ? 1 : 0;
  return row;
}

HRESULT GetValues(const FakeWorld& world, const std::string& key, const SPropTagArray* tags, ULONG* count,
                  SPropValue** out) {
  return sdk::Guarded([&] {
    FakeRow row = MakeRow(world, key, tags == nullptr ? std::vector<ULONG>() : sdk::TagsOf(*tags),
                          world.Lie("Object:GetProps"));
    *count = row.count;
    *out = static_cast<SPropValue*>(row.values.release());
    return S_OK;
  });
}

HRESULT TellWords(const FakeWorld& world, HRESULT hr, LPMAPIERROR* error) {
  const auto words = world.script->words.find(hr);
  if (words == world.script->words.end()) return MAPI_E_NO_SUPPORT;
  return sdk::Guarded([&] {
    auto root = world.allocator.AllocateRoot(sizeof **error);
    *static_cast<MAPIERROR*>(root.get()) = {0, world.allocator.CopyText(root.get(), words->second), nullptr,
                                            0, 0};
    *error = static_cast<MAPIERROR*>(root.release());
    return S_OK;
  });
}

// Rows by key.
class FakeTable final : public Fake<sdk::RefusingTable> {
 public:
  FakeTable(const FakeWorld& world, std::vector<std::string> keys, FakeLie lie)
      : Fake(world), keys_(std::move(keys)), lie_(lie) {}

  HRESULT STDMETHODCALLTYPE SetColumns(LPSPropTagArray tags, ULONG) override {
    if (const HRESULT hr = World().Play("Table:SetColumns"); FAILED(hr)) return hr;
    columns_ = sdk::TagsOf(*tags);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetRowCount(ULONG, ULONG* count) override {
    *count = static_cast<ULONG>(keys_.size());
    return World().Play("Table:GetRowCount");
  }
  HRESULT STDMETHODCALLTYPE SeekRow(BOOKMARK origin, LONG rows, LONG* sought) override {
    if (const HRESULT hr = World().Play("Table:SeekRow"); FAILED(hr)) return hr;
    const LONG end = static_cast<LONG>(keys_.size());
    const LONG start = origin == BOOKMARK_BEGINNING ? 0 : origin == BOOKMARK_END ? end : position_;
    position_ = std::clamp<LONG>(start + rows, 0, end);
    if (sought != nullptr) *sought = position_ - start;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE QueryRows(LONG rows, ULONG, LPSRowSet* out) override {
    *out = nullptr;
    if (const HRESULT hr = World().Play("Table:QueryRows"); FAILED(hr)) return hr;
    const FakeLie lie = lie_ != FakeLie::kNone ? lie_ : World().Lie("Table:QueryRows");
    if (lie == FakeLie::kNothing || lie == FakeLie::kNoSet) return S_OK;
    if (lie == FakeLie::kThrows) throw 7;
    if (lie == FakeLie::kJunk) return *out = reinterpret_cast<LPSRowSet>(this), MAPI_E_NETWORK_ERROR;
    if (lie == FakeLie::kEndless && position_ == static_cast<LONG>(keys_.size())) position_ = 0;
    return sdk::Guarded([&] {
      const LONG end = std::min<LONG>(position_ + rows, static_cast<LONG>(keys_.size()));
      sdk::RowSetBuilder set(World().allocator, static_cast<std::size_t>(end - position_));
      for (; position_ < end; ++position_) {
        FakeRow row = MakeRow(World(), keys_[static_cast<std::size_t>(position_)], columns_, lie);
        set.Add(std::move(row.values), row.count);
      }
      *out = set.Release();
      if (lie == FakeLie::kTooMany) (*out)->cRows = 0x7FFFFFFF;
      return S_OK;
    });
  }

 private:
  std::vector<std::string> keys_;
  FakeLie lie_;
  std::vector<ULONG> columns_;
  LONG position_ = 0;
};

std::string KeyOf(ULONG size, const ENTRYID* id) {
  const char* bytes = reinterpret_cast<const char*>(id);
  return size <= ORV_MIN_ENTRYID ? std::string() : std::string(bytes + ORV_MIN_ENTRYID, bytes + size);
}

IMAPIContainer* NewObject(const FakeWorld& world, const std::string& key);

HRESULT OpenObject(const FakeWorld& world, const std::string& key, ULONG* type, IUnknown** out) {
  *type = world.Node(key).type;
  *out = NewObject(world, key);
  return S_OK;
}

// A list, or a container or user, who both have a container's methods.
template <class Interface>
class FakeObject final
    : public Fake<sdk::RefusingContainer<
          sdk::RefusingProp<Interface, IMAPIProp, IMAPIContainer, IABContainer, IMailUser>>> {
  using Base = Fake<sdk::RefusingContainer<
      sdk::RefusingProp<Interface, IMAPIProp, IMAPIContainer, IABContainer, IMailUser>>>;
  using Base::World;

 public:
  FakeObject(const FakeWorld& world, std::string key) : Base(world), key_(std::move(key)) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    *out = nullptr;
    return Answers(iid) ? Base::QueryInterface(iid, out) : MAPI_E_INTERFACE_NOT_SUPPORTED;
  }
  HRESULT STDMETHODCALLTYPE SaveChanges(ULONG) override {
    World().script->OnSave(key_);
    return World().Play("Object:SaveChanges");
  }
  HRESULT STDMETHODCALLTYPE GetProps(LPSPropTagArray tags, ULONG, ULONG* count, LPSPropValue* out) override {
    if (const HRESULT hr = World().Play("Object:GetProps"); FAILED(hr)) return hr;
    return GetValues(World(), key_, tags, count, out);
  }
  HRESULT STDMETHODCALLTYPE SetProps(ULONG count, LPSPropValue values,
                                     LPSPropProblemArray* problems) override {
    World().script->OnSet(key_, values, count);
    if (problems != nullptr) *problems = nullptr;
    return World().Play("Object:SetProps");
  }
  HRESULT STDMETHODCALLTYPE GetContentsTable(ULONG, LPMAPITABLE* table) override {
    const FakeNode& node = World().Node(key_);
    return MakeTable("Object:GetContentsTable", node.contents, node.lie, table);
  }
  HRESULT STDMETHODCALLTYPE GetHierarchyTable(ULONG, LPMAPITABLE* table) override {
    return MakeTable("Object:GetHierarchyTable", World().script->hierarchy, FakeLie::kNone, table);
  }
  HRESULT STDMETHODCALLTYPE OpenEntry(ULONG size, LPENTRYID id, LPCIID, ULONG, ULONG* type,
                                      LPUNKNOWN* out) override {
    if (const HRESULT hr = World().Play("Object:OpenEntry"); FAILED(hr)) return hr;
    return OpenObject(World(), KeyOf(size, id), type, out);
  }
  HRESULT STDMETHODCALLTYPE CreateEntry(ULONG size, LPENTRYID id, ULONG, LPMAPIPROP* out) override {
    if (const HRESULT hr = World().Play("Object:CreateEntry"); FAILED(hr)) return hr;
    const char* made = World().script->OnCreate(key_, KeyOf(size, id));
    if (made == nullptr) return MAPI_E_NO_ACCESS;
    *out = NewObject(World(), made);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE DeleteEntries(LPENTRYLIST entries, ULONG) override {
    const HRESULT hr = World().Play("Object:DeleteEntries");
    if (FAILED(hr)) return hr;
    for (ULONG i = 0; i < entries->cValues; ++i) {
      const SBinary& id = entries->lpbin[i];
      World().script->OnDelete(KeyOf(id.cb, reinterpret_cast<const ENTRYID*>(id.lpb)));
    }
    return hr;
  }
  HRESULT STDMETHODCALLTYPE GetLastError(HRESULT hr, ULONG, LPMAPIERROR* error) override {
    return TellWords(World(), hr, error);
  }

 private:
  bool Answers(REFIID iid) const {
    const ULONG type = World().Node(key_).type;
    if (iid == IID_IUnknown || iid == IID_IMAPIProp) return true;
    if (type == MAPI_MAILUSER) return iid == IID_IMailUser;
    return iid == IID_IMAPIContainer || iid == (type == MAPI_DISTLIST ? IID_IDistList : IID_IABContainer);
  }
  HRESULT MakeTable(const char* operation, const std::vector<std::string>& keys, FakeLie lie,
                    LPMAPITABLE* table) {
    *table = nullptr;
    if (const HRESULT hr = World().Play(operation); FAILED(hr)) return hr;
    if (lie != FakeLie::kNothing && !World().HandsOutNothing(operation))
      *table = new FakeTable(World(), keys, lie);
    return S_OK;
  }

  std::string key_;
};

IMAPIContainer* NewObject(const FakeWorld& world, const std::string& key) {
  if (world.Node(key).type == MAPI_DISTLIST) return new FakeObject<IDistList>(world, key);
  return new FakeObject<IABContainer>(world, key);
}

// The object that "ABProviderOpen" hands out.
class FakeProviderObject final : public Fake<sdk::RefusingAddrBook<sdk::RefusingProp<IAddrBook, IMAPIProp>>> {
 public:
  using Fake::Fake;

  ULONG STDMETHODCALLTYPE Release() override {
    const FakeWorld world = World();
    const ULONG left = Fake::Release();
    if (left == 0) static_cast<void>(world.Play("Released"));
    return left;
  }

  HRESULT STDMETHODCALLTYPE GetLastError(HRESULT hr, ULONG, LPMAPIERROR* error) override {
    return TellWords(World(), hr, error);
  }
  HRESULT STDMETHODCALLTYPE GetProps(LPSPropTagArray tags, ULONG, ULONG* count, LPSPropValue* out) override {
    if (const HRESULT hr = World().Play("GetProps"); FAILED(hr)) return hr;
    return GetValues(World(), std::string(), tags, count, out);
  }
  HRESULT STDMETHODCALLTYPE OpenEntry(ULONG size, LPENTRYID id, LPCIID, ULONG, ULONG* type,
                                      LPUNKNOWN* out) override {
    if (const HRESULT hr = World().Play("OpenEntry"); FAILED(hr)) return hr;
    if (World().HandsOutNothing("OpenEntry")) return S_OK;
    return OpenObject(World(), KeyOf(size, id), type, out);
  }
  HRESULT STDMETHODCALLTYPE Advise(ULONG size, LPENTRYID id, ULONG events, LPMAPIADVISESINK sink,
                                   ULONG* connection) override {
    if (const HRESULT hr = World().Play("Advise"); FAILED(hr)) return hr;
    *connection = World().script->OnAdvise(KeyOf(size, id), events, sink);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Unadvise(ULONG connection) override {
    if (const HRESULT hr = World().Play("Unadvise"); FAILED(hr)) return hr;
    return World().script->OnUnadvise(connection);
  }
  HRESULT STDMETHODCALLTYPE NewEntry(ULONG_PTR, ULONG, ULONG, LPENTRYID, ULONG, LPENTRYID, ULONG* size,
                                     LPENTRYID* out) override {
    if (const HRESULT hr = World().Play("NewEntry"); FAILED(hr)) return hr;
    return sdk::Guarded([&] {
      const std::vector<BYTE> bytes = World().script->EntryId("new");
      *size = static_cast<ULONG>(bytes.size());
      if (World().HandsOutNothing("NewEntry")) return S_OK;
      void* block = World().allocator.AllocateRoot(bytes.size()).release();
      *out = static_cast<ENTRYID*>(std::memcpy(block, bytes.data(), bytes.size()));
      return S_OK;
    });
  }
  HRESULT STDMETHODCALLTYPE Details(ULONG_PTR*, LPFNDISMISS, LPVOID, ULONG, LPENTRYID, LPFNBUTTON, LPVOID,
                                    LPWSTR, ULONG) override {
    return World().Play("Details");
  }
  HRESULT STDMETHODCALLTYPE PrepareRecips(ULONG, LPSPropTagArray, LPADRLIST list) override {
    World().script->OnPrepare(list);
    return World().Play("PrepareRecips");
  }
};

}  // namespace

IAddrBook* MakeFakeProvider(FakeScript* script, const FakeBuffers& buffers) {
  return new FakeProviderObject({script, {buffers.allocate, buffers.allocateMore, buffers.free}});
}

}  // namespace orv::test
