// What the Address dialog hands back, and the rules of its export.
#include <gtest/gtest.h>

#include "platform/faults.h"
#include "tests/props/samples.h"
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
  // Shows the dialog whatever becomes of it, and cancels it.
  HRESULT ShowAnyhow() {
    DialogDriver driver(nullptr);
    return Call(2);
  }
};

TEST_F(AddressResultTest, OneEntryMeansExactlyOneThatCanBeRead) {
  parameters_.ulFlags = ADDRESS_ONE;
  list_ = MakeRecipients({{Id("dora"), L"Dora", MAPI_BCC}});
  ShowAndConfirm(0, [&](Pilot pilot) {
    EXPECT_EQ(pilot.BoxAfter(IDOK), Message(272));
    pilot.Select(kEntries, {0, 1});
    EXPECT_EQ(pilot.BoxAfter(IDOK), Message(284));
    pilot.Select(kEntries, {2});
    for (const char* operation : {"OpenEntry", "Object:GetProps"}) {
      for (const auto throws : {Throws::kNothing, Throws::kInteger}) {
        company_.answers[operation] = {MAPI_E_NO_ACCESS, throws};
        EXPECT_EQ(pilot.BoxAfter(IDOK), Message(283));
      }
      company_.answers.clear();
    }
    const std::pair<const char*, FakeLie> lies[] = {{"OpenEntry", FakeLie::kNothing},
                                                    {"Object:GetProps", FakeLie::kNoArray},
                                                    {"Object:GetProps", FakeLie::kShort}};
    for (const auto& lie : lies) {
      company_.lies = {lie};
      EXPECT_EQ(pilot.BoxAfter(IDOK), Message(283));
    }
    company_.lies.clear();
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
    pilot.PressFor({3}, kBccButton);
    pilot.PressFor({0, 2}, kToButton);
    pilot.PressFor({1}, kCcButton);
    pilot.PressFor({0}, kToButton);
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
    pilot.PressFor({0}, kToButton);
    for (const FakeAnswer answer : {FakeAnswer{MAPI_E_NO_ACCESS}, FakeAnswer{S_OK, Throws::kBadAlloc}}) {
      company_.answers["OpenEntry"] = answer;
      EXPECT_EQ(pilot.BoxAfter(IDOK), Message(283));
      // What could not be opened before is back in the caller's list, which is still the old one.
      EXPECT_EQ(pilot.Items(kTo), (Texts{L"Gone", L"Gone too", L"Anna"}));
    }
    company_.answers.clear();
  };
  ShowAndCancel(1, fail);
  EXPECT_EQ(list_.Get(), before);
  EXPECT_EQ(Arrays(), arrays);
  ShowAndConfirm(1, fail);
  EXPECT_EQ(Result(), (Texts{L"Gone/1", L"Gone too/1", L"Anna/1"}));
}

TEST_F(AddressResultTest, EveryFailingAllocationIsToldAndLeavesTheList) {
  const auto putTwo = [&](Pilot pilot) {
    pilot.PressFor({0, 1}, kToButton);
    pilot.Settle();
    faults::Arm(faults::Site::kTaskAllocation, 0);
  };
  list_ = MakeRecipients({{Nobodys('1'), L"Gone"}});
  ShowAndConfirm(1, putTwo);
  const std::size_t ofOk = faults::Calls(faults::Site::kTaskAllocation);
  ASSERT_GT(ofOk, 2u);
  list_ = MakeRecipients({{Nobodys('1'), L"Gone"}});
  ShowAndCancel(1, [&](Pilot pilot) {
    putTwo(pilot);
    for (std::size_t nth = 1; nth <= ofOk; ++nth) {
      faults::Arm(faults::Site::kTaskAllocation, nth);
      EXPECT_EQ(pilot.BoxAfter(IDOK), Message(283)) << "at allocation " << nth;
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
  wchar_t* titles[] = {nullptr, Unreadable()};
  struct Arguments {
    IAddrBook* book;
    ADRPARM values;
    ADRPARM* parameters;
    ADRENTRY& entry;
    ADRLIST* list;
    ADRLIST** out;
  };
  const std::function<void(Arguments&)> spoilers[] = {
      [](Arguments& a) { a.values.cDestFields = 4; },
      [](Arguments& a) { a.values.lpulDestComps = nullptr; },
      [](Arguments& a) { a.values.lpulDestComps = Unreadable(); },
      [](Arguments& a) { a.values.lpszCaption = Unreadable(); },
      [](Arguments& a) { a.values.lpszDestWellsTitle = Unreadable(); },
      [](Arguments& a) { a.values.lppszDestTitles = Unreadable(); },
      [&](Arguments& a) { a.values.lppszDestTitles = titles; },
      [](Arguments& a) { a.book = nullptr; },
      [](Arguments& a) { a.book = Unreadable(); },
      [](Arguments& a) { a.parameters = nullptr; },
      [](Arguments& a) { a.out = nullptr; },
      [](Arguments& a) { a.out = Unreadable(); },
      [](Arguments& a) { a.list = Unreadable(); },
      [](Arguments& a) { a.entry.rgPropVals = Unreadable(); },
      [](Arguments& a) { a.entry.rgPropVals[1].Value.bin.lpb = Unreadable(); },
      [](Arguments& a) { a.entry.rgPropVals[2].Value.lpszW = Unreadable(); }};
  for (const auto& spoil : spoilers) {
    const AdrListPtr list = MakeRecipients({{Id("anna"), L"Anna"}});
    SPropValue* const values = list->aEntries[0].rgPropVals;
    Arguments a{book_.Get(), {}, &a.values, list->aEntries[0], list.Get(), &a.list};
    a.values.cDestFields = 2;
    a.values.lpulDestComps = types_;
    spoil(a);
    EXPECT_EQ(OrvAddress(0, a.book, a.parameters, a.out), MAPI_E_INVALID_PARAMETER) << &spoil - spoilers;
    list->aEntries[0].rgPropVals = values;
  }
}

TEST_F(AddressResultTest, DialogThatCannotBeShownIsAFailedCall) {
  const std::wstring longName(70, L'x');
  list_ = MakeRecipients({{Nobodys('1'), longName, MAPI_TO}});
  const HMODULE resources = Resources();
  for (const HMODULE library : {HMODULE{nullptr}, process::Instance()}) {
    process::SetResourceLibrary(library);
    EXPECT_EQ(Call(1), MAPI_E_CALL_FAILED);
  }
  process::SetResourceLibrary(resources);
  const ULONG_PTR noWindow = 0x7FFFFFF1;
  EXPECT_EQ(Call(1, reinterpret_cast<HWND>(noWindow)), MAPI_E_CALL_FAILED);
  EXPECT_EQ(Result(), Texts{longName + L"/1"});
}

TEST_F(AddressResultTest, SecondDialogIsRefusedWhileOneIsOpen) {
  HRESULT inner = S_OK;
  company_.during["Details"] = [&] {
    ADRPARM parameters{};
    ADRLIST* list = nullptr;
    inner = OrvAddress(0, book_.Get(), &parameters, &list);
  };
  ShowAndCancel(0, [&](Pilot pilot) { pilot.PressFor({0}, kDetails); });
  EXPECT_EQ(inner, MAPI_E_CALL_FAILED);
}

TEST_F(AddressResultTest, SessionThatEndsOnAnotherThreadWaitsForTheDialog) {
  std::atomic<bool> ended{false};
  std::thread end;
  ShowAndConfirm(1, [&](Pilot pilot) {
    end = std::thread([&] {
      book_->Shutdown();
      ended = true;
    });
    ULONG type = 0;
    ComPtr<IUnknown> root;
    const auto isRefused = [&] {
      return book_->OpenEntry(0, nullptr, nullptr, 0, &type, root.Put()) == MAPI_E_END_OF_SESSION;
    };
    pilot.script.WaitUntil(isRefused, "calls of other threads are refused");
    pilot.PressFor({0}, kToButton);
    EXPECT_FALSE(ended);
  });
  end.join();
  EXPECT_EQ(Result(), Texts{L"Anna/1"}) << "the dialog itself went on as ever";
}

}  // namespace
}  // namespace orv::test
