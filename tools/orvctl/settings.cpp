#include "tools/orvctl/settings.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

#include "diag/names.h"
#include "tools/orvctl/errors.h"
#include "tools/orvctl/service_choice.h"
#include "tools/orvctl/table.h"

namespace orvctl {
namespace {

// What a row of the service table says already, or the library computes.
constexpr ULONG kOfTheService[] = {PR_SERVICE_NAME,         PR_DISPLAY_NAME,
                                   PR_PROVIDER_DISPLAY,     PR_SERVICE_DLL_NAME,
                                   PR_SERVICE_ENTRY_NAME,   PR_SERVICE_UID,
                                   PR_RESOURCE_FLAGS,       PR_SERVICE_SUPPORT_FILES,
                                   PR_SERVICE_DELETE_FILES, PR_SERVICE_EXTRA_UIDS,
                                   PR_INSTANCE_KEY,         PR_PROVIDER_UID,
                                   PR_OBJECT_TYPE,          PR_ENTRYID};

bool IsOfTheService(ULONG tag) {
  return std::any_of(std::begin(kOfTheService), std::end(kOfTheService),
                     [&](ULONG each) { return PROP_ID(each) == PROP_ID(tag); });
}

// Providers keep passwords in properties of this range.
constexpr ULONG kFirstSecret = 0x67F0, kLastSecret = 0x67FF;

bool IsSecret(ULONG tag) {
  const ULONG id = PROP_ID(tag);
  const bool isNamedSo =
      diag::FindPropName(static_cast<uint16_t>(id)).find("PASSWORD") != std::string_view::npos;
  return isNamedSo || (id >= kFirstSecret && id <= kLastSecret);
}

bool CanBeSet(ULONG type) {
  constexpr ULONG kTypes[] = {PT_UNICODE, PT_STRING8, PT_LONG, PT_I8, PT_BOOLEAN, PT_BINARY};
  return std::find(std::begin(kTypes), std::end(kTypes), type) != std::end(kTypes);
}

std::string HexTag(ULONG tag) {
  char text[16];
  std::snprintf(text, sizeof(text), "0x%08X", static_cast<unsigned>(tag));
  return text;
}

// A name tells the type of texts by its end, of other values by what stands behind it in the file.
std::string NameOfTag(ULONG tag) {
  const ULONG type = PROP_TYPE(tag);
  const std::string_view name = diag::FindPropName(static_cast<uint16_t>(PROP_ID(tag)));
  if (name.empty() || type == PT_I8 || !CanBeSet(type)) return HexTag(tag);
  const char* const end = type == PT_UNICODE ? "_W" : type == PT_STRING8 ? "_A" : "";
  return std::string(name) + end;
}

ULONG TypeOf(const Json& value) {
  if (value.is_boolean()) return PT_BOOLEAN;
  return value.is_number_integer() ? PT_LONG : PT_BINARY;
}

// 0 for a name that nobody knows.
ULONG TagOf(const std::string& name, const Json& value) {
  if (name.substr(0, 2) == "0x") return static_cast<ULONG>(std::strtoul(name.c_str(), nullptr, 16));
  const std::string end = name.size() > 2 ? name.substr(name.size() - 2) : "";
  const bool isText = value.is_string() && (end == "_W" || end == "_A");
  const ULONG id = diag::FindPropId(isText ? name.substr(0, name.size() - 2) : name);
  const ULONG type = !isText ? TypeOf(value) : end == "_W" ? PT_UNICODE : PT_STRING8;
  return id != 0 ? PROP_TAG(type, id) : 0;
}

std::string TextOfJson(const Json& value) {
  return value.is_string() ? value.get<std::string>() : value.dump();
}

}  // namespace

std::vector<Setting> ReadSettings(const Library& library, const std::string& profile,
                                  const Service& service) {
  const std::string doing = "read the settings of service '" + service.name + "'";
  const MAPIUID uid = UidOf(service);
  const ComPtr<IABServiceAdmin> admin = OpenServices(library, profile);
  ComPtr<IProfSect> section;
  Receive(section, admin->OpenProfileSection(&uid, nullptr, 0, section.Put()), doing);
  const Properties properties(library, section.Get(), nullptr, doing);
  std::vector<Setting> settings;
  for (const SPropValue& value : properties.view()) {
    const ULONG tag = value.ulPropTag;
    if (IsOfTheService(tag) || PROP_TYPE(tag) == PT_ERROR) continue;
    const bool isSecret = IsSecret(tag);
    settings.push_back({tag, NameOfTag(tag), isSecret ? Cell("(secret)", nullptr) : ValueCell(value),
                        isSecret, CanBeSet(PROP_TYPE(tag))});
  }
  return settings;
}

std::string AsAssignment(const std::string& name, const Json& value) {
  const ULONG tag = TagOf(name, value);
  std::string assignment = HexTag(tag) + "=" + TextOfJson(value);
  if (tag == 0)
    throw CommandError(kFailed, "there is no setting '" + name + "'; give its tag, such as 0x6600001F");
  if (!OwnedValue::Parse(assignment))
    throw CommandError(kFailed, "the setting '" + name + "' cannot be " + value.dump());
  return assignment;
}

}  // namespace orvctl
