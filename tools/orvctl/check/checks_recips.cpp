// PrepareRecips.
#include <algorithm>

#include "tools/orvctl/check/recipients.h"

namespace orvctl::check {

using orv::sdk::AddressList;

namespace {

constexpr ULONG kValues = 5;

void FillRecipient(ADRENTRY& entry, const Bytes& id) {
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
  values[3].Value.lpszW = allocator.CopyText(values, L"typed by hand");
  values[4].ulPropTag = kOwnTag;
  values[4].Value.lpszW = allocator.CopyText(values, L"the client's own");
  entry.cValues = kValues;
  entry.rgPropVals = static_cast<LPSPropValue>(root.release());
}

std::vector<Stored> Snapshot(const ADRENTRY& entry) {
  std::vector<Stored> values;
  for (const SPropValue& each : ValueView(entry)) values.emplace_back(each);
  return values;
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
  std::vector<std::vector<Stored>> before;
  for (ULONG i = 0; i < list->cEntries; ++i) before.push_back(Snapshot(list->aEntries[i]));
  PrepareRecipients(probe, stage.book(), list);
  Require(list->cEntries == before.size(), "the list came back with " + Count(list->cEntries, "recipient"));
  for (ULONG i = 0; i < list->cEntries; ++i)
    Require(Snapshot(list->aEntries[i]) == before[i],
            "recipient " + std::to_string(i) + " of another provider was changed");
  return Ok("as they were");
}

Verdict CheckTypes(Probe& probe) {
  const Stage stage(probe);
  const Tour tour(stage);
  const AddressList list = MakeRecipients({tour.AnyEntry().id});
  const std::vector<Stored> before = Snapshot(list->aEntries[0]);
  PrepareRecipients(probe, stage.book(), list);
  const ADRENTRY& entry = list->aEntries[0];
  if (Snapshot(entry) == before) NotOffered("it leaves its recipients as they are");
  const ValueView values(entry);
  Require(entry.cValues >= kRecipientTags.size(),
          "it has " + Count(entry.cValues, "value") + " for four tags");
  for (size_t i = 0; i < kRecipientTags.size(); ++i)
    Require(PROP_ID(entry.rgPropVals[i].ulPropTag) == PROP_ID(kRecipientTags[i]),
            "in the place of " + diag::PropTagName(kRecipientTags[i]) + " is " +
                diag::PropTagName(entry.rgPropVals[i].ulPropTag));
  Require(values.Number(PR_RECIPIENT_TYPE, MAPI_TO) == MAPI_CC, "its PR_RECIPIENT_TYPE is no longer MAPI_CC");
  const LPCWSTR own = values.Text(kOwnTag);
  Require(own != nullptr && WideString(own) == L"the client's own",
          "a property that the client had put there is gone");
  Require(BytesOf(values.Binary(PR_ENTRYID)) == tour.AnyEntry().id, "its PR_ENTRYID is another one");
  return Ok("asked for in front, the rest kept");
}

constexpr NamedCheck kChecks[] = {
    {"recips.empty", CheckEmpty}, {"recips.foreign", CheckForeign}, {"recips.types", CheckTypes}};

}  // namespace

AddressList MakeRecipients(const std::vector<Bytes>& ids) {
  const orv::sdk::Allocator allocator = Ledger::Functions();
  auto list = allocator.Make<ADRLIST>(CbNewADRLIST(std::max<size_t>(ids.size(), 1)));
  for (const Bytes& each : ids) FillRecipient(list->aEntries[list->cEntries++], each);
  return list;
}

void PrepareRecipients(Probe& probe, IAddrBook* book, const AddressList& list) {
  TagList tags(kRecipientTags);
  probe.Succeed("IAddrBook::PrepareRecips", [&] { return book->PrepareRecips(0, tags.Get(), list.Get()); });
}

std::span<const NamedCheck> RecipientChecks() { return kChecks; }

}  // namespace orvctl::check
