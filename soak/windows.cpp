// Every window of a personal book very often: what a process holds must not grow.
#include "orv/orvbook.h"
#include "providers/book/windows/resource.h"
#include "soak/library.h"

namespace orv::soak {
namespace {

constexpr const WCHAR* kWindowsProfile = L"soak windows";
constexpr const WCHAR* kBook = L"Book";
constexpr const WCHAR* kBookLibrary = L"xhtpabb.dll";
constexpr const WCHAR* kDialogClass = L"#32770";

using Bytes = std::vector<BYTE>;
LPENTRYID IdOf(Bytes& bytes) { return reinterpret_cast<LPENTRYID>(bytes.data()); }
ULONG SizeOf(const Bytes& bytes) { return static_cast<ULONG>(bytes.size()); }
Bytes BytesOf(const SBinary& value) { return {value.lpb, value.lpb + value.cb}; }

void SetTexts(IMAPIProp* entry, std::initializer_list<std::pair<ULONG, const WCHAR*>> texts) {
  std::vector<SPropValue> values;
  for (const auto& [tag, text] : texts) {
    values.emplace_back().ulPropTag = tag;
    values.back().Value.lpszW = const_cast<LPWSTR>(text);
  }
  Check(entry->SetProps(static_cast<ULONG>(values.size()), values.data(), nullptr), "SetProps");
  Check(entry->SaveChanges(KEEP_OPEN_READWRITE), "SaveChanges");
}

// A book with a contact and a list, and a session over it.
class World {
 public:
  World() {
    MakeProfile();
    session_ = LogOn(kWindowsProfile);
    book_ = BookOf(session_);
    container_ = FindContainer();
    contact_ = Add(PR_DEF_CREATE_MAILUSER, L"Ida");
    list_ = Add(PR_DEF_CREATE_DL, L"Everybody");
  }

  void ShowContact() { Show(contact_); }
  void ShowList() { Show(list_); }
  // 0: the user is asked which.
  void ShowNew(ULONG formTag) {
    Bytes form = formTag != 0 ? ContainerBytes(formTag) : Bytes();
    ULONG size = 0;
    auto made = TheLibrary().allocator.Own<ENTRYID>();
    RequireCancel(book_->NewEntry(0, 0, SizeOf(container_), IdOf(container_), SizeOf(form),
                                  form.empty() ? nullptr : IdOf(form), &size, made.Put()),
                  "NewEntry");
  }
  void ShowAddress() { ShowAddressDialog(book_.Get()); }
  void ShowSettings() {
    const auto services = ServicesOf(kWindowsProfile);
    ComPtr<IProfSect> section;
    RequireCancel(services->ConfigureMsgService(AsUid(service_), 0, MAPI_UNICODE | SERVICE_UI_ALWAYS, 0,
                                                nullptr, section.Put()),
                  "ConfigureMsgService");
  }
  // As somebody else does it while the contact's window is open.
  void ChangeContact() {
    SetTexts(Open(contact_).Get(), {{PR_TITLE_W, (++changes_ % 2) != 0 ? L"a" : L"b"}});
  }

