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
  static void Put(DialogScript& script, HWND dialog, int button, const std::vector<int>& lines) {
    SelectLines(script, dialog, kEntries, lines);
    script.Press(dialog, button);
  }
  // Shows the dialog whatever becomes of it: closes every window that comes.
  HRESULT ShowAnyhow(ULONG wells) {
    std::atomic<bool> returned = false;
    parameters_.cDestFields = wells;
    parameters_.lpulDestComps = types_;
    const DWORD thread = GetCurrentThreadId();
    DialogDriver driver([&](DialogScript&) {
      while (!returned) {
        EnumThreadWindows(
            thread,
            [](HWND window, LPARAM) -> BOOL {
              if (IsWindowVisible(window) && IsWindowEnabled(window))
                PostMessageW(window, WM_COMMAND, IDCANCEL, 0);
              return TRUE;
            },
            0);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
      }
    });
    ADRLIST* list = list_.Detach();
    const HRESULT hr = OrvAddress(0, world_.book.Get(), &parameters_, &list);
    list_.Reset(list);
    returned = true;
    driver.Finish();
    return hr;
  }
};

TEST_F(AddressResultTest, OneEntryMeansExactlyOne) {
  parameters_.ulFlags = ADDRESS_ONE;
  list_ = MakeRecipients({{world_.company.EntryId("dora"), L"Dora", MAPI_BCC}});
  EXPECT_EQ(S_OK, Show(0, [&](DialogScript& script, HWND dialog) {
              EXPECT_EQ(BoxAfter(script, dialog, IDOK), 272u);
              SelectLines(script, dialog, kEntries, {0, 1});
              EXPECT_EQ(BoxAfter(script, dialog, IDOK), 284u);
              SelectLines(script, dialog, kEntries, {2});
              for (const char* operation : {"OpenEntry", "Object:GetProps"}) {
                world_.company.answers[operation] = {MAPI_E_NO_ACCESS};
                EXPECT_EQ(BoxAfter(script, dialog, IDOK), 283u);
                world_.company.answers[operation] = {S_OK, FakeAnswer::Throws::kInteger};
                EXPECT_EQ(BoxAfter(script, dialog, IDOK), 283u);
                world_.company.answers.clear();
              }
              script.Close(dialog, IDOK);
            }));
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
  list_ = MakeRecipients({{world_.company.EntryId("dora"), L"Old name", 77}});
  EXPECT_EQ(S_OK, Show(3, [&](DialogScript& script, HWND dialog) {
              Put(script, dialog, kBccButton, {3});
              Put(script, dialog, kToButton, {0, 2});
              Put(script, dialog, kCcButton, {1});
              Put(script, dialog, kToButton, {0});
              script.Close(dialog, IDOK);
            }));
  EXPECT_EQ(Result(), (Texts{L"Anna/3", L"All of us/3", L"Anna/3", L"Bernd/1", L"Dora/77", L"Carla/77"}));
}

TEST_F(AddressResultTest, EmptyWellsGiveAnEmptyList) {
  EXPECT_EQ(S_OK, Show(1, [](DialogScript& script, HWND dialog) { script.Close(dialog, IDOK); }));
  ASSERT_TRUE(list_);
  EXPECT_EQ(list_->cEntries, 0u);
}

TEST_F(AddressResultTest, EntryThatCannotBeOpenedIsTheCallersOwn) {
  list_ = MakeRecipients({{Nobodys('1'), L"Gone", MAPI_CC},
                          {world_.company.EntryId("dora"), L"Old name", MAPI_TO},
                          {Nobodys('2'), L"Twice", MAPI_TO},
                          {Nobodys('2'), L"Twice again", MAPI_TO}});
  const std::vector<SPropValue*> arrays = Arrays();
  EXPECT_EQ(S_OK, Show(2, [](DialogScript& script, HWND dialog) { script.Close(dialog, IDOK); }));
  EXPECT_EQ(Result(), (Texts{L"Dora/1", L"Twice/1", L"Twice again/1", L"Gone/2"}));
  const std::vector<SPropValue*> after = Arrays();
  EXPECT_EQ(after[1], arrays[2]);
  EXPECT_EQ(after[2], arrays[3]);
  EXPECT_EQ(after[3], arrays[0]);
}

TEST_F(AddressResultTest, ResultThatCannotBeBuiltLeavesAllAsItWas) {
  list_ = MakeRecipients({{Nobodys('1'), L"Gone", MAPI_TO}, {Nobodys('2'), L"Gone too", MAPI_TO}});
  const ADRLIST* before = list_.Get();
  const std::vector<SPropValue*> arrays = Arrays();
  const Steps fail = [&](DialogScript& script, HWND dialog) {
    Put(script, dialog, kToButton, {0});
    for (const FakeAnswer answer :
         {FakeAnswer{MAPI_E_NO_ACCESS}, FakeAnswer{S_OK, FakeAnswer::Throws::kBadAlloc}}) {
      world_.company.answers["OpenEntry"] = answer;
      EXPECT_EQ(BoxAfter(script, dialog, IDOK), 283u);
      // What could not be opened before is back in the caller's list, which is still the old one.
      EXPECT_EQ(script.Items(dialog, kTo), (Texts{L"Gone", L"Gone too", L"Anna"}));
    }
    world_.company.answers.clear();
  };
  ShowAndCancel(1, fail);
  EXPECT_EQ(list_.Get(), before);
  EXPECT_EQ(Arrays(), arrays);
  EXPECT_EQ(S_OK, Show(1, [&](DialogScript& script, HWND dialog) {
              fail(script, dialog);
              script.Close(dialog, IDOK);
            }));
  EXPECT_EQ(Result(), (Texts{L"Gone/1", L"Gone too/1", L"Anna/1"}));
}

