// The windows by keys alone.
#include "platform/process.h"
#include "tests/providers/windows_fixture.h"

namespace orv::test {
namespace {

// Of the library's own dialogs.
constexpr int kServices = 1155, kAddService = 1156, kConfigure = 1158, kTypeAhead = 1164, kEntries = 1166,
              kToButton = 1167, kToWell = 1018, kNewEntry = 1173;

// Somebody with a keyboard and nothing else: every key goes to what has the focus.
class Typist {
 public:
  explicit Typist(DialogScript& script) : script_(script) {}

  // The window that comes up next, once it has the focus.
  HWND Next() {
    const HWND window = script_.NextDialog();
    WaitFocusIn(window);
    return window;
  }
  void WaitFocusIn(HWND window) {
    thread_ = GetWindowThreadProcessId(window, nullptr);
    script_.WaitEnabled(window);
    script_.WaitUntil([=, this] { return IsChild(window, Focus()) != FALSE; }, "the focus");
  }
  void Key(UINT key) { script_.Post(Focus(), WM_KEYDOWN, key); }
  // A key that ends the window.
  void Leave(HWND window, UINT key) {
    Key(key);
    script_.WaitClosed(window);
  }
  // Alt and the letter that the control, or the label before it, marks.
  void Access(HWND window, int control) {
    const HWND marked = GetDlgItem(window, control);
    std::wstring text = WindowText(marked);
    if (text.find(L'&') == text.npos) text = WindowText(GetWindow(marked, GW_HWNDPREV));
    constexpr LPARAM kAlt = 1 << 29;
    ASSERT_NE(text.find(L'&'), text.npos) << control;
    script_.Post(Focus(), WM_SYSCHAR, std::towlower(text.at(text.find(L'&') + 1)), kAlt);
  }
  void TabTo(int control) {
    for (int presses = 0; GetDlgCtrlID(Focus()) != control && presses < 40; ++presses) {
      const HWND before = Focus();
      Key(VK_TAB);
      script_.WaitUntil([=, this] { return Focus() != nullptr && Focus() != before; }, "the next control");
    }
    EXPECT_EQ(GetDlgCtrlID(Focus()), control);
  }
  void WaitFocus(int control) {
    script_.WaitUntil([=, this] { return GetDlgCtrlID(Focus()) == control; }, "the focus of a control");
  }
  // Into an edit that is empty, or selected as the Tab key does.
  void Type(const std::wstring& text) {
    const HWND edit = Focus();
    for (const wchar_t each : text) script_.Post(edit, WM_CHAR, each);
    script_.WaitUntil([&] { return WindowText(edit) == text; }, "what was typed");
  }
  void WaitCount(HWND list, UINT message, LRESULT count) {
    script_.WaitUntil([=, this] { return script_.Send(list, message) == count; }, "a list");
  }

 private:
  HWND Focus() const {
    GUITHREADINFO info{};
    info.cbSize = sizeof info;
    GetGUIThreadInfo(thread_, &info);
    return info.hwndFocus;
  }

  DialogScript& script_;
  DWORD thread_ = 0;
};

class KeyboardTest : public WindowsTest {
 protected:
  KeyboardTest() : texts_(LoadLibraryW(L"XHTFCAUS.dll")) {
    process::SetResourceLibrary(texts_);
    installation_.WriteCatalogue(
        "[Services]\r\nPersonalBook=Personal address book\r\nOther=Another one\r\n[PersonalBook]\r\n"
        "PR_DISPLAY_NAME=Personal address book\r\nPR_SERVICE_DLL_NAME=xhtpab%c.dll\r\n"
        "PR_SERVICE_ENTRY_NAME=PersonalServiceEntry\r\nPR_SERVICE_SUPPORT_FILES=xhtpab%c.dll\r\n"
        "[Other]\r\nPR_DISPLAY_NAME=Other\r\nPR_SERVICE_DLL_NAME=xhtpab%c.dll\r\nPR_SERVICE_ENTRY_NAME="
        "PersonalServiceEntry\r\nPR_SERVICE_SUPPORT_FILES=xhtpab%c.dll\r\n");
  }
  ~KeyboardTest() override {
    process::SetResourceLibrary(nullptr);
    FreeLibrary(texts_);
  }