 private:
  void MakeProfile() {
    DeleteProfile(kWindowsProfile);
    DeleteFileW(PathBeside(L"windows.orvab").c_str());
    Check(Profiles()->CreateProfile(kWindowsProfile, 0, MAPI_UNICODE), "CreateProfile");
    const auto services = ServicesOf(kWindowsProfile);
    service_ = AddService(services.Get(), kBook, kBook);
    WString path = PathBeside(L"windows.orvab");
    SPropValue file{};
    file.ulPropTag = PR_ORV_BOOK_FILE_W;
    file.Value.lpszW = path.data();
    ComPtr<IProfSect> section;
    Check(services->ConfigureMsgService(AsUid(service_), 0, MAPI_UNICODE, 1, &file, section.Put()),
          "ConfigureMsgService");
  }
  Bytes FindContainer() {
    Bytes found;
    ForEachRow(HierarchyOf(book_.Get()).Get(), nullptr, [&](const ValueView& row) {
      if ((row.Number(PR_CONTAINER_FLAGS) & AB_MODIFIABLE) != 0) found = BytesOf(row.Binary(PR_ENTRYID));
    });
    Require(!found.empty(), "no container");
    return found;
  }
  ComPtr<IMAPIProp> Open(Bytes& id) {
    ComPtr<IUnknown> entry;
    ULONG type = 0;
    Check(book_->OpenEntry(SizeOf(id), IdOf(id), nullptr, MAPI_BEST_ACCESS, &type, entry.Put()), "OpenEntry");
    return entry.As<IMAPIProp>();
  }
  static Bytes BytesIn(IMAPIProp* object, ULONG tag) {
    auto values = TheLibrary().allocator.Own<SPropValue>();
    ULONG count = 0;
    Check(object->GetProps(nullptr, MAPI_UNICODE, &count, values.Put()), "GetProps");
    return BytesOf(ValueView(values.Get(), count).Binary(tag));
  }
  Bytes ContainerBytes(ULONG tag) { return BytesIn(Open(container_).Get(), tag); }
  Bytes Add(ULONG formTag, const WCHAR* name) {
    Bytes form = ContainerBytes(formTag);
    ComPtr<IMAPIProp> entry;
    Check(Open(container_)
              .As<IABContainer>(IID_IABContainer)
              ->CreateEntry(SizeOf(form), IdOf(form), 0, entry.Put()),
          "CreateEntry");
    SetTexts(entry.Get(), {{PR_DISPLAY_NAME_W, name}});
    return BytesIn(entry.Get(), PR_ENTRYID);
  }
  void Show(Bytes& id) {
    ULONG_PTR owner = 0;
    RequireCancel(book_->Details(&owner, nullptr, nullptr, SizeOf(id), IdOf(id), nullptr, nullptr, nullptr,
                                 DIALOG_MODAL),
                  "Details");
  }
  static void RequireCancel(HRESULT result, const char* what) {
    if (result != MAPI_E_USER_CANCEL) throw Failed(what, result);
  }

  ComPtr<IOrvSession> session_;
  ComPtr<IAddrBook> book_;
  Uid service_{};
  Bytes container_, contact_, list_;
  unsigned changes_ = 0;
};

// Of a contact's window the pages are shown too, and behind a conflict the question whether to leave what had it.
INT_PTR CALLBACK CloseBareDialog(HWND dialog, UINT message, WPARAM wParam, LPARAM) {
  if (message == WM_INITDIALOG && GetDlgItem(dialog, IDC_TABS) != nullptr) {
    const HMODULE library = GetModuleHandleW(kBookLibrary);
    for (int page = IDD_CONTACT_NAME; page <= IDD_CONTACT_NOTE; ++page)
      ShowWindow(CreateDialogParamW(library, MAKEINTRESOURCEW(page), dialog, CloseBareDialog, 0), SW_SHOWNA);
  }
  // While it asks it is told to close again.
  if (message == WM_COMMAND && LOWORD(wParam) == IDCANCEL && IsWindowEnabled(dialog)) {
    const bool isConflict = GetDlgItem(dialog, IDC_DIFFERENCES) != nullptr;
    if (isConflict) MessageBoxW(dialog, L"Leave?", nullptr, MB_YESNO | MB_ICONQUESTION);
    EndDialog(dialog, IDCANCEL);
  }
  return message == WM_INITDIALOG;
}

// Who uses the window that stands, by a timer that its loop dispatches.
class User {
 public:
  explicit User(World* world) : world_(world) {}  // a world where conflicts are wanted

  // Every window is cancelled; with a conflict the contact's is changed first, and saved.
  void Show(bool wantsConflict, const std::function<void()>& show) {
    constexpr UINT kLookEvery = 1;  // milliseconds
    user = this;
    wantsConflict_ = wantsConflict;
    const UINT_PTR timer = SetTimer(nullptr, 0, kLookEvery, Look);
    show();
    KillTimer(nullptr, timer);
    Require(!wantsConflict_, "no conflict");
  }

