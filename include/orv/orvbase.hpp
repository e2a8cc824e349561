// Helpers for C++20, for clients and providers alike: owners of objects, buffers, row sets and address lists; tag
// arrays; a view of property values that somebody else made. For those who implement the interfaces also reference
// counting, the boundary that no exception crosses, and bases that refuse every method, so that a class writes down
// only what it does. All of it is ours, header-only, and optional: nothing crosses an interface but what orvapi.h
// declares.
//
// Rules that hold for all of it:
// - Nothing here names an export: what frees a buffer is carried by its owner. A provider takes the functions that
//   ABProviderOpen received, a client with the import library OrvFreeBuffer and its like, any other what
//   GetProcAddress found.
// - An owner is no more thread-safe than a pointer: one owner is used by one thread at a time, and several owners of
//   one object may be used by several threads.
// - Owners must be gone before the library that their contents came from is unloaded.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <string_view>
#include <utility>
#include <vector>

#include "orv/orv.h"

namespace orv::sdk {

// Holds one reference to an interface and gives it back.
struct ReleaseInterface {
  void operator()(IUnknown* object) const { object->Release(); }
};
template <class Interface>
using Owned = std::unique_ptr<Interface, ReleaseInterface>;

// Of an interface whose identifier nobody named: it does not compile.
template <class Interface>
struct UnnamedInterface {
  static_assert(sizeof(Interface) == 0, "this interface has no kIidOf: specialise it");
  static constexpr GUID kIid{};
};

// The identifier of an interface; specialise it for others.
template <class Interface>
inline constexpr GUID kIidOf = UnnamedInterface<Interface>::kIid;
// The system's, spelled out so that nothing has to be linked for it.
template <>
inline constexpr GUID kIidOf<IUnknown> = {0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
template <>
inline constexpr GUID kIidOf<IMAPIProp> = IID_IMAPIProp;
template <>
inline constexpr GUID kIidOf<IProfSect> = IID_IProfSect;
template <>
inline constexpr GUID kIidOf<IMailUser> = IID_IMailUser;
template <>
inline constexpr GUID kIidOf<IMAPIContainer> = IID_IMAPIContainer;
template <>
inline constexpr GUID kIidOf<IABContainer> = IID_IABContainer;
template <>
inline constexpr GUID kIidOf<IDistList> = IID_IDistList;
template <>
inline constexpr GUID kIidOf<IMAPITable> = IID_IMAPITable;
template <>
inline constexpr GUID kIidOf<IMAPIAdviseSink> = IID_IMAPIAdviseSink;
template <>
inline constexpr GUID kIidOf<IMAPIProgress> = IID_IMAPIProgress;
template <>
inline constexpr GUID kIidOf<IAddrBook> = IID_IAddrBook;
template <>
inline constexpr GUID kIidOf<IOrvSession> = IID_IOrvSession;
template <>
inline constexpr GUID kIidOf<IOrvSupport> = IID_IOrvSupport;
template <>
inline constexpr GUID kIidOf<IOrvProfAdmin> = IID_IOrvProfAdmin;
template <>
inline constexpr GUID kIidOf<IOrvProfAdmin2> = IID_IOrvProfAdmin2;
template <>
inline constexpr GUID kIidOf<IOrvProfAdmin3> = IID_IOrvProfAdmin3;
template <>
inline constexpr GUID kIidOf<IOrvSession2> = IID_IOrvSession2;
template <>
inline constexpr GUID kIidOf<IOrvSupport2> = IID_IOrvSupport2;
template <>
inline constexpr GUID kIidOf<IABServiceAdmin> = IID_IABServiceAdmin;

// Holds one reference to an interface and gives it back; unlike Owned it is filled by the calls that hand objects
// out, copied, and asked for other interfaces.
template <class Interface>
class ComPtr {
 public:
  ComPtr() noexcept = default;
  ComPtr(const ComPtr& other) noexcept : ComPtr(Share(other.object_)) {}
  ComPtr(ComPtr&& other) noexcept : object_(other.Detach()) {}
  ComPtr& operator=(ComPtr other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~ComPtr() { Reset(); }

  // Takes over the caller's reference.
  static ComPtr Adopt(Interface* object) noexcept {
    ComPtr adopted;
    adopted.object_ = object;
    return adopted;
  }
  // Adds a reference of its own, as for an argument that is to be kept.
  static ComPtr Share(Interface* object) noexcept {
    if (object != nullptr) object->AddRef();
    return Adopt(object);
  }

  Interface* Get() const noexcept { return object_; }
  Interface* operator->() const noexcept { return object_; }
  Interface& operator*() const noexcept { return *object_; }
  explicit operator bool() const noexcept { return object_ != nullptr; }

  // Where a call writes the object that it hands out; what was held is let go of first.
  Interface** Put() noexcept {
    Reset();
    return &object_;
  }
  // The same for calls that open an object as the interface named: OpenEntry, OpenProperty.
  LPUNKNOWN* PutUnknown() noexcept { return reinterpret_cast<LPUNKNOWN*>(Put()); }
  // The reference is the caller's from now on.
  [[nodiscard]] Interface* Detach() noexcept { return std::exchange(object_, nullptr); }
  // An exception of a foreign object ends here: nobody could be told any more.
  void Reset() noexcept {
    try {
      if (Interface* old = Detach()) old->Release();
    } catch (...) {
    }
  }

  // Empty when the object does not have the interface.
  template <class Other>
  ComPtr<Other> As(REFIID identifier) const {
    void* other = nullptr;
    if (object_ == nullptr || FAILED(object_->QueryInterface(identifier, &other))) return {};
    return ComPtr<Other>::Adopt(static_cast<Other*>(other));
  }
  template <class Other>
  ComPtr<Other> As() const {
    return As<Other>(kIidOf<Other>);
  }

 private:
  Interface* object_ = nullptr;
};

// A lock that costs nothing to make and leaves nothing behind, for std::lock_guard. It is not recursive: a thread that
// locks it twice waits for ever.
class Lock {
 public:
  void lock() { AcquireSRWLockExclusive(&lock_); }
  void unlock() { ReleaseSRWLockExclusive(&lock_); }

 private:
  SRWLOCK lock_ = SRWLOCK_INIT;
};

// Runs the body of a method. The caller may be written in any language, so nothing that we throw may reach it:
// memory exhaustion becomes its code, anything else MAPI_E_CALL_FAILED.
template <class Body>
HRESULT Guarded(Body&& body) noexcept {
  try {
    return body();
  } catch (const std::bad_alloc&) {
    return MAPI_E_NOT_ENOUGH_MEMORY;
  } catch (...) {
    return MAPI_E_CALL_FAILED;
  }
}

// How each kind of result is given back: with one call, or row by row.
inline void FreeResult(LPFREEBUFFER free, void* root) noexcept { free(root); }
inline void FreeResult(LPFREEBUFFER free, SRowSet* rows) noexcept {
  for (ULONG i = 0; i < rows->cRows; ++i) {
    if (rows->aRow[i].lpProps != nullptr) free(rows->aRow[i].lpProps);
  }
  free(rows);
}
inline void FreeResult(LPFREEBUFFER free, ADRLIST* list) noexcept {
  for (ULONG i = 0; i < list->cEntries; ++i) {
    if (list->aEntries[i].rgPropVals != nullptr) free(list->aEntries[i].rgPropVals);
  }
  free(list);
}

// Owns a root of the library's allocator that a call handed out: values, tags, an identifier, a row set, an address
// list. `free` is OrvFreeBuffer, however it was come by.
template <class T>
class Buffer {
 public:
  explicit Buffer(LPFREEBUFFER free, T* handedOut = nullptr) noexcept : buffer_(handedOut), free_(free) {}
  Buffer(Buffer&& other) noexcept : buffer_(other.Detach()), free_(other.free_) {}
  Buffer& operator=(Buffer&& other) noexcept {
    std::swap(buffer_, other.buffer_);
    std::swap(free_, other.free_);
    return *this;
  }
  ~Buffer() { Reset(); }

  T* Get() const noexcept { return buffer_; }
  T* operator->() const noexcept { return buffer_; }
  explicit operator bool() const noexcept { return buffer_ != nullptr; }

  // Where a call writes what it hands out; what was held is freed first.
  T** Put() noexcept {
    Reset();
    return &buffer_;
  }
  // For calls that take what is held and replace it, OrvAddress and ExpandRecipients: it is not freed first.
  T** InOut() noexcept { return &buffer_; }
  // The buffer is the caller's from now on.
  [[nodiscard]] T* Detach() noexcept { return std::exchange(buffer_, nullptr); }
  void Reset() noexcept {
    if (T* old = Detach()) FreeResult(free_, old);
  }

 private:
  T* buffer_ = nullptr;
  LPFREEBUFFER free_;
};
// Freed with the property arrays of their rows and entries.
using RowSet = Buffer<SRowSet>;
using AddressList = Buffer<ADRLIST>;

// A fixed list of tags in the shape of SPropTagArray, counted by the compiler:
//   TagArray columns{PR_DISPLAY_NAME_W, PR_ENTRYID};
//   table->SetColumns(columns.Get(), 0);
template <size_t Size>
struct TagArray {
  template <class... Tags>
  constexpr explicit TagArray(Tags... tags) noexcept : aulPropTag{static_cast<ULONG>(tags)...} {}

  // The interfaces take tags without const, and who is called may write to them.
  LPSPropTagArray Get() noexcept { return reinterpret_cast<LPSPropTagArray>(this); }

  ULONG cValues = Size;
  ULONG aulPropTag[Size];
};
template <class... Tags>
TagArray(Tags...) -> TagArray<sizeof...(Tags)>;
static_assert(offsetof(TagArray<1>, aulPropTag) == offsetof(SPropTagArray, aulPropTag));

// Property values that somebody else made: a row, a recipient, an answer to GetProps. Nothing is taken for granted:
// an array may be null whatever its count says, a column may be missing or of another type, texts and bytes may be
// null. A view; what it shows must outlive it.
class ValueView {
 public:
  ValueView(const SPropValue* values, ULONG count) noexcept
      : values_(values), count_(values != nullptr ? count : 0) {}
  explicit ValueView(const SRow& row) noexcept : ValueView(row.lpProps, row.cValues) {}
  explicit ValueView(const ADRENTRY& entry) noexcept : ValueView(entry.rgPropVals, entry.cValues) {}

  const SPropValue* begin() const noexcept { return values_; }
  const SPropValue* end() const noexcept { return values_ + count_; }

  // The first value that bears exactly this tag, type included, else null; kit::FindValue and kit::PropList::Find go by
  // the property's identifier alone.
  const SPropValue* Find(ULONG tag) const noexcept {
    const auto found =
        std::find_if(begin(), end(), [tag](const SPropValue& value) { return value.ulPropTag == tag; });
    return found != end() ? found : nullptr;
  }
  // Of a PT_UNICODE tag; null when there is none.
  LPCWSTR Text(ULONG tag) const noexcept {
    const SPropValue* value = Find(tag);
    return value != nullptr ? value->Value.lpszW : nullptr;
  }
  // Of a PT_BINARY tag; no bytes when there are none.
  SBinary Binary(ULONG tag) const noexcept {
    const SPropValue* value = Find(tag);
    return value != nullptr && value->Value.bin.lpb != nullptr ? value->Value.bin : SBinary{0, nullptr};
  }
  // Of a PT_LONG tag.
  ULONG Number(ULONG tag, ULONG otherwise = 0) const noexcept {
    const SPropValue* value = Find(tag);
    return value != nullptr ? value->Value.ul : otherwise;
  }
  // Of a PT_BOOLEAN tag.
  bool Flag(ULONG tag) const noexcept {
    const SPropValue* value = Find(tag);
    return value != nullptr && value->Value.b != 0;
  }

 private:
  const SPropValue* values_;
  ULONG count_;
};

// The allocator that ABProviderOpen received, or the exports of those names. In here running out of memory is
// std::bad_alloc; a root that is not released to a caller frees itself with all that hangs off it.
class Allocator {
 public:
  using Root = std::unique_ptr<void, LPFREEBUFFER>;

  Allocator(LPALLOCATEBUFFER root, LPALLOCATEMORE more, LPFREEBUFFER free)
      : root_(root), more_(more), free_(free) {}

  Root AllocateRoot(size_t size) const {
    void* buffer = nullptr;
    if (FAILED(root_(CountOf(size), &buffer))) throw std::bad_alloc();
    return Root(buffer, free_);
  }
  // Lives and dies with `root`, which must be a root.
  void* AllocateMore(void* root, size_t size) const {
    void* buffer = nullptr;
    if (FAILED(more_(CountOf(size), root, &buffer))) throw std::bad_alloc();
    return buffer;
  }
  void Free(void* root) const { free_(root); }
  // Takes over a root that somebody else handed out.
  Root Adopt(void* root) const { return Root(root, free_); }
  // The same with its type; without an argument an owner to be filled.
  template <class T>
  Buffer<T> Own(T* handedOut = nullptr) const noexcept {
    return Buffer<T>(free_, handedOut);
  }
  // A zero-filled root of that size.
  template <class T>
  Buffer<T> Make(size_t size) const {
    return Own(static_cast<T*>(AllocateRoot(size).release()));
  }

  // Copies that live and die with `root`.
  LPWSTR CopyText(void* root, std::basic_string_view<WCHAR> text) const {
    auto* copy = static_cast<LPWSTR>(AllocateMore(root, (text.size() + 1) * sizeof(WCHAR)));
    *std::copy(text.begin(), text.end(), copy) = 0;
    return copy;
  }
  SBinary CopyBytes(void* root, const void* bytes, size_t size) const {
    auto* copy = static_cast<LPBYTE>(AllocateMore(root, size));
    if (size != 0) std::memcpy(copy, bytes, size);
    return {CountOf(size), copy};
  }

  Root CopyTags(const std::vector<ULONG>& tags) const {
    Root root = AllocateRoot(CbNewSPropTagArray(tags.size()));
    auto* array = static_cast<SPropTagArray*>(root.get());
    array->cValues = CountOf(tags.size());
    std::copy(tags.begin(), tags.end(), array->aulPropTag);
    return root;
  }

  // Counts of the interfaces have 32 bits.
  static ULONG CountOf(size_t size) {
    if (size > std::numeric_limits<ULONG>::max()) throw std::bad_alloc();
    return static_cast<ULONG>(size);
  }

 private:
  LPALLOCATEBUFFER root_;
  LPALLOCATEMORE more_;
  LPFREEBUFFER free_;
};

inline std::vector<ULONG> TagsOf(const SPropTagArray& tags) {
  return {tags.aulPropTag, tags.aulPropTag + tags.cValues};
}

// A row set in the making: each row is a root of its own, which a failure half-way has to free.
class RowSetBuilder {
 public:
  RowSetBuilder(const Allocator& allocator, size_t capacity)
      : allocator_(allocator),
        capacity_(Allocator::CountOf(capacity)),
        root_(allocator.AllocateRoot(CbNewSRowSet(capacity))) {}
  ~RowSetBuilder() {
    for (ULONG i = 0; root_ != nullptr && i < Get()->cRows; ++i) allocator_.Free(Get()->aRow[i].lpProps);
  }
  RowSetBuilder(const RowSetBuilder&) = delete;
  RowSetBuilder& operator=(const RowSetBuilder&) = delete;

  // `values` holds `count` property values. There is no room beyond the capacity: std::bad_alloc, the row is freed.
  void Add(Allocator::Root values, size_t count) {
    if (Get()->cRows == capacity_) throw std::bad_alloc();
    const ULONG columns = Allocator::CountOf(count);
    Get()->aRow[Get()->cRows++] = {0, columns, static_cast<LPSPropValue>(values.release())};
  }
  LPSRowSet Release() { return static_cast<LPSRowSet>(root_.release()); }

 private:
  LPSRowSet Get() const { return static_cast<LPSRowSet>(root_.get()); }

  Allocator allocator_;
  ULONG capacity_;
  Allocator::Root root_;
};

// An object is born with one reference, its maker's. The count is atomic; what a class changes after its
// construction it guards with a lock of its own. QueryInterface answers IID_IUnknown and the identifiers of
// the interface and of those of its bases that are named. The destructor is virtual here and not in the
// interface, so its slots lie behind the published ones.
template <class Interface, class... Bases>
class Object : public Interface {
 public:
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (object == nullptr) return MAPI_E_INVALID_PARAMETER;
    const bool known = ((IsEqualGUID(iid, kIidOf<IUnknown>) || IsEqualGUID(iid, kIidOf<Interface>)) || ... ||
                        IsEqualGUID(iid, kIidOf<Bases>));
    *object = known ? static_cast<Interface*>(this) : nullptr;
    if (known) AddRef();
    return known ? S_OK : MAPI_E_INTERFACE_NOT_SUPPORTED;
  }

  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }

  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }

 protected:
  Object() = default;
  virtual ~Object() = default;

 private:
  std::atomic<ULONG> references_{1};
};

// A method that an object does not offer.
#define ORV_REFUSE(method, code, ...) \
  HRESULT STDMETHODCALLTYPE method(__VA_ARGS__) override { return code; }

// IMAPIProp that has no properties: MAPI_E_NO_SUPPORT throughout.
template <class Interface, class... Bases>
class RefusingProp : public Object<Interface, Bases...> {
 public:
  ORV_REFUSE(GetLastError, MAPI_E_NO_SUPPORT, HRESULT, ULONG, LPMAPIERROR*)
  ORV_REFUSE(SaveChanges, MAPI_E_NO_SUPPORT, ULONG)
  ORV_REFUSE(GetProps, MAPI_E_NO_SUPPORT, LPSPropTagArray, ULONG, ULONG*, LPSPropValue*)
  ORV_REFUSE(GetPropList, MAPI_E_NO_SUPPORT, ULONG, LPSPropTagArray*)
  ORV_REFUSE(OpenProperty, MAPI_E_NO_SUPPORT, ULONG, LPCIID, ULONG, ULONG, LPUNKNOWN*)
  ORV_REFUSE(SetProps, MAPI_E_NO_SUPPORT, ULONG, LPSPropValue, LPSPropProblemArray*)
  ORV_REFUSE(DeleteProps, MAPI_E_NO_SUPPORT, LPSPropTagArray, LPSPropProblemArray*)
  ORV_REFUSE(CopyTo, MAPI_E_NO_SUPPORT, ULONG, LPCIID, LPSPropTagArray, ULONG_PTR, LPMAPIPROGRESS, LPCIID,
             LPVOID, ULONG, LPSPropProblemArray*)
  ORV_REFUSE(CopyProps, MAPI_E_NO_SUPPORT, LPSPropTagArray, ULONG_PTR, LPMAPIPROGRESS, LPCIID, LPVOID, ULONG,
             LPSPropProblemArray*)
  ORV_REFUSE(GetNamesFromIDs, MAPI_E_NO_SUPPORT, LPSPropTagArray*, LPGUID, ULONG, ULONG*, LPMAPINAMEID**)
  ORV_REFUSE(GetIDsFromNames, MAPI_E_NO_SUPPORT, ULONG, LPMAPINAMEID*, ULONG, LPSPropTagArray*)
};

