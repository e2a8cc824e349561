// Profiles: how they are listed, made, copied, renamed and deleted, and what the registry holds afterwards.
#include <array>
#include <atomic>
#include <span>
#include <thread>

#include "tests/profiles/profiles_fixture.h"

namespace orv::test {
namespace {

constexpr const char* kCatalogue =
    "[Services]\r\nOne=First\r\nTwo=Second\r\n[Default Services]\r\nTwo=Second\r\nOne=First\r\n"
    "[One]\r\nPR_SERVICE_DLL_NAME=one.dll\r\nPR_SERVICE_ENTRY_NAME=Entry\r\n"
    "[Two]\r\nPR_SERVICE_DLL_NAME=two.dll\r\nPR_SERVICE_ENTRY_NAME=Entry\r\n";

class ProfAdminTest : public ProfilesTest {
 protected:
  // Names of the profiles that the table marks as default.
  Names Defaults() {
    RowSetPtr rows;
    Names names;
    EXPECT_EQ(ProfileTable()->QueryRows(100, TBL_NOADVANCE, rows.Put()), S_OK);
    for (const SRow& row : std::span(rows->aRow, rows->cRows)) {
      if (row.lpProps[1].Value.b) names.emplace_back(row.lpProps[0].Value.lpszW);
    }
    return names;
  }
  HRESULT SetDefault(const WCHAR* name) { return admin_->SetDefaultProfile(name, MAPI_UNICODE); }

