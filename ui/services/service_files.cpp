// Support files and files to delete, as the columns of a catalogue row name them.
#include "ui/services/service_files.h"

#include <algorithm>
#include <span>

#include "orv/orvtags.h"
#include "platform/identity.h"
#include "platform/process.h"
#include "profiles/catalogue.h"
#include "props/foreign_values.h"
#include "ui/message_box.h"

namespace orv::ui {
namespace {

constexpr UINT kSupportFileMissing = 276;
constexpr UINT kSupportFilesNotListed = 277;
constexpr UINT kSupportFilesEmpty = 278;
constexpr UINT kFileNotDeleted = 282;

constexpr const WCHAR* kLibraryExtension = L".dll";
constexpr std::size_t kSupportFileRoom = 65;

bool IsThere(const WString& name) {
  // Joined with our folder an empty name would find the folder.
  if (name.empty()) return false;
  if (!catalogue::FindOnSearchPath(name, kLibraryExtension, kSupportFileRoom).empty()) return true;
  const WString besideUs = PathBeside(process::Instance(), name);
  return !catalogue::FindOnSearchPath(besideUs, kLibraryExtension, MAX_PATH).empty();
}

// As the system spells it, so that two ways of writing one folder compare equal.
WString LongPath(const WString& path) {
  WString whole(MAX_PATH, WCHAR{0});
  const DWORD length = GetLongPathNameW(path.c_str(), whole.data(), MAX_PATH);
  whole.resize(length < MAX_PATH ? length : 0);
  return whole;
}

bool IsBesideUs(const WString& path, const WString& name) {
  const WString found = LongPath(path), ours = LongPath(PathBeside(process::Instance(), name));
  return !ours.empty() && CompareStringOrdinal(found.c_str(), -1, ours.c_str(), -1, TRUE) == CSTR_EQUAL;
}

// True as well when there is no such file: nothing of it stays.
bool DeleteBesideUs(const WString& name) {
  if (name.empty()) return true;
  if (!IsBareFileName(name)) return false;
  const WString path = catalogue::FindOnSearchPath(name, nullptr, MAX_PATH);
  return path.empty() || (IsBesideUs(path, name) && DeleteFileW(path.c_str()));
}

}  // namespace

UINT FindSupportFilesProblem(const SRow& row) {
  const SPropValue* files = ForeignValues(row).Find(PR_SERVICE_SUPPORT_FILES_W);
  if (files == nullptr) return kSupportFilesNotListed;
  const std::span names(files->Value.MVszW.lppszW, files->Value.MVszW.cValues);
  if (names.empty()) return kSupportFilesEmpty;
  return std::all_of(names.begin(), names.end(), [](const WCHAR* name) { return IsThere(name); })
             ? 0
             : kSupportFileMissing;
}

bool DeleteServiceFiles(HWND parent, HMODULE resources, const SRow& row) {
  bool allDeleted = true;
  for (const WString& name : catalogue::FilesToDelete(row)) {
    if (DeleteBesideUs(name)) continue;
    ShowMessage(kFileNotDeleted, resources, parent, MB_ICONERROR);
    allDeleted = false;
  }
  return allDeleted;
}

}  // namespace orv::ui
