// Help for the user: the main help, and the popup topic of a single control.
#pragma once

#include <optional>
#include <span>

#include "platform/win.h"
#include "ui/help_ids.h"

namespace orv::ui {

struct ContextHelpRequest {
  HWND dialog = nullptr;
  int control = 0;             // 0: the child at the point
  UINT message = WM_HELP;      // WM_CONTEXTMENU asks by a menu first
  std::optional<POINT> point;  // on the screen; (-1, -1) for a menu asked for by keyboard
};

// Shows the main help over `owner`; a help window counts one up.
void ShowMainHelp(HWND owner, HMODULE library, ULONG& shown);

// Shows the popup topic of a control, looked up in the dialog's table and then in the one common to all; the
// menu comes from `resources`. The help window (which counts one up), or null.
HWND ShowContextHelp(const ContextHelpRequest& request, HMODULE resources, std::span<const HelpIdPair> topics,
                     ULONG& shown);

// Size of the popup for a topic, from the window type's rectangle: most topics of one line are lower.
SIZE PopupSize(const RECT& rectangle, UINT identifier, bool fromCommonTable);
// Where a popup for a control goes on the desktop.
RECT PlacePopup(const RECT& control, SIZE popup, const RECT& desktop);

// The context help of one dialog: its table, and the last popup, which closes with the dialog.
class DialogHelp {
 public:
  DialogHelp(HMODULE resources, std::span<const HelpIdPair> topics)
      : resources_(resources), topics_(topics) {}

  void OnHelp(HWND dialog, const HELPINFO& help);
  void OnContextMenu(HWND dialog, HWND window, POINT point);
  void ClosePopup();

 private:
  void Show(const ContextHelpRequest& request);

  HMODULE resources_;
  std::span<const HelpIdPair> topics_;
  HWND popup_ = nullptr;
  ULONG shown_ = 0;
};

}  // namespace orv::ui