  static WString StoredDefault() {
    const RegValue value = ReadRegValue(kProfilesPath, L"DefaultProfile");
    EXPECT_EQ(value.type, value.data.empty() ? DWORD{REG_NONE} : DWORD{REG_SZ});
    return value.data.empty() ? WString() : WString(reinterpret_cast<const WCHAR*>(value.data.data()));
  }
};

TEST_F(ProfAdminTest, EveryMethodWantsUnicode) {
  ComPtr<IMAPITable> table;
  ComPtr<IABServiceAdmin> services;
  for (const HRESULT hr :
       {admin_->GetProfileTable(0, table.Put()), admin_->CreateProfile(nullptr, 0, 0),
        admin_->DeleteProfile(L"P", 0), admin_->ConfigureProfile(L"P", 0, 0),
        admin_->CopyProfile(L"P", nullptr, 0), admin_->RenameProfile(L"P", nullptr, 0),
        admin_->SetDefaultProfile(L"P", 0), admin_->AdminServices(L"P", 0, services.Put())}) {
    EXPECT_EQ(hr, MAPI_E_BAD_CHARWIDTH);
  }
  EXPECT_FALSE(KeyExists(L"Software"));
}

TEST_F(ProfAdminTest, NewNamesAreCheckedAlike) {
  const WString longest(64, L'n'), overlong(65, L'n');
  ASSERT_EQ(CreateProfile(L"Old"), S_OK);
  CreateKey(ProfilePath(L"Old") + L"\\service");
  const struct {
    const WCHAR* name;
    HRESULT result;
  } cases[] = {
      {nullptr, MAPI_E_INVALID_PARAMETER}, {L"", MAPI_E_INVALID_PARAMETER},
      {L"\\", MAPI_E_INVALID_PARAMETER},   {overlong.c_str(), MAPI_E_STRING_TOO_LONG},
      {L"Old", MAPI_E_NO_ACCESS},          {L"oLD", MAPI_E_NO_ACCESS},
  };
  const auto before = DumpKey(kProfilesPath);
  for (const auto& c : cases) {
    EXPECT_EQ(CreateProfile(c.name), c.result);
    EXPECT_EQ(admin_->CopyProfile(L"Old", c.name, MAPI_UNICODE), c.result);
    EXPECT_EQ(admin_->RenameProfile(L"Old", c.name, MAPI_UNICODE), c.result);
    EXPECT_EQ(DumpKey(kProfilesPath), before);
  }
  EXPECT_EQ(CreateProfile(longest.c_str()), S_OK);
  EXPECT_EQ(Profiles(), (Names{longest, L"Old"}));
}

TEST_F(ProfAdminTest, DefaultServicesAreStoredUnderUidsOfTheirOwnThatACopyTakesAlong) {
  EXPECT_EQ(CreateProfile(L"P", MAPI_DEFAULT_SERVICES), MAPI_E_CALL_FAILED);
  installation_.WriteCatalogue("[Services]\r\nOne=First\r\n");
  EXPECT_EQ(CreateProfile(L"P", MAPI_DEFAULT_SERVICES), MAPI_E_INVALID_PARAMETER);
  EXPECT_FALSE(KeyExists(kP));

  installation_.WriteCatalogue(kCatalogue);
  ASSERT_EQ(CreateProfile(L"P", MAPI_DEFAULT_SERVICES), S_OK);
  EXPECT_EQ(SubkeyNames(kP).size(), 2u);
  for (const WString& key : SubkeyNames(kP)) {
    EXPECT_EQ(key.size(), 32u);
    EXPECT_EQ(ValueNames(kP + L"\\" + key).size(), 10u);
  }

  const auto services = DumpKey(kP);
  WriteRegString(kP, L"setting", L"x");
  EXPECT_EQ(admin_->CopyProfile(L"P", L"Q", MAPI_UNICODE), S_OK);
  EXPECT_EQ(Profiles(), (Names{L"P", L"Q"}));
  EXPECT_EQ(DumpKey(ProfilePath(L"Q")), services);
  EXPECT_EQ(admin_->CopyProfile(L"missing", L"R", MAPI_UNICODE), MAPI_E_CALL_FAILED);
  EXPECT_EQ(admin_->RenameProfile(L"missing", L"R", MAPI_UNICODE), MAPI_E_CALL_FAILED);
  EXPECT_FALSE(KeyExists(ProfilePath(L"R")));
}

TEST_F(ProfAdminTest, WhatADialogDoesNotConfirmIsUndone) {
  installation_.WriteCatalogue(kCatalogue);
  const struct {
    std::function<INT_PTR()> ending;
    HRESULT result;
  } cases[] = {
      {[] { return INT_PTR{IDCANCEL}; }, MAPI_E_USER_CANCEL},
      {[]() -> INT_PTR { throw 7; }, MAPI_E_CALL_FAILED},
      {[]() -> INT_PTR { throw std::bad_alloc(); }, MAPI_E_NOT_ENOUGH_MEMORY},
      {[] { return INT_PTR{IDOK}; }, S_OK},
  };
  for (const auto& c : cases) {
    const auto dialog = [&](HWND, IABServiceAdmin* services) {
      const MAPIUID uid = FirstUid(*services);
      EXPECT_EQ(services->DeleteMsgService(&uid), S_OK);
      return c.ending();
    };
    ASSERT_EQ(CreateProfAdmin(dialog, admin_.Put()), S_OK);
    EXPECT_EQ(admin_->ConfigureProfile(L"P", 0, MAPI_UNICODE), MAPI_E_NOT_FOUND);
    EXPECT_EQ(CreateProfile(L"New", MAPI_DIALOG | MAPI_DEFAULT_SERVICES), c.result);
    EXPECT_EQ(SubkeyNames(kProfilesPath), c.result == S_OK ? Names{L"New"} : Names{});
    EXPECT_EQ(Profiles(), SubkeyNames(kProfilesPath));
    ASSERT_EQ(CreateProfile(L"P", MAPI_DEFAULT_SERVICES), S_OK);
    const auto before = DumpKey(kP);
    EXPECT_EQ(admin_->ConfigureProfile(L"P", 0, MAPI_UNICODE), c.result);
    EXPECT_EQ(DumpKey(kP) == before, c.result != S_OK);
    ASSERT_EQ(admin_->DeleteProfile(L"P", MAPI_UNICODE), S_OK);
  }
}

TEST_F(ProfAdminTest, ReadersOnOtherThreadsSeeWholeListings) {
  ASSERT_EQ(CreateProfile(L"A"), S_OK);
  std::atomic<int> wrong{0};
  std::atomic<bool> done{false};
  const auto read = [&] {
    for (int i = 0; !done; ++i) {
      ComPtr<IMAPITable> table;
      ComPtr<IABServiceAdmin> services;
      ULONG rows = 0;
      const HRESULT hr = admin_->GetProfileTable(MAPI_UNICODE, table.Put());
      wrong += hr != S_OK || !table || table->GetRowCount(0, &rows) != S_OK || rows < 1 || rows > 2;
      if (i % 500 == 0) wrong += admin_->AdminServices(L"A", MAPI_UNICODE, services.Put()) != S_OK;
    }
  };
  std::array<std::thread, 2> readers{std::thread(read), std::thread(read)};
  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ(CreateProfile(L"B"), S_OK);
    EXPECT_EQ(admin_->DeleteProfile(L"B", MAPI_UNICODE), S_OK);
  }
  done = true;
  for (std::thread& reader : readers) reader.join();
  EXPECT_EQ(wrong, 0);
}

TEST_F(ProfAdminTest, DeletingTakesAllButTheDefaultMarker) {
  ASSERT_EQ(CreateProfile(L"P"), S_OK);
  ASSERT_EQ(SetDefault(L"P"), S_OK);
  CreateKey(kP + L"\\a\\b");
  EXPECT_EQ(admin_->DeleteProfile(L"p", MAPI_UNICODE), MAPI_E_NOT_FOUND);
  EXPECT_EQ(admin_->DeleteProfile(L"P", MAPI_UNICODE), S_OK);
  EXPECT_EQ(StoredDefault(), L"P");
  EXPECT_EQ(Profiles(), Names{});
}

TEST_F(ProfAdminTest, RenamingMovesTheDefaultUnlessTheTableWasReadToItsEnd) {
  for (const WCHAR* name : {L"A", L"B"}) ASSERT_EQ(CreateProfile(name), S_OK);
  ASSERT_EQ(SetDefault(L"B"), S_OK);
  EXPECT_EQ(admin_->RenameProfile(L"B", L"C", MAPI_UNICODE), S_OK);
  EXPECT_EQ(StoredDefault(), L"C");
  EXPECT_EQ(Defaults(), Names{L"C"});

  const ComPtr<IMAPITable> table = ProfileTable();
  RowSetPtr rows;
  ASSERT_EQ(table->QueryRows(2, 0, rows.Put()), S_OK);
  EXPECT_EQ(admin_->RenameProfile(L"C", L"D", MAPI_UNICODE), S_OK);
  EXPECT_EQ(StoredDefault(), L"C");
  EXPECT_EQ(Defaults(), Names{});
  // The table that was handed out does not follow.
  EXPECT_EQ(table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr), S_OK);
  EXPECT_EQ(Column(table, PR_DISPLAY_NAME_W), (Names{L"A", L"C"}));
}

