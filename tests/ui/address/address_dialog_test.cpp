// The Address dialog as it opens and as it follows its container: drop-down, entries, wells, focus, notifications.
#include <gtest/gtest.h>

#include "tests/ui/address/address_world.h"
#include "ui/address/advise_sink.h"
#include "ui/window_utils.h"

namespace orv::test {
namespace {

using AddressDialogTest = AddressTest;

const std::vector<std::wstring> kStaff = {L"Anna", L"Bernd", L"All of us", L"Carla"};

TEST_F(AddressDialogTest, OpensCentredWithContainersAndTheEntriesOfTheDefaultDirectory) {
  ShowAndCancel(0, [&](DialogScript& script, HWND dialog) {
    EXPECT_EQ(ContainerTexts(script, dialog),
              (Texts{L"Company", L"  Staff", L"    Night shift", L"Personal", L"  Friends"}));
    EXPECT_EQ(ContainerSelected(script, dialog), 1);
    EXPECT_EQ(script.Items(dialog, kEntries), kStaff);
    EXPECT_EQ(script.Send(GetDlgItem(dialog, kTypeAhead), EM_GETLIMITTEXT), 64);
    EXPECT_NE(script.Send(dialog, WM_GETICON, ICON_SMALL), 0);
    const RECT place = ui::WindowRectangle(dialog);
    const POINT origin = ui::CentredOrigin(place, ui::WindowRectangle(GetDesktopWindow()));
    EXPECT_EQ(place.left, origin.x);
    EXPECT_EQ(place.top, origin.y);
  });
}

TEST_F(AddressDialogTest, TextsAreTheCallersWhereItGivesAny) {
  wchar_t caption[] = L"Who gets it?";
  wchar_t title[] = L"Those who get it";
  for (const bool areGiven : {false, true}) {
    parameters_.lpszCaption = areGiven ? caption : nullptr;
    parameters_.lpszDestWellsTitle = areGiven ? title : nullptr;
    ShowAndCancel(1, [&](DialogScript&, HWND dialog) {
      EXPECT_EQ(WindowText(dialog) == caption, areGiven);
      EXPECT_EQ(WindowText(GetDlgItem(dialog, kTitle)) == title, areGiven);
      EXPECT_NE(WindowText(dialog), L"");
    });
  }
}

TEST_F(AddressDialogTest, WellsAndFocusFollowTheirNumber) {
  const struct {
    ULONG wells;
    ULONG focus;
    int focused;
  } cases[] = {{0, 0, kContainers}, {0, 2, kContainers}, {1, 0, kToButton},  {1, 1, kToButton},
               {2, 1, kCcButton},   {2, 2, kToButton},   {3, 2, kBccButton}, {3, 0xFFFFFFFF, kToButton}};
  for (const auto& c : cases) {
    parameters_.nDestFieldFocus = c.focus;
    ShowAndCancel(c.wells, [&](DialogScript& script, HWND dialog) {
      for (int well = 0; well < 3; ++well)
        EXPECT_EQ(GetDlgItem(dialog, kTo + well) != nullptr, well < static_cast<int>(c.wells)) << c.wells;
      EXPECT_TRUE(script.HasFocus(dialog, c.focused)) << c.wells << " wells, focus " << c.focus;
    });
  }
}

TEST_F(AddressDialogTest, CallersListFillsTheWellsByRecipientType) {
  const auto id = [&](const char* key) { return world_.company.EntryId(key); };
  list_ = MakeRecipients({{id("anna"), L"Anna", MAPI_CC},
                          {id("bernd"), L"Bernd", MAPI_TO},
                          {id("all"), L"All", MAPI_CC, 0, MAPI_DISTLIST},
                          {id("carla"), L"Carla", 77},
                          {id("dora"), L"no identifier", MAPI_TO, PR_ENTRYID},
                          {id("emil"), L"no name", MAPI_TO, PR_DISPLAY_NAME_W},
                          {id("emil"), L"no type", MAPI_TO, PR_RECIPIENT_TYPE},
                          {id("emil"), L"no kind", MAPI_TO, PR_OBJECT_TYPE}});
  types_[0] = MAPI_BCC;
  types_[1] = MAPI_TO;
  types_[2] = MAPI_CC;
  ShowAndCancel(3, [&](DialogScript& script, HWND dialog) {
    EXPECT_EQ(script.Items(dialog, kTo), Texts{});
    EXPECT_EQ(script.Items(dialog, kCc), (Texts{L"Bernd", L"no kind"}));
    EXPECT_EQ(script.Items(dialog, kBcc), (Texts{L"Anna", L"All"}));
  });
  EXPECT_EQ(list_->cEntries, 8u);
}

TEST_F(AddressDialogTest, LongNamesAreCutInTheCallersOwnBuffer) {
  const std::wstring name64(64, L'x');
  const std::wstring start(61, L'y');
  const auto id = world_.company.EntryId("anna");
  list_ = MakeRecipients({{id, name64}, {id, start + L"1234"}, {id, start + std::wstring(139, L'1')}});
  ShowAndCancel(1, [&](DialogScript& script, HWND dialog) {
    EXPECT_EQ(script.Items(dialog, kTo), (Texts{name64, start + L"...", start + L"..."}));
  });
  EXPECT_EQ(Result(), (Texts{name64 + L"/1", start + L".../1", start + L".../1"}));
}

TEST_F(AddressDialogTest, SwitchingClosesTheOldContainerBeforeTheNewOneIsRead) {
  ShowAndCancel(0, [&](DialogScript& script, HWND dialog) {
    ASSERT_EQ(world_.company.advises.size(), 1u);
    EXPECT_EQ(world_.company.advises[0].key, "staff");
    EXPECT_NE(world_.company.advises[0].events & fnevTableModified, 0u);
    world_.log.lines.clear();
    EXPECT_EQ(EntriesOfContainer(script, dialog, 4), Texts{L"Fred"});
    EXPECT_EQ(Calls({"OpenEntry", "Unadvise", "Object:GetContentsTable", "Advise"}),
              (std::vector<std::string>{"personal.OpenEntry", "company.Unadvise",
                                        "personal.Object:GetContentsTable", "personal.Advise"}));
    // The same one again is no switch.
    world_.log.lines.clear();
    ChooseContainer(script, dialog, 4);
    Settle(script, dialog);
    EXPECT_TRUE(world_.log.lines.empty());
  });
  EXPECT_EQ(Calls({"Unadvise"}), std::vector<std::string>{"personal.Unadvise"});
}

TEST_F(AddressDialogTest, ContainerThatCannotBeOpenedShowsNothingAndMayBeTriedAgain) {
  ShowAndCancel(0, [&](DialogScript& script, HWND dialog) {
    world_.personal.answers["OpenEntry"] = {MAPI_E_NO_ACCESS};
    for (int attempt = 0; attempt < 2; ++attempt) {
      ChooseContainer(script, dialog, 4);
      EXPECT_EQ(AnswerBox(script, dialog), 283u);
      EXPECT_EQ(script.Items(dialog, kEntries), Texts{});
      EXPECT_TRUE(world_.company.advises.empty());
    }
    world_.personal.answers.clear();
    EXPECT_EQ(EntriesOfContainer(script, dialog, 4), Texts{L"Fred"});
  });
}

TEST_F(AddressDialogTest, RowsBeforeAFailingOneAreShown) {
  world_.company.nodes["staff"].contents.assign(700, "anna");
  const struct {
    const char* operation;
    std::size_t succeeding;  // calls for the contents before the failing ones
    std::size_t lines;
  } cases[] = {{"Object:GetContentsTable", 0, 0}, {"Table:SetColumns", 0, 0},  {"Table:GetRowCount", 0, 700},
               {"Table:QueryRows", 0, 0},         {"Table:QueryRows", 1, 256}, {"Table:QueryRows", 2, 512},
               {"Table:QueryRows", 999, 700}};
  for (const auto& c : cases) {
    // The hierarchy is read from a table too; only what comes after the contents table counts.
    bool isContents = false;
    std::size_t calls = 0;
    world_.company.answers.clear();
    const auto count = [&] {
      if (isContents && calls++ >= c.succeeding) world_.company.answers[c.operation] = {MAPI_E_CALL_FAILED};
    };
    world_.company.during[c.operation] = count;
    world_.company.during["Object:GetContentsTable"] = [&] {
      isContents = true;
      if (c.operation == std::string("Object:GetContentsTable")) count();
    };
    ShowAndCancel(0, [&](DialogScript& script, HWND dialog) {
      const LRESULT lines = script.Send(GetDlgItem(dialog, kEntries), LB_GETCOUNT);
      EXPECT_EQ(static_cast<std::size_t>(lines), c.lines) << c.operation << " " << c.succeeding;
    });
    world_.company.during.clear();
  }
}

// One bad row is asked for alone in the end, so all before it are there.
TEST_F(AddressDialogTest, FailingBlockIsReadRowByRow) {
  world_.company.nodes["staff"].contents.assign(700, "anna");
  int calls = 0;
  world_.company.during["Object:GetContentsTable"] = [&] {
    world_.company.during["Table:QueryRows"] = [&] {
      // The second block fails, its single rows do until the 21st.
      ++calls;
      const bool fails = calls == 2 || calls == 23;
      world_.company.answers["Table:QueryRows"] = {fails ? MAPI_E_CALL_FAILED : S_OK};
    };
  };
  ShowAndCancel(0, [&](DialogScript& script, HWND dialog) {
    EXPECT_EQ(script.Send(GetDlgItem(dialog, kEntries), LB_GETCOUNT), 256 + 20);
  });
}

TEST_F(AddressDialogTest, SinkThatIsKeptNotifiesNobodyOnceTheDialogIsGone) {
  ComPtr<IMAPIAdviseSink> sink;
  ShowAndCancel(0, [&](DialogScript&, HWND) {
    sink = ComPtr<IMAPIAdviseSink>::Share(world_.company.advises.at(0).sink);
  });
  EXPECT_EQ(sink->OnNotify(1, nullptr), static_cast<ULONG>(S_OK));
  MSG message;
  EXPECT_FALSE(PeekMessageW(&message, nullptr, WM_COMMAND, WM_COMMAND, PM_REMOVE));
}

TEST_F(AddressDialogTest, ProviderThatThrowsLeavesItsPartOfTheDialogEmpty) {
  list_ = MakeRecipients({{world_.company.EntryId("anna"), L"Anna"}});
  const struct {
    const char* operation;
    std::size_t containers;
    std::size_t entries;
  } cases[] = {{"GetProps", 2, 0},
               {"OpenEntry", 3, 1},
               {"Object:GetHierarchyTable", 3, 0},
               {"Object:GetContentsTable", 5, 0},
               {"Table:QueryRows", 3, 0},
               {"Advise", 5, 4}};
  for (const auto& c : cases) {
    world_.company.answers.clear();
    std::vector<BYTE> staff = world_.company.EntryId("staff");
    world_.book->SetDefaultDir(static_cast<ULONG>(staff.size()), reinterpret_cast<ENTRYID*>(staff.data()));
    world_.company.answers = {{c.operation, {S_OK, FakeAnswer::Throws::kRuntimeError}}};
    ShowAndCancel(1, [&](DialogScript& script, HWND dialog) {
      EXPECT_EQ(ContainerTexts(script, dialog).size(), c.containers) << c.operation;
      EXPECT_EQ(script.Items(dialog, kEntries).size(), c.entries) << c.operation;
      EXPECT_EQ(script.Items(dialog, kTo), Texts{L"Anna"});
      EXPECT_TRUE(script.HasFocus(dialog, kToButton));
    });
  }
}

// Its owner is destroyed in the middle of a provider's call, which then comes back to a dialog that is gone.
TEST_F(AddressDialogTest, GoesWithItsOwner) {
  const Steps choose = [](DialogScript& script, HWND dialog) { ChooseContainer(script, dialog, 2); };
  const Steps details = [](DialogScript& script, HWND dialog) { script.PostPress(dialog, kDetails); };
  const struct {
    AddressScript& provider;
    const char* call;
    Steps act;
  } cases[] = {
      {world_.company, "Details", details},
      {world_.company, "Object:GetContentsTable", choose},
      {world_.company, "Table:QueryRows", choose},
      {world_.personal, "NewEntry",
       [](DialogScript& script, HWND dialog) {
         EntriesOfContainer(script, dialog, 4);
         script.PostPress(dialog, kNew);
         script.PostPress(script.NextDialog(), IDOK);
       }},
      {world_.company, "OpenEntry",
       [](DialogScript& script, HWND dialog) { script.PostPress(dialog, IDOK); }},
      {world_.company, "Object:DeleteEntries",
       [](DialogScript& script, HWND dialog) {
         script.PostPress(dialog, kDelete);
         script.AnswerBox(IDYES);
       }},
  };
  for (const auto& c : cases) {
    const HWND owner =
        CreateWindowW(L"STATIC", L"", WS_OVERLAPPED, 0, 0, 10, 10, nullptr, nullptr, nullptr, nullptr);
    list_ = MakeRecipients({{world_.company.EntryId("anna"), L"Anna"}});
    DialogDriver driver([&](DialogScript& script) {
      const HWND dialog = script.NextDialog();
      SelectLines(script, dialog, kEntries, {0});
      c.provider.during[c.call] = [&] { DestroyWindow(owner); };
      c.act(script, dialog);
      script.WaitClosed(dialog);
    });
    parameters_.cDestFields = 1;
    parameters_.lpulDestComps = types_;
    ADRLIST* list = list_.Detach();
    EXPECT_EQ(OrvAddress(reinterpret_cast<ULONG_PTR>(owner), world_.book.Get(), &parameters_, &list),
              MAPI_E_CALL_FAILED);
    driver.Finish();
    list_.Reset(list);
    EXPECT_EQ(Result(), Texts{L"Anna/1"}) << c.call;
    EXPECT_FALSE(IsWindow(owner));
    EXPECT_TRUE(world_.company.advises.empty() && world_.personal.advises.empty()) << c.call;
    c.provider.during.clear();
  }
}

TEST(AdviseSink, EveryNotificationIsOneCommandUntilTheWindowGoes) {
  const HWND window = CreateWindowW(L"STATIC", L"", 0, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
  const ComPtr<ui::CAdviseSink> sink = ui::CAdviseSink::Create(window);
  const auto commandsAfter = [&](ULONG notifications) {
    EXPECT_EQ(sink->OnNotify(notifications, nullptr), static_cast<ULONG>(S_OK));
    int count = 0;
    MSG message;
    while (PeekMessageW(&message, window, WM_COMMAND, WM_COMMAND, PM_REMOVE)) count += message.wParam == 1208;
    return count;
  };
  for (const auto& [notifications, commands] : {std::pair{0u, 0}, {1u, 1}, {5u, 1}})
    EXPECT_EQ(commandsAfter(notifications), commands);
  sink->Detach();
  EXPECT_EQ(commandsAfter(1), 0);
  DestroyWindow(window);
}

TEST_F(AddressDialogTest, DropDownTakesOddRows) {
  world_.company.nodes["staff"].name = std::wstring(200, L's');
  world_.company.nodes["night"].depth = 500;
  world_.personal.nodes["friends"].depth = 0xFFFFFFFE;
  ShowAndCancel(0, [&](DialogScript& script, HWND dialog) {
    const Texts texts = ContainerTexts(script, dialog);
    ASSERT_EQ(texts.size(), 5u);
    EXPECT_EQ(texts[1], L"  " + std::wstring(125, L's'));
    EXPECT_EQ(texts[2], std::wstring(127, L' '));
    EXPECT_EQ(texts[4], std::wstring(127, L' '));
  });
}

}  // namespace
}  // namespace orv::test
