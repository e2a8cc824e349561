// The thread and the worker share the queue: whoever comes last takes it down.
#include "orv/kit/worker.hpp"

#include <mutex>

namespace orv::kit {
namespace {

struct CloseKernelHandle {
  void operator()(void* handle) const noexcept { CloseHandle(handle); }
};
using KernelHandle = std::unique_ptr<void, CloseKernelHandle>;

// Counted by the system like a LoadLibrary; null when that fails.
HMODULE ReferenceOwnModule() noexcept {
  static constexpr char kInHere = 0;
  HMODULE module = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<LPCWSTR>(&kInHere), &module);
  return module;
}

}  // namespace

class Worker::Queue {
 public:
  Queue()
      : stop_(CreateEventW(nullptr, /*manual reset=*/TRUE, FALSE, nullptr)),
        wake_(CreateEventW(nullptr, /*manual reset=*/FALSE, FALSE, nullptr)) {}

  // `self` is what the thread shares.
  HRESULT Post(Job& job, const std::shared_ptr<Queue>& self);
  bool Stop();

 private:
  static DWORD WINAPI Run(void* shared);
  HRESULT StartLocked(const std::shared_ptr<Queue>& self);
  void Work();
  bool Next(Job& job);

  const KernelHandle stop_;
  const KernelHandle wake_;
  sdk::Lock lock_;  // guards what follows
  std::vector<Job> jobs_;
  KernelHandle thread_;
  DWORD threadId_ = 0;
  bool stopped_ = false;
  HMODULE module_ = nullptr;  // set before the thread runs, its own from then on
};

HRESULT Worker::Queue::Post(Job& job, const std::shared_ptr<Queue>& self) {
  const std::lock_guard guard(lock_);
  if (stopped_) return MAPI_E_END_OF_SESSION;
  if (stop_ == nullptr || wake_ == nullptr) return MAPI_E_NOT_ENOUGH_RESOURCES;
  jobs_.reserve(jobs_.size() + 1);
  if (const HRESULT hr = StartLocked(self); FAILED(hr)) return hr;
  jobs_.push_back(std::move(job));
  SetEvent(wake_.get());
  return S_OK;
}

HRESULT Worker::Queue::StartLocked(const std::shared_ptr<Queue>& self) {
  if (thread_ != nullptr) return S_OK;
  auto shared = std::make_unique<std::shared_ptr<Queue>>(self);
  module_ = ReferenceOwnModule();
  if (module_ == nullptr) return MAPI_E_NOT_ENOUGH_RESOURCES;
  thread_.reset(CreateThread(nullptr, 0, Run, shared.get(), 0, &threadId_));
  if (thread_ == nullptr) {
    FreeLibrary(module_);  // not the last reference: this code was called through another
    return MAPI_E_NOT_ENOUGH_RESOURCES;
  }
  (void)shared.release();
  return S_OK;
}

bool Worker::Queue::Stop() {
  std::vector<Job> dropped;
  HANDLE thread = nullptr;
  DWORD wait = kLongestWait;
  {
    const std::lock_guard guard(lock_);
    if (std::exchange(stopped_, true)) wait = 0;  // however often: one second in all
    dropped.swap(jobs_);
    if (threadId_ != GetCurrentThreadId()) thread = thread_.get();
    if (stop_ != nullptr) SetEvent(stop_.get());
    if (thread_ == nullptr) return true;
  }
  dropped.clear();
  return thread != nullptr && WaitForSingleObject(thread, wait) == WAIT_OBJECT_0;
}

// Nothing of ours may be on the stack when the library's reference goes: its code may go with it.
DWORD WINAPI Worker::Queue::Run(void* shared) {
  HMODULE module = nullptr;
  {
    const std::unique_ptr<std::shared_ptr<Queue>> self(static_cast<std::shared_ptr<Queue>*>(shared));
    module = (*self)->module_;
    (*self)->Work();
  }
  FreeLibraryAndExitThread(module, 0);
}

void Worker::Queue::Work() {
  const Signal signal(stop_.get());
  const HANDLE either[] = {stop_.get(), wake_.get()};
  while (WaitForMultipleObjects(2, either, FALSE, INFINITE) != WAIT_OBJECT_0) {
    for (Job job; Next(job); job = nullptr) {
      try {
        job(signal);
      } catch (...) {
        // Nobody waits for its result.
      }
    }
  }
}

bool Worker::Queue::Next(Job& job) {
  const std::lock_guard guard(lock_);
  if (jobs_.empty()) return false;
  job = std::move(jobs_.front());
  jobs_.erase(jobs_.begin());
  return true;
}

Worker::Worker() : queue_(std::make_shared<Queue>()) {}

HRESULT Worker::Post(Job job) noexcept {
  return sdk::Guarded([&] { return queue_->Post(job, queue_); });
}

bool Worker::Stop() noexcept { return queue_->Stop(); }

}  // namespace orv::kit
