#include "tools/pictures/address_play.h"
#include "tools/pictures/numbers.h"
#include "tools/pictures/scenes.h"

namespace pictures {
namespace {

constexpr int kMenu = 500;
constexpr int kSelectOneForDetails = 271;
constexpr int kNothingSelected = 272;
constexpr int kSelectOnlyOne = 284;

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
  PlayAddress(edition, "choosing for " + std::to_string(count) + " wells", book, wells,
              [&](Script& script, HWND dialog) {
                FillWells(script, dialog, count);
                script.MarkNone(dialog, kEntries);
                script.Type(dialog, kTypeAhead, L"Cl");
                script.Photograph(dialog, variant);
              });
}

void ShowMenu(Script& script, HWND dialog) {
  script.Post(dialog, WM_CONTEXTMENU, reinterpret_cast<WPARAM>(GetDlgItem(dialog, kEntries)),
              MAKELPARAM(-1, -1));
  HWND menu = script.NextMenu(kMenu);
  script.Post(dialog, WM_KEYDOWN, VK_DOWN, 0);
  script.PhotographAsIs(menu);
  script.Post(dialog, WM_KEYDOWN, VK_ESCAPE, 0);
  script.WaitGone(menu);
  script.WaitUsable(dialog);
}

void ShowChoiceOfOne(const Edition& edition, const Book& book) {
  PlayAddress(
      edition, "choosing one entry", book, {},
      [&](Script& script, HWND dialog) {
        script.Mark(dialog, kEntries, 0);
        script.Mark(dialog, kEntries, 1);
        script.AnswerAfter(dialog, IDOK, kSelectOnlyOne, IDOK);
      },
      ADDRESS_ONE);
}

}  // namespace

void ShowWells(const Edition& edition) {
  const Book book(kProfile, kEntriesWanted);
  ShowWells(edition, book, {});
  ShowWells(edition, book, {{MAPI_TO}, {}});
  ShowWells(edition, book, {{MAPI_TO, MAPI_CC}, {}});
  ShowWells(edition, book, {{MAPI_TO, MAPI_CC, MAPI_BCC}, {}});
  // As a caller asks for it that gives the wells titles of its own.
  ShowWells(edition, book, {{MAPI_CC}, {L"Cc"}}, L"-Cc");
}

void ShowCommands(const Edition& edition) {
  const Book book(kProfile, kEntriesWanted);
  PlayAddress(edition, "commands of the Address dialog", book, {{MAPI_TO}, {}},
              [](Script& script, HWND dialog) {
                ShowMenu(script, dialog);
                script.ShowOver(dialog, kNew, kNewEntryDialog);
                script.AnswerAfter(dialog, kDetails, kSelectOneForDetails, IDOK);
                script.AnswerAfter(dialog, kFirstWellButton, kNothingSelected, IDOK);
                script.Mark(dialog, kEntries, 0);
                script.AnswerAfter(dialog, kDelete, kConfirmDeletion, IDNO);
              });
  ShowChoiceOfOne(edition, book);
}

}  // namespace pictures
