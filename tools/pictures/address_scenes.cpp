#include <array>
#include <stdexcept>

#include "orv/orv.h"
#include "orv/orvbase.hpp"
#include "tools/pictures/scenes.h"

namespace pictures {
namespace {

using orv::sdk::Owned;

constexpr int kNoWells = 259;
constexpr int kNewEntryDialog = 192;
constexpr int kMenu = 500;

constexpr int kFirstWell = 1018;
constexpr int kTypeAhead = 1164;
constexpr int kEntries = 1166;
constexpr int kFirstWellButton = 1167;
constexpr int kNew = 1173;
constexpr int kDetails = 1174;
constexpr int kDelete = 1175;

constexpr UINT kSelectOneForDetails = 271;
constexpr UINT kNothingSelected = 272;
constexpr UINT kConfirmDeletion = 274;
constexpr UINT kSelectOnlyOne = 284;

class Book {
 public:
  explicit Book(const std::wstring& profile) {
    LPADRBOOK book = nullptr;
    LPORVSESSION session = nullptr;
    const HRESULT hr =
        OrvOpen(0, profile.c_str(), MAPI_UNICODE, nullptr, nullptr, nullptr, &book, &session, 0);
    if (FAILED(hr)) throw std::runtime_error("no session");
    session_.reset(session);
    book_.reset(book);
  }

  // Until it is cancelled.
  void Address(ULONG wells, ULONG flags) const {
    std::array<ULONG, 3> types = {MAPI_TO, MAPI_CC, MAPI_BCC};
    ADRPARM parameters = {};
    parameters.ulFlags = DIALOG_MODAL | flags;
    parameters.cDestFields = wells;
    parameters.lpulDestComps = types.data();
    LPADRLIST list = nullptr;
    if (OrvAddress(0, book_.get(), &parameters, &list) != MAPI_E_USER_CANCEL)
      throw std::runtime_error("no Address dialog");
  }

 private:
  Owned<IOrvSession> session_;
  Owned<IAddrBook> book_;
};

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

void ShowWells(const Edition& edition, const Book& book, int wells) {
  Play(
      edition, [&] { book.Address(static_cast<ULONG>(wells), 0); },
      [&](Script& script) {
        HWND dialog = script.NextDialog();
        FillWells(script, dialog, wells);
        script.MarkNone(dialog, kEntries);
        script.Type(GetDlgItem(dialog, kTypeAhead), L"Cl");
        script.Photograph(dialog, kNoWells + wells);
        script.Close(dialog, IDCANCEL);
      });
}

void ShowMenu(Script& script, HWND dialog) {
  script.Post(dialog, WM_CONTEXTMENU, reinterpret_cast<WPARAM>(GetDlgItem(dialog, kEntries)),
              MAKELPARAM(-1, -1));
  HWND menu = script.NextMenu();
  script.Post(dialog, WM_KEYDOWN, VK_DOWN, 0);
  script.Photograph(menu, kMenu);
  script.Post(dialog, WM_KEYDOWN, VK_ESCAPE, 0);
  script.WaitGone(menu);
}

void ShowNewEntry(Script& script, HWND dialog) {
  script.Press(dialog, kNew);
  HWND question = script.NextDialog();
  script.Photograph(question, kNewEntryDialog);
  script.Close(question, IDCANCEL);
  script.WaitUsable(dialog);
}

void ShowCommands(const Edition& edition, const Book& book) {
  Play(
      edition, [&] { book.Address(1, 0); },
      [&](Script& script) {
        HWND dialog = script.NextDialog();
        ShowMenu(script, dialog);
        ShowNewEntry(script, dialog);
        script.AnswerAfter(dialog, kDetails, kSelectOneForDetails, IDOK);
        script.AnswerAfter(dialog, kFirstWellButton, kNothingSelected, IDOK);
        script.Mark(dialog, kEntries, 0);
        script.AnswerAfter(dialog, kDelete, kConfirmDeletion, IDNO);
        script.Close(dialog, IDCANCEL);
      });
}

void ShowChoiceOfOne(const Edition& edition, const Book& book) {
  Play(
      edition, [&] { book.Address(0, ADDRESS_ONE); },
      [&](Script& script) {
        HWND dialog = script.NextDialog();
        script.Mark(dialog, kEntries, 0);
        script.Mark(dialog, kEntries, 1);
        script.AnswerAfter(dialog, IDOK, kSelectOnlyOne, IDOK);
        script.Close(dialog, IDCANCEL);
      });
}

}  // namespace

void ShowAddressDialogs(const Edition& edition, const std::wstring& profile) {
  const Book book(profile);
  for (int wells = 0; wells <= 3; ++wells) ShowWells(edition, book, wells);
  ShowCommands(edition, book);
  ShowChoiceOfOne(edition, book);
}

}  // namespace pictures
