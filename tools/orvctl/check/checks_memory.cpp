// Whose buffer is whose: everything that hands something out, once with memory enough and once with each allocation
// failing in turn.
#include <algorithm>
#include <functional>

#include "tools/orvctl/check/recipients.h"

namespace orvctl::check {
namespace {

constexpr size_t kMostAllocations = 2000;

// What one call gave. Written down as text, so that two runs can be compared.
struct Outcome {
  HRESULT result = S_OK;
  bool handsOut = false;
  std::string content = {};
};

struct Operation {
  std::string name;
  std::function<Outcome()> run;
};

Outcome PropsOutcome(Probe& probe, IMAPIProp* object) {
  SPropValue* values = nullptr;
  ULONG count = 0;
  const HRESULT result = probe.Call("IMAPIProp::GetProps",
                                    [&] { return object->GetProps(nullptr, MAPI_UNICODE, &count, &values); });
  if (FAILED(result)) return {result, values != nullptr};
  const Buffer<SPropValue> owner(Ledger::FreeRoot, values);
  return {result, false, Written({values, count})};
}

Outcome ListOutcome(Probe& probe, IMAPIProp* object) {
  SPropTagArray* tags = nullptr;
  const HRESULT result =
      probe.Call("IMAPIProp::GetPropList", [&] { return object->GetPropList(MAPI_UNICODE, &tags); });
  if (FAILED(result)) return {result, tags != nullptr};
  const Buffer<SPropTagArray> owner(Ledger::FreeRoot, tags);
  return {result, false, std::to_string(tags->cValues)};
}

Outcome RowsOutcome(Probe& probe, IMAPITable* table) {
  SRowSet* rows = nullptr;
  const HRESULT result =
      probe.Call("IMAPITable::QueryRows", [&] { return table->QueryRows(5, TBL_NOADVANCE, &rows); });
  if (FAILED(result)) return {result, rows != nullptr};
  const RowSet owner(Ledger::FreeRoot, rows);
  std::string content;
  for (ULONG i = 0; i < rows->cRows; ++i) content += Written(ValueView(rows->aRow[i]));
  return {result, false, content};
}

Outcome OpenOutcome(Probe& probe, IAddrBook* book, Bytes id) {
  ULONG type = 0;
  IUnknown* object = nullptr;
  const HRESULT result = probe.Call("IAddrBook::OpenEntry", [&] {
    return book->OpenEntry(static_cast<ULONG>(id.size()), reinterpret_cast<LPENTRYID>(id.data()), nullptr, 0,
                           &type, &object);
  });
  if (FAILED(result)) return {result, object != nullptr};
  const auto owner = ComPtr<IUnknown>::Adopt(object);
  return {result, false, std::to_string(type)};
}

// The list is made before the allocation is counted that fails.
Outcome PrepareOutcome(Probe& probe, IAddrBook* book, const orv::sdk::AddressList& list) {
  TagList tags(kRecipientTags);
  const HRESULT result =
      probe.Call("IAddrBook::PrepareRecips", [&] { return book->PrepareRecips(0, tags.Get(), list.Get()); });
  std::string content;
  for (ULONG i = 0; i < list->cEntries; ++i) content += Written(ValueView(list->aEntries[i]));
  return {result, false, SUCCEEDED(result) ? content : std::string()};
}

// A failure hands out nothing, a success all that there is.
void RequireWholeOrNothing(const Outcome& outcome, const Outcome& whole, const std::string& when) {
  Require(!outcome.handsOut, when + "fails and hands something out");
  Require(FAILED(outcome.result) || outcome.content == whole.content,
          when + "succeeds with less than there is");
}

// One run with the n-th allocation failing, twice: what the first one leaves may be a provider's own store.
bool RunFailing(const Operation& operation, size_t n, const Outcome& whole) {
  Ledger& ledger = Ledger::Get();
  const std::string when = operation.name + " with allocation " + std::to_string(n) + " failing ";
  size_t before = 0;
  bool hasFailed = false;
  for (int i = 0; i < 2; ++i) {
    before = ledger.Live();
    ledger.FailNth(n);
    const Outcome outcome = operation.run();
    hasFailed = ledger.HasFailed();
    ledger.FailNth(0);
    RequireWholeOrNothing(outcome, whole, when);
  }
  const size_t after = ledger.Live();
  Require(after <= before, when + "leaves " + Count(after - std::min(before, after), "buffer") + " unfreed");
  return hasFailed;
}

// Returns how many allocations failed in turn.
size_t FailEach(Probe& probe, const Operation& operation) {
  probe.Step(operation.name + ", undisturbed");
  const Outcome whole = operation.run();
  if (FAILED(whole.result)) return 0;
  for (size_t n = 1; n < kMostAllocations; ++n) {
    if (!RunFailing(operation, n, whole)) return n - 1;
  }
  return kMostAllocations;
}

size_t FailEverything(Probe& probe, const Stage& stage) {
  const Tour tour(stage);
  const LongestTable longest(stage, 0);
  const ComPtr<IMAPITable> table = longest.Make();
  size_t failed = FailEach(probe, {"QueryRows", [&] { return RowsOutcome(probe, table.Get()); }});
  std::vector<Found> objects = tour.Sample(4);
  objects.push_back({tour.root, MAPI_ABCONT, L"the root", {}});
  for (const Found& each : objects) {
    failed += FailEach(probe, {"OpenEntry", [&] { return OpenOutcome(probe, stage.book(), each.id); }});
    const ComPtr<IMAPIProp> object = RequireOpen(probe, stage.book(), each.id).props();
    failed += FailEach(probe, {"GetProps", [&] { return PropsOutcome(probe, object.Get()); }});
    failed += FailEach(probe, {"GetPropList", [&] { return ListOutcome(probe, object.Get()); }});
  }
  return failed;
}

// A list of its own for every attempt, whose own allocations do not count.
size_t FailPrepare(Probe& probe, const Stage& stage) {
  const Tour tour(stage);
  if (tour.entries.empty()) return 0;
  const std::vector<Bytes> ids = {tour.AnyEntry().id};
  const Outcome whole = PrepareOutcome(probe, stage.book(), MakeRecipients(ids));
  if (FAILED(whole.result)) return 0;
  for (size_t n = 1; n < kMostAllocations; ++n) {
    const orv::sdk::AddressList list = MakeRecipients(ids);
    const size_t before = Ledger::Get().Live();
    Ledger::Get().FailNth(n);
    const Outcome outcome = PrepareOutcome(probe, stage.book(), list);
    const bool hasFailed = Ledger::Get().HasFailed();
    Ledger::Get().FailNth(0);
    const std::string when = "PrepareRecips with allocation " + std::to_string(n) + " failing ";
    RequireWholeOrNothing(outcome, whole, when);
    Require(SUCCEEDED(outcome.result) || Ledger::Get().Live() <= before, when + "leaves buffers unfreed");
    Require(list->cEntries == 1 && Ledger::Get().IsRoot(list->aEntries[0].rgPropVals),
            when + "leaves a recipient without values");
    if (!hasFailed) return n - 1;
  }
  return kMostAllocations;
}

Verdict CheckFailing(Probe& probe) {
  const Stage stage(probe);
  const size_t failed = FailEverything(probe, stage) + FailPrepare(probe, stage);
  if (failed == 0) NotOffered("nothing is allocated");
  return Ok(Count(failed, "allocation") + " failed in turn");
}

// Everything that hands out buffers, of every object.
void Exercise(Probe& probe, const Stage& stage) {
  const Tour tour(stage);
  const LongestTable longest(stage, 0);
  const ComPtr<IMAPITable> table = longest.Make();
  for (const LONG rows : {1L, 20L}) QueryRows(probe, table.Get(), rows);
  for (const Found& each : tour.Everything()) {
    const Opened opened = RequireOpen(probe, stage.book(), each.id);
    PropsOutcome(probe, opened.props().Get());
    ListOutcome(probe, opened.props().Get());
    if (each.type != MAPI_MAILUSER) ContentsOf(probe, opened.object);
  }
  if (tour.entries.empty()) return;
  for (const std::vector<Bytes>& ids :
       {std::vector<Bytes>{tour.AnyEntry().id}, {tour.AnyEntry().id, tour.root}})
    PrepareRecipients(probe, stage.book(), MakeRecipients(ids));
}

Verdict CheckLeaks(Probe& probe) {
  {
    const Stage stage(probe);
    Exercise(probe, stage);
  }
  const size_t left = Ledger::Get().Live();
  Require(left == 0, "after the session " + Count(left, "buffer") + (left == 1 ? " is" : " are") + " left");
  return Ok("nothing left");
}

// What the ledger noted counts before what it made the provider's calls come to.
template <Misuse kKind>
Verdict CheckMisuse(Probe& probe) {
  std::optional<Verdict> trouble;
  try {
    const Stage stage(probe);
    Exercise(probe, stage);
    FailEverything(probe, stage);
    FailPrepare(probe, stage);
  } catch (const Verdict& verdict) {
    trouble = verdict;
  }
  probe.Step("looking at the buffers");
  std::string seen;
  for (const std::string& each : Ledger::Get().Misuses(kKind))
    seen.append(seen.empty() ? "" : "; ").append(each);
  Require(seen.empty(), seen);
  // With allocations failing there are other findings, which another check tells.
  return Ok(trouble ? "nothing, up to where it broke off: " + trouble->seen : "nothing");
}

void RequireOwnPointers(const void* root, const SPropValue* values, ULONG count, const std::string& what) {
  const std::string wrong = FindForeignPointer(root, values, count);
  Require(wrong.empty(), what + ": " + wrong);
}

void RequireOwnRows(Probe& probe, IMAPITable* table) {
  const RowSet rows = QueryRows(probe, table, 20);
  Require(Ledger::Get().IsRoot(rows.Get()), "QueryRows: the row set is no root of the allocator");
  for (ULONG i = 0; i < rows->cRows; ++i)
    RequireOwnPointers(rows->aRow[i].lpProps, rows->aRow[i].lpProps, rows->aRow[i].cValues,
                       "QueryRows, row " + std::to_string(i));
}

Verdict CheckPointers(Probe& probe) {
  const Stage stage(probe);
  const Answer own = RequireProps(probe, stage.book(), kRowColumns);
  RequireOwnPointers(own.values.Get(), own.values.Get(), own.count, "GetProps of the provider object");
  const Tour tour(stage);
  for (const Found& each : tour.Everything()) {
    const std::string who = "'" + ToUtf8(each.name) + "'";
    const ComPtr<IMAPIProp> object = RequireOpen(probe, stage.book(), each.id).props();
    const Answer all = GetProps(probe, object.Get(), nullptr);
    RequireOwnPointers(all.values.Get(), all.values.Get(), all.count, "GetProps of " + who);
    Buffer<SPropTagArray> tags(Ledger::FreeRoot);
    const HRESULT listed =
        probe.Call("IMAPIProp::GetPropList", [&] { return object->GetPropList(MAPI_UNICODE, tags.Put()); });
    if (FAILED(listed)) static_cast<void>(tags.Detach());
    Require(!tags || Ledger::Get().IsRoot(tags.Get()),
            "GetPropList of " + who + ": the tags are no root of the allocator");
  }
  RequireOwnRows(probe, LongestTable(stage, 0).Make().Get());
  if (!tour.entries.empty()) {
    const orv::sdk::AddressList list = MakeRecipients({tour.AnyEntry().id});
    PrepareRecipients(probe, stage.book(), list);
    const ADRENTRY& entry = list->aEntries[0];
    RequireOwnPointers(entry.rgPropVals, entry.rgPropVals, entry.cValues, "PrepareRecips");
  }
  return Ok("every pointer");
}

constexpr NamedCheck kMemoryChecks[] = {{"memory.failing", CheckFailing},
                                        {"memory.leaks", CheckLeaks},
                                        {"memory.free", CheckMisuse<Misuse::kFree>},
                                        {"memory.chaining", CheckMisuse<Misuse::kChaining>},
                                        {"memory.pointers", CheckPointers},
                                        {"memory.bounds", CheckMisuse<Misuse::kBounds>}};

}  // namespace

std::span<const NamedCheck> MemoryChecks() { return kMemoryChecks; }

}  // namespace orvctl::check
