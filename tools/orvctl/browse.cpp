// Commands that browse the address book.
#include <algorithm>

#include "diag/names.h"
#include "tools/orvctl/book.h"
#include "tools/orvctl/commands.h"
#include "tools/orvctl/errors.h"
#include "tools/orvctl/recipients.h"
#include "tools/orvctl/search.h"
#include "tools/orvctl/sources.h"
#include "tools/orvctl/table.h"

namespace orvctl {
namespace {

std::string NameOfStatus(HRESULT result) { return diag::ResultName(static_cast<uint32_t>(result)); }

Entry EntryOf(const Bytes& entryId, const std::string& name) {
  Entry entry;
  entry.name = name;
  entry.entryId = entryId;
  return entry;
}

Entry EntryOf(Match&& match) {
  return {std::move(match.name),      std::move(match.addressType), std::move(match.address),
          std::move(match.container), std::move(match.entryId),     match.type};
}

// The first entry that `fits`; containers are searched in their order.
std::optional<Entry> FindFirst(const Book& book, const std::vector<Container>& containers,
                               std::vector<Message>& messages,
                               const std::function<bool(const Entry&)>& fits) {
  std::optional<Entry> found;
  WalkContainers(book, containers, messages, [&](const Container& container, IMAPITable* contents) {
    return book.ForEachEntry(container, contents, [&](Entry&& entry) {
      if (fits(entry)) found = std::move(entry);
      return !found;
    });
  });
  return found;
}

std::optional<Entry> FindEntry(const Library& library, const Book& book, const Options& options,
                               std::vector<Message>& messages,
                               const std::function<bool(const Entry&)>& fits) {
  if (const auto entryId = AsEntryId(options.entry)) return EntryOf(*entryId, options.entry);
  const auto containers = ChooseContainers(library, book, options.container);
  if (options.first) return FindFirst(book, containers, messages, fits);
  return EntryOf(FindNamed(library, book, containers, options.entry, "entry", messages));
}

Report Nothing(std::string sentence, std::vector<Message> messages) {
  Report report = Report::Of({}, std::move(sentence));
  report.messages = std::move(messages);
  return report;
}

Properties ReadAll(const Library& library, const Book& book, const Entry& entry) {
  const ComPtr<IMAPIProp> object = book.Open(entry.entryId, entry.name);
  return Properties(library, object.Get(), nullptr, "read the properties of '" + entry.name + "'");
}

// An entry opened by its identifier alone knows its own name and type.
void CompleteEntry(const Library& library, const Book& book, Entry& entry) {
  if (entry.type != 0) return;
  const Properties properties = ReadAll(library, book, entry);
  entry.type = properties.view().Number(PR_OBJECT_TYPE);
  const std::string name = TextOf(properties.view(), PR_DISPLAY_NAME_W);
  if (!name.empty()) entry.name = name;
}

struct TreeFigures {
  Cell entries{"", nullptr};
  Cell unreadable{"", nullptr};
  Cell status{"", nullptr};
  std::string file;
};

bool CountEntries(const Book& book, const Container& container, TreeFigures& figures) {
  const std::string doing = "count the entries of '" + container.name + "'";
  const ComPtr<IMAPITable> contents = book.OpenContents(container);
  if (!contents) return false;
  ULONG count = 0;
  Check(Foreign(doing, [&] { return contents->GetRowCount(0, &count); }), doing);
  figures.entries = Cell::Number(count);
  return true;
}

void ShowState(const ReadingState& state, TreeFigures& figures) {
  if (state.skipped) figures.unreadable = Cell::Number(*state.skipped);
  if (state.status) {
    const std::string name = NameOfStatus(*state.status);
    figures.status = Cell(*state.status == S_OK ? "read" : name, name);
  }
  figures.file = state.file;
}

// That a file cannot be read is its state, which the listing tells; it is no failure of the listing.
TreeFigures ReadFigures(const Book& book, const Container& container, Sources& sources) {
  TreeFigures figures;
  bool isTold = false;
  sources.Attempt(container, [&] {
    const ReadingState state = book.ReadState(container);
    ShowState(state, figures);
    isTold = state.status && FAILED(*state.status);
    return false;
  });
  if (isTold) {
    std::vector<Message> known;
    Sources(known).Attempt(container, [&] { return CountEntries(book, container, figures); });
    return figures;
  }
  if (!sources.Attempt(container, [&] { return CountEntries(book, container, figures); }))
    figures.status = "failed";
  return figures;
}

size_t ColumnOf(const Listing& listing, const std::string& key) {
  const auto found = std::find_if(listing.columns.begin(), listing.columns.end(),
                                  [&](const Column& each) { return each.key == key; });
  return static_cast<size_t>(found - listing.columns.begin());
}

// Recipients that nothing can be sent to: gone, or without a number.
bool HasNoAddress(const Listing& listing, const std::vector<Cell>& row) {
  return row[ColumnOf(listing, "address")].text.empty();
}

void KeepMissing(Report& report) {
  Listing& listing = report.listing;
  const size_t all = listing.rows.size();
  const auto hasAddress = [&](const std::vector<Cell>& row) { return !HasNoAddress(listing, row); };
  listing.rows.erase(std::remove_if(listing.rows.begin(), listing.rows.end(), hasAddress),
                     listing.rows.end());
  if (all != 0)
    report.sentence = "Nobody is missing: " + Counted(all, "recipient") + ", each with an address.";
}

Report CountOf(const Report& recipients) {
  const Listing& listing = recipients.listing;
  const auto missing =
      std::count_if(listing.rows.begin(), listing.rows.end(),
                    [&](const std::vector<Cell>& row) { return HasNoAddress(listing, row); });
  Report report = Report::Done(Counted(listing.rows.size(), "recipient") + ", " + std::to_string(missing) +
                                   " of them without an address.",
                               {{"count", listing.rows.size()}, {"missing", missing}});
  report.messages = recipients.messages;
  return report;
}

}  // namespace

Report ShowTree(const Library& library, const Options& options) {
  const Book book(library, options.profile);
  Report report = Report::Of({{{"container", "Container"},
                               {"depth"},
                               {"entries", "Entries"},
                               {"unreadable", "Unreadable"},
                               {"status", "Status"},
                               {"flags", "Flags"},
                               {"file", "File"},
                               {"id"}},
                              {}},
                             "The address book has no containers.");
  Sources sources(report.messages);
  for (const Container& container : book.ReadContainers()) {
    TreeFigures figures = ReadFigures(book, container, sources);
    report.listing.rows.push_back(
        {Cell(std::string(2 * container.depth, ' ') + container.name, container.name),
         Cell::Number(container.depth), figures.entries, figures.unreadable, figures.status,
         Cell(ContainerFlagNames(container.flags), container.flags), std::move(figures.file),
         ToHex(container.entryId)});
  }
  sources.Settle();
  return report;
}

Report ShowEntry(const Library& library, const Options& options) {
  const Book book(library, options.profile);
  std::vector<Message> messages;
  const auto entry = FindEntry(library, book, options, messages, [](const Entry&) { return true; });
  if (!entry) return Nothing("There are no entries.", std::move(messages));
  const Properties properties = ReadAll(library, book, *entry);
  Listing listing{{{"property", "Property"}, {"value", "Value"}}, {}};
  for (const SPropValue& value : properties.view()) {
    listing.rows.push_back({diag::PropTagName(value.ulPropTag), ValueCell(value)});
  }
  return Report::Of(std::move(listing), "The entry has no properties.");
}

Report ExpandList(const Library& library, const Options& options) {
  const Book book(library, options.profile);
  std::vector<Message> messages;
  std::optional<Entry> entry = FindEntry(library, book, options, messages, [](const Entry& candidate) {
    return candidate.type == MAPI_DISTLIST;
  });
  if (!entry) return Nothing("There is no distribution list to expand.", std::move(messages));
  CompleteEntry(library, book, *entry);
  if (entry->entryId.empty()) throw CommandError(kFailed, "'" + entry->name + "' has no entry identifier");
  AddressList list = library.allocator().Make<ADRLIST>(CbNewADRLIST(1));
  AppendRecipient(library.allocator(), *list.Get(), entry->entryId, entry->name, entry->type, MAPI_TO);
  // The session frees or reuses the list given and hands one out even where it fails.
  const HRESULT result = book.session()->ExpandRecipients(0, list.InOut());
  Check(result, "expand '" + entry->name + "'");
  Report report = book.ReportRecipients(list.Get(), "'" + entry->name + "' has no members.");
  if (options.missing) KeepMissing(report);
  return options.count ? CountOf(report) : report;
}

}  // namespace orvctl
