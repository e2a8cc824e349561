// The address book library, loaded at run time.
#include "tools/orvctl/library.h"

#include "tools/orvctl/dependencies.h"
#include "tools/orvctl/errors.h"
#include "tools/orvctl/trace.h"

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

const Model* FindModel(const std::string& fileName) {
  const WideString wanted = ToWide(fileName);
  for (const Model& model : kModels) {
    if (CompareStringOrdinal(model.file, -1, wanted.c_str(), -1, TRUE) == CSTR_EQUAL) return &model;
  }
  return nullptr;
}

HMODULE Load(const std::string& fileName) {
  const WideString path = OwnFolder() + ToWide(fileName);
  // What it depends on comes from our folder or the system's, as what it loads itself does.
  const HMODULE module =
      LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32);
  if (!module) {
    const DWORD error = GetLastError();
    throw CommandError(kNoLibrary, "cannot load " + ToUtf8(path) + ": " + DescribeLoadError(error, path),
                       static_cast<HRESULT>(HRESULT_FROM_WIN32(error)));
  }
  return module;
}

}  // namespace

ExitCode ExitCodeOf(HRESULT result) {
  switch (result) {
    case MAPI_E_NOT_FOUND:
      return kNotFound;
    case MAPI_E_USER_CANCEL:
      return kCancelled;
    case MAPI_E_COLLISION:
    case MAPI_E_OBJECT_CHANGED:
      return kConflict;
    case MAPI_E_CORRUPT_DATA:
    case MAPI_E_CORRUPT_STORE:
    case MAPI_E_INVALID_OBJECT:  // a file of another kind
      return kDamaged;
    case MAPI_E_NOT_ENOUGH_DISK:
      return kNoSpace;
    default:
      return kFailed;
  }
}

void Check(HRESULT result, const std::string& doing) {
  TraceResult(doing, result);
  if (SUCCEEDED(result)) return;
  const char* reason = result == MAPI_E_USER_CANCEL ? ", it was cancelled" : "";
  throw CommandError(ExitCodeOf(result), "cannot " + doing + reason, result);
}

std::string DefaultLibraryName() { return ToUtf8(kModels[0].file); }

WCHAR ModelLetter(const std::string& fileName) {
  const Model* const model = FindModel(fileName);
  return model != nullptr ? model->letter : 0;
}

WideString ModelName(const std::string& fileName) {
  const Model* const model = FindModel(fileName);
  return model != nullptr ? model->name : L"";
}

WideString OwnFolder() {
  WideString path(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    if (length < path.size()) return path.substr(0, path.find_last_of(L'\\', length) + 1);
    path.resize(path.size() * 2);
  }
}

WideString FullPath(const WideString& path) {
  const bool isRelative = !path.empty() && path.front() != L'%' && path.find(L"://") == WideString::npos;
  if (!isRelative) return path;
  WideString full(GetFullPathNameW(path.c_str(), 0, nullptr, nullptr), L'\0');
  full.resize(GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
  return full.empty() ? path : full;
}

WideString ExpandedPath(const std::string& file) {
  WideString expanded(MAX_PATH, L'\0');
  const WideString given = ToWide(file);
  const DWORD size = ExpandEnvironmentStringsW(given.c_str(), expanded.data(), MAX_PATH);
  if (size == 0 || size > MAX_PATH) return FullPath(given);
  return FullPath(expanded.substr(0, size - 1));
}

bool IsInOwnFolder(const std::string& fileName) {
  return GetFileAttributesW((OwnFolder() + ToWide(fileName)).c_str()) != INVALID_FILE_ATTRIBUTES;
}

Library::Library(const std::string& fileName, std::vector<Message>* problems)
    : fileName_(fileName),
      problems_(problems),
      module_(Load(fileName)),
      open_(Require<ORVOPEN>("OrvOpen")),
      adminProfiles_(Require<ORVADMINPROFILES>("OrvAdminProfiles")),
      buffers_{Require<ALLOCATEBUFFER>("OrvAllocateBuffer"), Require<ALLOCATEMORE>("OrvAllocateMore"),
               Require<FREEBUFFER>("OrvFreeBuffer")},
      allocator_(buffers_.root, buffers_.more, buffers_.free),
      addressDialog_(Find<ORVADDRESS>("OrvAddress")),
      showHelp_(Find<ORVSHOWHELP>("OrvShowHelp")),
      openCatalogue_(Find<ORVOPENCATALOGUE>("OrvOpenCatalogue")),
      openUserInfo_(Find<ORVOPENUSERINFO>("OrvOpenUserInfo")) {}

template <class Function>
Function* Library::Find(const char* name) const {
  return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module_.get(), name)));
}

template <class Function>
Function* Library::Require(const char* name) const {
  Function* const function = Find<Function>(name);
  if (function) return function;
  throw CommandError(kNoLibrary, fileName_ + " is not the address book library: it does not export " + name);
}

ComPtr<IOrvProfAdmin> Library::AdminProfiles() const {
  ComPtr<IOrvProfAdmin> admin;
  Receive(admin, adminProfiles_(MAPI_UNICODE, admin.Put(), 0), "open profile administration");
  return admin;
}

}  // namespace orvctl
