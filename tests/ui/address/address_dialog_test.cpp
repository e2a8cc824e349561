// The Address dialog as it opens and as it follows its container: drop-down, entries, wells, focus, notifications.
#include <gtest/gtest.h>

#include "tests/ui/address/address_world.h"
#include "ui/window_utils.h"

namespace orv::test {
namespace {

using AddressDialogTest = AddressTest;

TEST_F(AddressDialogTest, OpensCentredWithContainersAndTheEntriesOfTheDefaultDirectory) {
  ShowAndCancel(0, [&](Pilot pilot) {
    EXPECT_EQ(pilot.Containers(),
              (Texts{L"Company", L"  Staff", L"    Night shift", L"Personal", L"  Friends"}));
    EXPECT_EQ(WindowText(pilot.dialog), L"Address Book");
    EXPECT_EQ(pilot.Container(), 1);
    EXPECT_EQ(pilot.Items(kEntries), (Texts{L"Anna", L"Bernd", L"All of us", L"Carla"}));
    EXPECT_EQ(pilot.Send(kTypeAhead, EM_GETLIMITTEXT), 64);
    EXPECT_NE(pilot.script.Send(pilot.dialog, WM_GETICON, ICON_SMALL), 0);
    const RECT place = ui::WindowRectangle(pilot.dialog);
    const POINT origin = ui::CentredOrigin(place, ui::WindowRectangle(GetDesktopWindow()));
    EXPECT_EQ(place.left, origin.x);
    EXPECT_EQ(place.top, origin.y);
  });
}

TEST_F(AddressDialogTest, TextsAreTheCallersWhereItGivesAny) {
  wchar_t caption[] = L"Who gets it?";
  wchar_t title[] = L"Those who get it";
  parameters_.lpszCaption = caption;
  parameters_.lpszDestWellsTitle = title;
  ShowAndCancel(1, [&](Pilot pilot) {
    EXPECT_EQ(WindowText(pilot.dialog), caption);
    EXPECT_EQ(pilot.Text(kTitle), title);
  });
}

// Keys taken in English: S, Y, N, W, L, E and those of the wells' own texts, which give way.
TEST_F(AddressDialogTest, TitlesOfWellsComeWithAnAccessKeyThatIsFree) {
  const Texts own = {L"&To ->",          L"T&o recipients:", L"&Cc ->",
                     L"Cc &recipients:", L"&Bcc ->",         L"Bcc rec&ipients:"};
  const std::pair<std::vector<const wchar_t*>, Texts> cases[] = {
      {{}, own},
      {{nullptr, nullptr, nullptr}, own},
      {{nullptr, L"Copy", nullptr}, {own[0], own[1], L"&Copy ->", L"Co&py", own[4], own[5]}},
      {{L"Cc", L"Boss && co", L"T&o"},
       {L"&Cc ->", L"Cc", L"&Boss && co ->", L"Boss && co", L"T&o ->", L"&To"}},
      {{L"", L"yes", L"\u5B9B\u5148"}, {L" ->", L"", L"yes ->", L"yes", L"\u5B9B\u5148 ->", L"\u5B9B\u5148"}},
  };
  for (auto [titles, texts] : cases) {
    parameters_.lppszDestTitles = titles.empty() ? nullptr : const_cast<wchar_t**>(titles.data());
    Texts shown;
    ShowAndCancel(3, [&](Pilot pilot) {
      for (int well = 0; well < 3; ++well)
        shown.insert(shown.end(), {pilot.Text(kToButton + well), pilot.Text(kToLabel + well)});
    });
    EXPECT_EQ(shown, texts);
  }
}

TEST_F(AddressDialogTest, ArrowsBehindTitlesPointToTheMirroredWells) {
  UseLanguage(L"1");
  const wchar_t* titles[] = {L"&Fax", L"Copy"};
  parameters_.lppszDestTitles = const_cast<wchar_t**>(titles);
  ShowAndCancel(2, [&](Pilot pilot) {
    EXPECT_EQ(pilot.Text(kToButton), L"\x202B&Fax ->\x202C");
    EXPECT_EQ(pilot.Text(kCcButton), L"\x202B&Copy ->\x202C");
  });
}

TEST_F(AddressDialogTest, WellsAreAsHighAsEachOtherAndTheFocusGoesWhereTheCallerWants) {
  const struct {
    ULONG wells;
    ULONG focus;
    int focused;
  } cases[] = {{0, 0, kContainers}, {0, 2, kContainers}, {1, 0, kToButton},  {1, 1, kToButton},
               {2, 1, kCcButton},   {2, 2, kToButton},   {3, 2, kBccButton}, {3, 0xFFFFFFFF, kToButton}};
  for (const auto& c : cases) {
    parameters_.nDestFieldFocus = c.focus;
    ShowAndCancel(c.wells, [&](Pilot pilot) {
      const auto height = [&](int well) {
        RECT r{};
        GetWindowRect(pilot.Item(kTo + well), &r);
        return r.bottom - r.top;
      };
      for (int well = 0; well < 3; ++well) {
        const bool isThere = well < static_cast<int>(c.wells);
        EXPECT_EQ(pilot.Item(kTo + well) != nullptr, isThere) << c.wells;
        EXPECT_EQ(height(well), isThere ? height(0) : 0);
      }
      EXPECT_TRUE(pilot.script.HasFocus(pilot.dialog, c.focused)) << c.wells << " wells, focus " << c.focus;
    });
  }
}

TEST_F(AddressDialogTest, CallersListFillsTheWellsByRecipientType) {
  const std::wstring name64(64, L'x');
  const std::wstring start(61, L'y');
  list_ = MakeRecipients({{Id("anna"), L"Anna", MAPI_CC},
                          {Id("bernd"), L"Bernd", MAPI_TO},
                          {Id("all"), L"All", MAPI_CC, 0, MAPI_DISTLIST},
                          {Id("carla"), L"Carla", 77},
                          {Id("dora"), L"no identifier", MAPI_TO, PR_ENTRYID},
                          {Id("emil"), L"no name", MAPI_TO, PR_DISPLAY_NAME_W},
                          {Id("emil"), L"no type", MAPI_TO, PR_RECIPIENT_TYPE},
                          {Id("emil"), L"no kind", MAPI_TO, PR_OBJECT_TYPE},
                          {Id("anna"), name64},
                          {Id("anna"), start + L"1234"},
                          {Id("anna"), start + std::wstring(139, L'1')}});
  types_[0] = MAPI_BCC;
  types_[1] = MAPI_TO;
  types_[2] = MAPI_CC;
  ShowAndCancel(3, [&](Pilot pilot) {
    EXPECT_EQ(pilot.Items(kTo), Texts{});
    EXPECT_EQ(pilot.Items(kCc), (Texts{L"Bernd", L"no kind", name64, start + L"...", start + L"..."}));
    EXPECT_EQ(pilot.Items(kBcc), (Texts{L"Anna", L"All"}));
  });
  // Long names are cut in the caller's own buffer.
  ASSERT_EQ(list_->cEntries, 11u);
  EXPECT_EQ(Result().back(), start + L".../1");
}

TEST_F(AddressDialogTest, SwitchingClosesTheOldContainerBeforeTheNewOneIsRead) {
  ShowAndCancel(0, [&](Pilot pilot) {
    ASSERT_EQ(company_.advises.size(), 1u);
    EXPECT_EQ(company_.advises[0].key, "staff");
    EXPECT_NE(company_.advises[0].events & fnevTableModified, 0u);
    log_.lines.clear();
    EXPECT_EQ(pilot.EntriesOf(4), Texts{L"Fred"});
    EXPECT_EQ(Calls({"OpenEntry", "Unadvise", "Object:GetContentsTable", "Advise"}),
              (std::vector<std::string>{"personal.OpenEntry", "company.Unadvise",
                                        "personal.Object:GetContentsTable", "personal.Advise"}));
    // The same one again is no switch.
    log_.lines.clear();
    EXPECT_EQ(pilot.EntriesOf(4), Texts{L"Fred"});
    EXPECT_TRUE(log_.lines.empty());
  });
  EXPECT_EQ(Calls({"Unadvise"}), std::vector<std::string>{"personal.Unadvise"});
}

TEST_F(AddressDialogTest, ContainerThatCannotBeOpenedShowsNothingAndMayBeTriedAgain) {
  ShowAndCancel(0, [&](Pilot pilot) {
    personal_.answers["OpenEntry"] = {MAPI_E_NO_ACCESS};
    for (int attempt = 0; attempt < 2; ++attempt) {
      pilot.Choose(4);
      EXPECT_EQ(pilot.AnswerBox(), Message(283));
      EXPECT_EQ(pilot.Items(kEntries), Texts{});
      EXPECT_EQ(pilot.Text(kStatus), Message(313));
      EXPECT_TRUE(company_.advises.empty());
    }
    personal_.answers.clear();
    EXPECT_EQ(pilot.EntriesOf(4), Texts{L"Fred"});
  });
}

TEST_F(AddressDialogTest, RowsBeforeAFailingOneAreShown) {
  company_.nodes["staff"].contents.assign(700, "anna");
  const struct {
    std::string operation;
    LRESULT lines;
    std::size_t first = 0;  // failing call, counted from the contents table on
    std::size_t last = 999;
  } cases[] = {{"Object:GetContentsTable", 0},
               {"Table:GetRowCount", 700},
               {"Table:QueryRows", 0},
               {"Table:QueryRows", 512, 2},
               // The second block is read row by row.
               {"Table:QueryRows", 700, 1, 1}};
  for (const auto& c : cases) {
    std::size_t calls = 0;
    const auto count = [&] {
      const bool fails = calls >= c.first && calls <= c.last;
      company_.answers[c.operation] = {fails ? MAPI_E_CALL_FAILED : S_OK};
      ++calls;
    };
    // The hierarchy is read from a table too.
    company_.during["Object:GetContentsTable"] = [&] {
      if (c.operation == "Object:GetContentsTable") return count();
      company_.during[c.operation] = count;
    };
    ShowAndCancel(0, [&](Pilot pilot) {
      EXPECT_EQ(pilot.Send(kEntries, LB_GETCOUNT), c.lines) << c.operation << " " << c.first;
    });
    company_.during.clear();
    company_.answers.clear();
  }
}

TEST_F(AddressDialogTest, SinkTellsTheDialogWhateverTheNumberAndNobodyOnceItIsGone) {
  ComPtr<IMAPIAdviseSink> sink;
  ShowAndCancel(0, [&](Pilot pilot) {
    sink = ComPtr<IMAPIAdviseSink>::Share(company_.advises.at(0).sink);
    company_.nodes["staff"].contents = {"dora"};
    for (const ULONG notifications : {0u, 5u}) {
      EXPECT_EQ(sink->OnNotify(notifications, nullptr), static_cast<ULONG>(S_OK));
      pilot.Settle();
      EXPECT_EQ(pilot.Items(kEntries).size(), notifications == 0 ? 4u : 1u);
    }
  });
  EXPECT_EQ(sink->OnNotify(1, nullptr), static_cast<ULONG>(S_OK));
  MSG message;
  EXPECT_FALSE(PeekMessageW(&message, nullptr, WM_COMMAND, WM_COMMAND, PM_REMOVE));
}

// Whoever is choosing goes on where he was, wherever that stands now; what has gone is chosen no more.
TEST_F(AddressDialogTest, ChangesOfOthersLeaveTheSelection) {
  ShowAndCancel(0, [&](Pilot pilot) {
    const auto change = [&](std::vector<std::string> contents, const Lines& selected) {
      company_.nodes["staff"].contents = std::move(contents);
      company_.advises.at(0).sink->OnNotify(1, nullptr);
      pilot.Settle();
      EXPECT_EQ(pilot.Selected(kEntries), selected);
    };
    const std::vector<std::string> before = company_.nodes["staff"].contents;
    pilot.Select(kEntries, {1, 3});
    change({before[3], before[0], before[1]}, {0, 2});
    change({before[1]}, {0});
    change(before, {1});
    pilot.Select(kEntries, {});
    change({before[1], before[2]}, {});
  });
}

TEST_F(AddressDialogTest, LineUnderTheListTellsHowManyEntriesThereAreOrWhyNone) {
  auto& staff = company_.nodes["staff"];
  const auto before = staff;
  const auto rows = [&](std::size_t count) { staff.contents.assign(count, "anna"); };
  const auto state = [&](HRESULT hr) { return [&, hr] { rows(0), staff.numbers[PR_ORV_BOOK_STATUS] = hr; }; };
  const auto fail = [&](const char* operation, HRESULT hr) {
    return [=, this] { company_.answers[operation] = {hr}; };
  };
  const struct {
    std::function<void()> arrange;
    UINT text;
    const wchar_t* value = L"";
  } cases[] = {
      {[&] { rows(0); }, 306},
      {[&] { rows(1); }, 307},
      {[&] { rows(1234); }, 308, L"1,234"},
      {[&] { rows(0), staff.containerFlags = AB_SUBCONTAINERS; }, 310},
      {fail("Object:GetContentsTable", MAPI_E_NO_SUPPORT), 310},
      {fail("Object:GetContentsTable", MAPI_E_BUSY), 317},
      {fail("Object:GetContentsTable", MAPI_E_UNABLE_TO_COMPLETE), 321, L"0x80040400"},
      {state(MAPI_E_NOT_FOUND), 312},
      {state(MAPI_E_CORRUPT_STORE), 314},
      {state(MAPI_E_INVALID_OBJECT), 315},
      {state(MAPI_E_VERSION), 316},
      {state(S_OK), 306},
      {[&] {
         rows(300);
         company_.during["Object:GetContentsTable"] = [&] {
           company_.answers.clear();
           company_.during["Table:QueryRows"] = [&, calls = 0]() mutable {
             if (++calls > 1) company_.answers["Table:QueryRows"] = {MAPI_E_DISK_ERROR};
           };
         };
       },
       309, L"256"},
  };
  for (const auto& c : cases) {
    staff = before;
    c.arrange();
    std::wstring text = Message(c.text);
    if (const auto place = text.find(L"%1"); place != std::wstring::npos) text.replace(place, 2, c.value);
    ShowAndCancel(1, [&](Pilot pilot) {
      if (pilot.Container() != 1) pilot.EntriesOf(1);
      EXPECT_EQ(pilot.Text(kStatus), text) << c.text;
    });
    company_.answers.clear();
    company_.during.clear();
  }
  // It follows what is chosen and what is done.
  staff = before;
  ShowAndCancel(0, [&](Pilot pilot) {
    pilot.EntriesOf(1);
    EXPECT_EQ(pilot.Text(kStatus), L"4 entries");
    pilot.PressFor({0}, kDetails);
    pilot.BoxAfter(kDelete, IDYES);
    pilot.Settle();
    EXPECT_EQ(pilot.Text(kStatus), L"3 entries");
    pilot.EntriesOf(4);
    EXPECT_EQ(pilot.Text(kStatus), L"1 entry");
  });
  company_.answers["GetProps"] = personal_.answers["GetProps"] = {MAPI_E_NO_ACCESS};
  company_.answers["Object:GetHierarchyTable"] =
      personal_.answers["Object:GetHierarchyTable"] = {MAPI_E_NO_ACCESS};
  ShowAndCancel(0, [&](Pilot pilot) {
    EXPECT_EQ(pilot.Containers(), Texts{});
    EXPECT_EQ(pilot.Text(kStatus), Message(311));
  });
}

// Its owner is destroyed in the middle of a provider's call, which then comes back to a dialog that is gone.
TEST_F(AddressDialogTest, GoesWithItsOwner) {
  const Steps choose = [](Pilot pilot) { pilot.Choose(2); };
  const auto press = [](int control) { return [=](Pilot pilot) { pilot.PostPress(control); }; };
  const struct {
    AddressScript& provider;
    const char* call;
    Steps act;
  } cases[] = {{company_, "Details", press(kDetails)},
               {company_, "Object:GetContentsTable", choose},
               {personal_, "NewEntry",
                [](Pilot pilot) {
                  pilot.EntriesOf(4);
                  pilot.PostPress(kNew);
                  pilot.script.PostPress(pilot.script.NextDialog(), IDOK);
                }},
               {company_, "OpenEntry", press(IDOK)},
               {company_, "Object:DeleteEntries", [](Pilot pilot) {
                  pilot.PostPress(kDelete);
                  pilot.script.AnswerBox(IDYES);
                }}};
  for (const auto& c : cases) {
    const HWND owner =
        CreateWindowW(L"STATIC", L"", WS_OVERLAPPED, 0, 0, 10, 10, nullptr, nullptr, nullptr, nullptr);
    list_ = MakeRecipients({{Id("anna"), L"Anna"}});
    const Steps steps = [&](Pilot pilot) {
      pilot.Select(kEntries, {0});
      c.provider.during[c.call] = [&] { DestroyWindow(owner); };
      c.act(pilot);
      pilot.script.WaitClosed(pilot.dialog);
    };
    EXPECT_EQ(Show(1, steps, owner), MAPI_E_CALL_FAILED);
    EXPECT_EQ(Result(), Texts{L"Anna/1"}) << c.call;
    EXPECT_FALSE(IsWindow(owner));
    EXPECT_TRUE(company_.advises.empty() && personal_.advises.empty()) << c.call;
    c.provider.during.clear();
  }
}

TEST_F(AddressDialogTest, DropDownTakesOddRows) {
  company_.nodes["staff"].name = std::wstring(200, L's');
  company_.nodes["night"].depth = 500;
  personal_.nodes["friends"].depth = 0xFFFFFFFE;
  ShowAndCancel(0, [&](Pilot pilot) {
    EXPECT_EQ(pilot.Containers(), (Texts{L"Company", L"  " + std::wstring(125, L's'), std::wstring(127, L' '),
                                         L"Personal", std::wstring(127, L' ')}));
  });
}

}  // namespace
}  // namespace orv::test
