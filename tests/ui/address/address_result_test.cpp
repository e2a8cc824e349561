// What the Address dialog hands back, and the rules of its export.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "platform/faults.h"
#include "tests/ui/address/address_world.h"

namespace orv::test {
namespace {

class AddressResultTest : public AddressTest {
 protected:
  // An identifier of a provider that is not there, so that nobody can open it.
  static std::vector<BYTE> Nobodys(char last) {
    FakeScript nobody("nobody", FakeUid('Z'), nullptr);
    return nobody.EntryId(std::string(1, last));
  }
  std::vector<SPropValue*> Arrays() const {
    std::vector<SPropValue*> arrays;
    for (ULONG i = 0; i < list_->cEntries; ++i) arrays.push_back(list_->aEntries[i].rgPropVals);
    return arrays;
  }
  // Puts lines of the entries into a well.
  static void Put(Pilot pilot, int button, const Lines& lines) {
    pilot.Select(kEntries, lines);
    pilot.Press(button);
  }
  static BOOL CALLBACK Cancel(HWND window, LPARAM) {
    if (IsWindowVisible(window) && IsWindowEnabled(window)) PostMessageW(window, WM_COMMAND, IDCANCEL, 0);
    return TRUE;
  }
  // Shows the dialog whatever becomes of it: closes every window that comes.
  HRESULT ShowAnyhow() {
    std::atomic<bool> returned = false;
    parameters_.cDestFields = 2;
    parameters_.lpulDestComps = types_;
    const DWORD thread = GetCurrentThreadId();
    DialogDriver driver([&](DialogScript&) {
      for (; !returned; std::this_thread::sleep_for(std::chrono::milliseconds(1)))
        EnumThreadWindows(thread, &Cancel, 0);
    });
    ADRLIST* list = list_.Detach();
    const HRESULT hr = OrvAddress(0, world_.book.Get(), &parameters_, &list);
    list_.Reset(list);
    returned = true;
    driver.Finish();
    return hr;
  }
};

TEST_F(AddressResultTest, OneEntryMeansExactlyOneThatCanBeRead) {
  parameters_.ulFlags = ADDRESS_ONE;
  list_ = MakeRecipients({{Id("dora"), L"Dora", MAPI_BCC}});
  ShowAndConfirm(0, [&](Pilot pilot) {
    EXPECT_EQ(pilot.BoxAfter(IDOK), 272u);
    pilot.Select(kEntries, {0, 1});
    EXPECT_EQ(pilot.BoxAfter(IDOK), 284u);
    pilot.Select(kEntries, {2});
    for (const char* operation : {"OpenEntry", "Object:GetProps"}) {
      for (const auto throws : {FakeAnswer::Throws::kNothing, FakeAnswer::Throws::kInteger}) {
        world_.company.answers[operation] = {MAPI_E_NO_ACCESS, throws};
        EXPECT_EQ(pilot.BoxAfter(IDOK), 283u);
      }
      world_.company.answers.clear();
    }
    const std::pair<const char*, FakeLie> lies[] = {{"OpenEntry", FakeLie::kNothing},
                                                    {"Object:GetProps", FakeLie::kNoArray},
                                                    {"Object:GetProps", FakeLie::kNoValues},
                                                    {"Object:GetProps", FakeLie::kShort}};
    for (const auto& lie : lies) {
      world_.company.lies = {lie};
      EXPECT_EQ(pilot.BoxAfter(IDOK), 283u);
    }
    world_.company.lies.clear();
  });
  EXPECT_EQ(Result(), Texts{L"All of us/1"});
  const ADRENTRY& entry = list_->aEntries[0];
  const ULONG tags[] = {PR_ENTRYID, PR_RECIPIENT_TYPE, PR_DISPLAY_NAME_W, PR_ADDRTYPE_W, PR_OBJECT_TYPE};
  ASSERT_EQ(entry.cValues, 5u);
  for (int i = 0; i < 5; ++i) EXPECT_EQ(entry.rgPropVals[i].ulPropTag, tags[i]);
  EXPECT_EQ(entry.rgPropVals[4].Value.ul, ULONG{MAPI_DISTLIST});
}

TEST_F(AddressResultTest, WellsComeInTheirOrderWithTheirTypes) {
  types_[0] = MAPI_BCC;
  types_[1] = MAPI_TO;
  types_[2] = 77;
  list_ = MakeRecipients({{Id("dora"), L"Old name", 77}});
  ShowAndConfirm(3, [&](Pilot pilot) {
    Put(pilot, kBccButton, {3});
    Put(pilot, kToButton, {0, 2});
    Put(pilot, kCcButton, {1});
    Put(pilot, kToButton, {0});
  });
  EXPECT_EQ(Result(), (Texts{L"Anna/3", L"All of us/3", L"Anna/3", L"Bernd/1", L"Dora/77", L"Carla/77"}));
  list_.Reset();
  ShowAndConfirm(1, [](Pilot) {});
  ASSERT_TRUE(list_);
  EXPECT_EQ(list_->cEntries, 0u);
}

TEST_F(AddressResultTest, EntryThatCannotBeOpenedIsTheCallersOwn) {
  list_ = MakeRecipients({{Nobodys('1'), L"Gone", MAPI_CC},
                          {Id("dora"), L"Old name", MAPI_TO},
                          {Nobodys('2'), L"Twice", MAPI_TO},
                          {Nobodys('2'), L"Twice again", MAPI_TO},
                          {{}, L"No identifier", MAPI_CC}});
  const std::vector<SPropValue*> arrays = Arrays();
  ShowAndConfirm(2, [](Pilot) {});
  EXPECT_EQ(Result(), (Texts{L"Dora/1", L"Twice/1", L"Twice again/1", L"Gone/2", L"No identifier/2"}));
  const std::vector<SPropValue*> after = Arrays();
  EXPECT_EQ(std::vector(after.begin() + 1, after.end()),
            (std::vector{arrays[2], arrays[3], arrays[0], arrays[4]}));
}

TEST_F(AddressResultTest, ResultThatCannotBeBuiltLeavesAllAsItWas) {
  list_ = MakeRecipients({{Nobodys('1'), L"Gone", MAPI_TO}, {Nobodys('2'), L"Gone too", MAPI_TO}});
  const ADRLIST* before = list_.Get();
  const std::vector<SPropValue*> arrays = Arrays();
  const Steps fail = [&](Pilot pilot) {
    Put(pilot, kToButton, {0});
    for (const FakeAnswer answer :
         {FakeAnswer{MAPI_E_NO_ACCESS}, FakeAnswer{S_OK, FakeAnswer::Throws::kBadAlloc}}) {
      world_.company.answers["OpenEntry"] = answer;
      EXPECT_EQ(pilot.BoxAfter(IDOK), 283u);
      // What could not be opened before is back in the caller's list, which is still the old one.
      EXPECT_EQ(pilot.Items(kTo), (Texts{L"Gone", L"Gone too", L"Anna"}));
    }
    world_.company.answers.clear();
  };
  ShowAndCancel(1, fail);
  EXPECT_EQ(list_.Get(), before);
  EXPECT_EQ(Arrays(), arrays);
  ShowAndConfirm(1, fail);
  EXPECT_EQ(Result(), (Texts{L"Gone/1", L"Gone too/1", L"Anna/1"}));
}

TEST_F(AddressResultTest, EveryFailingAllocationIsToldAndLeavesTheList) {
  std::size_t ofOk = 0;
  const auto putTwo = [&](Pilot pilot) {
    Put(pilot, kToButton, {0, 1});
    pilot.Settle();
    faults::Arm(faults::Site::kTaskAllocation, 0);
  };
  list_ = MakeRecipients({{Nobodys('1'), L"Gone"}});
  ShowAndConfirm(1, putTwo);
  ofOk = faults::Calls(faults::Site::kTaskAllocation);
  ASSERT_GT(ofOk, 2u);
  list_ = MakeRecipients({{Nobodys('1'), L"Gone"}});
  ShowAndCancel(1, [&](Pilot pilot) {
    putTwo(pilot);
    for (std::size_t nth = 1; nth <= ofOk; ++nth) {
      faults::Arm(faults::Site::kTaskAllocation, nth);
      EXPECT_EQ(pilot.BoxAfter(IDOK), 283u) << "at allocation " << nth;
      EXPECT_TRUE(faults::Fired(faults::Site::kTaskAllocation));
    }
  });
  EXPECT_EQ(Result(), Texts{L"Gone/1"});
  list_ = MakeRecipients({{Nobodys('1'), L"Gone"}, {Id("anna"), L"Anna", MAPI_CC}});
  faults::Arm(faults::Site::kTaskAllocation, 0);
  EXPECT_EQ(ShowAnyhow(), MAPI_E_USER_CANCEL);
  const std::size_t ofOpening = faults::Calls(faults::Site::kTaskAllocation);
  ASSERT_GT(ofOpening, 10u);
  for (std::size_t nth = 1; nth <= ofOpening; ++nth) {
    const long objects = faults::LiveObjects();
    const long blocks = faults::LiveTaskBlocks();
    faults::Arm(faults::Site::kTaskAllocation, nth);
    EXPECT_EQ(ShowAnyhow(), MAPI_E_USER_CANCEL) << nth;
    EXPECT_EQ(Result(), (Texts{L"Gone/1", L"Anna/2"}));
    EXPECT_EQ(faults::LiveObjects(), objects) << nth;
    EXPECT_EQ(faults::LiveTaskBlocks(), blocks) << nth;
  }
  faults::Arm(faults::Site::kTaskAllocation, 0);
}

TEST_F(AddressResultTest, ExportChecksItsArguments) {
  auto* const bad = reinterpret_cast<void*>(16);
  auto* const badText = static_cast<wchar_t*>(bad);
  wchar_t* titles[] = {nullptr, badText};
  const auto one = [&](auto change) {
    ADRPARM parameters{};
    parameters.cDestFields = 2;
    parameters.lpulDestComps = types_;
    change(parameters);
    return parameters;
  };
  ADRPARM parameters[] = {
      one([](ADRPARM& p) { p.cDestFields = 4; }),
      one([](ADRPARM& p) { p.lpulDestComps = nullptr; }),
      one([&](ADRPARM& p) { p.lpulDestComps = static_cast<ULONG*>(bad); }),
      one([&](ADRPARM& p) { p.lpszCaption = badText; }),
      one([&](ADRPARM& p) { p.lpszDestWellsTitle = badText; }),
      one([&](ADRPARM& p) { p.lppszDestTitles = static_cast<wchar_t**>(bad); }),
      one([&](ADRPARM& p) { p.lppszDestTitles = titles; }),
  };
  ADRPARM good{};
  ADRLIST* none = nullptr;
  for (ADRPARM& wrong : parameters)
    EXPECT_EQ(OrvAddress(0, world_.book.Get(), &wrong, &none), MAPI_E_INVALID_PARAMETER)
        << &wrong - parameters;
  EXPECT_EQ(OrvAddress(0, nullptr, &good, &none), MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(OrvAddress(0, static_cast<IAddrBook*>(bad), &good, &none), MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(OrvAddress(0, world_.book.Get(), nullptr, &none), MAPI_E_INVALID_PARAMETER);
  for (ADRLIST** list : {static_cast<ADRLIST**>(nullptr), static_cast<ADRLIST**>(bad)})
    EXPECT_EQ(OrvAddress(0, world_.book.Get(), &good, list), MAPI_E_INVALID_PARAMETER);

  // Of the list: itself, then an entry's array, identifier and name.
  const std::function<void(ADRENTRY&)> spoilers[] = {
      [&](ADRENTRY& entry) { entry.rgPropVals = static_cast<SPropValue*>(bad); },
      [&](ADRENTRY& entry) { entry.rgPropVals[1].Value.bin.lpb = static_cast<BYTE*>(bad); },
      [&](ADRENTRY& entry) { entry.rgPropVals[2].Value.lpszW = badText; }};
  ADRLIST* list = static_cast<ADRLIST*>(bad);
  EXPECT_EQ(OrvAddress(0, world_.book.Get(), &good, &list), MAPI_E_INVALID_PARAMETER);
  for (const auto& spoil : spoilers) {
    const AdrListPtr owner = MakeRecipients({{Id("anna"), L"Anna"}});
    list = owner.Get();
    SPropValue* const values = list->aEntries[0].rgPropVals;
    spoil(list->aEntries[0]);
    EXPECT_EQ(OrvAddress(0, world_.book.Get(), &good, &list), MAPI_E_INVALID_PARAMETER) << &spoil - spoilers;
    list->aEntries[0].rgPropVals = values;
  }
}

TEST_F(AddressResultTest, DialogThatCannotBeShownIsAFailedCall) {
  const std::wstring longName(70, L'x');
  ADRLIST* list = MakeRecipients({{Nobodys('1'), longName, MAPI_TO}}).Detach();
  parameters_.cDestFields = 1;
  parameters_.lpulDestComps = types_;
  const HMODULE resources = Resources();
  for (const HMODULE library : {HMODULE{nullptr}, process::Instance()}) {
    process::SetResourceLibrary(library);
    EXPECT_EQ(OrvAddress(0, world_.book.Get(), &parameters_, &list), MAPI_E_CALL_FAILED);
  }
  process::SetResourceLibrary(resources);
  const ULONG_PTR noWindow = 0x7FFFFFF1;
  EXPECT_EQ(OrvAddress(noWindow, world_.book.Get(), &parameters_, &list), MAPI_E_CALL_FAILED);
  list_.Reset(list);
  EXPECT_EQ(Result(), Texts{longName + L"/1"});
}

TEST_F(AddressResultTest, SecondDialogIsRefusedWhileOneIsOpen) {
  HRESULT inner = S_OK;
  world_.company.during["Details"] = [&] {
    ADRPARM parameters{};
    ADRLIST* list = nullptr;
    inner = OrvAddress(0, world_.book.Get(), &parameters, &list);
  };
  ShowAndCancel(0, [&](Pilot pilot) {
    pilot.Select(kEntries, {0});
    pilot.Press(kDetails);
  });
  EXPECT_EQ(inner, MAPI_E_CALL_FAILED);
}

}  // namespace
}  // namespace orv::test
