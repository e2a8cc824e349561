// Counts, thread by thread, who is inside something that will be taken apart, so that its end waits for them. Coming in
// and going out take no lock.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <functional>

#include "platform/event.h"
#include "platform/win.h"

namespace orv {

class Rundown {
 public:
  // What is done at the end. Runs on the thread that asked for it.
  using End = std::function<void()>;

  // One call, as long as it lives. Once the end has begun, only those threads get in that are inside already: what they
  // began they can finish.
  class [[nodiscard]] Call {
   public:
    // Null lets everybody in and waits for nobody.
    explicit Call(Rundown* rundown) noexcept : rundown_(rundown), thread_(GetCurrentThreadId()) {
      if (rundown_ != nullptr) rundown_->Enter(*this);
    }
    // May run a postponed end, so that whatever the call works on may be gone when this returns.
    ~Call() {
      if (rundown_ != nullptr && isInside_) rundown_->Leave(*this);
    }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    explicit operator bool() const noexcept { return isInside_; }

   private:
    friend class Rundown;

    Rundown* const rundown_;
    const DWORD thread_;
    bool isInside_ = true;
    // Whether it is counted in a slot; else it stands in the list of those that found theirs taken.
    bool hasSlot_ = true;
    Call* next_ = nullptr;
  };

  // The end, as long as it lives: begins when nobody else is inside any more. Its own thread may come in again.
  class [[nodiscard]] Closing {
   public:
    explicit Closing(Rundown& rundown) noexcept : rundown_(rundown) { rundown_.Close(); }
    ~Closing() { rundown_.closer_ = 0; }
    Closing(const Closing&) = delete;
    Closing& operator=(const Closing&) = delete;

   private:
    Rundown& rundown_;
  };

  Rundown() = default;
  Rundown(const Rundown&) = delete;
  Rundown& operator=(const Rundown&) = delete;

  // False outside. For a thread that is inside, which cannot wait for itself: lets nobody else in from now on, and runs
  // `end` when the thread leaves its outermost call. Of several such wishes the first counts.
  bool Postpone(End end) noexcept;

 private:
  // A thread's own, by its identifier, on a cache line of its own. The depth is read and written by that thread only.
  struct Slot {
    std::atomic<DWORD> thread{0};
    ULONG depth = 0;
    std::array<std::byte, 56> padding{};
  };
  static constexpr std::size_t kSlots = 32;
  // Identifiers of threads are multiples of it.
  static constexpr DWORD kThreadStep = 4;

  Slot& SlotOf(DWORD thread) noexcept { return slots_[thread / kThreadStep % kSlots]; }
  void Enter(Call& call) noexcept;
  void EnterLate(Call& call, Slot& slot) noexcept;
  void EnterListed(Call& call) noexcept;
  void Leave(const Call& call) noexcept;
  void LeaveListed(const Call& call) noexcept;
  void Left(DWORD thread) noexcept;
  End TakeEnd(DWORD thread) noexcept;
  void Close() noexcept;
  void WaitForOthers(DWORD self) noexcept;
  void ListenTo(Event* left) noexcept;
  void TellLocked() noexcept;

  bool HasSlot(DWORD thread) noexcept;
  // Whether the thread stands in the list, or is the end's own.
  bool IsKnownLocked(DWORD thread) const noexcept;
  bool AreOthersInside(DWORD thread) noexcept;

  std::array<Slot, kSlots> slots_;
  std::atomic<bool> isClosed_{false};
  // The thread that is at the end's work; 0 before and after.
  std::atomic<DWORD> closer_{0};

  SRWLOCK lock_ = SRWLOCK_INIT;
  // Under the lock.
  Call* listed_ = nullptr;
  End postponed_;
  DWORD postponer_ = 0;
  Event* left_ = nullptr;  // while the end waits
};

inline void Rundown::Enter(Call& call) noexcept {
  // Who comes late marks no slot: threads that come again and again would keep the end waiting for marks.
  if (isClosed_ && !HasSlot(call.thread_)) return EnterListed(call);
  Slot& slot = SlotOf(call.thread_);
  DWORD owner = 0;
  if (slot.thread.compare_exchange_strong(owner, call.thread_)) {
    slot.depth = 1;
    if (isClosed_) EnterLate(call, slot);
  } else if (owner == call.thread_) {
    ++slot.depth;
  } else {
    EnterListed(call);
  }
}

inline void Rundown::Leave(const Call& call) noexcept {
  if (call.hasSlot_) {
    Slot& slot = SlotOf(call.thread_);
    if (--slot.depth != 0) return;
    slot.thread = 0;
  } else {
    LeaveListed(call);
  }
  if (isClosed_) Left(call.thread_);
}

}  // namespace orv
