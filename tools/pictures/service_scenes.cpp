#include <memory>
#include <stdexcept>

#include "orv/orv.h"
#include "orv/orvbase.hpp"
#include "tools/pictures/scenes.h"

namespace pictures {
namespace {

using orv::sdk::Owned;

constexpr int kProfileDialog = 255;
constexpr int kAddDialog = 256;
constexpr int kInstallDialog = 257;
constexpr int kBookSettings = 1100;  // of the personal address book
constexpr int kFileDialog = 285;

constexpr int kServices = 1155;
constexpr int kAdd = 1156;
constexpr int kConfigure = 1158;
constexpr int kUninstall = 1157;
constexpr int kInstallFromFile = 1160;
constexpr int kFileName = 0x47c;

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

struct CloseFile {
  void operator()(HANDLE file) const { CloseHandle(file); }
};
using File = std::unique_ptr<void, CloseFile>;

// A file that cannot be deleted while this program has it open.
File Hold(const std::wstring& path) {
  HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_ALWAYS, 0, nullptr);
  if (file == INVALID_HANDLE_VALUE) throw std::runtime_error("a file cannot be held open");
  return File(file);
}

// The window of a service's own settings. A profile lists its services in any order.
void ShowSettings(Script& script, HWND profile, const std::wstring& service, int number) {
  script.Choose(profile, kServices, service);
  script.ShowOver(profile, kConfigure, number);
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
  script.Photograph(chooser);
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
  const File file = Hold(held);
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

}  // namespace

void ShowServiceDialogs(const Edition& edition, const std::wstring& profile, const std::wstring& folder) {
  Play(
      edition, "the services of a profile", [&] { ConfigureProfile(profile); },
      [&](Script& script) {
        HWND dialog = script.NextDialog(kProfileDialog);
        script.Photograph(dialog);
        ShowSettings(script, dialog, L"Personal address book", kBookSettings);
        FailToAdd(script, dialog, kSingle, kAlreadyInProfile);
        FailToAdd(script, dialog, kLibraryMissing, kAddFailed);
        HWND add = OpenAdd(script, dialog, kSingle);
        UseAddDialog(script, add, folder);
        script.Close(add, IDCANCEL);
        script.WaitUsable(dialog);
        script.Close(dialog, IDCANCEL);
      });
}

}  // namespace pictures
