// Sinks: told of every change, with no lock held, and let go of.
#include <algorithm>
#include <atomic>
#include <thread>

#include "tools/orvctl/check/table_rows.h"
#include "tools/orvctl/check/writing.h"

namespace orvctl::check {
namespace {

constexpr ULONG kEvents =
    fnevObjectCreated | fnevObjectDeleted | fnevObjectModified | fnevObjectMoved | fnevTableModified;
constexpr DWORD kPatience = 3000, kPause = 10;

template <class Condition>
bool Await(Condition holds, DWORD patience = kPatience) {
  for (DWORD waited = 0; !holds(); waited += kPause) {
    if (waited >= patience) return false;
    Sleep(kPause);
  }
  return true;
}

// A sink registered for one identifier; the sink outlives whoever holds it.
class Registration {
 public:
  Registration(const Stage& stage, const Bytes& id) : stage_(stage), sink_(new Sink), id_(id) {}
  ~Registration() {
    try {
      Unadvise();
    } catch (const Verdict&) {
    }
    if (sink_->held() == 0) delete sink_;
  }
  Registration(const Registration&) = delete;
  Registration& operator=(const Registration&) = delete;

  HRESULT Advise() {
    const HRESULT result = stage_.probe.Call("IAddrBook::Advise", [&] {
      return stage_.book()->Advise(static_cast<ULONG>(id_.size()), reinterpret_cast<LPENTRYID>(id_.data()),
                                   kEvents, sink_, &connection_);
    });
    isRegistered_ = SUCCEEDED(result);
    return result;
  }
  void RequireAdvise() {
    const HRESULT result = Advise();
    if (result == MAPI_E_NO_SUPPORT) NotOffered("there are no notifications");
    Require(SUCCEEDED(result), "Advise answered " + Name(result));
  }
  void Unadvise() {
    if (!std::exchange(isRegistered_, false)) return;
    stage_.probe.Succeed("IAddrBook::Unadvise", [&] { return stage_.book()->Unadvise(connection_); });
  }
  Sink& sink() { return *sink_; }
  bool IsReleased() const {
    return Await([&] { return sink_->held() == 0; });
  }

