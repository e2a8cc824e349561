// Who comes in marks its slot and then looks whether the end has begun; who ends says so and then looks at the slots.
// So one of the two sees the other.
#include "platform/rundown.h"

#include <algorithm>
#include <utility>

#include "platform/lock.h"

namespace orv {

// The mark is taken back where it came too late, and whoever has waited for it is told.
void Rundown::EnterLate(Call& call, Slot& slot) noexcept {
  const ExclusiveGuard guard(lock_);
  call.isInside_ = IsKnownLocked(call.thread_);
  if (call.isInside_) return;
  slot.thread = 0;
  TellLocked();
}

void Rundown::EnterListed(Call& call) noexcept {
  const ExclusiveGuard guard(lock_);
  call.isInside_ = !isClosed_ || IsKnownLocked(call.thread_);
  if (!call.isInside_) return;
  call.hasSlot_ = false;
  call.next_ = std::exchange(listed_, &call);
}

// Nothing of this is touched once the end has run.
void Rundown::Left(DWORD thread) noexcept {
  if (const End end = TakeEnd(thread)) end();
}

void Rundown::LeaveListed(const Call& call) noexcept {
  const ExclusiveGuard guard(lock_);
  Call** link = &listed_;
  while (*link != &call) link = &(*link)->next_;
  *link = call.next_;
}

Rundown::End Rundown::TakeEnd(DWORD thread) noexcept {
  const ExclusiveGuard guard(lock_);
  TellLocked();
  if (thread != postponer_ || HasSlot(thread) || IsKnownLocked(thread)) return nullptr;
  return std::exchange(postponed_, nullptr);
}

bool Rundown::Postpone(End end) noexcept {
  const DWORD thread = GetCurrentThreadId();
  const ExclusiveGuard guard(lock_);
  if (!HasSlot(thread) && !IsKnownLocked(thread)) return false;
  if (postponed_) return true;
  postponed_ = std::move(end);
  postponer_ = thread;
  isClosed_ = true;
  return true;
}

void Rundown::Close() noexcept {
  isClosed_ = true;
  const DWORD self = GetCurrentThreadId();
  if (AreOthersInside(self)) WaitForOthers(self);
  closer_ = self;
}

// The event is made here: most sessions end with nobody inside, and a handle costs more than all the rest.
void Rundown::WaitForOthers(DWORD self) noexcept {
  Event left;
  ListenTo(&left);
  while (AreOthersInside(self)) left.Wait();
  ListenTo(nullptr);
}

void Rundown::ListenTo(Event* left) noexcept {
  const ExclusiveGuard guard(lock_);
  left_ = left;
}

void Rundown::TellLocked() noexcept {
  if (left_ != nullptr) left_->Set();
}

bool Rundown::HasSlot(DWORD thread) noexcept { return SlotOf(thread).thread == thread; }

bool Rundown::IsKnownLocked(DWORD thread) const noexcept {
  if (thread == closer_) return true;
  const Call* call = listed_;
  while (call != nullptr && call->thread_ != thread) call = call->next_;
  return call != nullptr;
}

bool Rundown::AreOthersInside(DWORD thread) noexcept {
  const ExclusiveGuard guard(lock_);
  const auto isOther = [thread](DWORD who) { return who != 0 && who != thread; };
  const Call* call = listed_;
  while (call != nullptr && !isOther(call->thread_)) call = call->next_;
  return call != nullptr ||
         std::any_of(slots_.begin(), slots_.end(), [&](const Slot& slot) { return isOther(slot.thread); });
}

}  // namespace orv
