// PrepareRecips.
#include <algorithm>

#include "tools/orvctl/check/recipients.h"

namespace orvctl::check {

using orv::sdk::AddressList;

namespace {

constexpr ULONG kValues = 5;
constexpr WCHAR kOwnText[] = L"the client's own", kTyped[] = L"typed by hand";

void FillRecipient(ADRENTRY& entry, const Bytes& id, const WideString& name) {
  const orv::sdk::Allocator allocator = Ledger::Functions();
  auto root = allocator.AllocateRoot(kValues * sizeof(SPropValue));
  auto* values = static_cast<SPropValue*>(root.get());
  values[0].ulPropTag = PR_RECIPIENT_TYPE;
  values[0].Value.l = MAPI_CC;
  values[1].ulPropTag = PR_ENTRYID;
  values[1].Value.bin = allocator.CopyBytes(values, id.data(), id.size());
  values[2].ulPropTag = PR_OBJECT_TYPE;
  values[2].Value.l = MAPI_MAILUSER;
  values[3].ulPropTag = PR_DISPLAY_NAME_W;
  values[3].Value.lpszW = allocator.CopyText(values, name);
  values[4].ulPropTag = kOwnTag;
  values[4].Value.lpszW = allocator.CopyText(values, kOwnText);
  entry.cValues = kValues;
  entry.rgPropVals = static_cast<LPSPropValue>(root.release());
}

AddressList MakeList(size_t most) {
  return Ledger::Functions().Make<ADRLIST>(CbNewADRLIST(std::max<size_t>(most, 1)));
}

Verdict CheckEmpty(Probe& probe) {
  const Stage stage(probe);
  const AddressList list = MakeRecipients({});
  PrepareRecipients(probe, stage.book(), list);
  Require(list->cEntries == 0, "the empty list came back with " + Count(list->cEntries, "recipient"));
  return Ok("success");
}

Verdict CheckForeign(Probe& probe) {
  const Stage stage(probe);
  const Tour tour(stage);
  Bytes foreign = tour.root;
  for (size_t i = ORV_ENTRYID_UID_OFFSET; i < foreign.size() && i < ORV_MIN_ENTRYID; ++i) foreign[i] ^= 0x5A;
  const AddressList list = MakeRecipients({foreign, {}, Bytes(7, 0)});
  std::vector<std::string> before;
  for (ULONG i = 0; i < list->cEntries; ++i) before.push_back(Written(ValueView(list->aEntries[i])));
  PrepareRecipients(probe, stage.book(), list);
  Require(list->cEntries == before.size(), "the list came back with " + Count(list->cEntries, "recipient"));
  for (ULONG i = 0; i < list->cEntries; ++i)
    Require(Written(ValueView(list->aEntries[i])) == before[i],
            "recipient " + std::to_string(i) + " of another provider was changed");
  return Ok("as they were");
}

// The properties asked for in front, those of the entry, and behind them what the recipient had.
void RequireMerged(const ADRENTRY& entry, const Bytes& id) {
  const ValueView values(entry);
  Require(entry.cValues >= kRecipientTags.size(),
          "it has " + Count(entry.cValues, "value") + " for four tags");
  for (size_t i = 0; i < kRecipientTags.size(); ++i)
    Require(PROP_ID(entry.rgPropVals[i].ulPropTag) == PROP_ID(kRecipientTags[i]),
            "in the place of " + diag::PropTagName(kRecipientTags[i]) + " is " +
                diag::PropTagName(entry.rgPropVals[i].ulPropTag));
  Require(values.Number(PR_RECIPIENT_TYPE, MAPI_TO) == MAPI_CC, "its PR_RECIPIENT_TYPE is no longer MAPI_CC");
  const LPCWSTR own = values.Text(kOwnTag);
  Require(own != nullptr && WideString(own) == kOwnText, "a property that the client had put there is gone");
  Require(BytesOf(values.Binary(PR_ENTRYID)) == id, "its PR_ENTRYID is another one");
}

Verdict CheckTypes(Probe& probe) {
  const Stage stage(probe);
  const Tour tour(stage);
  const AddressList list = MakeRecipients({tour.AnyEntry().id});
  const std::string before = Written(ValueView(list->aEntries[0]));
  PrepareRecipients(probe, stage.book(), list);
  const ADRENTRY& entry = list->aEntries[0];
  if (Written(ValueView(entry)) == before) NotOffered("it leaves its recipients as they are");
  RequireMerged(entry, tour.AnyEntry().id);
  return Ok("asked for in front, the rest kept");
}

// Somebody who is the only one of a name, and nobody's name begins so. Nobody: empty.
WideString OnlyName(const std::vector<Found>& entries) {
  const auto beginsSo = [](const Found& each, const Found& other) {
    const int size = static_cast<int>(each.name.size());
    return other.name.size() >= each.name.size() &&
           CompareStringOrdinal(each.name.c_str(), size, other.name.c_str(), size, TRUE) == CSTR_EQUAL;
  };
  for (const Found& each : entries) {
    const auto same = std::count_if(entries.begin(), entries.end(),
                                    [&](const Found& other) { return beginsSo(each, other); });
    if (same == 1 && !each.name.empty()) return each.name;
  }
  return {};
}

// Three recipients of a container's: a name of its, nobody's, and one that is resolved already.
struct Resolution {
  Resolution(Probe& probe, IABContainer* container, const WideString& name) : list(MakeList(3)) {
    FillRecipient(list->aEntries[0], {}, name);
    FillRecipient(list->aEntries[1], {}, kNobody);
    FillRecipient(list->aEntries[2], Bytes(7, 0), name);
    list->cEntries = 3;
    for (ULONG i = 0; i < 3; ++i) before.push_back(Written(ValueView(list->aEntries[i])));
    auto* const flagList = reinterpret_cast<LPFlagList>(flags);
    TagList tags(kRecipientTags);
    result = probe.Call("IABContainer::ResolveNames", [&] {
      return container->ResolveNames(tags.Get(), MAPI_UNICODE, list.Get(), flagList);
    });
  }
  ULONG FlagOf(size_t recipient) const { return flags[1 + recipient]; }
  void RequireUntouched(size_t recipient, ULONG flag, const char* who) const {
    Require(FlagOf(recipient) == flag,
            std::string(who) + " has the flag " + std::to_string(FlagOf(recipient)));
    Require(Written(ValueView(list->aEntries[recipient])) == before[recipient],
            std::string(who) + " was changed");
  }

