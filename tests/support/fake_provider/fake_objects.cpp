// The fake provider's objects. Every call is told to the script first, which says how it answers.
#include <algorithm>

#include "tests/support/fake_provider/fake_script.h"

namespace orv::test {
namespace {

constexpr HRESULT kRefused = MAPI_E_NO_SUPPORT;

struct FakeWorld {
  FakeScript* script;
  FakeBuffers buffers;

  HRESULT Play(const char* operation) const { return PlayFake(*script, operation); }
};

// Reference count and QueryInterface of every object below.
template <class Interface>
class FakeUnknown : public Interface {
 public:
  explicit FakeUnknown(const FakeWorld& world) : world_(world) { world_.script->OnObject(1); }
  FakeUnknown(const FakeUnknown&) = delete;
  FakeUnknown& operator=(const FakeUnknown&) = delete;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    *out = nullptr;
    if (!(iid == IID_IUnknown) && !Answers(iid)) return MAPI_E_INTERFACE_NOT_SUPPORTED;
    AddRef();
    *out = static_cast<Interface*>(this);
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }

 protected:
  virtual ~FakeUnknown() { world_.script->OnObject(-1); }
  virtual bool Answers(REFIID iid) const = 0;
  const FakeWorld& World() const { return world_; }

 private:
  FakeWorld world_;
  ULONG references_ = 1;
};

// Values of a node, allocated as a provider allocates them.
class FakeValues {
 public:
  FakeValues(const FakeWorld& world, const std::string& key) : world_(world), key_(key) {
    const auto node = world.script->nodes.find(key);
    node_ = node == world.script->nodes.end() ? nullptr : &node->second;
  }

  ULONG Type() const { return node_ == nullptr ? MAPI_MAILUSER : node_->type; }

  std::vector<ULONG> Tags() const {
    std::vector<ULONG> tags = {PR_ENTRYID, PR_DISPLAY_NAME_W, PR_OBJECT_TYPE};
    if (Type() == MAPI_ABCONT) {
      tags.insert(tags.end(), {PR_CONTAINER_FLAGS, PR_DEPTH});
    } else {
      tags.push_back(PR_ADDRTYPE_W);
    }
    if (node_ == nullptr) return tags;
    for (const auto& text : node_->texts) tags.push_back(text.first);
    for (const auto& number : node_->numbers) tags.push_back(number.first);
    return tags;
  }

  // One value for each tag, as a root block; a missing one is PT_ERROR.
  HRESULT Make(const std::vector<ULONG>& tags, SPropValue** out) const {
    void* block = nullptr;
    if (FAILED(world_.buffers.allocate(static_cast<ULONG>(tags.size() * sizeof(SPropValue)), &block))) {
      return MAPI_E_NOT_ENOUGH_MEMORY;
    }
    SPropValue* values = static_cast<SPropValue*>(block);
    for (std::size_t i = 0; i < tags.size(); ++i) {
      if (Fill(tags[i], values, values[i])) continue;
      world_.buffers.free(values);
      return MAPI_E_NOT_ENOUGH_MEMORY;
    }
    *out = values;
    return S_OK;
  }

 private:
  // False when there is no memory.
  bool Fill(ULONG tag, void* root, SPropValue& value) const {
    value.ulPropTag = tag;
    if (node_ != nullptr) {
      if (const auto text = node_->texts.find(tag); text != node_->texts.end())
        return Text(text->second, root, value);
      if (const auto number = node_->numbers.find(tag); number != node_->numbers.end()) {
        value.Value.l = number->second;
        return true;
      }
    }
    switch (tag) {
      case PR_NULL:
        return true;
      case PR_ENTRYID:
        return Identifier(root, value);
      case PR_DISPLAY_NAME_W:
        return Text(Name(), root, value);
      case PR_ADDRTYPE_W:
        return Text(node_ == nullptr ? FakeText() : node_->addressType, root, value);
      case PR_OBJECT_TYPE:
        value.Value.ul = Type();
        return true;
      case PR_CONTAINER_FLAGS:
        value.Value.ul = node_ == nullptr ? 0 : node_->containerFlags;
        return true;
      case PR_DEPTH:
        value.Value.ul = node_ == nullptr ? 0 : node_->depth;
        return true;
      default:
        value.ulPropTag = CHANGE_PROP_TYPE(tag, PT_ERROR);
        value.Value.err = MAPI_E_NOT_FOUND;
        return true;
    }
  }

