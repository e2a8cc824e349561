// Message and question boxes over LoadText.
#include "ui/message_box.h"

#include "platform/process.h"
#include "ui/localisation.h"

namespace orv::ui {
namespace {

constexpr UINT kQuestionCaption = 266;
constexpr UINT kMessageCaption = 288;
constexpr std::size_t kTextCapacity = 160;
constexpr std::size_t kCaptionCapacity = 80;

int Show(const WString& text, UINT caption, HMODULE resources, HWND parent, UINT style) {
  return MessageBoxW(parent, text.c_str(), LoadText(resources, caption, kCaptionCapacity).c_str(),
                     MessageStyle(style, process::Instance()));
}

}  // namespace

UINT MessageStyle(UINT style, HMODULE library) { return style | RightToLeftMessageFlags(library); }

int ShowMessage(UINT identifier, HMODULE resources, HWND parent, UINT style) {
  return ShowText(LoadText(resources, identifier, kTextCapacity), resources, parent, style);
}

int ShowText(const WString& text, HMODULE resources, HWND parent, UINT style) {
  return Show(text, kMessageCaption, resources, parent, style);
}

bool AskQuestion(UINT identifier, HMODULE resources, HWND parent) {
  return Show(LoadText(resources, identifier, kTextCapacity), kQuestionCaption, resources, parent,
              MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2) == IDYES;
}

}  // namespace orv::ui
