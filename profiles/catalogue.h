// The service catalogue: the INI file beside the library that describes the services a profile can hold. Read
// and written through the platform's private profile functions only. A path that is empty means the catalogue
// of our model.
#pragma once

#include <vector>

#include "orv/orvapi.h"
#include "platform/buffer.h"
#include "platform/win.h"

namespace orv::catalogue {

inline constexpr const WCHAR* kServices = L"Services";
inline constexpr const WCHAR* kDefaultServices = L"Default Services";

// "XHTASV%c.ini" beside the library; empty when our file name stands for no model.
WString DefaultPath();

// The columns of a service description, in their order.
enum Column : ULONG {
  kInstanceKey,
  kServiceName,
  kProviderDisplay,
  kDisplayName,
  kDllName,
  kEntryName,
  kSupportFiles,
  kDeleteFiles,
  kServiceUid,
  kResourceFlags,
  kColumnCount,
};
const SPropTagArray* Columns();

// The lines of a section, each terminated, an empty one at the end. MAPI_E_CALL_FAILED without the file,
// MAPI_E_INVALID_PARAMETER without the section or anything in it.
HRESULT ReadSection(const WString& path, const WString& section, MapiBuffer<WCHAR>& lines);

// The services that a section (kServices, kDefaultServices) lists, described by the sections of their names:
// one row of the ten columns each, in the section's order. PR_SERVICE_UID is left empty.
HRESULT Load(const WString& path, const WString& section, RowSetPtr& rows);

HRESULT CountServices(const WString& path, const WString& section, ULONG& count);

// Copies the service named by the row's PR_SERVICE_NAME between two catalogues. One that the source does not
// list is no error and changes nothing.
HRESULT InstallService(const WString& source, const WString& target, const SRow& row);
void RemoveService(const WString& path, const SRow& row);

// The names in PR_SERVICE_DELETE_FILES, and where the platform's search finds one (empty: nowhere). The
// extension, null or with its dot, counts for names that have none; paths of `room` characters and more are
// not found.
std::vector<WString> FilesToDelete(const SRow& row);
WString FindOnSearchPath(const WString& name, const WCHAR* extension, std::size_t room);

}  // namespace orv::catalogue
