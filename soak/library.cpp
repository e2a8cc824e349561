#include "soak/library.h"

#include <cstdio>

#include "tests/support/process_probe.h"

namespace orv::soak {
namespace {

template <class Function>
Function* Find(HMODULE module, const char* name) {
  return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

std::string Hex(HRESULT code) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%08lX", static_cast<unsigned long>(code));
  return text;
}

ULONG SectionTag(ULONG i) { return PROP_TAG(PT_UNICODE, 0x6710 + i); }

WString NameOf(const ValueView& row) {
  const WCHAR* name = row.Text(PR_DISPLAY_NAME_W);
  return name != nullptr ? name : L"";
}

constexpr long long kKeptByTheHeap = 4096;

bool Grows(const Growth::Counts& counts) {
  return std::any_of(counts.begin(), counts.end(), [](const auto& each) {
    return each.second > (each.first == "bytes" ? kKeptByTheHeap : 0);
  });
}

}  // namespace

Growth::Counts Growth::Count() const {
  const test::WindowObjects windows = countsWindows_ ? test::CountWindowObjects() : test::WindowObjects{};
  const auto [slots, handles, libraries, bytes] = test::CountProcess();
  return {{"slots", slots}, {"handles", handles},   {"libraries", libraries},
          {"bytes", bytes}, {"user", windows.user}, {"drawing", windows.drawing}};
}

Failed::Failed(const std::string& what, HRESULT code) : std::runtime_error(what + ": " + Hex(code)) {}

void Check(HRESULT result, const char* what) {
  if (FAILED(result)) throw Failed(what, result);
}

void Require(bool holds, const std::string& what) {
  if (!holds) throw std::runtime_error(what);
}

const Exports& TheLibrary() {
  static const HMODULE module = LoadLibraryW(PathBeside(L"xhtabb.dll").c_str());
  static const Exports exports = {
      Find<ORVOPEN>(module, "OrvOpen"),
      Find<ORVADMINPROFILES>(module, "OrvAdminProfiles"),
      Find<ORVADDRESS>(module, "OrvAddress"),
      {Find<ALLOCATEBUFFER>(module, "OrvAllocateBuffer"), Find<ALLOCATEMORE>(module, "OrvAllocateMore"),
       Find<FREEBUFFER>(module, "OrvFreeBuffer")}};
  return exports;
}

ComPtr<IOrvProfAdmin> Profiles() {
  ComPtr<IOrvProfAdmin> admin;
  Check(TheLibrary().adminProfiles(MAPI_UNICODE, admin.Put(), 0), "profile administration");
  return admin;
}

ComPtr<IABServiceAdmin> ServicesOf(const WString& profile) {
  ComPtr<IABServiceAdmin> services;
  Check(Profiles()->AdminServices(profile.c_str(), MAPI_UNICODE, services.Put()), "AdminServices");
  return services;
}

ComPtr<IOrvSession> LogOn(const WString& profile) {
  ComPtr<IOrvSession> session;
  Check(TheLibrary().open(0, profile.c_str(), MAPI_UNICODE, nullptr, nullptr, nullptr, nullptr, session.Put(),
                          0),
        "logon");
  return session;
}

ComPtr<IAddrBook> BookOf(const ComPtr<IOrvSession>& session) {
  ComPtr<IAddrBook> book;
  Check(session->OpenAddressBook(0, book.Put()), "OpenAddressBook");
  return book;
}

ComPtr<IMAPITable> HierarchyOf(IAddrBook* book) {
  ComPtr<IUnknown> root;
  ULONG type = 0;
  Check(book->OpenEntry(0, nullptr, nullptr, 0, &type, root.Put()), "root container");
  ComPtr<IMAPITable> table;
  Check(root.As<IMAPIContainer>()->GetHierarchyTable(CONVENIENT_DEPTH | MAPI_UNICODE, table.Put()),
        "GetHierarchyTable");
  return table;
}

void ShowAddressDialog(IAddrBook* book) {
  ULONG destination = MAPI_TO;
  ADRPARM parameters{};
  parameters.ulFlags = DIALOG_MODAL;
  parameters.cDestFields = 1;
  parameters.lpulDestComps = &destination;
  auto list = TheLibrary().allocator.Own<ADRLIST>();
  const HRESULT result = TheLibrary().address(0, book, &parameters, list.InOut());
  if (result != MAPI_E_USER_CANCEL) throw Failed("OrvAddress", result);
}

ComPtr<IProfSect> SectionOf(IABServiceAdmin* services, const Uid& uid) {
  ComPtr<IProfSect> section;
  Check(services->OpenProfileSection(AsUid(uid), nullptr, 0, section.Put()), "OpenProfileSection");
  return section;
}

void ForEachRow(IMAPITable* table, LPSPropTagArray columns,
                const std::function<void(const ValueView&)>& use) {
  if (columns != nullptr) Check(table->SetColumns(columns, 0), "SetColumns");
  Check(table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr), "SeekRow");
  for (auto rows = TheLibrary().allocator.Own<SRowSet>();;) {
    Check(table->QueryRows(256, 0, rows.Put()), "QueryRows");
    if (rows->cRows == 0) return;
    for (ULONG i = 0; i < rows->cRows; ++i) use(ValueView(rows->aRow[i]));
  }
}

