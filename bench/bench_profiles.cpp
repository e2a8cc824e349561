// Storing and loading the services of a profile against the registry calls that it takes, and loading a catalogue
// against reading the bytes of its file once.
#include <array>
#include <string>
#include <vector>

#include "bench/harness.h"
#include "orv/orvapi.h"
#include "orv/orvtags.h"
#include "platform/buffer.h"
#include "profiles/catalogue.h"
#include "profiles/profile_store.h"
#include "profiles/registry_store.h"
#include "tests/support/installation.h"
#include "tests/support/redirected_registry.h"

namespace orv::bench {
namespace {

constexpr ULONG kServices = 100;
constexpr int kCatalogueServices = 500;

// One service as the catalogue describes it.
SRow ServiceRow(const MAPIUID& uid, std::array<SPropValue, catalogue::kColumnCount>& values) {
  static WCHAR text[] = L"Contact file (vCard)", file[] = L"xhtsmpA.dll";
  static CHAR entry[] = "SampleServiceEntry";
  static LPWSTR files[] = {file};
  for (ULONG i = 0; i < values.size(); ++i) {
    values[i] = {};
    values[i].ulPropTag = catalogue::Columns()->aulPropTag[i];
    switch (PROP_TYPE(values[i].ulPropTag)) {
      case PT_UNICODE:
        values[i].Value.lpszW = text;
        break;
      case PT_STRING8:
        values[i].Value.lpszA = entry;
        break;
      case PT_MV_UNICODE:
        values[i].Value.MVszW = {1, files};
        break;
      case PT_BINARY:
        values[i].Value.bin = {sizeof uid.ab, const_cast<BYTE*>(uid.ab)};
        break;
      default:
        break;
    }
  }
  return {0, static_cast<ULONG>(values.size()), values.data()};
}

struct Value {
  WString name;
  std::vector<BYTE> data;
};
struct StoredRow {
  WString key;
  std::vector<Value> values;
};

// What lies in the registry once our code has saved: the floor writes the same.
std::vector<StoredRow> ReadStored(const WString& path) {
  std::vector<StoredRow> rows;
  for (const WString& key : test::SubkeyNames(path)) {
    StoredRow& row = rows.emplace_back(StoredRow{key, {}});
    for (const WString& name : test::ValueNames(path + L"\\" + key)) {
      const auto stored = test::ReadRegValue(path + L"\\" + key, name);
      const auto* bytes = reinterpret_cast<const BYTE*>(stored.data.data());
      row.values.push_back({name, {bytes, bytes + stored.data.size()}});
    }
  }
  return rows;
}

// More than any value of a service has, in bytes.
constexpr std::size_t kAnyValue = 4096;

bool SubkeyName(HKEY key, DWORD index, WCHAR* name) {
  DWORD length = kKeyNameBuffer;
  return RegEnumKeyExW(key, index, name, &length, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
}

void EmptyByHand(HKEY key) {
  std::array<WCHAR, kKeyNameBuffer> name{};
  while (SubkeyName(key, 0, name.data())) {
    HKEY subkey = nullptr;
    std::array<WCHAR, kKeyNameBuffer> below{};
    RegOpenKeyExW(key, name.data(), 0, KEY_ALL_ACCESS, &subkey);
    SubkeyName(subkey, 0, below.data());
    RegCloseKey(subkey);
    SubkeyName(key, 0, name.data());
    RegDeleteKeyW(key, name.data());
  }
}

HKEY CreateByHand(HKEY parent, const WString& path) {
  HKEY key = nullptr;
  DWORD disposition = 0;
  RegCreateKeyExW(parent, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, &disposition);
  return key;
}

void SaveByHand(const WString& path, const std::vector<StoredRow>& rows) {
  const HKEY profile = CreateByHand(HKEY_CURRENT_USER, path);
  EmptyByHand(profile);
  for (const StoredRow& row : rows) {
    const HKEY key = CreateByHand(profile, row.key);
    for (const Value& value : row.values) {
      RegSetValueExW(key, value.name.c_str(), 0, REG_BINARY, value.data.data(),
                     static_cast<DWORD>(value.data.size()));
    }
    RegCloseKey(key);
  }
  RegCloseKey(profile);
}

void LoadValuesByHand(HKEY key, std::vector<BYTE>& data) {
  std::array<WCHAR, kKeyNameBuffer> name{};
  LSTATUS status = ERROR_SUCCESS;
  for (DWORD index = 0; status == ERROR_SUCCESS; ++index) {
    DWORD length = kKeyNameBuffer;
    auto size = static_cast<DWORD>(data.size());
    status = RegEnumValueW(key, index, name.data(), &length, nullptr, nullptr, data.data(), &size);
  }
}

void LoadByHand(const WString& path) {
  HKEY profile = nullptr;
  RegOpenKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, KEY_READ, &profile);
  std::array<WCHAR, kKeyNameBuffer> name{};
  std::vector<BYTE> data(kAnyValue);
  for (DWORD index = 0; SubkeyName(profile, index, name.data()); ++index) {
    HKEY key = nullptr;
    RegOpenKeyExW(profile, name.data(), 0, KEY_READ, &key);
    LoadValuesByHand(key, data);
    RegCloseKey(key);
  }
  RegCloseKey(profile);
}

void CompareServiceRows() {
  const test::RedirectedRegistry registry;
  const test::Installation installation;
  RowList rows;
  for (BYTE i = 0; i < kServices; ++i) {
    const MAPIUID uid{{i, 1, 2, 3}};
    std::array<SPropValue, catalogue::kColumnCount> values;
    Require(rows.Add(ServiceRow(uid, values), rows.Count()) == S_OK, "service row");
  }
  Require(registry_store::SaveServiceRows(rows, L"source") == S_OK, "services to copy");
  // As administration does it, locks and the record of an unfinished change included.
  const auto ours = [] {
    registry_store::DeleteProfile(L"ours");
    Require(profile_store::Copy(L"source", L"ours") == S_OK, "loading and saving services");
  };
  ours();
  const WString profiles = *registry_store::ProfilesPath();
  const auto stored = ReadStored(profiles + L"\\ours");
  Require(stored.size() == kServices, "the copied services");
  const auto floor = [&] {
    LoadByHand(profiles + L"\\source");
    SaveByHand(profiles + L"\\floor", stored);
  };
  floor();
  Require(ReadStored(profiles + L"\\floor").size() == kServices, "the floor's services");
  Report("load and save 100 service rows", Compare(ours, floor), 1.25);
}

std::string CatalogueText() {
  std::string list = "[Services]\r\n";
  std::string sections;
  for (int i = 0; i < kCatalogueServices; ++i) {
    const std::string name = "Service" + std::to_string(i);
    list += name + "=Contact file number " + std::to_string(i) + "\r\n";
    sections +=
        "[" + name +
        "]\r\nPR_DISPLAY_NAME=Contact file\r\nPR_SERVICE_DLL_NAME=xhtsmp%c.dll\r\n"
        "PR_SERVICE_ENTRY_NAME=SampleServiceEntry\r\nPR_SERVICE_SUPPORT_FILES=xhtsmp%c.dll,other.dll\r\n"
        "PR_RESOURCE_FLAGS=SERVICE_SINGLE_COPY\r\n";
  }
  return list + sections;
}

// The file's bytes, whole.
void ReadFileByHand(const WString& path, std::vector<char>& bytes) {
  const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                  OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  LARGE_INTEGER size = {};
  DWORD read = 0;
  Require(GetFileSizeEx(file, &size) != 0, "the floor's file");
  bytes.resize(static_cast<std::size_t>(size.QuadPart));
  Require(ReadFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr) != 0,
          "the floor's reading");
  Require(read == bytes.size() && CloseHandle(file) != 0, "the floor's reading");
}

void CompareCatalogue() {
  const test::Installation installation;
  installation.WriteCatalogue(CatalogueText());
  const WString path = catalogue::DefaultPath();
  const auto ours = [] {
    RowSetPtr rows;
    Require(catalogue::Load({}, catalogue::kServices, rows) == S_OK && rows->cRows == kCatalogueServices,
            "loading the catalogue");
  };
  const auto floor = [&] {
    std::vector<char> bytes;
    ReadFileByHand(path, bytes);
  };
  Report("catalogue of 500 services", Compare(ours, floor), 2.0);
}

const Benchmark kServiceRows("service-rows", CompareServiceRows);
const Benchmark kCatalogue("catalogue", CompareCatalogue);

}  // namespace
}  // namespace orv::bench
