#include "providers/book/windows/what_window.h"

#include "providers/book/windows/help_topics.h"
#include "providers/book/windows/resource.h"

namespace book {
namespace {

class WhatWindow final : public kit::Dialog {
 public:
  explicit WhatWindow(const kit::Language& language) : Dialog(language, IDD_WHAT, kWhatTopics) {}

 private:
  void OnShow() override {
    Check(IDC_WHAT_CONTACT, true);
    FocusOn(IDC_WHAT_CONTACT);
  }
  void OnOk() override { Close(IsChecked(IDC_WHAT_LIST) ? IDC_WHAT_LIST : IDC_WHAT_CONTACT); }
};

}  // namespace

NewEntry AskWhatIsNew(HWND owner, const kit::Language& language) {
  const INT_PTR answer = WhatWindow(language).Show(owner);
  if (answer == IDC_WHAT_LIST) return NewEntry::kList;
  return answer == IDC_WHAT_CONTACT ? NewEntry::kContact : NewEntry::kNone;
}

}  // namespace book
