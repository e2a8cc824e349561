// Commands on distribution lists.
#include <algorithm>
#include <set>

#include "diag/names.h"
#include "tools/orvctl/commands.h"
#include "tools/orvctl/contact_fields.h"
#include "tools/orvctl/errors.h"
#include "tools/orvctl/new_contacts.h"
#include "tools/orvctl/new_entry.h"
#include "tools/orvctl/sources.h"
#include "tools/orvctl/table.h"

namespace orvctl {
namespace {

std::string Members(size_t count) { return Counted(count, "member"); }

bool IsList(const Match& match) { return match.type == MAPI_DISTLIST; }

std::vector<Match> OnlyLists(std::vector<Match> matches) {
  const auto isOther = [](const Match& each) { return !IsList(each); };
  matches.erase(std::remove_if(matches.begin(), matches.end(), isOther), matches.end());
  return matches;
}

// The list of that name or identifier; nothing where there is none of the name.
std::optional<Match> FindList(const EditableBook& book, const std::string& named) {
  if (AsEntryId(named)) return book.Choose(named).front();
  std::vector<Match> fit =
      FindMatches(book.library(), book.book(), book.container(), Fit::kWhole, named, kMostShown);
  fit = OnlyLists(std::move(fit));
  if (fit.size() > 1) ThrowAmbiguous(named, fit);
  if (fit.empty()) return std::nullopt;
  return fit.front();
}

Match RequireList(const EditableBook& book, const std::string& named) {
  const std::optional<Match> list = FindList(book, named);
  if (!list)
    throw CommandError(kNotFound, "there is no distribution list '" + named + "' in '" + book.name() + "'");
  if (!IsList(*list)) throw CommandError(kFailed, "'" + list->name + "' is no distribution list");
  return *list;
}

ComPtr<IABContainer> OpenList(const EditableBook& book, const Match& list) {
  const ComPtr<IMAPIProp> opened = book.OpenForChange(list);
  const std::string doing = "open the members of '" + list.name + "'";
  auto object = Foreign(doing, [&] { return opened.As<IABContainer>(IID_IDistList); });
  if (!object) object = Foreign(doing, [&] { return opened.As<IABContainer>(); });
  if (!object) throw CommandError(kFailed, "'" + list.name + "' has no members to change");
  return object;
}

Container AsContainer(const Match& list) { return {list.name, list.entryId, 0, 0}; }

void RequireLists(const EditableBook& book) {
  if (!HasTemplate(book, PR_DEF_CREATE_DL))
    throw CommandError(kFailed, "'" + book.name() + "' keeps no distribution lists", MAPI_E_NO_SUPPORT);
}

Match MakeList(const EditableBook& book, const std::string& name) {
  const ComPtr<IMAPIProp> entry = CreateEntry(book, PR_DEF_CREATE_DL);
  OwnedValue owned = OwnedValue::String(PR_DISPLAY_NAME_W, name);
  SPropValue value = owned.Get();
  Check(Foreign("name the list", [&] { return entry->SetProps(1, &value, nullptr); }),
        "name the list '" + name + "'");
  Match list;
  list.entryId = SaveNew(book, entry.Get(), name);
  list.name = name;
  list.type = MAPI_DISTLIST;
  return list;
}

// Of rows that one contact has the first stands for it.
std::vector<Match> ChooseMembers(const EditableBook& book, const std::vector<std::string>& named) {
  std::vector<Match> members;
  for (const std::string& each : named) members.push_back(book.Choose(each).front());
  return members;
}

constexpr char kUnknown[] = "(unknown)";

// As the list's contents tell them.
std::vector<Entry> MembersOf(const EditableBook& book, const Match& list) {
  std::vector<Entry> members;
  const Container container = AsContainer(list);
  const ComPtr<IMAPITable> contents = book.book().OpenContents(container);
  const auto take = [&](Entry&& entry) { return members.push_back(std::move(entry)), true; };
  if (contents) book.book().ForEachEntry(container, contents.Get(), take);
  return members;
}

Match AsMatch(Entry&& entry) {
  Match match;
  match.name = std::move(entry.name);
  match.entryId = std::move(entry.entryId);
  return match;
}

// Members of whom the list knows neither a name nor an address.
std::vector<Match> FindUnknown(const EditableBook& book, const Match& list) {
  std::vector<Match> unknown;
  for (Entry& each : MembersOf(book, list)) {
    if (!each.name.empty()) continue;
    each.name = kUnknown;
    unknown.push_back(AsMatch(std::move(each)));
  }
  return unknown;
}

std::vector<Match> ChooseAmong(const EditableBook& book, const Match& list,
                               const std::vector<std::string>& named) {
  std::vector<Match> members;
  for (const std::string& each : named) {
    const std::optional<Bytes> id = AsEntryId(each);
    Match match;
    match.entryId = id.value_or(Bytes());
    match.name = each;
    std::vector<Match> fit{match};
    if (!id) fit = FindMatches(book.library(), book.book(), AsContainer(list), Fit::kWhole, each, kMostShown);
    if (fit.empty() && each == kUnknown) fit = FindUnknown(book, list);
    if (fit.empty())
      throw CommandError(kNotFound, "'" + list.name + "' has no member called exactly '" + each + "'");
    if (fit.size() > 1) ThrowAmbiguous(each, fit);
    members.push_back(std::move(fit.front()));
  }
  return members;
}

Report Told(const EditableBook& book, const Match& list, const std::string& sentence, size_t members,
            HRESULT result = S_OK) {
  Report report = Report::Done(
      sentence,
      {{"id", ToHex(list.entryId)}, {"name", list.name}, {"members", members}, {"container", book.name()}});
  if (result == MAPI_W_PARTIAL_COMPLETION)
    report.messages.push_back({"some of the members could not be changed",
                               diag::ResultName(static_cast<uint32_t>(result)), kSomeFailed});
  return report;
}

// The list of exactly that name in the book that new contacts go to, which commands that change lists mean; nothing
// where there is none, or the book cannot be read, which whoever searches all books tells.
std::optional<Match> FindUsual(const Library& library, const Book& book,
                               const std::vector<Container>& containers, const std::string& named) {
  const auto usual = BookOfNewContacts(book, containers);
  if (!usual || FAILED(book.ReadState(*usual).status.value_or(S_OK))) return std::nullopt;
  std::vector<Match> lists = OnlyLists(FindMatches(library, book, *usual, Fit::kWhole, named, kMostShown));
  if (lists.size() > 1) ThrowAmbiguous(named, lists);
  if (lists.empty()) return std::nullopt;
  return lists.front();
}

// A list of a book that cannot be changed is one too.
Match ChooseToRead(const Library& library, const Book& book, const Options& options,
                   std::vector<Message>& messages) {
  if (const auto id = AsEntryId(options.list)) {
    const Container opened = book.OpenList(*id, options.list);
    Match list;
    list.name = opened.name;
    list.entryId = opened.entryId;
    return list;
  }
  const auto containers = ChooseContainers(library, book, options.container);
  const auto usual =
      options.container.empty() ? FindUsual(library, book, containers, options.list) : std::nullopt;
  return usual ? *usual : FindNamed(library, book, containers, options.list, "distribution list", messages);
}

// A new list's name is stored as those of people are.
std::string NameToMake(const std::string& wanted) {
  const std::string name = TidyName(wanted);
  const std::string why = name.empty() ? "a list has a name that can be seen" : WhyBadName(name);
  if (!why.empty()) throw CommandError(kUsage, why);
  return name;
}

std::vector<Match> ListsIn(const EditableBook& book, const Match& list) {
  std::vector<Match> lists;
  for (Entry& each : MembersOf(book, list)) {
    if (each.type == MAPI_DISTLIST) lists.push_back(AsMatch(std::move(each)));
  }
  return lists;
}

// The names from one list down to another, that included; none where it is not below.
class WayDown {
 public:
  WayDown(const EditableBook& book, const Match& to) : book_(book), to_(KeyOf(to)) {}

