// Every companion as Windows loads it: dialogs with their controls and order, menu, strings, icons, manifest,
// version.
#include <windows.h>

#include <gtest/gtest.h>

#include <array>
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
template <class Handle>
using Owned = std::unique_ptr<std::remove_pointer_t<Handle>, Release>;

INT_PTR CALLBACK Idle(HWND, UINT, WPARAM, LPARAM) { return FALSE; }

// Controls in the order of the Tab key, each once.
std::vector<int> TabOrder(HWND dialog) {
  std::vector<int> order;
  HWND const first = GetNextDlgTabItem(dialog, nullptr, FALSE);
  for (HWND control = first; control && (order.empty() || control != first) && order.size() < 50;
       control = GetNextDlgTabItem(dialog, control, FALSE))
    order.push_back(GetDlgCtrlID(control));
  return order;
}

// One installed companion: model letter and language code.
class CompanionTest : public testing::TestWithParam<std::tuple<char, const char*>> {
 protected:
  CompanionTest() {
    const auto [letter, code] = GetParam();
    name_ = L"XHTFC" + std::wstring(1, static_cast<wchar_t>(letter)) + std::wstring(code, code + 2) + L".dll";
    owner_.reset(LoadLibraryW(name_.c_str()));
    EXPECT_TRUE(owner_) << GetLastError();
  }
  std::wstring Text(UINT identifier) const {
    wchar_t text[512] = L"";
    return std::wstring(text, static_cast<std::size_t>(LoadStringW(owner_.get(), identifier, text, 512)));
  }

  std::wstring name_;
  Owned<HMODULE> owner_;
};

// Lists and combo boxes keep their order and select as their dialogs need.
TEST_P(CompanionTest, DialogsHaveTheirControlsInReadingOrder) {
  constexpr LONG_PTR kAny = LBS_SORT | LBS_MULTIPLESEL | LBS_EXTENDEDSEL | LBS_NOTIFY | LBS_OWNERDRAWFIXED |
                            LBS_OWNERDRAWVARIABLE | LBS_HASSTRINGS | LBS_WANTKEYBOARDINPUT;
  constexpr LONG_PTR kEntries =
      LBS_EXTENDEDSEL | LBS_NOTIFY | LBS_OWNERDRAWFIXED | LBS_HASSTRINGS | LBS_WANTKEYBOARDINPUT;
  constexpr LONG_PTR kAnyCombo = CBS_SORT | CBS_DROPDOWNLIST | CBS_OWNERDRAWFIXED | CBS_OWNERDRAWVARIABLE;
  struct Expected {
    WORD dialog;
    std::vector<int> tabOrder, others;
    int list;
    LONG_PTR mask, style;
  };
  std::vector<Expected> cases = {
      {192, {1161, 1163, 1, 2}, {1162, 1171}, 1163, kAnyCombo, CBS_DROPDOWNLIST},
      {255, {1155, 1156, 1157, 1158, 1, 2}, {1205}, 1155, kAny, LBS_NOTIFY},
      {256, {1155, 1157, 1160, 1, 2}, {1206}, 1155, kAny, LBS_NOTIFY},
      {257, {1155, 1, 2}, {1205}, 1155, kAny, LBS_NOTIFY},
  };
  // The Address dialog without wells, and with each one's button, list and label.
  Expected address = {259, {1163, 1164, 1166, 1173, 1174, 1175}, {1165, 1171, 1172}, 1166, kAny, kEntries};
  for (int well = 0; well < 4; ++well) {
    cases.push_back(address);
    cases.back().tabOrder.insert(cases.back().tabOrder.end(), {1, 2});
    ++address.dialog;
    address.list = 1018 + well;
    address.tabOrder.insert(address.tabOrder.end(), {1167 + well, 1018 + well});
    address.others.insert(address.others.end(), {1180, 1181 + well});
  }
  const LONG_PTR mirroring = name_.ends_with(L"AR.dll") ? WS_EX_LAYOUTRTL | WS_EX_RTLREADING : 0;
  for (const auto& expected : cases) {
    SCOPED_TRACE(expected.dialog);
    const Owned<HWND> owner(
        CreateDialogParamW(owner_.get(), MAKEINTRESOURCEW(expected.dialog), nullptr, Idle, 0));
    HWND const dialog = owner.get();
    ASSERT_TRUE(dialog) << GetLastError();
    EXPECT_EQ(TabOrder(dialog), expected.tabOrder);
    for (const int control : expected.others) EXPECT_TRUE(GetDlgItem(dialog, control)) << control;
    EXPECT_EQ(GetWindowLongPtrW(GetDlgItem(dialog, expected.list), GWL_STYLE) & expected.mask,
              expected.style);
    EXPECT_EQ(SendMessageW(dialog, DM_GETDEFID, 0, 0), MAKELRESULT(IDOK, DC_HASDEFID));
    EXPECT_GT(GetWindowTextLengthW(dialog), 0);
    EXPECT_EQ(GetWindowLongPtrW(dialog, GWL_EXSTYLE) & (WS_EX_LAYOUTRTL | WS_EX_RTLREADING), mirroring);
  }
}

