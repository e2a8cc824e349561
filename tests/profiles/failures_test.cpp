// Every registry call of the operations on profiles and services fails in turn: the documented code comes back,
// the objects tell what the registry holds, and the same operation then succeeds.
#include "platform/faults.h"
#include "profiles/service_store.h"
#include "tests/profiles/profiles_fixture.h"

namespace orv::test {
namespace {

class FailuresTest : public ServicesTest {
 protected:
  // A registry with one profile of one service, and objects that have read it.
  void Reset() {
    DeleteKey(L"Software");
    MakeProfile(MAPI_DEFAULT_SERVICES);
    ASSERT_EQ(admin_->SetDefaultProfile(L"P", MAPI_UNICODE), S_OK);
    uid_ = FirstUid(*services_);
    key_ = SubkeyNames(kP).front();
  }

  // The profiles, how many values each of their services has, and how many lie beside the profiles.
  static Names Shape() {
    Names shape = {std::to_wstring(ValueNames(kProfilesPath).size())};
    for (const WString& profile : SubkeyNames(kProfilesPath)) {
      shape.push_back(profile);
      for (const WString& service : SubkeyNames(ProfilePath(profile)))
        shape.push_back(std::to_wstring(ValueNames(ProfilePath(profile) + L"\\" + service).size()));
    }
    return shape;
  }

  void FailEachCall(const std::function<HRESULT()>& operation, const Names& stays = {}) {
    ASSERT_NO_FATAL_FAILURE(Reset());
    EXPECT_EQ(operation(), S_OK);
    const auto after = Shape();
    bool fired = true;
    for (std::size_t nth = 1; fired; ++nth) {
      ASSERT_NO_FATAL_FAILURE(Reset());
      const auto before = DumpKey(kProfilesPath);
      faults::Arm(faults::Site::kRegistry, nth);
      const HRESULT hr = operation();
      fired = faults::Fired(faults::Site::kRegistry);
      faults::Arm(faults::Site::kRegistry, 0);
      EXPECT_EQ(Profiles(), SubkeyNames(kProfilesPath)) << nth;
      // A few failures are documented to be passed over; no other code than these two may come out.
      EXPECT_TRUE(hr == S_OK || (fired && hr == MAPI_E_CALL_FAILED)) << nth << ": " << std::hex << hr;
      const auto shape = Shape();
      EXPECT_TRUE(shape == after || shape == stays || (FAILED(hr) && DumpKey(kProfilesPath) == before))
          << nth << ": " << std::hex << hr << " " << testing::PrintToString(shape);
      EXPECT_TRUE(fired || nth > 1) << "the operation makes no such call";
    }
  }

  ComPtr<IOrvProfAdmin3> Stored() {
    ComPtr<IOrvProfAdmin3> stored;
    EXPECT_EQ(admin_->QueryInterface(IID_IOrvProfAdmin3, reinterpret_cast<void**>(stored.Put())), S_OK);
    return stored;
  }