// The methods of IAddrBook behind those of IMAPIProp, for a provider object; `Base` implements the latter.
template <class Base>
class RefusingAddrBook : public Base {
 public:
  using Base::Base;

  ORV_REFUSE(OpenEntry, MAPI_E_NO_SUPPORT, ULONG, LPENTRYID, LPCIID, ULONG, ULONG*, LPUNKNOWN*)
  ORV_REFUSE(CompareEntryIDs, MAPI_E_NO_SUPPORT, ULONG, LPENTRYID, ULONG, LPENTRYID, ULONG, ULONG*)
  ORV_REFUSE(Advise, MAPI_E_NO_SUPPORT, ULONG, LPENTRYID, ULONG, LPMAPIADVISESINK, ULONG*)
  ORV_REFUSE(Unadvise, MAPI_E_NO_SUPPORT, ULONG)
  ORV_REFUSE(CreateOneOff, MAPI_E_NO_SUPPORT, LPWSTR, LPWSTR, LPWSTR, ULONG, ULONG*, LPENTRYID*)
  ORV_REFUSE(NewEntry, MAPI_E_NO_SUPPORT, ULONG_PTR, ULONG, ULONG, LPENTRYID, ULONG, LPENTRYID, ULONG*,
             LPENTRYID*)
  ORV_REFUSE(ResolveName, MAPI_E_NO_SUPPORT, ULONG_PTR, ULONG, LPWSTR, LPADRLIST)
  ORV_REFUSE(Address, MAPI_E_NO_SUPPORT, ULONG_PTR*, LPADRPARM, LPADRLIST*)
  ORV_REFUSE(Details, MAPI_E_NO_SUPPORT, ULONG_PTR*, LPFNDISMISS, LPVOID, ULONG, LPENTRYID, LPFNBUTTON,
             LPVOID, LPWSTR, ULONG)
  ORV_REFUSE(RecipOptions, MAPI_E_NO_SUPPORT, ULONG_PTR, ULONG, LPADRENTRY)
  ORV_REFUSE(QueryDefaultRecipOpt, MAPI_E_NO_SUPPORT, LPWSTR, ULONG, ULONG*, LPSPropValue*)
  ORV_REFUSE(GetPAB, MAPI_E_NO_SUPPORT, ULONG*, LPENTRYID*)
  ORV_REFUSE(SetPAB, MAPI_E_NO_SUPPORT, ULONG, LPENTRYID)
  ORV_REFUSE(GetDefaultDir, MAPI_E_NO_SUPPORT, ULONG*, LPENTRYID*)
  ORV_REFUSE(SetDefaultDir, MAPI_E_NO_SUPPORT, ULONG, LPENTRYID)
  ORV_REFUSE(GetSearchPath, MAPI_E_NO_SUPPORT, ULONG, LPSRowSet*)
  ORV_REFUSE(SetSearchPath, MAPI_E_NO_SUPPORT, ULONG, LPSRowSet)
  ORV_REFUSE(PrepareRecips, S_OK, ULONG, LPSPropTagArray, LPADRLIST)  // recipients stay as they are
};

