#include "providers/personal/configure_window.h"

#include <cderr.h>
#include <commdlg.h>
#include <shlwapi.h>

#include <algorithm>
#include <iterator>

#include "orv/orvbook.h"
#include "providers/book/backup.h"
#include "providers/book/provider/book_health.h"
#include "providers/book/text.h"
#include "providers/book/windows/controls.h"
#include "providers/book/windows/help_topics.h"
#include "providers/book/windows/resource.h"
#include "providers/book/windows/saving.h"
#include "providers/personal/place.h"

namespace personal {
namespace {

constexpr int kLongestPath = 32000;
constexpr int kLongestName = 120;
constexpr wchar_t kExtension[] = L"orvab";
// Of the file boxes' room for a path.
constexpr DWORD kPathRoom = 4096;

std::wstring SizeText(ULONGLONG bytes) {
  wchar_t text[64] = L"";
  StrFormatByteSizeW(static_cast<LONGLONG>(bytes), text, static_cast<UINT>(std::size(text)));
  return text;
}

// With the digits grouped as the user's locale does.
std::wstring NumberText(ULONGLONG number) {
  wchar_t text[64] = L"", point[8] = L"";
  const std::wstring digits = std::to_wstring(number);
  if (GetNumberFormatEx(LOCALE_NAME_USER_DEFAULT, 0, digits.c_str(), nullptr, text,
                        static_cast<int>(std::size(text))) == 0)
    return digits;
  GetLocaleInfoEx(LOCALE_NAME_USER_DEFAULT, LOCALE_SDECIMAL, point, static_cast<int>(std::size(point)));
  const std::wstring whole = text;
  DWORD decimals = 0;
  GetLocaleInfoEx(LOCALE_NAME_USER_DEFAULT, LOCALE_IDIGITS | LOCALE_RETURN_NUMBER,
                  reinterpret_cast<wchar_t*>(&decimals), sizeof decimals / sizeof(wchar_t));
  return decimals != 0 ? whole.substr(0, whole.rfind(point)) : whole;
}

// As the user's locale writes it; empty for none.
std::wstring TimeText(const FILETIME& time) {
  SYSTEMTIME universal{}, local{};
  const bool isSet = time.dwHighDateTime != 0 || time.dwLowDateTime != 0;
  if (!isSet || !FileTimeToSystemTime(&time, &universal) ||
      !SystemTimeToTzSpecificLocalTime(nullptr, &universal, &local))
    return {};
  wchar_t day[80] = L"", hour[80] = L"";
  GetDateFormatEx(LOCALE_NAME_USER_DEFAULT, DATE_SHORTDATE, &local, nullptr, day,
                  static_cast<int>(std::size(day)), nullptr);
  GetTimeFormatEx(LOCALE_NAME_USER_DEFAULT, TIME_NOSECONDS, &local, nullptr, hour,
                  static_cast<int>(std::size(hour)));
  return std::wstring(day) + L" " + hour;
}

// A name beside the book that no file has.
std::wstring RepairedPath(const std::wstring& path) {
  for (int number = 2;; ++number) {
    std::wstring proposed =
        FolderOf(path) + StemOf(path) + L"-" + std::to_wstring(number) + L"." + kExtension;
    if (!IsThere(proposed)) return proposed;
  }
}

// Where a backup becomes a book: in the place of the one that is missing, else beside it. Empty for what is none.
// Changes that the missing one has left behind would be made in whatever took its place.
std::wstring RestoredPath(const std::wstring& backup) {
  const std::wstring path = BookOfBackup(backup);
  const bool isFree = !IsThere(path) && !IsThere(path + L"-wal") && !IsThere(path + L"-journal");
  return path.empty() || isFree ? path : RepairedPath(path);
}

class ConfigureWindow final : public kit::Dialog {
 public:
  ConfigureWindow(const kit::Language& language, const BookChoice& choice, const StoreChoice& store)
      : Dialog(language, IDD_CONFIGURE, book::kConfigureTopics), choice_(choice), store_(store) {}

 private:
  void OnShow() override;
  bool OnCommand(int control, int notification) override;
  void OnOk() override;

  std::wstring Path() const { return ReadyPath(TextOf(IDC_BOOK_FILE)); }
  std::wstring ChooseFile(UINT title, const std::wstring& proposed) const;
  void Browse();
  void ShowPlace();
  UINT NewText() const;
  void ShowFacts();
  void CheckFile();
  void RepairFile();
  HRESULT Store();
  HRESULT StoreBackup(BookChoice& choice, const std::wstring& restored);
  void ShowHealth(const OrvBookHealth& health, const std::wstring& whenFine);
  void ShowFindings(std::wstring state, const std::vector<book::Finding>& findings);
  std::wstring TextOf(const book::Finding& finding) const;
  std::wstring LostText(const book::Salvage& salvage) const;
  using Dialog::TextOf;

