// Keys, values and cells, seen as the registry holds them.
#include "profiles/registry_store.h"

#include "tests/profiles/profiles_fixture.h"

namespace orv::test {
namespace {

using namespace registry_store;

class RegistryStoreTest : public ProfilesTest {
 protected:
  static RegKey Profile(OpenMode mode = OpenMode::kCreate) {
    RegKey key;
    EXPECT_EQ(OpenProfileKey(L"P", mode, key), S_OK);
    return key;
  }
  static std::vector<std::byte> FlagsCell(LONG number) {
    const PropNodePtr node = Node(Long(PR_RESOURCE_FLAGS, number));
    const auto cell = CellOf(*node);
    return {cell.begin(), cell.end()};
  }
};

TEST_F(RegistryStoreTest, MarkedPropertiesAreStoredUnderTheirDecimalTagAndNothingIsDeleted) {
  const SPropValue values[] = {Long(PR_RESOURCE_FLAGS, 4), Unicode(PR_DISPLAY_NAME_W, L"Abc"),
                               Binary(PR_SERVICE_UID, "123456789")};
  PropList list, loaded, empty;
  for (const SPropValue& value : values) ASSERT_EQ(list.Set(value), S_OK);
  RegKey key = Profile();
  ASSERT_EQ(SavePropList(list, key), S_OK);
  for (const WCHAR* name : {L"805896195", L"805371935", L"1024196866"}) {
    EXPECT_EQ(ReadRegValue(kP, name).type, DWORD{REG_BINARY});
  }
  ASSERT_EQ(LoadPropList(loaded, Profile(OpenMode::kRead)), S_OK);
  EXPECT_EQ(loaded.Count(), std::size(values));
  for (const SPropValue& value : values) EXPECT_EQ(CompareNode(*loaded.Find(value.ulPropTag), value), S_OK);

  const auto before = DumpKey(kP);
  list.SetFlags(PROPNODE_MODIFIED, false);
  list.Find(PR_RESOURCE_FLAGS)->record.value.Value.l = 7;
  EXPECT_EQ(SavePropList(list, key), S_OK);
  EXPECT_EQ(SavePropList(empty, key), S_OK);
  EXPECT_EQ(DumpKey(kP), before);
  RegKey readOnly = Profile(OpenMode::kRead);
  EXPECT_EQ(SavePropList(loaded, readOnly), MAPI_E_CALL_FAILED);
}

TEST_F(RegistryStoreTest, ACellIsTakenByItsContentsWhateverItsNameAndType) {
  WriteRegValue(kP, L"a", REG_SZ, FlagsCell(1));
  WriteRegValue(kP, L"c", REG_BINARY, FlagsCell(2));
  PropList list;
  ASSERT_EQ(LoadPropList(list, Profile(OpenMode::kRead)), S_OK);
  // The second value of an identifier takes the place of the first.
  ASSERT_EQ(list.Count(), 1u);
  EXPECT_EQ(CompareNode(*list.begin(), Long(PR_RESOURCE_FLAGS, 2)), S_OK);
  EXPECT_TRUE(list.begin()->flags & PROPNODE_MODIFIED);
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
    DeleteKey(kP);
    CreateKey(kP + L"\\other\\deep");
    // What lies below the row's own key goes, and nothing else.
    if (!c.key.empty()) CreateKey(kP + L"\\" + c.key + L"\\below");
    PropList row;
    ASSERT_EQ(row.Set(c.uid), S_OK);
    row.SetFlags(PROPNODE_MODIFIED, false);
    RegKey key = Profile();
    EXPECT_EQ(SaveServiceRow(row, key), c.result);
    EXPECT_EQ(SubkeyNames(kP), c.key.empty() ? Names{L"other"} : (Names{c.key, L"other"}));
    EXPECT_TRUE(KeyExists(kP + L"\\other\\deep"));
    if (c.key.empty()) continue;
    EXPECT_EQ(SubkeyNames(kP + L"\\" + c.key), Names{});
    EXPECT_EQ(ValueNames(kP + L"\\" + c.key), Names{L"1024196866"});
  }
}

TEST_F(RegistryStoreTest, KeysAreMadeWhenAskedUnderPlainNames) {
  RegKey key;
  EXPECT_EQ(OpenProfileKey(L"P", OpenMode::kRead, key), MAPI_E_CALL_FAILED);
  EXPECT_EQ(OpenUserInfoKey(OpenMode::kRead, key), MAPI_E_CALL_FAILED);
  for (const WCHAR* name : {L"", L"P\\Q"}) {
    EXPECT_EQ(OpenProfileKey(name, OpenMode::kCreate, key), MAPI_E_CALL_FAILED);
  }
  EXPECT_FALSE(KeyExists(L"Software"));
}

}  // namespace
}  // namespace orv::test
