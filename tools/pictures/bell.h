// Tells another thread that the message loop of this one has come round.
#pragma once

#include <windows.h>

#include <atomic>

namespace pictures {

// A window that is never seen. Ringing posts a message to it: once it has rung, what was posted earlier has been dealt
// with, and of all the dialogs of the thread only those below the innermost loop are in the middle of a command.
class Bell {
 public:
  // On the thread whose loop is meant.
  Bell();
  ~Bell() { DestroyWindow(window_); }
  Bell(const Bell&) = delete;
  Bell& operator=(const Bell&) = delete;

  // From any one thread; tells the number of rings to be waited for.
  int Ring();
  int Rung() const { return rung_; }
  // Has the thread paint a window anew, all of it; false when it does not come round in so many milliseconds. Painting
  // from elsewhere would meet the thread's own.
  bool Paint(HWND window, UINT wait) const;

 private:
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

  HWND window_;
  int asked_ = 0;
  std::atomic<int> rung_ = 0;
};

}  // namespace pictures
