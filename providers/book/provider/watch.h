// Looks for changes of other processes while somebody wants to hear of them.
#pragma once

#include <atomic>
#include <functional>
#include <memory>

#include "orv/kit/worker.hpp"

namespace book {

// `look` is called about twice a second on a thread of the watch's own, from Wake on, for as long as it answers that
// somebody listens.
class Watch {
 public:
  explicit Watch(std::function<bool()> look) : state_(std::make_shared<State>(std::move(look))) {}
  ~Watch() { worker_.Stop(); }
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;

  void Wake() noexcept;

 private:
  struct State {
    explicit State(std::function<bool()> call) : look(std::move(call)) {}
    const std::function<bool()> look;
    std::atomic<bool> isAwake{false};
  };

  static void Run(State& state, const orv::kit::Worker::Signal& signal);

  const std::shared_ptr<State> state_;
  orv::kit::Worker worker_;
};

}  // namespace book
