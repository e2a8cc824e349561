// The connections are shared with the jobs of the worker and with the threads that deliver: they may outlive the list.
#include "orv/kit/advise.hpp"

#include <algorithm>
#include <mutex>

#include "event_queue.hpp"

namespace orv::kit {
namespace {

// A lock that can be waited under.
class WaitableLock {
 public:
  void lock() noexcept { AcquireSRWLockExclusive(&lock_); }
  void unlock() noexcept { ReleaseSRWLockExclusive(&lock_); }
  // Lets go of the lock meanwhile; may return early.
  void Wait(CONDITION_VARIABLE& condition, DWORD milliseconds) noexcept {
    SleepConditionVariableSRW(&condition, &lock_, milliseconds, 0);
  }

 private:
  SRWLOCK lock_ = SRWLOCK_INIT;
};

SBinary BytesOf(const std::vector<BYTE>& id) noexcept {
  return {static_cast<ULONG>(id.size()), const_cast<LPBYTE>(id.data())};
}

struct Connection {
  Connection(SBinary wanted, ULONG events, IMAPIAdviseSink* called, size_t most)
      : mask(events), sink(sdk::ComPtr<IMAPIAdviseSink>::Share(called)), pending(most) {
    if (wanted.cb != 0) id.assign(wanted.lpb, wanted.lpb + wanted.cb);
  }

  bool Hears(const NOTIFICATION& event) const noexcept {
    return !removed && (event.ulEventType & mask) != 0 && (id.empty() || Concerns(event, BytesOf(id)));
  }
  bool IsDue() const noexcept { return !removed && caller == 0 && !pending.IsEmpty(); }

  ULONG number = 0;
  const ULONG mask;
  std::vector<BYTE> id;
  sdk::ComPtr<IMAPIAdviseSink> sink;
  EventQueue pending;
  DWORD caller = 0;  // the thread that is within the sink
  bool removed = false;
};
using ConnectionPtr = std::shared_ptr<Connection>;

void Tell(IMAPIAdviseSink& sink, SBinary id, EventQueue& events) noexcept {
  events.TellAll(id, [&sink](ULONG count, NOTIFICATION* each) {
    try {
      sink.OnNotify(count, each);
    } catch (...) {
      // The others are to hear of it all the same.
    }
  });
}

}  // namespace

class AdviseList::Connections {
 public:
  Connections(std::shared_ptr<Worker> worker, size_t most)
      : worker_(std::move(worker)), most_(std::max<size_t>(most, 1)) {}

  size_t Most() const noexcept { return most_; }
  bool HasWorker() const noexcept { return worker_ != nullptr; }

  ULONG Add(ConnectionPtr connection);
  ConnectionPtr Newest();
  bool Remove(ULONG number, DWORD wait);
  bool IsWanted(ULONG type);
  void Queue(const NOTIFICATION* events, size_t count);
  void Deliver();
  void WakeWorker(const std::shared_ptr<Connections>& self);

 private:
  ULONG FreeNumberLocked() noexcept;
  ConnectionPtr FindLocked(ULONG number) const noexcept;
  void EraseLocked(const ConnectionPtr& connection) noexcept;
  bool IsTellingLocked(DWORD thread) const noexcept;
  void AwaitCallLocked(const Connection& connection, DWORD wait) noexcept;
  ConnectionPtr BeginCall(ULONG after, EventQueue& events);
  void EndCall(const ConnectionPtr& connection) noexcept;

