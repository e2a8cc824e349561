// The logon, the provider's row, the root container's hierarchy.
#include <algorithm>

#include "tools/orvctl/check/tour.h"

namespace orvctl::check {
namespace {

// More allocations than any logon makes; one that fails needs no further ones.
constexpr size_t kMostAllocations = 500;

Verdict CheckObject(Probe& probe) {
  const Stage stage(probe);
  return Ok("handed out");
}

Verdict CheckUid(Probe& probe) {
  const Stage stage(probe);
  const std::vector<MAPIUID> uids = stage.session->support.Uids();
  Require(!uids.empty(), "it registers none");
  const Bytes id = BytesOf(RequireRow(stage).view().Binary(PR_ENTRYID));
  const bool isOurs = std::any_of(uids.begin(), uids.end(), [&](const MAPIUID& each) {
    return id.size() >= ORV_MIN_ENTRYID &&
           std::equal(each.ab, each.ab + sizeof(each.ab), id.begin() + ORV_ENTRYID_UID_OFFSET);
  });
  Require(isOurs, "the identifier of its row, " + ToHex(id) + ", bears none of those that it registered");
  return Ok(Count(uids.size(), "MAPIUID") + " registered");
}

// One logon that meets with a failure; true when it failed. The session leaks where the provider holds parts of it.
bool FailsCleanly(Probe& probe, const Module& module, Profile& profile, HRESULT uid, HRESULT section,
                  size_t allocation, const std::string& when) {
  auto session = std::make_unique<Session>(profile);
  session->support.result = uid;
  session->section.result = section;
  const size_t before = Ledger::Get().Live();
  Ledger::Get().FailNth(allocation);
  const HRESULT result = session->TryLogOn(probe, module);
  Ledger::Get().FailNth(0);
  session->End();
  const ULONG support = session->support.held(), kept = session->section.held();
  if (support + kept != 0) static_cast<void>(session.release());
  const std::string end = when + " the logon answered " + Name(result) + " and ";
  Require(support == 0, end + "keeps the support object");
  Require(kept == 0, end + "keeps the section");
  Require(Ledger::Get().Live() == before,
          end + "leaves " + Count(Ledger::Get().Live() - before, "buffer") + " unfreed");
  return FAILED(result);
}

Verdict CheckFailure(Probe& probe) {
  Module module(probe);
  Profile profile = NewProfile(probe.request);
  CreateService(probe, module, profile);
  size_t failed = 0;
  failed += FailsCleanly(probe, module, profile, MAPI_E_CALL_FAILED, S_OK, 0, "with SetProviderUID failing");
  failed += FailsCleanly(probe, module, profile, S_OK, MAPI_E_CALL_FAILED, 0,
                         "with the section's GetProps failing");
  for (size_t n = 1; n < kMostAllocations; ++n) {
    failed += FailsCleanly(probe, module, profile, S_OK, S_OK, n,
                           "with allocation " + std::to_string(n) + " failing");
    if (!Ledger::Get().HasFailed()) break;
  }
  if (failed == 0) NotOffered("no logon could be made to fail");
  return Ok(Count(failed, "failed logon") + ", nothing kept");
}

SPropValue Odd(ULONG tag, ULONG size, BYTE* bytes) {
  SPropValue value{};
  value.ulPropTag = tag;
  if (PROP_TYPE(tag) == PT_BINARY) value.Value.bin = {size, bytes};
  if (PROP_TYPE(tag) == PT_UNICODE) value.Value.lpszW = reinterpret_cast<LPWSTR>(bytes);
  return value;
}

// Sections as damage or other programs leave them. Which of them is refused is the provider's to say.
Verdict CheckExceptions(Probe& probe) {
  Module module(probe);
  std::wstring longText(30000, L'x'), wild = L"?:\\<|>*";
  BYTE few[3] = {1, 2, 3};
  const auto bytesOf = [](std::wstring& text) { return reinterpret_cast<BYTE*>(text.data()); };
  const SPropValue odd[] = {Odd(PR_SERVICE_UID, 3, few),
                            Odd(PR_SERVICE_UID, 0, nullptr),
                            Odd(CHANGE_PROP_TYPE(PR_SERVICE_UID, PT_LONG), 0, nullptr),
                            Odd(CHANGE_PROP_TYPE(PR_DISPLAY_NAME_W, PT_LONG), 0, nullptr),
                            Odd(PR_DISPLAY_NAME_W, 0, bytesOf(longText)),
                            Odd(PR_ORV_BOOK_FILE_W, 0, bytesOf(longText)),
                            Odd(PR_ORV_BOOK_FILE_W, 0, bytesOf(wild)),
                            Odd(CHANGE_PROP_TYPE(PR_ORV_BOOK_FILE_W, PT_LONG), 0, nullptr)};
  for (const SPropValue& each : odd) {
    Profile profile = NewProfile(probe.request);
    static_cast<void>(profile.Set(each));
    auto session = std::make_unique<Session>(profile);
    session->TryLogOn(probe, module);
    session->End();
    if (session->held() != 0) static_cast<void>(session.release());
  }
  return Ok(Count(std::size(odd), "odd section") + ", no exception");
}

Verdict CheckGivesBack(Probe& probe) {
  Stage stage(probe);
  {
    const Tour tour(stage);
    for (const Found& each : tour.Everything()) {
      const Opened opened = RequireOpen(probe, stage.book(), each.id);
      GetProps(probe, opened.props().Get(), nullptr);
    }
  }
  probe.Step("the provider object's last Release");
  stage.session->End();
  Require(stage.session->support.held() == 0, "the support object is still held");
  Require(stage.session->section.held() == 0, "the section is still held");
  return Ok("all given back");
}

// Values of a row in their places, with their types.
void RequireColumns(const ValueView& row, const std::string& what) {
  const auto* value = row.begin();
  for (const ULONG tag : kRowColumns) {
    Require(value->ulPropTag == tag, what + ": in the place of " + diag::PropTagName(tag) + " is " +
                                         diag::PropTagName(value->ulPropTag));
    ++value;
  }
  Require(row.Number(PR_OBJECT_TYPE) == MAPI_ABCONT, what + ": PR_OBJECT_TYPE is not MAPI_ABCONT");
}

Verdict CheckRow(Probe& probe) {
  const Stage stage(probe);
  const Answer row = RequireProps(probe, stage.book(), kRowColumns);
  RequireColumns(row.view(), "the provider's row");
  Require(row.view().Number(PR_DEPTH) == 0,
          "the provider's row has PR_DEPTH " + std::to_string(row.view().Number(PR_DEPTH)));
  return Ok("five columns");
}

Verdict CheckRoot(Probe& probe) {
  const Stage stage(probe);
  const Opened root = RequireRoot(stage, BytesOf(RequireRow(stage).view().Binary(PR_ENTRYID)));
  Require(root.type == MAPI_ABCONT, "it opens as an object of type " + std::to_string(root.type));
  Require(bool{root.container()}, "what it opens has no IABContainer");
  return Ok("opened");
}

Verdict CheckHierarchy(Probe& probe) {
  const Stage stage(probe);
  const Opened root = RequireRoot(stage, BytesOf(RequireRow(stage).view().Binary(PR_ENTRYID)));
  const ComPtr<IMAPITable> table = HierarchyOf(probe, root.object);
  if (!table) NotOffered("the root container has no hierarchy table");
  SetColumns(probe, table.Get(), kRowColumns);
  const RowSet rows = QueryRows(probe, table.Get(), 100);
  for (ULONG i = 0; i < rows->cRows; ++i) {
    const std::string what = "row " + std::to_string(i);
    Require(rows->aRow[i].cValues == kRowColumns.size(),
            what + " has " + Count(rows->aRow[i].cValues, "value"));
    RequireColumns(ValueView(rows->aRow[i]), what);
    const Opened container =
        RequireOpen(probe, stage.book(), BytesOf(ValueView(rows->aRow[i]).Binary(PR_ENTRYID)));
    Require(container.type == MAPI_ABCONT,
            what + " opens as an object of type " + std::to_string(container.type));
  }
  return Ok(Count(rows->cRows, "container"));
}

constexpr NamedCheck kLogonChecks[] = {{"logon.object", CheckObject},
                                       {"logon.uid", CheckUid},
                                       {"logon.failure", CheckFailure},
                                       {"logon.exceptions", CheckExceptions},
                                       {"logon.gives-back", CheckGivesBack},
                                       {"row.columns", CheckRow},
                                       {"row.root", CheckRoot},
                                       {"hierarchy.columns", CheckHierarchy}};

}  // namespace

std::span<const NamedCheck> LogonChecks() { return kLogonChecks; }

}  // namespace orvctl::check