  FakeText Name() const { return node_ == nullptr ? FakeText(key_.begin(), key_.end()) : node_->name; }

  bool Copy(const void* bytes, std::size_t size, void* root, void** out) const {
    if (FAILED(world_.buffers.allocateMore(static_cast<ULONG>(size), root, out))) return false;
    std::memcpy(*out, bytes, size);
    return true;
  }

  bool Text(const FakeText& text, void* root, SPropValue& value) const {
    void* copy = nullptr;
    if (!Copy(text.c_str(), (text.size() + 1) * sizeof(WCHAR), root, &copy)) return false;
    value.Value.lpszW = static_cast<WCHAR*>(copy);
    return true;
  }

  bool Identifier(void* root, SPropValue& value) const {
    const std::vector<BYTE> bytes = world_.script->EntryId(key_);
    void* copy = nullptr;
    if (!Copy(bytes.data(), bytes.size(), root, &copy)) return false;
    value.Value.bin = {static_cast<ULONG>(bytes.size()), static_cast<BYTE*>(copy)};
    return true;
  }

  FakeWorld world_;
  std::string key_;
  const FakeNode* node_;
};

// The methods of IMAPIProp that no fake object answers.
#define FAKE_REFUSED_PROP_METHODS                                                                            \
  HRESULT STDMETHODCALLTYPE GetLastError(HRESULT, ULONG, LPMAPIERROR*) override { return kRefused; }         \
  HRESULT STDMETHODCALLTYPE OpenProperty(ULONG, LPCIID, ULONG, ULONG, LPUNKNOWN*) override {                 \
    return kRefused;                                                                                         \
  }                                                                                                          \
  HRESULT STDMETHODCALLTYPE DeleteProps(LPSPropTagArray, LPSPropProblemArray*) override { return kRefused; } \
  HRESULT STDMETHODCALLTYPE CopyTo(ULONG, LPCIID, LPSPropTagArray, ULONG_PTR, LPMAPIPROGRESS, LPCIID,        \
                                   LPVOID, ULONG, LPSPropProblemArray*) override {                           \
    return kRefused;                                                                                         \
  }                                                                                                          \
  HRESULT STDMETHODCALLTYPE CopyProps(LPSPropTagArray, ULONG_PTR, LPMAPIPROGRESS, LPCIID, LPVOID, ULONG,     \
                                      LPSPropProblemArray*) override {                                       \
    return kRefused;                                                                                         \
  }                                                                                                          \
  HRESULT STDMETHODCALLTYPE GetNamesFromIDs(LPSPropTagArray*, LPGUID, ULONG, ULONG*, LPMAPINAMEID**)         \
      override {                                                                                             \
    return kRefused;                                                                                         \
  }                                                                                                          \
  HRESULT STDMETHODCALLTYPE GetIDsFromNames(ULONG, LPMAPINAMEID*, ULONG, LPSPropTagArray*) override {        \
    return kRefused;                                                                                         \
  }

std::vector<ULONG> TagsOf(const SPropTagArray* tags, const FakeValues& values) {
  return tags == nullptr ? values.Tags()
                         : std::vector<ULONG>(tags->aulPropTag, tags->aulPropTag + tags->cValues);
}

HRESULT GetValues(const FakeValues& values, const SPropTagArray* tags, ULONG* count, SPropValue** out) {
  const std::vector<ULONG> wanted = TagsOf(tags, values);
  const HRESULT hr = values.Make(wanted, out);
  if (SUCCEEDED(hr)) *count = static_cast<ULONG>(wanted.size());
  return hr;
}

// Rows by key.
class FakeTable final : public FakeUnknown<IMAPITable> {
 public:
  FakeTable(const FakeWorld& world, std::vector<std::string> keys)
      : FakeUnknown(world), keys_(std::move(keys)) {}

