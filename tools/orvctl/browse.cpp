// Commands that browse the address book.
#include "diag/names.h"
#include "tools/orvctl/book.h"
#include "tools/orvctl/commands.h"
#include "tools/orvctl/errors.h"
#include "tools/orvctl/table.h"

namespace orvctl {
namespace {

std::string NameOf(HRESULT result) { return diag::ResultName(static_cast<uint32_t>(result)); }

// The containers that a command reads, one after the other: what fails in one becomes a warning, and the others are
// read.
class Sources {
 public:
  explicit Sources(std::vector<Message>& messages) : messages_(messages) {}

  // True when it went well. `body` answers whether the container has anything to read.
  template <class Body>
  bool Attempt(const Container& container, Body body) {
    try {
      read_ += body() ? 1 : 0;
      return true;
    } catch (const CommandError& error) {
      Fail(error.what(), error.result() ? NameOf(*error.result()) : "");
    } catch (const std::bad_alloc&) {
      throw;
    } catch (...) {
      Fail("a provider raised an exception for '" + container.name + "'", "");
    }
    return false;
  }

  // Where nothing at all could be read, the command failed.
  void Settle() {
    for (Message& message : messages_) {
      if (read_ == 0 && message.exitCode == kSomeFailed) message.exitCode = kFailed;
    }
  }

 private:
  void Fail(std::string text, std::string resultName) {
    messages_.push_back({std::move(text), std::move(resultName), kSomeFailed});
  }

