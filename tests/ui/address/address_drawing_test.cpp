// Lines of the Address dialog's lists as the dialog draws them, pixel by pixel.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/ui/address/address_world.h"

namespace orv::test {
namespace {

constexpr int kWidth = 160;
constexpr int kHeight = 40;
constexpr COLORREF kUntouched = RGB(1, 2, 3);
constexpr RECT kItem = {10, 6, 150, 34};
constexpr RECT kNowhere = {kWidth, kHeight, 0, 0};

// A picture in memory that is drawn on like a window.
class Canvas {
 public:
  explicit Canvas(bool mirrored = false) : context_(CreateCompatibleDC(nullptr)) {
    BITMAPINFO info{};
    info.bmiHeader = {sizeof(BITMAPINFOHEADER), kWidth, -kHeight, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void* bits = nullptr;
    bitmap_ = CreateDIBSection(context_, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    pixels_ = static_cast<DWORD*>(bits);
    std::fill_n(pixels_, kWidth * kHeight, DWORD{0x00010203});
    SelectObject(context_, bitmap_);
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
  // Smallest rectangle that holds every pixel of `within` that has none of these colours, as text.
  std::string BoundsOfOther(std::vector<COLORREF> colours,
                            const RECT& within = {0, 0, kWidth, kHeight}) const {
    RECT bounds = kNowhere;
    for (int y = within.top; y < within.bottom; ++y) {
      for (int x = within.left; x < within.right; ++x) {
        if (std::find(colours.begin(), colours.end(), At(x, y)) != colours.end()) continue;
        bounds = {std::min<LONG>(bounds.left, x), std::min<LONG>(bounds.top, y),
                  std::max<LONG>(bounds.right, x + 1), std::max<LONG>(bounds.bottom, y + 1)};
      }
    }
    return RectangleText(bounds);
  }
  std::vector<COLORREF> Pixels(const RECT& area) const {
    std::vector<COLORREF> pixels;
    for (int y = area.top; y < area.bottom; ++y)
      for (int x = area.left; x < area.right; ++x) pixels.push_back(At(x, y));
    return pixels;
  }

 private:
  HDC context_;
  HBITMAP bitmap_ = nullptr;
  DWORD* pixels_ = nullptr;
};

class AddressDrawingTest : public AddressTest {
 protected:
  AddressDrawingTest() {
    company_.nodes["bernd"].type = MAPI_FOLDER;
    company_.nodes["bernd"].name = L" ";
    company_.nodes["carla"].type = MAPI_DISTLIST;
  }

  static RECT IconArea() { return {kItem.left, kItem.top, TextArea().left, kItem.bottom}; }
  static RECT TextArea() {
    return {kItem.left + GetSystemMetrics(SM_CXSMICON) + 2, kItem.top, kItem.right, kItem.bottom};
  }
  static RECT Mirrored(const RECT& r) { return {kWidth - r.right, r.top, kWidth - r.left, r.bottom}; }

  static void Draw(Pilot pilot, const Canvas& canvas, int line, UINT action = ODA_DRAWENTIRE,
                   UINT state = 0) {
    DRAWITEMSTRUCT draw{ODT_LISTBOX,      kEntries, static_cast<UINT>(line),
                        action,           state,    pilot.Item(kEntries),
                        canvas.Context(), kItem,    0};
    pilot.script.Send(pilot.dialog, WM_DRAWITEM, kEntries, reinterpret_cast<LPARAM>(&draw));
  }

  const COLORREF window_ = GetSysColor(COLOR_WINDOW);
  const COLORREF highlight_ = GetSysColor(COLOR_HIGHLIGHT);
};

TEST_F(AddressDrawingTest, EveryStateTouchesItsAreasInTheSystemsColours) {
  ASSERT_NE(window_, highlight_);
  const struct {
    UINT action;
    UINT state;
    RECT touched;
    COLORREF ground;  // of the text area
    RECT focus;       // a dotted line
  } cases[] = {
      {ODA_DRAWENTIRE, 0, kItem, window_, kNowhere},
      {ODA_DRAWENTIRE, ODS_SELECTED, kItem, highlight_, kNowhere},
      {ODA_DRAWENTIRE, ODS_SELECTED | ODS_FOCUS, kItem, highlight_, TextArea()},
      {ODA_SELECT, 0, TextArea(), window_, kNowhere},
      {ODA_SELECT, ODS_SELECTED | ODS_FOCUS, TextArea(), highlight_, TextArea()},
      {ODA_FOCUS, ODS_FOCUS, TextArea(), kUntouched, TextArea()},
      {ODA_FOCUS, 0, TextArea(), kUntouched, TextArea()},  // drawn again, and so taken away
  };
  ShowAndCancel(0, [&](Pilot pilot) {
    for (const auto& c : cases) {
      const Canvas canvas;
      Draw(pilot, canvas, 1, c.action, c.state);
      const std::string name = "action " + std::to_string(c.action) + ", state " + std::to_string(c.state);
      EXPECT_EQ(canvas.BoundsOfOther({kUntouched}), RectangleText(c.touched)) << name;
      EXPECT_EQ(canvas.At(TextArea().left + 20, TextArea().top + 10), c.ground) << name;
      EXPECT_EQ(canvas.BoundsOfOther({kUntouched, window_, highlight_}), RectangleText(c.focus)) << name;
    }
  });
}

TEST_F(AddressDrawingTest, LinesShowTheIconOfTheirKindInsideItsMargins) {
  const RECT margins[] = {{kItem.left, kItem.top, kItem.left + 1, kItem.bottom},
                          {TextArea().left - 1, kItem.top, TextArea().left, kItem.bottom}};
  ShowAndCancel(0, [&](Pilot pilot) {
    std::vector<std::vector<COLORREF>> icons;
    for (const int line : {0, 1, 2, 3, -1}) {
      const Canvas canvas;
      Draw(pilot, canvas, line);
      icons.push_back(canvas.Pixels(IconArea()));
      for (const RECT& margin : margins)
        EXPECT_EQ(canvas.BoundsOfOther({window_}, margin), RectangleText(kNowhere));
    }
    const std::vector<COLORREF> blank(icons[1].size(), window_);
    EXPECT_EQ(icons[1], blank) << "neither person nor group";
    EXPECT_EQ(icons[4], blank) << "the line of an empty list";
    EXPECT_NE(icons[0], blank);
    EXPECT_NE(icons[2], blank);
    EXPECT_NE(icons[0], icons[2]);
    EXPECT_EQ(icons[2], icons[3]);
  });
}

// The beginning of a name that is too long is seen, at whichever edge it is; what fits begins where lines begin.
TEST_F(AddressDrawingTest, LongNamesShowTheirBeginningInTheirAreaAndLeaveTheContextAsItWas) {
  const FakeText blanks(300, L' ');
  const RECT area = TextArea();
  const RECT left = {area.left, area.top, area.left + 30, area.bottom};
  const RECT right = {area.right - 30, area.top, area.right, area.bottom};
  const struct {
    FakeText name;
    bool mirrored;
    RECT seen;
  } cases[] = {{L"W", false, left},
               {L"W" + blanks + L".", false, left},
               {L"W", true, Mirrored(left)},
               {L"W" + blanks + L".", true, Mirrored(right)},
               {L"\u0634" + blanks + L".", true, Mirrored(left)},
               {FakeText(300, L'W'), true, Mirrored(right)}};
  for (const auto& c : cases) {
    company_.nodes["anna"].name = c.name;
    ShowAndCancel(0, [&](Pilot pilot) {
      const Canvas canvas(c.mirrored);
      SetTextColor(canvas.Context(), RGB(9, 8, 7));
      SetBkColor(canvas.Context(), RGB(6, 5, 4));
      const UINT alignment = GetTextAlign(canvas.Context());
      Draw(pilot, canvas, 0, ODA_SELECT, ODS_SELECTED);
      EXPECT_EQ(canvas.BoundsOfOther({kUntouched}), RectangleText(c.mirrored ? Mirrored(area) : area));
      EXPECT_NE(canvas.BoundsOfOther({highlight_}, c.seen), RectangleText(kNowhere)) << &c - cases;
      EXPECT_EQ(GetTextColor(canvas.Context()), RGB(9, 8, 7));
      EXPECT_EQ(GetBkColor(canvas.Context()), RGB(6, 5, 4));
      EXPECT_EQ(GetTextAlign(canvas.Context()), alignment);
    });
  }
}

TEST_F(AddressDrawingTest, ArabicListsAreMirrored) {
  UseLanguage(L"1");
  ShowAndCancel(1, [&](Pilot pilot) {
    for (const HWND window : {pilot.dialog, pilot.Item(kEntries), pilot.Item(kTo)}) {
      const HDC context = GetDC(window);
      EXPECT_EQ(GetLayout(context) & LAYOUT_RTL, LAYOUT_RTL);
      ReleaseDC(window, context);
    }
  });
}

TEST_F(AddressDrawingTest, LinesAreAsHighAsIconOrText) {
  ShowAndCancel(3, [&](Pilot pilot) {
    const HDC context = GetDC(pilot.dialog);
    const auto font = pilot.script.Send(pilot.dialog, WM_GETFONT);
    const HGDIOBJ old = SelectObject(context, reinterpret_cast<HFONT>(font));
    TEXTMETRICW metrics{};
    GetTextMetricsW(context, &metrics);
    SelectObject(context, old);
    ReleaseDC(pilot.dialog, context);
    const LONG height = std::max<LONG>(GetSystemMetrics(SM_CYSMICON), metrics.tmHeight);
    for (const int list : {int{kEntries}, int{kTo}, int{kBcc}})
      EXPECT_EQ(pilot.Send(list, LB_GETITEMHEIGHT), height);
  });
}

}  // namespace
}  // namespace orv::test
