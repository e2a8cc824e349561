// Who wants to hear of changes, and how they are told: what stands behind IAddrBook::Advise and IMAPITable::Advise of a
// provider.
#pragma once

#include <memory>

#include "orv/kit/worker.hpp"
#include "orv/orvbase.hpp"

namespace orv::kit {

// An event of an object, for AdviseList; points to what it was given. `type` is one of fnevObjectCreated,
// fnevObjectDeleted, fnevObjectModified; `parent` is the container, if there is one.
NOTIFICATION ObjectEvent(ULONG type, ULONG objectType, SBinary id, SBinary parent = {0, nullptr}) noexcept;

// The connections of one provider, container or table.
//
// Events are copied, whole, when they are queued; nothing that they point to is needed later. They reach a sink in the
// order of queueing, several in one call where they wait together, one call at a time for each connection. A sink is
// called while no lock of ours is held, on the thread of the worker that was given, or else on the one that delivers.
// It may do anything there: call the provider, queue events (its own come in a later call), advise, unadvise itself or
// others, let go of its last reference. What it throws is caught.
//
// What a connection hears: events whose bit its mask has and, where it was made for an entry, that name the entry as
// the object, the parent or either of these before a move (identifiers are compared byte by byte). One without an entry
// hears of all.
//
// While events wait they are joined:
// - Of two of one type that name the same objects, or of two table events of one kind for the same row, the later is
//   kept, in its place. Modifications that name different properties then name none.
// - TABLE_CHANGED takes the place of all events of rows.
// - Where more than `mostPending` would wait, or memory is short, events of objects give way to one fnevObjectModified
//   of the entry that the connection was made for (without one: an empty identifier, which stands for everything), and
//   events of rows to one TABLE_CHANGED. These come whatever the mask says, since they stand for what it asked for. Of
//   events of other types the oldest goes.
//
// All methods may be called from any thread. None throws.
class AdviseList {
 public:
  static constexpr size_t kMostPending = 256;  // of a connection
  // How long Unadvise and Clear wait for a call that runs on another thread, in milliseconds.
  static constexpr DWORD kLongestWait = 1000;

  // With a worker nothing is ever delivered on the thread that queues.
  explicit AdviseList(std::shared_ptr<Worker> worker = nullptr, size_t mostPending = kMostPending);
  ~AdviseList() { Clear(); }
  AdviseList(const AdviseList&) = delete;
  AdviseList& operator=(const AdviseList&) = delete;

  // Keeps a reference to the sink. `id` is copied; without bytes: all events. *connection is 1, 2, 3 and so on, never
  // 0; untouched on failure. A null sink, connection or identifier with a size is MAPI_E_INVALID_PARAMETER.
  HRESULT Advise(SBinary id, ULONG mask, IMAPIAdviseSink* sink, ULONG* connection) noexcept;

  // MAPI_E_NOT_FOUND for an unknown number. Afterwards no call to the sink begins any more and the sink is let go of.
  // One that runs on another thread is waited for, so that whoever unadvises may free what his sink uses; but for one
  // second at most, in case that it waits for something that this thread holds. A thread that is within a sink of this
  // list does not wait: neither may a sink wait for its own end, nor two for each other. Its sink is then let go of
  // when the call ends. What waited for the connection is dropped.
  HRESULT Unadvise(ULONG connection) noexcept;
  // All connections; waits for one second in all.
  void Clear() noexcept;

  // Whether somebody would hear of such an event: a provider need not make it otherwise.
  bool IsWanted(ULONG type) const noexcept;

  // Queues and delivers. Call it without a lock of your own, unless there is a worker.
  void Notify(const NOTIFICATION* events, size_t count) noexcept;
  void Notify(const NOTIFICATION& event) noexcept { Notify(&event, 1); }
  // Queues only, for callers that hold locks: they call Deliver when they have let go of them, or never with a worker,
  // which is woken here.
  void Queue(const NOTIFICATION* events, size_t count) noexcept;
  // Tells all sinks what waits for them, on this thread. Sinks that another thread is telling hear the rest from it.
  void Deliver() noexcept;

 private:
  class Connections;
  std::shared_ptr<Connections> connections_;
};

}  // namespace orv::kit
