// The address book library, loaded at run time.
#include "tools/orvctl/library.h"

#include <array>
#include <cstring>
#include <new>

#include "diag/names.h"
#include "tools/orvctl/errors.h"

namespace orvctl {
namespace {

struct Model {
  const WCHAR* file;
  const WCHAR* name;
  WCHAR letter;
};

#define ORV_MODEL(file, name, letter) {file, name, letter},
constexpr Model kModels[] = {
#include "models_table.inc"
};
#undef ORV_MODEL

constexpr LONG kRowsPerRead = 256;

}  // namespace

void Check(HRESULT result, const std::string& doing) {
  if (SUCCEEDED(result)) return;
  if (result == MAPI_E_NOT_FOUND) throw CommandError(kNotFound, "cannot " + doing, result);
  if (result == MAPI_E_USER_CANCEL) throw CommandError(kCancelled, "cannot " + doing, result);
  throw CommandError(kFailed, "cannot " + doing, result);
}

std::string DefaultLibraryName() { return ToUtf8(kModels[0].file); }

WCHAR ModelLetter(const std::string& fileName) {
  const WideString wanted = ToWide(fileName);
  for (const Model& model : kModels) {
    if (CompareStringOrdinal(model.file, -1, wanted.c_str(), -1, TRUE) == CSTR_EQUAL) return model.letter;
  }
  return 0;
}

WideString OwnFolder() {
  WideString path(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    if (length < path.size()) {
      path.resize(length);
      break;
    }
    path.resize(path.size() * 2);
  }
  return path.substr(0, path.find_last_of(L'\\') + 1);
}

Library::Library(const std::string& fileName) : fileName_(fileName) {
  module_ = LoadLibraryW((OwnFolder() + ToWide(fileName)).c_str());
  if (!module_) {
    throw CommandError(kNoLibrary, "cannot load " + fileName + " from this program's folder: " +
                                       diag::SystemErrorName(GetLastError()));
  }
  open_ = Find<ORVOPEN>("OrvOpen");
  adminProfiles_ = Find<ORVADMINPROFILES>("OrvAdminProfiles");
  allocateBuffer_ = Find<ALLOCATEBUFFER>("OrvAllocateBuffer");
  allocateMore_ = Find<ALLOCATEMORE>("OrvAllocateMore");
  freeBuffer_ = Find<FREEBUFFER>("OrvFreeBuffer");
  freeRows_ = Find<FREEPROWS>("OrvFreeProws");
  freeRecipients_ = Find<FREEPADRLIST>("OrvFreePadrlist");
  addressDialog_ = Find<ORVADDRESS>("OrvAddress");
  const bool complete = open_ && adminProfiles_ && allocateBuffer_ && allocateMore_ && freeBuffer_ &&
                        freeRows_ && freeRecipients_;
  if (complete) return;
  FreeLibrary(module_);
  throw CommandError(kNoLibrary, fileName + " is not the address book library: it lacks exported functions");
}

Library::~Library() { FreeLibrary(module_); }

template <class Function>
Function* Library::Find(const char* name) const {
  return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module_, name)));
}

ComPtr<IOrvProfAdmin> Library::AdminProfiles() const {
  ComPtr<IOrvProfAdmin> admin;
  Check(adminProfiles_(MAPI_UNICODE, admin.Put(), 0), "open profile administration");
  return admin;
}

ComPtr<IOrvSession> Library::LogOn(const std::string& profile) const {
  ComPtr<IOrvSession> session;
  const bool isDefault = profile == "-";
  const HRESULT result = open_(0, ToWide(profile).c_str(), MAPI_UNICODE | (isDefault ? MAPI_USE_DEFAULT : 0),
                               nullptr, nullptr, nullptr, nullptr, session.Put(), 0);
  const std::string what = isDefault ? "default profile" : "profile '" + profile + "'";
  if (result == MAPI_E_LOGON_FAILED) throw CommandError(kNotFound, "there is no " + what, result);
  // "Not found" from here on means a provider's library, not the profile.
  if (result == MAPI_E_NOT_FOUND) {
    throw CommandError(kFailed, "cannot log on to " + what + ", a service's library cannot be loaded",
                       result);
  }
  Check(result, "log on to " + what);
  return session;
}

ComPtr<IABServiceAdmin> Library::AdminServices(const std::string& profile) const {
  const std::string name = profile == "-" ? DefaultProfile() : profile;
  ComPtr<IABServiceAdmin> services;
  Check(AdminProfiles()->AdminServices(ToWide(name).c_str(), MAPI_UNICODE, services.Put()),
        "open the services of profile '" + name + "'");
  return services;
}

std::string Library::DefaultProfile() const {
  const ComPtr<IOrvProfAdmin> admin = AdminProfiles();
  ComPtr<IMAPITable> table;
  Check(admin->GetProfileTable(MAPI_UNICODE, table.Put()), "list the profiles");
  std::string name;
  ForEachRow(table.Get(), {PR_DISPLAY_NAME_W, PR_DEFAULT_PROFILE}, [&](const SRow& row) {
    const SPropValue* isDefault = FindValue(row.lpProps, row.cValues, PR_DEFAULT_PROFILE);
    if (isDefault && isDefault->Value.b) name = StringOf(row.lpProps, row.cValues, PR_DISPLAY_NAME_W);
    return name.empty();
  });
  if (name.empty()) throw CommandError(kNotFound, "there is no default profile");
  return name;
}

void* Library::Allocate(size_t size) const {
  void* buffer = nullptr;
  if (FAILED(allocateBuffer_(static_cast<ULONG>(size), &buffer))) throw std::bad_alloc();
  return buffer;
}

void* Library::AllocateMore(size_t size, void* root) const {
  void* buffer = nullptr;
  if (FAILED(allocateMore_(static_cast<ULONG>(size), root, &buffer))) throw std::bad_alloc();
  return buffer;
}

void Library::PrepareTable(IMAPITable* table, const std::vector<ULONG>& columns) const {
  std::vector<ULONG> tags(columns.size() + 1);
  tags[0] = static_cast<ULONG>(columns.size());
  std::memcpy(&tags[1], columns.data(), columns.size() * sizeof(ULONG));
  Check(table->SetColumns(reinterpret_cast<SPropTagArray*>(tags.data()), 0), "choose the columns of a table");
  Check(table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr), "go to the beginning of a table");
}

RowsPtr Library::ReadRows(IMAPITable* table) const {
  SRowSet* rows = nullptr;
  Check(table->QueryRows(kRowsPerRead, 0, &rows), "read rows of a table");
  if (!rows) throw CommandError(kFailed, "a provider's table gave no rows and no error");
  return Own(rows);
}

}  // namespace orvctl
