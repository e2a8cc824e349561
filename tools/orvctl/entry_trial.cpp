#include "tools/orvctl/entry_trial.h"

#include <objbase.h>

#include <cstring>

#include "tools/orvctl/dependencies.h"
#include "tools/orvctl/errors.h"
#include "tools/orvctl/lone_objects.h"

namespace orvctl {
namespace {

// An entry function may ask a server.
constexpr TimeLimit kEntryLimit{std::chrono::seconds(60), std::chrono::seconds(120)};

constexpr char kThrown[] = "thrown";

SPropValue TextValue(ULONG tag, WideString& text) {
  SPropValue value{};
  value.ulPropTag = tag;
  value.Value.lpszW = text.data();
  return value;
}

// What the library would have stored of a service that is about to be created.
ComPtr<IProfSect> NewSection(const Library& library, const Json& arguments) {
  const auto text = [&](const char* key) { return ToWide(arguments.value(key, "")); };
  WideString name = text("name"), displayName = text("displayName"), providerName = text("providerName"),
             file = text("provider");
  std::string entry = arguments.value("entry", "");
  GUID uid{};
  Check(CoCreateGuid(&uid), "make a UID");
  SPropValue values[7] = {TextValue(PR_SERVICE_NAME_W, name), TextValue(PR_DISPLAY_NAME_W, displayName),
                          TextValue(PR_PROVIDER_DISPLAY_W, providerName),
                          TextValue(PR_SERVICE_DLL_NAME_W, file)};
  values[4].ulPropTag = PR_SERVICE_ENTRY_NAME;
  values[4].Value.lpszA = entry.data();
  values[5].ulPropTag = PR_SERVICE_UID;
  values[5].Value.bin = {sizeof(uid), reinterpret_cast<LPBYTE>(&uid)};
  values[6].ulPropTag = PR_RESOURCE_FLAGS;
  values[6].Value.ul = arguments.value("flags", 0u);
  return MakeSection(library, ValueView(values, std::size(values)));
}

class Caller {
 public:
  Caller(const Json& arguments, HostLink& link)
      : arguments_(arguments), link_(link), library_(arguments.value("library", "")) {}

  void Run() {
    entry_ = Load();
    // What keeps it from being loaded is told by who looks at the file.
    if (entry_ == nullptr) return;
    const std::string profile = arguments_.value("profile", "");
    if (profile.empty()) return Create(arguments_.value("config", ""));
    link_.Step("reading the service's settings");
    section_ = CopySection(library_, profile, FromHex(arguments_.value("uid", "")).value_or(Bytes()));
    Configure(arguments_.value("config", ""));
  }

 private:
  LPORVSERVICEENTRY Load() {
    const std::string name = arguments_.value("provider", "");
    link_.Step("loading " + name);
    // It goes with the process.
    const HMODULE module = LoadAsProvider(OwnFolder() + ToWide(name));
    if (module == nullptr) return nullptr;
    return reinterpret_cast<LPORVSERVICEENTRY>(
        reinterpret_cast<void*>(GetProcAddress(module, arguments_.value("entry", "").c_str())));
  }

  void Create(const std::string& config) {
    section_ = NewSection(library_, arguments_);
    if (!Call("MSG_SERVICE_CREATE", MSG_SERVICE_CREATE, 0, nullptr) || config.empty()) return;
    WideString text = ToWide(config);
    SPropValue value = TextValue(0, text);  // without a tag, as the library hands it over
    Call("ORV_SERVICE_EXTRA_CONFIG", ORV_SERVICE_EXTRA_CONFIG, 0, &value);
  }

  void Configure(const std::string& path) {
    WideString text = ToWide(path);
    SPropValue value = TextValue(PR_ORV_BOOK_FILE_W, text);
    Call("MSG_SERVICE_CONFIGURE", MSG_SERVICE_CONFIGURE, SERVICE_UI_ALLOWED, &value);
  }

  // True where it answers with a success.
  bool Call(const char* name, ULONG context, ULONG flags, LPSPropValue value) {
    link_.Step(name);
    try {
      return SUCCEEDED(entry_(nullptr, 0, MAPI_UNICODE | flags, context, value != nullptr ? 1 : 0, value,
                              section_.Get(), support_.get(), 0));
    } catch (const std::bad_alloc&) {
      return false;
    } catch (...) {
      link_.Send({{kThrown, name}});
      return false;
    }
  }

  const Json& arguments_;
  HostLink& link_;
  const Library library_;
  ComPtr<IProfSect> section_;
  orv::sdk::Owned<LoneSupport> support_{new LoneSupport(library_.buffers())};
  LPORVSERVICEENTRY entry_ = nullptr;
};

}  // namespace

void CallEntryAlone(const Json& arguments, HostLink& link) { Caller(arguments, link).Run(); }

std::string EntryTrial::Run(const Library& library) const {
  const Json arguments{{"library", library.fileName()},
                       {"profile", profile},
                       {"uid", ToHex(service.uid)},
                       {"name", service.name},
                       {"displayName", service.displayName},
                       {"providerName", service.provider},
                       {"provider", service.library},
                       {"entry", service.entryName},
                       {"flags", service.flags},
                       {"config", config.value_or("")}};
  std::string thrown;
  const HostedOutcome outcome = RunHosted(kEntryTask, arguments, kEntryLimit,
                                          [&](const Json& line) { thrown = line.value(kThrown, thrown); });
  const std::string whose = ", its entry function '" + service.entryName + "' of " + service.library;
  if (!thrown.empty()) return whose + " raised an exception at: " + thrown;
  const bool isBroken = outcome.end == HostedOutcome::End::kCrashed ||
                        outcome.end == HostedOutcome::End::kTimedOut ||
                        (outcome.end == HostedOutcome::End::kEnded && outcome.detail.empty());
  return isBroken ? whose + " " + outcome.Describe() : std::string();
}

}  // namespace orvctl
