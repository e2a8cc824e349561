#include <stdexcept>

#include "orv/orv.h"
#include "orv/orvbase.hpp"
#include "tools/pictures/address_play.h"
#include "tools/pictures/held_file.h"
#include "tools/pictures/numbers.h"
#include "tools/pictures/scenes.h"

namespace pictures {
namespace {

using orv::sdk::Owned;

constexpr int kAddDialog = 256;
constexpr int kInstallDialog = 257;
constexpr int kFileDialog = 285;

constexpr int kAdd = 1156;
constexpr int kUninstall = 1157;
constexpr int kInstallFromFile = 1160;
constexpr int kFileName = 0x47c;

constexpr int kBookFile = 2300;
constexpr int kBookName = 2302;
constexpr int kCheckBook = 2305;

// Of the sample provider; the first two are the system's windows and have no numbers.
constexpr int kSampleSettings = 1200;
constexpr int kSampleRefusal = 1201;
constexpr int kSampleDetails = 1202;

constexpr int kAlreadyInProfile = 269;
constexpr int kAddFailed = 270;
constexpr int kSupportFileMissing = 276;
constexpr int kSupportFilesEmpty = 278;
constexpr int kNoServiceChosen = 279;
constexpr int kConfirmUninstall = 280;
constexpr int kServiceInUse = 281;
constexpr int kFileNotDeleted = 282;

// Lines of catalogue.ini in this folder, named after what happens to the service.
enum Line { kUsed, kSingle, kLibraryMissing, kFileMissing, kNoFilesListed, kFileHeld };

void ConfigureProfile(const std::wstring& profile) {
  LPORVPROFADMIN admin = nullptr;
  if (FAILED(OrvAdminProfiles(MAPI_UNICODE, &admin, 0))) throw std::runtime_error("no administration");
  const Owned<IOrvProfAdmin> owner(admin);
  if (admin->ConfigureProfile(profile.c_str(), 0, MAPI_UNICODE) != MAPI_E_USER_CANCEL)
    throw std::runtime_error("no profile dialog");
}

// Scenes in the profile dialog, which `act` finds and leaves open.
void PlayProfile(const Edition& edition, const std::string& scene,
                 const std::function<void(Script&, HWND)>& act) {
  Play(
      edition, scene, [] { ConfigureProfile(kProfile); },
      [&](Script& script) {
        HWND dialog = script.NextDialog(kProfileDialog);
        act(script, dialog);
        script.Close(dialog, IDCANCEL);
      });
}

// Opens the add dialog and chooses a service there.
HWND OpenAdd(Script& script, HWND profile, Line line) {
  script.Press(profile, kAdd);
  HWND add = script.NextDialog(kAddDialog);
  script.Choose(add, kServices, line);
  return add;
}

void FailToAdd(Script& script, HWND profile, Line line, int message) {
  script.Close(OpenAdd(script, profile, line), IDOK);
  script.Answer(message, IDOK);
  script.WaitUsable(profile);
}

void Install(Script& script, HWND add, const std::wstring& catalogue) {
  script.Press(add, kInstallFromFile);
  HWND chooser = script.NextDialog(kFileDialog);
  script.PhotographAsIs(chooser);
  script.Type(chooser, kFileName, catalogue);
  script.Close(chooser, IDOK);
  HWND install = script.NextDialog(kInstallDialog);
  script.Photograph(install);
  script.AnswerAfter(install, IDOK, kNoServiceChosen, IDOK);
  script.Close(install, IDCANCEL);
  script.WaitUsable(add);
}

void Uninstall(Script& script, HWND add, const std::wstring& held) {
  script.Choose(add, kServices, kUsed);
  script.AnswerAfter(add, kUninstall, kServiceInUse, IDOK);
  const HeldFile file(held);
  script.Choose(add, kServices, kFileHeld);
  script.Press(add, kUninstall);
  script.Answer(kConfirmUninstall, IDYES);
  script.Answer(kFileNotDeleted, IDOK);
  script.WaitUsable(add);
}

void UseAddDialog(Script& script, HWND add, const std::wstring& folder) {
  script.Photograph(add);
  Install(script, add, folder + L"further_services.ini");
  script.Choose(add, kServices, kFileMissing);
  script.AnswerAfter(add, IDOK, kSupportFileMissing, IDOK);
  script.Choose(add, kServices, kNoFilesListed);
  script.AnswerAfter(add, IDOK, kSupportFilesEmpty, IDOK);
  Uninstall(script, add, folder + L"held.dat");
}

// A profile lists its services in any order.
HWND OpenSettings(Script& script, HWND profile, const std::wstring& service, int number) {
  script.Choose(profile, kServices, service);
  script.Press(profile, kConfigure);
  return script.NextDialog(number);
}

void TypePath(Script& script, HWND settings, const std::wstring& path, const std::wstring& variant) {
  script.Focus(settings, kBookFile);
  script.Type(settings, kBookFile, path);
  script.Focus(settings, kBookName);
  script.Photograph(settings, variant);
}

// A file that is no contact file is refused in words.
void UseSampleSettings(Script& script, HWND profile) {
  HWND chooser = OpenSettings(script, profile, L"Contact file", kSampleSettings);
  script.PhotographAsIs(chooser);
  script.Type(chooser, kFileName, kFiles + L"Scans.orvab");
  script.Press(chooser, IDOK);
  script.AnswerBox(kSampleRefusal, IDOK);
  script.WaitUsable(profile);
}

void ShowSampleDetails(const Edition& edition) {
  PlayAddress(edition, "contacts of a file", Book(kProfile), {}, [](Script& script, HWND dialog) {
    script.ChooseDropped(dialog, kContainers, L"contacts");
    script.Mark(dialog, kEntries, 0);
    script.Photograph(dialog, L"-file");
    script.Press(dialog, kDetails);
    HWND details = script.NextDialog(kSampleDetails);
    script.Photograph(details);
    script.Close(details, IDCANCEL);
    script.WaitUsable(dialog);
  });
}

}  // namespace

void ShowServices(const Edition& edition) {
  PlayProfile(edition, "the services of a profile", [&](Script& script, HWND dialog) {
    script.Photograph(dialog);
    FailToAdd(script, dialog, kSingle, kAlreadyInProfile);
    FailToAdd(script, dialog, kLibraryMissing, kAddFailed);
    HWND add = OpenAdd(script, dialog, kSingle);
    UseAddDialog(script, add, edition.folder);
    script.Close(add, IDCANCEL);
    script.WaitUsable(dialog);
  });
}

void ShowSettings(const Edition& edition) {
  PlayProfile(edition, "the settings of a book", [](Script& script, HWND dialog) {
    HWND settings = OpenSettings(script, dialog, L"Personal address book", kBookSettings);
    script.Photograph(settings);
    script.Press(settings, kCheckBook);
    script.Photograph(settings, L"-checked");
    TypePath(script, settings, kFiles + L"Suppliers.orvab", L"-new");
    TypePath(script, settings, kFiles + L"Archive.orvab", L"-damaged");
    TypePath(script, settings, kFiles + L"Lost\\Suppliers.orvab", L"-no-folder");
    TypePath(script, settings, kFiles + L"Office.orvab", L"-read-only");
    TypePath(script, settings, kFiles + L"Scans.orvab", L"-foreign");
    TypePath(script, settings, kFiles + L"Central.orvab", L"-newer");
    const HeldFile held(kFiles + L"Shared.orvab");
    TypePath(script, settings, kFiles + L"Shared.orvab", L"-busy");
    script.Close(settings, IDCANCEL);
    script.WaitUsable(dialog);
  });
}

void ShowSample(const Edition& edition) {
  PlayProfile(edition, "the settings of contact files", UseSampleSettings);
  ShowSampleDetails(edition);
}

}  // namespace pictures