 private:
  const Stage& stage_;
  Sink* const sink_;
  Bytes id_;
  ULONG connection_ = 0;
  bool isRegistered_ = false;
};

Verdict CheckReleased(Probe& probe) {
  const Stage stage(probe);
  const Tour tour(stage);
  size_t offered = 0;
  std::vector<Found> objects = tour.Sample(1);
  objects.insert(objects.end(), tour.containers.begin(), tour.containers.end());
  objects.push_back({tour.root, MAPI_ABCONT, L"the root", {}});
  for (const Found& each : objects) {
    Registration registration(stage, each.id);
    const HRESULT result = registration.Advise();
    if (SUCCEEDED(result)) ++offered;
    registration.Unadvise();
    Require(registration.IsReleased(), "after " +
                                           std::string(SUCCEEDED(result) ? "Unadvise" : "a refused Advise") +
                                           " for '" + ToUtf8(each.name) + "' the sink is still held");
  }
  if (offered == 0) NotOffered("there are no notifications");
  return Ok(Count(offered, "registration") + ", every sink let go of");
}

// Events of the kind, of one of the identifiers where they name any.
size_t CountEvents(Sink& sink, ULONG type, const Bytes& entry) {
  const std::vector<Sink::Event> events = sink.Events();
  return static_cast<size_t>(std::count_if(events.begin(), events.end(), [&](const Sink::Event& each) {
    const bool isTable = each.type == fnevTableModified;
    return isTable || (each.type == type && (each.entry.empty() || each.entry == entry));
  }));
}

std::string TypesSeen(const std::vector<Registration*>& sinks) {
  std::string types;
  for (Registration* each : sinks) {
    for (const Sink::Event& event : each->sink().Events())
      types += (types.empty() ? "" : ", ") + std::to_string(event.type);
  }
  return types.empty() ? "no events came" : "the events that came are of type " + types;
}

void RequireTold(const std::vector<Registration*>& sinks, ULONG type, const Bytes& entry, const char* what,
                 size_t before) {
  const auto total = [&] {
    size_t count = 0;
    for (Registration* each : sinks) count += CountEvents(each->sink(), type, entry);
    return count;
  };
  Require(Await([&] { return total() > before; }), std::string(what) + ", and nobody was told of it (" +
                                                       std::to_string(type) + ") within 3 seconds; " +
                                                       TypesSeen(sinks));
}

void ChangeNumber(Probe& probe, const Stage& stage, const Bytes& id) {
  const ComPtr<IMAPIProp> object = RequireOpen(probe, stage.book(), id, MAPI_MODIFY).props();
  SetText(probe, object.Get(), PR_EMAIL_ADDRESS_W, L"+49 40 5550101");
  const HRESULT saved = Save(probe, object.Get());
  Require(SUCCEEDED(saved), "SaveChanges of an entry that is there answered " + Name(saved));
}

Verdict CheckEvents(Probe& probe) {
  const Stage stage(probe);
  Workshop workshop(stage);
  Registration container(stage, workshop.container());
  container.RequireAdvise();
  const Bytes id = workshop.CreateSaved(Workshop::FreshName("told"));
  RequireTold({&container}, fnevObjectCreated, id,
              "an entry was created in the container that a sink is registered for", 0);
  Registration entry(stage, id);
  const bool hasEntry = SUCCEEDED(entry.Advise());
  const std::vector<Registration*> both =
      hasEntry ? std::vector{&container, &entry} : std::vector{&container};
  const auto seen = [&](ULONG type) {
    return CountEvents(container.sink(), type, id) + CountEvents(entry.sink(), type, id);
  };
  size_t before = seen(fnevObjectModified);
  ChangeNumber(probe, stage, id);
  RequireTold(both, fnevObjectModified, id, "an entry was changed", before);
  before = seen(fnevObjectDeleted);
  const HRESULT deleted = workshop.Delete(id);
  Require(SUCCEEDED(deleted), "DeleteEntries answered " + Name(deleted));
  RequireTold(both, fnevObjectDeleted, id, "an entry was deleted", before);
  return Ok("created, changed, deleted: told of each");
}

// What a sink tries: another thread uses the provider meanwhile. Outlives the check where that thread hangs.
struct Attempt {
  Request request;
  HostLink* link = nullptr;
  IAddrBook* book = nullptr;
  Bytes container, entry;
  std::atomic<bool> isDone{false};
  std::atomic<int> count{0}, stuck{0};
};

// As a client's other threads do: reads an entry, and the first of the rows that it is listed in.
void ReadBook(Probe& probe, const Attempt& attempt) {
  GetProps(probe, RequireOpen(probe, attempt.book, attempt.entry).props().Get(), nullptr);
  const ComPtr<IMAPITable> table =
      ContentsOf(probe, RequireOpen(probe, attempt.book, attempt.container).object);
  if (!table) return;
  SetColumns(probe, table.Get(), kEntryColumns);
  QueryRows(probe, table.Get(), 1);
}

// Whether it can be read is the business of other checks.
void UseProvider(Attempt& attempt) {
  Probe quiet(attempt.request, *attempt.link, true);
  try {
    ReadBook(quiet, attempt);
  } catch (const Verdict&) {
  } catch (const std::bad_alloc&) {
  }
  attempt.isDone = true;
}

void TryFromSink(const std::shared_ptr<Attempt>& attempt) {
  if (attempt->count.fetch_add(1) != 0) return;
  std::thread([attempt] { UseProvider(*attempt); }).detach();
  if (!Await([&] { return attempt->isDone.load(); }, 2000)) ++attempt->stuck;
}

Verdict CheckLocks(Probe& probe) {
  const Stage stage(probe);
  Workshop workshop(stage);
  const Bytes entry = workshop.CreateSaved(Workshop::FreshName("read"));
  Registration container(stage, workshop.container());
  const auto attempt = std::shared_ptr<Attempt>(
      new Attempt{probe.request, &probe.link, stage.book(), workshop.container(), entry});
  container.sink().onNotify = [attempt] { TryFromSink(attempt); };
  container.RequireAdvise();
  workshop.CreateSaved(Workshop::FreshName("locks"));
  const bool isTold = Await([&] { return attempt->isDone.load() || attempt->stuck != 0; });
  if (!isTold) NotOffered("no sink was called");
  Await([&] { return attempt->isDone.load(); });
  Require(attempt->stuck == 0, "reading on another thread does not return while a sink is called");
  return Ok("read from another thread while a sink was called");
}

Verdict CheckAfter(Probe& probe) {
  constexpr DWORD kQuiet = 300;
  const Stage stage(probe);
  Workshop workshop(stage);
  Registration container(stage, workshop.container());
  container.RequireAdvise();
  const Bytes before = workshop.CreateSaved(Workshop::FreshName("before"));
  Await([&] { return !container.sink().Events().empty(); }, kQuiet);
  container.Unadvise();
  const size_t told = container.sink().Events().size();
  const Bytes after = workshop.CreateSaved(Workshop::FreshName("after"));
  Sleep(kQuiet);
  const size_t later = container.sink().Events().size() - told;
  Require(later == 0, Count(later, "event") + " came after Unadvise");
  return Ok("silence");
}

constexpr NamedCheck kNotifyChecks[] = {{"notify.released", CheckReleased},
                                        {"notify.events", CheckEvents},
                                        {"notify.locks", CheckLocks},
                                        {"notify.after", CheckAfter}};

}  // namespace

std::span<const NamedCheck> NotificationChecks() { return kNotifyChecks; }

}  // namespace orvctl::check
