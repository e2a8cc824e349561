// The user's own details: opener, storage byte for byte, copying, and the handle that a save leaves open.
#include "addrbook/mail_user.h"

#include <algorithm>

#include "platform/com_ptr.h"
#include "props/entry_id.h"
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
  HRESULT SetName(IMailUser& user) {
    SPropValue name = Unicode(PR_DISPLAY_NAME_W, L"Abc");
    return user.SetProps(1, &name, nullptr);
  }
  // Each property as its tag, and its value where it is a number or a text.
  using Values = std::vector<std::pair<ULONG, WString>>;
  static Values All(IMailUser& user) {
    Values all;
    PropValues values;
    EXPECT_EQ(user.GetProps(nullptr, MAPI_UNICODE, &values.count, values.values.Put()), S_OK);
    for (ULONG i = 0; i < values.count; ++i) {
      const SPropValue& value = values.values[i];
      const ULONG type = PROP_TYPE(value.ulPropTag);
      all.emplace_back(value.ulPropTag, type == PT_LONG      ? std::to_wstring(value.Value.l)
                                        : type == PT_UNICODE ? value.Value.lpszW
                                                             : L"");
      if (value.ulPropTag != PR_ENTRYID) continue;
      EXPECT_EQ(value.Value.bin.cb, kUserInfoEntryId.size());
      EXPECT_TRUE(std::equal(kUserInfoEntryId.begin(), kUserInfoEntryId.end(), value.Value.bin.lpb));
    }
    return all;
  }

  Installation installation;
  RedirectedRegistry registry;
};

TEST_F(MailUser, OpensForNoInterfaceSavesAndLoads) {
  ULONG type = 9;
  IMailUser* none = nullptr;
  for (const IID* iid : {&IID_IUnknown, &IID_IMAPIProp, &IID_IMailUser, &IID_IMAPITable})
    EXPECT_EQ(OpenUserInfo(iid, &type, &none), MAPI_E_INTERFACE_NOT_SUPPORTED);
  EXPECT_FALSE(KeyExists(kUserInfo));
  {
    const auto user = Open();
    EXPECT_EQ(All(*user), (Values{{PR_ENTRYID, L""}, {PR_OBJECT_TYPE, L"6"}}));
    EXPECT_EQ(SetName(*user), S_OK);
    EXPECT_TRUE(ValueNames(kUserInfo).empty());
    EXPECT_EQ(user->SaveChanges(0), S_OK);
  }
  EXPECT_EQ(ReadRegValue(kUserInfo, L"805371935").data.size(), 40u);
  EXPECT_EQ(ValueNames(kUserInfo).size(), 3u) << "the initial properties are written with the first save";
  const auto before = DumpKey(kUserInfo);
  Values read = All(*Open());
  std::sort(read.begin(), read.end());
  EXPECT_EQ(read, (Values{{PR_OBJECT_TYPE, L"6"}, {PR_ENTRYID, L""}, {PR_DISPLAY_NAME_W, L"Abc"}}));
  EXPECT_EQ(DumpKey(kUserInfo), before);
}

TEST_F(MailUser, AStoredInitialPropertyWinsAndAnAbsentOneComesLast) {
  {
    const auto user = Open();
    ASSERT_EQ(SetName(*user), S_OK);
    ASSERT_EQ(user->DeleteProps(Tags{PR_ENTRYID}.Get(), nullptr), S_OK);
    ASSERT_EQ(user->SaveChanges(0), S_OK);
  }
  RegValue type = ReadRegValue(kUserInfo, std::to_wstring(PR_OBJECT_TYPE));
  type.data[16] = std::byte{77};
  WriteRegValue(kUserInfo, std::to_wstring(PR_OBJECT_TYPE), REG_BINARY, type.data);
  const auto user = Open();
  Values read = All(*user);
  EXPECT_EQ(read.back().first, PR_ENTRYID);
  std::sort(read.begin(), read.end());
  EXPECT_EQ(read, (Values{{PR_OBJECT_TYPE, L"77"}, {PR_ENTRYID, L""}, {PR_DISPLAY_NAME_W, L"Abc"}}));
  EXPECT_EQ(user->SaveChanges(0), S_OK);
  EXPECT_EQ(ValueNames(kUserInfo).size(), 3u) << "what came back is marked and written";
}

TEST_F(MailUser, WithoutAKeyOrWithADamagedOneItDoesNotOpen) {
  ULONG type = 9;
  IMailUser* user = nullptr;
  Open()->SaveChanges(0);
  const auto good = ReadRegValue(kUserInfo, std::to_wstring(PR_OBJECT_TYPE)).data;
  const WString overlong(65, L'n');
  const std::pair<const WCHAR*, std::span<const std::byte>> cells[] = {
      {L"2", {}}, {L"2", std::span(good).first(39)}, {overlong.c_str(), good}};
  for (const auto& [name, cell] : cells) {
    DeleteKey(kUserInfo);
    WriteRegValue(kUserInfo, L"1", REG_BINARY, good);
    WriteRegValue(kUserInfo, name, REG_BINARY, cell);
    EXPECT_EQ(OpenUserInfo(nullptr, &type, &user), MAPI_E_CALL_FAILED) << cell.size();
  }
  const ReadOnlyKey denied(kUserInfo);
  EXPECT_EQ(OpenUserInfo(nullptr, &type, &user), MAPI_E_CALL_FAILED);
  EXPECT_EQ(type, 9u);
  EXPECT_EQ(user, nullptr);
}

TEST_F(MailUser, EachSaveLeavesOneHandleOpen) {
  const auto user = Open();
  const int before = OpenHandles();
  for (int saves = 1; saves <= 3; ++saves) {
    Open();
    EXPECT_EQ(user->SaveChanges(0), S_OK);
    EXPECT_EQ(OpenHandles(), before + saves) << "opening leaves none";
  }
}

TEST_F(MailUser, CopiesLeaveTheExcludedAndBinariesOut) {
  const auto source = Open();
  const auto target = ComPtr<CMailUser>::Adopt(new CMailUser);
  ASSERT_EQ(SetName(*source), S_OK);
  const auto copy = [&](IMailUser* to, ULONG flags) {
    return source->CopyTo(0, nullptr, Tags{PR_OBJECT_TYPE}.Get(), 0, nullptr, &IID_IMailUser, to, flags,
                          nullptr);
  };
  EXPECT_EQ(copy(target.Get(), 0), MAPI_E_BAD_CHARWIDTH);
  EXPECT_EQ(copy(target.Get(), MAPI_UNICODE), S_OK);
  EXPECT_EQ(All(*target), (Values{{PR_DISPLAY_NAME_W, L"Abc"}}));
  EXPECT_EQ(target->SaveChanges(0), S_OK) << "saved nowhere";
  EXPECT_TRUE(ValueNames(kUserInfo).empty());
  EXPECT_EQ(copy(Open().Get(), MAPI_UNICODE), MAPI_E_NO_ACCESS) << "the user is not copied onto the user";
}

}  // namespace
}  // namespace orv::test
