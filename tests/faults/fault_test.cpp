// Whichever allocation fails, in the whole library: logon, profiles and services, properties, tables, recipients, the
// address book. The library is its test build, entered like the delivered one.
#include <gtest/gtest.h>

#include "platform/com_ptr.h"
#include "tests/addrbook/address_lists.h"
#include "tests/faults/fault_driver.h"
#include "tests/props/samples.h"
#include "tests/support/fake_provider/fake_library.h"
#include "tests/support/installation.h"
#include "tests/support/redirected_registry.h"

namespace orv::test {
namespace {

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
  }

  HRESULT LogOn(ComPtr<IOrvSession>& session, IAddrBook** book = nullptr) {
    return client_.open(0, L"P", MAPI_UNICODE, nullptr, nullptr, nullptr, book, session.Put(), 0);
  }
  void BeginSession() {
    ASSERT_EQ(LogOn(session_, book_.Put()), S_OK);
    ASSERT_EQ(session_->AdminServices(0, services_.Put()), S_OK);
  }
  // The section of the profile's one service.
  ComPtr<IProfSect> OpenSection() {
    Rows rows;
    ComPtr<IMAPITable> table;
    ComPtr<IProfSect> section;
    EXPECT_EQ(services_->GetMsgServiceTable(MAPI_UNICODE, table.Put()), S_OK);
    EXPECT_EQ(table->QueryRows(1, 0, Out(rows)), S_OK);
    for (ULONG i = 0; rows && i < rows->aRow[0].cValues; ++i) {
      const SPropValue& value = rows->aRow[0].lpProps[i];
      if (value.ulPropTag != PR_SERVICE_UID) continue;
      EXPECT_EQ(services_->OpenProfileSection(reinterpret_cast<const MAPIUID*>(value.Value.bin.lpb), nullptr,
                                              MAPI_MODIFY, section.Put()),
                S_OK);
    }
    return section;
  }
  ADRLIST* MakeRecipients(const std::vector<std::string>& entries) {
    return MakeList(script_, entries, client_.buffers);
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
  const auto run = [&] {
    ComPtr<IOrvSession> session;
    ComPtr<IAddrBook> book;
    const HRESULT hr = LogOn(session, book.Put());
    EXPECT_EQ(SUCCEEDED(hr), static_cast<bool>(session));
    return hr;
  };
  Drive(client_, {.run = run,
                  .verify = [&](HRESULT) { EXPECT_EQ(script_.liveObjects, 0); },
                  .results = {S_OK, MAPI_E_LOGON_FAILED, MAPI_E_CALL_FAILED}});
}

TEST_F(Faults, ProfileCreationCopyAndDeletion) {
  const auto run = [&] {
    ComPtr<IOrvProfAdmin> admin;
    HRESULT hr = client_.adminProfiles(MAPI_UNICODE, admin.Put(), 0);
    if (SUCCEEDED(hr)) hr = admin->CreateProfile(L"New", 0, MAPI_UNICODE | MAPI_DEFAULT_SERVICES);
    if (SUCCEEDED(hr)) hr = admin->CopyProfile(L"New", L"Copy", MAPI_UNICODE);
    if (SUCCEEDED(hr)) hr = admin->DeleteProfile(L"Copy", MAPI_UNICODE);
    return hr;
  };
  const auto prepare = [] {
    for (const WCHAR* name : {L"New", L"Copy"}) DeleteKey(kProfiles + name);
  };
  // A profile that cannot be looked up is not found.
  Drive(client_, {.run = run, .prepare = prepare, .results = {MAPI_E_NOT_FOUND}});
}

// A service whose set-up fails is taken out again: the profile is stored as it was.
TEST_F(Faults, ServiceCreation) {
  ASSERT_EQ(profiles_->CreateProfile(L"Q", 0, MAPI_UNICODE), S_OK);
  const WString key = kProfiles + L"Q";
  const std::vector<std::string> stored = DumpKey(key);
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
  BeginSession();
  const ComPtr<IProfSect> section = OpenSection();
  Drive(client_, {.run = [&]() -> HRESULT {
          Tags tags{PR_SERVICE_DLL_NAME_W, PR_SERVICE_SUPPORT_FILES_W, PR_SERVICE_UID};
          for (SPropTagArray* asked : {tags.Get(), static_cast<SPropTagArray*>(nullptr)}) {
            ULONG count = 0;
            Buffer<SPropValue> values;
            const HRESULT hr = section->GetProps(asked, MAPI_UNICODE, &count, Out(values));
            EXPECT_EQ(SUCCEEDED(hr), static_cast<bool>(values));
            if (FAILED(hr)) return hr;
          }
          Buffer<SPropTagArray> list;
          const HRESULT hr = section->GetPropList(MAPI_UNICODE, Out(list));
          if (FAILED(hr)) return hr;
          ULONG number = 0;
          ComPtr<IMailUser> user;
          Buffer<SPropValue> values;
          const HRESULT opened = client_.openUserInfo(nullptr, &number, user.Put());
          return FAILED(opened) ? opened : user->GetProps(nullptr, MAPI_UNICODE, &number, Out(values));
        }});
}

// The first failing code, that of a single property included.
HRESULT ResultOf(HRESULT hr, const Buffer<SPropProblemArray>& problems) {
  return SUCCEEDED(hr) && problems ? problems->aProblem[0].scode : hr;
}

TEST_F(Faults, PropertyWrites) {
  BeginSession();
  ComPtr<IProfSect> section;
  const WCHAR text[] = L"a text that is longer than any small buffer inside a string object";
  Tags tags{PR_COMMENT_W};
  const auto run = [&] {
    const ComPtr<IProfSect> used = std::move(section);
    SPropValue value = Unicode(PR_COMMENT_W, text);
    Buffer<SPropProblemArray> problems;
    HRESULT hr = used->SetProps(1, &value, Out(problems));
    hr = ResultOf(hr, problems);
    if (SUCCEEDED(hr)) hr = used->SaveChanges(0);
    if (FAILED(hr)) return hr;
    hr = used->DeleteProps(tags.Get(), Out(problems));
    return ResultOf(hr, problems);
  };
  Drive(client_, {.run = run, .prepare = [&] { section = OpenSection(); }});
}

TEST_F(Faults, TableReads) {
  BeginSession();
  ComPtr<IMAPITable> table;
  ASSERT_EQ(services_->GetMsgServiceTable(MAPI_UNICODE, table.Put()), S_OK);
  Tags columns{PR_DISPLAY_NAME_W, PR_SERVICE_SUPPORT_FILES_W, PR_SERVICE_UID};
  const auto run = [&] {
    Buffer<SPropTagArray> tags;
    Rows rows;
    HRESULT hr = table->SetColumns(columns.Get(), 0);
    if (SUCCEEDED(hr)) hr = table->QueryColumns(0, Out(tags));
    if (SUCCEEDED(hr)) hr = table->QueryColumns(TBL_ALL_COLUMNS, Out(tags));
    if (SUCCEEDED(hr)) hr = table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr);
    if (SUCCEEDED(hr)) hr = table->QueryRows(10, 0, Out(rows));
    EXPECT_EQ(SUCCEEDED(hr), static_cast<bool>(rows));
    return hr;
  };
  Drive(client_, {.run = run});
}

