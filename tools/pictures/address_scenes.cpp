#include <array>
#include <memory>
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
constexpr UINT kEntryNotOpened = 283;
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

  // Until the user confirms (true) or cancels. `list` fills the wells and is replaced on OK.
  bool Address(ULONG wells, ULONG flags, LPADRLIST* list) const {
    std::array<ULONG, 3> types = {MAPI_TO, MAPI_CC, MAPI_BCC};
    ADRPARM parameters = {};
    parameters.ulFlags = DIALOG_MODAL | flags;
    parameters.cDestFields = wells;
    parameters.lpulDestComps = types.data();
    const HRESULT hr = OrvAddress(0, book_.get(), &parameters, list);
    if (FAILED(hr) && hr != MAPI_E_USER_CANCEL) throw std::runtime_error("no Address dialog");
    return SUCCEEDED(hr);
  }

 private:
  Owned<IOrvSession> session_;
  Owned<IAddrBook> book_;
};

struct FreeList {
  void operator()(ADRLIST* list) const { OrvFreePadrlist(list); }
};
using List = std::unique_ptr<ADRLIST, FreeList>;

template <class T>
T* Allocate(ULONG size) {
  void* buffer = nullptr;
  if (FAILED(OrvAllocateBuffer(size, &buffer))) throw std::bad_alloc();
  return static_cast<T*>(buffer);
}

// A recipient whose address book is not in the profile any more.
List LostRecipient() {
  static BYTE identifier[ORV_MIN_ENTRYID] = {0, 0, 0, 0, 'g', 'o', 'n', 'e'};
  static wchar_t name[] = L"Anna Bergström";
  List list(Allocate<ADRLIST>(CbNewADRLIST(1)));
  SPropValue* values = Allocate<SPropValue>(3 * sizeof(SPropValue));
  list->cEntries = 1;
  list->aEntries[0].cValues = 3;
  list->aEntries[0].rgPropVals = values;
  values[0].ulPropTag = PR_ENTRYID;
  values[0].Value.bin = {sizeof identifier, identifier};
  values[1].ulPropTag = PR_DISPLAY_NAME;
  values[1].Value.lpszW = name;
  values[2].ulPropTag = PR_RECIPIENT_TYPE;
  values[2].Value.l = MAPI_TO;
  return list;
}

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
  LPADRLIST list = nullptr;
  Play(
      edition, [&] { book.Address(static_cast<ULONG>(wells), 0, &list); },
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
  LPADRLIST list = nullptr;
  Play(
      edition, [&] { book.Address(1, 0, &list); },
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
  LPADRLIST list = nullptr;
  Play(
      edition, [&] { book.Address(0, ADDRESS_ONE, &list); },
      [&](Script& script) {
        HWND dialog = script.NextDialog();
        script.Mark(dialog, kEntries, 0);
        script.Mark(dialog, kEntries, 1);
        script.AnswerAfter(dialog, IDOK, kSelectOnlyOne, IDOK);
        script.Close(dialog, IDCANCEL);
      });
}

void ShowLostRecipient(const Edition& edition, const Book& book) {
  const List lost = LostRecipient();
  LPADRLIST list = lost.get();
  Play(
      edition, [&] { book.Address(1, 0, &list); },
      [&](Script& script) {
        HWND dialog = script.NextDialog();
        script.AnswerAfter(dialog, IDOK, kEntryNotOpened, IDOK);
        script.Close(dialog, IDCANCEL);
      });
}

}  // namespace

void ShowAddressDialogs(const Edition& edition, const std::wstring& profile) {
  const Book book(profile);
  for (int wells = 0; wells <= 3; ++wells) ShowWells(edition, book, wells);
  ShowCommands(edition, book);
  ShowChoiceOfOne(edition, book);
  ShowLostRecipient(edition, book);
}

}  // namespace pictures