 private:
  static void CALLBACK Look(HWND, UINT, UINT_PTR, DWORD) {
    EnumThreadWindows(GetCurrentThreadId(), &User::Act, 0);
  }
  static BOOL CALLBACK Act(HWND window, LPARAM) {
    WCHAR name[16] = L"";
    GetClassNameW(window, name, 16);
    const bool isDialog = IsWindowVisible(window) && IsWindowEnabled(window) && WString(name) == kDialogClass;
    if (isDialog) user->Use(window);
    return TRUE;
  }
  void Use(HWND window) {
    if (wantsConflict_ && GetDlgItem(window, IDC_TABS) != nullptr) return MakeConflict(window);
    wantsConflict_ &= GetDlgItem(window, IDC_DIFFERENCES) == nullptr;
    PostMessageW(window, WM_COMMAND, IDYES, 0);  // a box that asks whether to leave, which ends by it
    PostMessageW(window, WM_COMMAND, IDCANCEL, 0);
  }
  void MakeConflict(HWND window) {
    for (HWND page = nullptr; (page = FindWindowExW(window, page, kDialogClass, nullptr)) != nullptr;)
      SetDlgItemTextW(page, IDC_TITLE, L"mine");
    world_->ChangeContact();
    PostMessageW(window, WM_COMMAND, IDOK, 0);
  }

  static inline User* user = nullptr;
  World* world_;
  bool wantsConflict_ = false;
};

}  // namespace

void ShowEveryWindow(unsigned times) {
  static World world;
  static User person(&world);
  for (unsigned turn = 0; turn < times; ++turn) {
    person.Show(false, [] { world.ShowContact(); });
    person.Show(false, [] { world.ShowList(); });
    for (const ULONG form : {PR_DEF_CREATE_MAILUSER, PR_DEF_CREATE_DL, ULONG{0}})
      person.Show(false, [form] { world.ShowNew(form); });
    person.Show(true, [] { world.ShowContact(); });
    person.Show(false, [] { world.ShowSettings(); });
    person.Show(false, [] { world.ShowAddress(); });
  }
}

void ShowBare(const WCHAR* library, WORD dialog) {
  constexpr WORD kManifest = 2;
  const HMODULE templates = LoadLibraryW(PathBeside(library).c_str());
  ACTCTXW controls{};
  controls.cbSize = sizeof controls;
  controls.dwFlags = ACTCTX_FLAG_HMODULE_VALID | ACTCTX_FLAG_RESOURCE_NAME_VALID;
  controls.hModule = templates;
  controls.lpResourceName = MAKEINTRESOURCEW(kManifest);
  const HANDLE context = CreateActCtxW(&controls);
  ULONG_PTR cookie = 0;
  Require(context != INVALID_HANDLE_VALUE && ActivateActCtx(context, &cookie), "no controls for a dialog");
  const INT_PTR result = DialogBoxParamW(templates, MAKEINTRESOURCEW(dialog), nullptr, CloseBareDialog, 0);
  DeactivateActCtx(0, cookie);
  ReleaseActCtx(context);
  FreeLibrary(templates);
  Require(result == IDCANCEL, "a bare dialog was not shown");
}

// As often as the above shows each.
void ShowEveryBareWindow(unsigned times) {
  static const HMODULE kept = LoadLibraryW(PathBeside(kBookLibrary).c_str());
  Require(kept != nullptr, "no library of a book");
  User person(nullptr);
  for (unsigned turn = 0; turn < times; ++turn) {
    for (const int dialog :
         {IDD_CONTACT, IDD_CONTACT, IDD_CONTACT, IDD_CONFLICT, IDD_LIST, IDD_LIST, IDD_WHAT, IDD_CONFIGURE})
      person.Show(false, [dialog] { ShowBare(kBookLibrary, static_cast<WORD>(dialog)); });
    person.Show(false, [] { ShowBare(kCompanion, kAddressDialog); });
  }
}

}  // namespace orv::soak
