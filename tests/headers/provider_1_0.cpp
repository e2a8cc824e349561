// A provider of version 1.0: every helper that this version offered, used as it was then. What is changed here so that
// it compiles breaks the providers of others. Compiled only.
#include <mutex>

#include "orv/orvbase.hpp"

namespace {

using namespace orv::sdk;

// The bases leave no method out: their classes can be made.
class Container final : public RefusingContainer<RefusingProp<IDistList, IMAPIProp, IMAPIContainer>> {
 public:
  ORV_REFUSE(CreateEntry, MAPI_E_TOO_COMPLEX, ULONG, LPENTRYID, ULONG, LPMAPIPROP*)
};
class Provider final : public RefusingAddrBook<RefusingProp<IAddrBook, IMAPIProp>> {};

class Table final : public RefusingTable {
 public:
  explicit Table(const Allocator& allocator) : allocator_(allocator) {}

  HRESULT STDMETHODCALLTYPE QueryRows(LONG, ULONG, LPSRowSet* rows) override {
    return Guarded([&] {
      const std::lock_guard guard(lock_);
      RowSetBuilder builder(allocator_, 1);
      Allocator::Root values = allocator_.AllocateRoot(sizeof(SPropValue));
      static_cast<SPropValue*>(values.get())->Value.lpszA =
          static_cast<LPSTR>(allocator_.AllocateMore(values.get(), 1));
      builder.Add(std::move(values), 1);
      *rows = builder.Release();
      return S_OK;
    });
  }
  HRESULT STDMETHODCALLTYPE QueryColumns(ULONG, LPSPropTagArray* tags) override {
    const Allocator::Root former = allocator_.Adopt(*tags);
    const std::vector<ULONG> columns = TagsOf(**tags);
    *tags = static_cast<LPSPropTagArray>(allocator_.CopyTags(columns).release());
    allocator_.Free(allocator_.AllocateRoot(Allocator::CountOf(columns.size())).release());
    return S_OK;
  }

 private:
  Allocator allocator_ = Allocator(OrvAllocateBuffer, OrvAllocateMore, OrvFreeBuffer);
  Lock lock_;
};

}  // namespace

LPUNKNOWN MakeInVersion1(const orv::sdk::Allocator& allocator);

LPUNKNOWN MakeInVersion1(const orv::sdk::Allocator& allocator) {
  const Owned<Object<IAddrBook, IMAPIProp>> provider(new Provider);
  std::unique_ptr<IUnknown, ReleaseInterface> container(new Container);
  const bool alike = IsEqualGUID(kIidOf<IDistList>, kIidOf<IABContainer>);
  return alike || provider == nullptr ? container.release() : new Table(allocator);
}