// The methods of IABContainer and IDistList behind those of IMAPIProp. Changing ones answer MAPI_E_NO_ACCESS, as a
// read-only container does.
template <class Base>
class RefusingContainer : public Base {
 public:
  using Base::Base;

  ORV_REFUSE(GetContentsTable, MAPI_E_NO_SUPPORT, ULONG, LPMAPITABLE*)
  ORV_REFUSE(GetHierarchyTable, MAPI_E_NO_SUPPORT, ULONG, LPMAPITABLE*)
  ORV_REFUSE(OpenEntry, MAPI_E_NO_SUPPORT, ULONG, LPENTRYID, LPCIID, ULONG, ULONG*, LPUNKNOWN*)
  ORV_REFUSE(SetSearchCriteria, MAPI_E_NO_SUPPORT, LPSRestriction, LPENTRYLIST, ULONG)
  ORV_REFUSE(GetSearchCriteria, MAPI_E_NO_SUPPORT, ULONG, LPSRestriction*, LPENTRYLIST*, ULONG*)
  ORV_REFUSE(CreateEntry, MAPI_E_NO_ACCESS, ULONG, LPENTRYID, ULONG, LPMAPIPROP*)
  ORV_REFUSE(CopyEntries, MAPI_E_NO_ACCESS, LPENTRYLIST, ULONG_PTR, LPMAPIPROGRESS, ULONG)
  ORV_REFUSE(DeleteEntries, MAPI_E_NO_ACCESS, LPENTRYLIST, ULONG)
  ORV_REFUSE(ResolveNames, MAPI_E_NO_SUPPORT, LPSPropTagArray, ULONG, LPADRLIST, LPFlagList)
};

