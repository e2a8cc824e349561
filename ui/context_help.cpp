// The steps from a control to its help window. The record of the popup's window type is process-wide, as HTML
// Help's own types are.
#include "ui/context_help.h"

#include <algorithm>
#include <array>

#include "platform/lock.h"
#include "platform/process.h"
#include "ui/html_help.h"
#include "ui/localisation.h"
#include "ui/window_utils.h"

namespace orv::ui {
namespace {

constexpr UINT kContextMenu = 500;
constexpr WCHAR kFileType[] = L"Popup";
constexpr WCHAR kPopupType[] = L"$global_Popup";
constexpr WCHAR kDefaultCaption[] = L"Tovan Dorin FAX Help";
constexpr RECT kDefaultRectangle{0, 0, 299, 178};
constexpr LONG kCaptionHeight = 24;
constexpr LONG kDistanceBelowTop = 10;

constexpr auto kLowerTopics = std::to_array<UINT>({0x812F0385, 0x812F0002, 0x812F0003, 0x80650418});

struct FoundTopic {
  UINT identifier;
  bool common;
};

std::optional<UINT> Find(std::span<const HelpIdPair> topics, int control) {
  const auto topic =
      std::find_if(topics.begin(), topics.end(), [&](const HelpIdPair& t) { return t.control == control; });
  if (topic == topics.end()) return std::nullopt;
  return topic->helpId;
}

std::optional<FoundTopic> FindTopic(std::span<const HelpIdPair> topics, int control) {
  if (const auto own = Find(topics, control)) return FoundTopic{*own, false};
  if (const auto common = Find(kCommonHelpIds, control)) return FoundTopic{*common, true};
  return std::nullopt;
}

// The child at the request's point, 0 for none with an identifier.
int ControlAtPoint(const ContextHelpRequest& request) {
  if (!request.point) return 0;
  POINT point = *request.point;
  ScreenToClient(request.dialog, &point);
  const HWND child = ChildWindowFromPointEx(request.dialog, point, CWP_SKIPTRANSPARENT);
  if (child == nullptr || child == request.dialog) return 0;
  const int control = GetDlgCtrlID(child);
  return control == -1 ? 0 : control;
}

class Menu {
 public:
  Menu(HMODULE resources, UINT identifier)
      : handle_(resources == nullptr ? nullptr : LoadMenuW(resources, MAKEINTRESOURCEW(identifier))) {}
  ~Menu() {
    if (handle_ != nullptr) DestroyMenu(handle_);
  }
  Menu(const Menu&) = delete;
  Menu& operator=(const Menu&) = delete;

  HMENU FirstSubmenu() const { return handle_ == nullptr ? nullptr : GetSubMenu(handle_, 0); }

 private:
  HMENU handle_;
};

POINT CentreOf(const RECT& r) { return {(r.left + r.right) / 2, (r.top + r.bottom) / 2}; }

bool IsFromKeyboard(POINT point) { return point.x == -1 && point.y == -1; }

bool ChosenFromMenu(const ContextHelpRequest& request, HWND control, HMODULE resources) {
  if (!request.point) return false;
  const Menu menu(resources, kContextMenu);
  const HMENU commands = menu.FirstSubmenu();
  if (commands == nullptr) return false;
  const POINT at = IsFromKeyboard(*request.point) ? CentreOf(WindowRectangle(control)) : *request.point;
  const bool mirrored = (GetWindowLongPtrW(request.dialog, GWL_EXSTYLE) & WS_EX_LAYOUTRTL) != 0;
  const UINT flags = TPM_RETURNCMD | (mirrored ? TPM_LAYOUTRTL : 0u);
  return TrackPopupMenu(commands, flags, at.x, at.y, 0, request.dialog, nullptr) != 0;
}

// What HTML Help answered so far. It starts zeroed; until an answer the defaults stand in, without being
// kept: kept, their rectangle would never give way to the file's.
struct PopupRecord {
  bool answered = false;
  HelpWindowType type;

  void Take(const HelpWindowType& answer) {
    const RECT empty{};
    const RECT kept = EqualRect(&type.rectangle, &empty) ? answer.rectangle : type.rectangle;
    type = answer;
    type.rectangle = kept;
    answered = true;
  }

