// Telling what changes in the address book while it changes.
#include <deque>
#include <mutex>

#include "tools/orvctl/commands.h"
#include "tools/orvctl/editable_book.h"
#include "tools/orvctl/errors.h"
#include "tools/orvctl/progress.h"
#include "tools/orvctl/row_printer.h"
#include "tools/orvctl/table.h"

namespace orvctl {
namespace {

struct Event {
  ULONG type = 0;
  Bytes entryId;
};

// Events come on any thread and are told on one.
class Sink final : public orv::sdk::Object<IMAPIAdviseSink> {
 public:
  Sink() : arrived_(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {}
  ~Sink() override { CloseHandle(arrived_); }

  ULONG STDMETHODCALLTYPE OnNotify(ULONG count, LPNOTIFICATION notifications) override {
    orv::sdk::Guarded([&] {
      const std::lock_guard guard(lock_);
      for (ULONG i = 0; i < count; ++i) Take(notifications[i]);
      return S_OK;
    });
    SetEvent(arrived_);
    return 0;
  }

  // What has come; waits a little for it.
  std::deque<Event> Next() {
    constexpr DWORD kLookEvery = 200;  // milliseconds; somebody may want to end
    WaitForSingleObject(arrived_, kLookEvery);
    const std::lock_guard guard(lock_);
    return std::exchange(events_, {});
  }

 private:
  void Take(const NOTIFICATION& told) {
    constexpr ULONG kOfObjects =
        fnevObjectCreated | fnevObjectModified | fnevObjectDeleted | fnevObjectMoved | fnevObjectCopied;
    Event event{told.ulEventType, {}};
    const auto* const bytes = reinterpret_cast<const BYTE*>(told.info.obj.lpEntryID);
    const bool isOfObject = (told.ulEventType & kOfObjects) != 0 && bytes != nullptr;
    if (isOfObject) event.entryId.assign(bytes, bytes + told.info.obj.cbEntryID);
    events_.push_back(std::move(event));
  }

  const HANDLE arrived_;
  orv::sdk::Lock lock_;
  std::deque<Event> events_;
};

struct EventName {
  ULONG type;
  const char* name;
};
constexpr EventName kEvents[] = {{fnevObjectCreated, "created"}, {fnevObjectModified, "changed"},
                                 {fnevObjectDeleted, "removed"}, {fnevObjectMoved, "moved"},
                                 {fnevObjectCopied, "copied"},   {fnevCriticalError, "failed"}};

std::string NameOfEvent(ULONG type) {
  for (const EventName& each : kEvents) {
    if (each.type == type) return each.name;
  }
  return std::to_string(type);
}

ULONG AllEvents() {
  ULONG all = 0;
  for (const EventName& each : kEvents) all |= each.type;
  return all;
}

// Registrations that end with it.
class Advised {
 public:
  Advised(const Book& book, const std::vector<Container>& containers, Sink* sink) : book_(book) {
    for (const Container& each : containers) Add(each, sink);
  }
  ~Advised() {
    for (const ULONG connection : connections_) book_.addressBook()->Unadvise(connection);
  }
  Advised(const Advised&) = delete;
  Advised& operator=(const Advised&) = delete;

  size_t count() const { return connections_.size(); }

 private:
  // A book that tells of nothing is passed over.
  void Add(const Container& container, Sink* sink) {
    Bytes id = container.entryId;
    ULONG connection = 0;
    const HRESULT result = book_.addressBook()->Advise(
        static_cast<ULONG>(id.size()), reinterpret_cast<ENTRYID*>(id.data()), AllEvents(), sink, &connection);
    if (SUCCEEDED(result)) connections_.push_back(connection);
  }

  const Book& book_;
  std::vector<ULONG> connections_;
};

// Of an entry that is gone nobody knows it any more.
std::string NameOfEntry(const Library& library, const Book& book, const Bytes& entryId) {
  try {
    TagArray tags{PR_DISPLAY_NAME_W};
    const ComPtr<IMAPIProp> object = book.Open(entryId, "the entry");
    return TextOf(Properties(library, object.Get(), tags.Get(), "read its name").view(), PR_DISPLAY_NAME_W);
  } catch (const CommandError&) {
    return {};
  }
}

}  // namespace

Report WatchBook(const Library& library, const Options& options) {
  const Book book(library, options.profile);
  const auto sink = ComPtr<Sink>::Adopt(new Sink);
  const Advised advised(book, ContainersNamed(book, options.container), sink.Get());
  if (advised.count() == 0)
    throw CommandError(kFailed, "no container of the profile tells what changes in it", MAPI_E_NO_SUPPORT);
  const Interruption interruption;
  RowPrinter printer(options, {{"event", "Event"}, {"name", "Name"}, {"id", "Identifier"}},
                     RowPrinter::Pace::kAtOnce);
  const size_t most = options.limit.value_or(SIZE_MAX);
  while (printer.count() < most && !Interruption::IsWanted()) {
    for (const Event& event : sink->Next()) {
      if (printer.count() < most)
        printer.Print(
            {NameOfEvent(event.type), NameOfEntry(library, book, event.entryId), ToHex(event.entryId)});
    }
  }
  printer.Finish("");
  Report report;
  report.isSilent = true;
  return report;
}

}  // namespace orvctl
