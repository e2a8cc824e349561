// What the tests of profiles and services share: a registry and an installation of their own, and short ways to make
// values, read tables and look at what is stored.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "orv/orvapi.h"
#include "orv/orvtags.h"
#include "platform/buffer.h"
#include "platform/com_ptr.h"
#include "profiles/prof_admin.h"
#include "props/foreign_values.h"
#include "tests/props/samples.h"
#include "tests/support/fake_provider/fake_library.h"
#include "tests/support/installation.h"
#include "tests/support/redirected_registry.h"

namespace orv::test {

inline const WString kProfilesPath = L"Software\\Tovan\\Velmora\\VX100 series\\Orv Profiles";

inline WString ProfilePath(const WString& profile) { return kProfilesPath + L"\\" + profile; }

// The text of one column of every row, read one row at a time from where the table stands.
inline std::vector<WString> Column(IMAPITable& table, ULONG tag) {
  std::vector<WString> texts;
  for (;;) {
    RowSetPtr rows;
    if (FAILED(table.QueryRows(1, 0, rows.Put())) || rows->cRows == 0) return texts;
    const WCHAR* text = TextOf(ForeignValues(rows->aRow[0]).Find(tag));
    texts.emplace_back(text == nullptr ? L"(none)" : text);
  }
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

using Names = std::vector<WString>;

class ProfilesTest : public testing::Test {
 protected:
  ProfilesTest() { EXPECT_EQ(CreateProfAdmin(nullptr, admin_.Put()), S_OK); }

  Names Profiles() {
    ComPtr<IMAPITable> table;
    EXPECT_EQ(admin_->GetProfileTable(MAPI_UNICODE, table.Put()), S_OK);
    if (!table) return {L"(no table)"};
    EXPECT_EQ(table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr), S_OK);
    return Column(*table, PR_DISPLAY_NAME_W);
  }

  ComPtr<IABServiceAdmin> Services(const WCHAR* profile) {
    ComPtr<IABServiceAdmin> services;
    EXPECT_EQ(admin_->AdminServices(profile, MAPI_UNICODE, services.Put()), S_OK);
    return services;
  }

  RedirectedRegistry registry_;
  Installation installation_;
  ComPtr<IOrvProfAdmin> admin_;
};

inline constexpr const char* kServiceCatalogue =
    "[Services]\r\nOne=First\r\nSingle=Second\r\nNoFile=x\r\nNoEntry=x\r\nOutside=x\r\n"
    "[Default "
    "Services]\r\nOne=First\r\n[One]\r\nPR_SERVICE_DLL_NAME=fake%c.dll\r\nPR_SERVICE_ENTRY_NAME="
    "FakeServiceEntry\r\n"
    "[Single]\r\nPR_DISPLAY_NAME=Given\r\nPR_SERVICE_DLL_NAME=fakeA.dll\r\n"
    "PR_SERVICE_ENTRY_NAME=FakeServiceEntry\r\nPR_RESOURCE_FLAGS=SERVICE_SINGLE_COPY\r\n"
    "[NoFile]\r\nPR_SERVICE_DLL_NAME=missing.dll\r\nPR_SERVICE_ENTRY_NAME=FakeServiceEntry\r\n"
    "[NoEntry]\r\nPR_SERVICE_DLL_NAME=fakeA.dll\r\nPR_SERVICE_ENTRY_NAME=Other\r\n"
    "[Outside]\r\nPR_SERVICE_DLL_NAME=.\\fakeA.dll\r\nPR_SERVICE_ENTRY_NAME=FakeServiceEntry\r\n";

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
    EXPECT_EQ(admin_->CreateProfile(L"P", 0, MAPI_UNICODE | flags), S_OK);
    services_ = Services(L"P");
  }
  HRESULT Create(const WCHAR* service, const WCHAR* extra = nullptr, ULONG resourceFlags = 0) {
    return services_->CreateMsgService(service, L"Display", extra, resourceFlags, 7,
                                       MAPI_UNICODE | SERVICE_UI_ALWAYS);
  }
  // Keys of the services.
  Names Stored() { return SubkeyNames(ProfilePath(L"P")); }

  ServiceScript script_;
  FakeLibrary fake_;
  ComPtr<IABServiceAdmin> services_;
};

}  // namespace orv::test
