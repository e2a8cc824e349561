#include "providers/book/provider/watch.h"

namespace book {
namespace {

constexpr DWORD kPause = 400;  // milliseconds

}  // namespace

void Watch::Wake() noexcept {
  if (state_->isAwake.exchange(true)) return;
  const std::shared_ptr<State> state = state_;
  const HRESULT hr = worker_.Post([state](const orv::kit::Worker::Signal& signal) { Run(*state, signal); });
  if (FAILED(hr)) state_->isAwake = false;
}

// Whoever wakes it just when it ends finds it asleep, or is seen by its last look.
void Watch::Run(State& state, const orv::kit::Worker::Signal& signal) {
  while (!signal.Wait(kPause)) {
    if (state.look()) continue;
    state.isAwake = false;
    if (!state.look() || state.isAwake.exchange(true)) return;
  }
}

}  // namespace book
