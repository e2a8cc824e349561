// A scan of the profile table, one row at a time, for the default profile or a name.
#include "session/profile_resolution.h"

#include <utility>

#include "orv/orvapi.h"
#include "orv/orvflags.h"
#include "orv/orvtags.h"
#include "platform/com_ptr.h"
#include "profiles/prof_admin.h"
#include "props/table_reader.h"

namespace orv {
namespace {

enum Column : ULONG { kName, kIsDefault };
constexpr TagArray kProfileColumns{PR_DISPLAY_NAME_W, PR_DEFAULT_PROFILE};

HRESULT OpenProfileTable(ULONG flags, TableReader& reader) {
  ComPtr<IOrvProfAdmin> admin;
  if (const HRESULT hr = CreateProfAdmin(nullptr, admin.Put()); FAILED(hr)) return hr;
  ComPtr<IMAPITable> table;
  if (const HRESULT hr = admin->GetProfileTable(flags, table.Put()); FAILED(hr)) return hr;
  return reader.Open(std::move(table), kProfileColumns);
}

// The name of the first row that is wanted by name and default marker; MAPI_E_NOT_FOUND at the end of the table.
template <class Wanted>
HRESULT Scan(TableReader& reader, Wanted wanted, WString& name) {
  while (name.empty()) {
    if (const HRESULT hr = reader.Next(); hr != S_OK) return FAILED(hr) ? hr : MAPI_E_NOT_FOUND;
    const WCHAR* rowName = TextOf(reader.Row().At(kName, PR_DISPLAY_NAME_W));
    const SPropValue* isDefault = reader.Row().At(kIsDefault, PR_DEFAULT_PROFILE);
    if (rowName == nullptr || isDefault == nullptr) continue;
    if (wanted(rowName, isDefault->Value.b != 0)) name = rowName;
  }
  return S_OK;
}

HRESULT ScanFor(TableReader& reader, const WCHAR* wantedName, ULONG flags, WString& name) {
  if (flags & MAPI_USE_DEFAULT) {
    return Scan(
        reader, [](const WCHAR*, bool isDefault) { return isDefault; }, name);
  }
  if (wantedName == nullptr || *wantedName == 0) return S_OK;
  const WStringView exact(wantedName);
  return Scan(
      reader, [&](const WCHAR* rowName, bool) { return exact == rowName; }, name);
}

}  // namespace

HRESULT ResolveProfile(const WCHAR* name, ULONG flags, WString& resolved) {
  TableReader reader;
  if (const HRESULT hr = OpenProfileTable(flags, reader); FAILED(hr)) return hr;
  resolved.clear();
  const HRESULT hr = ScanFor(reader, name, flags, resolved);
  if (!resolved.empty()) return hr;
  // Whatever the scan met: no profile, no logon.
  return flags & MAPI_LOGON_UI ? MAPI_E_UNKNOWN_FLAGS : MAPI_E_LOGON_FAILED;
}

}  // namespace orv
