// The service entry function.
#include <algorithm>

#include "tools/orvctl/check/stage.h"

namespace orvctl::check {
namespace {

// No system knows such a path: nothing is made when it is believed, nothing found.
constexpr char kNoPath[] = "?:\\no such folder\\no such file";

void RequireNoBuffers(const std::string& when) {
  Require(Ledger::Get().Live() == 0, when + ": " + Count(Ledger::Get().Live(), "buffer") + " left unfreed");
}

Verdict CheckContexts(Probe& probe) {
  Module module(probe);
  std::string seen;
  for (const ULONG context : {MSG_SERVICE_INSTALL, MSG_SERVICE_CREATE, MSG_SERVICE_CONFIGURE,
                              MSG_SERVICE_DELETE, MSG_SERVICE_UNINSTALL}) {
    Profile profile = NewProfile(probe.request);
    Section section(profile);
    const bool hasSection = context != MSG_SERVICE_INSTALL && context != MSG_SERVICE_UNINSTALL;
    const HRESULT result = module.CallEntry(probe, context, hasSection ? &section : nullptr);
    RequireNoBuffers("context " + std::to_string(context));
    // Without a window there may be nothing that it could configure.
    const bool mayRefuse = context == MSG_SERVICE_CONFIGURE;
    Require(SUCCEEDED(result) || mayRefuse,
            "context " + std::to_string(context) + " answered " + Name(result));
    seen += (seen.empty() ? "" : ", ") + std::to_string(context) + ": " +
            (SUCCEEDED(result) ? "done" : Name(result));
  }
  return Ok(seen);
}

Verdict CheckUnknownContext(Probe& probe) {
  Module module(probe);
  for (const ULONG context : {0ul, 0x77ul, 0xFFFFFFFFul}) {
    Profile profile = NewProfile(probe.request);
    Section section(profile);
    const HRESULT result = module.CallEntry(probe, context, &section);
    Require(result == MAPI_E_NO_SUPPORT, "context " + std::to_string(context) + " answered " + Name(result));
  }
  return Ok("refused");
}

Verdict CheckNullSection(Probe& probe) {
  Module module(probe);
  for (const ULONG context : {MSG_SERVICE_INSTALL, MSG_SERVICE_UNINSTALL}) {
    const HRESULT result = module.CallEntry(probe, context, nullptr);
    Require(result != MAPI_E_INVALID_PARAMETER,
            "context " + std::to_string(context) + " without a section answered " + Name(result));
  }
  return Ok("no harm done");
}

// Whether it was refused; one that is refused and stored is the finding.
bool IsRefusedWhole(const Profile& before, const Profile& after, HRESULT result, const char* what) {
  if (SUCCEEDED(result)) return false;
  Require(Written(before.View()) == Written(after.View()),
          std::string(what) + " was refused with " + Name(result) + ", and yet something was stored");
  return true;
}

Verdict CheckRefusedValue(Probe& probe) {
  Module module(probe);
  Profile profile = NewProfile(probe.request);
  CreateService(probe, module, profile);
  const Profile before = profile;
  Section section(profile);
  bool isRefused =
      IsRefusedWhole(before, profile, module.Configure(probe, &section, kNoPath), "a path that cannot be");
  profile = before;
  WideString path = ToWide(kNoPath);
  SPropValue value = TextValue(PR_ORV_BOOK_FILE_W, path);
  Section other(profile);
  const HRESULT configured = module.CallEntry(probe, MSG_SERVICE_CONFIGURE, &other, 1, &value);
  isRefused = IsRefusedWhole(before, profile, configured, "such a PR_ORV_BOOK_FILE_W") || isRefused;
  RequireNoBuffers("after a refusal");
  if (!isRefused) NotOffered("neither such a path nor such a PR_ORV_BOOK_FILE_W was refused");
  return Ok("refused, and nothing stored");
}

Verdict CheckConfig(Probe& probe) {
  if (!probe.request.config) NotOffered("no --config was given");
  Module module(probe);
  Profile profile = NewProfile(probe.request);
  CreateService(probe, module, profile);
  RequireNoBuffers("ORV_SERVICE_EXTRA_CONFIG");
  return Ok("taken");
}

void LogOnOnce(Probe& probe, const Module& module, Profile& profile, const char* when) {
  Session session(profile);
  const HRESULT result = session.TryLogOn(probe, module);
  Require(SUCCEEDED(result), std::string(when) + " the logon answered " + Name(result));
  if (!session.book) FailOf("logon.object", std::string(when) + " the logon handed out no object");
}

Verdict CheckCreateThenLogon(Probe& probe) {
  Module module(probe);
  Profile untouched = NewProfile(probe.request), created = untouched;
  LogOnOnce(probe, module, untouched, "without MSG_SERVICE_CREATE");
  Section section(created);
  const HRESULT result = module.CallEntry(probe, MSG_SERVICE_CREATE, &section);
  Require(SUCCEEDED(result), "MSG_SERVICE_CREATE answered " + Name(result));
  LogOnOnce(probe, module, created, "after MSG_SERVICE_CREATE");
  return Ok("logged on both ways");
}

constexpr NamedCheck kEntryChecks[] = {{"entry.contexts", CheckContexts},
                                       {"entry.unknown-context", CheckUnknownContext},
                                       {"entry.null-section", CheckNullSection},
                                       {"entry.refused-value", CheckRefusedValue},
                                       {"entry.config", CheckConfig},
                                       {"entry.create-then-logon", CheckCreateThenLogon}};

}  // namespace

std::span<const NamedCheck> EntryChecks() { return kEntryChecks; }

}  // namespace orvctl::check
