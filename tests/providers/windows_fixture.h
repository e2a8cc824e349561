// Windows of a personal book, opened through the library and driven by messages, over the file that they change.
#pragma once

#include <windows.h>

#include <commctrl.h>

#include <filesystem>
#include <fstream>

#include "providers/book/store.h"
#include "providers/book/text.h"
#include "providers/book/windows/resource.h"
#include "tests/providers/personal_fixture.h"
#include "tests/support/dialog_driver.h"

namespace orv::test {

// A window with pages, as the thread of a script sees it.
class Pilot {
 public:
  Pilot(DialogScript& script, HWND window) : script_(script), window_(window) {}

  HWND Window() const { return window_; }
  // Of the window or one of its pages.
  HWND At(int control) const {
    if (const HWND found = GetDlgItem(window_, control)) return found;
    HWND page = nullptr;
    while ((page = FindWindowExW(window_, page, kDialogClass, nullptr)) != nullptr) {
      if (const HWND found = GetDlgItem(page, control)) return found;
    }
    return nullptr;
  }
  std::wstring Text(int control) const {
    std::wstring text(static_cast<size_t>(script_.Send(At(control), WM_GETTEXTLENGTH)) + 1, L'\0');
    const LRESULT size =
        script_.Send(At(control), WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
    text.resize(static_cast<size_t>(size));
    return text;
  }
  void Type(int control, const wchar_t* text) const {
    script_.Send(At(control), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text));
    // A page's edit of several lines tells of typing only.
    if ((GetWindowLongPtrW(At(control), GWL_STYLE) & ES_MULTILINE) != 0) Notify(control, EN_CHANGE);
  }
  void Choose(int control, int row) const {
    script_.Send(At(control), CB_SETCURSEL, static_cast<WPARAM>(row));
    Notify(control, CBN_SELCHANGE);
  }
  void Notify(int control, int notification) const {
    script_.Send(GetParent(At(control)), WM_COMMAND, MAKEWPARAM(control, notification),
                 reinterpret_cast<LPARAM>(At(control)));
  }
  void Check(int control, bool isChecked) const {
    script_.Send(At(control), BM_SETCHECK, isChecked ? BST_CHECKED : BST_UNCHECKED);
    Notify(control, BN_CLICKED);
  }
  bool IsChecked(int control) const { return script_.Send(At(control), BM_GETCHECK) == BST_CHECKED; }
  bool IsEnabled(int control) const { return IsWindowEnabled(At(control)) != FALSE; }
  void Press(int control) const { script_.Press(GetParent(At(control)), control); }
  void PostPress(int control) const { script_.PostPress(GetParent(At(control)), control); }
  void Close(int button) const { script_.Close(window_, button); }
  // A key goes down in a control, which has the focus then.
  void Key(int control, UINT key) const {
    script_.Send(window_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(At(control)), TRUE);
    script_.Post(At(control), WM_KEYDOWN, key, 0);
  }
  // What was posted before has been dealt with; the button that cancels has the focus then.
  void Settle() const {
    script_.Post(window_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(At(IDCANCEL)), TRUE);
    script_.WaitUntil([this] { return Focus() == At(IDCANCEL); }, "the focus");
  }
  void Turn(int page) const { script_.Send(At(IDC_TABS), TCM_SETCURFOCUS, static_cast<WPARAM>(page)); }
  std::wstring Tab(int page) const {
    TCITEMW item{};
    item.mask = TCIF_TEXT;
    return TextOfItem(IDC_TABS, TCM_GETITEMW, page, item);
  }
  bool IsShown(int control) const { return IsWindowVisible(At(control)) != FALSE; }
  HWND Focus() const {
    GUITHREADINFO info{};
    info.cbSize = sizeof info;
    GetGUIThreadInfo(GetWindowThreadProcessId(window_, nullptr), &info);
    return info.hwndFocus;
  }

