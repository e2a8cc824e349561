// A scan of the profile table, one row at a time, for the default profile or a name.
#include "session/profile_resolution.h"

#include "orv/orvapi.h"
#include "orv/orvflags.h"
#include "orv/orvtags.h"
#include "platform/buffer.h"
#include "platform/com_ptr.h"
#include "profiles/prof_admin.h"

namespace orv {
namespace {

enum Column : ULONG { kName, kIsDefault, kColumnCount };
constexpr SizedSPropTagArray(kColumnCount, kProfileColumns) = {kColumnCount,
                                                               {PR_DISPLAY_NAME_W, PR_DEFAULT_PROFILE}};

HRESULT OpenProfileTable(ULONG flags, ComPtr<IMAPITable>& table) {
  ComPtr<IOrvProfAdmin> admin;
  if (const HRESULT hr = CreateProfAdmin(nullptr, admin.Put()); FAILED(hr)) return hr;
  if (const HRESULT hr = admin->GetProfileTable(flags, table.Put()); FAILED(hr)) return hr;
  auto columns = kProfileColumns;
  return table->SetColumns(reinterpret_cast<SPropTagArray*>(&columns), 0);
}

bool HasBothColumns(const SRow& row) {
  return row.cValues == kColumnCount && row.lpProps[kName].ulPropTag == PR_DISPLAY_NAME_W &&
         row.lpProps[kIsDefault].ulPropTag == PR_DEFAULT_PROFILE;
}

// The name of the first row that is wanted; MAPI_E_NOT_FOUND at the end of the table.
template <class Wanted>
HRESULT Scan(IMAPITable* table, Wanted wanted, WString& name) {
  if (const HRESULT hr = table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr); FAILED(hr)) return hr;
  while (name.empty()) {
    RowSetPtr rows;
    if (const HRESULT hr = table->QueryRows(1, 0, rows.Put()); FAILED(hr)) return hr;
    if (rows->cRows == 0) return MAPI_E_NOT_FOUND;
    const SRow& row = rows->aRow[0];
    if (HasBothColumns(row) && wanted(row)) name = row.lpProps[kName].Value.lpszW;
  }
  return S_OK;
}

HRESULT ScanFor(IMAPITable* table, const WCHAR* wantedName, ULONG flags, WString& name) {
  if (flags & MAPI_USE_DEFAULT) {
    return Scan(
        table, [](const SRow& row) { return row.lpProps[kIsDefault].Value.b != 0; }, name);
  }
  if (wantedName == nullptr || *wantedName == 0) return S_OK;
  const WStringView exact(wantedName);
  return Scan(
      table, [&](const SRow& row) { return exact == row.lpProps[kName].Value.lpszW; }, name);
}

}  // namespace

HRESULT ResolveProfile(const WCHAR* name, ULONG flags, WString& resolved) {
  ComPtr<IMAPITable> table;
  if (const HRESULT hr = OpenProfileTable(flags, table); FAILED(hr)) return hr;
  resolved.clear();
  const HRESULT hr = ScanFor(table.Get(), name, flags, resolved);
  if (!resolved.empty()) return hr;
  // Whatever the scan met: no profile, no logon.
  return flags & MAPI_LOGON_UI ? MAPI_E_UNKNOWN_FLAGS : MAPI_E_LOGON_FAILED;
}

}  // namespace orv