TEST_P(CompanionTest, StringsAndMenuThatTheLibraryShowsArePresent) {
  for (UINT identifier = 266; identifier <= 288; ++identifier) {
    const bool unnamed = identifier == 267 || identifier == 268 || identifier == 275;
    EXPECT_EQ(Text(identifier).empty(), unnamed) << identifier;
  }
  EXPECT_TRUE(Text(286).ends_with(L'|'));
  EXPECT_NE(Text(286).find(L"|*.ini|"), std::wstring::npos);
  EXPECT_EQ(Text(287), L"ini");

  HMENU const menu = LoadMenuW(owner_.get(), MAKEINTRESOURCEW(500));
  HMENU const submenu = GetSubMenu(menu, 0);
  EXPECT_EQ(GetMenuItemCount(submenu), 1);
  EXPECT_GT(static_cast<int>(GetMenuItemID(submenu, 0)), 0);
  EXPECT_TRUE(DestroyMenu(menu));
}

TEST_P(CompanionTest, IconsHaveAnImageOfEverySmallIconSize) {
  for (const int number : {250, 251, 252}) {
    HRSRC const resource = FindResourceW(owner_.get(), MAKEINTRESOURCEW(number), RT_GROUP_ICON);
    ASSERT_EQ(SizeofResource(owner_.get(), resource), 6u + 4u * 14u) << number;
    const auto* group = static_cast<const BYTE*>(LockResource(LoadResource(owner_.get(), resource)));
    for (int image = 0; image < 4; ++image)
      EXPECT_EQ(group[6 + image * 14], (std::array{16, 20, 24, 32}[image]));
    const HANDLE icon =
        LoadImageW(owner_.get(), MAKEINTRESOURCEW(number), IMAGE_ICON, 20, 20, LR_DEFAULTCOLOR);
    EXPECT_TRUE(icon && DestroyIcon(static_cast<HICON>(icon))) << number;
  }
}

TEST_P(CompanionTest, VersionDescribesTheFileInItsOwnLanguage) {
  std::vector<BYTE> data(GetFileVersionInfoSizeW(name_.c_str(), nullptr));
  ASSERT_TRUE(GetFileVersionInfoW(name_.c_str(), 0, static_cast<DWORD>(data.size()), data.data()));
  void* found = nullptr;
  UINT length = 0;
  ASSERT_TRUE(VerQueryValueW(data.data(), L"\\VarFileInfo\\Translation", &found, &length));
  const auto* translation = static_cast<const WORD*>(found);  // language and code page
  wchar_t path[64];
  swprintf(path, 64, L"\\StringFileInfo\\%04x%04x\\FileDescription", translation[0], translation[1]);
  ASSERT_TRUE(VerQueryValueW(data.data(), path, &found, &length));
  EXPECT_GT(length, 1u);
}

INSTANTIATE_TEST_SUITE_P(Installed, CompanionTest,
                         testing::Combine(testing::ValuesIn(std::string(ORV_TEST_MODEL_LETTERS)),
                                          testing::ValuesIn(kLanguages)),
                         [](const auto& instance) {
                           return std::string(1, std::get<0>(instance.param)) + std::get<1>(instance.param);
                         });

}  // namespace