  AddressList list;
  ULONG flags[4] = {3, MAPI_UNRESOLVED, MAPI_UNRESOLVED, MAPI_RESOLVED};
  std::vector<std::string> before;
  HRESULT result = S_OK;
};

// False where the container does not offer it. Of one that was not read to its end a name may be another's too.
bool ResolvesNames(const Stage& stage, const Found& container, const std::vector<Found>& entries,
                   bool isWhole) {
  const WideString name = OnlyName(entries);
  const ComPtr<IABContainer> object = RequireOpen(stage.probe, stage.book(), container.id).container();
  if (name.empty() || !object) return false;
  const Resolution resolution(stage.probe, object.Get(), name);
  if (resolution.result == MAPI_E_NO_SUPPORT) return false;
  Require(SUCCEEDED(resolution.result), "ResolveNames answered " + Name(resolution.result));
  resolution.RequireUntouched(1, MAPI_UNRESOLVED, "a recipient whose name nobody has");
  resolution.RequireUntouched(2, MAPI_RESOLVED, "a recipient that was resolved already");
  if (!isWhole && resolution.FlagOf(0) == MAPI_AMBIGUOUS) return true;
  Require(resolution.FlagOf(0) == MAPI_RESOLVED,
          "the full name '" + ToUtf8(name) + "' has the flag " + std::to_string(resolution.FlagOf(0)));
  const auto entry =
      std::find_if(entries.begin(), entries.end(), [&](const Found& each) { return each.name == name; });
  RequireMerged(resolution.list->aEntries[0], entry->id);
  return true;
}

Verdict CheckResolve(Probe& probe) {
  const Stage stage(probe);
  const Tour tour(stage);
  size_t offered = 0;
  for (const Found& container : tour.containers) {
    std::vector<Found> entries;
    std::copy_if(tour.entries.begin(), tour.entries.end(), std::back_inserter(entries),
                 [&](const Found& each) { return each.container == container.id; });
    offered += ResolvesNames(stage, container, entries, entries.size() < static_cast<size_t>(kMostEntries));
  }
  if (offered == 0) NotOffered("no container resolves names, or none has an entry to be resolved to");
  return Ok(Count(offered, "container") + ": full names resolved, others left alone");
}

constexpr NamedCheck kRecipientChecks[] = {{"recips.empty", CheckEmpty},
                                           {"recips.foreign", CheckForeign},
                                           {"recips.types", CheckTypes},
                                           {"names.resolve", CheckResolve}};

}  // namespace

AddressList MakeRecipients(const std::vector<Bytes>& ids) {
  auto list = MakeList(ids.size());
  for (const Bytes& each : ids) FillRecipient(list->aEntries[list->cEntries++], each, kTyped);
  return list;
}

void PrepareRecipients(Probe& probe, IAddrBook* book, const AddressList& list) {
  TagList tags(kRecipientTags);
  probe.Succeed("IAddrBook::PrepareRecips", [&] { return book->PrepareRecips(0, tags.Get(), list.Get()); });
}

std::span<const NamedCheck> RecipientChecks() { return kRecipientChecks; }

}  // namespace orvctl::check