  HelpWindowType Copy() const {
    if (answered) return type;
    HelpWindowType defaults;
    std::copy(std::begin(kDefaultCaption), std::end(kDefaultCaption), defaults.caption.begin());
    defaults.rectangle = kDefaultRectangle;
    return defaults;
  }
};

// Dialogs may be open on several threads.
SRWLOCK g_popupLock = SRWLOCK_INIT;
PopupRecord g_popup;

HelpWindowType TakePopup(const std::optional<HelpWindowType>& answer) {
  const ExclusiveGuard guard(g_popupLock);
  if (answer) g_popup.Take(*answer);
  return g_popup.Copy();
}

HWND ShowPopup(const ContextHelpRequest& request, HWND control, const FoundTopic& topic,
               const WString& file) {
  HelpWindowType type = TakePopup(QueryHelpWindowType(request.dialog, file, kFileType));
  type.rectangle =
      PlacePopup(WindowRectangle(control), PopupSize(type.rectangle, topic.identifier, topic.common),
                 WindowRectangle(GetDesktopWindow()));
  DefineHelpPopup(request.dialog, file, kPopupType, type);
  return DisplayHelpTopic(request.dialog,
                          file + L"::/" + std::to_wstring(topic.identifier) + L".htm>" + kPopupType);
}

}  // namespace

void ShowMainHelp(HWND owner, HMODULE library, ULONG& shown) {
  static const WString file = CompanionPath(Companion::kMainHelp, library);
  if (!file.empty() && DisplayHelpTopic(owner, file + L">main") != nullptr) ++shown;
}

HWND ShowContextHelp(const ContextHelpRequest& request, HMODULE resources, std::span<const HelpIdPair> topics,
                     ULONG& shown) {
  const int control = request.control != 0 ? request.control : ControlAtPoint(request);
  const HWND window = control == 0 ? nullptr : GetDlgItem(request.dialog, control);
  if (window == nullptr) return nullptr;
  const std::optional<FoundTopic> topic = FindTopic(topics, control);
  if (!topic) return nullptr;
  if (request.message == WM_CONTEXTMENU && !ChosenFromMenu(request, window, resources)) return nullptr;
  if (topic->identifier == 0) return nullptr;
  const WString file = CompanionPath(Companion::kContextHelp, process::Instance());
  if (file.empty()) return nullptr;
  const HWND popup = ShowPopup(request, window, *topic, file);
  if (popup != nullptr) ++shown;
  return popup;
}

SIZE PopupSize(const RECT& rectangle, UINT identifier, bool fromCommonTable) {
  const bool lower = fromCommonTable ||
                     std::find(kLowerTopics.begin(), kLowerTopics.end(), identifier) != kLowerTopics.end();
  const LONG height = rectangle.bottom - rectangle.top;
  return {rectangle.right - rectangle.left, lower ? height - kCaptionHeight : height};
}

RECT PlacePopup(const RECT& control, SIZE popup, const RECT& desktop) {
  RECT place{};
  place.left = std::max<LONG>(control.left - popup.cx / 2, 0);
  if (place.left + popup.cx > desktop.right) place.left = desktop.right - popup.cx;
  place.top = control.top + kDistanceBelowTop;
  if (place.top + popup.cy > desktop.bottom) place.top = desktop.bottom - popup.cy;
  place.right = place.left + popup.cx;
  place.bottom = place.top + popup.cy;
  return place;
}

void DialogHelp::OnHelp(HWND dialog, const HELPINFO& help) {
  if (help.iContextType != HELPINFO_WINDOW) return;
  Show({dialog, help.iCtrlId, WM_HELP, help.MousePos});
}

void DialogHelp::OnContextMenu(HWND dialog, HWND window, POINT point) {
  // A click beside the controls, or on a disabled one, comes with the dialog itself.
  const int control = window == dialog ? 0 : GetDlgCtrlID(window);
  Show({dialog, control, WM_CONTEXTMENU, point});
}

void DialogHelp::Show(const ContextHelpRequest& request) {
  if (const HWND popup = ShowContextHelp(request, resources_, topics_, shown_)) popup_ = popup;
}

void DialogHelp::ClosePopup() {
  if (popup_ != nullptr && IsWindow(popup_)) CloseBySystemCommand(popup_);
  popup_ = nullptr;
}

}  // namespace orv::ui
