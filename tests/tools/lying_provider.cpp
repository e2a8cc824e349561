// A provider whose containers answer what none may answer, one lie each, named after it. Between them stands one that
// is honest, so that a test sees that it is still read.
#include <optional>

#include "orv/orvbase.hpp"

namespace {

using namespace orv::sdk;

enum Lie : BYTE {
  kHonest,
  kNoSet,
  kNoValues,
  kShortRows,
  kNullTexts,
  kFalseCount,
  kNoTable,
  kJunk,
  kThrows,
  kRoot
};
constexpr const WCHAR* kNames[] = {L"honest\x1B[2J\n", L"no set",      L"no values", L"short rows",
                                   L"null texts",      L"false count", L"no table",  L"junk on failure",
                                   L"exception",       L"liar"};
constexpr MAPIUID kUid = {{'o', 'r', 'v', 'c', 't', 'l', ' ', 't', 'e', 's', 't', ' ', 'l', 'i', 'a', 'r'}};

struct EntryId {
  BYTE flags[4];
  MAPIUID uid;
  BYTE lie;
};

std::optional<Allocator> g_allocator;  // of the library that loaded this one

Allocator::Root MakeValues(BYTE lie) {
  const EntryId id = {{}, kUid, lie};
  Allocator::Root root = g_allocator->AllocateRoot(5 * sizeof(SPropValue));
  auto* values = static_cast<SPropValue*>(root.get());
  const ULONG tags[] = {PR_DISPLAY_NAME_W, PR_ENTRYID, PR_OBJECT_TYPE, PR_CONTAINER_FLAGS, PR_DEPTH};
  for (size_t i = 0; i < std::size(tags); ++i) values[i].ulPropTag = tags[i];
  values[0].Value.lpszW = g_allocator->CopyText(values, kNames[lie]);
  values[1].Value.bin = g_allocator->CopyBytes(values, &id, sizeof(id));
  values[2].Value.l = MAPI_ABCONT;
  values[3].Value.l = AB_RECIPIENTS;
  return root;
}

class Table final : public RefusingTable {
 public:
  explicit Table(BYTE lie) : lie_(lie), left_(lie == kRoot ? kRoot : 1) {}

  ORV_REFUSE(SetColumns, S_OK, LPSPropTagArray, ULONG)
  ORV_REFUSE(SeekRow, S_OK, BOOKMARK, LONG, LONG*)
  HRESULT STDMETHODCALLTYPE GetRowCount(ULONG, ULONG* count) override {
    *count = left_;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE QueryRows(LONG, ULONG, LPSRowSet* rows) override {
    if (lie_ == kThrows) throw 1;
    if (lie_ == kJunk) *rows = reinterpret_cast<LPSRowSet>(this);
    if (lie_ == kJunk) return MAPI_E_NETWORK_ERROR;
    if (lie_ == kNoSet) return S_OK;
    RowSetBuilder builder(*g_allocator, 1);
    if (left_ != 0) builder.Add(MakeValues(lie_ == kRoot ? static_cast<BYTE>(--left_) : (--left_, lie_)), 5);
    *rows = builder.Release();
    if ((*rows)->cRows == 1) Spoil((*rows)->aRow[0]);
    if (lie_ == kFalseCount) (*rows)->cRows = 0x7FFFFFFF;
    return S_OK;
  }

 private:
  void Spoil(SRow& row) const {
    if (lie_ == kNoValues) g_allocator->Free(std::exchange(row.lpProps, nullptr));
    if (lie_ == kShortRows) row.cValues = 1;
    if (lie_ == kNullTexts) row.lpProps[0].Value.lpszW = nullptr;
    if (lie_ == kNullTexts) row.lpProps[1].Value.bin.lpb = nullptr;
  }

  BYTE lie_;
  ULONG left_;
};

class Container final : public RefusingContainer<RefusingProp<IABContainer, IMAPIProp, IMAPIContainer>> {
 public:
  explicit Container(BYTE lie) : lie_(lie) {}

  HRESULT STDMETHODCALLTYPE GetContentsTable(ULONG, LPMAPITABLE* table) override {
    if (lie_ != kNoTable && lie_ != kRoot) *table = new Table(lie_);
    return lie_ == kRoot ? MAPI_E_NO_SUPPORT : S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetHierarchyTable(ULONG, LPMAPITABLE* table) override {
    if (lie_ == kRoot) *table = new Table(kRoot);
    return lie_ == kRoot ? S_OK : MAPI_E_NO_SUPPORT;
  }

 private:
  BYTE lie_;
};

class Provider final : public RefusingAddrBook<RefusingProp<IAddrBook, IMAPIProp>> {
 public:
  HRESULT STDMETHODCALLTYPE GetProps(LPSPropTagArray, ULONG, ULONG* count, LPSPropValue* values) override {
    *count = 5;
    *values = static_cast<LPSPropValue>(MakeValues(kRoot).release());
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE OpenEntry(ULONG size, LPENTRYID id, LPCIID, ULONG, ULONG* type,
                                      LPUNKNOWN* object) override {
    if (size != sizeof(EntryId)) return MAPI_E_INVALID_ENTRYID;
    *type = MAPI_ABCONT;
    *object = new Container(reinterpret_cast<const EntryId*>(id)->lie);
    return S_OK;
  }
};

}  // namespace

extern "C" __declspec(dllexport) HRESULT STDAPICALLTYPE
    ABProviderOpen(HINSTANCE, LPORVSUPPORT support, LPPROFSECT, ULONG_PTR, ULONG, LPALLOCATEBUFFER root,
                   LPALLOCATEMORE more, LPFREEBUFFER free, LPADRBOOK* provider, ULONG_PTR) {
  g_allocator.emplace(root, more, free);
  *provider = new Provider;
  return support->SetProviderUID(&kUid);
}

extern "C" __declspec(dllexport) HRESULT STDAPICALLTYPE
    LiarServiceEntry(HINSTANCE, ULONG_PTR, ULONG, ULONG, ULONG, LPSPropValue, LPPROFSECT, LPORVSUPPORT,
                     ULONG_PTR) {
  return S_OK;
}