  MAPIUID uid_{};
  WString key_;  // of the one service
};

TEST_F(FailuresTest, ProfilesAndServicesSurviveThem) {
  const std::function<HRESULT()> operations[] = {
      [&] { return admin_->CreateProfile(L"Q", 0, MAPI_UNICODE | MAPI_DEFAULT_SERVICES); },
      [&] { return admin_->CopyProfile(L"P", L"Q", MAPI_UNICODE); },
      [&] { return admin_->DeleteProfile(L"P", MAPI_UNICODE); },
      [&] { return admin_->SetDefaultProfile(nullptr, MAPI_UNICODE); },
      [&] { return Stored()->DeleteStoredService(L"P", key_.c_str(), MAPI_UNICODE); },
      [&] { return Create(L"One", L"x"); },
      [&] { return services_->DeleteMsgService(&uid_); },
      [&] {
        SPropValue name = Unicode(PR_DISPLAY_NAME_W, L"New");
        IProfSect* section = nullptr;
        return services_->ConfigureMsgService(&uid_, 0, MAPI_UNICODE, 1, &name, &section);
      },
      [&] {
        SPropValue value = Unicode(PR_DISPLAY_NAME_W, L"New");
        ComPtr<IProfSect> section;
        HRESULT hr = services_->OpenProfileSection(&uid_, nullptr, 0, section.Put());
        if (SUCCEEDED(hr)) hr = section->SetProps(1, &value, nullptr);
        return SUCCEEDED(hr) ? section->SaveChanges(0) : hr;
      },
  };
  for (const auto& operation : operations) FailEachCall(operation);
  // An old profile that cannot be deleted stays beside the new one.
  FailEachCall([&] { return admin_->RenameProfile(L"P", L"Q", MAPI_UNICODE); },
               {L"1", L"P", L"10", L"Q", L"10"});
}

// Besides the one reading of what is there, adding a service costs the same whatever the profile holds.
TEST_F(FailuresTest, AddingAServiceReadsTheOthersOnce) {
  const auto calls = [](const std::function<HRESULT()>& operation) {
    faults::Arm(faults::Site::kRegistry, 0);
    EXPECT_EQ(operation(), S_OK);
    return faults::Calls(faults::Site::kRegistry);
  };
  ASSERT_NO_FATAL_FAILURE(Reset());
  std::vector<std::size_t> costs;
  for (const std::size_t count : {3, 12}) {
    while (SubkeyNames(ProfilePath(L"P")).size() < count) ASSERT_EQ(Create(L"One"), S_OK);
    ServiceStore store;
    const std::size_t reading = calls([&] { return store.LoadAll(L"P"); });
    costs.push_back(calls([&] { return Create(L"One"); }) - reading);
  }
  EXPECT_EQ(costs[1], costs[0]);
}

// A row that cannot be read leaves the profile, and nothing of it is lost, whichever call fails.
TEST_F(FailuresTest, ADamagedServiceIsSetAsideWhole) {
  const WString damaged = kProfilesPath.substr(0, kProfilesPath.rfind(L'\\')) + L"\\Orv Damaged";
  const std::byte torn[] = {std::byte{40}, std::byte{0}};
  const auto setAside = [&] { return Stored()->SetAsideStoredService(L"P", key_.c_str(), MAPI_UNICODE); };
  bool fired = true;
  for (std::size_t nth = 1; fired; ++nth) {
    ASSERT_NO_FATAL_FAILURE(Reset());
    EXPECT_EQ(setAside(), MAPI_E_NO_ACCESS) << "it can be read";
    const WString row = kP + L"\\" + key_;
    WriteRegValue(row, L"torn", REG_BINARY, torn);
    WriteRegValue(row + L"\\below", L"1", REG_BINARY, torn);
    const auto before = DumpKey(row);
    faults::Arm(faults::Site::kRegistry, nth);
    const HRESULT hr = setAside();
    fired = faults::Fired(faults::Site::kRegistry);
    faults::Arm(faults::Site::kRegistry, 0);
    EXPECT_TRUE(hr == S_OK || (fired && hr == MAPI_E_CALL_FAILED)) << nth << ": " << std::hex << hr;
    if (FAILED(hr)) {
      EXPECT_EQ(DumpKey(row), before) << nth;
      continue;
    }
    EXPECT_TRUE(SubkeyNames(kP).empty());
    const WString aside = damaged + L"\\" + SubkeyNames(damaged).front() + L"\\P";
    ASSERT_EQ(SubkeyNames(aside).size(), 1u);
    EXPECT_EQ(DumpKey(aside + L"\\" + SubkeyNames(aside).front()), before) << nth;
    EXPECT_EQ(setAside(), MAPI_E_NOT_FOUND);
    WriteRegValue(row, L"torn", REG_BINARY, torn);
    EXPECT_EQ(setAside(), S_OK);
    EXPECT_EQ(SubkeyNames(aside).size(), 2u) << "the former one stays";
  }
}

TEST_F(FailuresTest, ProfilesThatCannotBeListedAreNamed) {
  Reset();
  const WString longName(65, L'x');
  WriteRegValue(ProfilePath(longName), L"v", REG_SZ, {});
  WriteRegValue(ProfilePath(L"WAB"), L"v", REG_SZ, {});
  ComPtr<IMAPITable> table;
  ASSERT_EQ(Stored()->GetStoredProfileTable(MAPI_UNICODE, table.Put()), S_OK);
  EXPECT_EQ(Column(table, PR_DISPLAY_NAME_W), (Names{L"P", longName}));
  RowSetPtr rows;
  ASSERT_EQ(table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr), S_OK);
  ASSERT_EQ(table->QueryRows(2, 0, rows.Put()), S_OK);
  EXPECT_EQ(rows->aRow[0].lpProps[1].Value.l, S_OK);
  EXPECT_EQ(rows->aRow[1].lpProps[1].Value.l, MAPI_E_STRING_TOO_LONG);
}

}  // namespace
}  // namespace orv::test
