// The worker: its jobs, its end, and a library that is freed around it.
#include "orv/kit/worker.hpp"

#include <atomic>

#include "tests/kit/kit_values.h"
#include "tests/support/process_probe.h"
#include "tests/support/timed.h"

namespace orv::test {
namespace {

using kit::Worker;

struct Event {
  ~Event() { CloseHandle(handle); }
  bool Wait(DWORD milliseconds = 10000) const {
    return WaitForSingleObject(handle, milliseconds) == WAIT_OBJECT_0;
  }
  void Set() const { SetEvent(handle); }
  HANDLE handle = CreateEventW(nullptr, TRUE, FALSE, nullptr);
};

TEST(KitWorkerTest, RunsJobsInTurnUntilItIsStopped) {
  Worker worker;
  std::vector<int> ran;
  DWORD thread = 0;
  const Event done;
  for (int i = 0; i < 5; ++i) {
    ASSERT_EQ(worker.Post([&, i](const Worker::Signal& signal) {
      ran.push_back(i);
      thread = GetCurrentThreadId();
      EXPECT_FALSE(signal.ShouldStop());
      if (i == 4) done.Set();
      throw i;
    }),
              S_OK);
  }
  ASSERT_TRUE(done.Wait());
  EXPECT_EQ(ran, (std::vector<int>{0, 1, 2, 3, 4}));
  EXPECT_NE(thread, GetCurrentThreadId());
  EXPECT_TRUE(worker.Stop());
  EXPECT_EQ(worker.Post([](const Worker::Signal&) {}), MAPI_E_END_OF_SESSION);
  EXPECT_TRUE(Worker().Stop());  // without a thread
}

TEST(KitWorkerTest, StopDropsWhatWaitsAndTellsWhatRuns) {
  Worker worker;
  const Event begun;
  const auto owned = std::make_shared<int>();
  std::atomic<bool> wasTold{false}, ranAfterStop{false};
  ASSERT_EQ(worker.Post([&](const Worker::Signal& signal) {
    begun.Set();
    wasTold = signal.Wait(10000);
  }),
            S_OK);
  ASSERT_TRUE(begun.Wait());
  ASSERT_EQ(worker.Post([&, owned](const Worker::Signal&) { ranAfterStop = true; }), S_OK);
  EXPECT_TRUE(worker.Stop());
  EXPECT_TRUE(wasTold);
  EXPECT_FALSE(ranAfterStop);
  EXPECT_EQ(owned.use_count(), 1);
}

// As when the last reference to a provider goes in a job.
TEST(KitWorkerTest, ItsOwnThreadMayEndIt) {
  auto worker = std::make_shared<Worker>();
  const Event done;
  Worker& same = *worker;
  ASSERT_EQ(same.Post([&done, kept = std::move(worker)](const Worker::Signal&) mutable {
    EXPECT_FALSE(kept->Stop());
    kept.reset();
    done.Set();
  }),
            S_OK);
  EXPECT_TRUE(done.Wait());
}

// The library of worker_probe.cpp.
class Probe {
 public:
  static constexpr const WCHAR* kFile = L"kit_worker_probe.dll";

  Probe() : library_(LoadLibraryW(kFile)) {
    Find(open_, "OpenWorker");
    Find(post_, "PostWait");
    Find(close_, "CloseWorker");
    worker_ = open_();
  }
  bool Post(const Event& begun, const Event& end, bool listens) {
    return SUCCEEDED(post_(worker_, begun.handle, end.handle, listens)) && begun.Wait();
  }
  // What the end of a session does.
  bool CloseAndFree() {
    const bool ended = close_(worker_) != FALSE;
    FreeLibrary(library_);
    return ended;
  }
  static bool IsLoaded() { return GetModuleHandleW(kFile) != nullptr; }

 private:
  template <class Function>
  void Find(Function& function, const char* name) {
    function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library_, name)));
  }

  HMODULE library_;
  void* (*open_)() = nullptr;
  HRESULT (*post_)(void*, HANDLE, HANDLE, BOOL) = nullptr;
  BOOL (*close_)(void*) = nullptr;
  void* worker_ = nullptr;
};

TEST(KitWorkerTest, AJobThatDoesNotEndHoldsTheLibraryNotTheSession) {
  const Event begun, end;
  Probe probe;
  ASSERT_TRUE(probe.Post(begun, end, /*listens=*/false));
  const ULONGLONG start = GetTickCount64();
  EXPECT_FALSE(probe.CloseAndFree());
  const ULONGLONG took = GetTickCount64() - start;
  EXPECT_GE(took, Worker::kLongestWait - 100);
  if (IsTimed()) {
    EXPECT_LT(took, Worker::kLongestWait + 1000);
  }
  EXPECT_TRUE(Probe::IsLoaded());  // its code still runs
  end.Set();
  for (int i = 0; i < 60'000 && Probe::IsLoaded(); ++i) Sleep(1);
  EXPECT_FALSE(Probe::IsLoaded());
}

TEST(KitWorkerTest, LoadsLeaveNothing) {
  EXPECT_EQ(LeftEveryTime([] {
              for (int i = 0; i < 100; ++i) {
                const Event begun, end;
                Probe probe;
                ASSERT_TRUE(probe.Post(begun, end, /*listens=*/true));
                ASSERT_TRUE(probe.CloseAndFree());
                ASSERT_FALSE(Probe::IsLoaded());
              }
            }),
            "");
}

}  // namespace
}  // namespace orv::test