  HRESULT STDMETHODCALLTYPE SetColumns(LPSPropTagArray tags, ULONG) override {
    if (const HRESULT hr = World().Play("Table:SetColumns"); FAILED(hr)) return hr;
    columns_.assign(tags->aulPropTag, tags->aulPropTag + tags->cValues);
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
  HRESULT STDMETHODCALLTYPE QueryRows(LONG rows, ULONG, LPSRowSet* out) override;

  HRESULT STDMETHODCALLTYPE GetLastError(HRESULT, ULONG, LPMAPIERROR*) override { return kRefused; }
  HRESULT STDMETHODCALLTYPE Advise(ULONG, LPMAPIADVISESINK, ULONG*) override { return kRefused; }
  HRESULT STDMETHODCALLTYPE Unadvise(ULONG) override { return kRefused; }
  HRESULT STDMETHODCALLTYPE GetStatus(ULONG*, ULONG*) override { return kRefused; }
  HRESULT STDMETHODCALLTYPE QueryColumns(ULONG, LPSPropTagArray*) override { return kRefused; }
  HRESULT STDMETHODCALLTYPE SeekRowApprox(ULONG, ULONG) override { return kRefused; }
  HRESULT STDMETHODCALLTYPE QueryPosition(ULONG*, ULONG*, ULONG*) override { return kRefused; }
  HRESULT STDMETHODCALLTYPE FindRow(LPSRestriction, BOOKMARK, ULONG) override { return kRefused; }
  HRESULT STDMETHODCALLTYPE Restrict(LPSRestriction, ULONG) override { return kRefused; }
  HRESULT STDMETHODCALLTYPE CreateBookmark(BOOKMARK*) override { return kRefused; }
  HRESULT STDMETHODCALLTYPE FreeBookmark(BOOKMARK) override { return kRefused; }
  HRESULT STDMETHODCALLTYPE SortTable(LPSSortOrderSet, ULONG) override { return kRefused; }
  HRESULT STDMETHODCALLTYPE QuerySortOrder(LPSSortOrderSet*) override { return kRefused; }
  HRESULT STDMETHODCALLTYPE Abort() override { return kRefused; }
  HRESULT STDMETHODCALLTYPE ExpandRow(ULONG, LPBYTE, ULONG, ULONG, LPSRowSet*, ULONG*) override {
    return kRefused;
  }
  HRESULT STDMETHODCALLTYPE CollapseRow(ULONG, LPBYTE, ULONG, ULONG*) override { return kRefused; }
  HRESULT STDMETHODCALLTYPE WaitForCompletion(ULONG, ULONG, ULONG*) override { return kRefused; }
  HRESULT STDMETHODCALLTYPE GetCollapseState(ULONG, ULONG, LPBYTE, ULONG*, LPBYTE*) override {
    return kRefused;
  }
  HRESULT STDMETHODCALLTYPE SetCollapseState(ULONG, ULONG, LPBYTE, BOOKMARK*) override { return kRefused; }

 protected:
  bool Answers(REFIID iid) const override { return iid == IID_IMAPITable; }

 private:
  std::vector<std::string> keys_;
  std::vector<ULONG> columns_;
  LONG position_ = 0;
};

HRESULT FakeTable::QueryRows(LONG rows, ULONG, LPSRowSet* out) {
  *out = nullptr;
  if (const HRESULT hr = World().Play("Table:QueryRows"); FAILED(hr)) return hr;
  const LONG count = std::min<LONG>(rows, static_cast<LONG>(keys_.size()) - position_);
  void* block = nullptr;
  if (FAILED(World().buffers.allocate(static_cast<ULONG>(CbNewSRowSet(static_cast<std::size_t>(count))),
                                      &block))) {
    return MAPI_E_NOT_ENOUGH_MEMORY;
  }
  SRowSet* set = static_cast<SRowSet*>(block);
  for (; set->cRows < static_cast<ULONG>(count); ++set->cRows, ++position_) {
    const FakeValues values(World(), keys_[static_cast<std::size_t>(position_)]);
    SRow& row = set->aRow[set->cRows];
    const std::vector<ULONG> tags = columns_.empty() ? values.Tags() : columns_;
    row.cValues = static_cast<ULONG>(tags.size());
    if (SUCCEEDED(values.Make(tags, &row.lpProps))) continue;
    for (ULONG i = 0; i < set->cRows; ++i) World().buffers.free(set->aRow[i].lpProps);
    World().buffers.free(set);
    return MAPI_E_NOT_ENOUGH_MEMORY;
  }
  *out = set;
  return S_OK;
}

HRESULT OpenKey(const FakeWorld& world, const std::string& key, ULONG* type, IUnknown** out);

// A container, a list or a user: all have the longest of the three method tables.
class FakeObject final : public FakeUnknown<IABContainer> {
 public:
  FakeObject(const FakeWorld& world, std::string key) : FakeUnknown(world), key_(std::move(key)) {}

