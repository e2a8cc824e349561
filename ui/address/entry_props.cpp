// Opening an entry and asking it for properties.
#include "ui/address/entry_props.h"

#include "orv/orvflags.h"
#include "platform/boundary.h"

namespace orv::ui {

HRESULT OpenedEntry::Open(IAddrBook& book, const SBinary& identifier) {
  return GuardedForeign([&]() -> HRESULT {
    ComPtr<IUnknown> opened;
    const HRESULT hr = book.OpenEntry(identifier.cb, reinterpret_cast<ENTRYID*>(identifier.lpb), nullptr, 0,
                                      &objectType_, opened.Put());
    if (FAILED(hr)) return hr;
    if (!opened) return MAPI_E_CALL_FAILED;
    return opened->QueryInterface(IID_IMAPIProp, reinterpret_cast<void**>(properties_.Put()));
  });
}

HRESULT OpenedEntry::Read(const SPropTagArray* tags, PropValues& values) const {
  return GuardedForeign([&] {
    return properties_->GetProps(const_cast<SPropTagArray*>(tags), MAPI_UNICODE, &values.count,
                                 values.values.Put());
  });
}

}  // namespace orv::ui
