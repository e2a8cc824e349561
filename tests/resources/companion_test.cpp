// Every companion as Windows loads it: dialogs with their controls and order, menu, strings, icons, manifest,
// version.
#include <windows.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace {

constexpr const char* kLanguages[] = {"US", "DE", "FR", "JP", "AR"};

struct Release {
  void operator()(HMODULE module) const { FreeLibrary(module); }
  void operator()(HWND window) const { DestroyWindow(window); }
};
using Companion = std::unique_ptr<std::remove_pointer_t<HMODULE>, Release>;
using Dialog = std::unique_ptr<std::remove_pointer_t<HWND>, Release>;

INT_PTR CALLBACK Idle(HWND, UINT, WPARAM, LPARAM) { return FALSE; }

Dialog Create(HMODULE companion, WORD number) {
  return Dialog(CreateDialogParamW(companion, MAKEINTRESOURCEW(number), nullptr, Idle, 0));
}

// Controls in the order of the Tab key, each once.
std::vector<int> TabOrder(HWND dialog) {
  std::vector<int> order;
  HWND const first = GetNextDlgTabItem(dialog, nullptr, FALSE);
  for (HWND control = first; control && (order.empty() || control != first) && order.size() < 50;
       control = GetNextDlgTabItem(dialog, control, FALSE))
    order.push_back(GetDlgCtrlID(control));
  return order;
}

std::wstring Text(HMODULE companion, UINT identifier) {
  wchar_t text[512] = L"";
  return std::wstring(text, static_cast<std::size_t>(LoadStringW(companion, identifier, text, 512)));
}

// One installed companion: model letter and language code.
class CompanionTest : public testing::TestWithParam<std::tuple<char, const char*>> {
 protected:
  void SetUp() override {
    const auto [letter, code] = GetParam();
    name_ = L"XHTFC" + std::wstring(1, static_cast<wchar_t>(letter)) + std::wstring(code, code + 2) + L".dll";
    companion_.reset(LoadLibraryW(name_.c_str()));
    ASSERT_TRUE(companion_) << GetLastError();
    mirrored_ = std::string(code) == "AR";
  }
  HMODULE companion() const { return companion_.get(); }

  std::wstring name_;
  bool mirrored_ = false;

 private:
  Companion companion_;
};

TEST_P(CompanionTest, DialogsHaveTheirControlsInReadingOrder) {
  struct Case {
    WORD dialog;
    std::vector<int> tabOrder;
    std::vector<int> others;
  };
  const std::vector<int> labels = {1165, 1171, 1172};
  const Case cases[] = {
      {192, {1161, 1163, 1, 2}, {1162, 1171}},
      {255, {1155, 1156, 1157, 1158, 1, 2}, {1205}},
      {256, {1155, 1157, 1160, 1, 2}, {1206}},
      {257, {1155, 1, 2}, {1205}},
      {259, {1163, 1164, 1166, 1173, 1174, 1175, 1, 2}, labels},
      {260, {1163, 1164, 1166, 1173, 1174, 1175, 1167, 1018, 1, 2}, {1165, 1171, 1172, 1180, 1181}},
      {261,
       {1163, 1164, 1166, 1173, 1174, 1175, 1167, 1018, 1168, 1019, 1, 2},
       {1165, 1171, 1172, 1180, 1181, 1182}},
      {262,
       {1163, 1164, 1166, 1173, 1174, 1175, 1167, 1018, 1168, 1019, 1169, 1020, 1, 2},
       {1165, 1171, 1172, 1180, 1181, 1182, 1183}},
  };
  for (const Case& expected : cases) {
    SCOPED_TRACE(expected.dialog);
    const Dialog dialog = Create(companion(), expected.dialog);
    ASSERT_TRUE(dialog) << GetLastError();
    EXPECT_EQ(TabOrder(dialog.get()), expected.tabOrder);
    for (const int control : expected.others) EXPECT_TRUE(GetDlgItem(dialog.get(), control)) << control;
    EXPECT_EQ(SendMessageW(dialog.get(), DM_GETDEFID, 0, 0), MAKELRESULT(IDOK, DC_HASDEFID));
    EXPECT_GT(GetWindowTextLengthW(dialog.get()), 0);
    const LONG_PTR extended = GetWindowLongPtrW(dialog.get(), GWL_EXSTYLE);
    EXPECT_EQ((extended & WS_EX_LAYOUTRTL) != 0, mirrored_);
    EXPECT_EQ((extended & WS_EX_RTLREADING) != 0, mirrored_);
  }
}

TEST_P(CompanionTest, ListsKeepTheirOrderAndSelectAsTheirDialogsNeed) {
  constexpr LONG_PTR kList = LBS_SORT | LBS_MULTIPLESEL | LBS_EXTENDEDSEL | LBS_NOTIFY | LBS_OWNERDRAWFIXED |
                             LBS_OWNERDRAWVARIABLE | LBS_HASSTRINGS | LBS_WANTKEYBOARDINPUT;
  constexpr LONG_PTR kEntries =
      LBS_EXTENDEDSEL | LBS_NOTIFY | LBS_OWNERDRAWFIXED | LBS_HASSTRINGS | LBS_WANTKEYBOARDINPUT;
  constexpr LONG_PTR kCombo = CBS_SORT | CBS_DROPDOWNLIST | CBS_OWNERDRAWFIXED | CBS_OWNERDRAWVARIABLE;
  const struct {
    WORD dialog;
    int control;
    LONG_PTR mask;
    LONG_PTR style;
  } cases[] = {
      {255, 1155, kList, LBS_NOTIFY},        {256, 1155, kList, LBS_NOTIFY},
      {257, 1155, kList, LBS_NOTIFY},        {259, 1166, kList, kEntries},
      {260, 1018, kList, kEntries},          {261, 1019, kList, kEntries},
      {262, 1020, kList, kEntries},          {192, 1163, kCombo, CBS_DROPDOWNLIST},
      {262, 1163, kCombo, CBS_DROPDOWNLIST},
  };
  for (const auto& expected : cases) {
    SCOPED_TRACE(testing::Message() << expected.dialog << " " << expected.control);
    const Dialog dialog = Create(companion(), expected.dialog);
    ASSERT_TRUE(dialog);
    HWND const control = GetDlgItem(dialog.get(), expected.control);
    ASSERT_TRUE(control);
    EXPECT_EQ(GetWindowLongPtrW(control, GWL_STYLE) & expected.mask, expected.style);
  }
}

