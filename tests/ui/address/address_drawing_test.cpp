// Lines of the Address dialog's lists, pixel by pixel.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/ui/address/address_world.h"
#include "ui/address/entry_drawing.h"

namespace orv::test {
namespace {

constexpr int kWidth = 160;
constexpr int kHeight = 40;
constexpr COLORREF kUntouched = RGB(1, 2, 3);
constexpr RECT kItem = {10, 6, 150, 34};

// A picture in memory that is drawn on like a window.
class Canvas {
 public:
  explicit Canvas(bool mirrored = false) : context_(CreateCompatibleDC(nullptr)) {
    BITMAPINFO info{};
    info.bmiHeader = {sizeof(BITMAPINFOHEADER), kWidth, -kHeight, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void* bits = nullptr;
    bitmap_ = CreateDIBSection(context_, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    pixels_ = static_cast<const DWORD*>(bits);
    SelectObject(context_, bitmap_);
    const HBRUSH ground = CreateSolidBrush(kUntouched);
    const RECT whole = {0, 0, kWidth, kHeight};
    FillRect(context_, &whole, ground);
    DeleteObject(ground);
    if (mirrored) SetLayout(context_, LAYOUT_RTL);
  }
  ~Canvas() {
    DeleteDC(context_);
    DeleteObject(bitmap_);
  }
  Canvas(const Canvas&) = delete;
  Canvas& operator=(const Canvas&) = delete;

  HDC Context() const { return context_; }
  COLORREF At(int x, int y) const {
    GdiFlush();
    const DWORD pixel = pixels_[y * kWidth + x];
    return RGB((pixel >> 16) & 0xFF, (pixel >> 8) & 0xFF, pixel & 0xFF);
  }
  // Smallest rectangle that holds every pixel for which the condition holds.
  template <class Condition>
  RECT Bounds(Condition condition) const {
    RECT bounds = {kWidth, kHeight, 0, 0};
    for (int y = 0; y < kHeight; ++y) {
      for (int x = 0; x < kWidth; ++x) {
        if (!condition(At(x, y))) continue;
        bounds = {std::min<LONG>(bounds.left, x), std::min<LONG>(bounds.top, y),
                  std::max<LONG>(bounds.right, x + 1), std::max<LONG>(bounds.bottom, y + 1)};
      }
    }
    return bounds;
  }
  RECT Touched() const {
    return Bounds([](COLORREF pixel) { return pixel != kUntouched; });
  }
  RECT Of(COLORREF colour) const {
    return Bounds([=](COLORREF pixel) { return pixel == colour; });
  }

 private:
  HDC context_;
  HBITMAP bitmap_ = nullptr;
  const DWORD* pixels_ = nullptr;
};

std::string Text(const RECT& r) {
  return std::to_string(r.left) + "," + std::to_string(r.top) + " to " + std::to_string(r.right) + "," +
         std::to_string(r.bottom);
}

int IconWidth() { return GetSystemMetrics(SM_CXSMICON); }
RECT IconArea() { return {kItem.left, kItem.top, kItem.left + IconWidth() + 2, kItem.bottom}; }
RECT TextArea() { return {kItem.left + IconWidth() + 2, kItem.top, kItem.right, kItem.bottom}; }

void Draw(const Canvas& canvas, UINT action, UINT state, const WString& text, HICON icon = nullptr) {
  DRAWITEMSTRUCT draw{};
  draw.itemAction = action;
  draw.itemState = state;
  draw.hDC = canvas.Context();
  draw.rcItem = kItem;
  ui::DrawEntry(draw, text, icon);
}

// A solid icon of one colour.
class RedIcon {
 public:
  RedIcon() {
    const int width = IconWidth();
    const int height = GetSystemMetrics(SM_CYSMICON);
    const std::vector<DWORD> red(static_cast<std::size_t>(width * height), 0xFFFF0000);
    const std::vector<BYTE> opaque(static_cast<std::size_t>((width + 15) / 16 * 2 * height), 0);
    ICONINFO info{TRUE, 0, 0, CreateBitmap(width, height, 1, 1, opaque.data()),
                  CreateBitmap(width, height, 1, 32, red.data())};
    icon_ = CreateIconIndirect(&info);
    DeleteObject(info.hbmMask);
    DeleteObject(info.hbmColor);
  }
  ~RedIcon() { DestroyIcon(icon_); }
  RedIcon(const RedIcon&) = delete;
  RedIcon& operator=(const RedIcon&) = delete;
  HICON Get() const { return icon_; }

 private:
  HICON icon_;
};

TEST(EntryDrawing, EveryStateTouchesItsAreasInTheSystemsColours) {
  const RedIcon icon;
  const COLORREF window = GetSysColor(COLOR_WINDOW);
  const COLORREF highlight = GetSysColor(COLOR_HIGHLIGHT);
  ASSERT_NE(window, highlight);
  const struct {
    UINT action;
    UINT state;
    RECT touched;
    COLORREF ground;  // of the text area
    bool hasFocus;
  } cases[] = {
      {ODA_DRAWENTIRE, 0, kItem, window, false},
      {ODA_DRAWENTIRE, ODS_SELECTED, kItem, highlight, false},
      {ODA_DRAWENTIRE, ODS_FOCUS, kItem, window, true},
      {ODA_DRAWENTIRE, ODS_SELECTED | ODS_FOCUS, kItem, highlight, true},
      {ODA_SELECT, 0, TextArea(), window, false},
      {ODA_SELECT, ODS_SELECTED, TextArea(), highlight, false},
      {ODA_SELECT, ODS_SELECTED | ODS_FOCUS, TextArea(), highlight, true},
      {ODA_FOCUS, ODS_FOCUS, TextArea(), kUntouched, true},
      {ODA_FOCUS, 0, TextArea(), kUntouched, true},  // drawn again, and so taken away
  };
  for (const auto& c : cases) {
    const Canvas canvas;
    Draw(canvas, c.action, c.state, {}, icon.Get());
    const std::string name = "action " + std::to_string(c.action) + ", state " + std::to_string(c.state);
    EXPECT_EQ(Text(canvas.Touched()), Text(c.touched)) << name;
    EXPECT_EQ(canvas.At(TextArea().left + 20, TextArea().top + 10), c.ground) << name;
    // The dotted line runs round the text area only.
    const RECT other = canvas.Bounds([&](COLORREF pixel) {
      return pixel != kUntouched && pixel != window && pixel != highlight && pixel != RGB(255, 0, 0);
    });
    if (c.ground != kUntouched) {
      EXPECT_EQ(Text(other), Text(c.hasFocus ? TextArea() : RECT{kWidth, kHeight, 0, 0})) << name;
    }
  }
}

TEST(EntryDrawing, LongTextStaysInItsAreaAndTheContextAsItWas) {
  const Canvas canvas;
  SetTextColor(canvas.Context(), RGB(9, 8, 7));
  SetBkColor(canvas.Context(), RGB(6, 5, 4));
  Draw(canvas, ODA_SELECT, ODS_SELECTED, WString(300, L'W'));
  EXPECT_EQ(Text(canvas.Touched()), Text(TextArea()));
  EXPECT_GT(canvas.Of(GetSysColor(COLOR_HIGHLIGHTTEXT)).right, TextArea().left);
  EXPECT_EQ(GetTextColor(canvas.Context()), RGB(9, 8, 7));
  EXPECT_EQ(GetBkColor(canvas.Context()), RGB(6, 5, 4));
}

TEST(EntryDrawing, IconStandsOnePixelFromItsEdgeAtTheRightWhenMirrored) {
  const RedIcon icon;
  const int height = GetSystemMetrics(SM_CYSMICON);
  const LONG top = kItem.top + (kItem.bottom - kItem.top - height) / 2;
  const RECT place = {kItem.left + 1, top, kItem.left + 1 + IconWidth(), top + height};
  for (const bool mirrored : {false, true}) {
    const auto expected = [=](const RECT& r) {
      return Text(mirrored ? RECT{kWidth - r.right, r.top, kWidth - r.left, r.bottom} : r);
    };
    const Canvas canvas(mirrored);
    Draw(canvas, ODA_DRAWENTIRE, ODS_SELECTED, {}, icon.Get());
    EXPECT_EQ(Text(canvas.Touched()), expected(kItem));
    EXPECT_EQ(Text(canvas.Of(GetSysColor(COLOR_HIGHLIGHT))), expected(TextArea()));
    EXPECT_EQ(Text(canvas.Of(RGB(255, 0, 0))), expected(place));
  }
}

class AddressDrawingTest : public AddressTest {
 protected:
  // Has the dialog draw a line; what it drew of the icon area.
  static RECT IconOf(DialogScript& script, HWND dialog, const Canvas& canvas, int line) {
    DRAWITEMSTRUCT draw{};
    draw.CtlType = ODT_LISTBOX;
    draw.CtlID = kEntries;
    draw.itemID = static_cast<UINT>(line);
    draw.itemAction = ODA_DRAWENTIRE;
    draw.hwndItem = GetDlgItem(dialog, kEntries);
    draw.hDC = canvas.Context();
    draw.rcItem = kItem;
    script.Send(dialog, WM_DRAWITEM, kEntries, reinterpret_cast<LPARAM>(&draw));
    return canvas.Bounds(
        [](COLORREF pixel) { return pixel != kUntouched && pixel != GetSysColor(COLOR_WINDOW); });
  }
};

TEST_F(AddressDrawingTest, LinesShowTheIconOfTheirKind) {
  world_.company.nodes["bernd"].type = MAPI_FOLDER;
  world_.company.nodes["bernd"].name = L" ";
  world_.company.nodes["carla"].type = MAPI_DISTLIST;
  ShowAndCancel(0, [&](DialogScript& script, HWND dialog) {
    std::vector<std::vector<COLORREF>> icons;
    for (const int line : {0, 1, 2, 3}) {
      const Canvas canvas;
      IconOf(script, dialog, canvas, line);
      std::vector<COLORREF>& icon = icons.emplace_back();
      for (LONG y = IconArea().top; y < IconArea().bottom; ++y) {
        for (LONG x = IconArea().left; x < IconArea().right; ++x) icon.push_back(canvas.At(x, y));
      }
    }
    const std::vector<COLORREF> blank(icons[1].size(), GetSysColor(COLOR_WINDOW));
    EXPECT_EQ(icons[1], blank) << "neither person nor group";
    EXPECT_NE(icons[0], blank);
    EXPECT_NE(icons[2], blank);
    EXPECT_NE(icons[0], icons[2]);
    EXPECT_EQ(icons[2], icons[3]);
    // The line of an empty list.
    const Canvas canvas;
    EXPECT_EQ(Text(IconOf(script, dialog, canvas, -1)), Text({kWidth, kHeight, 0, 0}));
  });
}

TEST_F(AddressDrawingTest, ArabicListsAreMirrored) {
  UseLanguage(L"1");
  ShowAndCancel(1, [&](DialogScript& script, HWND dialog) {
    for (const HWND window : {dialog, GetDlgItem(dialog, kEntries), GetDlgItem(dialog, kTo)}) {
      EXPECT_NE(GetWindowLongPtrW(window, GWL_EXSTYLE) & WS_EX_LAYOUTRTL, 0);
      const HDC context = GetDC(window);
      EXPECT_EQ(GetLayout(context) & LAYOUT_RTL, LAYOUT_RTL);
      ReleaseDC(window, context);
    }
    EXPECT_EQ(script.Items(dialog, kEntries).size(), 4u);
  });
}

TEST_F(AddressDrawingTest, LinesAreAsHighAsIconOrText) {
  ShowAndCancel(3, [&](DialogScript& script, HWND dialog) {
    const HDC context = GetDC(dialog);
    const HGDIOBJ old = SelectObject(context, reinterpret_cast<HFONT>(script.Send(dialog, WM_GETFONT)));
    TEXTMETRICW metrics{};
    GetTextMetricsW(context, &metrics);
    SelectObject(context, old);
    ReleaseDC(dialog, context);
    const LONG height = std::max<LONG>(GetSystemMetrics(SM_CYSMICON), metrics.tmHeight);
    for (const int list : {static_cast<int>(kEntries), static_cast<int>(kTo), static_cast<int>(kBcc)})
      EXPECT_EQ(script.Send(GetDlgItem(dialog, list), LB_GETITEMHEIGHT), height);
    MEASUREITEMSTRUCT measure{};
    measure.CtlType = ODT_LISTBOX;
    script.Send(dialog, WM_MEASUREITEM, kEntries, reinterpret_cast<LPARAM>(&measure));
    EXPECT_EQ(measure.itemHeight, static_cast<UINT>(height));
  });
}

}  // namespace
}  // namespace orv::test
