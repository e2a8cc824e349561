#include "tools/orvctl/container_choice.h"

#include <algorithm>
#include <iterator>

#include "tools/orvctl/book_copies.h"
#include "tools/orvctl/editable_book.h"
#include "tools/orvctl/errors.h"
#include "tools/orvctl/table.h"

namespace orvctl {
namespace {

bool HoldsEntries(const Container& container) { return (container.flags & AB_RECIPIENTS) != 0; }

template <class Fits>
std::vector<Container> Those(const std::vector<Container>& containers, Fits fits) {
  std::vector<Container> chosen;
  std::copy_if(containers.begin(), containers.end(), std::back_inserter(chosen), fits);
  return chosen;
}

// What a book in a file says of itself; nothing where the container has none.
std::optional<OrvBookHealth> AskHealth(const Book& book, const Container& container) {
  OrvBookHealth health = {};
  health.cbSize = sizeof(health);
  const ComPtr<IOrvContacts> contacts = OpenContacts(book, container, 0);
  if (!contacts) return std::nullopt;
  const std::string doing = "look at the book of '" + container.name + "'";
  if (FAILED(Foreign(doing, [&] { return contacts->GetHealth(0, &health); }))) return std::nullopt;
  return health;
}

std::string SentenceOf(const OrvBookHealth& health) {
  const std::basic_string_view<WCHAR> text(health.szText, std::size(health.szText));
  return ToUtf8(WideString(text.substr(0, text.find(L'\0'))).c_str());
}

// What cannot be asked tells nothing; the failure that led here is told in any case.
template <class Tell>
auto Told(Tell tell) -> decltype(tell()) {
  try {
    return tell();
  } catch (const CommandError&) {
    return {};
  }
}

}  // namespace

std::vector<Container> ContainersCalled(const Book& book, const std::vector<Container>& containers,
                                        const std::string& wanted) {
  const std::optional<Bytes> id = AsEntryId(wanted);
  std::vector<Container> fit = Those(
      containers, [&](const Container& each) { return each.name == wanted || (id && each.entryId == *id); });
  std::vector<Container> holding = Those(fit, HoldsEntries);
  // Only the container itself knows its plain name.
  if (holding.empty() && !id)
    holding = Those(containers, [&](const Container& each) {
      return HoldsEntries(each) && PlainNameOf(book, each) == wanted;
    });
  return holding.empty() ? fit : holding;
}

std::string PlainNameOf(const Book& book, const Container& container) {
  const std::string plain = Told([&] {
    const ComPtr<IMAPIProp> object = book.Open(container.entryId, container.name);
    TagArray tags{PR_TRANSMITABLE_DISPLAY_NAME_W};
    const Properties properties(book.library(), object.Get(), tags.Get(), "read the plain name");
    return TextOf(properties.view(), PR_TRANSMITABLE_DISPLAY_NAME_W);
  });
  return plain.empty() ? container.name : plain;
}

std::vector<Container> WithThoseBelow(const std::vector<Container>& containers, const Container& container) {
  std::vector<Container> all{container};
  const auto at = std::find_if(containers.begin(), containers.end(),
                               [&](const Container& each) { return each.entryId == container.entryId; });
  if (HoldsEntries(container) || at == containers.end()) return all;
  const auto end =
      std::find_if(at + 1, containers.end(), [&](const Container& each) { return each.depth <= at->depth; });
  all.insert(all.end(), at + 1, end);
  return all;
}

std::string WhyUnreadable(const Book& book, const Container& container) {
  return Told([&]() -> std::string {
    const std::optional<OrvBookHealth> health = AskHealth(book, container);
    return health && FAILED(health->hrStatus) ? SentenceOf(*health) : "";
  });
}

Obstacle ObstacleToChanges(const Book& book, const Container& container) {
  return Told([&]() -> Obstacle {
    const ReadingState state = book.ReadState(container);
    const std::optional<OrvBookHealth> health = AskHealth(book, container);
    if (!health) return {};
    const HRESULT status = health->hrStatus;
    const std::string unread = "'" + container.name + "' cannot be read" +
                               (state.file.empty() ? "" : " (its file is " + state.file + ")") + ". " +
                               SentenceOf(*health);
    if (FAILED(status)) return {WithWayBack(unread, status, state.file), status};
    if (health->fReadOnly == 0) return {};
    return {"'" + container.name + "' is read-only" + (state.file.empty() ? "" : ": its file " + state.file) +
                " may not be written; allow it to be written, or copy it and set the copy with "
                "'orvctl service set --config'",
            MAPI_E_NO_ACCESS};
  });
}

}  // namespace orvctl