  FAKE_REFUSED_PROP_METHODS
  HRESULT STDMETHODCALLTYPE SaveChanges(ULONG) override { return World().Play("Object:SaveChanges"); }
  HRESULT STDMETHODCALLTYPE GetProps(LPSPropTagArray tags, ULONG, ULONG* count, LPSPropValue* out) override {
    if (const HRESULT hr = World().Play("Object:GetProps"); FAILED(hr)) return hr;
    return GetValues(FakeValues(World(), key_), tags, count, out);
  }
  HRESULT STDMETHODCALLTYPE GetPropList(ULONG, LPSPropTagArray*) override { return kRefused; }
  HRESULT STDMETHODCALLTYPE SetProps(ULONG, LPSPropValue, LPSPropProblemArray* problems) override {
    if (problems != nullptr) *problems = nullptr;
    return World().Play("Object:SetProps");
  }
  HRESULT STDMETHODCALLTYPE GetContentsTable(ULONG, LPMAPITABLE* table) override {
    return MakeTable("Object:GetContentsTable", Contents(), table);
  }
  HRESULT STDMETHODCALLTYPE GetHierarchyTable(ULONG, LPMAPITABLE* table) override {
    return MakeTable("Object:GetHierarchyTable", World().script->hierarchy, table);
  }
  HRESULT STDMETHODCALLTYPE OpenEntry(ULONG size, LPENTRYID id, LPCIID, ULONG, ULONG* type,
                                      LPUNKNOWN* out) override {
    if (const HRESULT hr = World().Play("Object:OpenEntry"); FAILED(hr)) return hr;
    return OpenKey(World(), KeyOf(size, id), type, out);
  }
  HRESULT STDMETHODCALLTYPE SetSearchCriteria(LPSRestriction, LPENTRYLIST, ULONG) override {
    return kRefused;
  }
  HRESULT STDMETHODCALLTYPE GetSearchCriteria(ULONG, LPSRestriction*, LPENTRYLIST*, ULONG*) override {
    return kRefused;
  }
  HRESULT STDMETHODCALLTYPE CreateEntry(ULONG, LPENTRYID, ULONG, LPMAPIPROP* out) override {
    if (const HRESULT hr = World().Play("Object:CreateEntry"); FAILED(hr)) return hr;
    *out = new FakeObject(World(), World().script->OnNewEntry());
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE CopyEntries(LPENTRYLIST, ULONG_PTR, LPMAPIPROGRESS, ULONG) override {
    return kRefused;
  }
  HRESULT STDMETHODCALLTYPE DeleteEntries(LPENTRYLIST entries, ULONG) override {
    if (const HRESULT hr = World().Play("Object:DeleteEntries"); FAILED(hr)) return hr;
    for (ULONG i = 0; i < entries->cValues; ++i) {
      const SBinary& id = entries->lpbin[i];
      World().script->OnDelete(KeyOf(id.cb, reinterpret_cast<const ENTRYID*>(id.lpb)));
    }
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE ResolveNames(LPSPropTagArray, ULONG, LPADRLIST, LPFlagList) override {
    return kRefused;
  }

  static std::string KeyOf(ULONG size, const ENTRYID* id) {
    const char* bytes = reinterpret_cast<const char*>(id);
    return size <= ORV_MIN_ENTRYID ? std::string() : std::string(bytes + ORV_MIN_ENTRYID, bytes + size);
  }

 protected:
  bool Answers(REFIID iid) const override {
    const ULONG type = FakeValues(World(), key_).Type();
    if (iid == IID_IMAPIProp) return true;
    if (type == MAPI_MAILUSER) return iid == IID_IMailUser;
    return iid == IID_IMAPIContainer || iid == (type == MAPI_DISTLIST ? IID_IDistList : IID_IABContainer);
  }

 private:
  std::vector<std::string> Contents() const {
    const auto node = World().script->nodes.find(key_);
    return node == World().script->nodes.end() ? std::vector<std::string>() : node->second.contents;
  }
  HRESULT MakeTable(const char* operation, std::vector<std::string> keys, LPMAPITABLE* table) {
    *table = nullptr;
    if (const HRESULT hr = World().Play(operation); FAILED(hr)) return hr;
    *table = new FakeTable(World(), std::move(keys));
    return S_OK;
  }

  std::string key_;
};

HRESULT OpenKey(const FakeWorld& world, const std::string& key, ULONG* type, IUnknown** out) {
  *type = FakeValues(world, key).Type();
  *out = new FakeObject(world, key);
  return S_OK;
}

// The object that "ABProviderOpen" hands out.
class FakeProviderObject final : public FakeUnknown<IAddrBook> {
 public:
  using FakeUnknown::FakeUnknown;

  ULONG STDMETHODCALLTYPE Release() override {
    const FakeWorld world = World();
    const ULONG left = FakeUnknown::Release();
    if (left == 0) static_cast<void>(world.Play("Released"));
    return left;
  }

  FAKE_REFUSED_PROP_METHODS
  HRESULT STDMETHODCALLTYPE SaveChanges(ULONG) override { return kRefused; }
  HRESULT STDMETHODCALLTYPE GetPropList(ULONG, LPSPropTagArray*) override { return kRefused; }
  HRESULT STDMETHODCALLTYPE SetProps(ULONG, LPSPropValue, LPSPropProblemArray*) override { return kRefused; }
  HRESULT STDMETHODCALLTYPE GetProps(LPSPropTagArray tags, ULONG, ULONG* count, LPSPropValue* out) override {
    if (const HRESULT hr = World().Play("GetProps"); FAILED(hr)) return hr;
    return GetValues(FakeValues(World(), std::string()), tags, count, out);
  }
  HRESULT STDMETHODCALLTYPE OpenEntry(ULONG size, LPENTRYID id, LPCIID, ULONG, ULONG* type,
                                      LPUNKNOWN* out) override {
    if (const HRESULT hr = World().Play("OpenEntry"); FAILED(hr)) return hr;
    return OpenKey(World(), FakeObject::KeyOf(size, id), type, out);
  }
  HRESULT STDMETHODCALLTYPE CompareEntryIDs(ULONG, LPENTRYID, ULONG, LPENTRYID, ULONG, ULONG*) override {
    return kRefused;
  }
  HRESULT STDMETHODCALLTYPE Advise(ULONG size, LPENTRYID id, ULONG events, LPMAPIADVISESINK sink,
                                   ULONG* connection) override {
    if (const HRESULT hr = World().Play("Advise"); FAILED(hr)) return hr;
    *connection = World().script->OnAdvise(FakeObject::KeyOf(size, id), events, sink);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Unadvise(ULONG connection) override {
    if (const HRESULT hr = World().Play("Unadvise"); FAILED(hr)) return hr;
    return World().script->OnUnadvise(connection);
  }
  HRESULT STDMETHODCALLTYPE CreateOneOff(LPWSTR, LPWSTR, LPWSTR, ULONG, ULONG*, LPENTRYID*) override {
    return kRefused;
  }
  HRESULT STDMETHODCALLTYPE NewEntry(ULONG_PTR, ULONG, ULONG, LPENTRYID, ULONG, LPENTRYID, ULONG* size,
                                     LPENTRYID* out) override;
  HRESULT STDMETHODCALLTYPE ResolveName(ULONG_PTR, ULONG, LPWSTR, LPADRLIST) override { return kRefused; }
  HRESULT STDMETHODCALLTYPE Address(ULONG_PTR*, LPADRPARM, LPADRLIST*) override { return kRefused; }
  HRESULT STDMETHODCALLTYPE Details(ULONG_PTR*, LPFNDISMISS, LPVOID, ULONG, LPENTRYID, LPFNBUTTON, LPVOID,
                                    LPWSTR, ULONG) override {
    return World().Play("Details");
  }
  HRESULT STDMETHODCALLTYPE RecipOptions(ULONG_PTR, ULONG, LPADRENTRY) override { return kRefused; }
  HRESULT STDMETHODCALLTYPE QueryDefaultRecipOpt(LPWSTR, ULONG, ULONG*, LPSPropValue*) override {
    return kRefused;
  }
  HRESULT STDMETHODCALLTYPE GetPAB(ULONG*, LPENTRYID*) override { return kRefused; }
  HRESULT STDMETHODCALLTYPE SetPAB(ULONG, LPENTRYID) override { return kRefused; }
  HRESULT STDMETHODCALLTYPE GetDefaultDir(ULONG*, LPENTRYID*) override { return kRefused; }
  HRESULT STDMETHODCALLTYPE SetDefaultDir(ULONG, LPENTRYID) override { return kRefused; }
  HRESULT STDMETHODCALLTYPE GetSearchPath(ULONG, LPSRowSet*) override { return kRefused; }
  HRESULT STDMETHODCALLTYPE SetSearchPath(ULONG, LPSRowSet) override { return kRefused; }
  HRESULT STDMETHODCALLTYPE PrepareRecips(ULONG, LPSPropTagArray, LPADRLIST list) override {
    World().script->OnPrepare(list);
    return World().Play("PrepareRecips");
  }

 protected:
  bool Answers(REFIID iid) const override { return iid == IID_IAddrBook || iid == IID_IMAPIProp; }
};

HRESULT FakeProviderObject::NewEntry(ULONG_PTR, ULONG, ULONG, LPENTRYID, ULONG, LPENTRYID, ULONG* size,
                                     LPENTRYID* out) {
  if (const HRESULT hr = World().Play("NewEntry"); FAILED(hr)) return hr;
  const std::vector<BYTE> bytes = World().script->EntryId(World().script->OnNewEntry());
  void* block = nullptr;
  if (FAILED(World().buffers.allocate(static_cast<ULONG>(bytes.size()), &block)))
    return MAPI_E_NOT_ENOUGH_MEMORY;
  std::memcpy(block, bytes.data(), bytes.size());
  *size = static_cast<ULONG>(bytes.size());
  *out = static_cast<ENTRYID*>(block);
  return S_OK;
}

}  // namespace

IAddrBook* MakeFakeProvider(FakeScript* script, const FakeBuffers& buffers) {
  return new FakeProviderObject(FakeWorld{script, buffers});
}

}  // namespace orv::test