TEST_P(CompanionTest, StringsThatTheLibraryShowsArePresent) {
  for (UINT identifier = 266; identifier <= 288; ++identifier) {
    const bool unnamed = identifier == 267 || identifier == 268 || identifier == 275;
    EXPECT_EQ(Text(companion(), identifier).empty(), unnamed) << identifier;
  }
  const std::wstring filter = Text(companion(), 286);
  EXPECT_TRUE(filter.ends_with(L'|'));
  EXPECT_NE(filter.find(L"|*.ini|"), std::wstring::npos);
  EXPECT_EQ(Text(companion(), 287), L"ini");
}

TEST_P(CompanionTest, MenuHasOneCommandInItsFirstSubmenu) {
  HMENU const menu = LoadMenuW(companion(), MAKEINTRESOURCEW(500));
  ASSERT_TRUE(menu);
  HMENU const submenu = GetSubMenu(menu, 0);
  EXPECT_EQ(GetMenuItemCount(submenu), 1);
  EXPECT_GT(static_cast<int>(GetMenuItemID(submenu, 0)), 0);
  EXPECT_TRUE(DestroyMenu(menu));
}

TEST_P(CompanionTest, IconsHaveAnImageOfEverySmallIconSize) {
  for (const int number : {250, 251, 252}) {
    HRSRC const resource = FindResourceW(companion(), MAKEINTRESOURCEW(number), RT_GROUP_ICON);
    ASSERT_TRUE(resource) << number;
    ASSERT_EQ(SizeofResource(companion(), resource), 6u + 4u * 14u);
    const auto* group = static_cast<const BYTE*>(LockResource(LoadResource(companion(), resource)));
    std::vector<int> sizes;
    for (int image = 0; image < 4; ++image) sizes.push_back(group[6 + image * 14]);
    EXPECT_EQ(sizes, (std::vector<int>{16, 20, 24, 32}));
    const HANDLE icon =
        LoadImageW(companion(), MAKEINTRESOURCEW(number), IMAGE_ICON, 20, 20, LR_DEFAULTCOLOR);
    EXPECT_TRUE(icon && DestroyIcon(static_cast<HICON>(icon))) << number;
  }
}

// Whether the active context gives a version of the common controls other than the system's.
bool RedirectsCommonControls() {
  ACTCTX_SECTION_KEYED_DATA data{};
  data.cbSize = sizeof(data);
  return FindActCtxSectionStringW(0, nullptr, ACTIVATION_CONTEXT_SECTION_DLL_REDIRECTION, L"comctl32.dll",
                                  &data);
}

TEST_P(CompanionTest, ManifestBringsCommonControlsSixWhileItsContextIsActive) {
  ACTCTXW request{};
  request.cbSize = sizeof(request);
  request.dwFlags = ACTCTX_FLAG_HMODULE_VALID | ACTCTX_FLAG_RESOURCE_NAME_VALID;
  request.hModule = companion();
  request.lpResourceName = MAKEINTRESOURCEW(2);
  const HANDLE context = CreateActCtxW(&request);
  ASSERT_NE(context, INVALID_HANDLE_VALUE) << GetLastError();
  EXPECT_FALSE(RedirectsCommonControls());
  ULONG_PTR cookie = 0;
  EXPECT_TRUE(ActivateActCtx(context, &cookie));
  EXPECT_TRUE(RedirectsCommonControls());
  EXPECT_TRUE(DeactivateActCtx(0, cookie));
  ReleaseActCtx(context);
}

TEST_P(CompanionTest, VersionDescribesTheFileInItsOwnLanguage) {
  DWORD ignored = 0;
  std::vector<BYTE> data(GetFileVersionInfoSizeW(name_.c_str(), &ignored));
  ASSERT_TRUE(GetFileVersionInfoW(name_.c_str(), 0, static_cast<DWORD>(data.size()), data.data()));
  const WORD* translation = nullptr;  // language and code page
  UINT length = 0;
  ASSERT_TRUE(VerQueryValueW(data.data(), L"\\VarFileInfo\\Translation",
                             reinterpret_cast<void**>(const_cast<WORD**>(&translation)), &length));
  wchar_t path[64];
  swprintf(path, 64, L"\\StringFileInfo\\%04x%04x\\FileDescription", translation[0], translation[1]);
  void* description = nullptr;
  ASSERT_TRUE(VerQueryValueW(data.data(), path, &description, &length));
  EXPECT_GT(length, 1u);
}

INSTANTIATE_TEST_SUITE_P(Installed, CompanionTest,
                         testing::Combine(testing::ValuesIn(std::string(ORV_TEST_MODEL_LETTERS)),
                                          testing::ValuesIn(kLanguages)),
                         [](const auto& instance) {
                           return std::string(1, std::get<0>(instance.param)) + std::get<1>(instance.param);
                         });

}  // namespace
