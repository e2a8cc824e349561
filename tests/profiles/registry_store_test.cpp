// Keys, values and cells, seen as the registry holds them.
#include "profiles/registry_store.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/profiles/profiles_fixture.h"

namespace orv::test {
namespace {

using registry_store::OpenMode;

class RegistryStoreTest : public testing::Test {
 protected:
  static void Write(const WCHAR* name, const std::vector<std::byte>& cell, DWORD type = REG_BINARY) {
    WriteRegValue(ProfilePath(L"P"), name, type, cell);
  }
  RegKey Profile(OpenMode mode = OpenMode::kCreate) {
    RegKey key;
    EXPECT_EQ(registry_store::OpenProfileKey(L"P", mode, key), S_OK);
    return key;
  }

  RedirectedRegistry registry_;
  Installation installation_;
};

// A value as it is stored.
std::vector<std::byte> Cell(const SPropValue& value) {
  PropList list;
  EXPECT_EQ(list.Set(value), S_OK);
  const auto cell = CellOf(*list.begin());
  return {cell.begin(), cell.end()};
}
std::vector<std::byte> FlagsCell(LONG number) { return Cell(Long(PR_RESOURCE_FLAGS, number)); }

TEST_F(RegistryStoreTest, PropertiesAreStoredAsCellsNamedByTheirDecimalTag) {
  const struct {
    SPropValue value;
    const WCHAR* name;
    std::size_t size;
  } cases[] = {{Unicode(PR_DISPLAY_NAME_W, L"Abc"), L"805371935", 40},
               {Long(PR_RESOURCE_FLAGS, 4), L"805896195", 40},
               {Binary(PR_SERVICE_UID, "123456789", 9), L"1024196866", 48}};
  PropList list;
  for (const auto& c : cases) ASSERT_EQ(list.Set(c.value), S_OK);
  RegKey key = Profile();
  ASSERT_EQ(registry_store::SavePropList(list, key), S_OK);
  for (const auto& c : cases) {
    const RegValue stored = ReadRegValue(ProfilePath(L"P"), c.name);
    EXPECT_EQ(stored.type, static_cast<DWORD>(REG_BINARY));
    ASSERT_EQ(stored.data.size(), c.size);
    const auto cell = Cell(c.value);
    EXPECT_TRUE(std::equal(cell.begin(), cell.begin() + 12, stored.data.begin())) << c.size;
    EXPECT_TRUE(std::equal(cell.begin() + 32, cell.end(), stored.data.begin() + 32)) << c.size;
  }
  EXPECT_EQ(ValueNames(ProfilePath(L"P")).size(), std::size(cases));
}

TEST_F(RegistryStoreTest, OnlyMarkedPropertiesAreWrittenAndNothingIsDeleted) {
  PropList list;
  ASSERT_EQ(list.Set(Long(PR_RESOURCE_FLAGS, 1)), S_OK);
  ASSERT_EQ(list.Set(Unicode(PR_DISPLAY_NAME_W, L"Abc")), S_OK);
  RegKey key = Profile();
  ASSERT_EQ(registry_store::SavePropList(list, key), S_OK);
  const auto before = DumpKey(ProfilePath(L"P"));

  list.SetFlags(PROPNODE_MODIFIED, false);
  list.Find(PR_RESOURCE_FLAGS)->record.value.Value.l = 7;
  EXPECT_EQ(registry_store::SavePropList(list, key), S_OK);
  PropList empty;
  EXPECT_EQ(registry_store::SavePropList(empty, key), S_OK);
  EXPECT_EQ(DumpKey(ProfilePath(L"P")), before);

  list.SetFlags(PROPNODE_MODIFIED, true);
  RegKey readOnly = Profile(OpenMode::kRead);
  EXPECT_EQ(registry_store::SavePropList(list, readOnly), MAPI_E_CALL_FAILED);
}

TEST_F(RegistryStoreTest, ACellIsTakenByItsContentsWhateverItsNameAndType) {
  Write(L"a", FlagsCell(1), REG_SZ);
  Write(L"b", Cell(Unicode(PR_DISPLAY_NAME_W, L"Abc")));
  Write(L"c", FlagsCell(2));
  PropList list;
  ASSERT_EQ(registry_store::LoadPropList(list, Profile(OpenMode::kRead)), S_OK);
  // The second value of an identifier takes the place of the first.
  ASSERT_EQ(list.Count(), 2u);
  EXPECT_EQ(list.begin()->Tag(), PR_RESOURCE_FLAGS);
  EXPECT_EQ(list.begin()->record.value.Value.l, 2);
  EXPECT_EQ(CompareNode(*list.Find(PR_DISPLAY_NAME_W), Unicode(PR_DISPLAY_NAME_W, L"Abc")), S_OK);
  EXPECT_TRUE(list.begin()->flags & PROPNODE_MODIFIED);
}

TEST_F(RegistryStoreTest, ADamagedCellFailsTheWholeLoad) {
  const struct {
    std::vector<std::byte> cell;
    WString name = L"2";
  } cases[] = {{{}}, {std::vector<std::byte>(39)}, {FlagsCell(2), WString(65, L'n')}};
  for (const auto& c : cases) {
    DeleteKey(ProfilePath(L"P"));
    Write(L"1", FlagsCell(1));
    Write(c.name.c_str(), c.cell);
    PropList list;
    EXPECT_EQ(registry_store::LoadPropList(list, Profile(OpenMode::kRead)), MAPI_E_CALL_FAILED) << &c - cases;
    EXPECT_EQ(list.Count(), 0u);
  }
}

TEST_F(RegistryStoreTest, OpeningMakesKeysOnlyWhenAsked) {
  RegKey key;
  EXPECT_EQ(registry_store::OpenProfileKey(L"P", OpenMode::kRead, key), MAPI_E_CALL_FAILED);
  EXPECT_EQ(registry_store::OpenUserInfoKey(OpenMode::kRead, key), MAPI_E_CALL_FAILED);
  for (const WCHAR* name : {L"", L"P\\Q"}) {
    EXPECT_EQ(registry_store::OpenProfileKey(name, OpenMode::kCreate, key), MAPI_E_CALL_FAILED);
  }
  EXPECT_FALSE(KeyExists(L"Software\\Tovan"));
}

TEST_F(RegistryStoreTest, AServiceRowIsAKeyNamedByItsUid) {
  const BYTE uid[32] = {0x00, 0x0F, 0xA0, 0xFF};
  const struct {
    SPropValue uid;
    HRESULT result;
    WString key;
  } cases[] = {
      {Binary(PR_SERVICE_UID, uid, 16), S_OK, L"000fa0ff" + WString(24, L'0')},
      {Binary(PR_SERVICE_UID, uid, 31), S_OK, L"000fa0ff" + WString(54, L'0')},
      {Binary(PR_SERVICE_UID, uid, 32), MAPI_E_STRING_TOO_LONG, {}},
      {Binary(PR_SERVICE_UID, uid, 0), MAPI_E_MISSING_REQUIRED_COLUMN, {}},
      {Long(PR_RESOURCE_FLAGS, 1), MAPI_E_MISSING_REQUIRED_COLUMN, {}},
  };
  for (const auto& c : cases) {
    DeleteKey(ProfilePath(L"P"));
    CreateKey(ProfilePath(L"P") + L"\\other\\deep");
    // What lies below the row's own key goes, and nothing else.
    if (!c.key.empty()) CreateKey(ProfilePath(L"P") + L"\\" + c.key + L"\\below");
    PropList row;
    ASSERT_EQ(row.Set(c.uid), S_OK);
    row.SetFlags(PROPNODE_MODIFIED, false);
    RegKey key = Profile();
    EXPECT_EQ(registry_store::SaveServiceRow(row, key), c.result);
    EXPECT_EQ(SubkeyNames(ProfilePath(L"P")), c.key.empty() ? Names{L"other"} : (Names{c.key, L"other"}));
    EXPECT_TRUE(KeyExists(ProfilePath(L"P") + L"\\other\\deep"));
    if (c.key.empty()) continue;
    EXPECT_EQ(SubkeyNames(ProfilePath(L"P") + L"\\" + c.key), Names{});
    EXPECT_EQ(ValueNames(ProfilePath(L"P") + L"\\" + c.key), Names{L"1024196866"});
  }
}

TEST_F(RegistryStoreTest, RowsBeforeADamagedOneStayLoaded) {
  for (const WCHAR* name : {L"\\0", L"\\1", L"\\2", L"\\3"}) {
    WriteRegValue(ProfilePath(L"P") + name, L"x", REG_BINARY,
                  name[1] == L'2' ? std::vector<std::byte>() : FlagsCell(0));
  }
  RowList rows;
  EXPECT_EQ(registry_store::LoadServiceRows(rows, Profile(OpenMode::kRead)), MAPI_E_CALL_FAILED);
  EXPECT_EQ(rows.Count(), 2u);
}

TEST(RegistryStoreModels, TheModelFollowsFromTheLibrarysName) {
  const struct {
    const WCHAR* library;
    const WCHAR* key;  // null: no such model
  } cases[] = {{L"xhtaba.dll", L"VX100 series"}, {L"XHTABB.DLL", L"VX200 series"}, {L"other.dll", nullptr}};
  for (const auto& c : cases) {
    RedirectedRegistry registry;
    const Installation installation(c.library);
    const HRESULT expected = c.key == nullptr ? MAPI_E_CALL_FAILED : S_OK;
    RegKey key;
    EXPECT_EQ(registry_store::OpenProfileKey(L"P", OpenMode::kCreate, key), expected);
    EXPECT_EQ(registry_store::OpenUserInfoKey(OpenMode::kCreate, key), expected);
    EXPECT_EQ(SubkeyNames(L"Software\\Tovan\\Velmora"), c.key == nullptr ? Names{} : Names{c.key});
  }
}

}  // namespace
}  // namespace orv::test
