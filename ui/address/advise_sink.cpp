// The sink that the Address dialog registers for its open container.
#include "ui/address/advise_sink.h"

#include "ui/address/address_ids.h"

namespace orv::ui {

ComPtr<CAdviseSink> CAdviseSink::Create(HWND window) {
  return ComPtr<CAdviseSink>::Adopt(new CAdviseSink(window));
}

bool CAdviseSink::Supports(REFIID iid) const { return IsOneOf(iid, IID_IUnknown, IID_IMAPIAdviseSink); }

ULONG CAdviseSink::OnNotify(ULONG count, LPNOTIFICATION) {
  const HWND window = window_;
  if (count != 0 && window != nullptr) PostMessageW(window, WM_COMMAND, address::kRefresh, 0);
  return S_OK;
}

}  // namespace orv::ui
