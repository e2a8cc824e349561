// What the user does in the Address dialog: type-ahead, wells, details, deleting, new entries.
#include <gtest/gtest.h>

#include <algorithm>

#include "platform/faults.h"
#include "tests/ui/address/address_world.h"

namespace orv::test {
namespace {

class AddressCommandsTest : public AddressTest {
 protected:
  static constexpr int kIntoContainer = 1161;
  static constexpr int kThisMessageOnly = 1162;

  static void SendDeleteKey(DialogScript& script, HWND dialog, int list) {
    script.Post(GetDlgItem(dialog, list), WM_KEYDOWN, VK_DELETE);
  }
  static int Caret(DialogScript& script, HWND dialog, int list) {
    return static_cast<int>(script.Send(GetDlgItem(dialog, list), LB_GETCARETINDEX));
  }
  // Opens the new-entry dialog, lets the steps act in it and waits until it has closed.
  static void InNewEntry(DialogScript& script, HWND dialog, const Steps& steps) {
    script.PostPress(dialog, kNew);
    const HWND question = script.NextDialog();
    steps(script, question);
    script.WaitClosed(question);
    script.WaitEnabled(dialog);
    Settle(script, dialog);
  }
};

using Lines = std::vector<int>;

TEST_F(AddressCommandsTest, TypeAheadSelectsTheFirstNameThatBeginsSo) {
  auto& staff = world_.company.nodes["staff"].contents;
  staff.insert(staff.end(), {"Zoe", "anton"});
  ShowAndCancel(0, [&](DialogScript& script, HWND dialog) {
    const struct {
      const wchar_t* text;
      Lines selected;
    } cases[] = {{L"c", {3}},    {L"an", {0}}, {L"ANT", {5}},       {L"Zoe", {4}},
                 {L"Zoey", {4}}, {L"", {4}},   {L"All of us", {2}}, {L"[no such name", {2}}};
    for (const auto& c : cases) {
      Type(script, dialog, c.text);
      EXPECT_EQ(SelectedLines(script, dialog, kEntries), c.selected) << c.text;
    }
    EXPECT_EQ(Caret(script, dialog, kEntries), 2);
    // Several selected lines give way to the one.
    SelectLines(script, dialog, kEntries, {0, 1, 2});
    Type(script, dialog, L"be");
    EXPECT_EQ(SelectedLines(script, dialog, kEntries), Lines{1});
  });
}

TEST_F(AddressCommandsTest, ButtonsMoveTheSelectionInListOrder) {
  ShowAndCancel(3, [&](DialogScript& script, HWND dialog) {
    const struct {
      int button;
      int well;
      Lines selection;
      Texts lines;
    } cases[] = {{kToButton, kTo, {2, 0}, {L"Anna", L"All of us"}},
                 {kCcButton, kCc, {3}, {L"Carla"}},
                 {kBccButton, kBcc, {0, 1}, {L"Anna", L"Bernd"}},
                 {kToButton, kTo, {0}, {L"Anna", L"All of us", L"Anna"}}};
    for (const auto& c : cases) {
      SelectLines(script, dialog, kEntries, c.selection);
      script.Press(dialog, c.button);
      EXPECT_EQ(script.Items(dialog, c.well), c.lines);
    }
    EXPECT_EQ(script.Items(dialog, kEntries).size(), 4u);
    SelectLines(script, dialog, kEntries, {});
    for (const int button : {kToButton, kCcButton, kBccButton})
      EXPECT_EQ(BoxAfter(script, dialog, button), 272u);
    EXPECT_EQ(script.Items(dialog, kBcc).size(), 2u);
  });
}

TEST_F(AddressCommandsTest, DoubleClickInTheEntriesMovesIntoTheWellOfTheFirstFocus) {
  parameters_.nDestFieldFocus = 1;
  ShowAndCancel(2, [&](DialogScript& script, HWND dialog) {
    script.Focus(dialog, kToButton);
    script.PostDoubleClick(dialog, kEntries, 3);
    Settle(script, dialog);
    EXPECT_EQ(script.Items(dialog, kCc), Texts{L"Carla"});
  });
  EXPECT_TRUE(Calls({"Details"}).empty());
}

TEST_F(AddressCommandsTest, DetailsWantOneEntryOrADoubleClickWithoutWellsOrInTheFirstWell) {
  ShowAndCancel(0, [&](DialogScript& script, HWND dialog) {
    for (const Lines& lines : {Lines{}, Lines{0, 2}}) {
      SelectLines(script, dialog, kEntries, lines);
      EXPECT_EQ(BoxAfter(script, dialog, kDetails), 271u);
    }
    script.PostDoubleClick(dialog, kEntries, 3);
    Settle(script, dialog);
  });
  EXPECT_EQ(Calls({"Details"}).size(), 1u);
  for (const int well : {kTo, kCc, kBcc}) {
    world_.log.lines.clear();
    const LONG type = well - kTo + MAPI_TO;
    list_ = MakeRecipients({{world_.company.EntryId("anna"), L"Anna", type}});
    ShowAndCancel(3, [&](DialogScript& script, HWND dialog) {
      script.PostDoubleClick(dialog, well, 0);
      Settle(script, dialog);
      EXPECT_EQ(SelectedLines(script, dialog, well), Lines{0});
    });
    EXPECT_EQ(Calls({"Details"}).size(), well == kTo ? 1u : 0u) << well;
  }
}

TEST_F(AddressCommandsTest, LineIsReadAgainAfterDetails) {
  world_.company.nodes["staff"].contents.assign(20, "carla");
  world_.company.during["Details"] = [&] { world_.company.nodes["carla"].name = L"Carla Renamed"; };
  ShowAndCancel(0, [&](DialogScript& script, HWND dialog) {
    const HWND box = GetDlgItem(dialog, kEntries);
    SelectLines(script, dialog, kEntries, {7});
    script.Send(box, LB_SETTOPINDEX, 5);
    script.Press(dialog, kDetails);
    const Texts lines = script.Items(dialog, kEntries);
    EXPECT_EQ(lines[7], L"Carla Renamed");
    EXPECT_EQ(std::count(lines.begin(), lines.end(), L"Carla"), 19);
    EXPECT_EQ(SelectedLines(script, dialog, kEntries), Lines{7});
    EXPECT_EQ(script.Send(box, LB_GETTOPINDEX), 5);
    // The dialog's own change is not read a second time; the next change is.
    EXPECT_EQ(EntriesAfterNotice(script, dialog, world_.company), lines);
    EXPECT_EQ(EntriesAfterNotice(script, dialog, world_.company), Texts(20, L"Carla Renamed"));
  });
}

TEST_F(AddressCommandsTest, DetailsThatFailLeaveTheLineUnlessItsEntryIsGone) {
  const Texts all = {L"Anna", L"Bernd", L"All of us", L"Carla"};
  const Texts without = {L"Anna", L"All of us", L"Carla"};
  const auto staff = world_.company.nodes["staff"].contents;
  const struct {
    const char* operation;
    FakeAnswer answer;
    Texts lines;
    bool isOwnChange;  // whose notification is skipped
  } cases[] = {{"Details", {MAPI_E_USER_CANCEL}, all, false},
               {"Details", {S_OK, FakeAnswer::Throws::kInteger}, all, false},
               {"Object:GetProps", {MAPI_E_NO_ACCESS}, all, true},
               {"Object:GetProps", {S_OK, FakeAnswer::Throws::kInteger}, all, true},
               {"OpenEntry", {MAPI_E_NOT_FOUND}, without, true}};
  for (const auto& c : cases) {
    world_.company.nodes["staff"].contents = staff;
    world_.company.during["Details"] = [&] { world_.company.answers[c.operation] = c.answer; };
    ShowAndCancel(0, [&](DialogScript& script, HWND dialog) {
      SelectLines(script, dialog, kEntries, {1});
      script.Press(dialog, kDetails);
      EXPECT_EQ(script.Items(dialog, kEntries), c.lines) << c.operation;
      EXPECT_EQ(SelectedLines(script, dialog, kEntries), Lines{1});
      world_.company.answers.clear();
      world_.company.nodes["staff"].contents = {"dora"};
      EXPECT_EQ(EntriesAfterNotice(script, dialog, world_.company), c.isOwnChange ? c.lines : Texts{L"Dora"})
          << c.operation;
    });
  }
}

TEST_F(AddressCommandsTest, DeletionAsksAndSelectsWhatComesNext) {
  const struct {
    Lines selection;
    std::vector<std::string> deleted;
    Texts left;
    Lines selected;
  } cases[] = {
      {{1}, {"bernd"}, {L"Anna", L"All of us", L"Carla"}, {1}},
      {{3}, {"carla"}, {L"Anna", L"Bernd", L"All of us"}, {2}},
      {{0, 2}, {"anna", "all"}, {L"Bernd", L"Carla"}, {1}},
      {{0, 1}, {"anna", "bernd"}, {L"All of us", L"Carla"}, {1}},
      {{0, 1, 2, 3}, {"anna", "bernd", "all", "carla"}, {}, {}},
      {{}, {}, {L"Anna", L"Bernd", L"All of us", L"Carla"}, {}},
  };
  const auto nodes = world_.company.nodes;
  for (const auto& c : cases) {
    for (const bool byKey : {false, true}) {
      world_.company.nodes = nodes;
      world_.company.deleted.clear();
      ShowAndCancel(0, [&](DialogScript& script, HWND dialog) {
        SelectLines(script, dialog, kEntries, c.selection);
        if (byKey) {
          SendDeleteKey(script, dialog, kEntries);
        } else {
          script.PostPress(dialog, kDelete);
        }
        if (!c.selection.empty()) {
          EXPECT_EQ(AnswerBox(script, dialog, IDYES), 274u);
        }
        Settle(script, dialog);
        EXPECT_EQ(script.Items(dialog, kEntries), c.left);
        EXPECT_EQ(SelectedLines(script, dialog, kEntries), c.selected);
        if (!c.selected.empty()) {
          EXPECT_EQ(Caret(script, dialog, kEntries), c.selected.front());
        }
      });
      EXPECT_EQ(world_.company.deleted, c.deleted);
    }
  }
}

TEST_F(AddressCommandsTest, DeletionThatIsDeclinedOrFailsChangesNothing) {
  const struct {
    int answer;
    FakeAnswer deletion;
  } cases[] = {{IDNO, {}}, {IDYES, {MAPI_E_NO_ACCESS}}, {IDYES, {S_OK, FakeAnswer::Throws::kRuntimeError}}};
  for (const auto& c : cases) {
    world_.company.answers["Object:DeleteEntries"] = c.deletion;
    world_.company.nodes["staff"].contents = {"anna", "bernd"};
    ShowAndCancel(0, [&](DialogScript& script, HWND dialog) {
      SelectLines(script, dialog, kEntries, {0});
      EXPECT_EQ(BoxAfter(script, dialog, kDelete, c.answer), 274u);
      Settle(script, dialog);
      EXPECT_EQ(script.Items(dialog, kEntries), (Texts{L"Anna", L"Bernd"}));
      world_.company.nodes["staff"].contents = {"carla"};
      EXPECT_EQ(EntriesAfterNotice(script, dialog, world_.company), Texts{L"Carla"});
    });
    EXPECT_TRUE(world_.company.deleted.empty());
  }
}

TEST_F(AddressCommandsTest, DeletionsOwnNotificationIsSkippedOnce) {
  world_.company.during["Object:DeleteEntries"] = [&] {
    world_.company.nodes["staff"].contents = {"dora"};
    world_.company.Notify();
  };
  ShowAndCancel(0, [&](DialogScript& script, HWND dialog) {
    SelectLines(script, dialog, kEntries, {0});
    EXPECT_EQ(BoxAfter(script, dialog, kDelete, IDYES), 274u);
    Settle(script, dialog);
    EXPECT_EQ(script.Items(dialog, kEntries), (Texts{L"Bernd", L"All of us", L"Carla"}));
    EXPECT_EQ(EntriesAfterNotice(script, dialog, world_.company), Texts{L"Dora"});
  });
}

TEST_F(AddressCommandsTest, DeleteKeyInAWellTakesTheLinesOnly) {
  const auto anna = world_.company.EntryId("anna");
  list_ = MakeRecipients({{anna, L"1"}, {anna, L"2"}, {anna, L"3"}, {anna, L"4"}});
  ShowAndCancel(2, [&](DialogScript& script, HWND dialog) {
    SelectLines(script, dialog, kTo, {1, 2});
    SendDeleteKey(script, dialog, kTo);
    Settle(script, dialog);
    EXPECT_EQ(script.Items(dialog, kTo), (Texts{L"1", L"4"}));
    EXPECT_EQ(SelectedLines(script, dialog, kTo), Lines{1});
    EXPECT_EQ(Caret(script, dialog, kTo), 1);
    SendDeleteKey(script, dialog, kTo);
    Settle(script, dialog);
    EXPECT_EQ(SelectedLines(script, dialog, kTo), Lines{0});
    // Other keys are the list's own.
    EXPECT_EQ(script.Send(dialog, WM_VKEYTOITEM, MAKEWPARAM(VK_DOWN, 0),
                          reinterpret_cast<LPARAM>(GetDlgItem(dialog, kTo))),
              -1);
  });
  EXPECT_TRUE(world_.company.deleted.empty());
}

TEST_F(AddressCommandsTest, NewEntryOffersWhatCanBeChangedAndIsAddedWhereItsContainerIsShown) {
  world_.personal.nodes["new"].name = L"New one";
  world_.personal.nodes["new"].type = MAPI_DISTLIST;
  const Texts added = {L"Fred", L"New one"};
  const Steps confirm = [](DialogScript& steps, HWND question) { steps.PostPress(question, IDOK); };
  ShowAndCancel(0, [&](DialogScript& script, HWND dialog) {
    InNewEntry(script, dialog, [&](DialogScript& steps, HWND question) {
      EXPECT_EQ(ContainerTexts(steps, question), (Texts{L"Personal", L"  Friends"}));
      EXPECT_EQ(ContainerSelected(steps, question), 1);
      EXPECT_TRUE(IsDlgButtonChecked(question, kIntoContainer));
      EXPECT_FALSE(steps.IsEnabled(question, kThisMessageOnly));
      EXPECT_TRUE(steps.HasFocus(question, kContainers));
      steps.PostPress(question, IDCANCEL);
    });
    EXPECT_TRUE(Calls({"NewEntry"}).empty());
    InNewEntry(script, dialog, confirm);
    EXPECT_EQ(Calls({"NewEntry"}), std::vector<std::string>{"personal.NewEntry"});
    EXPECT_EQ(script.Items(dialog, kEntries).size(), 4u);
    // Not shown, so not the dialog's own change: the next notification counts.
    world_.company.nodes["staff"].contents = {"dora"};
    EXPECT_EQ(EntriesAfterNotice(script, dialog, world_.company), Texts{L"Dora"});
    EntriesOfContainer(script, dialog, 4);
    InNewEntry(script, dialog, confirm);
    EXPECT_EQ(script.Items(dialog, kEntries), added);
    EXPECT_EQ(EntriesAfterNotice(script, dialog, world_.personal), added);
    EXPECT_EQ(EntriesAfterNotice(script, dialog, world_.personal), Texts{L"Fred"});
  });
}

TEST_F(AddressCommandsTest, NewEntryThatFailsOrCannotBeReadIsNotAdded) {
  const struct {
    const char* operation;
    FakeAnswer answer;
  } cases[] = {{"NewEntry", {MAPI_E_USER_CANCEL}},
               {"NewEntry", {S_OK, FakeAnswer::Throws::kRuntimeError}},
               {"Object:GetProps", {MAPI_E_NO_ACCESS}}};
  for (const auto& c : cases) {
    world_.personal.answers.clear();
    ShowAndCancel(0, [&](DialogScript& script, HWND dialog) {
      EntriesOfContainer(script, dialog, 4);
      InNewEntry(script, dialog, [&](DialogScript& steps, HWND question) {
        world_.personal.answers[c.operation] = c.answer;
        steps.PostPress(question, IDOK);
      });
      EXPECT_EQ(script.Items(dialog, kEntries), Texts{L"Fred"});
      world_.personal.nodes["friends"].contents = {"fred", "new"};
      EXPECT_EQ(EntriesAfterNotice(script, dialog, world_.personal).size(), 2u)
          << "the notification was skipped";
      world_.personal.nodes["friends"].contents = {"fred"};
    });
  }
}

// What a provider that pumps messages lets in while it is called: notifications and the user's next actions.
TEST_F(AddressCommandsTest, WhatComesWhileAProviderPumpsMessagesWaitsOrIsDropped) {
  const auto pump = [] {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
  };
  ShowAndCancel(1, [&](DialogScript& script, HWND dialog) {
    const auto misbehave = [&] {
      world_.company.nodes["staff"].contents = {"dora"};
      world_.company.Notify();
      const HWND containers = GetDlgItem(dialog, kContainers);
      SendMessageW(containers, CB_SETCURSEL, 4, 0);
      PostMessageW(dialog, WM_COMMAND, MAKEWPARAM(kContainers, CBN_SELCHANGE), 0);
      for (const int button : {int{kToButton}, IDOK, IDCANCEL})
        PostMessageW(dialog, WM_COMMAND, static_cast<WPARAM>(button), 0);
      PostMessageW(GetDlgItem(dialog, kEntries), WM_KEYDOWN, VK_DELETE, 0);
      pump();
      // Nothing of that has happened yet.
      EXPECT_EQ(SendDlgItemMessageW(dialog, kEntries, LB_GETCOUNT, 0, 0), 4);
      EXPECT_EQ(SendDlgItemMessageW(dialog, kTo, LB_GETCOUNT, 0, 0), 0);
    };
    world_.company.during["Details"] = misbehave;
    SelectLines(script, dialog, kEntries, {0});
    script.Press(dialog, kDetails);
    Settle(script, dialog);
    Settle(script, dialog);
    // The container chosen meanwhile is shown; the buttons pressed meanwhile did nothing.
    EXPECT_EQ(script.Items(dialog, kEntries), Texts{L"Fred"});
    EXPECT_EQ(script.Items(dialog, kTo), Texts{});

    world_.company.nodes["staff"].contents = {"anna", "bernd", "all", "carla"};
    EntriesOfContainer(script, dialog, 1);
    world_.company.during.clear();
    world_.company.during["Object:DeleteEntries"] = misbehave;
    SelectLines(script, dialog, kEntries, {0});
    EXPECT_EQ(BoxAfter(script, dialog, kDelete, IDYES), 274u);
    Settle(script, dialog);
    Settle(script, dialog);
    EXPECT_EQ(script.Items(dialog, kEntries), Texts{L"Fred"});
    EXPECT_EQ(world_.company.deleted, std::vector<std::string>{"anna"});
  });
}

TEST_F(AddressCommandsTest, MemoryThatRunsOutIsToldAndStopsTheCommand) {
  ShowAndCancel(1, [&](DialogScript& script, HWND dialog) {
    SelectLines(script, dialog, kEntries, {0, 1, 2});
    faults::Arm(faults::Site::kTaskAllocation, 2);
    EXPECT_EQ(BoxAfter(script, dialog, kToButton), 273u);
    EXPECT_EQ(script.Items(dialog, kTo), Texts{L"Anna"});

    SelectLines(script, dialog, kEntries, {0});
    faults::Arm(faults::Site::kTaskAllocation, 1);
    EXPECT_EQ(BoxAfter(script, dialog, kDetails), 273u);
    EXPECT_TRUE(Calls({"Details"}).empty());

    InNewEntry(script, dialog, [&](DialogScript& steps, HWND question) {
      faults::Arm(faults::Site::kTaskAllocation, 1);
      EXPECT_EQ(BoxAfter(steps, question, IDOK), 273u);
      steps.PostPress(question, IDCANCEL);
    });
    EXPECT_TRUE(Calls({"NewEntry"}).empty());
  });
  faults::Arm(faults::Site::kTaskAllocation, 0);
}

}  // namespace
}  // namespace orv::test
