// Opening the window of a contact against a dialog of the same templates in which nothing stands; typing in that of a
// list over a large book.
#include <algorithm>
#include <functional>
#include <memory>
#include <vector>

#include "bench/harness.h"
#include "bench/personal_profile.h"
#include "orv/orvbase.hpp"
#include "orv/orvbook.h"
#include "providers/book/store.h"
#include "providers/book/windows/resource.h"
#include "tests/support/installation.h"
#include "tests/support/redirected_registry.h"

// After the system's own header.
#include <commctrl.h>

namespace orv::bench {
namespace {

// The owner of what is opened: when a dialog has nothing left to do, it is shown and painted; it is used then, and
// cancelled.
class Owner {
 public:
  explicit Owner(const std::function<void(HWND)>& use = {}) {
    use_ = use;
    WNDCLASSW kind{};
    kind.lpfnWndProc = Procedure;
    kind.lpszClassName = L"OrvBenchOwner";
    RegisterClassW(&kind);
    window_ = CreateWindowW(kind.lpszClassName, L"", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 800, 600,
                            nullptr, nullptr, nullptr, nullptr);
    Require(window_ != nullptr, "the owner was not made");
  }
  ~Owner() { DestroyWindow(window_); }
  Owner(const Owner&) = delete;
  Owner& operator=(const Owner&) = delete;

  HWND Window() const { return window_; }

 private:
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM first, LPARAM second) {
    if (message == WM_ENTERIDLE && first == MSGF_DIALOGBOX) {
      const auto dialog = reinterpret_cast<HWND>(second);
      if (use_) use_(dialog);
      PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
    }
    return DefWindowProcW(window, message, first, second);
  }
  static inline std::function<void(HWND)> use_;
  HWND window_;
};

constexpr WORD kPages[] = {IDD_CONTACT_NAME, IDD_CONTACT_NUMBERS, IDD_CONTACT_EMAILS, IDD_CONTACT_ADDRESSES,
                           IDD_CONTACT_NOTE};
HMODULE templates = nullptr;
constexpr std::size_t kPeople = 200'000;

INT_PTR CALLBACK EmptyPage(HWND, UINT message, WPARAM, LPARAM) { return message == WM_INITDIALOG; }

// The same controls, the first page shown over the tabs.
void AddPages(HWND dialog) {
  const HWND tabs = GetDlgItem(dialog, IDC_TABS);
  for (const WORD each : kPages) {
    const HWND page = CreateDialogParamW(templates, MAKEINTRESOURCEW(each), dialog, EmptyPage, 0);
    Require(page != nullptr, "a page was not made");
    TCITEMW item{};
    item.mask = TCIF_TEXT;
    item.pszText = const_cast<LPWSTR>(L"Page");
    SendMessageW(tabs, TCM_INSERTITEMW, each, reinterpret_cast<LPARAM>(&item));
    SetWindowPos(page, HWND_TOP, 11, 30, 0, 0, SWP_NOSIZE | (each == kPages[0] ? SWP_SHOWWINDOW : 0));
  }
}

// The common controls that the library's manifest asks for, from now on.
void UseItsControls() {
  ACTCTXW description{};
  description.cbSize = sizeof description;
  description.dwFlags = ACTCTX_FLAG_HMODULE_VALID | ACTCTX_FLAG_RESOURCE_NAME_VALID;
  description.hModule = templates;
  description.lpResourceName = MAKEINTRESOURCEW(2);
  const HANDLE context = CreateActCtxW(&description);
  ULONG_PTR cookie = 0;
  Require(context != INVALID_HANDLE_VALUE && ActivateActCtx(context, &cookie), "no controls for a dialog");
}

INT_PTR CALLBACK EmptyDialog(HWND dialog, UINT message, WPARAM first, LPARAM) {
  if (message == WM_INITDIALOG) AddPages(dialog);
  if (message == WM_COMMAND && LOWORD(first) == IDCANCEL) EndDialog(dialog, IDCANCEL);
  return message == WM_INITDIALOG;
}

// One that is as filled as those of people are.
void AddContact(const std::wstring& path) {
  formats::Contact contact;
  contact.name = "Ida Wells";
  contact.given = "Ida";
  contact.surname = "Wells";
  contact.company = "Nordhamn";
  contact.numbers.resize(3);
  for (size_t i = 0; i < 3; ++i) contact.numbers[i].text = "+46 31 12345" + std::to_string(i);
  contact.emails.resize(1);
  contact.emails[0].text = "ida@example.com";
  contact.addresses.resize(1);
  contact.addresses[0].locality = "Kiel";
  std::shared_ptr<book::Store> store;
  Require(book::Store::Open(path, {}, &store) == S_OK, "the book was not opened");
  Require(store->Add(contact, nullptr, nullptr) == S_OK, "the contact was not added");
}

// Its name comes before all others.
void AddPeopleAndList(const std::wstring& path) {
  FillBook(path, kPeople);
  formats::Contact list;
  list.isList = true;
  list.name = "A list";
  std::shared_ptr<book::Store> store;
  Require(book::Store::Open(path, {}, &store) == S_OK, "the book was not opened");
  Require(store->Add(list, nullptr, nullptr) == S_OK, "the list was not added");
}

// A session over a book, whose first entry is shown.
class Book {
 public:
  explicit Book(const std::function<void(const std::wstring&)>& fill) {
    installation_.CopyIn(L"xhtpaba.dll", L"xhtpaba.dll");
    const std::wstring path = installation_.Path(L"book.orvab");
    fill(path);
    StorePersonalProfile(path);
    Require(OrvOpen(0, L"P", MAPI_UNICODE, nullptr, nullptr, nullptr, book_.Put(), session_.Put(), 0) == S_OK,
            "OrvOpen");
    FindFirst();
  }
  ~Book() { book_.Reset(); }