TEST_F(ProfAdminTest, TheDefaultIsFoundInAnyCaseAndUpToThirtyOneCharacters) {
  EXPECT_EQ(SetDefault(nullptr), MAPI_E_CALL_FAILED);  // no key to mark
  const WString shorter(31, L's'), longer(32, L'l');
  for (const WCHAR* name : {L"Pro", shorter.c_str(), longer.c_str()}) ASSERT_EQ(CreateProfile(name), S_OK);
  EXPECT_EQ(SetDefault(L"pro"), MAPI_E_NOT_FOUND);
  EXPECT_EQ(SetDefault(nullptr), MAPI_E_CALL_FAILED);
  WriteRegString(kProfilesPath, L"DefaultProfile", L"pRO");
  EXPECT_EQ(SetDefault(L"Pro"), S_OK);
  WriteRegString(kProfilesPath, L"DefaultProfile", L"pRO");
  ASSERT_EQ(CreateProfAdmin(nullptr, admin_.Put()), S_OK);
  EXPECT_EQ(Defaults(), Names{L"Pro"});
  EXPECT_EQ(SetDefault(shorter.c_str()), S_OK);
  EXPECT_EQ(Defaults(), Names{shorter});
  EXPECT_EQ(SetDefault(longer.c_str()), S_OK);
  EXPECT_EQ(Defaults(), Names{});
  EXPECT_EQ(SetDefault(nullptr), S_OK);
  EXPECT_EQ(StoredDefault(), L"");
}

TEST_F(ProfAdminTest, AnOverlongProfileKeyFailsTheListing) {
  CreateKey(ProfilePath(WString(65, L'n')));
  ComPtr<IMAPITable> table;
  EXPECT_EQ(admin_->GetProfileTable(MAPI_UNICODE, table.Put()), MAPI_E_CALL_FAILED);
  EXPECT_FALSE(table);
  EXPECT_EQ(CreateProfile(L"P"), MAPI_E_CALL_FAILED);
  EXPECT_FALSE(KeyExists(kP));
}

}  // namespace
}  // namespace orv::test