// A snapshot table without rows, columns and position; nothing of it is ever pending.
class RefusingTable : public Object<IMAPITable> {
 public:
  HRESULT STDMETHODCALLTYPE GetStatus(ULONG* status, ULONG* type) override {
    if (status == nullptr || type == nullptr) return MAPI_E_INVALID_PARAMETER;
    *status = TBLSTAT_COMPLETE;
    *type = TBLTYPE_SNAPSHOT;
    return S_OK;
  }
  ORV_REFUSE(GetLastError, MAPI_E_NO_SUPPORT, HRESULT, ULONG, LPMAPIERROR*)
  ORV_REFUSE(Advise, MAPI_E_NO_SUPPORT, ULONG, LPMAPIADVISESINK, ULONG*)
  ORV_REFUSE(Unadvise, MAPI_E_NO_SUPPORT, ULONG)
  ORV_REFUSE(SetColumns, MAPI_E_NO_SUPPORT, LPSPropTagArray, ULONG)
  ORV_REFUSE(QueryColumns, MAPI_E_NO_SUPPORT, ULONG, LPSPropTagArray*)
  ORV_REFUSE(GetRowCount, MAPI_E_NO_SUPPORT, ULONG, ULONG*)
  ORV_REFUSE(SeekRow, MAPI_E_NO_SUPPORT, BOOKMARK, LONG, LONG*)
  ORV_REFUSE(SeekRowApprox, MAPI_E_NO_SUPPORT, ULONG, ULONG)
  ORV_REFUSE(QueryPosition, MAPI_E_NO_SUPPORT, ULONG*, ULONG*, ULONG*)
  ORV_REFUSE(FindRow, MAPI_E_NO_SUPPORT, LPSRestriction, BOOKMARK, ULONG)
  ORV_REFUSE(Restrict, MAPI_E_NO_SUPPORT, LPSRestriction, ULONG)
  ORV_REFUSE(CreateBookmark, MAPI_E_NO_SUPPORT, BOOKMARK*)
  ORV_REFUSE(FreeBookmark, MAPI_E_NO_SUPPORT, BOOKMARK)
  ORV_REFUSE(SortTable, MAPI_E_NO_SUPPORT, LPSSortOrderSet, ULONG)
  ORV_REFUSE(QuerySortOrder, MAPI_E_NO_SUPPORT, LPSSortOrderSet*)
  ORV_REFUSE(QueryRows, MAPI_E_NO_SUPPORT, LONG, ULONG, LPSRowSet*)
  ORV_REFUSE(Abort, S_OK)
  ORV_REFUSE(ExpandRow, MAPI_E_NO_SUPPORT, ULONG, LPBYTE, ULONG, ULONG, LPSRowSet*, ULONG*)
  ORV_REFUSE(CollapseRow, MAPI_E_NO_SUPPORT, ULONG, LPBYTE, ULONG, ULONG*)
  ORV_REFUSE(WaitForCompletion, MAPI_E_NO_SUPPORT, ULONG, ULONG, ULONG*)
  ORV_REFUSE(GetCollapseState, MAPI_E_NO_SUPPORT, ULONG, ULONG, LPBYTE, ULONG*, LPBYTE*)
  ORV_REFUSE(SetCollapseState, MAPI_E_NO_SUPPORT, ULONG, ULONG, LPBYTE, BOOKMARK*)
};

}  // namespace orv::sdk
