// What the Address dialog says of books and entries that cannot be read or changed.
#include <memory>
#include <stdexcept>

#include "tools/pictures/address_play.h"
#include "tools/pictures/held_file.h"
#include "tools/pictures/numbers.h"
#include "tools/pictures/scenes.h"

namespace pictures {
namespace {

constexpr int kCannotBeOpened = 283;
constexpr int kDeletionFailed = 289;
constexpr int kNewEntryFailed = 290;
constexpr int kDetailsFailed = 291;
constexpr int kOneNotDeleted = 292;
constexpr int kSomeNotDeleted = 293;

// How the container's name begins, and what is shown. Books of scripts/pictures.sh, then those of refusing.cpp.
constexpr struct {
  const wchar_t* container;
  const wchar_t* state;
} kStates[] = {
    {L"Prospects", L"-empty"},      {L"Emergency", L"-one"},       {L"Office", L"-read-only"},
    {L"Branch", L"-missing"},       {L"Archive", L"-damaged"},     {L"Scans", L"-foreign"},
    {L"Central", L"-newer"},        {L"Shared", L"-busy"},         {L"Deliveries", L"-no-file"},
    {L"Districts", L"-only-books"}, {L"Overseas", L"-network"},    {L"Depots", L"-disk"},
    {L"Personnel", L"-no-access"},  {L"Carriers", L"-not-set-up"}, {L"Agencies", L"-code"},
    {L"Resellers", L"-part"},
};

// Lines of the entries of refusing.cpp.
enum Line { kStays, kStaysToo, kGoes, kGoesToo };

void ShowEmptyProfile(const Edition& edition) {
  PlayAddress(edition, "no address book", Book(kEmptyProfile), {}, [](Script& script, HWND dialog) {
    script.Photograph(dialog, L"-no-book");
    script.ShowOver(dialog, kNew, kNewEntryDialog, 0, L"-no-book");
  });
}

void Delete(Script& script, HWND dialog, std::initializer_list<Line> lines, int message) {
  script.MarkNone(dialog, kEntries);
  for (const Line each : lines) script.Mark(dialog, kEntries, each);
  script.Press(dialog, kDelete);
  HWND question = script.NextDialog(kConfirmDeletion);
  script.Close(question, IDYES);
  script.Answer(message, IDOK);
  script.WaitUsable(dialog);
}

void FailToMake(Script& script, HWND dialog) {
  script.Press(dialog, kNew);
  HWND where = script.NextDialog(kNewEntryDialog);
  script.ChooseDropped(where, kContainers, L"Warehouses");
  script.Close(where, IDOK);
  script.Answer(kNewEntryFailed, IDOK);
  script.WaitUsable(dialog);
}

void FailToShow(Script& script, HWND dialog, Line line, const std::wstring& variant) {
  script.MarkNone(dialog, kEntries);
  script.Mark(dialog, kEntries, line);
  script.AnswerAfter(dialog, kDetails, kDetailsFailed, IDOK, variant);
}

}  // namespace

void ShowStates(const Edition& edition) {
  const HeldFile shared(kFiles + L"Shared.orvab");
  PlayAddress(edition, "states of containers", Book(kStatesProfile), {}, [](Script& script, HWND dialog) {
    for (const auto& each : kStates) {
      script.ChooseDropped(dialog, kContainers, each.container);
      script.Photograph(dialog, each.state);
    }
  });
  ShowEmptyProfile(edition);
}

void ShowRefusals(const Edition& edition) {
  PlayAddress(
      edition, "refusals", Book(kStatesProfile), {},
      [](Script& script, HWND dialog) {
        script.ChooseDropped(dialog, kContainers, L"Office");
        Delete(script, dialog, {kStays}, kDeletionFailed);
        script.ChooseDropped(dialog, kContainers, L"Warehouses");
        FailToShow(script, dialog, kStays, L"");
        FailToShow(script, dialog, kStaysToo, L"-code");
        FailToMake(script, dialog);
        script.MarkNone(dialog, kEntries);
        script.Mark(dialog, kEntries, kGoes);
        script.AnswerAfter(dialog, IDOK, kCannotBeOpened, IDOK);
        Delete(script, dialog, {kStays, kGoes}, kOneNotDeleted);
        Delete(script, dialog, {kStays, kStaysToo, kGoes}, kSomeNotDeleted);
      },
      ADDRESS_ONE);
}

}  // namespace pictures
