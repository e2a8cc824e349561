// Profiles: how they are listed, made, copied, renamed and deleted, and what the registry holds afterwards.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <functional>
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
  HRESULT Create(const WCHAR* name, ULONG flags = 0) {
    return admin_->CreateProfile(name, 0, flags | MAPI_UNICODE);
  }

  // Names of the profiles that the table marks as default.
  Names Defaults() {
    ComPtr<IMAPITable> table;
    RowSetPtr rows;
    Names names;
    EXPECT_EQ(admin_->GetProfileTable(MAPI_UNICODE, table.Put()), S_OK);
    EXPECT_EQ(table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr), S_OK);
    EXPECT_EQ(table->QueryRows(100, TBL_NOADVANCE, rows.Put()), S_OK);
    for (ULONG i = 0; i < rows->cRows; ++i) {
      const SPropValue* values = rows->aRow[i].lpProps;
      if (values[1].Value.b) names.emplace_back(values[0].Value.lpszW);
    }
    return names;
  }

  WString StoredDefault() {
    const RegValue value = ReadRegValue(kProfilesPath, L"DefaultProfile");
    EXPECT_EQ(value.type, static_cast<DWORD>(value.data.empty() ? REG_NONE : REG_SZ));
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
  ASSERT_EQ(Create(L"Old"), S_OK);
  CreateKey(ProfilePath(L"Old") + L"\\service");
  const WString overlong(65, L'n');
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
    EXPECT_EQ(Create(c.name), c.result);
    EXPECT_EQ(admin_->CopyProfile(L"Old", c.name, MAPI_UNICODE), c.result);
    EXPECT_EQ(admin_->RenameProfile(L"Old", c.name, MAPI_UNICODE), c.result);
    EXPECT_EQ(DumpKey(kProfilesPath), before);
  }
  EXPECT_EQ(Create(WString(64, L'n').c_str()), S_OK);
  EXPECT_EQ(Profiles(), (Names{WString(64, L'n'), L"Old"}));
}

TEST_F(ProfAdminTest, DefaultServicesAreStoredEachUnderAUidOfItsOwn) {
  EXPECT_EQ(Create(L"P", MAPI_DEFAULT_SERVICES), MAPI_E_CALL_FAILED);
  installation_.WriteCatalogue("[Services]\r\nOne=First\r\n");
  EXPECT_EQ(Create(L"P", MAPI_DEFAULT_SERVICES), MAPI_E_INVALID_PARAMETER);
  EXPECT_FALSE(KeyExists(ProfilePath(L"P")));

  installation_.WriteCatalogue(kCatalogue);
  ASSERT_EQ(Create(L"P", MAPI_DEFAULT_SERVICES), S_OK);
  const Names keys = SubkeyNames(ProfilePath(L"P"));
  ASSERT_EQ(keys.size(), 2u);
  EXPECT_NE(keys[0], keys[1]);
  for (const WString& key : keys) {
    EXPECT_EQ(key.size(), 32u);
    EXPECT_EQ(ValueNames(ProfilePath(L"P") + L"\\" + key).size(), 10u);
  }
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
    EXPECT_EQ(Create(L"New", MAPI_DIALOG | MAPI_DEFAULT_SERVICES), c.result);
    EXPECT_EQ(SubkeyNames(kProfilesPath), c.result == S_OK ? Names{L"New"} : Names{});
    EXPECT_EQ(Profiles(), SubkeyNames(kProfilesPath));
    ASSERT_EQ(Create(L"P", MAPI_DEFAULT_SERVICES), S_OK);
    const auto before = DumpKey(ProfilePath(L"P"));
    EXPECT_EQ(admin_->ConfigureProfile(L"P", 0, MAPI_UNICODE), c.result);
    EXPECT_EQ(DumpKey(ProfilePath(L"P")) == before, c.result != S_OK);
    ASSERT_EQ(admin_->DeleteProfile(L"P", MAPI_UNICODE), S_OK);
  }
}

TEST_F(ProfAdminTest, ReadersOnOtherThreadsSeeWholeListings) {
  ASSERT_EQ(Create(L"A"), S_OK);
  std::atomic<int> wrong{0};
  std::atomic<bool> done{false};
  const auto read = [&] {
    for (int i = 0; !done; ++i) {
      ComPtr<IMAPITable> table;
      ComPtr<IABServiceAdmin> services;
      ULONG rows = 0;
      const HRESULT hr = admin_->GetProfileTable(MAPI_UNICODE, table.Put());
      const bool whole = hr == S_OK && table && table->GetRowCount(0, &rows) == S_OK;
      wrong += !whole || rows < 1 || rows > 2;
      if (i % 500 != 0) continue;
      wrong += admin_->AdminServices(L"A", MAPI_UNICODE, services.Put()) != S_OK;
    }
  };
  std::array<std::thread, 2> readers{std::thread(read), std::thread(read)};
  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ(Create(L"B"), S_OK);
    EXPECT_EQ(admin_->DeleteProfile(L"B", MAPI_UNICODE), S_OK);
  }
  done = true;
  for (std::thread& reader : readers) reader.join();
  EXPECT_EQ(wrong, 0);
}