bool HasProfile(const WString& name) {
  ComPtr<IMAPITable> table;
  Check(Profiles()->GetProfileTable(MAPI_UNICODE, table.Put()), "GetProfileTable");
  sdk::TagArray columns{PR_DISPLAY_NAME_W};
  bool found = false;
  ForEachRow(table.Get(), columns.Get(), [&](const ValueView& row) { found |= NameOf(row) == name; });
  return found;
}

void DeleteProfile(const WString& name) {
  const HRESULT result = Profiles()->DeleteProfile(name.c_str(), MAPI_UNICODE);
  if (result != MAPI_E_NOT_FOUND) Check(result, "DeleteProfile");
}

Stored ReadStored(const WString& profile) {
  const auto admin = Profiles().As<IOrvProfAdmin2>(IID_IOrvProfAdmin2);
  ComPtr<IMAPITable> table;
  Check(admin->GetStoredServiceTable(profile.c_str(), MAPI_UNICODE, table.Put()), "GetStoredServiceTable");
  Stored stored;
  ForEachRow(table.Get(), nullptr, [&](const ValueView& row) {
    Check(static_cast<HRESULT>(row.Number(PR_ORV_SERVICE_STATUS, ~0U)), "stored service");
    Uid uid{};
    Require(row.Binary(PR_SERVICE_UID).cb == sizeof uid, "a service without UID");
    std::memcpy(uid.data(), row.Binary(PR_SERVICE_UID).lpb, sizeof uid);
    stored[uid] = static_cast<int>(std::count_if(row.begin(), row.end(), [](const SPropValue& value) {
      return PROP_TYPE(value.ulPropTag) != PT_ERROR;
    }));
  });
  return stored;
}

Uid AddService(IABServiceAdmin* services, const WCHAR* service, const WString& displayName) {
  Check(services->CreateMsgService(service, displayName.c_str(), nullptr, 0, 0, MAPI_UNICODE),
        "CreateMsgService");
  ComPtr<IMAPITable> table;
  Check(services->GetMsgServiceTable(MAPI_UNICODE, table.Put()), "GetMsgServiceTable");
  sdk::TagArray columns{PR_DISPLAY_NAME_W, PR_SERVICE_UID};
  Uid uid{};
  bool found = false;
  ForEachRow(table.Get(), columns.Get(), [&](const ValueView& row) {
    if (NameOf(row) != displayName || row.Binary(PR_SERVICE_UID).cb != sizeof uid) return;
    std::memcpy(uid.data(), row.Binary(PR_SERVICE_UID).lpb, sizeof uid);
    found = true;
  });
  Require(found, "a service that was added is not listed");
  return uid;
}

std::vector<SPropValue> TextValues(WString& text) {
  std::vector<SPropValue> values(kTexts);
  for (ULONG i = 0; i < kTexts; ++i) {
    values[i].ulPropTag = SectionTag(i);
    values[i].Value.lpszW = text.data();
  }
  return values;
}

void WriteTexts(IMAPIProp* section, unsigned generation) {
  WString text = std::to_wstring(generation);
  Check(section->SetProps(kTexts, TextValues(text).data(), nullptr), "SetProps");
  Check(section->SaveChanges(KEEP_OPEN_READWRITE), "SaveChanges");
}

void RequireOneGeneration(const WString& profile, const Uid& uid) {
  const auto section = SectionOf(ServicesOf(profile).Get(), uid);
  auto values = TheLibrary().allocator.Own<SPropValue>();
  ULONG count = 0;
  Check(section->GetProps(nullptr, MAPI_UNICODE, &count, values.Put()), "GetProps");
  const ValueView view(values.Get(), count);
  const WCHAR* first = view.Text(SectionTag(0));
  for (ULONG i = 0; i < kTexts; ++i) {
    const WCHAR* text = view.Text(SectionTag(i));
    Require(first != nullptr && text != nullptr && WString(first) == text, "a section of two generations");
  }
}

WString PathBeside(const WString& file) {
  WCHAR path[MAX_PATH];
  const WString own(path, GetModuleFileNameW(nullptr, path, MAX_PATH));
  return own.substr(0, own.find_last_of(L'\\') + 1) + file;
}

// What it keeps itself is there already when it counts again.
void Growth::Mark() {
  marked_ = Count();
  marked_ = Count();
}

Growth::Counts Growth::Since() const {
  Counts added = Count();
  for (auto& [name, count] : added) count -= marked_.at(name);
  return added;
}

Growth::Counts Growth::Print(unsigned done, const Counts& allowed) const {
  Counts added = Since();
  std::printf("done %u\n", done);
  for (auto& [name, count] : added) {
    const auto floor = allowed.find(name);
    if (floor != allowed.end()) count -= floor->second;
    std::printf("growth:%s %lld\n", name.c_str(), count);
  }
  return added;
}

void RunBatches(bool countsWindows, const Growth::Counts& allowed, const std::function<unsigned()>& batch) {
  constexpr unsigned kBatches = 2, kMostBatches = 8;
  Growth growth(countsWindows);
  Growth::Counts least;
  for (unsigned done = 0; done < kBatches || (done < kMostBatches && Grows(least)); ++done) {
    growth.Mark();
    const unsigned amount = batch();
    for (const auto& [name, count] : growth.Print(amount, allowed)) {
      const auto known = least.try_emplace(name, count).first;
      known->second = std::min(known->second, count);
    }
  }
}

}  // namespace orv::soak
