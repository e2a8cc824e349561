#include "tools/pictures/book.h"
#include "tools/pictures/scenes.h"

namespace pictures {
namespace {

constexpr int kNoWells = 259;
constexpr int kNewEntryDialog = 192;
constexpr int kMenu = 500;
// Of the personal address book.
constexpr int kContact = 1000;
constexpr int kContactPages = 2000;
constexpr int kList = 1020;
constexpr int kContactOrList = 1030;

constexpr int kFirstWell = 1018;
constexpr int kTypeAhead = 1164;
constexpr int kEntries = 1166;
constexpr int kFirstWellButton = 1167;
constexpr int kNew = 1173;
constexpr int kDetails = 1174;
constexpr int kDelete = 1175;

constexpr int kSelectOneForDetails = 271;
constexpr int kNothingSelected = 272;
constexpr int kConfirmDeletion = 274;
constexpr int kSelectOnlyOne = 284;

// Of the demo's contacts: the first list.
constexpr int kListLine = 3;
// So that two go into each of three wells.
constexpr int kEntriesWanted = 6;

// Puts two entries into every well.
void FillWells(Script& script, HWND dialog, int wells) {
  for (int well = 0; well < wells; ++well) {
    script.MarkNone(dialog, kEntries);
    script.Mark(dialog, kEntries, 2 * well);
    script.Mark(dialog, kEntries, 2 * well + 1);
    script.Press(dialog, kFirstWellButton + well);
    script.WaitLines(dialog, kFirstWell + well, 2);
  }
}

// `variant` tells pictures of the same template apart.
void ShowWells(const Edition& edition, const Book& book, const Wells& wells,
               const std::wstring& variant = L"") {
  const int count = static_cast<int>(wells.types.size());
  Play(
      edition, "choosing for " + std::to_string(count) + " wells", [&] { book.Address(wells); },
      [&](Script& script) {
        HWND dialog = script.NextDialog(kNoWells + count);
        FillWells(script, dialog, count);
        script.MarkNone(dialog, kEntries);
        script.Type(dialog, kTypeAhead, L"Cl");
        script.Photograph(dialog, variant);
        script.Close(dialog, IDCANCEL);
      });
}

void ShowMenu(Script& script, HWND dialog) {
  script.Post(dialog, WM_CONTEXTMENU, reinterpret_cast<WPARAM>(GetDlgItem(dialog, kEntries)),
              MAKELPARAM(-1, -1));
  HWND menu = script.NextMenu(kMenu);
  script.Post(dialog, WM_KEYDOWN, VK_DOWN, 0);
  script.Photograph(menu);
  script.Post(dialog, WM_KEYDOWN, VK_ESCAPE, 0);
  script.WaitGone(menu);
  script.WaitUsable(dialog);
}

void ShowNewEntry(Script& script, HWND dialog) {
  script.Press(dialog, kNew);
  HWND question = script.NextDialog(kNewEntryDialog);
  script.Photograph(question);
  script.Close(question, IDOK);
  HWND what = script.NextDialog(kContactOrList);
  script.Photograph(what);
  script.Close(what, IDCANCEL);
  script.WaitUsable(dialog);
}

void ShowCommands(const Edition& edition, const Book& book) {
  Play(
      edition, "commands of the Address dialog",
      [&] {
        book.Address({{MAPI_TO}, {}});
      },
      [&](Script& script) {
        HWND dialog = script.NextDialog(kNoWells + 1);
        ShowMenu(script, dialog);
        ShowNewEntry(script, dialog);
        script.AnswerAfter(dialog, kDetails, kSelectOneForDetails, IDOK);
        script.AnswerAfter(dialog, kFirstWellButton, kNothingSelected, IDOK);
        script.Mark(dialog, kEntries, 0);
        script.ShowOver(dialog, kDetails, kContact, kContactPages);
        script.MarkNone(dialog, kEntries);
        script.Mark(dialog, kEntries, kListLine);
        script.ShowOver(dialog, kDetails, kList);
        script.AnswerAfter(dialog, kDelete, kConfirmDeletion, IDNO);
        script.Close(dialog, IDCANCEL);
      });
}

void ShowChoiceOfOne(const Edition& edition, const Book& book) {
  Play(
      edition, "choosing one entry", [&] { book.Address({}, ADDRESS_ONE); },
      [&](Script& script) {
        HWND dialog = script.NextDialog(kNoWells);
        script.Mark(dialog, kEntries, 0);
        script.Mark(dialog, kEntries, 1);
        script.AnswerAfter(dialog, IDOK, kSelectOnlyOne, IDOK);
        script.Close(dialog, IDCANCEL);
      });
}

}  // namespace

void ShowAddressDialogs(const Edition& edition, const std::wstring& profile) {
  const Book book(profile, kEntriesWanted);
  ShowWells(edition, book, {});
  ShowWells(edition, book, {{MAPI_TO}, {}});
  ShowWells(edition, book, {{MAPI_TO, MAPI_CC}, {}});
  ShowWells(edition, book, {{MAPI_TO, MAPI_CC, MAPI_BCC}, {}});
  // As a caller asks for it that gives the wells titles of its own.
  ShowWells(edition, book, {{MAPI_CC}, {L"Cc"}}, L"-Cc");
  ShowCommands(edition, book);
  ShowChoiceOfOne(edition, book);
}

}  // namespace pictures
