// Who hears of what, when, and on which thread.
#include "orv/kit/advise.hpp"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <thread>

#include "platform/faults.h"
#include "tests/kit/kit_values.h"
#include "tests/kit/recording_sink.h"
#include "tests/support/timed.h"

namespace orv::test {
namespace {

using kit::AdviseList;
using kit::ObjectEvent;
using Told = std::vector<std::wstring>;

constexpr ULONG kAll = fnevObjectCreated | fnevObjectDeleted | fnevObjectModified | fnevTableModified;

// What is named lives as long as the program.
SBinary Id(std::wstring_view name) {
  return {static_cast<ULONG>(name.size() * sizeof(WCHAR)),
          reinterpret_cast<LPBYTE>(const_cast<WCHAR*>(name.data()))};
}
NOTIFICATION Of(ULONG type, const wchar_t* object, const wchar_t* parent = L"") {
  return ObjectEvent(type, MAPI_MAILUSER, Id(object), Id(parent));
}
NOTIFICATION OfRow(ULONG kind, std::wstring_view key) {
  NOTIFICATION event{};
  event.ulEventType = fnevTableModified;
  event.info.tab.ulTableEvent = kind;
  event.info.tab.propIndex = Value(PR_INSTANCE_KEY);
  event.info.tab.propIndex.Value.bin = Id(key);
  event.info.tab.propPrior = Value(PR_NULL);
  return event;
}

// A sink at a list, for the whole list unless an entry is named.
struct Listener {
  explicit Listener(AdviseList& list, ULONG mask = kAll, const std::wstring& id = {},
                    RecordingSink::Act act = {})
      : sink(RecordingSink::Make(std::move(act))) {
    EXPECT_EQ(list.Advise(Id(id), mask, sink.Get(), &connection), S_OK);
  }
  sdk::ComPtr<RecordingSink> sink;
  ULONG connection = 0;
};

TEST(KitAdviseTest, ConnectionsHearWhatTheyAskedFor) {
  AdviseList list;
  const struct {
    ULONG mask;
    const wchar_t* id;
    Told told;
  } cases[] = {{kAll, L"", {L"created x", L"modified box", L"deleted y", L"modified x"}},
               {fnevObjectCreated, L"", {L"created x"}},
               {kAll, L"x", {L"created x", L"modified x"}},
               {kAll, L"box", {L"created x", L"modified box"}},
               {kAll, L"other", {L"modified x"}},  // where x was before
               {kAll, L"bo", {}},
               {0, L"", {}}};
  std::vector<Listener> listeners;
  for (const auto& each : cases) listeners.emplace_back(list, each.mask, each.id);
  NOTIFICATION moved = Of(fnevObjectModified, L"x");
  moved.info.obj.lpOldParentID = reinterpret_cast<LPENTRYID>(Id(L"other").lpb);
  moved.info.obj.cbOldParentID = Id(L"other").cb;
  list.Notify(Of(fnevObjectCreated, L"x", L"box"));
  list.Notify(Of(fnevObjectModified, L"box"));
  list.Notify(Of(fnevObjectDeleted, L"y"));
  list.Notify(moved);
  for (size_t i = 0; i < listeners.size(); ++i) EXPECT_EQ(listeners[i].sink->Take(), cases[i].told) << i;
  EXPECT_TRUE(list.IsWanted(fnevTableModified));
  ULONG number = 77;
  EXPECT_EQ(list.Advise({0, nullptr}, kAll, nullptr, &number), MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(list.Advise({4, nullptr}, kAll, listeners[0].sink.Get(), &number), MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(list.Advise({0, nullptr}, kAll, listeners[0].sink.Get(), nullptr), MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(number, 77u);
  list.Clear();
  EXPECT_FALSE(list.IsWanted(kAll));
  for (const auto& each : listeners) EXPECT_EQ(each.sink->Others(), 0u);
  EXPECT_EQ(list.Unadvise(1), MAPI_E_NOT_FOUND);
}

TEST(KitAdviseTest, EventsThatWaitAreJoined) {
  const struct {
    std::vector<NOTIFICATION> events;
    Told told;
  } cases[] = {
      {{Of(fnevObjectModified, L"a"), Of(fnevObjectModified, L"b"), Of(fnevObjectModified, L"a")},
       {L"modified b", L"modified a"}},
      {{Of(fnevObjectCreated, L"a"), Of(fnevObjectDeleted, L"a"), Of(fnevObjectCreated, L"a")},
       {L"deleted a", L"created a"}},
      {{Of(fnevObjectModified, L"a", L"p"), Of(fnevObjectModified, L"a", L"q")},
       {L"modified a", L"modified a"}},
      {{OfRow(TABLE_ROW_MODIFIED, L"a"), OfRow(TABLE_ROW_ADDED, L"a"), OfRow(TABLE_ROW_MODIFIED, L"a")},
       {L"added a", L"modified a"}},
      {{OfRow(TABLE_ROW_ADDED, L"a"), OfRow(TABLE_CHANGED, L""), OfRow(TABLE_ROW_ADDED, L"b")}, {L"changed"}},
      // Four wait at most: more of them become one of all.
      {{OfRow(TABLE_ROW_ADDED, L"a"), OfRow(TABLE_ROW_ADDED, L"b"), OfRow(TABLE_ROW_ADDED, L"c"),
        OfRow(TABLE_ROW_ADDED, L"d"), OfRow(TABLE_ROW_ADDED, L"e"), Of(fnevObjectCreated, L"x")},
       {L"created x", L"changed"}},
      {{Of(fnevObjectCreated, L"a"), Of(fnevObjectCreated, L"b"), OfRow(TABLE_ROW_ADDED, L"a"),
        Of(fnevObjectCreated, L"c"), Of(fnevObjectCreated, L"d")},
       {L"modified ", L"changed"}}};
  for (const auto& each : cases) {
    AdviseList list(nullptr, 4);
    const Listener listener(list);
    list.Queue(each.events.data(), each.events.size());
    EXPECT_EQ(listener.sink->Calls(), 0u);
    list.Deliver();
    EXPECT_EQ(listener.sink->Take(), each.told);
    list.Deliver();
    EXPECT_EQ(listener.sink->Take(), Told{});
  }
  // Of an entry the overrun names the entry.
  AdviseList list(nullptr, 1);
  const Listener listener(list, fnevObjectCreated, L"box");
  const NOTIFICATION events[] = {Of(fnevObjectCreated, L"a", L"box"), Of(fnevObjectCreated, L"b", L"box")};
  list.Notify(events, 2);
  EXPECT_EQ(listener.sink->Take(), Told{L"modified box"});
}

// What an event points to may go when it is queued; a sink may write into what it is given.
class ScribblingSink final : public sdk::Object<IMAPIAdviseSink> {
 public:
  ULONG STDMETHODCALLTYPE OnNotify(ULONG count, LPNOTIFICATION events) override {
    for (ULONG i = 0; i < count; ++i) {
      const TABLE_NOTIFICATION& table = events[i].info.tab;
      names.push_back(table.row.lpProps[1].Value.lpszW);
      table.row.lpProps[1].Value.lpszW[0] = L'#';
      std::memset(table.propIndex.Value.bin.lpb, 0, table.propIndex.Value.bin.cb);
    }
    return 0;
  }
  Told names;
};

TEST(KitAdviseTest, EachSinkHasACopyOfItsOwn) {
  AdviseList list;
  sdk::ComPtr<ScribblingSink> sinks[] = {sdk::ComPtr<ScribblingSink>::Adopt(new ScribblingSink),
                                         sdk::ComPtr<ScribblingSink>::Adopt(new ScribblingSink)};
  ULONG connection = 0;
  for (const auto& sink : sinks) ASSERT_EQ(list.Advise({0, nullptr}, kAll, sink.Get(), &connection), S_OK);
  std::wstring name = L"name", key = L"key";
  SPropValue row[] = {Long(PR_OBJECT_TYPE, 6), Unicode(PR_DISPLAY_NAME_W, name.c_str()),
                      Value(PROP_TAG(0x7FF, 1))};
  NOTIFICATION event = OfRow(TABLE_ROW_ADDED, key);
  event.info.tab.row = {0, 3, row};
  list.Queue(&event, 1);
  name = L"????";
  list.Deliver();
  for (const auto& sink : sinks) EXPECT_EQ(sink->names, Told{L"name"});
  EXPECT_EQ(name, L"????");
  EXPECT_EQ(key, L"key");
}

// Everything that a sink may do from within, one after the other.
TEST(KitAdviseTest, SinksMayCallBack) {
  AdviseList list;
  std::unique_ptr<Listener> self, other, added;
  int step = 0;
  self = std::make_unique<Listener>(list, kAll, L"", [&] {
    switch (step++) {
      case 0:
        list.Notify(Of(fnevObjectCreated, L"from within"));
        EXPECT_EQ(self->sink->Calls(), 1u);  // not yet: one call at a time
        added = std::make_unique<Listener>(list);
        break;
      case 1:
        EXPECT_EQ(list.Unadvise(other->connection), S_OK);
        other.reset();
        EXPECT_EQ(list.Unadvise(self->connection), S_OK);
        EXPECT_EQ(list.Unadvise(self->connection), MAPI_E_NOT_FOUND);
        self->sink.Reset();  // the last but the list's, which goes when this call ends
        throw 1;
      default:
        ADD_FAILURE() << "called after Unadvise";
    }
  });
  other = std::make_unique<Listener>(list);
  const auto heardByOther = other->sink;
  list.Notify(Of(fnevObjectCreated, L"a"));
  list.Notify(Of(fnevObjectCreated, L"b"));
  EXPECT_EQ(step, 2);
  EXPECT_EQ(heardByOther->Others(), 0u);
  EXPECT_EQ(added->sink->Take().back(), L"created b");  // what it threw kept nobody from theirs
}

TEST(KitAdviseTest, UnadviseWaitsForACallOfAnotherThreadButNotForEver) {
  AdviseList list;
  std::atomic<bool> isInside{false}, mayLeave{false};
  const auto stay = [&] {
    isInside = true;
    while (!mayLeave) Sleep(1);
  };
  {
    const Listener listener(list, kAll, L"", stay);
    std::thread caller([&] { list.Notify(Of(fnevObjectCreated, L"a")); });
    while (!isInside) Sleep(1);
    std::thread release([&] {
      Sleep(30);
      mayLeave = true;
    });
    EXPECT_EQ(list.Unadvise(listener.connection), S_OK);
    EXPECT_TRUE(mayLeave);                   // it has returned,
    EXPECT_EQ(listener.sink->Others(), 0u);  // and the sink is free
    caller.join();
    release.join();
  }
  isInside = mayLeave = false;
  const Listener stuck(list, kAll, L"", stay);
  std::thread caller([&] { list.Notify(Of(fnevObjectCreated, L"a")); });
  while (!isInside) Sleep(1);
  const ULONGLONG start = GetTickCount64();
  EXPECT_EQ(list.Unadvise(stuck.connection), S_OK);
  if (IsTimed()) {
    EXPECT_LT(GetTickCount64() - start, 3 * AdviseList::kLongestWait);
  }
  EXPECT_EQ(stuck.sink->Others(), 1u);  // kept until its call ends
  mayLeave = true;
  caller.join();
  EXPECT_EQ(stuck.sink->Others(), 0u);
}

TEST(KitAdviseTest, WithAWorkerNobodyIsCalledOnTheThreadThatNotifies) {
  const auto worker = std::make_shared<kit::Worker>();
  AdviseList list(worker);
  const Listener listener(list);
  sdk::Lock held;  // a lock that the sink needs
  const Listener locking(list, kAll, L"", [&] { const std::lock_guard guard(held); });
  {
    const std::lock_guard guard(held);
    for (int i = 0; i < 100; ++i) list.Notify(Of(fnevObjectModified, L"a"));
  }
  for (int i = 0; i < 60'000 && locking.sink->Calls() == 0; ++i) Sleep(1);
  EXPECT_GT(listener.sink->Calls(), 0u);
  EXPECT_LE(locking.sink->Calls(), 3u);  // joined while it waited
  EXPECT_NE(listener.sink->Thread(), GetCurrentThreadId());
  EXPECT_TRUE(worker->Stop());
  listener.sink->Take();
  list.Notify(Of(fnevObjectModified, L"b"));
  EXPECT_EQ(listener.sink->Take(), Told{});
}

// Whatever allocation of queueing fails: a listener hears of the change, or of everything.
TEST(KitAdviseTest, WithoutMemoryAnOverrunIsTold) {
  for (size_t nth = 1; nth < 8; ++nth) {
    AdviseList list;
    const Listener listener(list, kAll, L"box");
    const NOTIFICATION event = Of(fnevObjectCreated, L"a", L"box");
    faults::Arm(faults::Site::kOperatorNew, nth);
    list.Queue(&event, 1);
    faults::Arm(faults::Site::kOperatorNew, 0);
    list.Deliver();
    const Told told = listener.sink->Take();
    EXPECT_TRUE(told == Told{L"created a"} || told == Told{L"modified box"}) << nth;
  }
}

TEST(KitAdviseTest, ManyThreadsShareAList) {
  AdviseList list;
  std::atomic<bool> stop{false};
  std::atomic<int> late{0}, wrong{0};
  const auto use = [&](int) {
    while (!stop) {
      std::atomic<bool> isOver{false};
      Listener listener(list, kAll, L"", [&] { late += isOver; });
      list.Notify(Of(fnevObjectModified, L"a"));
      const NOTIFICATION event = OfRow(TABLE_ROW_ADDED, L"b");
      list.Queue(&event, 1);
      list.Deliver();
      wrong += list.Unadvise(listener.connection) != S_OK;
      isOver = true;
      wrong += listener.sink->Others() != 0;
    }
  };
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) threads.emplace_back(use, i);
  Sleep(300);
  stop = true;
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(late, 0);   // no call after Unadvise,
  EXPECT_EQ(wrong, 0);  // and no sink kept
}

}  // namespace
}  // namespace orv::test
