#include "tools/orvctl/service_choice.h"

#include <algorithm>
#include <cstring>

#include "formats/text_codec.h"
#include "tools/orvctl/errors.h"

namespace orvctl {
namespace {

bool IsNamed(const Service& service, const std::string& wanted) {
  return service.name == wanted || service.displayName == wanted ||
         formats::EqualsFolded(ToHex(service.uid), wanted) || formats::EqualsFolded(service.key, wanted);
}

[[noreturn]] void ThrowNoService(const std::string& wanted, const std::string& profile) {
  const std::string name = wanted.empty() ? "" : " '" + wanted + "'";
  throw CommandError(kNotFound, "there is no service" + name + " in " + QuotedProfile(profile));
}

}  // namespace

Services::Services(const Library& library, const std::string& given)
    : profile(ProfileName(library, given)), all(ReadServices(library, profile)) {}

const Service& Services::Find(const std::string& wanted) const {
  const auto isWanted = [&](const Service& each) { return wanted.empty() || IsNamed(each, wanted); };
  const auto fit = std::count_if(all.begin(), all.end(), isWanted);
  if (fit == 0) ThrowNoService(wanted, profile);
  if (fit == 1) return *std::find_if(all.begin(), all.end(), isWanted);
  throw CommandError(kAmbiguous, std::to_string(fit) + " services fit in " + QuotedProfile(profile) +
                                     "; name one by its UID, which 'orvctl service list' shows");
}

MAPIUID UidOf(const Service& service) {
  MAPIUID uid = {};
  if (service.uid.size() != sizeof(uid))
    throw CommandError(kDamaged, "service '" + service.name + "' has no UID");
  std::memcpy(&uid, service.uid.data(), sizeof(uid));
  return uid;
}

}  // namespace orvctl
