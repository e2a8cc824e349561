// Keys, values and cells, seen as the registry holds them.
#include "profiles/registry_store.h"

#include <gtest/gtest.h>

#include <cstring>

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

// A cell with the value field zeroed, as the tests of loading write it.
std::vector<std::byte> Cell(ULONG total, ULONG dataSize, ULONG tag, std::string_view data = {}) {
  std::vector<std::byte> cell(std::max<std::size_t>(32 + data.size(), 32));
  std::memcpy(cell.data(), &total, 4);
  std::memcpy(cell.data() + 4, &dataSize, 4);
  std::memcpy(cell.data() + 8, &tag, 4);
  std::memcpy(cell.data() + 32, data.data(), data.size());
  return cell;
}

std::vector<std::byte> FlagsCell(BYTE number) {
  auto cell = Cell(40, 0, PR_RESOURCE_FLAGS, std::string_view("\0\0\0\0\0\0\0\0", 8));
  cell[16] = std::byte{number};
  return cell;
}

// The first `meaningful` bytes of the value field count, its pointers do not.
void ExpectStored(const WCHAR* name, std::size_t meaningful, std::vector<std::byte> expected) {
  RegValue stored = ReadRegValue(ProfilePath(L"P"), name);
  EXPECT_EQ(stored.type, static_cast<DWORD>(REG_BINARY));
  ASSERT_EQ(stored.data.size(), expected.size());
  std::memset(stored.data.data() + 12, 0, 4);
  std::memset(stored.data.data() + 16 + meaningful, 0, 16 - meaningful);
  EXPECT_EQ(stored.data, expected);
}

TEST_F(RegistryStoreTest, PropertiesAreStoredAsCellsNamedByTheirDecimalTag) {
  PropList list;
  const WCHAR* const texts[] = {L"a", L""};
  for (const SPropValue& value :
       {Unicode(PR_DISPLAY_NAME_W, L"Abc"), Long(PR_RESOURCE_FLAGS, 4),
        Binary(PR_SERVICE_UID, "123456789", 9), Array(PR_SERVICE_SUPPORT_FILES_W, 2, texts)}) {
    ASSERT_EQ(list.Set(value), S_OK);
  }
  RegKey key = Profile();
  ASSERT_EQ(registry_store::SavePropList(list, key), S_OK);

  ExpectStored(L"805371935", 0, Cell(40, 8, 0x3001001F, {"A\0b\0c\0\0\0", 8}));
  ExpectStored(L"805896195", 4, FlagsCell(4));
  auto bytes = Cell(48, 9, PR_SERVICE_UID, {"123456789\0\0\0\0\0\0\0", 16});
  bytes[16] = std::byte{9};
  ExpectStored(L"1024196866", 4, bytes);

  const RegValue stored = ReadRegValue(ProfilePath(L"P"), L"1024397343");
  ASSERT_EQ(stored.data.size(), 56u);
  EXPECT_EQ(std::memcmp(stored.data.data() + 48, "a\0\0\0\0\0\0\0", 8), 0);
  EXPECT_EQ(ValueNames(ProfilePath(L"P")).size(), 4u);
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
  Write(L"b", Cell(40, 8, PR_DISPLAY_NAME_W, {"A\0b\0c\0\0\0", 8}));
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
  } cases[] = {
      {{}},
      {std::vector<std::byte>(39)},
      {Cell(48, 8, PR_DISPLAY_NAME_W, {"A\0b\0c\0\0\0", 8})},
      {Cell(40, 8, PR_DISPLAY_NAME_W, {"A\0b\0c\0d\0", 8})},
      {FlagsCell(2), WString(65, L'n')},
  };
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
  const BYTE uid[32] = {0x00, 0x0F, 0xA0, 0xFF, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
  const WString name = L"000fa0ff0405060708090a0b0c0d0e0f";
  const struct {
    SPropValue uid;
    HRESULT result;
    Names keys;
  } cases[] = {
      {Binary(PR_SERVICE_UID, uid, 16), S_OK, {name, L"other"}},
      {Binary(PR_SERVICE_UID, uid, 31), S_OK, {name + WString(30, L'0'), L"other"}},
      {Binary(PR_SERVICE_UID, uid, 32), MAPI_E_STRING_TOO_LONG, {L"other"}},
      {Binary(PR_SERVICE_UID, uid, 0), MAPI_E_MISSING_REQUIRED_COLUMN, {L"other"}},
      {Long(PR_RESOURCE_FLAGS, 1), MAPI_E_MISSING_REQUIRED_COLUMN, {L"other"}},
  };
  for (const auto& c : cases) {
    DeleteKey(ProfilePath(L"P"));
    CreateKey(ProfilePath(L"P") + L"\\other\\deep");
    PropList row;
    ASSERT_EQ(row.Set(c.uid), S_OK);
    RegKey key = Profile();
    EXPECT_EQ(registry_store::SaveServiceRow(row, key), c.result);
    EXPECT_EQ(SubkeyNames(ProfilePath(L"P")), c.keys);
    EXPECT_TRUE(KeyExists(ProfilePath(L"P") + L"\\other\\deep"));
    if (FAILED(c.result)) continue;
    // Saved again the key loses what lies below it, and keeps its values.
    const WString path = ProfilePath(L"P") + L"\\" + c.keys[0];
    CreateKey(path + L"\\below");
    row.SetFlags(PROPNODE_MODIFIED, false);
    EXPECT_EQ(registry_store::SaveServiceRow(row, key), S_OK);
    EXPECT_TRUE(SubkeyNames(path).empty());
    EXPECT_EQ(ValueNames(path), Names{L"1024196866"});
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
