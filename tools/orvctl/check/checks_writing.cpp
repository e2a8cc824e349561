// Creating, changing and deleting, on what --config named and with --writable only.
#include <algorithm>

#include "tools/orvctl/check/writing.h"

namespace orvctl::check {
namespace {

Verdict CheckCreate(Probe& probe) {
  const Stage stage(probe);
  Workshop workshop(stage);
  const WideString name = Workshop::FreshName("created");
  const Bytes id = workshop.CreateSaved(name);
  workshop.RequireStored(id, name);
  Require(workshop.Find(name) == id, "its table does not list the new entry under its identifier");
  return Ok("created, listed, opened, deleted again");
}

Verdict CheckAbandoned(Probe& probe) {
  const Stage stage(probe);
  Workshop workshop(stage);
  const WideString name = Workshop::FreshName("abandoned");
  const ULONG before = workshop.Rows();
  workshop.Create(name);  // and let go of
  Require(workshop.Rows() == before, "an entry that was never saved is one more row");
  Require(workshop.Find(name).empty(), "an entry that was never saved is listed");
  return Ok("nothing left of it");
}

Verdict CheckConflict(Probe& probe) {
  const Stage stage(probe);
  Workshop workshop(stage);
  const Bytes id = workshop.CreateSaved(Workshop::FreshName("conflict"));
  const ComPtr<IMAPIProp> one = RequireOpen(probe, stage.book(), id, MAPI_MODIFY).props(),
                          other = RequireOpen(probe, stage.book(), id, MAPI_MODIFY).props();
  const WideString first = Workshop::FreshName("first"), second = Workshop::FreshName("second");
  SetText(probe, one.Get(), PR_DISPLAY_NAME_W, first);
  SetText(probe, other.Get(), PR_DISPLAY_NAME_W, second);
  const HRESULT saved = Save(probe, one.Get()), later = Save(probe, other.Get());
  Require(SUCCEEDED(saved), "the first SaveChanges answered " + Name(saved));
  const WideString stored =
      TextOf(probe, RequireOpen(probe, stage.book(), id).props().Get(), PR_DISPLAY_NAME_W);
  const std::string seen = "the second SaveChanges answered " + Name(later);
  Require(stored == (SUCCEEDED(later) ? second : first), seen + ", and stored is '" + ToUtf8(stored) + "'");
  Require(later == MAPI_E_OBJECT_CHANGED,
          seen + (SUCCEEDED(later) ? ", and so the first change is lost" : ", not MAPI_E_OBJECT_CHANGED"));
  return Ok("the second one is told " + Name(later));
}

// A change that is taken, though nothing can be changed.
void RequireUnchangeable(Probe& probe, const Stage& stage, const Found& entry) {
  const ComPtr<IMAPIProp> object = RequireOpen(probe, stage.book(), entry.id, MAPI_BEST_ACCESS).props();
  const WideString before = TextOf(probe, object.Get(), PR_DISPLAY_NAME_W);
  WideString text = L"changed by a check";
  SPropValue value = TextValue(PR_DISPLAY_NAME_W, text);
  Buffer<SPropProblemArray> problems(Ledger::FreeRoot);
  const HRESULT set =
      probe.Call("IMAPIProp::SetProps", [&] { return object->SetProps(1, &value, problems.Put()); });
  if (FAILED(set)) static_cast<void>(problems.Detach());
  const bool isTaken = SUCCEEDED(set) && !problems;
  Require(!isTaken || FAILED(Save(probe, object.Get())),
          "SetProps and SaveChanges of '" + ToUtf8(before) + "' both succeed");
  const WideString after =
      TextOf(probe, RequireOpen(probe, stage.book(), entry.id).props().Get(), PR_DISPLAY_NAME_W);
  Require(after == before, "'" + ToUtf8(before) + "' is called '" + ToUtf8(after) + "' now");
}

void RequireNoNewEntry(Probe& probe, const Stage& stage, const Found& container) {
  const ComPtr<IABContainer> object = RequireOpen(probe, stage.book(), container.id).container();
  if (!object) return;
  ComPtr<IMAPIProp> entry;
  const HRESULT result = probe.Call("IABContainer::CreateEntry",
                                    [&] { return object->CreateEntry(0, nullptr, 0, entry.Put()); });
  if (FAILED(result)) static_cast<void>(entry.Detach());
  Require(FAILED(result),
          "CreateEntry succeeds in '" + ToUtf8(container.name) + "', which does not say AB_MODIFIABLE");
}

Verdict CheckReadOnly(Probe& probe) {
  const Stage stage(probe);
  const Tour tour(stage);
  size_t looked = 0;
  for (size_t i = 0; i < tour.containers.size(); ++i) {
    if ((tour.containerFlags[i] & AB_MODIFIABLE) != 0) continue;
    RequireNoNewEntry(probe, stage, tour.containers[i]);
    ++looked;
    const auto entry = std::find_if(tour.entries.begin(), tour.entries.end(), [&](const Found& each) {
      return each.container == tour.containers[i].id;
    });
    if (entry != tour.entries.end()) RequireUnchangeable(probe, stage, *entry);
  }
  if (looked == 0) NotOffered("every container says AB_MODIFIABLE");
  return Ok(Count(looked, "container") + " refused");
}

Verdict CheckDelete(Probe& probe) {
  const Stage stage(probe);
  Workshop workshop(stage);
  const WideString name = Workshop::FreshName("deleted");
  const Bytes id = workshop.CreateSaved(name);
  const HRESULT result = workshop.Delete(id);
  if (result == MAPI_E_NO_SUPPORT)
    NotOffered("DeleteEntries is not offered; '" + ToUtf8(name) + "' was left there");
  Require(SUCCEEDED(result), "DeleteEntries answered " + Name(result));
  Require(workshop.Find(name).empty(), "a deleted entry is still listed");
  const HRESULT opened = Open(probe, stage.book(), id).result;
  Require(opened == MAPI_E_NOT_FOUND, "OpenEntry of a deleted entry answered " + Name(opened));
  return Ok("gone");
}

// Saved by the first process, looked for by the second.
Verdict CheckDurable(Probe& probe) {
  const Stage stage(probe);
  Workshop workshop(stage);
  if (probe.request.phase == 0) {
    const WideString name = Workshop::FreshName("durable");
    const Bytes id = workshop.CreateSaved(name);
    workshop.Keep(id);
    probe.kept = {{"id", ToHex(id)}, {"name", ToUtf8(name)}, {"number", workshop.keepsNumber()}};
    return Ok("saved");
  }
  const Bytes id = *FromHex(probe.request.kept["id"].get<std::string>());
  const WideString name = ToWide(probe.request.kept["name"].get<std::string>());
  workshop.SetKeepsNumber(probe.request.kept["number"].get<bool>());
  workshop.RequireStored(id, name);
  Require(workshop.Find(name) == id, "the next process does not list it under its identifier");
  workshop.Delete(id);
  return Ok("there in the next process");
}

constexpr NamedCheck kWritingChecks[] = {
    {"write.read-only", CheckReadOnly}, {"write.create", CheckCreate}, {"write.abandoned", CheckAbandoned},
    {"write.conflict", CheckConflict},  {"write.delete", CheckDelete}, {"write.durable", CheckDurable}};

}  // namespace

std::span<const NamedCheck> WritingChecks() { return kWritingChecks; }

}  // namespace orvctl::check