  const BookChoice choice_;
  const StoreChoice& store_;
  std::wstring shown_;  // whose facts are shown
};

void ConfigureWindow::OnShow() {
  book::ReadFromTheLeft(*this, IDC_BOOK_FILE);
  LimitText(IDC_BOOK_FILE, kLongestPath);
  LimitText(IDC_BOOK_NAME, kLongestName);
  SetText(IDC_BOOK_FILE, choice_.path);
  SetText(IDC_BOOK_NAME, choice_.name);
  Check(IDC_BOOK_BACKUPS, choice_.keepsBackups);
  const bool isLastFirst = choice_.names == book::NameForm::kLastFirst;
  Check(IDC_NAMES_AS_WRITTEN, !isLastFirst);
  Check(IDC_NAMES_LAST_FIRST, isLastFirst);
  ShowPlace();
}

bool ConfigureWindow::OnCommand(int control, int notification) {
  switch (control) {
    case IDC_BOOK_FILE:
      if (notification == EN_KILLFOCUS && Path() != shown_) ShowPlace();
      return true;
    case IDC_BOOK_BROWSE:
      return Browse(), true;
    case IDC_BOOK_CHECK:
      return CheckFile(), true;
    case IDC_BOOK_REPAIR:
      return RepairFile(), true;
    default:
      return false;
  }
}

// Files that are there and new ones: nothing is overwritten.
std::wstring ConfigureWindow::ChooseFile(UINT title, const std::wstring& proposed) const {
  std::wstring path(kPathRoom, L'\0');
  std::copy_n(proposed.begin(), std::min<std::size_t>(proposed.size(), kPathRoom - 1), path.begin());
  std::wstring filter = Texts().Text(IDS_BOOK_FILTER), caption = Texts().Text(title);
  std::replace(filter.begin(), filter.end(), L'|', L'\0');
  OPENFILENAMEW box{};
  box.lStructSize = sizeof box;
  box.hwndOwner = Window();
  box.lpstrFilter = filter.c_str();
  box.lpstrFile = path.data();
  box.nMaxFile = kPathRoom;
  box.lpstrTitle = caption.c_str();
  box.lpstrDefExt = kExtension;
  box.Flags = OFN_EXPLORER | OFN_HIDEREADONLY | OFN_NOCHANGEDIR | OFN_PATHMUSTEXIST;
  if (GetSaveFileNameW(&box)) return path.c_str();
  // What was typed is no name of a file: the box comes up without it.
  if (CommDlgExtendedError() != FNERR_INVALIDFILENAME) return {};
  path.front() = L'\0';
  return GetSaveFileNameW(&box) ? path.c_str() : std::wstring();
}

void ConfigureWindow::Browse() {
  const std::wstring chosen = ChooseFile(IDS_CHOOSE_BOOK, Path());
  if (chosen.empty()) return;
  SetText(IDC_BOOK_FILE, chosen);
  ShowPlace();
}

// What lies where the path leads, and what OK would make of it.
void ConfigureWindow::ShowPlace() {
  shown_ = Path();
  const DWORD attributes = GetFileAttributesW(shown_.c_str());
  const bool isThere = attributes != INVALID_FILE_ATTRIBUTES;
  UINT text = IDS_BOOK_THERE;
  if (isThere && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) text = IDS_BOOK_IS_FOLDER;
  if (!isThere) text = IsThere(FolderOf(shown_)) || shown_ == UsualPath() ? NewText() : IDS_BOOK_NO_FOLDER;
  const bool isBackup = text == IDS_BOOK_THERE && !BookOfBackup(shown_).empty();
  SetText(IDC_STATUS, Texts().Text(isBackup ? IDS_BOOK_IS_BACKUP : text));
  Enable(IDC_BOOK_CHECK, text == IDS_BOOK_THERE);
  Enable(IDC_BOOK_REPAIR, text == IDS_BOOK_THERE);
  if (text == IDS_BOOK_THERE) return ShowFacts();
  SetText(IDC_BOOK_FACTS, Texts().Text(IDS_BOOK_FACTS_NONE));
  // Once more where the Tab key leads, since the line under the path is passed over.
  SetText(IDC_BOOK_STATE, Texts().Text(text));
}

// A book that was there may come back.
UINT ConfigureWindow::NewText() const {
  const bool isGone = choice_.isKnown && shown_ == ReadyPath(choice_.path);
  return isGone ? IDS_BOOK_GONE_HERE : IDS_BOOK_NEW;
}

void ConfigureWindow::ShowFacts() {
  const book::Waiting waiting;
  book::BookFile file(shown_, {.create = false, .isReadOnly = true, .keepsBackups = false});
  OrvBookHealth health{};
  static_cast<void>(book::TellFigures(file, &health));
  ShowHealth(health, Texts().Text(health.fReadOnly ? IDS_BOOK_ONLY_READ : IDS_BOOK_OPENS));
}

void ConfigureWindow::CheckFile() {
  const book::Waiting waiting;
  OrvBookHealth health{};
  std::vector<book::Finding> findings;
  static_cast<void>(book::CheckWhole(shown_, &health, nullptr, &findings));
  ShowHealth(health, Texts().Text(IDS_BOOK_CHECKED));
  if (!findings.empty()) ShowFindings(book::FaultTextInSettings(Texts(), health.hrStatus), findings);
}

void ConfigureWindow::ShowHealth(const OrvBookHealth& health, const std::wstring& whenFine) {
  const bool isFine = SUCCEEDED(health.hrStatus);
  const std::wstring values[] = {NumberText(health.cEntries), NumberText(health.cLists),
                                 NumberText(health.cDeleted), SizeText(health.cbFile),
                                 TimeText(health.ftChanged)};
  SetText(IDC_BOOK_FACTS, Texts().Text(isFine ? IDS_BOOK_FACTS : IDS_BOOK_FACTS_OF_BROKEN, values));
  ShowFindings(isFine ? whenFine : book::FaultTextInSettings(Texts(), health.hrStatus), {});
}

// A line each; what the engine says of one page after the other is one finding here.
void ConfigureWindow::ShowFindings(std::wstring state, const std::vector<book::Finding>& findings) {
  std::wstring last;
  for (const book::Finding& each : findings) {
    std::wstring text = TextOf(each);
    if (text != last) state += L"\r\n" + text;
    last = std::move(text);
  }
  SetText(IDC_BOOK_STATE, state);
}

std::wstring ConfigureWindow::TextOf(const book::Finding& finding) const {
  UINT advice = IDS_ADVICE_REPAIR;
  if (finding.fault == book::Fault::kCard) advice = IDS_ADVICE_ENTRY;
  if (finding.fault == book::Fault::kUncounted) advice = IDS_ADVICE_COMPARE;
  const std::wstring name = book::ToWide(finding.name);
  const std::wstring values[] = {name.empty() ? std::to_wstring(finding.entry) : name};
  return Texts().Text(IDS_FAULT_OF_BOOK + static_cast<UINT>(finding.fault), values) + L" " +
         Texts().Text(advice);
}

std::wstring ConfigureWindow::LostText(const book::Salvage& salvage) const {
  const std::wstring values[] = {NumberText(salvage.lost)};
  if (!salvage.isMoreLost) return values[0];
  return salvage.lost == 0 ? Texts().Text(IDS_UNKNOWN_NUMBER) : Texts().Text(IDS_AT_LEAST, values);
}

// The book stays as it is; what can be read goes into a new one, which may then be used in its place.
void ConfigureWindow::RepairFile() {
  const std::wstring target = ChooseFile(IDS_CHOOSE_REPAIRED, RepairedPath(shown_));
  if (target.empty()) return;
  book::Salvage salvage;
  HRESULT hr = S_OK;
  {
    const book::Waiting waiting;
    hr = book::RepairInto(shown_, target, nullptr, &salvage);
  }
  if (hr == MAPI_E_COLLISION) return static_cast<void>(Tell(Texts().Text(IDS_REPAIR_NEEDS_NEW)));
  if (FAILED(hr)) return static_cast<void>(Tell(book::FaultTextInSettings(Texts(), hr)));
  const std::wstring values[] = {NumberText(salvage.saved), LostText(salvage)};
  if (!salvage.findings.empty()) ShowFindings(TextOf(IDC_BOOK_STATE), salvage.findings);
  if (!Ask(Texts().Text(IDS_ASK_USE_REPAIRED, values))) return;
  SetText(IDC_BOOK_FILE, target);
  ShowPlace();
}

HRESULT ConfigureWindow::Store() {
  const book::Waiting waiting;  // another program may hold the book for seconds
  const auto names =
      IsChecked(IDC_NAMES_LAST_FIRST) ? book::NameForm::kLastFirst : book::NameForm::kAsWritten;
  BookChoice choice{TextOf(IDC_BOOK_FILE), TextOf(IDC_BOOK_NAME), names, IsChecked(IDC_BOOK_BACKUPS)};
  const std::wstring restored = RestoredPath(Path());
  return restored.empty() ? store_(choice) : StoreBackup(choice, restored);
}

// A backup is deleted some day by whoever makes the next ones, so it is never the book itself.
HRESULT ConfigureWindow::StoreBackup(BookChoice& choice, const std::wstring& restored) {
  const HRESULT copied = book::Answer([&] {
    book::Database backup(Path(), book::Database::Access::kRead);
    book::CopyBook(backup, restored);
  });
  if (FAILED(copied)) return copied;
  choice.path = restored;
  const HRESULT hr = store_(choice);
  if (FAILED(hr)) DeleteFileW(restored.c_str());
  return hr;
}

void ConfigureWindow::OnOk() {
  const HRESULT hr = Store();
  if (SUCCEEDED(hr)) return Close(IDOK);
  Tell(hr == MAPI_E_NOT_FOUND ? Texts().Text(IDS_BOOK_NO_FOLDER) : book::FaultTextInSettings(Texts(), hr));
  FocusOn(IDC_BOOK_FILE);
}

}  // namespace

HRESULT ShowConfigure(HWND owner, const kit::Language& language, const BookChoice& choice,
                      const StoreChoice& store) {
  switch (ConfigureWindow(language, choice, store).Show(owner)) {
    case IDOK:
      return S_OK;
    case kit::Dialog::kNotShown:
      return MAPI_E_CALL_FAILED;
    default:
      return MAPI_E_USER_CANCEL;
  }
}

}  // namespace personal
