// The Address dialog in a test: a real address book over two scripted providers, the caller's list as short texts,
// and a driver that shows the dialog through its export.
#pragma once

#include <functional>
#include <map>
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

// A provider that lets the test act inside its calls, on the dialog's thread, and whose deletions take effect.
class AddressScript final : public FakeScript {
 public:
  using FakeScript::FakeScript;

  std::map<std::string, std::function<void()>> during;

  FakeAnswer OnCall(const char* operation) override;
  void OnDelete(const std::string& key) override;
  // Tells every registered sink that something changed.
  void Notify() const;
};

// Containers, in the order of the drop-down: Company, "  Staff" (anna, bernd, the group all, carla),
// "    Night shift" (dora, and emil of whom only the key is known), Personal, "  Friends" (fred). Staff is the
// default directory; Personal, which comes before it, and Friends can be changed, and Friends is the personal
// address book.
class AddressWorld {
 public:
  AddressWorld();
  ~AddressWorld();
  AddressWorld(const AddressWorld&) = delete;
  AddressWorld& operator=(const AddressWorld&) = delete;

  FakeLog log;
  AddressScript company{"company", FakeUid('A'), &log};
  AddressScript personal{"personal", FakeUid('B'), &log};
  ComPtr<CABServiceList> providers;
  ComPtr<CAddrBook> book;

 private:
  void Add(AddressScript& script);
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

class AddressTest : public ResourceFixture {
 protected:
  using Steps = std::function<void(DialogScript& script, HWND dialog)>;
  using Texts = std::vector<std::wstring>;

  enum Control : int {
    kTo = 1018,
    kCc,
    kBcc,
    kContainers = 1163,
    kTypeAhead,
    kEntries = 1166,
    kToButton,
    kCcButton,
    kBccButton,
    kNew = 1173,
    kDetails,
    kDelete,
    kTitle = 1180,
    kRefresh = 1208,
  };

  // Shows the dialog with so many wells over `list`, which is the result afterwards.
  HRESULT Show(ULONG wells, const Steps& steps);
  // The same, and Cancel at the end of the steps.
  void ShowAndCancel(ULONG wells, const Steps& steps);

  // Takes the selection of a list and selects these lines; no notification, as with the keyboard's.
  static void SelectLines(DialogScript& script, HWND dialog, int list, const std::vector<int>& lines);
  static std::vector<int> SelectedLines(DialogScript& script, HWND dialog, int list);
  static Texts ContainerTexts(DialogScript& script, HWND dialog);
  static int ContainerSelected(DialogScript& script, HWND dialog, int dropDown = kContainers);
  static void ChooseContainer(DialogScript& script, HWND dialog, int line);
  // The entries once a notification, or the choice of a container, has been dealt with.
  static Texts EntriesAfterNotice(DialogScript& script, HWND dialog, const AddressScript& provider);
  static Texts EntriesOfContainer(DialogScript& script, HWND dialog, int line);
  static void Type(DialogScript& script, HWND dialog, const wchar_t* text);
  // What was posted to the dialog before has been dealt with.
  static void Settle(DialogScript& script, HWND dialog);
  // Presses a button whose only effect is a box, which is answered; its text's number.
  UINT BoxAfter(DialogScript& script, HWND dialog, int control, int answer = IDOK);
  UINT AnswerBox(DialogScript& script, HWND dialog, int answer = IDOK);

  // The lines of the log that end in one of these operations.
  std::vector<std::string> Calls(const std::vector<std::string>& operations) const;
  // The result as "name/type", in order.
  Texts Result() const;

  AddressWorld world_;
  ADRPARM parameters_{};
  ULONG types_[4] = {MAPI_TO, MAPI_CC, MAPI_BCC, 0};
  AdrListPtr list_;
};

}  // namespace orv::test