TEST_F(AddressResultTest, EveryFailingAllocationIsToldAndLeavesTheList) {
  std::size_t ofOk = 0;
  list_ = MakeRecipients({{Nobodys('1'), L"Gone"}});
  EXPECT_EQ(S_OK, Show(1, [&](DialogScript& script, HWND dialog) {
              Put(script, dialog, kToButton, {0, 1});
              script.Send(dialog, WM_NULL);
              faults::Arm(faults::Site::kTaskAllocation, 0);
              script.Close(dialog, IDOK);
              ofOk = faults::Calls(faults::Site::kTaskAllocation);
            }));
  ASSERT_GT(ofOk, 8u);
  list_ = MakeRecipients({{Nobodys('1'), L"Gone"}});
  ShowAndCancel(1, [&](DialogScript& script, HWND dialog) {
    Put(script, dialog, kToButton, {0, 1});
    for (std::size_t nth = 1; nth <= ofOk; ++nth) {
      faults::Arm(faults::Site::kTaskAllocation, nth);
      const UINT text = BoxAfter(script, dialog, IDOK);
      EXPECT_TRUE(text == 283 || text == 273) << text << " at allocation " << nth;
      EXPECT_TRUE(faults::Fired(faults::Site::kTaskAllocation));
    }
  });
  EXPECT_EQ(Result(), Texts{L"Gone/1"});
  list_ = MakeRecipients({{Nobodys('1'), L"Gone"}, {world_.company.EntryId("anna"), L"Anna", MAPI_CC}});
  faults::Arm(faults::Site::kTaskAllocation, 0);
  EXPECT_EQ(ShowAnyhow(2), MAPI_E_USER_CANCEL);
  const std::size_t ofOpening = faults::Calls(faults::Site::kTaskAllocation);
  ASSERT_GT(ofOpening, 20u);
  std::size_t notShown = 0;
  for (std::size_t nth = 1; nth <= ofOpening; ++nth) {
    const long objects = faults::LiveObjects();
    const long blocks = faults::LiveTaskBlocks();
    faults::Arm(faults::Site::kTaskAllocation, nth);
    const HRESULT hr = ShowAnyhow(2);
    EXPECT_TRUE(hr == MAPI_E_USER_CANCEL || hr == MAPI_E_CALL_FAILED) << std::hex << hr;
    notShown += hr == MAPI_E_CALL_FAILED;
    EXPECT_EQ(Result(), (Texts{L"Gone/1", L"Anna/2"}));
    EXPECT_EQ(faults::LiveObjects(), objects) << nth;
    EXPECT_EQ(faults::LiveTaskBlocks(), blocks) << nth;
  }
  faults::Arm(faults::Site::kTaskAllocation, 0);
  // A dialog whose wells could not be filled is not shown: its OK would lose recipients.
  EXPECT_GE(notShown, 2u);
}

TEST_F(AddressResultTest, ExportChecksItsArguments) {
  ADRPARM good{};
  ADRPARM four{};
  four.cDestFields = 4;
  four.lpulDestComps = types_;
  ADRPARM noTypes{};
  noTypes.cDestFields = 1;
  ADRPARM badTypes = noTypes;
  badTypes.lpulDestComps = reinterpret_cast<ULONG*>(4);
  ADRLIST* none = nullptr;
  ADRLIST* bad = reinterpret_cast<ADRLIST*>(8);
  auto* badBook = reinterpret_cast<IAddrBook*>(16);
  const struct {
    IAddrBook* book;
    ADRPARM* parameters;
    ADRLIST** list;
  } cases[] = {
      {nullptr, &good, &none},
      {badBook, &good, &none},
      {world_.book.Get(), nullptr, &none},
      {world_.book.Get(), &good, nullptr},
      {world_.book.Get(), &good, reinterpret_cast<ADRLIST**>(16)},
      {world_.book.Get(), &good, &bad},
      {world_.book.Get(), &four, &none},
      {world_.book.Get(), &noTypes, &none},
      {world_.book.Get(), &badTypes, &none},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(OrvAddress(0, c.book, c.parameters, c.list), MAPI_E_INVALID_PARAMETER) << &c - cases;
  }
}

TEST_F(AddressResultTest, DialogThatCannotBeShownIsAFailedCall) {
  ADRLIST* list = MakeRecipients({{Nobodys('1'), std::wstring(70, L'x'), MAPI_TO}}).Detach();
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
  EXPECT_EQ(Result(), Texts{std::wstring(70, L'x') + L"/1"});
}

TEST_F(AddressResultTest, SecondDialogIsRefusedWhileOneIsOpen) {
  HRESULT inner = S_OK;
  world_.company.during["Details"] = [&] {
    ADRPARM parameters{};
    ADRLIST* list = nullptr;
    inner = OrvAddress(0, world_.book.Get(), &parameters, &list);
  };
  ShowAndCancel(0, [&](DialogScript& script, HWND dialog) {
    SelectLines(script, dialog, kEntries, {0});
    script.Press(dialog, kDetails);
  });
  EXPECT_EQ(inner, MAPI_E_CALL_FAILED);
}

}  // namespace
}  // namespace orv::test