  std::vector<Message>& messages_;
  size_t read_ = 0;
};

// What a listing of the container's entries does not show: a file that could not be read is an empty container.
void TellOfLosses(const Book& book, const Container& container, std::vector<Message>& messages) {
  const ReadingState state = book.ReadState(container);
  const std::string of = "'" + container.name + "'" + (state.file.empty() ? "" : " from " + state.file);
  if (state.status && FAILED(*state.status)) throw CommandError(kFailed, "cannot read " + of, *state.status);
  if (state.skipped.value_or(0) != 0)
    messages.push_back({std::to_string(*state.skipped) + " records of " + of + " cannot be read"});
}

// The entries of the containers, each handed to `use` until it answers false; what is missing is told of.
void WalkContainers(const Book& book, const std::vector<Container>& containers,
                    std::vector<Message>& messages, const std::function<bool(Entry&&)>& use) {
  Sources sources(messages);
  bool more = true;
  for (const Container& container : containers) {
    sources.Attempt(container, [&] {
      const ComPtr<IMAPITable> contents = book.OpenContents(container);
      if (contents) more = book.ForEachEntry(container, contents.Get(), use);
      if (more) TellOfLosses(book, container, messages);
      return static_cast<bool>(contents);
    });
    if (!more) return;
  }
  sources.Settle();
}

// A search that found nothing is only certain where everything could be read.
[[noreturn]] void ThrowNone(std::string text, const std::vector<Message>& messages) {
  ExitCode exitCode = kNotFound;
  for (const Message& message : messages) {
    text += "; " + message.text + (message.resultName.empty() ? "" : ": " + message.resultName);
    if (message.exitCode != kSuccess) exitCode = kFailed;
  }
  throw CommandError(exitCode, text);
}

Container FindList(const Book& book, const std::vector<Container>& containers, const std::string& wanted) {
  std::vector<Message> messages;
  std::optional<Entry> list;
  WalkContainers(book, containers, messages, [&](Entry&& entry) {
    if (entry.type == MAPI_DISTLIST && entry.name == wanted) list = std::move(entry);
    return !list;
  });
  if (!list) ThrowNone("there is no container '" + wanted + "', nor a distribution list", messages);
  return {list->name, list->entryId};
}

// All of them, or the container, else the distribution list, of that name or identifier.
std::vector<Container> ChooseContainers(const Book& book, const std::string& wanted) {
  const std::vector<Container> containers = book.ReadContainers();
  if (wanted.empty()) return containers;
  const std::optional<Bytes> entryId = AsEntryId(wanted);
  for (const Container& each : containers) {
    if (each.name == wanted || (entryId && each.entryId == *entryId)) return {each};
  }
  return {entryId ? book.OpenList(*entryId, wanted) : FindList(book, containers, wanted)};
}

void WalkEntries(const Book& book, const Options& options, std::vector<Message>& messages,
                 const std::function<bool(Entry&&)>& use) {
  WalkContainers(book, ChooseContainers(book, options.container), messages, use);
}

Entry EntryOf(const Bytes& entryId, const std::string& name) {
  Entry entry;
  entry.name = name;
  entry.entryId = entryId;
  return entry;
}

// The entry named, or the first that `fits`; containers are searched in their order.
std::optional<Entry> FindEntry(const Book& book, const Options& options, std::vector<Message>& messages,
                               const std::function<bool(const Entry&)>& fits) {
  if (const auto entryId = AsEntryId(options.entry)) return EntryOf(*entryId, options.entry);
  std::optional<Entry> found;
  WalkEntries(book, options, messages, [&](Entry&& entry) {
    const bool isIt = options.first ? fits(entry) : entry.name == options.entry;
    if (isIt) found = std::move(entry);
    return !isIt;
  });
  if (!found && !options.first) ThrowNone("there is no entry '" + options.entry + "'", messages);
  return found;
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

// One recipient, allocated as the library allocates its lists, because the library may free it.
AddressList MakeRecipient(const Allocator& allocator, const Entry& entry) {
  constexpr ULONG kValues = 4;
  AddressList list = allocator.Make<ADRLIST>(CbNewADRLIST(1));
  Allocator::Root root = allocator.AllocateRoot(kValues * sizeof(SPropValue));
  auto* values = static_cast<SPropValue*>(root.get());
  values[0].ulPropTag = PR_ENTRYID;
  values[0].Value.bin = allocator.CopyBytes(values, entry.entryId.data(), entry.entryId.size());
  values[1].ulPropTag = PR_RECIPIENT_TYPE;
  values[1].Value.l = MAPI_TO;
  values[2].ulPropTag = PR_OBJECT_TYPE;
  values[2].Value.ul = entry.type;
  values[3].ulPropTag = PR_DISPLAY_NAME_W;
  values[3].Value.lpszW = allocator.CopyText(values, ToWide(entry.name));
  list->aEntries[0] = {0, kValues, static_cast<SPropValue*>(root.release())};
  list->cEntries = 1;
  return list;
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
    const std::string name = NameOf(*state.status);
    figures.status = Cell(*state.status == S_OK ? "read" : name, name);
  }
  figures.file = state.file;
}

TreeFigures ReadFigures(const Book& book, const Container& container, Sources& sources) {
  TreeFigures figures;
  sources.Attempt(container, [&] {
    ShowState(book.ReadState(container), figures);
    return false;
  });
  if (!sources.Attempt(container, [&] { return CountEntries(book, container, figures); }))
    figures.status = "failed";
  return figures;
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
                               {"entryId"}},
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

Report ListEntries(const Library& library, const Options& options) {
  const Book book(library, options.profile);
  Report report = Report::Of({{{"name", "Name"},
                               {"type", "Type"},
                               {"addressType", "Address type"},
                               {"address", "Address"},
                               {"container", "Container"},
                               {"entryId"}},
                              {}},
                             "There are no entries.");
  WalkEntries(book, options, report.messages, [&](Entry&& entry) {
    report.listing.rows.push_back({std::move(entry.name), ObjectTypeName(entry.type),
                                   std::move(entry.addressType), std::move(entry.address),
                                   std::move(entry.container), ToHex(entry.entryId)});
    return true;
  });
  return report;
}

Report ShowEntry(const Library& library, const Options& options) {
  const Book book(library, options.profile);
  std::vector<Message> messages;
  const auto entry = FindEntry(book, options, messages, [](const Entry&) { return true; });
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
  std::optional<Entry> entry = FindEntry(
      book, options, messages, [](const Entry& candidate) { return candidate.type == MAPI_DISTLIST; });
  if (!entry) return Nothing("There is no distribution list to expand.", std::move(messages));
  CompleteEntry(library, book, *entry);
  if (entry->entryId.empty()) throw CommandError(kFailed, "'" + entry->name + "' has no entry identifier");
  AddressList list = MakeRecipient(library.allocator(), *entry);
  // The session frees or reuses the list given and hands one out even where it fails.
  const HRESULT result = book.session()->ExpandRecipients(0, list.InOut());
  Check(result, "expand '" + entry->name + "'");
  return book.ReportRecipients(std::move(list), "'" + entry->name + "' has no members.");
}

}  // namespace orvctl
