// The user's own details: opener, storage byte for byte, copying, and the handle that a save leaves open.
#include "addrbook/mail_user.h"

#include <algorithm>

#include "platform/com_ptr.h"
#include "platform/faults.h"
#include "props/entry_id.h"
#include "props/prop_value.h"
#include "tests/addrbook/book_fixture.h"
#include "tests/props/samples.h"
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
    EXPECT_EQ(OpenUserInfo(nullptr, &type, user.Put()), S_OK);
    EXPECT_EQ(type, MAPI_MAILUSER);
    return user;
  }
  static PropValues All(IMailUser& user) {
    PropValues values;
    EXPECT_EQ(user.GetProps(nullptr, MAPI_UNICODE, &values.count, values.values.Put()), S_OK);
    return values;
  }
  static std::vector<ULONG> TagsOf(IMailUser& user) {
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
    EXPECT_EQ(OpenUserInfo(iid, &type, &user), MAPI_E_INTERFACE_NOT_SUPPORTED);
  EXPECT_EQ(OpenUserInfo(&IID_IMailUser, nullptr, &user), MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(type, 9u);
  EXPECT_EQ(user, reinterpret_cast<IMailUser*>(this));
  EXPECT_FALSE(KeyExists(kUserInfo));
  Open();
  EXPECT_TRUE(KeyExists(kUserInfo));
}

// "Abc" as a value: length 40, data size 8, the tag, the value field, then the text with its terminator.
TEST_F(MailUser, SavedByteForByteAndLoadedAgain) {
  {
    const auto user = Open();
    const PropValues all = All(*user);
    ASSERT_EQ(all.count, 2u);
    ASSERT_EQ(all.values[0].ulPropTag, PR_ENTRYID);
    ASSERT_EQ(all.values[0].Value.bin.cb, 20u);
    EXPECT_TRUE(std::equal(kUserInfoEntryId.begin(), kUserInfoEntryId.end(), all.values[0].Value.bin.lpb));
    EXPECT_EQ(all.values[1].ulPropTag, PR_OBJECT_TYPE);
    EXPECT_EQ(static_cast<ULONG>(all.values[1].Value.l), MAPI_MAILUSER);
    SPropValue name = Unicode(PR_DISPLAY_NAME_W, L"Abc");
    EXPECT_EQ(user->SetProps(1, &name, nullptr), S_OK);
    EXPECT_TRUE(ValueNames(kUserInfo).empty());
    EXPECT_EQ(user->SaveChanges(0), S_OK);
  }
  std::vector<std::byte> cell = ReadRegValue(kUserInfo, L"805371935").data;
  ASSERT_EQ(cell.size(), 40u);
  std::fill(cell.begin() + 16, cell.begin() + 32, std::byte{0});
  const unsigned char expected[40] = {40, 0, 0, 0, 8, 0, 0,   0, 0x1F, 0, 0x01, 0x30, 0,
                                      0,  0, 0, 0, 0, 0, 0,   0, 0,    0, 0,    0,    0,
                                      0,  0, 0, 0, 0, 0, 'A', 0, 'b',  0, 'c',  0};
  EXPECT_EQ(std::memcmp(expected, cell.data(), sizeof expected), 0);
  EXPECT_EQ(ValueNames(kUserInfo).size(), 3u) << "the initial properties are written with the first save";
  const auto before = DumpKey(kUserInfo);

  const auto user = Open();
  const PropValues read = All(*user);
  EXPECT_EQ(FindValue(read.values.Get(), read.count, PR_DISPLAY_NAME_W)->Value.lpszW, WString(L"Abc"));
  EXPECT_EQ(DumpKey(kUserInfo), before);
}

TEST_F(MailUser, AStoredInitialPropertyWinsAndAnAbsentOneComesLast) {
  {
    const auto user = Open();
    SPropValue name = Unicode(PR_DISPLAY_NAME_W, L"Me");
    ASSERT_EQ(user->SetProps(1, &name, nullptr), S_OK);
    ASSERT_EQ(user->DeleteProps(Tags{PR_ENTRYID}.Get(), nullptr), S_OK);
    ASSERT_EQ(user->SaveChanges(0), S_OK);
  }
  RegValue type = ReadRegValue(kUserInfo, std::to_wstring(PR_OBJECT_TYPE));
  type.data[16] = std::byte{77};
  WriteRegValue(kUserInfo, std::to_wstring(PR_OBJECT_TYPE), REG_BINARY, type.data);
  const auto user = Open();
  const std::vector<ULONG> tags = TagsOf(*user);
  ASSERT_EQ(tags.size(), 3u);
  EXPECT_EQ(tags.back(), PR_ENTRYID);
  const PropValues all = All(*user);
  EXPECT_EQ(FindValue(all.values.Get(), all.count, PR_OBJECT_TYPE)->Value.l, 77);
  EXPECT_EQ(user->SaveChanges(0), S_OK);
  EXPECT_EQ(ValueNames(kUserInfo).size(), 3u) << "what came back is marked and written";
}

TEST_F(MailUser, WithoutAKeyOrWithADamagedOneItDoesNotOpen) {
  ULONG type = 9;
  IMailUser* user = nullptr;
  const std::byte torn[] = {std::byte{1}};
  WriteRegValue(kUserInfo, L"805371935", REG_BINARY, torn);
  EXPECT_EQ(OpenUserInfo(nullptr, &type, &user), MAPI_E_CALL_FAILED);
  const auto before = DumpKey(kUserInfo);
  {
    // Not bound to the registry: saving succeeds and touches nothing.
    const auto unbound = ComPtr<CMailUser>::Adopt(new CMailUser);
    EXPECT_EQ(unbound->Initialize(), MAPI_E_CALL_FAILED);
    SPropValue name = Unicode(PR_DISPLAY_NAME_W, L"Me");
    EXPECT_EQ(unbound->SetProps(1, &name, nullptr), S_OK);
    EXPECT_EQ(unbound->SaveChanges(0), S_OK);
  }
  EXPECT_EQ(DumpKey(kUserInfo), before);
  {
    const ReadOnlyKey denied(kUserInfo);
    EXPECT_EQ(OpenUserInfo(nullptr, &type, &user), MAPI_E_CALL_FAILED);
  }
  EXPECT_EQ(type, 9u);
  EXPECT_EQ(user, nullptr);
}

TEST_F(MailUser, EachSaveLeavesOneHandleOpen) {
  const auto user = Open();
  for (int saves = 0; saves < 3; ++saves) {
    const int before = OpenHandles();
    EXPECT_EQ(user->SaveChanges(0), S_OK);
    EXPECT_EQ(OpenHandles(), before + 1);
  }
  const int before = OpenHandles();
  Open();
  EXPECT_EQ(OpenHandles(), before) << "opening leaves none";
}

TEST_F(MailUser, CopiesGoThroughTheInterfacesWithoutBinaries) {
  const auto source = Open();
  const auto target = ComPtr<CMailUser>::Adopt(new CMailUser);
  SPropValue values[] = {Unicode(PR_DISPLAY_NAME_W, L"Me"), Unicode(PR_COMMENT_W, L"Desk"),
                         Binary(PR_RECORD_KEY, "key")};
  ASSERT_EQ(source->SetProps(3, values, nullptr), S_OK);
  Tags exclude{PR_COMMENT_W, PR_OBJECT_TYPE};
  const auto copy = [&](IMailUser* to, ULONG flags) {
    return source->CopyTo(0, nullptr, exclude.Get(), 0, nullptr, &IID_IMailUser, to, flags, nullptr);
  };
  EXPECT_EQ(copy(target.Get(), 0), MAPI_E_BAD_CHARWIDTH);
  EXPECT_EQ(copy(target.Get(), MAPI_UNICODE), S_OK);
  EXPECT_EQ(TagsOf(*target), (std::vector<ULONG>{PR_DISPLAY_NAME_W}));
  EXPECT_EQ(copy(Open().Get(), MAPI_UNICODE), MAPI_E_NO_ACCESS) << "the user is not copied onto the user";
}

}  // namespace
}  // namespace orv::test
