// The support object behind IOrvSupport.
#include "hosting/orv_support.h"

#include <servprov.h>

#include <memory>

#include "hosting/object_copy.h"
#include "hosting/provider_list.h"
#include "orv/orvspi.h"
#include "platform/boundary.h"
#include "platform/com_object.h"
#include "platform/com_ptr.h"

namespace orv {
namespace {

// The system's, spelled out so that nothing has to be linked for it.
constexpr GUID kServiceProvider = {
    0x6D5140C1, 0x7436, 0x11CE, {0x80, 0x34, 0x00, 0xAA, 0x00, 0x60, 0x09, 0xFA}};

class COrvSupport final : public ComObject<IOrvSupport2> {
 public:
  COrvSupport(CABServiceList* list, ProviderRecord* record) : list_(ComPtr<CABServiceList>::Share(list)) {
    if (record == nullptr) return;
    registered_ = record->ShareRegistered();
    service_ = record->Service();
  }

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    const HRESULT hr = ComObject::QueryInterface(iid, out);
    if (SUCCEEDED(hr) && IsEqualGUID(iid, kServiceProvider)) *out = &services_;
    return hr;
  }
  HRESULT STDMETHODCALLTYPE GetLastError(HRESULT, ULONG, LPMAPIERROR*) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE GetMemAllocRoutines(LPALLOCATEBUFFER* allocateBuffer,
                                                LPALLOCATEMORE* allocateMore,
                                                LPFREEBUFFER* freeBuffer) override;
  HRESULT STDMETHODCALLTYPE SetProviderUID(const MAPIUID* uid) override;
  HRESULT STDMETHODCALLTYPE Reserved7() override { return MAPI_E_NO_SUPPORT; }
  HRESULT STDMETHODCALLTYPE DoCopyTo(LPCIID sourceInterface, LPVOID source, ULONG, LPCIID,
                                     LPSPropTagArray exclude, ULONG_PTR, LPMAPIPROGRESS,
                                     LPCIID destinationInterface, LPVOID destination, ULONG flags,
                                     LPSPropProblemArray* problems) override;
  HRESULT STDMETHODCALLTYPE DoCopyProps(LPCIID sourceInterface, LPVOID source, LPSPropTagArray include,
                                        ULONG_PTR, LPMAPIPROGRESS, LPCIID destinationInterface,
                                        LPVOID destination, ULONG flags,
                                        LPSPropProblemArray* problems) override;
  HRESULT STDMETHODCALLTYPE Reserved10() override { return MAPI_E_NO_SUPPORT; }
  HRESULT STDMETHODCALLTYPE OpenEntry(ULONG size, LPENTRYID entryId, LPCIID iid, ULONG flags, ULONG* type,
                                      LPUNKNOWN* object) override;
  HRESULT STDMETHODCALLTYPE ReportProblem(HRESULT code, LPCWSTR text) override;

 protected:
  bool Supports(REFIID iid) const override {
    return IsOneOf(iid, IID_IUnknown, IID_IOrvSupport, IID_IOrvSupport2, kServiceProvider);
  }

 private:
  // The same object to whoever asks, as the system's interface for services: that of the session's address book.
  class Services final : public IServiceProvider {
   public:
    explicit Services(COrvSupport& support) : support_(support) {}
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
      return support_.QueryInterface(iid, out);
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return support_.AddRef(); }
    ULONG STDMETHODCALLTYPE Release() override { return support_.Release(); }
    HRESULT STDMETHODCALLTYPE QueryService(REFGUID service, REFIID iid, void** out) override {
      return support_.FindService(service, iid, out);
    }

   private:
    COrvSupport& support_;
  };
  HRESULT FindService(REFGUID service, REFIID iid, void** out);

  Services services_{*this};
  const ComPtr<CABServiceList> list_;
  // Not the record itself: a provider that registers must not become its last owner.
  std::shared_ptr<RegisteredUids> registered_;
  ServiceIdentity service_{MAPIUID{}};
};

HRESULT COrvSupport::GetMemAllocRoutines(LPALLOCATEBUFFER* allocateBuffer, LPALLOCATEMORE* allocateMore,
                                         LPFREEBUFFER* freeBuffer) {
  if (!IsWritableOut(allocateBuffer) || !IsWritableOut(allocateMore) || !IsWritableOut(freeBuffer)) {
    return MAPI_E_INVALID_PARAMETER;
  }
  *allocateBuffer = &OrvAllocateBuffer;
  *allocateMore = &OrvAllocateMore;
  *freeBuffer = &OrvFreeBuffer;
  return S_OK;
}

HRESULT COrvSupport::SetProviderUID(const MAPIUID* uid) {
  if (!list_) return MAPI_E_NO_SUPPORT;
  if (!IsReadable(uid, sizeof *uid)) return MAPI_E_INVALID_PARAMETER;
  return Guarded([&] { return registered_->Register(*uid); });
}

HRESULT COrvSupport::DoCopyTo(LPCIID sourceInterface, LPVOID source, ULONG, LPCIID, LPSPropTagArray exclude,
                              ULONG_PTR, LPMAPIPROGRESS, LPCIID destinationInterface, LPVOID destination,
                              ULONG flags, LPSPropProblemArray* problems) {
  return GuardedForeign([&] {
    return CopyObject({sourceInterface, static_cast<IUnknown*>(source), destinationInterface,
                       static_cast<IUnknown*>(destination)},
                      exclude, flags, problems);
  });
}

HRESULT COrvSupport::DoCopyProps(LPCIID sourceInterface, LPVOID source, LPSPropTagArray include, ULONG_PTR,
                                 LPMAPIPROGRESS, LPCIID destinationInterface, LPVOID destination, ULONG flags,
                                 LPSPropProblemArray* problems) {
  return GuardedForeign([&] {
    return CopyObjectProps({sourceInterface, static_cast<IUnknown*>(source), destinationInterface,
                            static_cast<IUnknown*>(destination)},
                           include, flags, problems);
  });
}

// The book itself waits for this call, or refuses it, at the session's end.
HRESULT COrvSupport::OpenEntry(ULONG size, LPENTRYID entryId, LPCIID iid, ULONG flags, ULONG* type,
                               LPUNKNOWN* object) {
  if (!list_) return MAPI_E_NO_SUPPORT;
  const ComPtr<IAddrBook> book = list_->Link().Book();
  return book ? book->OpenEntry(size, entryId, iid, flags, type, object) : MAPI_E_END_OF_SESSION;
}

HRESULT COrvSupport::FindService(REFGUID service, REFIID iid, void** out) {
  if (!IsWritableOut(out)) return MAPI_E_INVALID_PARAMETER;
  *out = nullptr;
  if (!list_ || !IsEqualGUID(service, IID_IAddrBook)) return MAPI_E_NO_SUPPORT;
  const ComPtr<IAddrBook> book = list_->Link().Book();
  return book ? book->QueryInterface(iid, out) : MAPI_E_END_OF_SESSION;
}

HRESULT COrvSupport::ReportProblem(HRESULT code, LPCWSTR text) {
  if (!list_) return MAPI_E_NO_SUPPORT;
  if (!IsReadableText(text)) return MAPI_E_INVALID_PARAMETER;
  return Guarded([&] { return list_->Link().ReportFromProvider(service_, code, text); });
}

}  // namespace

HRESULT CreateSupport(CABServiceList* list, ProviderRecord* record, IOrvSupport** out) {
  if ((list == nullptr) != (record == nullptr)) return MAPI_E_INVALID_PARAMETER;
  return Guarded([&] {
    *out = new COrvSupport(list, record);
    return S_OK;
  });
}

}  // namespace orv
