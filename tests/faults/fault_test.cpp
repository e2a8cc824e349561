// Whichever allocation fails, in the whole library: logon, profiles and services, properties, tables, recipients, the
// address book. The library is its test build, entered like the delivered one.
#include <gtest/gtest.h>

#include "tests/addrbook/address_lists.h"
#include "tests/faults/fault_driver.h"
#include "tests/props/samples.h"
#include "tests/support/fake_provider/fake_library.h"
#include "tests/support/installation.h"
#include "tests/support/redirected_registry.h"

namespace orv::test {
namespace {

using sdk::ComPtr;

const WString kProfiles = L"Software\\Tovan\\Velmora\\VX100 series\\Orv Profiles\\";

constexpr const char* kCatalogue =
    "[Services]\r\nFake=Fake\r\n[Default Services]\r\nFake=Fake\r\n"
    "[Fake]\r\nPR_DISPLAY_NAME=Fake\r\nPR_SERVICE_DLL_NAME=fake1.dll\r\nPR_SERVICE_ENTRY_NAME="
    "FakeServiceEntry\r\n"
    "PR_SERVICE_SUPPORT_FILES=a.dll,b.dll\r\n";

// The provider has a container of two users and a list, nested in another.
class Faults : public testing::Test {
 protected:
  Faults() {
    installation_.WriteCatalogue(kCatalogue);
    script_.nodes[""] = {MAPI_ABCONT, L"Root", {}, AB_RECIPIENTS | AB_MODIFIABLE, {}, 0, {}, {}};
    script_.nodes["box"] = {MAPI_ABCONT, L"Box", {}, AB_RECIPIENTS, {"ann", "list"}, 1, {}, {}};
    script_.nodes["list"] = {MAPI_DISTLIST, L"List", {}, 0, {"ann", "list2", "bob"}, 0, {}, {}};
    script_.nodes["list2"] = {MAPI_DISTLIST, L"Inner", {}, 0, {"bob", "cid"}, 0, {}, {}};
    script_.hierarchy = {"box"};
    EXPECT_EQ(client_.adminProfiles(MAPI_UNICODE, profiles_.Put(), 0), S_OK);
    EXPECT_EQ(profiles_->CreateProfile(L"P", 0, MAPI_UNICODE | MAPI_DEFAULT_SERVICES), S_OK);
    BeginSession();
  }

  void BeginSession() {
    services_.Reset();
    book_.Reset();
    session_.Reset();
    EXPECT_EQ(LogOn(session_, book_), S_OK);
    EXPECT_EQ(session_->AdminServices(0, services_.Put()), S_OK);
  }

  HRESULT LogOn(ComPtr<IOrvSession>& session, ComPtr<IAddrBook>& book) {
    return client_.open(0, L"P", MAPI_UNICODE, nullptr, nullptr, nullptr, book.Put(), session.Put(), 0);
  }
  // The section of the profile's one service.
  ComPtr<IProfSect> OpenSection() {
    auto rows = client_.Own<SRowSet>();
    ComPtr<IMAPITable> table;
    ComPtr<IProfSect> section;
    EXPECT_EQ(services_->GetMsgServiceTable(MAPI_UNICODE, table.Put()), S_OK);
    EXPECT_EQ(table->QueryRows(1, 0, rows.Put()), S_OK);
    const SBinary uid = sdk::ValueView(rows->aRow[0]).Find(PR_SERVICE_UID)->Value.bin;
    EXPECT_EQ(services_->OpenProfileSection(reinterpret_cast<MAPIUID*>(uid.lpb), nullptr, MAPI_MODIFY,
                                            section.Put()),
              S_OK);
    return section;
  }

