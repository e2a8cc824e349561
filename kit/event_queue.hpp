// The events that wait for one connection, copied and joined.
#pragma once

#include <memory>
#include <vector>

#include "orv/orvbase.hpp"

namespace orv::kit {

bool SameBytes(SBinary one, SBinary other) noexcept;

// Whether the event names the entry: as its object or parent, now or before a move. Events of tables and extended ones
// name none and concern everybody.
bool Concerns(const NOTIFICATION& event, SBinary id) noexcept;

class EventQueue {
 public:
  explicit EventQueue(size_t most) noexcept : most_(most) {}

  // A copy of the event, joined with what waits. Without memory for it the overrun stands for it.
  void Add(const NOTIFICATION& event) noexcept;

  bool IsEmpty() const noexcept { return events_.empty() && !objectsOverran_ && !tableChanged_; }
  // Calls `tell(count, events)` with what was added and then with what stands for more; `id` is the entry that an
  // overrun names.
  template <class Tell>
  void TellAll(SBinary id, const Tell& tell) {
    if (!events_.empty()) tell(static_cast<ULONG>(events_.size()), events_.data());
    NOTIFICATION more[2];
    if (const ULONG count = Overruns(id, more); count != 0) tell(count, more);
  }

 private:
  void Join(NOTIFICATION& event) noexcept;
  void Append(const NOTIFICATION& event);
  void Erase(size_t index) noexcept;
  void Overrun() noexcept;
  void MakeRoom() noexcept;
  bool IsTold(const NOTIFICATION& event) const noexcept;
  template <class Which>
  void EraseAll(const Which& which) noexcept;
  ULONG Overruns(SBinary id, NOTIFICATION* more) const noexcept;

  size_t most_;
  // What a sink is called with, and the memory that each of them points to.
  std::vector<NOTIFICATION> events_;
  std::vector<std::unique_ptr<std::byte[]>> blocks_;
  bool objectsOverran_ = false;
  bool tableChanged_ = false;
};

}  // namespace orv::kit
