// The user's own details: opener, storage byte for byte, copying, and the handle that a save leaves open.
#include "addrbook/mail_user.h"

#include <algorithm>

#include "props/entry_id.h"
#include "platform/com_ptr.h"
#include "platform/faults.h"
#include "props/prop_value.h"
#include "tests/addrbook/book_fixture.h"
#include "tests/support/installation.h"
#include "tests/support/redirected_registry.h"

namespace orv::test {
namespace {

const WString kUserInfo = L"Software\\Tovan\\Velmora\\VX100 series\\Orv UserInfo";

// Open handles of this process, counted by asking for each in turn: the system's own counter is not served
// everywhere.
int OpenHandles() {
  int open = 0;
  for (ULONG_PTR value = 4; value < 0x2000; value += 4) {
    DWORD flags = 0;
    open += GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) != FALSE;
  }
  return open;
}

class MailUser : public testing::Test {
 protected:
  ComPtr<IMailUser> Open() {
    ULONG type = 0;
    ComPtr<IMailUser> user;
    EXPECT_EQ(S_OK, OpenUserInfo(nullptr, &type, user.Put()));
    EXPECT_EQ(MAPI_MAILUSER, type);
    return user;
  }
  static PropValues All(IMailUser& user) {
    PropValues values;
    EXPECT_EQ(S_OK, user.GetProps(nullptr, MAPI_UNICODE, &values.count, values.values.Put()));
    return values;
  }
  static SPropValue Text(ULONG tag, const WCHAR* text) {
    SPropValue value = {};
    value.ulPropTag = tag;
    value.Value.lpszW = const_cast<WCHAR*>(text);
    return value;
  }
  static std::vector<ULONG> Tags(IMailUser& user) {
    const PropValues all = All(user);
    std::vector<ULONG> tags;
    for (ULONG i = 0; i < all.count; ++i) tags.push_back(all.values[i].ulPropTag);
    return tags;
  }