  const std::shared_ptr<Worker> worker_;
  const size_t most_;
  WaitableLock lock_;  // guards what follows, and what the connections hold
  CONDITION_VARIABLE callEnded_ = CONDITION_VARIABLE_INIT;
  std::vector<ConnectionPtr> all_;  // also removed ones whose sink is still being called
  ULONG lastNumber_ = 0;
  bool workerIsDue_ = false;
};

ULONG AdviseList::Connections::Add(ConnectionPtr connection) {
  const std::lock_guard guard(lock_);
  all_.reserve(all_.size() + 1);
  connection->number = FreeNumberLocked();
  all_.push_back(std::move(connection));
  return lastNumber_;
}

// A client that holds a number long enough would otherwise meet it again.
ULONG AdviseList::Connections::FreeNumberLocked() noexcept {
  do {
    ++lastNumber_;
  } while (lastNumber_ == 0 || FindLocked(lastNumber_) != nullptr);
  return lastNumber_;
}

ConnectionPtr AdviseList::Connections::FindLocked(ULONG number) const noexcept {
  const auto found =
      std::find_if(all_.begin(), all_.end(), [number](const auto& each) { return each->number == number; });
  return found != all_.end() && !(*found)->removed ? *found : nullptr;
}

ConnectionPtr AdviseList::Connections::Newest() {
  const std::lock_guard guard(lock_);
  const auto found =
      std::find_if(all_.rbegin(), all_.rend(), [](const auto& each) { return !each->removed; });
  return found != all_.rend() ? *found : nullptr;
}

// The sink and what waited for it go when the lock is free again: both may call anybody.
bool AdviseList::Connections::Remove(ULONG number, DWORD wait) {
  EventQueue dropped(most_);
  sdk::ComPtr<IMAPIAdviseSink> sink;
  ConnectionPtr connection;
  const std::lock_guard guard(lock_);
  connection = FindLocked(number);
  if (connection == nullptr) return false;
  connection->removed = true;
  std::swap(dropped, connection->pending);
  if (connection->caller != 0) AwaitCallLocked(*connection, wait);
  if (connection->caller != 0) return true;  // whoever calls it takes it out
  sink = std::move(connection->sink);
  EraseLocked(connection);
  return true;
}

void AdviseList::Connections::EraseLocked(const ConnectionPtr& connection) noexcept {
  all_.erase(std::remove(all_.begin(), all_.end(), connection), all_.end());
}

bool AdviseList::Connections::IsTellingLocked(DWORD thread) const noexcept {
  return std::any_of(all_.begin(), all_.end(), [thread](const auto& each) { return each->caller == thread; });
}

void AdviseList::Connections::AwaitCallLocked(const Connection& connection, DWORD wait) noexcept {
  if (IsTellingLocked(GetCurrentThreadId())) return;
  const ULONGLONG end = GetTickCount64() + wait;
  for (ULONGLONG now = GetTickCount64(); connection.caller != 0 && now < end; now = GetTickCount64())
    lock_.Wait(callEnded_, static_cast<DWORD>(end - now));
}

bool AdviseList::Connections::IsWanted(ULONG type) {
  const std::lock_guard guard(lock_);
  return std::any_of(all_.begin(), all_.end(),
                     [type](const auto& each) { return !each->removed && (each->mask & type) != 0; });
}

void AdviseList::Connections::Queue(const NOTIFICATION* events, size_t count) {
  const std::lock_guard guard(lock_);
  for (const auto& each : all_) {
    for (size_t i = 0; i < count; ++i) {
      if (each->Hears(events[i])) each->pending.Add(events[i]);
    }
  }
}

// One turn after the other, so that a sink which makes events of its own does not keep the others from theirs.
void AdviseList::Connections::Deliver() {
  ULONG last = 0;
  for (;;) {
    EventQueue events(most_);
    const ConnectionPtr connection = BeginCall(last, events);
    if (connection == nullptr) return;
    last = connection->number;
    Tell(*connection->sink, BytesOf(connection->id), events);
    EndCall(connection);
  }
}

// The next that is due behind the number given, or from the start again.
ConnectionPtr AdviseList::Connections::BeginCall(ULONG after, EventQueue& events) {
  const std::lock_guard guard(lock_);
  const auto isDue = [](const auto& each) { return each->IsDue(); };
  auto found = std::find_if(all_.begin(), all_.end(),
                            [&](const auto& each) { return isDue(each) && each->number > after; });
  if (found == all_.end()) found = std::find_if(all_.begin(), all_.end(), isDue);
  if (found == all_.end()) return nullptr;
  (*found)->caller = GetCurrentThreadId();
  std::swap(events, (*found)->pending);
  return *found;
}

// A sink that was removed meanwhile is let go of first: whoever waits may then free what it lives on.
void AdviseList::Connections::EndCall(const ConnectionPtr& connection) noexcept {
  sdk::ComPtr<IMAPIAdviseSink> gone;
  {
    const std::lock_guard guard(lock_);
    if (connection->removed) gone = std::move(connection->sink);
  }
  gone.Reset();
  {
    const std::lock_guard guard(lock_);
    connection->caller = 0;
    if (connection->removed) EraseLocked(connection);
  }
  WakeAllConditionVariable(&callEnded_);
}

// One job is enough for all that is queued before it runs. Without memory for it the next event makes it.
void AdviseList::Connections::WakeWorker(const std::shared_ptr<Connections>& self) {
  {
    const std::lock_guard guard(lock_);
    if (std::exchange(workerIsDue_, true)) return;
  }
  const HRESULT hr = worker_->Post([self](const Worker::Signal&) {
    {
      const std::lock_guard guard(self->lock_);
      self->workerIsDue_ = false;
    }
    self->Deliver();
  });
  if (SUCCEEDED(hr)) return;
  const std::lock_guard guard(lock_);
  workerIsDue_ = false;
}

NOTIFICATION ObjectEvent(ULONG type, ULONG objectType, SBinary id, SBinary parent) noexcept {
  NOTIFICATION event{};
  event.ulEventType = type;
  event.info.obj.ulObjType = objectType;
  event.info.obj.cbEntryID = id.cb;
  event.info.obj.lpEntryID = reinterpret_cast<LPENTRYID>(id.lpb);
  event.info.obj.cbParentID = parent.cb;
  event.info.obj.lpParentID = reinterpret_cast<LPENTRYID>(parent.lpb);
  return event;
}

AdviseList::AdviseList(std::shared_ptr<Worker> worker, size_t mostPending)
    : connections_(std::make_shared<Connections>(std::move(worker), mostPending)) {}

HRESULT AdviseList::Advise(SBinary id, ULONG mask, IMAPIAdviseSink* sink, ULONG* connection) noexcept {
  if (sink == nullptr || connection == nullptr) return MAPI_E_INVALID_PARAMETER;
  if (id.cb != 0 && id.lpb == nullptr) return MAPI_E_INVALID_PARAMETER;
  return sdk::Guarded([&]() -> HRESULT {
    *connection = connections_->Add(std::make_shared<Connection>(id, mask, sink, connections_->Most()));
    return S_OK;
  });
}

HRESULT AdviseList::Unadvise(ULONG connection) noexcept {
  return connections_->Remove(connection, kLongestWait) ? S_OK : MAPI_E_NOT_FOUND;
}

void AdviseList::Clear() noexcept {
  const ULONGLONG end = GetTickCount64() + kLongestWait;
  while (const auto connection = connections_->Newest()) {
    const ULONGLONG now = GetTickCount64();
    connections_->Remove(connection->number, now < end ? static_cast<DWORD>(end - now) : 0);
  }
}

bool AdviseList::IsWanted(ULONG type) const noexcept { return connections_->IsWanted(type); }

void AdviseList::Notify(const NOTIFICATION* events, size_t count) noexcept {
  Queue(events, count);
  if (!connections_->HasWorker()) Deliver();
}

void AdviseList::Queue(const NOTIFICATION* events, size_t count) noexcept {
  connections_->Queue(events, count);
  if (!connections_->HasWorker()) return;
  (void)sdk::Guarded([this]() -> HRESULT {
    connections_->WakeWorker(connections_);
    return S_OK;
  });
}

void AdviseList::Deliver() noexcept { connections_->Deliver(); }

}  // namespace orv::kit
