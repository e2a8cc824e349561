// Changes that nobody finishes, programs and threads side by side, and what is gone while somebody still holds it.
#include <algorithm>
#include <future>
#include <thread>

#include "profiles/profile_change.h"
#include "profiles/profile_store.h"
#include "tests/profiles/profiles_fixture.h"

namespace orv::test {
namespace {

const WString kModelPath = L"Software\\Tovan\\Velmora\\VX100 series";

class ProfileChangeTest : public ServicesTest {
 protected:
  // Begins a change and leaves it as a process does that ends: nothing of it is ever destroyed but the lock, which the
  // system gives back.
  static void Abandon(const std::vector<WString>& profiles, const std::vector<ChangedKey>& keys) {
    auto* change = new ProfileChange;
    ProfileLock lock;
    ASSERT_EQ(lock.TakeProfile(profiles.front()), S_OK);
    ASSERT_EQ(change->Begin(profiles, keys), S_OK);
    ASSERT_TRUE(KeyExists(kModelPath + L"\\Orv Undo"));
  }
  ComPtr<IABServiceAdmin> OtherProgramsServices() {
    ComPtr<IOrvProfAdmin> admin;
    ComPtr<IABServiceAdmin> services;
    EXPECT_EQ(CreateProfAdmin(nullptr, admin.Put()), S_OK);
    EXPECT_EQ(admin->AdminServices(L"P", MAPI_UNICODE, services.Put()), S_OK);
    return services;
  }
  static HRESULT Add(IABServiceAdmin& services) {
    return services.CreateMsgService(L"One", L"Display", nullptr, 0, 0, MAPI_UNICODE);
  }
};

TEST_F(ProfileChangeTest, UnfinishedOnesAreTakenBackByWhoeverComesNext) {
  ASSERT_EQ(Create(L"One"), S_OK);
  ASSERT_EQ(admin_->SetDefaultProfile(L"P", MAPI_UNICODE), S_OK);
  const auto before = DumpKey(kProfilesPath);
  const WString service = SubkeyNames(kP).front();
  const struct {
    const char* what;
    std::vector<WString> profiles;
    std::vector<ChangedKey> keys;
    std::function<void()> half;
  } cases[] = {
      {"a service half removed",
       {L"P"},
       {ServiceOf(L"P", service)},
       [&] { DeleteKey(kP + L"\\" + service); }},
      {"a service half written",
       {L"P"},
       {ServiceOf(L"P", L"00ff")},
       [] { CreateKey(kP + L"\\00ff\\below"); }},
      {"a profile half made",
       {L"New"},
       {WholeProfile(L"New")},
       [] { CreateKey(ProfilePath(L"New") + L"\\half"); }},
      {"a profile half renamed",
       {L"New", L"P"},
       {WholeProfile(L"New"), WholeProfile(L"P"), DefaultMarker()},
       [] {
         CreateKey(ProfilePath(L"New"));
         DeleteKey(kP);
         ASSERT_EQ(registry_store::SetDefaultProfile(L"New"), S_OK);
       }},
      {"a record that was never written", {L"P"}, {}, [] { CreateKey(kModelPath + L"\\Orv Undo\\P"); }}};
  for (const auto& one : cases) {
    SCOPED_TRACE(one.what);
    ASSERT_NO_FATAL_FAILURE(Abandon(one.profiles, one.keys));
    one.half();
    ASSERT_EQ(CreateProfAdmin(nullptr, admin_.Put()), S_OK);
    // Whoever opens the profile, or lists all of them.
    EXPECT_TRUE(one.profiles.front() != L"P" || OtherProgramsServices());
    EXPECT_EQ(Profiles(), Names{L"P"});
    EXPECT_EQ(DumpKey(kProfilesPath), before);
    EXPECT_FALSE(KeyExists(kModelPath + L"\\Orv Undo"));
  }
}

// Records that somebody else wrote: a record takes back what a change of the profile that it is named for can have
// touched, and nothing else.
TEST_F(ProfileChangeTest, ForgedRecordsTakeNothingBack) {
  const WString undo = kModelPath + L"\\Orv Undo\\";
  const WString other = ProfilePath(L"Other");
  const auto tree = registry_snapshot::Extent::kTree;
  const struct {
    WString profile;  // that the record names
    ChangedKey key;
    WString victim;  // what it would delete
  } cases[] = {{L"P", WholeProfile(L"Other"), other},
               {L"P", {L"Orv Profiles", tree}, other},
               {L"P", {L"Orv ProfilesP", tree}, kModelPath + L"\\Orv ProfilesP"},
               {L"P", {L"Orv UserInfo", tree}, kModelPath + L"\\Orv UserInfo"},
               {L"Other", WholeProfile(L"Other"), other}};
  for (const auto& one : cases) {
    SCOPED_TRACE(std::string(one.key.path.begin(), one.key.path.end()));
    ASSERT_NO_FATAL_FAILURE(Abandon({one.profile}, {one.key}));
    const RegValue record = ReadRegValue(undo + one.profile, L"Record");
    DeleteKey(undo + one.profile);
    WriteRegValue(undo + L"P", L"Record", record.type, record.data);
    CreateKey(one.victim + L"\\kept");
    EXPECT_TRUE(OtherProgramsServices());
    EXPECT_TRUE(KeyExists(one.victim + L"\\kept"));
    EXPECT_FALSE(KeyExists(undo + L"P"));
    DeleteKey(one.victim);
  }
}

TEST_F(ProfileChangeTest, AdditionsOfTwoThreadsAreAllThere) {
  constexpr int kEach = 8;
  const auto add = [&](ComPtr<IABServiceAdmin> services) {
    for (int i = 0; i < kEach; ++i) EXPECT_EQ(Add(*services), S_OK);
  };
  std::thread other(add, OtherProgramsServices());
  add(OtherProgramsServices());
  other.join();
  EXPECT_EQ(SubkeyNames(kP).size(), 2u * kEach);
}

// Whoever waits for a profile gives up after ten seconds and has changed nothing. Locks are those of all programs, so the
// profile is none that other tests wait for meanwhile.
TEST_F(ProfileChangeTest, WhatNobodyLetsGoOfIsBusy) {
  constexpr const WCHAR* kHeld = L"held by somebody";
  ASSERT_EQ(CreateProfile(kHeld), S_OK);
  ASSERT_EQ(admin_->AdminServices(kHeld, MAPI_UNICODE, services_.Put()), S_OK);
  const MAPIUID uid = Created();
  const auto before = DumpKey(kProfilesPath);
  std::promise<void> taken, tried;
  std::thread other([&] {
    ProfileLock lock;
    EXPECT_EQ(lock.TakeProfile(kHeld), S_OK);
    taken.set_value();
    tried.get_future().wait();
  });
  taken.get_future().wait();
  EXPECT_EQ(services_->DeleteMsgService(&uid), MAPI_E_BUSY);
  tried.set_value();
  other.join();
  EXPECT_EQ(DumpKey(kProfilesPath), before);
  EXPECT_EQ(services_->DeleteMsgService(&uid), S_OK);
}

// The dialog removes one service and adds another; another program adds its own meanwhile.
TEST_F(ProfileChangeTest, ACancelledDialogLeavesOtherProgramsAdditions) {
  const MAPIUID removed = Created();
  auto expected = SubkeyNames(kP);
  const auto before = DumpKey(kP);
  ASSERT_EQ(CreateProfAdmin(
                [&](HWND, IABServiceAdmin* services) -> INT_PTR {
                  EXPECT_EQ(services->DeleteMsgService(&removed), S_OK);
                  EXPECT_EQ(Add(*services), S_OK);
                  EXPECT_EQ(Add(*OtherProgramsServices()), S_OK);
                  return IDCANCEL;
                },
                admin_.Put()),
            S_OK);
  EXPECT_EQ(admin_->ConfigureProfile(L"P", 0, MAPI_UNICODE), MAPI_E_USER_CANCEL);
  const auto after = SubkeyNames(kP);
  ASSERT_EQ(after.size(), expected.size() + 1);
  for (const WString& service : after) {
    if (std::find(expected.begin(), expected.end(), service) == expected.end())
      DeleteKey(kP + L"\\" + service);
  }
  EXPECT_EQ(DumpKey(kP), before);
}

// A row without a UID, as a program leaves that ends while it writes one; and a key whose name no service can have.
TEST_F(ProfileChangeTest, UnreadableRowsStayUntilTheyAreDeletedByTheirKeys) {
  const MAPIUID uid = Created();
  CreateKey(kP + L"\\0123");
  ASSERT_EQ(Create(L"One"), S_OK);
  EXPECT_EQ(services_->DeleteMsgService(&uid), S_OK);
  EXPECT_EQ(SubkeyNames(kP).size(), 2u);
  const WString longName(registry_store::kMaxProfileName + 6, L'a');
  CreateKey(kP + L"\\" + longName + L"\\below");
  ComPtr<IOrvProfAdmin2> stored;
  ASSERT_EQ(admin_->QueryInterface(IID_IOrvProfAdmin2, reinterpret_cast<void**>(stored.Put())), S_OK);
  for (const WString& key : {WString(L"0123"), longName}) {
    ASSERT_TRUE(KeyExists(kP + L"\\" + key));
    EXPECT_EQ(stored->DeleteStoredService(L"P", key.c_str(), MAPI_UNICODE), S_OK);
    EXPECT_FALSE(KeyExists(kP + L"\\" + key));
    EXPECT_EQ(stored->DeleteStoredService(L"P", key.c_str(), MAPI_UNICODE), MAPI_E_NOT_FOUND);
  }
  EXPECT_EQ(SubkeyNames(kP).size(), 1u);
}

}  // namespace
}  // namespace orv::test
