// The logon against the registry reads and library loads that its steps demand.
#include <array>
#include <string>
#include <vector>

#include "bench/harness.h"
#include "bench/values.h"
#include "orv/orvspi.h"
#include "platform/com_ptr.h"
#include "profiles/registry_store.h"
#include "tests/support/installation.h"
#include "tests/support/redirected_registry.h"

namespace orv::bench {
namespace {

const WString kProfilesPath = L"Software\\Tovan\\Velmora\\VX100 series\\Orv Profiles";
constexpr const WCHAR* kProvider = L"orv_bench_provider.dll";

MAPIUID UidOf(std::size_t service) {
  MAPIUID uid{};
  uid.ab[0] = static_cast<BYTE>(service / 256 + 1);
  uid.ab[15] = static_cast<BYTE>(service % 256);
  return uid;
}

WString LibraryOf(std::size_t service) { return L"prov" + std::to_wstring(service) + L".dll"; }

// A profile of so many services, each with a library of its own and the ten columns of a stored service.
void StoreServices(const test::Installation& installation, std::size_t count) {
  RowList rows;
  CHAR entry[] = "BenchServiceEntry";
  const WString text = L"Contact file (vCard)";
  LPWSTR files[] = {const_cast<LPWSTR>(text.c_str())};
  for (std::size_t i = 0; i < count; ++i) {
    installation.CopyIn(kProvider, LibraryOf(i));
    MAPIUID uid = UidOf(i);
    const WString library = LibraryOf(i);
    std::vector<SPropValue> values = {Number(PR_INSTANCE_KEY, 0),
                                      Text(PR_SERVICE_NAME_W, text),
                                      Text(PR_PROVIDER_DISPLAY_W, text),
                                      Text(PR_DISPLAY_NAME_W, text),
                                      Text(PR_SERVICE_DLL_NAME_W, library),
                                      Number(PR_SERVICE_ENTRY_NAME, 0),
                                      Number(PR_SERVICE_SUPPORT_FILES_W, 0),
                                      Number(PR_SERVICE_DELETE_FILES_W, 0),
                                      Number(PR_SERVICE_UID, 0),
                                      Number(PR_RESOURCE_FLAGS, 0)};
    values[0].Value.bin = values[8].Value.bin = {sizeof uid.ab, uid.ab};
    values[5].Value.lpszA = entry;
    values[6].Value.MVszW = values[7].Value.MVszW = {1, files};
    const SRow row = {0, static_cast<ULONG>(values.size()), values.data()};
    Require(rows.Add(row, rows.Count()) == S_OK, "service row");
  }
  Require(registry_store::SaveServiceRows(rows, L"P") == S_OK, "storing the profile");
}

// The registry as the logon's steps read it, with the platform's functions alone.
class Reading {
 public:
  void Profiles() {
    const HKEY key = Open(HKEY_CURRENT_USER, kProfilesPath.c_str());
    DWORD size = sizeof data_;
    RegQueryValueExW(key, L"DefaultProfile", nullptr, nullptr, data_.data(), &size);
    for (DWORD i = 0; SubkeyName(key, i); ++i) continue;
    RegCloseKey(key);
  }

  void Services() {
    const HKEY key = Open(HKEY_CURRENT_USER, (kProfilesPath + L"\\P").c_str());
    for (DWORD i = 0; SubkeyName(key, i); ++i) {
      const HKEY service = Open(key, name_.data());
      Values(service);
      RegCloseKey(service);
    }
    RegCloseKey(key);
  }

  void Settings() {
    HKEY key = nullptr;
    RegCreateKeyExW(HKEY_CURRENT_USER, (kProfilesPath + L"\\P").c_str(), 0, nullptr, 0, KEY_ALL_ACCESS,
                    nullptr, &key, nullptr);
    Values(key);
    RegCloseKey(key);
  }

 private:
  static HKEY Open(HKEY parent, const WCHAR* path) {
    HKEY key = nullptr;
    Require(RegOpenKeyExW(parent, path, 0, KEY_READ, &key) == ERROR_SUCCESS, "a key of the profile");
    return key;
  }
  bool SubkeyName(HKEY key, DWORD index) {
    DWORD length = kKeyNameBuffer;
    return RegEnumKeyExW(key, index, name_.data(), &length, nullptr, nullptr, nullptr, nullptr) ==
           ERROR_SUCCESS;
  }
  void Values(HKEY key) {
    LSTATUS status = ERROR_SUCCESS;
    for (DWORD i = 0; status == ERROR_SUCCESS; ++i) {
      DWORD length = kKeyNameBuffer;
      DWORD size = sizeof data_;
      status = RegEnumValueW(key, i, name_.data(), &length, nullptr, nullptr, data_.data(), &size);
    }
  }

  std::array<WCHAR, kKeyNameBuffer> name_{};
  std::array<BYTE, 4096> data_{};
};

// What stays of a logon and its end without our code: the profiles, the services twice (when they are listed, and when
// the sections are opened), the libraries, the settings.
void LogonByHand(const test::Installation& installation, std::size_t services) {
  Reading reading;
  reading.Profiles();
  reading.Services();
  reading.Services();
  std::vector<HMODULE> libraries;
  for (std::size_t i = 0; i < services; ++i) {
    libraries.push_back(LoadLibraryExW(installation.Path(LibraryOf(i)).c_str(), nullptr,
                                       LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32));
    Require(GetProcAddress(libraries.back(), "ABProviderOpen") != nullptr, "a provider's export");
    Require(GetProcAddress(libraries.back(), "BenchServiceEntry") != nullptr, "a provider's export");
  }
  reading.Settings();
  for (std::size_t i = services; i > 0; --i) FreeLibrary(libraries[i - 1]);
}

void BenchLogon() {
  for (const std::size_t services : {1u, 10u, 50u}) {
    const test::RedirectedRegistry registry;
    const test::Installation installation;
    StoreServices(installation, services);
    const auto logon = [] {
      ComPtr<IOrvSession> session;
      const HRESULT hr = OrvOpen(0, L"P", MAPI_UNICODE, nullptr, nullptr, nullptr, nullptr, session.Put(), 0);
      Require(hr == S_OK, "OrvOpen");
    };
    Report("OrvOpen, " + std::to_string(services) + (services == 1 ? " service" : " services"),
           Compare(logon, [&] { LogonByHand(installation, services); }), 1.3);
  }
}

const Benchmark kLogon("logon", BenchLogon);

}  // namespace
}  // namespace orv::bench
