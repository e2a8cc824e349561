// The files: the library, its companions, the catalogue.
#include <windows.h>

#include <cwchar>
#include <iterator>

#include "diag/names.h"
#include "formats/file_bytes.h"
#include "orv/orvversion.h"
#include "tools/orvctl/catalogue.h"
#include "tools/orvctl/dependencies.h"
#include "tools/orvctl/doctor.h"
#include "tools/orvctl/service_trial.h"

namespace orvctl::doctor {
namespace {

// A file's version resource; nothing is known of a file without one.
class VersionInfo {
 public:
  explicit VersionInfo(const WideString& path) {
    DWORD ignored = 0;
    data_.resize(GetFileVersionInfoSizeW(path.c_str(), &ignored));
    if (!data_.empty() &&
        !GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(data_.size()), data_.data()))
      data_.clear();
  }

  // "1.1.0".
  std::string Number() const {
    const auto* const info = Find<VS_FIXEDFILEINFO>(L"\\", sizeof(VS_FIXEDFILEINFO));
    if (info == nullptr) return {};
    return std::to_string(HIWORD(info->dwFileVersionMS)) + "." +
           std::to_string(LOWORD(info->dwFileVersionMS)) + "." +
           std::to_string(HIWORD(info->dwFileVersionLS));
  }

  // The name that its makers gave it.
  std::string InternalName() const {
    const auto* const language = Find<WORD>(L"\\VarFileInfo\\Translation", 2 * sizeof(WORD));
    if (language == nullptr) return {};
    wchar_t place[64];
    swprintf(place, std::size(place), L"\\StringFileInfo\\%04x%04x\\InternalName", language[0], language[1]);
    const auto* const name = Find<WCHAR>(place, 1);
    return name != nullptr ? ToUtf8(name) : std::string();
  }

 private:
  template <class T>
  const T* Find(const WCHAR* place, size_t least) const {
    void* found = nullptr;
    UINT size = 0;
    const bool isThere = !data_.empty() && VerQueryValueW(data_.data(), place, &found, &size);
    return isThere && size >= least ? static_cast<const T*>(found) : nullptr;
  }

  std::vector<BYTE> data_;
};

Finding VersionFinding(const char* check, const std::string& file, const std::string& wanted,
                       std::string detail) {
  const std::string found = VersionInfo(OwnFolder() + ToWide(file)).Number();
  Finding finding{check, file, Status::kOk, "",
                  std::move(detail) + "version " + (found.empty() ? "unknown" : found)};
  if (found == wanted) return finding;
  finding.status = Status::kWarning;
  finding.detail += ", not " + wanted;
  finding.fix = "install all files of one version";
  return finding;
}

bool IsThere(const std::string& file) { return IsInOwnFolder(file); }

// The companion that the library has chosen is the one that it holds.
std::string LoadedCompanion(WCHAR letter) {
  const WideString prefix = WideString(L"XHTFC") + letter;
  WIN32_FIND_DATAW found;
  const HANDLE search = FindFirstFileW((OwnFolder() + prefix + L"*.dll").c_str(), &found);
  std::string loaded;
  for (BOOL more = search != INVALID_HANDLE_VALUE; more; more = FindNextFileW(search, &found)) {
    if (GetModuleHandleW((OwnFolder() + found.cFileName).c_str()) != nullptr)
      loaded = ToUtf8(found.cFileName);
  }
  if (search != INVALID_HANDLE_VALUE) FindClose(search);
  return loaded;
}

std::string LanguageOf(const std::string& companion) {
  const size_t dot = companion.rfind('.');
  return dot != std::string::npos && dot >= 2 ? companion.substr(dot - 2, 2) : std::string();
}

Finding Unfit(const std::string& file, std::string detail) {
  return {"companions",      file,
          Status::kError,    diag::SystemErrorName(ERROR_BAD_FORMAT),
          std::move(detail), "install " + file + " again"};
}

Finding HelpFinding(const std::string& file) {
  constexpr size_t kLargestHelp = size_t{1} << 26;
  constexpr std::string_view kSignature = "ITSF";
  std::string bytes;
  const auto result = formats::ReadFileBytes(OwnFolder() + ToWide(file), kLargestHelp, &bytes);
  const bool isHelp = result == formats::FileResult::kOk && bytes.substr(0, kSignature.size()) == kSignature;
  return isHelp ? Finding{"companions", file, Status::kOk, "", "help"}
                : Unfit(file, "it is no help file, or damaged");
}

void CheckHelp(const std::string& letter, const std::string& language, Findings& findings) {
  for (const char* const prefix : {"XHTFC", "XHTFH"}) {
    const std::string own = prefix + letter + language + ".chm", english = prefix + letter + "US.chm";
    if (IsThere(own) || IsThere(english)) {
      findings.push_back(HelpFinding(IsThere(own) ? own : english));
    } else {
      findings.push_back({"companions", own, Status::kWarning, diag::SystemErrorName(ERROR_FILE_NOT_FOUND),
                          "there is no help in this language and none in English", "install the help files"});
    }
  }
}

// The dialogs and the menu that the library shows, by number; the first one that is not there.
std::string FindLack(HMODULE companion) {
  constexpr WORD kDialogs[] = {192, 255, 256, 257, 259, 260, 261, 262};
  constexpr WORD kMenu = 500;
  for (const WORD each : kDialogs) {
    if (FindResourceW(companion, MAKEINTRESOURCEW(each), RT_DIALOG) == nullptr)
      return "dialog " + std::to_string(each);
  }
  return FindResourceW(companion, MAKEINTRESOURCEW(kMenu), RT_MENU) == nullptr ? "menu 500" : std::string();
}

// Any library of that name is loaded, so what lies in it is looked at.
void CheckContent(const std::string& companion, Findings& findings) {
  const WideString path = OwnFolder() + ToWide(companion);
  const std::string lack = FindLack(GetModuleHandleW(path.c_str()));
  if (!lack.empty())
    findings.push_back(Unfit(companion, "it is no resource library of ours: it has no " + lack));
  const std::string made = VersionInfo(path).InternalName(), wanted = "XHTFC" + LanguageOf(companion);
  if (made != wanted)
    findings.push_back(Unfit(companion, "it was made as '" + made + "', not as '" + wanted + "'"));
}

Finding CatalogueFinding(const CatalogueFault& fault) {
  const bool isMild = fault.status == MAPI_E_UNABLE_TO_COMPLETE;
  std::string detail = fault.Describe();
  if (fault.RefusesList())
    detail += fault.IsAboutDefaults() ? "; while it is so no profile can be created with the default services"
                                      : "; while it is so no service can be added";
  return {"catalogue",
          fault.service.empty() ? fault.section : fault.service,
          isMild ? Status::kWarning : Status::kError,
          diag::ResultName(static_cast<uint32_t>(fault.status)),
          std::move(detail),
          fault.Fix()};
}

}  // namespace

