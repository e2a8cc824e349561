// Entry identifiers: whole, from elsewhere, damaged.
#include <algorithm>
#include <map>
#include <random>
#include <set>

#include "tools/orvctl/check/tour.h"

namespace orvctl::check {
namespace {

constexpr size_t kSample = 16;
constexpr int kMutations = 4096;

// What an object says of its own identifier.
Bytes OwnId(Probe& probe, const Opened& opened) {
  return BytesOf(RequireProps(probe, opened.props().Get(), {PR_ENTRYID}).view().Binary(PR_ENTRYID));
}

Verdict CheckLayout(Probe& probe) {
  const Stage stage(probe);
  const Tour tour(stage);
  const std::vector<MAPIUID> uids = stage.session->support.Uids();
  if (uids.empty()) FailOf("logon.uid", "no MAPIUID was registered that one could bear");
  const std::vector<Found> all = tour.Everything();
  for (const Found& each : all) {
    const std::string what = ToHex(each.id);
    Require(each.id.size() >= ORV_MIN_ENTRYID, "'" + what + "' has fewer than 20 bytes");
    Require(
        std::all_of(each.id.begin(), each.id.begin() + ORV_ENTRYID_UID_OFFSET, [](BYTE b) { return b == 0; }),
        what + " does not begin with four zero bytes");
    const bool isRegistered = std::any_of(uids.begin(), uids.end(), [&](const MAPIUID& uid) {
      return std::equal(uid.ab, uid.ab + sizeof(uid.ab), each.id.begin() + ORV_ENTRYID_UID_OFFSET);
    });
    Require(isRegistered, what + " bears a MAPIUID that was not registered");
  }
  return Ok(Count(all.size(), "identifier"));
}

Verdict CheckOpens(Probe& probe) {
  const Stage stage(probe);
  const Tour tour(stage);
  const std::vector<Found> all = tour.Everything();
  for (const Found& each : all) {
    const ULONG type = RequireOpen(probe, stage.book(), each.id).type;
    Require(type == each.type || !each.missing.empty(),
            "'" + ToUtf8(each.name) + "' opens as an object of type " + std::to_string(type) +
                ", its row says " + std::to_string(each.type));
  }
  return Ok(Count(all.size(), "object"));
}

// Identifiers in hexadecimal, all of those of one name together.
Json IdsByName(const Tour& tour) {
  std::map<std::string, std::set<std::string>> ids;
  for (const std::vector<Found>& some : {tour.entries, tour.containers}) {
    for (const Found& each : some) ids[ToUtf8(each.name)].insert(ToHex(each.id));
  }
  ids["the root container"].insert(ToHex(tour.root));
  return ids;
}

void RequireSameIds(const Json& before, const Json& after, const std::string& when) {
  for (const auto& [name, ids] : before.items()) {
    Require(after.contains(name), "'" + name + "' is not there " + when);
    Require(after[name] == ids,
            "'" + name + "' was " + ids.dump() + ", " + when + " it is " + after[name].dump());
  }
}

// What a process takes before the library comes in it: so the library's own blocks lie elsewhere than in the first one,
// and the clock has gone on.
std::vector<Bytes> TakeMemory() {
  constexpr size_t kSteps = 64, kStep = 48;
  std::vector<Bytes> taken;
  for (size_t i = 1; i <= kSteps; ++i) taken.emplace_back(i * kStep);
  Sleep(static_cast<DWORD>(kStep));
  return taken;
}

// By tables and entries, then by a second logon, and by a second process that comes at its own by another way.
Verdict CheckSame(Probe& probe) {
  const bool isFirst = probe.request.phase == 0;
  const std::vector<Bytes> taken = isFirst ? std::vector<Bytes>() : TakeMemory();
  Stage stage(probe);
  const Tour tour(stage);
  const Json ids = IdsByName(tour);
  if (!isFirst) {
    RequireSameIds(probe.request.kept, ids, "in the next process");
    return Ok(Count(ids.size(), "name") + ", in the next process too");
  }
  for (const Found& each : tour.Everything()) {
    const Bytes own = OwnId(probe, RequireOpen(probe, stage.book(), each.id));
    Require(own == each.id, "the table says " + ToHex(each.id) + ", GetProps " + ToHex(own));
  }
  stage.LogOnAgain();
  RequireSameIds(ids, IdsByName(Tour(stage)), "after a second logon");
  probe.kept = ids;
  return Ok(Count(ids.size(), "name"));
}

// One that is refused, with the code for what is none of the provider's.
void RequireRefused(const Stage& stage, const Bytes& id, const std::string& what) {
  const Opened opened = Open(stage.probe, stage.book(), id);
  Require(FAILED(opened.result), what + " opens an object");
  const bool isCode = opened.result == MAPI_E_INVALID_ENTRYID || opened.result == MAPI_E_NOT_FOUND;
  Require(isCode || id.size() < ORV_MIN_ENTRYID, what + " answered " + Name(opened.result));
}

Verdict CheckTruncated(Probe& probe) {
  const Stage stage(probe);
  const Tour tour(stage);
  for (const Found& each : tour.Sample(4)) {
    for (size_t size = 1; size < each.id.size(); ++size)
      RequireRefused(stage, Bytes(each.id.begin(), each.id.begin() + static_cast<ptrdiff_t>(size)),
                     "the first " + Count(size, "byte") + " of an identifier");
    Bytes longer = each.id;
    longer.push_back(0);
    RequireRefused(stage, longer, "an identifier with a byte more");
  }
  const Bytes& id = tour.AnyEntry().id;
  return Ok("every part of " + Count(id.size(), "byte"));
}

Verdict CheckUnaligned(Probe& probe) {
  const Stage stage(probe);
  const Tour tour(stage);
  tour.AnyEntry();
  for (const Found& each : tour.Sample(4)) {
    RequireOpen(probe, stage.book(), each.id);
    for (size_t shift = 0; shift < 8; ++shift) {
      std::vector<ULONGLONG> room(each.id.size() / 8 + 2);
      auto* id = reinterpret_cast<BYTE*>(room.data()) + shift;
      std::copy(each.id.begin(), each.id.end(), id);
      Opened opened;
      const HRESULT result = probe.Call("IAddrBook::OpenEntry of an unaligned identifier", [&] {
        return stage.book()->OpenEntry(static_cast<ULONG>(each.id.size()), reinterpret_cast<LPENTRYID>(id),
                                       nullptr, 0, &opened.type, opened.object.Put());
      });
      if (FAILED(result)) static_cast<void>(opened.object.Detach());
      Require(SUCCEEDED(result),
              "at an address that ends in " + std::to_string(shift) + " it answered " + Name(result));
    }
  }
  return Ok("every address");
}

Verdict CheckNull(Probe& probe) {
  const Stage stage(probe);
  BYTE nothing[1] = {};
  const std::pair<ULONG, void*> kinds[] = {{0, nullptr}, {36, nullptr}, {0, nothing}};
  for (const auto& [size, bytes] : kinds) {
    Opened opened;
    const HRESULT result =
        probe.Call("IAddrBook::OpenEntry of a null identifier", [&, count = size, id = bytes] {
          return stage.book()->OpenEntry(count, static_cast<LPENTRYID>(id), nullptr, 0, &opened.type,
                                         opened.object.Put());
        });
    if (FAILED(result)) static_cast<void>(opened.object.Detach());
    // Without one, the provider's root may be meant, and nothing else.
    Require(FAILED(result) || opened.type == MAPI_ABCONT, "a null identifier opens an entry");
  }
  return Ok("no harm done");
}

Verdict CheckForeign(Probe& probe) {
  const Stage stage(probe);
  const Tour tour(stage);
  for (const Found& each : tour.Everything()) {
    Bytes id = each.id;
    if (id.empty()) continue;  // no identifier of anybody's
    for (size_t i = 0; i < sizeof(MAPIUID) && ORV_ENTRYID_UID_OFFSET + i < id.size(); ++i)
      id[ORV_ENTRYID_UID_OFFSET + i] ^= 0xA5;
    RequireRefused(stage, id, "an identifier of another provider's");
  }
  return Ok("refused");
}

// Some of its bytes become others, most often behind the part by which the address book routes.
Bytes Mutated(Bytes id, std::mt19937& random) {
  if (id.empty()) return id;
  const size_t begin = random() % 8 == 0 || id.size() <= ORV_MIN_ENTRYID ? 0 : ORV_MIN_ENTRYID;
  for (unsigned n = random() % 3 + 1; n != 0; --n) {
    const size_t at = begin + random() % (id.size() - begin);
    id[at] = static_cast<BYTE>(random() % 4 == 0 ? id[at] + 1 : random());
  }
  return id;
}

// What opens has either just this identifier, or the one that the change was made to: another entry's, and somebody
// else's message goes there.
void RequireNobodyElse(const Stage& stage, const Bytes& mutated, const Bytes& original) {
  const Opened opened = Open(stage.probe, stage.book(), mutated);
  if (FAILED(opened.result)) return;
  Require(bool{opened.object} && opened.props(),
          "OpenEntry succeeded and handed out nothing that can be used");
  const Bytes own = OwnId(stage.probe, opened);
  Require(own == mutated || own == original,
          ToHex(mutated) + ", made from " + ToHex(original) + ", opens the entry " + ToHex(own));
}

Verdict CheckMutated(Probe& probe) {
  const Stage stage(probe);
  const Tour tour(stage);
  tour.AnyEntry();
  std::vector<Found> sample = tour.Sample(kSample);
  sample.push_back({tour.root, MAPI_ABCONT, {}, {}});
  std::mt19937 random(1);
  for (int i = 0; i < kMutations; ++i) {
    const Bytes& original = sample[static_cast<size_t>(i) % sample.size()].id;
    const Bytes mutated = Mutated(original, random);
    if (mutated != original) RequireNobodyElse(stage, mutated, original);
  }
  return Ok(std::to_string(kMutations) + " identifiers");
}

constexpr NamedCheck kIdChecks[] = {{"id.layout", CheckLayout},       {"id.opens", CheckOpens},
                                    {"id.same", CheckSame},           {"id.truncated", CheckTruncated},
                                    {"id.unaligned", CheckUnaligned}, {"id.null", CheckNull},
                                    {"id.foreign", CheckForeign},     {"id.mutated", CheckMutated}};

}  // namespace

std::span<const NamedCheck> IdentifierChecks() { return kIdChecks; }

}  // namespace orvctl::check
