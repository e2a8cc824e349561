// Eight threads at once, and objects that change hands.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>

#include "tools/orvctl/check/recipients.h"
#include "tools/orvctl/check/table_rows.h"

namespace orvctl::check {
namespace {

constexpr size_t kThreads = 8;

// What all threads look at, and what the first of them met with.
class Crowd {
 public:
  Crowd(const Stage& stage, const Tour& tour) : stage_(stage), tour_(tour), objects_(tour.Everything()) {}

  void Run(size_t thread) {
    Probe quiet(stage_.probe.request, stage_.probe.link, true);
    try {
      for (size_t turn = thread; !isOver_; ++turn, ++turns_) Turn(quiet, turn);
    } catch (const Verdict& verdict) {
      const std::lock_guard guard(lock_);
      if (!trouble_) trouble_ = verdict;
      isOver_ = true;
    } catch (const std::bad_alloc&) {
      isOver_ = true;
    }
  }
  bool IsOver() const { return isOver_; }
  void End() { isOver_ = true; }
  const std::optional<Verdict>& trouble() const { return trouble_; }
  size_t turns() const { return turns_; }

 private:
  void Turn(Probe& probe, size_t turn) {
    LookAt(probe, objects_[turn % objects_.size()]);
    if (turn % 3 == 0) ReadTable(probe);
    if (turn % 5 == 0 && !tour_.entries.empty())
      PrepareRecipients(probe, stage_.book(),
                        MakeRecipients({tour_.entries[turn % tour_.entries.size()].id}));
    if (turn % 7 == 0) RequireProps(probe, stage_.book(), kRowColumns);
    if (turn % 11 == 0) Open(probe, stage_.book(), Bytes(24, static_cast<BYTE>(turn)));
    if (turn % 13 == 0) AdviseOnce(probe);
  }

  void LookAt(Probe& probe, const Found& found) {
    const Opened opened = RequireOpen(probe, stage_.book(), found.id);
    const Answer all = GetProps(probe, opened.props().Get(), nullptr);
    Require(SUCCEEDED(all.result), "GetProps answered " + Name(all.result));
    const Bytes id = BytesOf(all.view().Binary(PR_ENTRYID));
    Require(id == found.id, "asked for " + ToHex(found.id) + ", GetProps answers for " + ToHex(id));
  }

  void ReadTable(Probe& probe) {
    for (const Found& each : tour_.containers) {
      const ComPtr<IMAPITable> table = ContentsOf(probe, RequireOpen(probe, stage_.book(), each.id).object);
      if (!table) continue;
      SetColumns(probe, table.Get(), kEntryColumns);
      const std::vector<RowKey> rows = KeysOf(QueryRows(probe, table.Get(), 5));
      const auto first = std::find_if(tour_.entries.begin(), tour_.entries.end(),
                                      [&](const Found& entry) { return entry.container == each.id; });
      const bool isSame = rows.empty() || first == tour_.entries.end() || rows[0].id == first->id;
      Require(isSame, "a new table does not begin with the first row");
    }
  }

  void AdviseOnce(Probe& probe) {
    Sink* const sink = new Sink;
    Bytes id = tour_.root;
    ULONG connection = 0;
    const HRESULT result = probe.Call("IAddrBook::Advise", [&] {
      return stage_.book()->Advise(static_cast<ULONG>(id.size()), reinterpret_cast<LPENTRYID>(id.data()),
                                   fnevObjectModified, sink, &connection);
    });
    if (SUCCEEDED(result))
      probe.Succeed("IAddrBook::Unadvise", [&] { return stage_.book()->Unadvise(connection); });
    if (sink->held() == 0) delete sink;
  }

  const Stage& stage_;
  const Tour& tour_;
  const std::vector<Found> objects_;
  std::atomic<bool> isOver_{false};
  std::atomic<size_t> turns_{0};
  orv::sdk::Lock lock_;
  std::optional<Verdict> trouble_;
};

// A sign of life each moment, since the threads give none.
void Watch(Probe& probe, Crowd& crowd) {
  using namespace std::chrono;
  const auto end = steady_clock::now() + seconds(probe.request.threadSeconds);
  for (int moment = 0; steady_clock::now() < end && !crowd.IsOver(); ++moment) {
    probe.Step("eight threads at once, tenth of a second " + std::to_string(moment));
    std::this_thread::sleep_for(milliseconds(100));
  }
  crowd.End();
}

size_t RunCrowd(Probe& probe, const Stage& stage) {
  const Tour tour(stage);
  Crowd crowd(stage, tour);
  std::vector<std::thread> threads;
  for (size_t i = 0; i < kThreads; ++i) threads.emplace_back([&crowd, i] { crowd.Run(i); });
  Watch(probe, crowd);
  probe.Step("waiting for eight threads");
  for (std::thread& each : threads) each.join();
  if (crowd.trouble()) throw Verdict(*crowd.trouble());
  return crowd.turns();
}

Verdict CheckTogether(Probe& probe) {
  size_t turns = 0;
  {
    const Stage stage(probe);
    turns = RunCrowd(probe, stage);
  }
  for (const Misuse kind : {Misuse::kFree, Misuse::kChaining, Misuse::kBounds}) {
    const std::vector<std::string> misuses = Ledger::Get().Misuses(kind);
    Require(misuses.empty(), misuses.empty() ? "" : misuses.front());
  }
  Require(Ledger::Get().Live() == 0, Count(Ledger::Get().Live(), "buffer") + " left after the session");
  return Ok(Count(turns, "turn") + " in " +
            Count(static_cast<size_t>(probe.request.threadSeconds), "second"));
}

// Runs it on a thread of its own, to the end; a finding of it passes on.
template <class Work>
void OnThread(Work work) {
  std::optional<Verdict> trouble;
  std::thread([&] {
    try {
      work();
    } catch (const Verdict& verdict) {
      trouble = verdict;
    }
  }).join();
  if (trouble) throw Verdict(*trouble);
}

Verdict CheckRelease(Probe& probe) {
  const Stage stage(probe);
  const Tour tour(stage);
  std::vector<Opened> objects;
  ComPtr<IMAPITable> table;
  OnThread([&] {
    for (const Found& each : tour.Everything()) objects.push_back(RequireOpen(probe, stage.book(), each.id));
    table = LongestTable(stage, 0).Make();
  });
  const std::vector<Found> expected = tour.Everything();
  for (size_t i = 0; i < objects.size(); ++i) {
    const Answer all = GetProps(probe, objects[i].props().Get(), nullptr);
    Require(SUCCEEDED(all.result), "GetProps on another thread answered " + Name(all.result));
    Require(BytesOf(all.view().Binary(PR_ENTRYID)) == expected[i].id,
            "GetProps on another thread answers for another entry");
  }
  QueryRows(probe, table.Get(), 5);
  probe.Step("Release on another thread");
  OnThread([&] {
    table.Reset();
    objects.clear();
  });
  return Ok(Count(expected.size(), "object"));
}

constexpr NamedCheck kThreadChecks[] = {{"threads.together", CheckTogether},
                                        {"threads.release", CheckRelease}};

}  // namespace

std::span<const NamedCheck> ThreadChecks() { return kThreadChecks; }

}  // namespace orvctl::check
