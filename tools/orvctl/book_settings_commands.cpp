// Commands on what the address book keeps for a profile.
#include <algorithm>

#include "tools/orvctl/book_settings.h"
#include "tools/orvctl/commands.h"
#include "tools/orvctl/editable_book.h"
#include "tools/orvctl/errors.h"

namespace orvctl {
namespace {

Listing ContainerListing(const std::vector<Container>& containers) {
  Listing listing{{{"name", "Container"}, {"flags", "Flags"}, {"id"}}, {}};
  for (const Container& each : containers)
    listing.rows.push_back(
        {each.name, Cell(ContainerFlagNames(each.flags), each.flags), ToHex(each.entryId)});
  return listing;
}

Container ChooseOne(const Book& book, const std::string& wanted) {
  return ContainersNamed(book, wanted).front();
}

std::string NamesOf(const std::vector<Container>& containers) {
  std::string names;
  for (const Container& each : containers) names += (names.empty() ? "'" : ", '") + each.name + "'";
  return names;
}

}  // namespace

Report DefaultBook(const Library& library, const Options& options) {
  const Book book(library, options.profile);
  if (options.containers.empty()) {
    const auto now = DefaultContainer(library, book, book.ReadContainers());
    return Report::Of(ContainerListing(now ? std::vector<Container>{*now} : std::vector<Container>()),
                      "There is no default container.");
  }
  const Container wanted = ChooseOne(book, options.containers.front());
  const auto before = DefaultContainer(library, book, book.ReadContainers());
  const bool isOther = !before || before->entryId != wanted.entryId;
  const Json data{{"name", wanted.name}, {"id", ToHex(wanted.entryId)}, {"changed", isOther}};
  RequireRecipients(wanted, "make '" + wanted.name + "' the default container");
  if (options.dryRun) return Report::Done("Would make '" + wanted.name + "' the default container.", data);
  SetDefaultContainer(book, wanted);
  return Report::Done("The default container is now '" + wanted.name + "'." +
                          (IsModifiable(wanted) ? " New contacts go there." : ""),
                      data);
}

Report PathOfBooks(const Library& library, const Options& options) {
  const Book book(library, options.profile);
  if (options.containers.empty())
    return Report::Of(ContainerListing(SearchPath(library, book, book.ReadContainers())),
                      "The search path is empty.");
  std::vector<Container> path;
  Json names = Json::array();
  const auto isSame = [](const Container& a, const Container& b) { return a.entryId == b.entryId; };
  for (const std::string& wanted : options.containers) {
    const Container chosen = ChooseOne(book, wanted);
    RequireRecipients(chosen, "search '" + chosen.name + "'");
    const auto isChosen = [&](const Container& each) { return isSame(each, chosen); };
    if (std::any_of(path.begin(), path.end(), isChosen)) continue;
    path.push_back(chosen);
    names.push_back(chosen.name);
  }
  const std::vector<Container> before = SearchPath(library, book, book.ReadContainers());
  const bool isOther = !std::equal(path.begin(), path.end(), before.begin(), before.end(), isSame);
  const Json data{{"path", names}, {"changed", isOther}};
  if (options.dryRun) return Report::Done("Would search " + NamesOf(path) + ".", data);
  SetSearchPath(library, book, path);
  return Report::Done("Names are looked up in " + NamesOf(path) + ".", data);
}

}  // namespace orvctl
