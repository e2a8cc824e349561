// Follows imports as the loader would under the address book library's rule.
#include "tools/orvctl/dependencies.h"

#include <algorithm>
#include <set>

#include "diag/names.h"
#include "formats/file_bytes.h"

namespace orvctl {
namespace {

constexpr char kCutOff[] = "shorter than its own header says";
constexpr size_t kLargestImage = size_t{1} << 30;

std::string Lowered(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
  return text;
}

WideString FolderOf(const WideString& path) { return path.substr(0, path.find_last_of(L"\\/") + 1); }
std::string FileNameOf(const WideString& path) { return ToUtf8(path.substr(path.find_last_of(L"\\/") + 1)); }

WideString SystemFolder() {
  WideString folder(MAX_PATH, L'\0');
  folder.resize(GetSystemDirectoryW(folder.data(), MAX_PATH));
  return folder + L"\\";
}

bool IsFile(const WideString& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

// Names that stand for no file: the system maps them to libraries of its own.
bool IsApiSet(const std::string& library) {
  const std::string name = Lowered(library);
  return name.rfind("api-", 0) == 0 || name.rfind("ext-", 0) == 0;
}

// A module of the system's, kept while its functions are asked for.
struct FreeModule {
  void operator()(HMODULE module) const { FreeLibrary(module); }
};
using SystemModule = std::unique_ptr<std::remove_pointer_t<HMODULE>, FreeModule>;

bool SystemExports(HMODULE module, const ImportedFunction& function) {
  const auto* number = reinterpret_cast<LPCSTR>(static_cast<ULONG_PTR>(function.ordinal));
  return GetProcAddress(module, function.name.empty() ? number : function.name.c_str()) != nullptr;
}

class Search {
 public:
  explicit Search(const WideString& path) : own_(FolderOf(path)), system_(SystemFolder()) {}

  void Follow(const WideString& path, const Image& image) {
    for (const ImageImport& each : image.imports) FollowImport(FileNameOf(path), each);
  }

  std::vector<MissingImport> missing;

 private:
  void FollowImport(const std::string& neededBy, const ImageImport& import) {
    if (import.library.find_first_of("\\/:") != std::string::npos) {
      missing.push_back({neededBy, import.library, {}, "not a file name"});
    } else if (const WideString beside = own_ + ToWide(import.library); IsFile(beside)) {
      FollowFile(neededBy, import, beside, true);
    } else if (const WideString path = system_ + ToWide(import.library); IsFile(path)) {
      FollowFile(neededBy, import, path, false);
    } else if (IsApiSet(import.library)) {
      AskSystem(neededBy, import);
    } else {
      missing.push_back({neededBy, import.library, {}, "not found in its own folder or the system's"});
    }
  }

  // What lies beside the library has dependencies to follow; what the system brings stands on its own feet.
  void FollowFile(const std::string& neededBy, const ImageImport& import, const WideString& path,
                  bool isOurs) {
    std::string why;
    const std::optional<Image> image = ReadImageFile(path, &why);
    if (!image) return missing.push_back({neededBy, import.library, {}, why});
    if (isOurs && image->isShort) return missing.push_back({neededBy, import.library, {}, kCutOff});
    if (image->machine != kMachineX64)
      return missing.push_back({neededBy, import.library, {}, "made for " + MachineName(image->machine)});
    for (const ImportedFunction& each : import.functions) {
      if (!image->Exports(each)) Lacks(neededBy, import, each);
    }
    if (isOurs && seen_.insert(Lowered(import.library)).second) Follow(path, *image);
  }

  void AskSystem(const std::string& neededBy, const ImageImport& import) {
    const SystemModule module(
        LoadLibraryExW(ToWide(import.library).c_str(), nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32));
    if (!module) return missing.push_back({neededBy, import.library, {}, "not known to the system"});
    for (const ImportedFunction& each : import.functions) {
      if (!SystemExports(module.get(), each)) Lacks(neededBy, import, each);
    }
  }

  void Lacks(const std::string& neededBy, const ImageImport& import, const ImportedFunction& function) {
    missing.push_back({neededBy, import.library, FunctionName(function), "not exported"});
  }

  const WideString own_, system_;
  std::set<std::string> seen_;
};

struct LoadError {
  DWORD error;
  const char* meaning;
};

// Numbers that the toolchain's headers lack.
constexpr DWORD kVirusInfected = 225;
constexpr DWORD kInvalidImageHash = 577;

constexpr LoadError kLoadErrors[] = {
    {ERROR_FILE_NOT_FOUND, "the file is not there"},
    {ERROR_PATH_NOT_FOUND, "its folder is not there"},
    {ERROR_ACCESS_DENIED, "this user may not read or run it"},
    {ERROR_NOT_ENOUGH_MEMORY, "memory is exhausted"},
    {ERROR_SHARING_VIOLATION, "another program holds the file open"},
    {ERROR_MOD_NOT_FOUND, "the file or a library that it needs is not there"},
    {ERROR_PROC_NOT_FOUND, "a library that it needs lacks a function"},
    {ERROR_INVALID_ORDINAL, "a library that it needs lacks a function"},
    {ERROR_BAD_EXE_FORMAT, "it or a library that it needs is damaged or made for another machine type"},
    {kInvalidImageHash, "its signature is not accepted"},
    {ERROR_NOACCESS, "it broke off while it was loaded: its start-up code crashed"},
    {ERROR_DLL_INIT_FAILED, "its start-up code refused or a library that it needs could not start"},
    {kVirusInfected, "the virus scanner holds it back"},
    {ERROR_FILENAME_EXCED_RANGE, "its path is too long"}};

std::string JoinMissing(const std::vector<MissingImport>& missing) {
  std::string text;
  for (const MissingImport& each : missing) text += (text.empty() ? "" : "; ") + each.Describe();
  return text;
}

// What reading the file itself tells about why it was not loaded; empty when it looks well.
std::string FindCause(const WideString& path) {
  if (!IsFile(path)) return "there is no file " + ToUtf8(path);
  std::string why;
  const std::optional<Image> image = ReadImageFile(path, &why);
  if (!image) return "the file is " + why;
  if (image->isShort) return std::string("the file is ") + kCutOff;
  if (image->machine != kMachineX64)
    return "the file is made for " + MachineName(image->machine) + ", not x64";
  return JoinMissing(FindMissingImports(path));
}

}  // namespace

std::string MissingImport::Describe() const {
  return neededBy + " needs " + (function.empty() ? "" : function + " of ") + library + ": " + why;
}

std::optional<Image> ReadImageFile(const WideString& path, std::string* why) {
  std::string bytes;
  const formats::FileResult result = formats::ReadFileBytes(path, kLargestImage, &bytes);
  std::optional<Image> image;
  if (result == formats::FileResult::kOk) {
    image = ReadImage(bytes);
    *why = image ? "" : "no library, or damaged";
  } else {
    *why = result == formats::FileResult::kNotFound ? "not found" : "not readable";
  }
  return image;
}

std::vector<MissingImport> FindMissingImports(const WideString& path) {
  std::string why;
  const std::optional<Image> image = ReadImageFile(path, &why);
  if (!image) return {{FileNameOf(path), FileNameOf(path), {}, why}};
  Search search(path);
  search.Follow(path, *image);
  return search.missing;
}

std::string DescribeLoadError(unsigned long error) {
  const auto found = std::find_if(std::begin(kLoadErrors), std::end(kLoadErrors),
                                  [error](const LoadError& each) { return each.error == error; });
  const std::string name = diag::SystemErrorName(error);
  return found != std::end(kLoadErrors) ? name + ": " + found->meaning : name;
}

std::string DescribeLoadError(unsigned long error, const WideString& path) {
  const std::string cause = FindCause(path);
  return DescribeLoadError(error) + (cause.empty() ? "" : " (" + cause + ")");
}

HMODULE LoadAsProvider(const WideString& path) {
  return LoadLibraryExW(path.c_str(), nullptr,
                        LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32);
}

}  // namespace orvctl