void CheckWithoutLibrary(const std::string& fileName, const CommandError& reason, Findings& findings) {
  const auto code = reason.result() ? diag::ResultName(static_cast<uint32_t>(*reason.result())) : "";
  findings.push_back({"library", fileName, Status::kError, code, reason.what(),
                      "install the x64 build of " + fileName + " and all that came with it again"});
  if (const WCHAR letter = ModelLetter(fileName); letter != 0) {
    const std::string letterText = ToUtf8(WideString(1, letter));
    for (const std::string& file : {"XHTFC" + letterText + "US.dll", "XHTASV" + letterText + ".ini"}) {
      if (IsThere(file)) {
        findings.push_back({"files", file, Status::kOk, "", "it is there"});
      } else {
        findings.push_back({"files", file, Status::kError, diag::SystemErrorName(ERROR_FILE_NOT_FOUND),
                            "it is missing", "install " + file});
      }
    }
  }
  findings.push_back({"profiles", "the list", Status::kWarning, "",
                      "not looked at, since profiles are read through the library",
                      "install the library first"});
}

// It is loaded, or nobody would be here.
void CheckLibrary(const Library& library, Findings& findings) {
  findings.push_back(VersionFinding("library", library.fileName(), ORV_VERSION_TEXT, "loaded, "));
  if (library.openCatalogue() == nullptr || library.addressDialog() == nullptr ||
      library.showHelp() == nullptr) {
    findings.push_back({"library", library.fileName(), Status::kWarning,
                        diag::SystemErrorName(ERROR_PROC_NOT_FOUND), "it lacks exports of this version",
                        "install all files of one version"});
  }
}

void CheckCompanions(const Library& library, Findings& findings) {
  const WCHAR letter = ModelLetter(library.fileName());
  if (letter == 0) {
    findings.push_back({"companions", library.fileName(), Status::kError, "",
                        "it is not the file name of any model's library, so no companions belong to it",
                        "give the library its own name again"});
    return;
  }
  const std::string letterText = ToUtf8(WideString(1, letter));
  const std::string companion = LoadedCompanion(letter);
  if (companion.empty()) {
    const std::string english = "XHTFC" + letterText + "US.dll";
    const std::string error = DescribeLoadError(ERROR_MOD_NOT_FOUND, OwnFolder() + ToWide(english));
    findings.push_back({"companions", english, Status::kError, diag::SystemErrorName(ERROR_MOD_NOT_FOUND),
                        "no resource library is loaded, so there are no dialogs: " + error,
                        "install the resource libraries"});
    return;
  }
  const std::string version = VersionInfo(OwnFolder() + ToWide(library.fileName())).Number();
  findings.push_back(
      VersionFinding("companions", companion, version, "language " + LanguageOf(companion) + ", "));
  CheckContent(companion, findings);
  CheckHelp(letterText, LanguageOf(companion), findings);
}

namespace {

// What the file offers can be added only where its library works, whether a profile uses it or not.
void CheckOffered(const OfferedService& service, Findings& findings) {
  const std::string subject = "[" + service.name + "] of the catalogue";
  if (service.entryName.empty()) {
    findings.push_back({"entry", subject, Status::kWarning, "", "it names no service entry function",
                        "write PR_SERVICE_ENTRY_NAME into its section"});
    return;
  }
  for (const TrialStep& step : ExamineLibrary(service.library, service.entryName)) {
    if (step.status == TrialStep::Status::kError)
      findings.push_back({step.check, subject, Status::kError, step.code, step.detail, step.fix});
  }
}

Finding UnreadableCatalogue(const CatalogueError& error) {
  return {
      "catalogue",    error.file().substr(error.file().find_last_of("\\/") + 1),
      Status::kError, diag::ResultName(static_cast<uint32_t>(error.result().value_or(MAPI_E_CALL_FAILED))),
      error.what(),   "close the program that holds the file, or install it again"};
}

void CheckReadable(const Catalogue& catalogue, Findings& findings) {
  for (const CatalogueFault& fault : catalogue.faults) findings.push_back(CatalogueFinding(fault));
  if (catalogue.faults.empty())
    findings.push_back({"catalogue", catalogue.file, Status::kOk, "",
                        std::to_string(catalogue.services.size()) + " services"});
  for (const OfferedService& service : catalogue.services) CheckOffered(service, findings);
}

}  // namespace

void CheckCatalogue(const Library& library, Findings& findings) {
  try {
    CheckReadable(ReadCatalogue(library), findings);
  } catch (const CatalogueError& error) {
    findings.push_back(UnreadableCatalogue(error));
  }
}

}  // namespace orvctl::doctor