 private:
  const HMODULE texts_;
};

// The service is added, and its book made where the person wants it.
void SetUpBook(DialogScript& script, const std::wstring& path) {
  Typist person(script);
  const HWND profile = person.Next();
  person.Access(profile, kAddService);
  const HWND offered = person.Next();
  person.Leave(offered, VK_RETURN);
  person.WaitFocusIn(profile);
  person.WaitCount(GetDlgItem(profile, kServices), LB_GETCOUNT, 1);
  person.Access(profile, kConfigure);
  const HWND settings = person.Next();
  person.Type(path);
  person.Leave(settings, VK_RETURN);
  person.WaitFocusIn(profile);
  person.TabTo(IDOK);
  person.Leave(profile, VK_RETURN);
}

void TypeContact(Typist& person, HWND contact) {
  person.WaitFocus(IDC_NAME);
  person.Type(L"Ida Wells");
  person.TabTo(IDC_TABS);
  person.Key(VK_RIGHT);
  person.TabTo(IDC_NUMBER);
  person.Type(L"+49 30 1");
  person.Key(VK_RETURN);
  person.TabTo(IDOK);
  person.Leave(contact, VK_RETURN);
}

TEST_F(KeyboardTest, ANewPersonComesFromAnEmptyProfileToARecipient) {
  sdk::ComPtr<IOrvProfAdmin> profiles;
  ASSERT_EQ(OrvAdminProfiles(MAPI_UNICODE, profiles.Put(), 0), S_OK);
  ASSERT_EQ(profiles->CreateProfile(L"New", 0, MAPI_UNICODE), S_OK);
  {
    DialogDriver driver([&](DialogScript& script) { SetUpBook(script, Path(L"mine.orvab")); });
    EXPECT_EQ(profiles->ConfigureProfile(L"New", 0, MAPI_UNICODE), S_OK);
  }
  Client client(L"New");
  LPADRLIST list = nullptr;
  {
    DialogDriver driver([](DialogScript& script) {
      Typist person(script);
      const HWND address = person.Next();
      person.Access(address, kNewEntry);
      person.Leave(person.Next(), VK_RETURN);
      person.Leave(person.Next(), VK_RETURN);
      TypeContact(person, person.Next());
      person.WaitFocusIn(address);
      person.WaitCount(GetDlgItem(address, kEntries), LB_GETCOUNT, 1);
      person.Access(address, kTypeAhead);
      person.WaitFocus(kTypeAhead);
      person.Type(L"ida w");
      person.WaitCount(GetDlgItem(address, kEntries), LB_GETSELCOUNT, 1);
      person.Access(address, kToButton);
      person.WaitCount(GetDlgItem(address, kToWell), LB_GETCOUNT, 1);
      person.TabTo(IDOK);
      person.Leave(address, VK_RETURN);
    });
    ULONG to = MAPI_TO;
    ADRPARM parameters{};
    parameters.ulFlags = DIALOG_MODAL;
    parameters.cDestFields = 1;
    parameters.lpulDestComps = &to;
    EXPECT_EQ(OrvAddress(0, client.Book(), &parameters, &list), S_OK);
  }
  ASSERT_TRUE(list != nullptr && list->cEntries == 1);
  const PropList recipient(sdk::ValueView(list->aEntries[0]));
  EXPECT_EQ(recipient.Text(PR_DISPLAY_NAME), L"Ida Wells");
  EXPECT_EQ(client.Text(IdOf(recipient), PR_EMAIL_ADDRESS), L"+49 30 1");
  OrvFreeBuffer(list->aEntries[0].rgPropVals);
  OrvFreeBuffer(list);
}

}  // namespace
}  // namespace orv::test
