// Makes a profile what a file of 'profile export' says. What is so already is left alone, so that a second time changes
// nothing; what the file does not name stays.
#include <algorithm>
#include <map>

#include "tools/orvctl/book_settings.h"
#include "tools/orvctl/commands.h"
#include "tools/orvctl/container_choice.h"
#include "tools/orvctl/errors.h"
#include "tools/orvctl/new_contacts.h"
#include "tools/orvctl/profile_name.h"
#include "tools/orvctl/profile_state.h"
#include "tools/orvctl/service_choice.h"
#include "tools/orvctl/service_match.h"
#include "tools/orvctl/suggestion.h"
#include "tools/orvctl/text_file.h"

namespace orvctl {
namespace {

[[noreturn]] void ThrowNoProfileFile(const std::string& file, const std::string& why) {
  throw CommandError(kDamaged, "'" + file + "' is no file of 'orvctl profile export': " + why);
}

// A name that is mistyped would be left out without a word.
void RefuseUnknown(const std::string& file, const Json& object, const std::vector<std::string>& known) {
  if (!object.is_object()) ThrowNoProfileFile(file, object.dump() + " stands where an object has to");
  for (const auto& [name, value] : object.items()) {
    if (std::find(known.begin(), known.end(), name) != known.end()) continue;
    const std::string closest = ClosestWord(name, known);
    ThrowNoProfileFile(file, "nothing is called \"" + name + "\" in it" +
                                 (closest.empty() ? "" : "; did you mean \"" + closest + "\"?"));
  }
}

void RefuseUnknownMembers(const std::string& file, const Json& described) {
  RefuseUnknown(
      file, described,
      {"format", "profile", "default", "services", "defaultContainer", "newContacts", "searchPath"});
  for (const Json& service : described.value("services", Json::array()))
    RefuseUnknown(file, service, {"service", "library", "displayName", "uid", "settings"});
}

Json ReadProfileFile(const std::string& file) {
  const Json described = Json::parse(ReadTextFile(file), nullptr, false);
  if (!described.is_object()) ThrowNoProfileFile(file, "it holds no JSON object");
  if (described.value("format", Json()) != kProfileFormat)
    ThrowNoProfileFile(file, std::string("its \"format\" is not \"") + kProfileFormat + "\"");
  const bool hasName = described.contains("profile") && described["profile"].is_string();
  const bool hasServices = !described.contains("services") || described["services"].is_array();
  if (!hasName || !hasServices)
    ThrowNoProfileFile(file, "\"profile\" has to be a text and \"services\" a list");
  RefuseUnknownMembers(file, described);
  return described;
}

// What the profile is, step by step brought to what it shall be.
class Applying {
 public:
  Applying(const Library& library, const Options& options, const Json& wanted)
      : library_(library),
        options_(options),
        wanted_(wanted),
        profile_(wanted["profile"].get<std::string>()) {}

  void Run() {
    const Json services = wanted_.value("services", Json::array());
    RefuseUnknownSettings(services);
    isNew_ = !HasProfile(library_, profile_);
    if (!isNew_) before_ = ReadServices(library_, profile_);
    const std::vector<const Service*> matched = MatchServices(library_, profile_, services, before_);
    if (!isNew_ && KeepsBooks(services, matched)) RefuseUnknownContainers();
    if (isNew_)
      Do("created the profile", [this] { static_cast<void>(CreateProfile(library_, ForProfile())); });
    ApplyServices(services, matched);
    if (HasBookSettings()) ApplyBook();
    // Last, so that a profile which is taken back has not become the default.
    if (wanted_.value("default", false)) ApplyDefault();
  }

  // Nothing but what the address book keeps.
  std::vector<Message> RunBook() && {
    mayLack_ = true;
    ApplyBook();
    return std::move(messages_);
  }

  Report Told() && {
    Report report = Report::Of({{{"change", "Change"}}, {}}, Sentence());
    for (const std::string& change : changes_) report.listing.rows.push_back({change});
    report.messages = std::move(messages_);
    report.data = {{"result", Sentence()},
                   {"profile", profile_},
                   {"changed", !changes_.empty()},
                   {"dryRun", options_.dryRun},
                   {"changes", changes_}};
    return report;
  }

  // Undoes what a failure leaves of a profile that was not there before; tells what stays done of another.
  std::string TakeBack() const {
    if (options_.dryRun || changes_.empty()) return "; nothing was changed";
    if (isNew_) {
      static_cast<void>(DeleteProfile(library_, ForProfile()));
      return "; the new " + QuotedProfile(profile_) + " was taken back";
    }
    std::string done;
    for (const std::string& change : changes_) done += (done.empty() ? "" : "; ") + change;
    return "; this was done before: " + done;
  }

 private:
  Options ForProfile() const {
    Options options;
    options.profile = profile_;
    return options;
  }