TEST_F(ProfAdminTest, DeletingTakesAllButTheDefaultMarker) {
  ASSERT_EQ(Create(L"P"), S_OK);
  ASSERT_EQ(admin_->SetDefaultProfile(L"P", MAPI_UNICODE), S_OK);
  CreateKey(ProfilePath(L"P") + L"\\a\\b");
  EXPECT_EQ(admin_->DeleteProfile(L"p", MAPI_UNICODE), MAPI_E_NOT_FOUND);
  EXPECT_EQ(admin_->DeleteProfile(L"P", MAPI_UNICODE), S_OK);
  EXPECT_EQ(StoredDefault(), L"P");
  EXPECT_EQ(Profiles(), Names{});
}

TEST_F(ProfAdminTest, CopyingTakesTheServicesWithTheirUidsOnly) {
  installation_.WriteCatalogue(kCatalogue);
  ASSERT_EQ(Create(L"P", MAPI_DEFAULT_SERVICES), S_OK);
  const auto services = DumpKey(ProfilePath(L"P"));
  WriteRegString(ProfilePath(L"P"), L"setting", L"x");
  EXPECT_EQ(admin_->CopyProfile(L"P", L"Q", MAPI_UNICODE), S_OK);
  EXPECT_EQ(Profiles(), (Names{L"P", L"Q"}));
  EXPECT_EQ(DumpKey(ProfilePath(L"Q")), services);
  EXPECT_EQ(admin_->CopyProfile(L"missing", L"R", MAPI_UNICODE), MAPI_E_CALL_FAILED);
  EXPECT_EQ(admin_->RenameProfile(L"missing", L"R", MAPI_UNICODE), MAPI_E_CALL_FAILED);
  EXPECT_FALSE(KeyExists(ProfilePath(L"R")));
}

TEST_F(ProfAdminTest, RenamingMovesTheDefaultUnlessTheTableWasReadToItsEnd) {
  ASSERT_EQ(Create(L"A"), S_OK);
  ASSERT_EQ(Create(L"B"), S_OK);
  ASSERT_EQ(admin_->SetDefaultProfile(L"B", MAPI_UNICODE), S_OK);
  EXPECT_EQ(admin_->RenameProfile(L"B", L"C", MAPI_UNICODE), S_OK);
  EXPECT_EQ(StoredDefault(), L"C");
  EXPECT_EQ(Defaults(), Names{L"C"});

  ComPtr<IMAPITable> table;
  RowSetPtr rows;
  ASSERT_EQ(admin_->GetProfileTable(MAPI_UNICODE, table.Put()), S_OK);
  ASSERT_EQ(table->QueryRows(2, 0, rows.Put()), S_OK);
  ASSERT_EQ(rows->cRows, 2u);
  EXPECT_EQ(admin_->RenameProfile(L"C", L"D", MAPI_UNICODE), S_OK);
  EXPECT_EQ(StoredDefault(), L"C");
  EXPECT_EQ(Defaults(), Names{});
  // The table that was handed out does not follow.
  EXPECT_EQ(table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr), S_OK);
  EXPECT_EQ(Column(*table, PR_DISPLAY_NAME_W), (Names{L"A", L"C"}));
}

TEST_F(ProfAdminTest, TheDefaultIsFoundInAnyCaseAndUpToThirtyOneCharacters) {
  EXPECT_EQ(admin_->SetDefaultProfile(nullptr, MAPI_UNICODE), MAPI_E_CALL_FAILED);  // no key to mark
  const WString shorter(31, L's'), longer(32, L'l');
  for (const WCHAR* name : {L"Pro", shorter.c_str(), longer.c_str()}) ASSERT_EQ(Create(name), S_OK);
  EXPECT_EQ(admin_->SetDefaultProfile(L"pro", MAPI_UNICODE), MAPI_E_NOT_FOUND);
  EXPECT_EQ(admin_->SetDefaultProfile(nullptr, MAPI_UNICODE), MAPI_E_CALL_FAILED);
  WriteRegString(kProfilesPath, L"DefaultProfile", L"pRO");
  EXPECT_EQ(admin_->SetDefaultProfile(L"Pro", MAPI_UNICODE), S_OK);
  WriteRegString(kProfilesPath, L"DefaultProfile", L"pRO");
  ASSERT_EQ(CreateProfAdmin(nullptr, admin_.Put()), S_OK);
  EXPECT_EQ(Defaults(), Names{L"Pro"});
  EXPECT_EQ(admin_->SetDefaultProfile(shorter.c_str(), MAPI_UNICODE), S_OK);
  EXPECT_EQ(Defaults(), Names{shorter});
  EXPECT_EQ(admin_->SetDefaultProfile(longer.c_str(), MAPI_UNICODE), S_OK);
  EXPECT_EQ(Defaults(), Names{});
  EXPECT_EQ(admin_->SetDefaultProfile(nullptr, MAPI_UNICODE), S_OK);
  EXPECT_EQ(StoredDefault(), L"");
}

TEST_F(ProfAdminTest, AnOverlongProfileKeyFailsTheListing) {
  CreateKey(ProfilePath(WString(65, L'n')));
  ComPtr<IMAPITable> table;
  EXPECT_EQ(admin_->GetProfileTable(MAPI_UNICODE, table.Put()), MAPI_E_CALL_FAILED);
  EXPECT_FALSE(table);
  EXPECT_EQ(Create(L"P"), MAPI_E_CALL_FAILED);
  EXPECT_FALSE(KeyExists(ProfilePath(L"P")));
}

}  // namespace
}  // namespace orv::test