  // Rows of a report list, their cells with a bar between them.
  std::vector<std::wstring> Rows(int list, int columns) const {
    std::vector<std::wstring> rows;
    const LRESULT count = script_.Send(At(list), LVM_GETITEMCOUNT);
    for (int row = 0; row < count; ++row) {
      std::wstring cells;
      for (int column = 0; column < columns; ++column)
        cells += (column == 0 ? L"" : L"|") + Cell(list, row, column);
      rows.push_back(cells);
    }
    return rows;
  }
  // What is behind the text of a control that nothing can be typed into.
  HBRUSH ColourOf(int control, HDC surface) const {
    return reinterpret_cast<HBRUSH>(script_.Send(GetParent(At(control)), WM_CTLCOLORSTATIC,
                                                 reinterpret_cast<WPARAM>(surface),
                                                 reinterpret_cast<LPARAM>(At(control))));
  }
  // Headings of its columns.
  std::vector<std::wstring> Headings(int list) const {
    std::vector<std::wstring> headings;
    const HWND header = reinterpret_cast<HWND>(script_.Send(At(list), LVM_GETHEADER));
    const LRESULT count = script_.Send(header, HDM_GETITEMCOUNT);
    for (int column = 0; column < count; ++column) {
      LVCOLUMNW heading{};
      wchar_t text[100] = L"";
      heading.mask = LVCF_TEXT;
      heading.pszText = text;
      heading.cchTextMax = static_cast<int>(std::size(text));
      script_.Send(At(list), LVM_GETCOLUMNW, static_cast<WPARAM>(column), reinterpret_cast<LPARAM>(&heading));
      headings.push_back(text);
    }
    return headings;
  }
  // What is shown whole in a column of its width.
  bool Fits(int list, int column, const wchar_t* text) const {
    const LRESULT width = script_.Send(At(list), LVM_GETCOLUMNWIDTH, static_cast<WPARAM>(column));
    return script_.Send(At(list), LVM_GETSTRINGWIDTHW, 0, reinterpret_cast<LPARAM>(text)) < width;
  }
  // That row and no other; -1: none.
  void Select(int list, int row) const {
    SelectToo(list, -1, false);
    if (row >= 0) SelectToo(list, row);
  }
  // Besides those that are; -1: all rows.
  void SelectToo(int list, int row, bool isSelected = true) const {
    LVITEMW item{};
    item.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
    item.state = isSelected ? item.stateMask : 0;
    script_.Send(At(list), LVM_SETITEMSTATE, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
  }

 private:
  std::wstring Cell(int list, int row, int column) const {
    LVITEMW item{};
    item.iSubItem = column;
    return TextOfItem(list, LVM_GETITEMTEXTW, row, item);
  }
  template <class Item>
  std::wstring TextOfItem(int control, UINT message, int number, Item item) const {
    wchar_t text[500] = L"";
    item.pszText = text;
    item.cchTextMax = static_cast<int>(std::size(text));
    script_.Send(At(control), message, static_cast<WPARAM>(number), reinterpret_cast<LPARAM>(&item));
    return text;
  }

  DialogScript& script_;
  const HWND window_;
};

class WindowsTest : public PersonalTest {
 protected:
  using Steps = std::function<void(DialogScript&, Pilot)>;

  // With the window that comes up first.
  static std::function<void(DialogScript&)> Over(const Steps& steps) {
    if (!steps) return {};
    return [steps](DialogScript& script) {
      const HWND window = script.NextDialog();
      steps(script, {script, window});
    };
  }

  HRESULT Details(Client& client, Bytes id, const Steps& steps) {
    DialogDriver driver(Over(steps));
    ULONG_PTR owner = 0;
    return client.Book()->Details(&owner, nullptr, nullptr, static_cast<ULONG>(id.size()),
                                  reinterpret_cast<LPENTRYID>(id.data()), nullptr, nullptr, nullptr,
                                  DIALOG_MODAL);
  }
  // With the container's template for the type; 0: without one.
  HRESULT New(Client& client, ULONG objectType, const Steps& steps, Bytes* made = nullptr,
              const wchar_t* called = L"own") {
    const PropList container = Props(*client.Open(called).Get());
    SBinary form{};
    if (objectType != 0)
      form = container.Bytes(objectType == MAPI_DISTLIST ? PR_DEF_CREATE_DL : PR_DEF_CREATE_MAILUSER);
    Bytes id = IdOf(container);
    ULONG size = 0;
    sdk::Buffer<ENTRYID> entry(&OrvFreeBuffer);
    DialogDriver driver(Over(steps));
    const HRESULT hr =
        client.Book()->NewEntry(0, 0, static_cast<ULONG>(id.size()), reinterpret_cast<LPENTRYID>(id.data()),
                                form.cb, reinterpret_cast<LPENTRYID>(form.lpb), &size, entry.Put());
    const auto* bytes = reinterpret_cast<const BYTE*>(entry.Get());
    if (made != nullptr) made->assign(bytes, bytes + size);
    return hr;
  }

  // The settings of the first service.
  HRESULT Configure(const Steps& steps) {
    DialogDriver driver(Over(steps));
    sdk::ComPtr<IOrvProfAdmin> profiles;
    sdk::ComPtr<IABServiceAdmin> services;
    EXPECT_EQ(OrvAdminProfiles(MAPI_UNICODE, profiles.Put(), 0), S_OK);
    EXPECT_EQ(profiles->AdminServices(L"P", MAPI_UNICODE, services.Put()), S_OK);
    MAPIUID uid;
    std::memset(&uid, 1, sizeof uid);
    sdk::ComPtr<IProfSect> section;
    return services->ConfigureMsgService(&uid, 0, MAPI_UNICODE | SERVICE_UI_ALWAYS, 0, nullptr,
                                         section.Put());
  }

  // As somebody spoils it, or who writes something else over it.
  static void WriteInto(const std::wstring& path, std::streamoff place, const std::string& bytes) {
    std::fstream file(std::filesystem::path(path), std::ios::binary | std::ios::in | std::ios::out);
    file.seekp(place);
    file << bytes;
    EXPECT_TRUE(file.good()) << path.c_str();
  }
  static formats::Contact Named(const char* name, bool isList = false) {
    formats::Contact contact;
    contact.name = name;
    contact.isList = isList;
    return contact;
  }

  // The book as another process has it.
  std::shared_ptr<book::Store> Elsewhere() {
    std::shared_ptr<book::Store> store;
    EXPECT_EQ(book::Store::Open(Path(L"own.orvab"), {}, &store), S_OK);
    return store;
  }
  static book::EntryKey AddTo(book::Store& store, const formats::Contact& contact) {
    book::EntryKey key{};
    EXPECT_EQ(store.Add(contact, &key, nullptr), S_OK);
    return key;
  }
  static formats::Contact ContactIn(book::Store& store, const book::EntryKey& key) {
    book::Entry entry;
    EXPECT_EQ(store.Read(key, &entry), S_OK);
    return entry.contact;
  }
};

}  // namespace orv::test
