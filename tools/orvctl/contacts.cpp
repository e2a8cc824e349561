// Commands that change the people of a book.
#include <algorithm>
#include <set>

#include "diag/names.h"
#include "tools/orvctl/commands.h"
#include "tools/orvctl/contact_writer.h"
#include "tools/orvctl/errors.h"
#include "tools/orvctl/new_entry.h"
#include "tools/orvctl/table.h"

namespace orvctl {
namespace {

constexpr size_t kMostNamesakes = 1000;

// What a book says where some of what was asked for was done.
void TellIfPartial(HRESULT result, const std::string& doing, Report& report) {
  if (result == MAPI_W_PARTIAL_COMPLETION)
    report.messages.push_back({"could not " + doing + " all of them",
                               diag::ResultName(static_cast<uint32_t>(result)), kSomeFailed});
}

Json IdsOf(const std::vector<Match>& matches) {
  Json ids = Json::array();
  for (const Match& match : matches) ids.push_back(ToHex(match.entryId));
  return ids;
}

std::string NamesOf(const std::vector<Match>& matches) {
  std::string names;
  for (const Match& match : matches) names += (names.empty() ? "'" : ", '") + match.name + "'";
  return names;
}

// Rows of the book that bear the names of these entries.
std::vector<Match> NamesakesOf(const EditableBook& book, const std::vector<Match>& matches) {
  std::vector<Match> rows;
  std::set<std::string> seen;
  for (const Match& match : matches) {
    const std::string plain = book.IdentityOf(match.entryId).plain;
    if (!seen.insert(plain).second) continue;
    for (Match& row :
         FindMatches(book.library(), book.book(), book.container(), Fit::kWhole, plain, kMostNamesakes))
      rows.push_back(std::move(row));
  }
  return rows;
}

std::vector<Match> Without(std::vector<Match> matches, const std::vector<Match>& others) {
  const auto isOther = [&](const Match& match) {
    return std::any_of(others.begin(), others.end(),
                       [&](const Match& each) { return each.entryId == match.entryId; });
  };
  matches.erase(std::remove_if(matches.begin(), matches.end(), isOther), matches.end());
  return matches;
}

// A contact with several numbers is a row a number; its own identifier is none of theirs.
std::vector<Match> RowsOf(const EditableBook& book, const Container& container, const Identity& identity,
                          const Bytes& entryId) {
  std::vector<Match> rows =
      FindMatches(book.library(), book.book(), container, Fit::kWhole, identity.plain, kMostNamesakes);
  const auto isOther = [&](const Match& row) {
    return row.entryId != entryId &&
           (identity.whole.empty() || book.IdentityOf(row.entryId).whole != identity.whole);
  };
  rows.erase(std::remove_if(rows.begin(), rows.end(), isOther), rows.end());
  return rows;
}

// Where an entry lies: an identifier means one of any book. A container that cannot be read holds nobody.
std::vector<Match> RowsAnywhere(const EditableBook& book, const Identity& identity, const Bytes& entryId,
                                std::string* container) {
  std::vector<Match> rows = RowsOf(book, book.container(), identity, entryId);
  *container = book.name();
  if (!rows.empty()) return rows;
  for (const Container& each : book.book().ReadContainers()) {
    try {
      rows = RowsOf(book, each, identity, entryId);
    } catch (const CommandError&) {
      rows.clear();
    }
    if (rows.empty()) continue;
    *container = each.name;
    break;
  }
  return rows;
}

Json DescribeEntry(const EditableBook& book, const Bytes& entryId) {
  const Identity identity = book.IdentityOf(entryId);
  std::string container;
  const std::vector<Match> rows = RowsAnywhere(book, identity, entryId, &container);
  return {{"id", ToHex(rows.empty() ? entryId : rows.front().entryId)},
          {"ids", IdsOf(rows)},
          {"name", identity.plain},
          {"container", container}};
}

// The entry by the identifier that goes on meaning it when one of its numbers has another or none.
Match Whole(const EditableBook& book, const Bytes& entryId, const std::string& name) {
  const Bytes whole = book.IdentityOf(entryId).whole;
  Match match;
  match.entryId = whole.empty() ? entryId : whole;
  match.name = name;
  return match;
}

// A row that is one of several numbers of its contact: removing it leaves the contact.
struct NumberRow {
  std::string contact, number;
  Bytes entryId;
};

std::vector<NumberRow> NumbersAmong(const EditableBook& book, const std::vector<Match>& matches) {
  std::vector<NumberRow> numbers;
  for (const Match& match : matches) {
    const Identity identity = book.IdentityOf(match.entryId);
    const bool isRow = !identity.whole.empty() && identity.whole != match.entryId;
    if (isRow && !match.address.empty() && match.type != MAPI_DISTLIST)
      numbers.push_back({identity.plain, match.address, match.entryId});
  }
  return numbers;
}

Json NumbersJson(const std::vector<NumberRow>& numbers) {
  Json all = Json::array();
  for (const NumberRow& each : numbers)
    all.push_back({{"name", each.contact}, {"number", each.number}, {"id", ToHex(each.entryId)}});
  return all;
}

std::string HowToUndo(const std::vector<NumberRow>& numbers, size_t removed, bool canComeBack) {
  std::string text;
  for (const NumberRow& each : numbers)
    text += " Only the number '" + each.number + "' of '" + each.contact + "' was removed.";
  if (!numbers.empty())
    text +=
        " 'orvctl contact edit ... --fax NUMBER:KIND' brings a number back, behind the others of its kind.";
  if (canComeBack && numbers.size() < removed)
    text += " 'orvctl contact restore' brings back what was removed" +
            std::string(numbers.empty() ? "." : " besides.");
  return text;
}

// What can come back, and when it was deleted.
struct Deleted {
  Match match;
  Cell when{"", nullptr};
};

std::vector<Deleted> ReadDeleted(const EditableBook& book, IOrvContacts* contacts) {
  const std::string doing = "list the removed entries of '" + book.name() + "'";
  ComPtr<IMAPITable> table;
  Receive(table, Foreign(doing, [&] { return contacts->GetDeletedTable(MAPI_UNICODE, table.Put()); }), doing);
  TagArray columns{PR_ENTRYID, PR_DISPLAY_NAME_W, PR_OBJECT_TYPE, PR_ORV_DELETED_TIME};
  std::vector<Deleted> deleted;
  ForEachRow(book.library(), table.Get(), columns.Get(), doing, [&](const ValueView& row) {
    Deleted& each = deleted.emplace_back();
    each.match.entryId = BytesOf(row, PR_ENTRYID);
    each.match.name = TextOf(row, PR_DISPLAY_NAME_W);
    each.match.type = row.Number(PR_OBJECT_TYPE);
    const SPropValue* const when = row.Find(PR_ORV_DELETED_TIME);
    if (when != nullptr) each.when = ValueCell(*when);
    return true;
  });
  return deleted;
}

Report ListDeleted(const std::vector<Deleted>& deleted, const std::string& container) {
  Listing listing{
      {{"name", "Name"}, {"type", "Type"}, {"deleted", "Removed"}, {"container"}, {"id", "Identifier"}}, {}};
  for (const Deleted& each : deleted)
    listing.rows.push_back(
        {each.match.name, ObjectTypeName(each.match.type), each.when, container, ToHex(each.match.entryId)});
  return Report::Of(std::move(listing), "Nothing was removed from '" + container + "' in the last 30 days.");
}

Match ChooseDeleted(const std::vector<Deleted>& deleted, const std::string& named) {
  const std::optional<Bytes> id = AsEntryId(named);
  std::vector<Match> fit;
  for (const Deleted& each : deleted) {
    if (id ? each.match.entryId == *id : each.match.name == named) fit.push_back(each.match);
  }
  if (fit.size() > 1) ThrowAmbiguous(named, fit);
  if (fit.empty())
    throw CommandError(
        kNotFound,
        "no entry '" + named + "' was removed in the last 30 days; without a name the command lists what was",
        MAPI_E_NOT_FOUND);
  return fit.front();
}

}  // namespace

Report AddContact(const Library& library, const Options& options) {
  const Book session(library, options.profile);
  const EditableBook book(library, session, options.container);
  const std::string& name = *options.contact.name;
  if (options.dryRun)
    return Report::Done("Would add '" + name + "' to '" + book.name() + "'.",
                        {{"name", name}, {"container", book.name()}, {"changed", true}});
  const ComPtr<IMAPIProp> entry = CreateEntry(book, PR_DEF_CREATE_MAILUSER);
  ContactWriter writer(book, options.contact);
  writer.Write(entry.Get());
  const Match added = Whole(book, SaveNew(book, entry.Get(), name), name);
  writer.AddRest(added);
  Report report =
      Report::Done("Added '" + name + "' to '" + book.name() + "'.", DescribeEntry(book, added.entryId));
  report.messages = writer.TakeMessages();
  return report;
}

Report EditContact(const Library& library, const Options& options) {
  const Book session(library, options.profile);
  const EditableBook book(library, session, options.container);
  const Match match = book.Choose(options.entry).front();
  if (options.dryRun)
    return Report::Done("Would change '" + match.name + "'.",
                        {{"id", ToHex(match.entryId)}, {"name", match.name}, {"changed", true}});
  const Match whole = Whole(book, match.entryId, match.name);
  const ComPtr<IMAPIProp> entry = book.OpenForChange(match);
  ContactWriter writer(book, options.contact);
  writer.Write(entry.Get());
  const std::string doing = "store what was changed of '" + match.name + "'";
  Check(Foreign(doing, [&] { return entry->SaveChanges(KEEP_OPEN_READONLY); }), doing);
  writer.AddRest(whole);
  Report report = Report::Done("Changed '" + match.name + "'.", DescribeEntry(book, whole.entryId));
  report.messages = writer.TakeMessages();
  return report;
}

Report RemoveContacts(const Library& library, const Options& options) {
  const Book session(library, options.profile);
  const EditableBook book(library, session, options.container);
  std::vector<Match> matches = book.ChooseAll(options.entries);
  const std::vector<NumberRow> numbers = NumbersAmong(book, matches);
  Json data{{"removed", options.dryRun ? Json::array() : IdsOf(matches)},
            {"numbers", NumbersJson(numbers)},
            {"container", book.name()},
            {"changed", !matches.empty()}};
  if (options.dryRun) return Report::Done("Would remove " + NamesOf(matches) + ".", std::move(data));
  const std::string doing = "remove " + NamesOf(matches);
  EntryList list(matches);
  const HRESULT result = Foreign(doing, [&] { return book.object()->DeleteEntries(list.Get(), 0); });
  Check(result, doing);
  const bool canComeBack = static_cast<bool>(book.Contacts());
  Report report = Report::Done(
      "Removed " + NamesOf(matches) + "." + HowToUndo(numbers, matches.size(), canComeBack), std::move(data));
  TellIfPartial(result, "remove", report);
  return report;
}

Report RestoreContacts(const Library& library, const Options& options) {
  const Book session(library, options.profile);
  const EditableBook book(library, session, options.container);
  const ComPtr<IOrvContacts> contacts = book.Contacts();
  if (!contacts)
    throw CommandError(kFailed, "'" + book.name() + "' keeps nothing of what is removed from it");
  const std::vector<Deleted> deleted = ReadDeleted(book, contacts.Get());
  if (options.entries.empty()) return ListDeleted(deleted, book.name());
  std::vector<Match> matches;
  for (const std::string& named : options.entries) matches.push_back(ChooseDeleted(deleted, named));
  Json data{{"restored", options.dryRun ? Json::array() : IdsOf(matches)}, {"container", book.name()}};
  if (options.dryRun) return Report::Done("Would restore " + NamesOf(matches) + ".", std::move(data));
  const std::string doing = "restore " + NamesOf(matches);
  EntryList list(matches);
  const HRESULT result = Foreign(doing, [&] { return contacts->RestoreEntries(list.Get(), 0); });
  Check(result, doing);
  Report report = Report::Done("Restored " + NamesOf(matches) + ".", std::move(data));
  TellIfPartial(result, "restore", report);
  return report;
}

Report CopyContacts(const Library& library, const Options& options) {
  const Book session(library, options.profile);
  const EditableBook target(library, session, options.target);
  std::vector<Match> matches = ChooseAnywhere(library, session, options.container, options.entries);
  const std::string what = NamesOf(matches) + " to '" + target.name() + "'";
  if (options.dryRun)
    return Report::Done("Would copy " + what + ".", {{"copied", 0}, {"container", target.name()}});
  const std::vector<Match> before = NamesakesOf(target, matches);
  EntryList list(matches);
  const std::string doing = "copy " + what;
  const HRESULT result =
      Foreign(doing, [&] { return target.object()->CopyEntries(list.Get(), 0, nullptr, 0); });
  Check(result, doing);
  const Json ids = IdsOf(Without(NamesakesOf(target, matches), before));
  Report report = Report::Done("Copied " + what + ".", {{"copied", matches.size()},
                                                        {"id", ids.empty() ? Json() : ids.front()},
                                                        {"ids", ids},
                                                        {"container", target.name()}});
  TellIfPartial(result, "copy", report);
  return report;
}

}  // namespace orvctl
