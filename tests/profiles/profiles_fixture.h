// What the tests of profiles and services share: a registry and an installation of their own, and short ways to make
// values, read tables and look at what is stored.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "profiles/prof_admin.h"
#include "props/table_reader.h"
#include "tests/props/samples.h"
#include "tests/support/fake_provider/fake_library.h"
#include "tests/support/installation.h"
#include "tests/support/redirected_registry.h"

namespace orv::test {

inline const WString kProfilesPath = L"Software\\Tovan\\Velmora\\VX100 series\\Orv Profiles";
inline WString ProfilePath(const WString& profile) { return kProfilesPath + L"\\" + profile; }
inline const WString kP = ProfilePath(L"P");

using Names = std::vector<WString>;

// The text of one column of every row, from where the table stands.
inline Names Column(const ComPtr<IMAPITable>& table, ULONG tag) {
  Names texts;
  TableReader reader;
  EXPECT_EQ(reader.OpenAsItStands(table), S_OK);
  while (reader.Next() == S_OK) {
    const WCHAR* text = TextOf(reader.Row().Find(tag));
    texts.emplace_back(text == nullptr ? L"(none)" : text);
  }
  return texts;
}

// UID of the first row of a fresh table.
inline MAPIUID FirstUid(IABServiceAdmin& services) {
  ComPtr<IMAPITable> table;
  RowSetPtr rows;
  MAPIUID uid{};
  EXPECT_EQ(services.GetMsgServiceTable(MAPI_UNICODE, table.Put()), S_OK);
  EXPECT_EQ(table->QueryRows(1, 0, rows.Put()), S_OK);
  if (rows->cRows == 1) std::memcpy(&uid, rows->aRow[0].lpProps[8].Value.bin.lpb, sizeof uid);
  return uid;
}

class ProfilesTest : public testing::Test {
 protected:
  ProfilesTest() { EXPECT_EQ(CreateProfAdmin(nullptr, admin_.Put()), S_OK); }

  HRESULT CreateProfile(const WCHAR* name, ULONG flags = 0) {
    return admin_->CreateProfile(name, 0, flags | MAPI_UNICODE);
  }
  // At its first row.
  ComPtr<IMAPITable> ProfileTable() {
    ComPtr<IMAPITable> table;
    EXPECT_EQ(admin_->GetProfileTable(MAPI_UNICODE, table.Put()), S_OK);
    EXPECT_EQ(table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr), S_OK);
    return table;
  }
  Names Profiles() { return Column(ProfileTable(), PR_DISPLAY_NAME_W); }

  RedirectedRegistry registry_;
  Installation installation_;
  ComPtr<IOrvProfAdmin> admin_;
};

inline constexpr const char* kServiceCatalogue =
    "[Services]\nOne=First\nSingle=Second\nNoFile=x\nNoEntry=x\nOutside=x\n[Default Services]\nOne=First\n"
    "[One]\nPR_SERVICE_DLL_NAME=fake%c.dll\nPR_SERVICE_ENTRY_NAME=FakeServiceEntry\n"
    "[Single]\nPR_SERVICE_DLL_NAME=fakeA.dll\nPR_SERVICE_ENTRY_NAME=FakeServiceEntry\n"
    "PR_DISPLAY_NAME=Given\nPR_RESOURCE_FLAGS=SERVICE_SINGLE_COPY\n"
    "[NoFile]\nPR_SERVICE_DLL_NAME=missing.dll\nPR_SERVICE_ENTRY_NAME=FakeServiceEntry\n"
    "[NoEntry]\nPR_SERVICE_DLL_NAME=fakeA.dll\nPR_SERVICE_ENTRY_NAME=Other\n"
    "[Outside]\nPR_SERVICE_DLL_NAME=.\\fakeA.dll\nPR_SERVICE_ENTRY_NAME=FakeServiceEntry\n";

// What the service does inside its entry function.
class ServiceScript : public FakeScript {
 public:
  void OnService(const FakeServiceCall& call, IProfSect* section, IOrvSupport* support) override {
    FakeScript::OnService(call, section, support);
    if (act) act(section, support);
  }
  std::function<void(IProfSect*, IOrvSupport*)> act;
};

// A profile "P", and a library that plays each of the services above that can be called.
class ServicesTest : public ProfilesTest {
 protected:
  ServicesTest() : fake_(installation_.Path(L"fakeA.dll"), &script_) {
    installation_.WriteCatalogue(kServiceCatalogue);
    MakeProfile();
  }

  void MakeProfile(ULONG flags = 0) {
    EXPECT_EQ(CreateProfAdmin(nullptr, admin_.Put()), S_OK);
    EXPECT_EQ(CreateProfile(L"P", flags), S_OK);
    EXPECT_EQ(admin_->AdminServices(L"P", MAPI_UNICODE, services_.Put()), S_OK);
  }
  HRESULT Create(const WCHAR* service, const WCHAR* extra = nullptr, ULONG resourceFlags = 0) {
    return services_->CreateMsgService(service, L"Display", extra, resourceFlags, 7,
                                       MAPI_UNICODE | SERVICE_UI_ALWAYS);
  }

  // A new service, which is the first row of the next table.
  MAPIUID Created(const WCHAR* service = L"One") {
    EXPECT_EQ(Create(service), S_OK);
    return FirstUid(*services_);
  }

  ServiceScript script_;
  FakeLibrary fake_;
  ComPtr<IABServiceAdmin> services_;
};

}  // namespace orv::test
