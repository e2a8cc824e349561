// The exported functions, but for the buffers: checks, the boundary, and on to whoever does the work.
#include <new>

#include "addrbook/mail_user.h"
#include "orv/orvapi.h"
#include "orv/orvflags.h"
#include "platform/boundary.h"
#include "platform/pointer_check.h"
#include "platform/process.h"
#include "profiles/catalogue_report.h"
#include "profiles/prof_admin.h"
#include "session/logon.h"
#include "ui/address/show_address_dialog.h"
#include "ui/context_help.h"
#include "ui/services/provider_dialogs.h"

using orv::Guarded;
using orv::GuardedForeign;
using orv::IsWritableOut;
namespace process = orv::process;

extern "C" {

HRESULT STDAPICALLTYPE OrvOpen(ULONG_PTR uiParam, LPCWSTR profileName, ULONG flags, LPVOID reserved1,
                               LPVOID reserved2, LPVOID reserved3, LPADRBOOK* book, LPORVSESSION* session,
                               ULONG_PTR callerContext) {
  process::KeepCallerContext(callerContext);
  if (!IsWritableOut(session)) return MAPI_E_INVALID_PARAMETER;
  if (!(flags & MAPI_UNICODE)) return MAPI_E_BAD_CHARWIDTH;
  if (reserved1 != nullptr || reserved2 != nullptr || reserved3 != nullptr) return MAPI_E_NO_SUPPORT;
  // A provider's own exceptions reach the client here, and only here.
  try {
    return orv::LogOn({uiParam, profileName, flags}, book, session);
  } catch (const std::bad_alloc&) {
    return MAPI_E_NOT_ENOUGH_MEMORY;
  }
}

HRESULT STDAPICALLTYPE OrvAdminProfiles(ULONG flags, LPORVPROFADMIN* admin, ULONG_PTR callerContext) {
  process::KeepCallerContext(callerContext);
  if (!IsWritableOut(admin)) return MAPI_E_INVALID_PARAMETER;
  if (!(flags & MAPI_UNICODE)) return MAPI_E_BAD_CHARWIDTH;
  return Guarded([&] {
    return orv::CreateProfAdmin(
        [](HWND owner, IABServiceAdmin* services) {
          return orv::ui::ShowProfileDialog(owner, process::ResourceLibrary(), services);
        },
        admin);
  });
}

HRESULT STDAPICALLTYPE OrvOpenCatalogue(LPCWSTR file, ULONG flags, LPWSTR* path, LPSRowSet* services,
                                        LPSRowSet* leftOut) {
  const bool isReadable = file == nullptr || orv::IsReadableText(file);
  const bool areWritable =
      orv::AreWritableOuts(services, leftOut) && (path == nullptr || IsWritableOut(path));
  if (!isReadable || !areWritable) return MAPI_E_INVALID_PARAMETER;
  if (!(flags & MAPI_UNICODE)) return MAPI_E_BAD_CHARWIDTH;
  *services = *leftOut = nullptr;
  return Guarded([&] { return orv::catalogue::Open(file, path, services, leftOut); });
}

HRESULT STDAPICALLTYPE OrvOpenUserInfo(LPCIID interfaceId, ULONG* objectType, LPMAILUSER* user) {
  return Guarded([&] { return orv::OpenUserInfo(interfaceId, objectType, user); });
}

HRESULT STDAPICALLTYPE OrvAddress(ULONG_PTR uiParam, LPADRBOOK book, LPADRPARM parameters, LPADRLIST* list) {
  return GuardedForeign([&] {
    return orv::ui::ShowAddressDialog(reinterpret_cast<HWND>(uiParam), process::ResourceLibrary(), book,
                                      parameters, list);
  });
}

HRESULT STDAPICALLTYPE OrvShowHelp(ULONG_PTR uiParam) {
  return GuardedForeign([&]() -> HRESULT {
    ULONG shown = 0;
    orv::ui::ShowMainHelp(reinterpret_cast<HWND>(uiParam), process::Instance(), shown);
    return shown == 0 ? MAPI_E_NOT_FOUND : S_OK;
  });
}

}  // extern "C"
