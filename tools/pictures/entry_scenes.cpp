// The windows of the personal address book's entries.
#include "tools/pictures/address_play.h"
#include "tools/pictures/held_file.h"
#include "tools/pictures/numbers.h"
#include "tools/pictures/scenes.h"

namespace pictures {
namespace {

constexpr int kTabs = 2000;
constexpr int kName = 2010;
constexpr int kCompany = 2016;
constexpr int kNumber = 2030;
constexpr int kAddNumber = 2033;
constexpr int kListName = 2120;
constexpr int kFind = 2122;
constexpr int kChooseContact = 2141;
constexpr int kChooseList = 2142;
enum Page { kNames, kNumbers };
// The byte that the one of a book's programs has locked which writes.
constexpr DWORD kWriteLock = 120;

// Lines of the demo's contacts, as they are sorted in every language.
constexpr int kPersonLine = 0;
constexpr int kListLine = 3;
const std::wstring kPerson = L"Anna Bergstr\u00f6m";
const std::wstring kPersonsNumber = L"+46 31 555 0101";

HWND OpenEntry(Script& script, HWND dialog, int line, int number) {
  script.MarkNone(dialog, kEntries);
  script.Mark(dialog, kEntries, line);
  script.Press(dialog, kDetails);
  return script.NextDialog(number);
}

// As far as the window of a contact or a list.
HWND OpenNew(Script& script, HWND dialog, int choice, int number) {
  script.Press(dialog, kNew);
  HWND where = script.NextDialog(kNewEntryDialog);
  script.Close(where, IDOK);
  HWND what = script.NextDialog(kContactOrList);
  script.Check(what, {kChooseContact, kChooseList}, choice);
  script.Photograph(what, choice == kChooseList ? L"-list" : L"");
  script.Close(what, IDOK);
  return script.NextDialog(number);
}

// Leaves a window whose entry was changed.
void Leave(Script& script, HWND window, HWND dialog, const std::wstring& variant = L"") {
  script.Press(window, IDCANCEL);
  script.AnswerBox(kAskLeave, IDYES, variant);
  script.WaitGone(window);
  script.WaitUsable(dialog);
}

void CloseUnchanged(Script& script, HWND window, HWND dialog) {
  script.Close(window, IDCANCEL);
  script.WaitUsable(dialog);
}

void ShowKnownContact(Script& script, HWND dialog) {
  HWND window = OpenEntry(script, dialog, kPersonLine, kContact);
  script.PhotographPages(window, kTabs);
  CloseUnchanged(script, window, dialog);
}

// One that is there already; a number without a digit is refused while it is typed.
void ShowNewContact(Script& script, HWND dialog) {
  HWND window = OpenNew(script, dialog, kChooseContact, kContact);
  script.Photograph(window, L"-new");
  script.Type(window, kName, kPerson);
  script.TurnTo(window, kTabs, kNumbers);
  script.Type(window, kNumber, L"x");
  script.Photograph(window, L"-fault");
  script.Type(window, kNumber, kPersonsNumber);
  script.Press(window, kAddNumber);
  script.Press(window, IDOK);
  script.AnswerBox(kAskDuplicate, IDCANCEL);
  script.WaitUsable(window);
  Leave(script, window, dialog);
}

// The window of a person with another company in it than is stored.
HWND OpenChanged(Script& script, HWND dialog) {
  HWND window = OpenEntry(script, dialog, kPersonLine, kContact);
  script.Type(window, kCompany, L"Nordhamn Shipping Group AB");
  return window;
}

void EditByOther(Script& script, const std::wstring& command, const std::wstring& options = L"") {
  script.RunOrvctl(L"contact " + command + L" " + kProfile + L" \"" + kPerson + L"\" " + options);
}

void MeetConflict(Script& script, HWND dialog) {
  HWND window = OpenChanged(script, dialog);
  EditByOther(script, L"edit", L"--company \"Nordhamn Logistics AB\" --note \"Moved to the new terminal.\"");
  script.Press(window, IDOK);
  HWND conflict = script.NextDialog(kConflict);
  script.Photograph(conflict);
  script.Close(conflict, IDCANCEL);
  script.WaitUsable(window);
  Leave(script, window, dialog);
}

// Another program writes: the entry waits for it, until that has been seen.
void MeetWriter(Script& script, HWND dialog) {
  HWND window = OpenChanged(script, dialog);
  {
    const HeldLock writing(kFiles + L"Demo.orvab-shm", kWriteLock);
    script.ShowOver(window, IDOK, kWait);
  }
  Leave(script, window, dialog, L"-wait");
}

void MeetDeletion(Script& script, HWND dialog) {
  HWND window = OpenChanged(script, dialog);
  EditByOther(script, L"remove");
  script.Press(window, IDOK);
  script.AnswerBox(kAskDeleted, IDNO);
  script.WaitUsable(window);
  Leave(script, window, dialog, L"-deleted");
  EditByOther(script, L"restore");
}

// In a dialog of its own: what others change fills its list anew at any time.
void PlayInDialog(const Edition& edition, const std::string& scene, void (*play)(Script&, HWND)) {
  PlayAddress(edition, scene, Book(kProfile, kEntriesWanted), {{MAPI_TO}, {}}, play);
}

void ShowReadOnly(const Edition& edition, int line, int number, int tabs) {
  PlayAddress(edition, "an entry to be read", Book(kStatesProfile), {{MAPI_TO}, {}},
              [&](Script& script, HWND dialog) {
                script.ChooseDropped(dialog, kContainers, L"Office");
                script.Mark(dialog, kEntries, line);
                script.ShowOver(dialog, kDetails, number, tabs, L"-read-only");
              });
}

void ShowKnownList(Script& script, HWND dialog) {
  HWND window = OpenEntry(script, dialog, kListLine, kList);
  script.Photograph(window);
  CloseUnchanged(script, window, dialog);
}

void ShowNewList(Script& script, HWND dialog) {
  HWND window = OpenNew(script, dialog, kChooseList, kList);
  script.Photograph(window, L"-new");
  script.Type(window, kListName, L"Evening rates");
  script.Type(window, kFind, L"+46");
  script.Photograph(window, L"-search");
  Leave(script, window, dialog, L"-list");
}

}  // namespace

void ShowContacts(const Edition& edition) {
  PlayInDialog(edition, "a known contact", ShowKnownContact);
  PlayInDialog(edition, "a new contact", ShowNewContact);
  PlayInDialog(edition, "a contact changed by somebody else", MeetConflict);
  PlayInDialog(edition, "a contact while another program writes", MeetWriter);
  PlayInDialog(edition, "a contact deleted by somebody else", MeetDeletion);
  ShowReadOnly(edition, kPersonLine, kContact, kTabs);
}

void ShowLists(const Edition& edition) {
  PlayInDialog(edition, "a known list", ShowKnownList);
  PlayInDialog(edition, "a new list", ShowNewList);
  ShowReadOnly(edition, kListLine, kList, 0);
}

}  // namespace pictures
