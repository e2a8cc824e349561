// What the user does in the Address dialog: type-ahead, wells, details, deleting, new entries.
#include <gtest/gtest.h>

#include "platform/faults.h"
#include "tests/support/failing_new.h"
#include "tests/ui/address/address_world.h"

namespace orv::test {
namespace {

using AddressCommandsTest = AddressTest;

TEST_F(AddressCommandsTest, TypeAheadSelectsTheFirstNameThatBeginsSo) {
  auto& staff = company_.nodes["staff"].contents;
  staff.insert(staff.end(), {"Zoe", "anton"});
  ShowAndCancel(0, [&](Pilot pilot) {
    const struct {
      Lines before;
      const wchar_t* text;
      Lines selected;
    } cases[] = {
        {{}, L"c", {3}},        {{3}, L"an", {0}}, {{0}, L"ANT", {5}},       {{5}, L"Zoe", {4}},
        {{4}, L"Zoey", {4}},    {{4}, L"", {4}},   {{4}, L"All of us", {2}}, {{2}, L"[no such name", {2}},
        {{0, 1, 2}, L"be", {1}}};
    for (const auto& c : cases) {
      pilot.Select(kEntries, c.before);
      pilot.Send(kTypeAhead, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(c.text));
      EXPECT_EQ(pilot.Selected(kEntries), c.selected) << c.text;
    }
    EXPECT_EQ(pilot.Send(kEntries, LB_GETCARETINDEX), 1);
  });
}

TEST_F(AddressCommandsTest, ButtonsAndDoubleClicksMoveTheSelectionInListOrder) {
  parameters_.nDestFieldFocus = 1;
  ShowAndCancel(3, [&](Pilot pilot) {
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
      pilot.PressFor(c.selection, c.button);
      EXPECT_EQ(pilot.Items(c.well), c.lines);
    }
    EXPECT_EQ(pilot.Items(kEntries).size(), 4u);
    pilot.Select(kEntries, {});
    for (const int button : {kToButton, kCcButton, kBccButton})
      EXPECT_EQ(pilot.BoxAfter(button), Message(272));
    // Into the well that had the focus first, wherever it is now.
    pilot.script.Focus(pilot.dialog, kToButton);
    pilot.DoubleClick(kEntries, 3);
    EXPECT_EQ(pilot.Items(kCc), (Texts{L"Carla", L"Carla"}));
  });
  EXPECT_TRUE(Calls({"Details"}).empty());
}

TEST_F(AddressCommandsTest, DetailsWantOneEntryOrADoubleClickWithoutWellsOrInTheFirstWell) {
  ShowAndCancel(0, [&](Pilot pilot) {
    for (const Lines& lines : {Lines{}, Lines{0, 2}}) {
      pilot.Select(kEntries, lines);
      EXPECT_EQ(pilot.BoxAfter(kDetails), Message(271));
    }
    pilot.DoubleClick(kEntries, 3);
  });
  EXPECT_EQ(Calls({"Details"}).size(), 1u);
  for (const int well : {kTo, kCc, kBcc}) {
    log_.lines.clear();
    list_ = MakeRecipients({{Id("anna"), L"Anna", well - kTo + MAPI_TO}});
    ShowAndCancel(3, [&](Pilot pilot) {
      pilot.DoubleClick(well, 0);
      EXPECT_EQ(pilot.Selected(well), Lines{0});
    });
    EXPECT_EQ(Calls({"Details"}).size(), well == kTo ? 1u : 0u) << well;
  }
}

TEST_F(AddressCommandsTest, LineIsReadAgainAfterDetailsInItsPlace) {
  company_.nodes["staff"].contents.assign(20, "carla");
  company_.during["Details"] = [&] { company_.nodes["carla"].name = L"Carla Renamed"; };
  ShowAndCancel(0, [&](Pilot pilot) {
    pilot.Send(kEntries, LB_SETTOPINDEX, 5);
    pilot.PressFor({7}, kDetails);
    Texts lines(20, L"Carla");
    lines[7] = L"Carla Renamed";
    EXPECT_EQ(pilot.Items(kEntries), lines);
    EXPECT_EQ(pilot.Selected(kEntries), Lines{7});
    EXPECT_EQ(pilot.Send(kEntries, LB_GETTOPINDEX), 5);
  });
}

// The notification of what an action changed is not followed, once; an action that changed nothing ends that.
TEST_F(AddressCommandsTest, NotificationIsSkippedAsTheLastActionCameOut) {
  const Steps details = [](Pilot pilot) { pilot.Press(kDetails); };
  const auto removing = [](int answer) -> Steps {
    return [=](Pilot pilot) { EXPECT_EQ(pilot.BoxAfter(kDelete, answer), Message(274)); };
  };
  const auto making = [](int answer) -> Steps { return [=](Pilot pilot) { pilot.AnswerNewEntry(answer); }; };
  const Steps makeElsewhere = [](Pilot pilot) {
    pilot.InNewEntry([](Pilot question) {
      question.Send(kContainers, CB_SETCURSEL, 0);
      question.PostPress(IDOK);
    });
  };
  const auto fail = [&](const char* operation, FakeAnswer answer, const Steps& steps) -> Steps {
    return [=, this](Pilot pilot) {
      personal_.answers = {{operation, answer}};
      steps(pilot);
      pilot.Settle();
      personal_.answers.clear();
    };
  };
  const auto told = [&](int control, int steps) -> Steps {
    return [=](Pilot pilot) {
      pilot.PostPress(control);
      for (int step = 1; step < steps; ++step)
        pilot.script.PostPress(pilot.script.NextDialog(), control == kNew ? IDOK : IDYES);
      EXPECT_NE(pilot.AnswerBox(), L"");
    };
  };
  const FakeAnswer throwing{S_OK, Throws::kInteger};
  const Texts fred = {L"Fred"}, gina = {L"Gina"}, all = {L"Fred", L"Gina"};
  const struct {
    const char* name;
    Steps action;
    Texts lines;
    bool isChange;
  } cases[] = {
      {"details", details, all, true},
      {"details cancelled", fail("Details", {MAPI_E_USER_CANCEL}, details), all, false},
      {"details throw", fail("Details", throwing, told(kDetails, 1)), all, false},
      {"details, then no name", fail("Object:GetProps", {MAPI_E_NO_ACCESS}, details), all, true},
      {"details, then an entry that is gone", fail("OpenEntry", {MAPI_E_NOT_FOUND}, details), gina, true},
      {"deletion", removing(IDYES), gina, true},
      {"deletion declined", removing(IDNO), all, false},
      {"deletion throws", fail("Object:DeleteEntries", throwing, told(kDelete, 2)), all, false},
      {"new entry", making(IDOK), {L"Fred", L"Gina", L"New one"}, true},
      {"new entry cancelled", making(IDCANCEL), all, false},
      {"new entry throws", fail("NewEntry", throwing, told(kNew, 2)), all, false},
      {"new entry, but no name", fail("Object:GetProps", {MAPI_E_NO_ACCESS}, making(IDOK)), all, false},
      {"new entry elsewhere", makeElsewhere, all, false},
  };
  auto& nodes = personal_.nodes;
  nodes["gina"].name = L"Gina";
  nodes["new"].name = L"New one";
  const auto before = nodes;
  for (const bool afterAChange : {false, true}) {
    for (const auto& c : cases) {
      nodes = before;
      nodes["friends"].contents = {"fred", "gina"};
      ShowAndCancel(0, [&](Pilot pilot) {
        pilot.EntriesOf(4);
        pilot.Select(kEntries, {0});
        if (afterAChange) details(pilot);
        c.action(pilot);
        pilot.Settle();
        EXPECT_EQ(pilot.Items(kEntries), c.lines) << c.name;
        nodes["friends"].contents = {"fred"};
        nodes["fred"].name = L"Fred";
        EXPECT_EQ(pilot.EntriesAfterNotice(personal_), c.isChange ? c.lines : fred) << c.name << afterAChange;
        EXPECT_EQ(pilot.EntriesAfterNotice(personal_), fred) << c.name;
      });
    }
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
      {{0, 1, 2, 3}, {"anna", "bernd", "all", "carla"}, {}, {}},
      {{}, {}, {L"Anna", L"Bernd", L"All of us", L"Carla"}, {}},
  };
  const auto nodes = company_.nodes;
  for (const auto& c : cases) {
    for (const bool byKey : {false, true}) {
      company_.nodes = nodes;
      company_.deleted.clear();
      ShowAndCancel(0, [&](Pilot pilot) {
        pilot.Select(kEntries, c.selection);
        byKey ? pilot.DeleteKey(kEntries) : pilot.PostPress(kDelete);
        if (!c.selection.empty()) {
          EXPECT_EQ(pilot.AnswerBox(IDYES), Message(274));
        }
        pilot.Settle();
        EXPECT_EQ(pilot.Items(kEntries), c.left);
        EXPECT_EQ(pilot.Selected(kEntries), c.selected);
        if (!c.selected.empty()) {
          EXPECT_EQ(pilot.Send(kEntries, LB_GETCARETINDEX), c.selected.front());
        }
      });
      EXPECT_EQ(company_.deleted, c.deleted);
    }
  }
}

// What fails at a provider, and what the user reads of it.
TEST_F(AddressCommandsTest, FailureIsToldWithItsReason) {
  constexpr UINT kNone = 0, kCode = 305;
  const struct {
    int button;
    const char* operation;
    HRESULT result;
    UINT reason;
  } cases[] = {
      {kDelete, "Object:DeleteEntries", MAPI_E_NO_ACCESS, 294},
      {kDelete, "Object:DeleteEntries", MAPI_E_NO_SUPPORT, 295},
      {kNew, "NewEntry", MAPI_E_NO_SUPPORT, 296},
      {kDetails, "Details", MAPI_E_NO_SUPPORT, 297},
      {kDetails, "Details", MAPI_E_NOT_FOUND, 298},
      {kNew, "NewEntry", MAPI_E_NOT_ENOUGH_DISK, 299},
      {kDelete, "Object:DeleteEntries", MAPI_E_BUSY, 300},
      {kDetails, "Details", MAPI_E_CORRUPT_STORE, 301},
      {kDetails, "Details", MAPI_E_OBJECT_CHANGED, 304},
      {kNew, "NewEntry", MAPI_E_VERSION, kCode},
      {kNew, "NewEntry", MAPI_E_USER_CANCEL, kNone},
      {kDetails, "Details", MAPI_E_USER_CANCEL, kNone},
      {kDelete, "Object:DeleteEntries", MAPI_E_USER_CANCEL, kNone},
  };
  personal_.words[MAPI_E_DISK_ERROR] = L"The disk in drive B is gone.";
  ShowAndCancel(0, [&](Pilot pilot) {
    pilot.EntriesOf(4);
    // The text of the box that a button led to; none where there was none.
    const auto box = [&](int button) -> std::wstring {
      pilot.Select(kEntries, {0});
      pilot.PostPress(button);
      if (button != kDetails) pilot.script.Close(pilot.script.NextDialog(), button == kNew ? IDOK : IDYES);
      pilot.Settle();
      return IsWindowEnabled(pilot.dialog) ? L"" : pilot.AnswerBox();
    };
    const auto failed = [](int button) {
      return Message(button == kDelete ? 289 : button == kNew ? 290 : 291) + L"\n";
    };
    for (const auto& c : cases) {
      personal_.answers = {{c.operation, {c.result}}};
      std::wstring reason = c.reason == kNone ? L"" : failed(c.button) + Message(c.reason);
      if (c.reason == kCode) reason.replace(reason.find(L"%1"), 2, L"0x80040110");
      EXPECT_EQ(box(c.button), reason) << c.operation << std::hex << c.result;
      EXPECT_EQ(pilot.Items(kEntries), Texts{L"Fred"});
    }
    const FakeAnswer gone{MAPI_E_DISK_ERROR};
    personal_.answers = {{"Object:DeleteEntries", gone}, {"NewEntry", gone}, {"Details", gone}};
    for (const int button : {int{kDelete}, int{kNew}, int{kDetails}})
      EXPECT_EQ(box(button), failed(button) + L"The disk in drive B is gone.");
    personal_.answers.clear();
  });
}

TEST_F(AddressCommandsTest, EntriesThatStayAreCountedAndShown) {
  company_.answers["Object:DeleteEntries"] = {MAPI_W_PARTIAL_COMPLETION};
  const auto nodes = company_.nodes;
  const struct {
    std::set<std::string> kept;
    std::wstring told;
    Texts left;
  } cases[] = {{{"bernd"}, Message(292), {L"Bernd", L"Carla"}},
               {{"anna", "bernd"}, L"2" + Message(293).substr(2), {L"Anna", L"Bernd", L"Carla"}},
               {{}, L"", {L"Carla"}}};
  for (const auto& c : cases) {
    company_.nodes = nodes;
    company_.kept = c.kept;
    ShowAndCancel(0, [&](Pilot pilot) {
      pilot.Select(kEntries, {0, 1, 2});
      pilot.PostPress(kDelete);
      pilot.script.Close(pilot.script.NextDialog(), IDYES);
      if (!c.told.empty()) {
        EXPECT_EQ(pilot.AnswerBox(), c.told);
      }
      pilot.Settle();
      EXPECT_EQ(pilot.Items(kEntries), c.left);
    });
  }
}

TEST_F(AddressCommandsTest, DeleteKeyInAWellTakesTheLinesOnly) {
  list_ = MakeRecipients({{Id("anna"), L"1"}, {Id("anna"), L"2"}, {Id("anna"), L"3"}, {Id("anna"), L"4"}});
  ShowAndCancel(2, [&](Pilot pilot) {
    pilot.Select(kTo, {1, 2});
    pilot.DeleteKey(kTo);
    pilot.Settle();
    EXPECT_EQ(pilot.Items(kTo), (Texts{L"1", L"4"}));
    EXPECT_EQ(pilot.Selected(kTo), Lines{1});
    EXPECT_EQ(pilot.Send(kTo, LB_GETCARETINDEX), 1);
    // Other keys are the list's own.
    EXPECT_EQ(pilot.script.Send(pilot.dialog, WM_VKEYTOITEM, MAKEWPARAM(VK_DOWN, 0),
                                reinterpret_cast<LPARAM>(pilot.Item(kTo))),
              -1);
  });
  EXPECT_TRUE(company_.deleted.empty());
}

TEST_F(AddressCommandsTest, NewEntryOffersWhatCanBeChangedAndThePersonalAddressBookFirst) {
  ShowAndCancel(0, [&](Pilot pilot) {
    pilot.InNewEntry([&](Pilot question) {
      EXPECT_EQ(question.Containers(), (Texts{L"Personal", L"  Friends"}));
      EXPECT_EQ(question.Container(), 1);
      EXPECT_TRUE(IsDlgButtonChecked(question.dialog, kIntoContainer));
      EXPECT_FALSE(question.script.IsEnabled(question.dialog, kThisMessageOnly));
      EXPECT_TRUE(question.script.HasFocus(question.dialog, kContainers));
      question.PostPress(IDCANCEL);
    });
    EXPECT_TRUE(Calls({"NewEntry"}).empty());
    pilot.AnswerNewEntry(IDOK);
    EXPECT_EQ(Calls({"NewEntry"}), std::vector<std::string>{"personal.NewEntry"});
  });
}

TEST_F(AddressCommandsTest, NewEntryThatNoContainerTakesIsTold) {
  for (const char* container : {"", "friends"}) personal_.nodes[container].containerFlags = AB_UNMODIFIABLE;
  ShowAndCancel(0, [&](Pilot pilot) {
    pilot.AnswerNewEntry(IDCANCEL);
    pilot.PostPress(kNew);
    pilot.script.Close(pilot.script.NextDialog(), IDOK);
    EXPECT_EQ(pilot.AnswerBox(), Message(290) + L"\n" + Message(322));
  });
  EXPECT_TRUE(Calls({"NewEntry"}).empty());
}

// Whatever a provider hands out, every command comes to its end and the dialog goes on.
TEST_F(AddressCommandsTest, ProviderThatLiesLeavesTheDialogUsable) {
  using enum FakeLie;
  const std::pair<const char*, std::vector<FakeLie>> cases[] = {
      {"GetProps", {kThrows}},
      {"Advise", {kThrows}},
      {"OpenEntry", {kNothing, kThrows}},
      {"NewEntry", {kNothing}},
      {"Object:GetContentsTable", {kNothing, kThrows}},
      {"Object:GetHierarchyTable", {kNothing, kThrows}},
      {"Object:GetProps", {kNoArray, kShort, kNulls, kThrows}},
      {"Table:QueryRows", {kNothing, kNoArray, kShort, kNulls, kThrows}}};
  const auto nodes = personal_.nodes;
  for (const auto& [operation, lies] : cases) {
    for (const FakeLie lie : lies) {
      const std::map<std::string, FakeLie> lying = {{operation, lie}};
      ShowAndCancel(1, [&](Pilot pilot) {
        const auto command = [&](int control) {
          pilot.Select(kEntries, {0});
          pilot.PressThrough(control);
        };
        pilot.EntriesOf(4);
        personal_.lies = lying;
        for (const int control : {int{kDetails}, int{kNew}, int{kToButton}}) command(control);
        pilot.EntriesAfterNotice(personal_);
        command(kDelete);
        personal_.lies.clear();
        personal_.nodes = nodes;
        pilot.EntriesOf(1);
        EXPECT_EQ(pilot.EntriesOf(4), Texts{L"Fred"}) << lying.begin()->first << static_cast<int>(lie);
      });
      // And as the dialog opens.
      company_.lies = personal_.lies = lying;
      ShowAndCancel(0, [](Pilot) {});
      company_.lies.clear();
      personal_.lies.clear();
    }
  }
}

// What a provider that pumps messages lets in while it is called: notifications and the user's next actions.
TEST_F(AddressCommandsTest, WhatComesWhileAProviderPumpsMessagesWaitsOrIsDropped) {
  const auto staff = company_.nodes["staff"].contents;
  for (const int button : {kDetails, kDelete}) {
    company_.nodes["staff"].contents = staff;
    ShowAndCancel(1, [&](Pilot pilot) {
      company_.during[button == kDetails ? "Details" : "Object:DeleteEntries"] = [&, dialog = pilot.dialog] {
        company_.nodes["staff"].contents = {"dora"};
        company_.Notify();
        SendDlgItemMessageW(dialog, kContainers, CB_SETCURSEL, 4, 0);
        PostMessageW(dialog, WM_COMMAND, MAKEWPARAM(kContainers, CBN_SELCHANGE), 0);
        for (const WPARAM meanwhile : {WPARAM{kToButton}, WPARAM{IDOK}, WPARAM{IDCANCEL}})
          PostMessageW(dialog, WM_COMMAND, meanwhile, 0);
        PostMessageW(GetDlgItem(dialog, kEntries), WM_KEYDOWN, VK_DELETE, 0);
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
        // Nothing of that has happened yet.
        EXPECT_EQ(SendDlgItemMessageW(dialog, kEntries, LB_GETCOUNT, 0, 0), 4);
        EXPECT_EQ(SendDlgItemMessageW(dialog, kTo, LB_GETCOUNT, 0, 0), 0);
      };
      pilot.Select(kEntries, {0});
      pilot.PressThrough(button);
      // The container chosen meanwhile is shown; the buttons pressed meanwhile did nothing.
      const auto fred = reinterpret_cast<LPARAM>(L"Fred");
      pilot.script.WaitUntil([&] { return pilot.Send(kEntries, LB_FINDSTRINGEXACT, 0, fred) >= 0; },
                             "the container chosen meanwhile");
      pilot.Settle();
      EXPECT_EQ(pilot.Items(kEntries), Texts{L"Fred"});
      EXPECT_EQ(pilot.Items(kTo), Texts{});
    });
    using Keys = std::vector<std::string>;
    EXPECT_EQ(company_.deleted, button == kDelete ? Keys{"anna"} : Keys{});
    company_.during.clear();
  }
}

TEST_F(AddressCommandsTest, MemoryThatRunsOutIsToldAndStopsTheCommand) {
  // The dialog's next allocation, when it has painted what there is to paint.
  const auto failNext = [](Pilot pilot) {
    t_isExemptFromFailures = true;
    UpdateWindow(pilot.dialog);
    faults::Arm(faults::Site::kOperatorNew, 1);
  };
  ShowAndCancel(1, [&](Pilot pilot) {
    pilot.Select(kEntries, {0});
    for (const int button : {int{kToButton}, int{kDetails}, int{kDelete}}) {
      UpdateWindow(pilot.Item(kEntries));
      failNext(pilot);
      EXPECT_EQ(pilot.BoxAfter(button), Message(273)) << button;
    }
    pilot.InNewEntry([&](Pilot question) {
      failNext(question);
      EXPECT_EQ(question.BoxAfter(IDOK), Message(273));
      question.PostPress(IDCANCEL);
    });
    EXPECT_EQ(pilot.Items(kTo), Texts{});
  });
  EXPECT_TRUE(Calls({"Details", "NewEntry", "Object:DeleteEntries"}).empty());
  faults::Arm(faults::Site::kOperatorNew, 0);
}

}  // namespace
}  // namespace orv::test
