// The logon against the registry reads and library loads that its steps demand; the expansion of a distribution list
// against reading and freeing the list's rows.
#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "addrbook/recipient_expansion.h"
#include "bench/harness.h"
#include "bench/refusing_book.h"
#include "bench/values.h"
#include "orv/orvspi.h"
#include "platform/com_ptr.h"
#include "profiles/registry_store.h"
#include "props/base_prop.h"
#include "props/base_table.h"
#include "props/prop_value.h"
#include "tests/support/installation.h"
#include "tests/support/redirected_registry.h"

namespace orv::bench {
namespace {

// ---- The logon ----

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
    for (DWORD i = 0;; ++i) {
      DWORD length = kKeyNameBuffer;
      const LSTATUS status = RegEnumValueW(key, i, name_.data(), &length, nullptr, nullptr, nullptr, nullptr);
      if (status != ERROR_SUCCESS) return;
      DWORD size = 0;
      RegQueryValueExW(key, name_.data(), nullptr, nullptr, nullptr, &size);
      RegQueryValueExW(key, name_.data(), nullptr, nullptr, data_.data(), &size);
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
    libraries.push_back(
        LoadLibraryExW(installation.Path(LibraryOf(i)).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
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
    const Comparison result = Compare(logon, [&] { LogonByHand(installation, services); });
    Report("OrvOpen, " + std::to_string(services) + (services == 1 ? " service" : " services"), result, 1.3);
    if (services == 1) Report("OrvOpen, 1 service, against 20 ms", result.ours / 1e6, 20, "ms", 1);
  }
}

const Benchmark g_logon("logon", BenchLogon);

// ---- The expansion ----

// A provider with one distribution list, whose members lie in a snapshot table that every opening shares.
class DistList final : public PropObject<IABContainer> {
 public:
  explicit DistList(ComPtr<IMAPITable> members) : members_(std::move(members)) {}

  HRESULT STDMETHODCALLTYPE GetContentsTable(ULONG, LPMAPITABLE* table) override {
    *table = ComPtr<IMAPITable>(members_).Detach();
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetHierarchyTable(ULONG, LPMAPITABLE*) override { return MAPI_E_NO_SUPPORT; }
  HRESULT STDMETHODCALLTYPE OpenEntry(ULONG, LPENTRYID, LPCIID, ULONG, ULONG*, LPUNKNOWN*) override {
    return MAPI_E_NO_SUPPORT;
  }
  HRESULT STDMETHODCALLTYPE SetSearchCriteria(LPSRestriction, LPENTRYLIST, ULONG) override {
    return MAPI_E_NO_SUPPORT;
  }
  HRESULT STDMETHODCALLTYPE GetSearchCriteria(ULONG, LPSRestriction*, LPENTRYLIST*, ULONG*) override {
    return MAPI_E_NO_SUPPORT;
  }
  HRESULT STDMETHODCALLTYPE CreateEntry(ULONG, LPENTRYID, ULONG, LPMAPIPROP*) override {
    return MAPI_E_NO_SUPPORT;
  }
  HRESULT STDMETHODCALLTYPE CopyEntries(LPENTRYLIST, ULONG_PTR, LPMAPIPROGRESS, ULONG) override {
    return MAPI_E_NO_SUPPORT;
  }
  HRESULT STDMETHODCALLTYPE DeleteEntries(LPENTRYLIST, ULONG) override { return MAPI_E_NO_SUPPORT; }
  HRESULT STDMETHODCALLTYPE ResolveNames(LPSPropTagArray, ULONG, LPADRLIST, LPFlagList) override {
    return MAPI_E_NO_SUPPORT;
  }

 private:
  bool Supports(REFIID) const override { return false; }

  ComPtr<IMAPITable> members_;
};

class ListProvider final : public RefusingBook {
 public:
  explicit ListProvider(ComPtr<IMAPITable> members)
      : list_(ComPtr<DistList>::Adopt(new DistList(std::move(members)))) {}

  HRESULT STDMETHODCALLTYPE OpenEntry(ULONG, LPENTRYID, LPCIID, ULONG, ULONG* type,
                                      LPUNKNOWN* object) override {
    *type = MAPI_DISTLIST;
    *object = ComPtr<DistList>(list_).Detach();
    return S_OK;
  }

 private:
  ComPtr<DistList> list_;
};

constexpr ULONG kIdSize = 28;
constexpr SizedSPropTagArray(5, kColumns) = {
    5, {PR_ENTRYID, PR_NULL, PR_DISPLAY_NAME_W, PR_ADDRTYPE_W, PR_OBJECT_TYPE}};

ComPtr<IMAPITable> MakeMembers(ULONG count) {
  MapiBuffer<SRowSet> set;
  Require(set.Allocate(CbNewSRowSet(std::size_t{count})) == S_OK, "row set");
  const WString type = L"FAX";
  for (ULONG i = 0; i < count; ++i) {
    MapiBuffer<SPropValue> values;
    const WString name = L"Recipient number " + std::to_wstring(i);
    std::array<BYTE, kIdSize> id{};
    std::memcpy(id.data() + kIdSize - sizeof i, &i, sizeof i);
    const SPropValue row[] = {Number(PR_ENTRYID, 0), Text(PR_DISPLAY_NAME_W, name), Text(PR_ADDRTYPE_W, type),
                              Number(PR_OBJECT_TYPE, MAPI_MAILUSER)};
    Require(values.AllocateArray(std::size(row)) == S_OK, "row");
    for (ULONG column = 0; column < std::size(row); ++column) {
      SPropValue source = row[column];
      if (column == 0) source.Value.bin = {kIdSize, id.data()};
      Require(CopyValue(values[column], source, values.Get()) == S_OK, "value");
    }
    set->aRow[set->cRows++] = {0, static_cast<ULONG>(std::size(row)), values.Detach()};
  }
  RowSetPtr rows(set.Detach());
  ComPtr<IMAPITable> table;
  Require(CreateTable(rows.Get(), table.Put()) == S_OK, "table");
  return table;
}

AdrListPtr MakeGiven() {
  MapiBuffer<SPropValue> values;
  MapiBuffer<ADRLIST> list;
  Require(values.AllocateArray(3) == S_OK && list.Allocate(CbNewADRLIST(1)) == S_OK, "address list");
  values[0] = Number(PR_ENTRYID, 0);
  Require(values.More(kIdSize, &values[0].Value.bin.lpb) == S_OK, "identifier");
  values[0].Value.bin.cb = kIdSize;
  values[1] = Number(PR_OBJECT_TYPE, MAPI_DISTLIST);
  values[2] = Number(PR_RECIPIENT_TYPE, MAPI_TO);
  list->cEntries = 1;
  list->aEntries[0] = {0, 3, values.Detach()};
  return AdrListPtr(list.Detach());
}

void Expand(IAddrBook& book, ULONG count) {
  ADRLIST* list = MakeGiven().Detach();
  const HRESULT hr = ExpandRecipientLists(&book, &list);
  const AdrListPtr result(list);
  Require(hr == S_OK && result->cEntries == count, "ExpandRecipients");
}

// Whoever wants all members holds all rows, and frees them at the end.
void ReadByHand(IMAPITable& table, ULONG count) {
  const AdrListPtr given = MakeGiven();
  auto columns = kColumns;
  Require(table.SetColumns(reinterpret_cast<SPropTagArray*>(&columns), 0) == S_OK, "SetColumns");
  Require(table.SeekRow(BOOKMARK_BEGINNING, 0, nullptr) == S_OK, "SeekRow");
  std::vector<SPropValue*> members;
  for (ULONG i = 0; i <= count; ++i) {
    RowSetPtr rows;
    Require(table.QueryRows(1, 0, rows.Put()) == S_OK && rows->cRows == (i < count), "QueryRows");
    if (i == count) break;
    members.push_back(rows->aRow[0].lpProps);
    rows->cRows = 0;
  }
  for (SPropValue* member : members) OrvFreeBuffer(member);
}

void BenchExpansion() {
  double smallest = 0;
  for (const ULONG count : {1'000u, 10'000u, 100'000u}) {
    const ComPtr<IMAPITable> members = MakeMembers(count);
    const auto book = ComPtr<ListProvider>::Adopt(new ListProvider(members));
    const Comparison result = Compare([&] { Expand(*book, count); }, [&] { ReadByHand(*members, count); });
    Report("ExpandRecipients, " + std::to_string(count) + " members", result, 1.5);
    if (smallest == 0) smallest = result.ratio;
    // Memory gets slower the more of it is held, for us as for the floor: our part of the cost must not grow.
    if (count > 1'000) {
      Report("ExpandRecipients, growth of the ratio to " + std::to_string(count), result.ratio, smallest, "",
             1.5);
    }
  }
}

const Benchmark g_expansion("expansion", BenchExpansion);

}  // namespace
}  // namespace orv::bench