  void ShowDetails(HWND window) {
    auto owner = reinterpret_cast<ULONG_PTR>(window);
    Require(book_->Details(&owner, nullptr, nullptr, static_cast<ULONG>(first_.size()),
                           reinterpret_cast<LPENTRYID>(first_.data()), nullptr, nullptr, nullptr,
                           DIALOG_MODAL) == MAPI_E_USER_CANCEL,
            "the details were not shown");
  }

 private:
  void FindFirst() {
    sdk::ComPtr<IMAPITable> table;
    const auto container = OpenContainer(*book_.Get());
    Require(container->GetContentsTable(MAPI_UNICODE, table.Put()) == S_OK, "no contents");
    sdk::RowSet rows(&OrvFreeBuffer);
    Require(table->QueryRows(1, 0, rows.Put()) == S_OK && rows->cRows == 1, "the entry was not found");
    const SBinary id = sdk::ValueView(rows->aRow[0]).Binary(PR_ENTRYID);
    first_.assign(id.lpb, id.lpb + id.cb);
    OrvFreeBuffer(rows->aRow[0].lpProps);
    rows->aRow[0].lpProps = nullptr;
  }

  test::RedirectedRegistry registry_;
  test::Installation installation_;
  sdk::ComPtr<IOrvSession> session_;
  sdk::ComPtr<IAddrBook> book_;
  std::vector<BYTE> first_;
};

void MeasureOpening() {
  constexpr double kAtMost = 1.5;
  Book book(AddContact);
  const Owner owner;
  templates = GetModuleHandleW(L"xhtpaba.dll");
  Require(templates != nullptr, "no templates");
  UseItsControls();
  const auto ours = [&] { book.ShowDetails(owner.Window()); };
  const auto floor = [&] {
    Require(
        DialogBoxParamW(templates, MAKEINTRESOURCEW(IDD_CONTACT), owner.Window(), EmptyDialog, 0) == IDCANCEL,
        "the empty dialog was not shown");
  };
  Report("window of a contact opened", Compare(ours, floor), kAtMost);
}

// Whatever is typed, up to the list that shows what was found.
void MeasureTyping() {
  constexpr double kAtMost = 30;  // milliseconds
  double slowest = 0;
  Book book(AddPeopleAndList);
  const Owner owner([&](HWND window) {
    const HWND edit = GetDlgItem(window, IDC_FIND);
    Require(edit != nullptr, "not the window of a list");
    for (const wchar_t* text :
         {L"a", L"anna ber", L"berlin", L"nordhamn", L"nordhamn 9", L"z", L"46", L"+46 31 26", L""})
      slowest = std::max(slowest, Measure([&] { SetWindowTextW(edit, text); }) / 1e6);
  });
  book.ShowDetails(owner.Window());
  Report("slowest search in the window of a list over " + std::to_string(kPeople), slowest, 1, "ms", kAtMost);
}

const Benchmark kWindows("windows", [] {
  MeasureOpening();
  MeasureTyping();
});

}  // namespace
}  // namespace orv::bench
