#include "tools/orvctl/logon.h"

#include <new>

#include "tools/orvctl/administration.h"
#include "tools/orvctl/errors.h"
#include "tools/orvctl/service_trial.h"

namespace orvctl {
namespace {

// What is known of a logon that failed: the end of the sentence, and the services that fail, each with its cause.
struct Suspects {
  std::string text;
  std::vector<std::string> guilty;
};

// A logon's code does not say which service failed: each is tried alone.
Suspects FindSuspects(const Library& library, const std::string& profileName) {
  Suspects suspects;
  std::string all;
  for (const Service& service : ReadServices(library, profileName)) {
    const std::string name = "service '" + service.name + "' (" + ToHex(service.uid) + ")";
    const std::string why = DescribeFailure(TryService(library, profileName, service));
    if (!why.empty()) suspects.guilty.push_back(name + why);
    all.append(all.empty() ? ", each of its services logs on alone: " : ", ").append(name);
  }
  if (suspects.guilty.empty()) suspects.text = all;
  return suspects;
}

Suspects DescribeSuspects(const Library& library, const std::string& profile, ExitCode& exitCode) {
  try {
    const std::string name = ProfileName(library, profile);
    const std::string damage = FindDamage(library, name);
    exitCode = damage.empty() ? kFailed : kDamaged;
    return damage.empty() ? FindSuspects(library, name) : Suspects{damage, {}};
  } catch (const CommandError& error) {
    return {std::string(", ") + error.what(), {}};
  }
}

// The library lets exceptions of providers pass at logon.
HRESULT TryLogOn(const Library& library, const std::string& profile, ComPtr<IOrvSession>& session,
                 std::string& why) {
  const ULONG flags = MAPI_UNICODE | (profile == "-" ? MAPI_USE_DEFAULT : 0);
  const CrashStep step("logon");
  try {
    return library.open()(0, ToWide(profile).c_str(), flags, nullptr, nullptr, nullptr, nullptr,
                          session.Put(), 0);
  } catch (const std::bad_alloc&) {
    throw;
  } catch (...) {
    why = ", a provider raised an exception";
    return MAPI_E_CALL_FAILED;
  }
}

std::string QuotedNames(const std::vector<Service>& services, const std::string& library) {
  std::string names;
  for (const Service& each : services) {
    if (each.library == library) names += (names.empty() ? "'" : " or '") + each.name + "'";
  }
  return names;
}

}  // namespace

// Services of one library cannot be told apart: the crash is in its code.
std::vector<CrashText> CrashTexts(const Library& library, const std::string& profile) {
  std::vector<CrashText> texts;
  try {
    const std::string name = ProfileName(library, profile);
    const std::vector<Service> services = ReadServices(library, name);
    for (const Service& each : services) {
      texts.push_back({ToWide(each.library), "service " + QuotedNames(services, each.library) + " of " +
                                                 QuotedProfile(name) + ", its library " + each.library +
                                                 " crashed: " + kCrashMark + "; 'orvctl doctor \"" + name +
                                                 "\"' tries each service alone, '" +
                                                 RemoveCommand(name, each) + "' takes it out"});
    }
  } catch (const CommandError&) {
    // Whoever opens the profile tells why.
  }
  return texts;
}

ComPtr<IOrvSession> LogOn(const Library& library, const std::string& profile) {
  const std::string what = profile == "-" ? "default profile" : QuotedProfile(profile);
  ComPtr<IOrvSession> session;
  std::string why;
  const HRESULT result = TryLogOn(library, profile, session, why);
  if (result == MAPI_E_LOGON_FAILED) throw CommandError(kNotFound, "there is no " + what, result);
  if (FAILED(result) && result != MAPI_E_USER_CANCEL) {
    static_cast<void>(session.Detach());
    // "Not found" means a provider's library here, not the profile.
    ExitCode exitCode = kFailed;
    const Suspects suspects = DescribeSuspects(library, profile, exitCode);
    // Where the causes are known the logon's own code, which may be another one, says nothing more.
    if (!suspects.guilty.empty())
      throw CommandError(exitCode, "cannot log on to " + what + why + ":", suspects.guilty);
    throw CommandError(exitCode, "cannot log on to " + what + why + suspects.text, result);
  }
  Receive(session, result, "log on to " + what);
  return session;
}

}  // namespace orvctl
