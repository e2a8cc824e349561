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

bool Holds(const std::string& name, const std::string& part) {
  WideString whole = ToWide(name), wanted = ToWide(part);
  CharLowerBuffW(whole.data(), static_cast<DWORD>(whole.size()));
  CharLowerBuffW(wanted.data(), static_cast<DWORD>(wanted.size()));
  return whole.find(wanted) != WideString::npos;
}

[[noreturn]] void ThrowNoService(const std::string& wanted, const std::string& profile) {
  const std::string name = wanted.empty() ? "" : " '" + wanted + "'";
  throw CommandError(kNotFound, "there is no service" + name + " in " + QuotedProfile(profile) +
                                    "; 'orvctl service list' lists them, 'orvctl service add' adds one");
}

}  // namespace

Services::Services(const Library& library, const std::string& given)
    : profile(ProfileName(library, given)), all(ReadServices(library, profile)) {}

template <class Fits>
const Service& Services::OnlyOne(const std::string& wanted, Fits fits) const {
  const auto fit = std::count_if(all.begin(), all.end(), fits);
  if (fit == 0) ThrowNoService(wanted, profile);
  if (fit == 1) return *std::find_if(all.begin(), all.end(), fits);
  std::string names;
  for (const Service& each : all) {
    if (fits(each)) names += ", " + ToHex(each.uid) + " is '" + each.displayName + "'";
  }
  throw CommandError(kAmbiguous, std::to_string(fit) + " services fit in " + QuotedProfile(profile) +
                                     "; name one by its UID" + names);
}

const Service& Services::Find(const std::string& wanted) const {
  return OnlyOne(wanted, [&](const Service& each) { return wanted.empty() || IsNamed(each, wanted); });
}

const Service& Services::FindByPart(const std::string& wanted) const {
  const bool isExact = wanted.empty() || std::any_of(all.begin(), all.end(), [&](const Service& each) {
                         return IsNamed(each, wanted);
                       });
  if (isExact) return Find(wanted);
  return OnlyOne(wanted, [&](const Service& each) {
    return Holds(each.name, wanted) || Holds(each.displayName, wanted);
  });
}

MAPIUID UidOf(const Service& service) {
  MAPIUID uid = {};
  if (service.uid.size() != sizeof(uid))
    throw CommandError(kDamaged, "service '" + service.name + "' has no UID");
  std::memcpy(&uid, service.uid.data(), sizeof(uid));
  return uid;
}

}  // namespace orvctl
