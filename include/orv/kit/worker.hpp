// A thread of a provider's own, for what must not hold up its callers: waiting for a server, watching a file, telling
// sinks. It holds a reference to the library that it was made in, so that the library's code stays until the thread
// has left it, however late that is.
#pragma once

#include <functional>
#include <memory>

#include "orv/orvbase.hpp"

namespace orv::kit {

// A queue of jobs and one thread that runs them in the order in which they were posted. The thread starts with the
// first job. COM is not initialised on it: a job that needs it does that itself.
//
// Let the provider object own it and call Stop first in its destructor: what a session's end waits for is then one
// second at most. A job that has not ended by then goes on, in code that stays loaded for it, while the session is
// gone already: it must own or share all that it uses, and must end soon after ShouldStop.
//
// Post, Stop and ShouldStop may be called from any thread, the worker's own included; the destructor too. None of them
// may be called from DllMain.
class Worker {
 public:
  // What a job is given to know by that it is to end.
  class Signal {
   public:
    explicit Signal(HANDLE stop) noexcept : stop_(stop) {}
    bool ShouldStop() const noexcept { return Wait(0); }
    // Sleeps; true as soon as the job is to end.
    bool Wait(DWORD milliseconds) const noexcept {
      return WaitForSingleObject(stop_, milliseconds) == WAIT_OBJECT_0;
    }
    // For WaitForMultipleObjects together with what the job waits for; not to be closed or changed.
    HANDLE Event() const noexcept { return stop_; }

   private:
    HANDLE stop_;
  };
  // What it throws ends the job and nothing else. It is destroyed after it ran, or without having run when the worker
  // stops; never while a lock of ours is held.
  using Job = std::function<void(const Signal&)>;

  // How long Stop waits.
  static constexpr DWORD kLongestWait = 1000;

  Worker();
  ~Worker() { Stop(); }
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

  // MAPI_E_END_OF_SESSION after Stop; MAPI_E_NOT_ENOUGH_MEMORY or MAPI_E_NOT_ENOUGH_RESOURCES when the job or the
  // thread cannot be made. Only after S_OK the job is run.
  HRESULT Post(Job job) noexcept;

  // Jobs that have not begun are dropped, the one that runs is told to end, and it is waited for. True when the thread
  // has ended and the reference to the library is given back; false when it still runs, or is the thread that calls.
  // A second call does not wait.
  bool Stop() noexcept;

 private:
  class Queue;
  std::shared_ptr<Queue> queue_;
};

}  // namespace orv::kit
