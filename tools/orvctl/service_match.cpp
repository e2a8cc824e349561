#include "tools/orvctl/service_match.h"

#include <algorithm>

#include "formats/text_codec.h"

namespace orvctl {
namespace {

constexpr char kFile[] = "PR_ORV_BOOK_FILE_W", kBookUid[] = "PR_ORV_BOOK_UID";

// Paths of one file may differ in case, and hexadecimal digits may too.
bool IsSameText(const Json& a, const Json& b) {
  return a.is_string() && b.is_string() && formats::EqualsFolded(a.get<std::string>(), b.get<std::string>());
}

Json SettingsOf(const Library& library, const std::string& profile, const Service& service) {
  Json settings = Json::object();
  if (FAILED(service.status)) return settings;
  for (const Setting& each : ReadSettings(library, profile, service)) {
    if (!each.isSecret) settings[each.name] = each.value.json;
  }
  return settings;
}

// A service of the profile with what is stored of it.
struct Candidate {
  const Service* service;
  Json settings;
  bool isTaken = false;
};

// The service itself counts more than its book, that more than its name, and that more than any other settings.
constexpr int kItself = 1000, kItsBook = 100, kItsName = 50, kMostOfSettings = 40;

int CountEqual(const Json& wanted, const Json& stored) {
  int equal = 0;
  for (const auto& [name, value] : wanted.items()) equal += stored.value(name, Json()) == value ? 1 : 0;
  return std::min(equal, kMostOfSettings);
}

// Paths are compared as they are used: with variables replaced, from the current folder, whatever their case.
bool IsSameFile(const Json& a, const Json& b) {
  if (!a.is_string() || !b.is_string()) return false;
  const WideString one = ExpandedPath(a.get<std::string>()), other = ExpandedPath(b.get<std::string>());
  return CompareStringOrdinal(one.c_str(), -1, other.c_str(), -1, TRUE) == CSTR_EQUAL;
}

bool TellsBook(const Json& settings) {
  return settings.value(kFile, Json("")) != Json("") || settings.contains(kBookUid);
}

bool IsSameBook(const Json& a, const Json& b) {
  return IsSameFile(a.value(kFile, Json()), b.value(kFile, Json())) ||
         IsSameText(a.value(kBookUid, Json()), b.value(kBookUid, Json()));
}

Json SettingsIn(const Json& wanted) { return wanted.value("settings", Json::object()); }

bool IsItself(const Json& wanted, const Service& service) {
  return formats::EqualsFolded(wanted.value("uid", ""), ToHex(service.uid));
}

int Likeness(const Json& wanted, const Candidate& candidate) {
  const Service& service = *candidate.service;
  const Json settings = SettingsIn(wanted);
  return (IsItself(wanted, service) ? kItself : 0) +
         (IsSameBook(settings, candidate.settings) ? kItsBook : 0) +
         (wanted.value("displayName", "") == service.displayName ? kItsName : 0) +
         CountEqual(settings, candidate.settings);
}

// A service with a book of its own is taken for another one's only where nothing tells them apart: whoever uses the
// profile would lose that book.
bool MayBe(const Json& wanted, const Candidate& candidate) {
  if (FAILED(candidate.service->status)) return false;
  const Json settings = SettingsIn(wanted);
  if (IsItself(wanted, *candidate.service) || IsSameBook(settings, candidate.settings)) return true;
  if (!TellsBook(candidate.settings)) return true;
  if (TellsBook(settings)) return false;
  const std::string name = wanted.value("displayName", "");
  return name == candidate.service->displayName || (name.empty() && wanted.value("uid", "").empty());
}

// A service of the file and one of the profile, the more alike the better; the earlier one of equals.
struct Pair {
  size_t wanted = 0;
  Candidate* candidate = nullptr;
  int likeness = -1;
};

Pair FindBest(const Json& wanted, const std::vector<const Service*>& matched,
              std::vector<Candidate>& candidates) {
  Pair best;
  for (size_t i = 0; i < wanted.size(); ++i) {
    for (Candidate& each : candidates) {
      const bool isKind = each.service->name == wanted[i].value("service", "");
      if (matched[i] != nullptr || each.isTaken || !isKind || !MayBe(wanted[i], each)) continue;
      const int likeness = Likeness(wanted[i], each);
      if (likeness > best.likeness) best = {i, &each, likeness};
    }
  }
  return best;
}

}  // namespace

std::vector<const Service*> MatchServices(const Library& library, const std::string& profile,
                                          const Json& wanted, const std::vector<Service>& stored) {
  std::vector<const Service*> matched(wanted.size(), nullptr);
  std::vector<Candidate> candidates;
  for (const Service& each : stored) candidates.push_back({&each, SettingsOf(library, profile, each)});
  for (Pair best = FindBest(wanted, matched, candidates); best.candidate != nullptr;
       best = FindBest(wanted, matched, candidates)) {
    matched[best.wanted] = best.candidate->service;
    best.candidate->isTaken = true;
  }
  return matched;
}

const Service* FindWithFile(const Library& library, const std::string& profile,
                            const std::vector<Service>& stored, const std::string& name,
                            const std::string& file) {
  const WideString wanted = ExpandedPath(file);
  const auto found = std::find_if(stored.begin(), stored.end(), [&](const Service& each) {
    if (each.name != name || FAILED(each.status)) return false;
    const WideString known = ExpandedPath(SettingsOf(library, profile, each).value(kFile, ""));
    return CompareStringOrdinal(known.c_str(), -1, wanted.c_str(), -1, TRUE) == CSTR_EQUAL;
  });
  return found != stored.end() ? &*found : nullptr;
}

const Service* FindWithBook(const Library& library, const std::string& profile,
                            const std::vector<Service>& stored, const Service& service) {
  const Json wanted = SettingsOf(library, profile, service).value(kBookUid, Json());
  const auto found = std::find_if(stored.begin(), stored.end(), [&](const Service& each) {
    return each.uid != service.uid &&
           IsSameText(wanted, SettingsOf(library, profile, each).value(kBookUid, Json()));
  });
  return found != stored.end() ? &*found : nullptr;
}

}  // namespace orvctl