  std::string Sentence() const {
    const std::string what = QuotedProfile(profile_);
    if (changes_.empty()) return "Nothing to change: " + what + " is what the file says.";
    return options_.dryRun ? "Would change " + what + "." : "Changed " + what + ".";
  }

  template <class Action>
  void Do(const std::string& change, Action action) {
    if (!options_.dryRun) action();
    changes_.push_back(options_.dryRun ? "would have " + change : change);
  }

  static bool IsFile(const std::string& name, const Json& value) {
    return name == kFileSetting && value.is_string();
  }

  static void RefuseUnknownSettings(const Json& services) {
    for (const Json& service : services) {
      const Json settings = service.value("settings", Json::object());
      for (const auto& [name, value] : settings.items()) {
        if (!IsFile(name, value)) static_cast<void>(AsAssignment(name, value));
      }
    }
  }

  // What is added or gets another file brings containers that nobody knows before.
  bool KeepsBooks(const Json& services, const std::vector<const Service*>& matched) const {
    for (size_t i = 0; i < services.size(); ++i) {
      if (matched[i] == nullptr) return false;
      const Json settings = services[i].value("settings", Json::object());
      const bool isKept =
          !settings.contains(kFileSetting) ||
          IsStored(ReadSettings(library_, profile_, *matched[i]), kFileSetting, settings[kFileSetting]);
      if (!isKept) return false;
    }
    return true;
  }

  void RefuseUnknownContainers() {
    if (!HasBookSettings()) return;
    const Book book(library_, profile_);
    const std::vector<Container> containers = book.ReadContainers();
    for (const char* const key : {"defaultContainer", "newContacts"}) {
      const Json wanted = wanted_.value(key, Json());
      if (wanted.is_object()) static_cast<void>(Choose(book, containers, wanted));
    }
    for (const Json& each : wanted_.value("searchPath", Json::array()))
      static_cast<void>(Choose(book, containers, each));
  }

  void ApplyServices(const Json& services, const std::vector<const Service*>& matched) {
    for (size_t i = 0; i < services.size(); ++i) ApplyService(services[i], matched[i]);
    TellOfOthers(matched);
  }

  void ApplyService(const Json& service, const Service* stored) {
    if (stored == nullptr) {
      AddMissing(service.value("service", ""), service);
      return;
    }
    ApplyDisplayName(*stored, service.value("displayName", ""));
    ApplySettings(*stored, service.value("settings", Json::object()));
  }

  void AddMissing(const std::string& name, const Json& service) {
    const Json settings = service.value("settings", Json::object());
    Options options = ForProfile();
    options.service = name;
    options.displayName = service.value("displayName", "");
    if (settings.contains(kFileSetting)) options.config = settings[kFileSetting].get<std::string>();
    std::string newContacts;
    Do("added service '" + name + "'", [&] {
      const Report added = AddService(library_, options);
      const Services services(library_, profile_);
      ApplySettings(services.Find(added.data.value("uid", name)), settings);
      newContacts = added.data.value("newContacts", "");
    });
    if (!newContacts.empty()) changes_.back() += "; new contacts go to '" + newContacts + "'";
  }

  void ApplyDisplayName(const Service& service, const std::string& wanted) {
    if (wanted.empty() || wanted == service.displayName) return;
    Options options = ForProfile();
    options.service = ToHex(service.uid);
    options.properties.push_back(AsAssignment("PR_DISPLAY_NAME_W", wanted));
    Do("named service '" + service.name + "' '" + wanted + "'",
       [&] { static_cast<void>(SetService(library_, options)); });
  }

  // The path of the file is handed to the service, which may refuse it; other settings are written as they are.
  void ApplySettings(const Service& service, const Json& settings) {
    const std::vector<Setting> stored = ReadSettings(library_, profile_, service);
    Options options = ForProfile();
    options.service = ToHex(service.uid);
    std::string names;
    for (const auto& [name, value] : settings.items()) {
      if (IsStored(stored, name, value)) continue;
      names.append(names.empty() ? "" : ", ").append(name);
      if (IsFile(name, value)) {
        options.config = value.get<std::string>();
      } else {
        options.properties.push_back(AsAssignment(name, value));
      }
    }
    if (names.empty()) return;
    Do("set " + names + " of service '" + service.name + "'",
       [&] { static_cast<void>(SetService(library_, options)); });
  }

  static bool IsStored(const std::vector<Setting>& stored, const std::string& name, const Json& value) {
    return std::any_of(stored.begin(), stored.end(), [&](const Setting& each) {
      return each.name == name && !each.isSecret && each.value.json == value;
    });
  }

  void TellOfOthers(const std::vector<const Service*>& matched) {
    std::map<std::string, size_t> left;
    for (const Service& service : before_) {
      if (std::find(matched.begin(), matched.end(), &service) == matched.end()) ++left[service.name];
    }
    for (const auto& [name, count] : left) {
      messages_.push_back({std::to_string(count) + " of service '" + name +
                           "' that the file does not name stay in " + QuotedProfile(profile_)});
    }
  }