  std::vector<std::string> From(const Match& list) {
    const std::string key = KeyOf(list);
    if (key == to_) return {list.name};
    if (!seen_.insert(key).second) return {};
    for (const Match& each : ListsIn(book_, list)) {
      std::vector<std::string> way = From(each);
      if (way.empty()) continue;
      way.insert(way.begin(), list.name);
      return way;
    }
    return {};
  }

 private:
  std::string KeyOf(const Match& list) const {
    const std::string uid = book_.IdentityOf(list.entryId).uid;
    return uid.empty() ? ToHex(list.entryId) : uid;
  }

  const EditableBook& book_;
  const std::string to_;
  std::set<std::string> seen_;
};

// Neither itself nor a list that has it somewhere below.
void RequireOthers(const EditableBook& book, const Match& list, const std::vector<Match>& members) {
  WayDown wayDown(book, list);
  for (const Match& each : members) {
    const std::vector<std::string> way = IsList(each) ? wayDown.From(each) : std::vector<std::string>();
    if (way.empty()) continue;
    std::string names;
    for (const std::string& name : way) names += (names.empty() ? "'" : ", in that '") + name + "'";
    throw CommandError(kFailed,
                       "'" + list.name + "' cannot be a member of itself" +
                           (way.size() > 1 ? "; in it would be " + names : ""),
                       MAPI_E_FOLDER_CYCLE);
  }
}

size_t CountMembers(const EditableBook& book, const Match& list) {
  const ComPtr<IMAPITable> contents = book.book().OpenContents(AsContainer(list));
  const std::string doing = "count the members of '" + list.name + "'";
  ULONG count = 0;
  if (contents) Check(Foreign(doing, [&] { return contents->GetRowCount(0, &count); }), doing);
  return count;
}

// Of those who are to be added, how many are no members yet; nobody is one twice.
size_t CountNew(const EditableBook& book, const std::optional<Match>& list,
                const std::vector<Match>& wanted) {
  std::set<std::string> known;
  if (list) {
    for (const Entry& each : MembersOf(book, *list)) known.insert(ToHex(each.entryId));
  }
  const auto isNew = [&](const Match& each) { return known.insert(ToHex(each.entryId)).second; };
  return static_cast<size_t>(std::count_if(wanted.begin(), wanted.end(), isNew));
}

// Who is one already stays one, once.
std::string SentenceOfAdding(const char* doing, size_t added, size_t asked, const std::string& what) {
  const size_t known = asked - std::min(added, asked);
  const std::string behind =
      known == 0 ? "" : " " + Members(known) + (known == 1 ? " was" : " were") + " in it already.";
  return doing + Members(added) + " to " + what + "." + behind;
}

Report ForetellAdding(const EditableBook& book, const std::optional<Match>& list, const std::string& what,
                      const std::vector<Match>& members) {
  const size_t added = CountNew(book, list, members);
  return Report::Done(SentenceOfAdding("Would add ", added, members.size(), what),
                      {{"members", added}, {"container", book.name()}, {"changed", !list || added != 0}});
}

HRESULT AddMembers(const EditableBook& book, const Match& list, const std::string& what,
                   std::vector<Match>& members) {
  if (members.empty()) return S_OK;
  const ComPtr<IABContainer> object = OpenList(book, list);
  const std::string doing = "add members to " + what;
  EntryList entries(members);
  const HRESULT result = Foreign(doing, [&] { return object->CopyEntries(entries.Get(), 0, nullptr, 0); });
  Check(result, doing);
  return result;
}

}  // namespace

Report AddToGroup(const Library& library, const Options& options) {
  const Book session(library, options.profile);
  const EditableBook book(library, session, options.container);
  std::vector<Match> members = ChooseMembers(book, options.entries);
  std::optional<Match> list = FindList(book, options.list);
  const std::string name = list ? list->name : NameToMake(options.list);
  if (!list) list = FindList(book, name);
  const std::string what = list ? "'" + list->name + "'" : "the new list '" + name + "'";
  if (list && !IsList(*list)) throw CommandError(kFailed, "'" + list->name + "' is no distribution list");
  if (!list) RequireLists(book);
  if (list) RequireOthers(book, *list, members);
  if (options.dryRun) return ForetellAdding(book, list, what, members);
  const bool isNew = !list;
  if (!list) list = MakeList(book, name);
  const size_t before = CountMembers(book, *list);
  const HRESULT result = AddMembers(book, *list, what, members);
  const size_t added = CountMembers(book, *list) - before;
  Report report = Told(book, *list, SentenceOfAdding("Added ", added, members.size(), what), added, result);
  report.data["changed"] = isNew || added != 0;
  return report;
}

Report RemoveFromGroup(const Library& library, const Options& options) {
  const Book session(library, options.profile);
  const EditableBook book(library, session, options.container);
  const Match list = RequireList(book, options.list);
  std::vector<Match> members = ChooseAmong(book, list, options.entries);
  const std::string what = Members(members.size()) + " of '" + list.name + "'";
  if (options.dryRun) return Report::Done("Would remove " + what + ".", {{"changed", true}});
  const ComPtr<IABContainer> object = OpenList(book, list);
  EntryList entries(members);
  const HRESULT result = Foreign("remove " + what, [&] { return object->DeleteEntries(entries.Get(), 0); });
  Check(result, "remove " + what);
  return Told(book, list, "Removed " + what + ".", members.size(), result);
}

Report ListGroup(const Library& library, const Options& options) {
  const Book session(library, options.profile);
  std::vector<Message> messages;
  const Match chosen = ChooseToRead(library, session, options, messages);
  const Container list = AsContainer(chosen);
  Report report = Report::Of({{{"name", "Name"},
                               {"type", "Type"},
                               {"addressType", "Address type"},
                               {"address", "Address"},
                               {"container"},
                               {"id"}},
                              {}},
                             "'" + list.name + "' has no members.");
  report.messages = std::move(messages);
  const ComPtr<IMAPITable> contents = session.OpenContents(list);
  if (!contents) return report;
  session.ForEachEntry(list, contents.Get(), [&](Entry&& entry) {
    if (entry.name.empty()) entry.name = kUnknown;
    report.listing.rows.push_back({std::move(entry.name), ObjectTypeName(entry.type),
                                   std::move(entry.addressType), std::move(entry.address), chosen.container,
                                   ToHex(entry.entryId)});
    return true;
  });
  return report;
}

}  // namespace orvctl
