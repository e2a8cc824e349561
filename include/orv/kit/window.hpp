// Windows of a provider: modal dialogs and their pages, from dialog templates and texts that lie in the provider's own
// library under the identifiers of their languages. The language is the one that the address book library shows its
// windows in.
//
//   class DetailsWindow final : public kit::Dialog {
//    public:
//     explicit DetailsWindow(const kit::Language& language) : Dialog(language, kDetails) {}
//    private:
//     void OnShow() override { SetText(kName, L"..."); }
//     void OnOk() override { if (Save()) Close(IDOK); }
//   };
//   ...
//   if (DetailsWindow(language).Show(owner) != IDOK) return MAPI_E_USER_CANCEL;
//
// One thread a window: the one that shows it.
#pragma once

#include <windows.h>

#include <span>
#include <string>
#include <vector>

namespace orv::kit {

// The resources of a library in one language; what it lacks there is taken from the English ones (0x0409).
class Language {
 public:
  // `own` has the resources. `companion` is what the entry function and ABProviderOpen were called with as hResource:
  // its file name tells the language. Null, or with another name: the language of the user's windows.
  Language(HMODULE own, HMODULE companion) noexcept;

  LANGID Id() const noexcept { return id_; }
  // Where the window templates are mirrored, texts run from the right.
  bool IsRightToLeft() const noexcept;
  HMODULE Module() const noexcept { return own_; }

  // A text of the string table; empty where there is none.
  std::wstring Text(UINT identifier) const;
  // The same with %1 to %9 replaced; a directive without a value is left as it stands.
  std::wstring Text(UINT identifier, std::span<const std::wstring> values) const;
  // A dialog template, which lives as long as the library is loaded; null where there is none.
  const DLGTEMPLATE* Template(WORD identifier) const noexcept;
  // The help file of the language beside the library, "<library's name><two letters>.chm", else the English one,
  // unchecked.
  std::wstring HelpFile() const;

 private:
  HMODULE own_;
  LANGID id_;
};

// The module that a function or object of the caller's lies in.
HMODULE ModuleOf(const void* address) noexcept;

// A control and its topic "<number>.htm" in the help file; a label without a number of its own (-1) shares the topic of
// the control behind it.
struct HelpTopic {
  int control;
  UINT topic;
};

// A modal dialog, which its pages are part of: their controls are found by number as its own are, and their messages
// come to the same methods. What the methods below throw ends the command that they come from, with the text
// kNoMemoryText of the string table in a box; what OnShow throws ends the dialog.
// Ctrl+Tab and Ctrl+Shift+Tab turn the pages.
class Dialog {
 public:
  static constexpr INT_PTR kNotShown = -1;
  static constexpr UINT kNoMemoryText = 1;

  Dialog(const Dialog&) = delete;
  Dialog& operator=(const Dialog&) = delete;

  // Runs until it is closed and gives what Close was called with; kNotShown where it cannot be shown. It is centred over
  // its owner, inside the screen.
  INT_PTR Show(HWND owner);

  // ---- While it is shown; public for the parts that a window may be made of

  const Language& Texts() const noexcept { return language_; }
  HWND Window() const noexcept { return window_; }
  HWND Item(int control) const noexcept;

  std::wstring TextOf(int control) const;
  void SetText(int control, const std::wstring& text) const;
  void LimitText(int control, int characters) const;
  void Enable(int control, bool isEnabled) const;
  void SetReadOnly(int control, bool isReadOnly) const;  // of an edit
  void Check(int control, bool isChecked) const;
  bool IsChecked(int control) const;
  // Turns to the control's page; the default button goes along as with the Tab key.
  void FocusOn(int control);

  // Boxes over the dialog, in its caption; the buttons' words are the system's.
  int Tell(const std::wstring& text, UINT style = MB_ICONERROR) const;
  bool Ask(const std::wstring& text) const;  // yes or no; no is the default

 protected:
  Dialog(const Language& language, WORD dialogTemplate, std::span<const HelpTopic> topics = {})
      : language_(language), template_(dialogTemplate), topics_(topics) {}
  virtual ~Dialog() = default;

  // The window is there and not yet seen. The focus goes to the first control unless FocusOn was called.
  virtual void OnShow() {}
  // A button, a list, an edit (notification: BN_*, EN_* and so on; 0 of a button or key). True when dealt with.
  virtual bool OnCommand(int control, int notification);
  // WM_NOTIFY but what pages need; the result is the message's.
  virtual LRESULT OnNotify(const NMHDR& header);
  // A key (VK_*) goes down in a control, before the dialog and the control see it, which they do not when the result is
  // true. Enter comes here also while the default button is disabled.
  virtual bool OnKey(int control, UINT key);
  // Every other message to the dialog; true when dealt with.
  virtual bool OnMessage(UINT message, WPARAM first, LPARAM second);
  virtual void OnOk() { Close(IDOK); }
  virtual void OnCancel() { Close(IDCANCEL); }

  void Close(INT_PTR result);

  // Pages: templates with WS_CHILD and DS_CONTROL, shown one at a time inside the tab control. Called in OnShow.
  void AddPage(int tabControl, WORD dialogTemplate, const std::wstring& title);
  void ShowPage(int page);
  int Page() const noexcept { return page_; }

 private:
  static INT_PTR CALLBACK Procedure(HWND window, UINT message, WPARAM first, LPARAM second);
  static Dialog* Of(HWND control);
  static LRESULT CALLBACK SeeKey(int code, WPARAM first, LPARAM second);
  INT_PTR DispatchGuarded(HWND window, UINT message, WPARAM first, LPARAM second) noexcept;
  INT_PTR Dispatch(HWND window, UINT message, WPARAM first, LPARAM second);
  bool Begin();
  INT_PTR Notified(HWND window, const NMHDR& header);
  void Command(int control, int notification);
  void Help(HWND control) const;
  UINT TopicOf(HWND control) const;
  bool SeenKey(const MSG& message);
  bool TurnPage(const MSG& message);
  int PageWith(HWND control) const;
  void PlacePage(HWND page) const;

  const Language& language_;
  const WORD template_;
  const std::span<const HelpTopic> topics_;
  HWND window_ = nullptr;
  HWND tabs_ = nullptr;
  std::vector<HWND> pages_;
  int page_ = 0;
  bool hasFocus_ = false;  // FocusOn has chosen
};

}  // namespace orv::kit
