#include "providers/book/windows/wait_window.h"

#include "orv/orvcodes.h"
#include "providers/book/windows/help_topics.h"
#include "providers/book/windows/resource.h"

namespace book {
namespace {

constexpr UINT_PTR kTimer = 1;
constexpr UINT kPause = 100;  // milliseconds between two attempts, in which the user may cancel

class WaitWindow final : public kit::Dialog {
 public:
  WaitWindow(const kit::Language& language, const std::function<HRESULT()>& attempt)
      : Dialog(language, IDD_WAIT, kWaitTopics), attempt_(attempt) {}

  HRESULT Run(HWND owner) {
    const INT_PTR result = Show(owner);
    if (result == kNotShown) return MAPI_E_BUSY;
    return result == IDOK ? came_ : MAPI_E_USER_CANCEL;
  }

 private:
  void OnShow() override { SetTimer(Window(), kTimer, kPause, nullptr); }
  bool OnMessage(UINT message, WPARAM first, LPARAM) override {
    if (message != WM_TIMER || first != kTimer) return false;
    KillTimer(Window(), kTimer);
    came_ = attempt_();
    if (came_ != MAPI_E_BUSY) return Close(IDOK), true;
    SetTimer(Window(), kTimer, kPause, nullptr);
    return true;
  }

  const std::function<HRESULT()>& attempt_;
  HRESULT came_ = MAPI_E_BUSY;
};

}  // namespace

HRESULT WaitWhileBusy(HWND owner, const kit::Language& language, const std::function<HRESULT()>& attempt) {
  const HRESULT hr = attempt();
  return hr == MAPI_E_BUSY ? WaitWindow(language, attempt).Run(owner) : hr;
}

}  // namespace book