  RedirectedRegistry registry_;
  Installation installation_{L"xhtaba.dll", L"seam\\xhtaba.dll"};
  SeamClient client_{installation_.Library()};
  FakeScript script_{"a", FakeUid(1), nullptr};
  FakeLibrary provider_{installation_.Path(L"fake1.dll"), &script_};
  ComPtr<IOrvProfAdmin> profiles_;
  ComPtr<IOrvSession> session_;
  ComPtr<IABServiceAdmin> services_;
  ComPtr<IAddrBook> book_;
};

// MAPI_E_LOGON_FAILED stands for whatever the scan of the profiles met, MAPI_E_CALL_FAILED for whatever the service
// table met; a search path that cannot be repaired is not looked at.
TEST_F(Faults, Logon) {
  const long open = script_.liveObjects;
  const auto run = [&] {
    ComPtr<IOrvSession> session;
    ComPtr<IAddrBook> book;
    const HRESULT hr = LogOn(session, book);
    EXPECT_EQ(SUCCEEDED(hr), static_cast<bool>(session));
    return hr;
  };
  Drive(client_, {.run = run,
                  .verify = [&](HRESULT) { EXPECT_EQ(script_.liveObjects, open); },
                  .results = {S_OK, MAPI_E_LOGON_FAILED, MAPI_E_CALL_FAILED}});
}

TEST_F(Faults, ProfileCreationCopyAndDeletion) {
  const auto run = [&] {
    ComPtr<IOrvProfAdmin> admin;
    HRESULT hr = client_.adminProfiles(MAPI_UNICODE, admin.Put(), 0);
    if (SUCCEEDED(hr)) hr = admin->CreateProfile(L"New", 0, MAPI_UNICODE | MAPI_DEFAULT_SERVICES);
    if (SUCCEEDED(hr)) hr = admin->CopyProfile(L"New", L"Copy", MAPI_UNICODE);
    return SUCCEEDED(hr) ? admin->DeleteProfile(L"Copy", MAPI_UNICODE) : hr;
  };
  const auto prepare = [] {
    for (const WCHAR* name : {L"New", L"Copy"}) DeleteKey(kProfiles + name);
  };
  // A profile that cannot be looked up is not found.
  Drive(client_, {.run = run, .prepare = prepare, .results = {MAPI_E_NOT_FOUND}});
}

// Each change of a profile and of its services is whole or not there, also where its answer is that of listing anew.
TEST_F(Faults, ChangesAreWholeOrNotThere) {
  ComPtr<IOrvProfAdmin> profiles;
  ComPtr<IOrvProfAdmin2> stored;
  ComPtr<IABServiceAdmin> services;
  MAPIUID uid{};
  WString key;
  std::vector<std::string> before;
  const auto dump = [] { return DumpKey(kProfiles.substr(0, kProfiles.size() - 1)); };
  const auto prepare = [&] {
    for (const WCHAR* name : {L"Q", L"R"}) DeleteKey(kProfiles + name);
    ASSERT_EQ(client_.adminProfiles(MAPI_UNICODE, profiles.Put(), 0), S_OK);
    ASSERT_EQ(profiles->QueryInterface(IID_IOrvProfAdmin2, reinterpret_cast<void**>(stored.Put())), S_OK);
    ASSERT_EQ(profiles->SetDefaultProfile(L"P", MAPI_UNICODE), S_OK);
    ASSERT_EQ(profiles->CreateProfile(L"Q", 0, MAPI_UNICODE | MAPI_DEFAULT_SERVICES), S_OK);
    ASSERT_EQ(profiles->AdminServices(L"Q", MAPI_UNICODE, services.Put()), S_OK);
    key = SubkeyNames(kProfiles + L"Q").front();
    for (std::size_t i = 0; i < sizeof uid.ab; ++i)
      uid.ab[i] = static_cast<BYTE>(std::stoul(key.substr(2 * i, 2), nullptr, 16));
    before = dump();
  };
  const std::function<HRESULT()> changes[] = {
      [&] { return profiles->RenameProfile(L"Q", L"R", MAPI_UNICODE); },
      [&] { return profiles->DeleteProfile(L"Q", MAPI_UNICODE); },
      [&] { return profiles->SetDefaultProfile(L"Q", MAPI_UNICODE); },
      [&] { return services->DeleteMsgService(&uid); },
      [&] { return stored->DeleteStoredService(L"Q", key.c_str(), MAPI_UNICODE); },
      [&] {
        SPropValue name = Unicode(PR_DISPLAY_NAME_W, L"another name, longer than what a string holds itself");
        IProfSect* section = nullptr;
        return services->ConfigureMsgService(&uid, 0, MAPI_UNICODE, 1, &name, &section);
      },
  };
  for (const auto& change : changes) {
    SCOPED_TRACE(&change - changes);
    const auto run = [&] {
      const HRESULT hr = change();
      services.Reset();
      stored.Reset();
      profiles.Reset();
      return hr;
    };
    prepare();
    EXPECT_EQ(run(), S_OK);
    const std::size_t after = dump().size();
    // A renamed profile's old one that cannot be deleted stays beside the new one.
    const auto isKept = [&] { return DumpKey(kProfiles + L"Q") == DumpKey(kProfiles + L"R"); };
    const auto verify = [&](HRESULT hr) {
      EXPECT_TRUE(dump().size() == after || (FAILED(hr) ? dump() == before : isKept())) << std::hex << hr;
    };
    Drive(client_, {.run = run, .prepare = prepare, .verify = verify, .results = {S_OK, MAPI_E_NOT_FOUND}});
  }
}

// A service whose set-up fails is taken out again: the profile is stored as it was.
TEST_F(Faults, ServiceCreation) {
  ASSERT_EQ(profiles_->CreateProfile(L"Q", 0, MAPI_UNICODE), S_OK);
  const WString key = kProfiles + L"Q";
  const auto stored = DumpKey(key);
  const auto run = [&] {
    ComPtr<IABServiceAdmin> services;
    const HRESULT hr = profiles_->AdminServices(L"Q", MAPI_UNICODE, services.Put());
    if (FAILED(hr)) return hr;
    return services->CreateMsgService(L"Fake", L"Shown", L"extra", 0, 0, MAPI_UNICODE);
  };
  const auto prepare = [&] {
    for (const WString& service : SubkeyNames(key)) DeleteKey(key + L"\\" + service);
  };
  const auto verify = [&](HRESULT hr) { EXPECT_TRUE(SUCCEEDED(hr) || DumpKey(key) == stored); };
  Drive(client_, {.run = run, .prepare = prepare, .verify = verify});
}

TEST_F(Faults, PropertyReads) {
  const ComPtr<IProfSect> section = OpenSection();
  const auto read = [&](IMAPIProp& object, SPropTagArray* asked) {
    ULONG count = 0;
    auto values = client_.Own<SPropValue>();
    const HRESULT hr = object.GetProps(asked, MAPI_UNICODE, &count, values.Put());
    EXPECT_EQ(SUCCEEDED(hr), static_cast<bool>(values));
    return hr;
  };
  const auto run = [&] {
    Tags tags{PR_SERVICE_DLL_NAME_W, PR_SERVICE_SUPPORT_FILES_W, PR_SERVICE_UID};
    ULONG type = 0;
    ComPtr<IMailUser> user;
    HRESULT hr = read(*section, tags.Get());
    if (SUCCEEDED(hr)) hr = read(*section, nullptr);
    if (SUCCEEDED(hr)) hr = section->GetPropList(MAPI_UNICODE, client_.Own<SPropTagArray>().Put());
    if (SUCCEEDED(hr)) hr = client_.openUserInfo(nullptr, &type, user.Put());
    return SUCCEEDED(hr) ? read(*user, nullptr) : hr;
  };
  Drive(client_, {.run = run});
}

TEST_F(Faults, PropertyWrites) {
  ComPtr<IProfSect> section;
  const auto run = [&] {
    const ComPtr<IProfSect> used = std::move(section);
    SPropValue value =
        Unicode(PR_COMMENT_W, L"a text that is longer than any small buffer inside a string object");
    auto problems = client_.Own<SPropProblemArray>();
    // The first failing code, that of a single property included.
    const auto result = [&](HRESULT hr) {
      return SUCCEEDED(hr) && problems ? problems->aProblem[0].scode : hr;
    };
    HRESULT hr = result(used->SetProps(1, &value, problems.Put()));
    if (SUCCEEDED(hr)) hr = used->SaveChanges(0);
    if (SUCCEEDED(hr)) hr = result(used->DeleteProps(Tags{PR_COMMENT_W}.Get(), problems.Put()));
    return hr;
  };
  Drive(client_, {.run = run, .prepare = [&] { section = OpenSection(); }});
}

TEST_F(Faults, TableReads) {
  ComPtr<IMAPITable> table;
  ASSERT_EQ(services_->GetMsgServiceTable(MAPI_UNICODE, table.Put()), S_OK);
  const auto run = [&] {
    Tags columns{PR_DISPLAY_NAME_W, PR_SERVICE_SUPPORT_FILES_W, PR_SERVICE_UID};
    auto tags = client_.Own<SPropTagArray>();
    auto rows = client_.Own<SRowSet>();
    HRESULT hr = table->SetColumns(columns.Get(), 0);
    if (SUCCEEDED(hr)) hr = table->QueryColumns(0, tags.Put());
    if (SUCCEEDED(hr)) hr = table->QueryColumns(TBL_ALL_COLUMNS, tags.Put());
    if (SUCCEEDED(hr)) hr = table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr);
    if (SUCCEEDED(hr)) hr = table->QueryRows(10, 0, rows.Put());
    EXPECT_EQ(SUCCEEDED(hr), static_cast<bool>(rows));
    return hr;
  };
  Drive(client_, {.run = run});
}

TEST_F(Faults, HierarchyReads) {
  const auto run = [&] {
    ULONG type = 0;
    ComPtr<IABContainer> root;
    ComPtr<IMAPITable> table;
    HRESULT hr = book_->OpenEntry(0, nullptr, nullptr, 0, &type, root.PutUnknown());
    if (SUCCEEDED(hr)) hr = root->GetHierarchyTable(MAPI_UNICODE | CONVENIENT_DEPTH, table.Put());
    return SUCCEEDED(hr) ? table->QueryRows(10, 0, client_.Own<SRowSet>().Put()) : hr;
  };
  // A provider whose containers cannot be read is listed without them, and its session keeps what it lacks.
  const auto verify = [&](HRESULT) { BeginSession(); };
  Drive(client_, {.run = run, .verify = verify, .results = {S_OK}});
}

TEST_F(Faults, RecipientExpansion) {
  auto list = client_.Own<ADRLIST>();
  const auto run = [&] {
    const HRESULT hr = session_->ExpandRecipients(0, list.InOut());
    EXPECT_TRUE(FAILED(hr) || Read(list.Get()) == (std::vector<std::string>{"ann/2", "bob/2", "cid/2"}));
    list.Reset();
    return hr;
  };
  const auto prepare = [&] { list = client_.Own(MakeList(script_, {"list/2"}, client_.buffers)); };
  Drive(client_, {.run = run, .prepare = prepare});
}

TEST_F(Faults, RecipientPreparation) {
  auto list = client_.Own<ADRLIST>();
  const auto run = [&] {
    const HRESULT hr = book_->PrepareRecips(0, Tags{PR_DISPLAY_NAME_W, PR_ENTRYID}.Get(), list.Get());
    EXPECT_EQ(list->cEntries, 3u);
    list.Reset();
    return hr;
  };
  const auto prepare = [&] {
    list = client_.Own(MakeList(script_, {"ann/1", "nobody/1", "bob/1"}, client_.buffers));
    // The second one belongs to no provider.
    (list->aEntries + 1)->rgPropVals[0].Value.bin.lpb[ORV_ENTRYID_UID_OFFSET] ^= 0xFF;
  };
  Drive(client_, {.run = run, .prepare = prepare});
}

// What a session's end cannot store is not stored at all: the settings are those before it or after it.
TEST_F(Faults, SessionEnd) {
  std::vector<BYTE> id = script_.EntryId("");
  const WString key = kProfiles + L"P";
  auto* const entry = reinterpret_cast<ENTRYID*>(id.data());
  const auto none = DumpKey(key);
  ComPtr<IOrvSession> session;
  ComPtr<IAddrBook> book;
  const auto prepare = [&] {
    for (const WString& value : ValueNames(key))
      RegDeleteKeyValueW(HKEY_CURRENT_USER, key.c_str(), value.c_str());
    ASSERT_EQ(LogOn(session, book), S_OK);
    ASSERT_EQ(book->SetDefaultDir(static_cast<ULONG>(id.size()), entry), S_OK);
    ASSERT_EQ(book->SetPAB(static_cast<ULONG>(id.size()), entry), S_OK);
    book.Reset();
  };
  const auto run = [&] {
    session.Reset();
    return S_OK;
  };
  prepare();
  run();
  const std::size_t all = ValueNames(key).size();
  ASSERT_EQ(all, 2u);
  const auto verify = [&](HRESULT) { EXPECT_TRUE(DumpKey(key) == none || ValueNames(key).size() == all); };
  const Scenario end{.run = run, .prepare = prepare, .verify = verify, .results = {S_OK}};
  Drive(client_, end);
  EXPECT_GT(DriveSite(client_, end, faults::Site::kRegistry), 0u);
}

// A setting whose container cannot be checked is refused like any other that fails the check.
TEST_F(Faults, AddressBookSettings) {
  std::vector<BYTE> id = script_.EntryId("box");
  const auto run = [&] {
    auto found = client_.Own<ENTRYID>();
    auto path = client_.Own<SRowSet>();
    ULONG size = 0;
    HRESULT hr = book_->SetDefaultDir(static_cast<ULONG>(id.size()), reinterpret_cast<ENTRYID*>(id.data()));
    if (SUCCEEDED(hr)) hr = book_->GetDefaultDir(&size, found.Put());
    if (SUCCEEDED(hr)) hr = book_->GetPAB(&size, found.Put());
    if (SUCCEEDED(hr)) hr = book_->GetSearchPath(0, path.Put());
    return SUCCEEDED(hr) ? book_->SetSearchPath(0, path.Get()) : hr;
  };
  Drive(client_, {.run = run, .results = {S_OK, MAPI_E_CALL_FAILED, MAPI_E_INVALID_PARAMETER}});
}

}  // namespace
}  // namespace orv::test
