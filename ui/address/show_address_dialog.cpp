// Checks what the client handed in, and keeps to one dialog at a time.
#include "ui/address/show_address_dialog.h"

#include <algorithm>
#include <atomic>
#include <span>

#include "addrbook/addr_book.h"
#include "orv/orvtags.h"
#include "platform/com_ptr.h"
#include "platform/pointer_check.h"
#include "props/foreign_values.h"
#include "ui/address/address_dialog.h"
#include "ui/address/address_ids.h"

namespace orv::ui {
namespace {

std::atomic<bool> g_isOpen{false};

class OpenMark {
 public:
  OpenMark() : owned_(!g_isOpen.exchange(true)) {}
  ~OpenMark() {
    if (owned_) g_isOpen = false;
  }
  OpenMark(const OpenMark&) = delete;
  OpenMark& operator=(const OpenMark&) = delete;
  bool IsOwned() const { return owned_; }

 private:
  bool owned_;
};

bool IsNullOrReadable(const WCHAR* text) { return text == nullptr || IsReadableText(text); }

bool AreTitlesValid(const WCHAR* const* titles, ULONG count) {
  if (titles == nullptr) return true;
  if (!IsReadable(titles, count * sizeof *titles)) return false;
  return std::all_of(titles, titles + count, IsNullOrReadable);
}

bool AreWellsValid(const ADRPARM& parameters) {
  const ULONG wells = parameters.cDestFields;
  if (wells == 0) return true;
  return wells <= address::kMaxWells && IsReadable(parameters.lpulDestComps, wells * sizeof(ULONG)) &&
         IsNullOrReadable(parameters.lpszDestWellsTitle) && AreTitlesValid(parameters.lppszDestTitles, wells);
}

bool IsEntryValid(const ADRENTRY& entry) {
  if (entry.cValues == 0) return true;
  const ForeignValues values(entry);
  if (values.Count() != entry.cValues) return false;
  const SPropValue* id = values.Find(PR_ENTRYID);
  const SPropValue* name = values.Find(PR_DISPLAY_NAME_W);
  return (id == nullptr || id->Value.bin.cb == 0 || IsReadable(id->Value.bin.lpb, id->Value.bin.cb)) &&
         IsNullOrReadable(TextOf(name));
}

bool IsListValid(const ADRLIST* list) {
  if (list == nullptr) return true;
  if (!IsReadable(list, CbNewADRLIST(0)) || !IsReadable(list, CbADRLIST(list))) return false;
  return std::all_of(list->aEntries, list->aEntries + list->cEntries, IsEntryValid);
}

bool AreValid(IAddrBook* book, const ADRPARM* parameters, ADRLIST** list) {
  return IsReadable(book, sizeof(void*)) && IsReadable(parameters, sizeof *parameters) &&
         IsWritableOut(list) && IsNullOrReadable(parameters->lpszCaption) && AreWellsValid(*parameters) &&
         IsListValid(*list);
}

}  // namespace

HRESULT ShowAddressDialog(HWND owner, HMODULE resources, IAddrBook* book, ADRPARM* parameters,
                          ADRLIST** list) {
  if (!AreValid(book, parameters, list)) return MAPI_E_INVALID_PARAMETER;
  const OpenMark mark;
  if (!mark.IsOwned()) return MAPI_E_CALL_FAILED;
  // The caller's windows get messages meanwhile, and may let go of the book.
  const ComPtr<IAddrBook> held = ComPtr<IAddrBook>::Share(book);
  // The dialog holds what providers handed out: a session that ends meanwhile waits until it is closed.
  const Rundown::Call inside(CAddrBook::CallsOf(book));
  AddressDialog dialog(resources, *book, *parameters, *list);
  switch (dialog.Show(owner)) {
    case IDOK:
      return dialog.Result();
    case IDCANCEL:
      return MAPI_E_USER_CANCEL;
    default:
      return MAPI_E_CALL_FAILED;
  }
}

}  // namespace orv::ui