TEST_F(Faults, HierarchyReads) {
  BeginSession();
  const auto run = [&] {
    ULONG type = 0;
    ComPtr<IUnknown> root;
    ComPtr<IMAPITable> table;
    Rows rows;
    HRESULT hr = book_->OpenEntry(0, nullptr, nullptr, 0, &type, root.Put());
    if (FAILED(hr)) return hr;
    hr = static_cast<IABContainer*>(root.Get())
             ->GetHierarchyTable(MAPI_UNICODE | CONVENIENT_DEPTH, table.Put());
    return SUCCEEDED(hr) ? table->QueryRows(10, 0, Out(rows)) : hr;
  };
  // A provider whose containers cannot be read is listed without them.
  Drive(client_, {.run = run, .results = {S_OK}});
}

TEST_F(Faults, RecipientExpansion) {
  BeginSession();
  AdrList list;
  const auto run = [&] {
    ADRLIST* raw = list.release();
    const HRESULT hr = session_->ExpandRecipients(0, &raw);
    list.reset(raw);
    EXPECT_TRUE(FAILED(hr) || Read(raw) == (std::vector<std::string>{"ann/2", "bob/2", "cid/2"}));
    list.reset();
    return hr;
  };
  Drive(client_, {.run = run, .prepare = [&] { list.reset(MakeRecipients({"list/2"})); }});
}

TEST_F(Faults, RecipientPreparation) {
  BeginSession();
  AdrList list;
  Tags tags{PR_DISPLAY_NAME_W, PR_ENTRYID};
  const auto run = [&] {
    const HRESULT hr = book_->PrepareRecips(0, tags.Get(), list.get());
    EXPECT_EQ(list->cEntries, 3u);
    list.reset();
    return hr;
  };
  const auto prepare = [&] {
    list.reset(MakeRecipients({"ann/1", "nobody/1", "bob/1"}));
    // The second one belongs to no provider.
    SPropValue& id = (list->aEntries + 1)->rgPropVals[0];
    id.Value.bin.lpb[ORV_ENTRYID_UID_OFFSET] ^= 0xFF;
  };
  Drive(client_, {.run = run, .prepare = prepare});
}

// A setting whose container cannot be checked is refused like any other that fails the check.
TEST_F(Faults, AddressBookSettings) {
  BeginSession();
  std::vector<BYTE> id = script_.EntryId("box");
  const ULONG size = static_cast<ULONG>(id.size());
  const auto run = [&] {
    Buffer<ENTRYID> found;
    Rows path;
    ULONG foundSize = 0;
    HRESULT hr = book_->SetDefaultDir(size, reinterpret_cast<ENTRYID*>(id.data()));
    if (SUCCEEDED(hr)) hr = book_->GetDefaultDir(&foundSize, Out(found));
    if (SUCCEEDED(hr)) hr = book_->GetPAB(&foundSize, Out(found));
    if (SUCCEEDED(hr)) hr = book_->GetSearchPath(0, Out(path));
    return SUCCEEDED(hr) ? book_->SetSearchPath(0, path.get()) : hr;
  };
  Drive(client_, {.run = run, .results = {S_OK, MAPI_E_CALL_FAILED, MAPI_E_INVALID_PARAMETER}});
}

}  // namespace
}  // namespace orv::test
