#include "tools/orvctl/new_contacts.h"

#include <algorithm>

#include "tools/orvctl/administration.h"
#include "tools/orvctl/book_settings.h"
#include "tools/orvctl/container_choice.h"
#include "tools/orvctl/editable_book.h"
#include "tools/orvctl/errors.h"

namespace orvctl {
namespace {

// The address book itself answers with the first container that fits where what is stored cannot be changed.
std::optional<Container> FindStored(const Book& book, const std::vector<Container>& containers, ULONG tag) {
  const Bytes id = StoredId(book.library(), ProfileName(book.library(), book.profile()), tag);
  const auto found = std::find_if(containers.begin(), containers.end(),
                                  [&](const Container& each) { return each.entryId == id; });
  if (id.empty() || found == containers.end()) return std::nullopt;
  return *found;
}

bool IsPersonal(const Book& book, const Container& container) {
  return IsModifiable(container) && OpenContacts(book, container, 0);
}

bool IsUnreadable(const Book& book, const Container& container) {
  if (IsModifiable(container)) return false;
  const Obstacle obstacle = ObstacleToChanges(book, container);
  return !obstacle.text.empty() && obstacle.result != MAPI_E_NO_ACCESS;
}

template <class Fits>
std::optional<Container> FirstThat(const std::vector<Container>& containers, Fits fits) {
  const auto found = std::find_if(containers.begin(), containers.end(), fits);
  if (found == containers.end()) return std::nullopt;
  return *found;
}

// As the default one, and as the one that is shown first where none is.
void Store(const Book& book, const std::vector<Container>& containers, const Container& chosen) {
  const bool hasShown = FindStored(book, containers, PR_AB_DEFAULT_DIR).has_value();
  if (!StoredBook(book, containers)) SetStoredBook(book, chosen);
  if (!hasShown) SetDefaultContainer(book, chosen);
}

}  // namespace

std::optional<Container> StoredBook(const Book& book, const std::vector<Container>& containers) {
  return FindStored(book, containers, PR_AB_DEFAULT_PAB);
}

std::optional<Container> BookOfNewContacts(const Book& book, const std::vector<Container>& containers) {
  if (auto stored = StoredBook(book, containers)) return stored;
  const auto shown = FindStored(book, containers, PR_AB_DEFAULT_DIR);
  if (shown && (IsPersonal(book, *shown) || !ObstacleToChanges(book, *shown).text.empty())) return shown;
  auto found = FirstThat(containers, [&](const Container& each) { return IsUnreadable(book, each); });
  if (!found) found = FirstThat(containers, [&](const Container& each) { return IsPersonal(book, each); });
  return found ? found : FirstThat(containers, IsModifiable);
}

void SetStoredBook(const Book& book, const Container& container) {
  Bytes id = container.entryId;
  const HRESULT result =
      book.addressBook()->SetPAB(static_cast<ULONG>(id.size()), reinterpret_cast<ENTRYID*>(id.data()));
  Check(result, "let new contacts go to '" + container.name + "'");
}

NewContacts::NewContacts(const Library& library, const std::string& profile)
    : library_(library), profile_(profile) {
  try {
    const Book book(library, profile);
    before_ = BookOfNewContacts(book, book.ReadContainers());
  } catch (const CommandError&) {
    // Afterwards the same failure is told.
  }
}

void NewContacts::Keep(Report& report) const {
  try {
    Settle(report);
  } catch (const CommandError& error) {
    report.Warn(std::string("nobody knows yet where new contacts go: ") + error.what());
  }
}

void NewContacts::Settle(Report& report) const {
  const Book book(library_, profile_);
  const std::vector<Container> containers = book.ReadContainers();
  const bool keeps = before_ && IsModifiable(*before_);
  if (keeps) Store(book, containers, *before_);
  const std::optional<Container> now = keeps ? before_ : BookOfNewContacts(book, containers);
  if (!now) return;
  const bool isSame = before_ && before_->entryId == now->entryId;
  report.data["newContacts"] = now->name;
  report.sentence += std::string(" New contacts ") + (isSame ? "still " : "") + "go to '" + now->name + "'.";
  if (!IsModifiable(*now))
    report.Warn("until that is mended new contacts need --container: " + ObstacleToChanges(book, *now).text);
}

}  // namespace orvctl
