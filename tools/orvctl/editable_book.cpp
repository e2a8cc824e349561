#include "tools/orvctl/editable_book.h"

#include <algorithm>

#include "tools/orvctl/container_choice.h"
#include "tools/orvctl/errors.h"
#include "tools/orvctl/new_contacts.h"
#include "tools/orvctl/table.h"

namespace orvctl {
namespace {

std::string NamesOfModifiable(const std::vector<Container>& containers) {
  std::string names;
  for (const Container& each : containers) {
    if (IsModifiable(each)) names += (names.empty() ? "" : ", ") + ("'" + each.name + "'");
  }
  return names;
}

Container ChooseNamed(const Book& book, const std::vector<Container>& containers, const std::string& wanted) {
  std::vector<Container> fit = ContainersCalled(book, containers, wanted);
  if (fit.empty()) throw CommandError(kNotFound, "there is no container '" + wanted + "'");
  if (fit.size() == 1) return std::move(fit.front());
  std::string ids;
  for (const Container& each : fit) ids += (ids.empty() ? "" : ", ") + ToHex(each.entryId);
  throw CommandError(kAmbiguous, "several containers are called '" + wanted + "': " + ids);
}

[[noreturn]] void Throw(const Obstacle& obstacle, const std::string& before, const std::string& behind) {
  throw CommandError(ExitCodeOf(obstacle.result), before + obstacle.text + behind, obstacle.result);
}

// Of books that could be changed were it not for their files the first one stands for all.
[[noreturn]] void ThrowNoneEditable(const Book& book, const std::vector<Container>& containers) {
  for (const Container& each : containers) {
    const Obstacle obstacle = ObstacleToChanges(book, each);
    if (!obstacle.text.empty()) Throw(obstacle, "no container of the profile can be changed: ", "");
  }
  throw CommandError(
      kFailed,
      "no container of the profile can be changed; 'orvctl service available' lists the services, "
      "'orvctl service add' adds a personal book");
}

// Behind a sentence, or behind half of one.
std::string Continued(const std::string& text, std::string more) {
  const bool isSentence = text.back() == '.';
  if (isSentence) more.front() = static_cast<char>(more.front() - 'a' + 'A');
  return (isSentence ? " " : "; ") + more;
}

// `way` begins with a small letter.
[[noreturn]] void ThrowNotEditable(const Book& book, const std::vector<Container>& containers,
                                   const Container& chosen, const std::string& way) {
  const std::string names = NamesOfModifiable(containers);
  const Obstacle obstacle = ObstacleToChanges(book, chosen);
  const std::string text = obstacle.text.empty() ? "'" + chosen.name + "' cannot be changed" : obstacle.text;
  const std::string others = names.empty() ? "" : Continued(text, way + ": " + names);
  if (!obstacle.text.empty()) Throw(obstacle, "", others);
  throw CommandError(kFailed, text + others);
}

Container ChooseEditable(const Book& book, const std::string& wanted) {
  const std::vector<Container> containers = book.ReadContainers();
  const auto chosen = wanted.empty() ? BookOfNewContacts(book, containers)
                                     : std::optional<Container>(ChooseNamed(book, containers, wanted));
  if (chosen && IsModifiable(*chosen)) return *chosen;
  if (!wanted.empty()) ThrowNotEditable(book, containers, *chosen, "these can be changed");
  if (!chosen || NamesOfModifiable(containers).empty()) ThrowNoneEditable(book, containers);
  ThrowNotEditable(book, containers, *chosen, "name another book with --container");
}

ComPtr<IMAPIProp> OpenWith(const Book& book, Bytes entryId, ULONG flags, const std::string& doing) {
  ULONG type = 0;
  ComPtr<IUnknown> opened;
  const HRESULT result = book.addressBook()->OpenEntry(static_cast<ULONG>(entryId.size()),
                                                       reinterpret_cast<ENTRYID*>(entryId.data()), nullptr,
                                                       flags, &type, opened.Put());
  Receive(opened, result, doing);
  ComPtr<IMAPIProp> object = Foreign(doing, [&] { return opened.As<IMAPIProp>(); });
  if (!object) throw CommandError(kFailed, "cannot " + doing + ": it has no properties");
  return object;
}

}  // namespace

ComPtr<IOrvContacts> OpenContacts(const Book& book, const Container& container, ULONG flags) {
  const std::string doing = "open the book '" + container.name + "'";
  const ComPtr<IMAPIProp> object = OpenWith(book, container.entryId, flags, doing);
  ComPtr<IOrvContacts> contacts;
  const HRESULT result = Foreign(doing, [&] {
    return object->OpenProperty(PR_ORV_CONTACTS, &IID_IOrvContacts, 0, flags, contacts.PutUnknown());
  });
  const bool isNone =
      result == MAPI_E_NO_SUPPORT || result == MAPI_E_INTERFACE_NOT_SUPPORTED || result == MAPI_E_NOT_FOUND;
  if (isNone) static_cast<void>(contacts.Detach());
  if (!isNone) Receive(contacts, result, doing);
  return contacts;
}

std::vector<Container> ContainersNamed(const Book& book, const std::string& wanted) {
  std::vector<Container> containers = book.ReadContainers();
  if (wanted.empty()) return containers;
  return {ChooseNamed(book, containers, wanted)};
}

Identity IdentityOf(const Library& library, const Book& book, const Bytes& entryId) {
  const std::string doing = "read which entry it is";
  const ComPtr<IMAPIProp> object = OpenWith(book, entryId, 0, doing);
  TagArray tags{PR_ORV_CONTACT_UID_W, PR_TRANSMITABLE_DISPLAY_NAME_W, PR_DISPLAY_NAME_W,
                PR_ORV_CONTACT_ENTRYID};
  const Properties properties(library, object.Get(), tags.Get(), doing);
  const ValueView values = properties.view();
  const std::string plain = TextOf(values, PR_TRANSMITABLE_DISPLAY_NAME_W);
  return {TextOf(values, PR_ORV_CONTACT_UID_W), plain.empty() ? TextOf(values, PR_DISPLAY_NAME_W) : plain,
          BytesOf(values, PR_ORV_CONTACT_ENTRYID)};
}

bool AreOneContact(const Library& library, const Book& book, const std::vector<Match>& rows) {
  const std::string first = IdentityOf(library, book, rows.front().entryId).uid;
  return !first.empty() && std::all_of(rows.begin(), rows.end(), [&](const Match& each) {
    return IdentityOf(library, book, each.entryId).uid == first;
  });
}

EditableBook::EditableBook(const Library& library, const Book& book, const std::string& wanted)
    : library_(library), book_(book), container_(ChooseEditable(book, wanted)) {
  const std::string doing = "open '" + container_.name + "' for changes";
  const ComPtr<IMAPIProp> opened = OpenWith(book, container_.entryId, MAPI_MODIFY, doing);
  object_ = Foreign(doing, [&] { return opened.As<IABContainer>(); });
  if (!object_) throw CommandError(kFailed, "cannot " + doing + ": it is no container");
}

ComPtr<IMAPIProp> EditableBook::OpenForChange(const Match& match) const {
  return OpenWith(book_, match.entryId, MAPI_MODIFY, "open '" + match.name + "' for changes");
}

std::vector<Match> EditableBook::Choose(const std::string& named) const {
  if (const auto id = AsEntryId(named)) {
    Match match;
    match.entryId = *id;
    match.name = named;
    const ComPtr<IMAPIProp> object = OpenWith(book_, *id, 0, "open '" + named + "'");
    TagArray tags{PR_DISPLAY_NAME_W, PR_OBJECT_TYPE, PR_EMAIL_ADDRESS_W};
    const Properties properties(library_, object.Get(), tags.Get(), "read the properties of '" + named + "'");
    const std::string name = TextOf(properties.view(), PR_DISPLAY_NAME_W);
    if (!name.empty()) match.name = name;
    match.type = properties.view().Number(PR_OBJECT_TYPE);
    match.address = TextOf(properties.view(), PR_EMAIL_ADDRESS_W);
    return {match};
  }
  std::vector<Match> matches = FindMatches(library_, book_, container_, Fit::kWhole, named, kMostShown);
  if (matches.empty())
    throw CommandError(kNotFound, "there is no entry called exactly '" + named + "' in '" + container_.name +
                                      "'; 'orvctl book find' finds parts of names");
  if (matches.size() == 1) return matches;
  if (!AreOneContact(library_, book_, matches)) ThrowAmbiguous(named, matches);
  Identity identity = IdentityOf(matches.front().entryId);
  if (identity.whole.empty()) return matches;
  matches.resize(1);
  matches.front().entryId = std::move(identity.whole);
  matches.front().name = std::move(identity.plain);
  return matches;
}

std::vector<Match> EditableBook::ChooseAll(const std::vector<std::string>& named) const {
  std::vector<Match> all;
  for (const std::string& each : named) {
    for (Match& match : Choose(each)) {
      const bool isKnown = std::any_of(all.begin(), all.end(),
                                       [&](const Match& known) { return known.entryId == match.entryId; });
      if (!isKnown) all.push_back(std::move(match));
    }
  }
  return all;
}

EntryList::EntryList(std::vector<Match>& matches) {
  for (Match& match : matches)
    ids_.push_back({static_cast<ULONG>(match.entryId.size()), match.entryId.data()});
  list_ = {static_cast<ULONG>(ids_.size()), ids_.data()};
}

}  // namespace orvctl