  Installation installation;
  RedirectedRegistry registry;
};

TEST_F(MailUser, TheOpenerTakesNullForAnInterfaceAndNothingElse) {
  ULONG type = 9;
  IMailUser* user = reinterpret_cast<IMailUser*>(this);
  for (const IID* iid : {&IID_IUnknown, &IID_IMAPIProp, &IID_IMailUser, &IID_IMAPITable})
    EXPECT_EQ(MAPI_E_INTERFACE_NOT_SUPPORTED, OpenUserInfo(iid, &type, &user));
  EXPECT_EQ(MAPI_E_INVALID_PARAMETER, OpenUserInfo(&IID_IMailUser, nullptr, &user));
  EXPECT_EQ(MAPI_E_INVALID_PARAMETER, OpenUserInfo(nullptr, &type, nullptr));
  EXPECT_EQ(9u, type);
  EXPECT_EQ(reinterpret_cast<IMailUser*>(this), user);
  EXPECT_FALSE(KeyExists(kUserInfo));
  const auto opened = Open();
  EXPECT_TRUE(KeyExists(kUserInfo));
  EXPECT_EQ(MAPI_E_NO_SUPPORT, opened->OpenProperty(PR_CONTAINER_CONTENTS, &IID_IMAPITable, 0, 0, nullptr));
}

// "Abc" as a value: length 40, data size 8, the tag, the value field, then the text with its terminator.
TEST_F(MailUser, SavedByteForByteAndLoadedAgain) {
  {
    const auto user = Open();
    const PropValues all = All(*user);
    ASSERT_EQ(2u, all.count);
    ASSERT_EQ(PR_ENTRYID, all.values[0].ulPropTag);
    ASSERT_EQ(20u, all.values[0].Value.bin.cb);
    EXPECT_TRUE(std::equal(kUserInfoEntryId.begin(), kUserInfoEntryId.end(), all.values[0].Value.bin.lpb));
    EXPECT_EQ(PR_OBJECT_TYPE, all.values[1].ulPropTag);
    EXPECT_EQ(MAPI_MAILUSER, static_cast<ULONG>(all.values[1].Value.l));
    SPropValue name = Text(PR_DISPLAY_NAME_W, L"Abc");
    EXPECT_EQ(S_OK, user->SetProps(1, &name, nullptr));
    EXPECT_TRUE(ValueNames(kUserInfo).empty());
    EXPECT_EQ(S_OK, user->SaveChanges(0));
  }
  std::vector<std::byte> cell = ReadRegValue(kUserInfo, L"805371935").data;
  ASSERT_EQ(40u, cell.size());
  std::fill(cell.begin() + 16, cell.begin() + 32, std::byte{0});
  const unsigned char expected[40] = {40, 0, 0, 0, 8, 0, 0,   0, 0x1F, 0, 0x01, 0x30, 0,
                                      0,  0, 0, 0, 0, 0, 0,   0, 0,    0, 0,    0,    0,
                                      0,  0, 0, 0, 0, 0, 'A', 0, 'b',  0, 'c',  0};
  EXPECT_EQ(0, std::memcmp(expected, cell.data(), sizeof expected));
  EXPECT_EQ(3u, ValueNames(kUserInfo).size()) << "the initial properties are written with the first save";
  const auto before = DumpKey(kUserInfo);

  const auto user = Open();
  const PropValues read = All(*user);
  EXPECT_EQ(WString(L"Abc"), FindValue(read.values.Get(), read.count, PR_DISPLAY_NAME_W)->Value.lpszW);
  EXPECT_EQ(before, DumpKey(kUserInfo));
}

TEST_F(MailUser, AStoredInitialPropertyWinsAndAnAbsentOneComesLast) {
  {
    const auto user = Open();
    SPropValue name = Text(PR_DISPLAY_NAME_W, L"Me");
    ASSERT_EQ(S_OK, user->SetProps(1, &name, nullptr));
    SizedSPropTagArray(1, gone) = {1, {PR_ENTRYID}};
    ASSERT_EQ(S_OK, user->DeleteProps(reinterpret_cast<SPropTagArray*>(&gone), nullptr));
    ASSERT_EQ(S_OK, user->SaveChanges(0));
  }
  RegValue type = ReadRegValue(kUserInfo, std::to_wstring(PR_OBJECT_TYPE));
  type.data[16] = std::byte{77};
  WriteRegValue(kUserInfo, std::to_wstring(PR_OBJECT_TYPE), REG_BINARY, type.data);
  const auto user = Open();
  const std::vector<ULONG> tags = Tags(*user);
  ASSERT_EQ(3u, tags.size());
  EXPECT_EQ(PR_ENTRYID, tags.back());
  const PropValues all = All(*user);
  EXPECT_EQ(77, FindValue(all.values.Get(), all.count, PR_OBJECT_TYPE)->Value.l);
  EXPECT_EQ(S_OK, user->SaveChanges(0));
  EXPECT_EQ(3u, ValueNames(kUserInfo).size()) << "what came back is marked and written";
}

TEST_F(MailUser, WithoutAKeyOrWithADamagedOneItDoesNotOpen) {
  ULONG type = 9;
  IMailUser* user = nullptr;
  const std::byte torn[] = {std::byte{1}};
  WriteRegValue(kUserInfo, L"805371935", REG_BINARY, torn);
  EXPECT_EQ(MAPI_E_CALL_FAILED, OpenUserInfo(nullptr, &type, &user));
  const auto before = DumpKey(kUserInfo);
  {
    // Not bound to the registry: saving succeeds and touches nothing.
    const auto unbound = ComPtr<CMailUser>::Adopt(new CMailUser);
    EXPECT_EQ(MAPI_E_CALL_FAILED, unbound->Initialize());
    SPropValue name = Text(PR_DISPLAY_NAME_W, L"Me");
    EXPECT_EQ(S_OK, unbound->SetProps(1, &name, nullptr));
    EXPECT_EQ(S_OK, unbound->SaveChanges(0));
  }
  EXPECT_EQ(before, DumpKey(kUserInfo));
  {
    const ReadOnlyKey denied(kUserInfo);
    EXPECT_EQ(MAPI_E_CALL_FAILED, OpenUserInfo(nullptr, &type, &user));
  }
  EXPECT_EQ(9u, type);
  EXPECT_EQ(nullptr, user);
}

TEST_F(MailUser, EachSaveLeavesOneHandleOpen) {
  const auto user = Open();
  for (int saves = 0; saves < 3; ++saves) {
    const int before = OpenHandles();
    EXPECT_EQ(S_OK, user->SaveChanges(0));
    EXPECT_EQ(before + 1, OpenHandles());
  }
  const int before = OpenHandles();
  Open();
  EXPECT_EQ(before, OpenHandles()) << "opening leaves none";
}

TEST_F(MailUser, CopiesGoThroughTheInterfacesWithoutBinaries) {
  const auto source = Open();
  const auto target = ComPtr<CMailUser>::Adopt(new CMailUser);
  SPropValue values[] = {Text(PR_DISPLAY_NAME_W, L"Me"), Text(PR_COMMENT_W, L"Desk"), {}};
  BYTE key[] = {1, 2};
  values[2].ulPropTag = PR_RECORD_KEY;
  values[2].Value.bin = {2, key};
  ASSERT_EQ(S_OK, source->SetProps(3, values, nullptr));
  SizedSPropTagArray(2, exclude) = {2, {PR_COMMENT_W, PR_OBJECT_TYPE}};
  const auto copy = [&](IMailUser* to, ULONG flags) {
    return source->CopyTo(0, nullptr, reinterpret_cast<SPropTagArray*>(&exclude), 0, nullptr, &IID_IMailUser,
                          to, flags, nullptr);
  };
  EXPECT_EQ(MAPI_E_BAD_CHARWIDTH, copy(target.Get(), 0));
  EXPECT_EQ(S_OK, copy(target.Get(), MAPI_UNICODE));
  EXPECT_EQ((std::vector<ULONG>{PR_DISPLAY_NAME_W}), Tags(*target));
  EXPECT_EQ(MAPI_E_NO_ACCESS, copy(Open().Get(), MAPI_UNICODE)) << "the user is not copied onto the user";
}

}  // namespace
}  // namespace orv::test
