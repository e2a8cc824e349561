// The Address dialog in a test: a real address book over two scripted providers, the caller's list as short texts,
// and a driver that shows the dialog through its export.
#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "addrbook/addr_book.h"
#include "hosting/provider_list.h"
#include "orv/orv.h"
#include "platform/buffer.h"
#include "tests/support/dialog_driver.h"
#include "tests/support/fake_provider/fake_script.h"
#include "tests/ui/resource_fixture.h"

namespace orv::test {

// A provider whose deletions take effect, but for keys that it keeps.
class AddressScript final : public FakeScript {
 public:
  using FakeScript::FakeScript;

  void OnDelete(const std::string& key) override;
  // Tells every registered sink that something changed.
  void Notify() const;

  std::set<std::string> kept;
};

// One recipient of the caller's list: what the dialog shows, who it is, in which well.
struct Recipient {
  std::vector<BYTE> entryId;
  std::wstring name;
  LONG type = MAPI_TO;
  ULONG without = 0;  // a column that is left out
  ULONG objectType = MAPI_MAILUSER;
};
AdrListPtr MakeRecipients(const std::vector<Recipient>& recipients);

enum Control : int {
  kTo = 1018,
  kCc,
  kBcc,
  kIntoContainer = 1161,
  kThisMessageOnly,
  kContainers,
  kTypeAhead,
  kEntries = 1166,
  kToButton,
  kCcButton,
  kBccButton,
  kNew = 1173,
  kDetails,
  kDelete,
  kStatus,
  kTitle = 1180,
  kToLabel,
};

// The open dialog in the hands of a script. Presses return when the dialog has dealt with them.
class AddressPilot {
 public:
  using Texts = std::vector<std::wstring>;
  using Lines = std::vector<int>;

  AddressPilot(DialogScript& theScript, HWND window) : script(theScript), dialog(window) {}

  HWND Item(int control) const { return GetDlgItem(dialog, control); }
  std::wstring Text(int control) const { return WindowText(Item(control)); }
  LRESULT Send(int control, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const {
    return script.Send(Item(control), message, wParam, lParam);
  }
  // What was posted to the dialog before has been dealt with.
  void Settle() const;

  Texts Items(int list) const { return script.Items(dialog, list); }
  // Takes the selection of a list and selects these lines; no notification, as with the keyboard's.
  void Select(int list, const Lines& lines) const;
  Lines Selected(int list) const;
  void DoubleClick(int list, int line) const {
    script.PostDoubleClick(dialog, list, line);
    Settle();
  }
  void DeleteKey(int list) const { script.Post(Item(list), WM_KEYDOWN, VK_DELETE); }

  Texts Containers() const;
  int Container() const { return static_cast<int>(Send(kContainers, CB_GETCURSEL)); }
  void Choose(int container) const {
    Send(kContainers, CB_SETCURSEL, static_cast<WPARAM>(container));
    script.Post(dialog, WM_COMMAND, MAKEWPARAM(kContainers, CBN_SELCHANGE));
  }
  // The entries once the choice of a container, or a notification, has been dealt with.
  Texts EntriesOf(int container) const {
    Choose(container);
    Settle();
    return Items(kEntries);
  }
  Texts EntriesAfterNotice(const AddressScript& provider) const {
    provider.Notify();
    Settle();
    return Items(kEntries);
  }

  void Press(int control) const { script.Press(dialog, control); }
  void PostPress(int control) const { script.PostPress(dialog, control); }
  // Selects entries and presses a button.
  void PressFor(const Lines& entries, int control) const {
    Select(kEntries, entries);
    Press(control);
  }
  // Presses a button that opens the new-entry dialog and lets the steps act there until it has closed.
  void InNewEntry(const std::function<void(const AddressPilot&)>& steps) const;
  // Answers the new-entry dialog at once.
  void AnswerNewEntry(int button) const {
    InNewEntry([=](const AddressPilot& question) { question.PostPress(button); });
  }
  // Presses a button whose only effect is a box, which is answered; its text.
  std::wstring BoxAfter(int control, int answer = IDOK) const {
    PostPress(control);
    return AnswerBox(answer);
  }
  std::wstring AnswerBox(int answer = IDOK) const;
  // Presses a button and agrees to whatever it shows.
  void PressThrough(int control) const;
  void Close(int button) const {
    script.WaitEnabled(dialog);
    script.Close(dialog, button);
  }

  DialogScript& script;
  HWND dialog;
};

// Containers, in the order of the drop-down: Company, "  Staff" (anna, bernd, the group all, carla),
// "    Night shift" (dora, and emil of whom only the key is known), Personal, "  Friends" (fred). Staff is the
// default directory; Personal, which comes before it, and Friends can be changed, and Friends is the personal
// address book.
class AddressTest : public ResourceFixture {
 protected:
  using Pilot = const AddressPilot&;
  using Steps = std::function<void(Pilot)>;
  using Texts = AddressPilot::Texts;
  using Lines = AddressPilot::Lines;

  AddressTest();
  ~AddressTest() override;

  // Shows the dialog with so many wells over `list_`, which is the result afterwards.
  HRESULT Show(ULONG wells, const Steps& steps, HWND owner = nullptr);
  // The call alone, for a driver of the test's own.
  HRESULT Call(ULONG wells, HWND owner = nullptr);
  // The same, and OK or Cancel at the end of the steps.
  void ShowAndConfirm(ULONG wells, const Steps& steps) { ShowAndPress(IDOK, wells, steps); }
  void ShowAndCancel(ULONG wells, const Steps& steps) { ShowAndPress(IDCANCEL, wells, steps); }
  void ShowAndPress(int button, ULONG wells, const Steps& steps);

  std::vector<BYTE> Id(const char* key) const { return company_.EntryId(key); }
  // The lines of the log that end in one of these operations.
  std::vector<std::string> Calls(const std::vector<std::string>& operations) const;
  // The result as "name/type", in order.
  Texts Result() const;

  FakeLog log_;
  AddressScript company_{"company", FakeUid('A'), &log_};
  AddressScript personal_{"personal", FakeUid('B'), &log_};
  ComPtr<CABServiceList> providers_ = CABServiceList::Create();
  ComPtr<CAddrBook> book_;
  ADRPARM parameters_{};
  ULONG types_[4] = {MAPI_TO, MAPI_CC, MAPI_BCC, 0};
  AdrListPtr list_;
};

}  // namespace orv::test