  void ApplyDefault() {
    for (const Profile& each : ReadProfiles(library_)) {
      if (each.name == profile_ && each.isDefault) return;
    }
    Do("made it the default profile", [this] { static_cast<void>(DefaultProfile(library_, ForProfile())); });
  }

  bool HasBookSettings() const {
    return wanted_.value("defaultContainer", Json()).is_object() ||
           wanted_.value("newContacts", Json()).is_object() || !wanted_.value("searchPath", Json()).empty();
  }

  // Nobody can log on to what a dry run did not make.
  void ApplyBook() {
    if (options_.dryRun && !changes_.empty()) {
      messages_.push_back(
          {"the default container and the search path can only be compared once the rest is done"});
      return;
    }
    const Book book(library_, profile_);
    const std::vector<Container> containers = book.ReadContainers();
    ApplyFirst(book, containers);
    ApplyNewContacts(book, containers);
    ApplyPath(book, containers);
  }

  void ApplyFirst(const Book& book, const std::vector<Container>& containers) {
    const Json wanted = wanted_.value("defaultContainer", Json());
    const auto container = wanted.is_object() ? Choose(book, containers, wanted) : std::nullopt;
    if (!container) return;
    const auto now = DefaultContainer(library_, book, containers);
    if (now && now->entryId == container->entryId) return;
    Do("made '" + container->name + "' the default container",
       [&] { SetDefaultContainer(book, *container); });
  }

  void ApplyNewContacts(const Book& book, const std::vector<Container>& containers) {
    const Json wanted = wanted_.value("newContacts", Json());
    const auto container = wanted.is_object() ? Choose(book, containers, wanted) : std::nullopt;
    if (!container) return;
    const auto now = StoredBook(book, containers);
    if (now && now->entryId == container->entryId) return;
    Do("let new contacts go to '" + container->name + "'", [&] { SetStoredBook(book, *container); });
  }

  void ApplyPath(const Book& book, const std::vector<Container>& containers) {
    std::vector<Container> path;
    for (const Json& each : wanted_.value("searchPath", Json::array())) {
      const auto container = Choose(book, containers, each);
      if (container) path.push_back(*container);
    }
    const std::vector<Container> now = SearchPath(library_, book, containers);
    const auto isSame = [](const Container& a, const Container& b) { return a.entryId == b.entryId; };
    if (path.empty() || std::equal(path.begin(), path.end(), now.begin(), now.end(), isSame)) return;
    Do("set the search path", [&] { SetSearchPath(library_, book, path); });
  }

  // By identifier, else by name: another computer's identifiers may differ. A copy of a profile goes on without it.
  std::optional<Container> Choose(const Book& book, const std::vector<Container>& containers,
                                  const Json& wanted) {
    const std::string id = wanted.value("id", ""), name = wanted.value("name", "");
    const auto byId = std::find_if(containers.begin(), containers.end(),
                                   [&](const Container& each) { return ToHex(each.entryId) == id; });
    if (byId != containers.end()) return *byId;
    const std::vector<Container> called = ContainersCalled(book, containers, name);
    if (!called.empty()) return called.front();
    const std::string text = "there is no container '" + name + "' in " + QuotedProfile(profile_);
    if (!mayLack_) throw CommandError(kNotFound, text);
    messages_.push_back({text});
    return std::nullopt;
  }

  static constexpr char kFileSetting[] = "PR_ORV_BOOK_FILE_W";

  const Library& library_;
  const Options& options_;
  const Json& wanted_;
  const std::string profile_;
  bool isNew_ = false;
  bool mayLack_ = false;  // a container that there is not is no failure
  std::vector<Service> before_;
  std::vector<std::string> changes_;
  std::vector<Message> messages_;
};

}  // namespace

void ApplyBookSettings(const Library& library, const std::string& profile, const Json& settings,
                       std::vector<Message>& messages) {
  Json wanted = settings;
  wanted["profile"] = profile;
  const Options options;
  for (Message& message : Applying(library, options, wanted).RunBook())
    messages.push_back(std::move(message));
}

Report ApplyProfile(const Library& library, const Options& options) {
  const Json wanted = ReadProfileFile(options.file);
  const std::string name = wanted["profile"].get<std::string>();
  const std::string why = WhyBadProfileName(name);
  if (!why.empty()) throw CommandError(kUsage, why);
  Applying applying(library, options, wanted);
  try {
    applying.Run();
    return std::move(applying).Told();
  } catch (const Json::exception& error) {
    // The parser's own number in front of its words says nothing to anybody.
    const std::string words = error.what();
    ThrowNoProfileFile(options.file, words.substr(words.find(' ') + 1) + applying.TakeBack());
  } catch (const CommandError& error) {
    throw error.Extended(applying.TakeBack());
  }
}

}  // namespace orvctl
