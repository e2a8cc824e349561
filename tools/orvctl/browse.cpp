// Commands that browse the address book.
#include <cstring>

#include "diag/names.h"
#include "tools/orvctl/book.h"
#include "tools/orvctl/commands.h"
#include "tools/orvctl/errors.h"

namespace orvctl {
namespace {

// How many entries a container has, how many records behind it could not be read, and how reading went.
struct ContainerFigures {
  Cell entries{"", nullptr};
  Cell unreadable{"", nullptr};
  Cell status{"", nullptr};
};

ContainerFigures ReadFigures(const Library& library, const Book& book, const Container& container) {
  ContainerFigures figures;
  if (const ComPtr<IMAPITable> contents = book.OpenContents(container)) {
    ULONG count = 0;
    Check(contents->GetRowCount(0, &count), "count the entries of '" + container.name + "'");
    figures.entries = Cell::Number(count);
  }
  const auto object = book.Open(container.entryId, container.name).As<IMAPIProp>(IID_IMAPIProp);
  if (!object) return figures;
  SizedSPropTagArray(2, tags) = {2, {PR_ORV_SKIPPED_RECORDS, PR_ORV_BOOK_STATUS}};
  ULONG count = 0;
  SPropValue* values = nullptr;
  if (FAILED(object->GetProps(reinterpret_cast<SPropTagArray*>(&tags), MAPI_UNICODE, &count, &values)))
    return figures;
  const BufferPtr<SPropValue> owner = library.Own(values);
  if (const SPropValue* skipped = FindValue(values, count, PR_ORV_SKIPPED_RECORDS)) {
    figures.unreadable = Cell::Number(skipped->Value.ul);
  }
  if (const SPropValue* status = FindValue(values, count, PR_ORV_BOOK_STATUS)) {
    const std::string name = diag::ResultName(status->Value.ul);
    figures.status = Cell(status->Value.ul == 0 ? "read" : name, name);
  }
  return figures;
}

// The entry named, or the first that `fits`; containers are searched in their order.
std::optional<Entry> FindEntry(const Book& book, const Options& options,
                               const std::function<bool(const Entry&)>& fits) {
  std::optional<Entry> found;
  if (const auto entryId = AsEntryId(options.entry)) {
    found.emplace();
    found->name = options.entry;
    found->entryId = *entryId;
    return found;
  }
  for (const Container& container : book.ChooseContainers(options.container)) {
    const bool more = book.ForEachEntry(container, [&](Entry&& entry) {
      const bool isIt = options.first ? fits(entry) : entry.name == options.entry;
      if (isIt) found = std::move(entry);
      return !isIt;
    });
    if (!more) break;
  }
  if (!found && !options.first) throw CommandError(kNotFound, "there is no entry '" + options.entry + "'");
  return found;
}

// Reads all properties of an object.
BufferPtr<SPropValue> ReadAll(const Library& library, IMAPIProp* object, const std::string& name,
                              ULONG& count) {
  SPropValue* values = nullptr;
  count = 0;
  Check(object->GetProps(nullptr, MAPI_UNICODE, &count, &values), "read the properties of '" + name + "'");
  return library.Own(values);
}

// An entry opened by its identifier alone knows its own name and type.
void CompleteEntry(const Library& library, const Book& book, Entry& entry) {
  if (entry.type != 0) return;
  const auto object = book.Open(entry.entryId, entry.name).As<IMAPIProp>(IID_IMAPIProp);
  if (!object) throw CommandError(kFailed, "'" + entry.name + "' has no properties");
  ULONG count = 0;
  const BufferPtr<SPropValue> values = ReadAll(library, object.Get(), entry.name, count);
  entry.type = NumberOf(values.get(), count, PR_OBJECT_TYPE, 0);
  const std::string name = StringOf(values.get(), count, PR_DISPLAY_NAME_W);
  if (!name.empty()) entry.name = name;
}

// One recipient, allocated as the library allocates its lists, because the library may free it.
RecipientsPtr MakeRecipient(const Library& library, const Entry& entry) {
  RecipientsPtr list = library.Own(static_cast<ADRLIST*>(library.Allocate(CbNewADRLIST(1))));
  constexpr ULONG kValues = 4;
  auto* values = static_cast<SPropValue*>(library.Allocate(kValues * sizeof(SPropValue)));
  list->aEntries[0].rgPropVals = values;
  list->aEntries[0].cValues = kValues;
  list->cEntries = 1;
  const WideString name = ToWide(entry.name);
  values[0].ulPropTag = PR_ENTRYID;
  values[0].Value.bin.cb = static_cast<ULONG>(entry.entryId.size());
  values[0].Value.bin.lpb = static_cast<BYTE*>(library.AllocateMore(entry.entryId.size(), values));
  std::memcpy(values[0].Value.bin.lpb, entry.entryId.data(), entry.entryId.size());
  values[1].ulPropTag = PR_RECIPIENT_TYPE;
  values[1].Value.l = MAPI_TO;
  values[2].ulPropTag = PR_OBJECT_TYPE;
  values[2].Value.ul = entry.type;
  values[3].ulPropTag = PR_DISPLAY_NAME_W;
  values[3].Value.lpszW =
      static_cast<WCHAR*>(library.AllocateMore((name.size() + 1) * sizeof(WCHAR), values));
  std::memcpy(values[3].Value.lpszW, name.c_str(), name.size() * sizeof(WCHAR));
  return list;
}

}  // namespace

Report ShowTree(const Library& library, const Options& options) {
  const Book book(library, options.profile);
  Listing listing{{{"container", "Container"},
                   {"depth"},
                   {"entries", "Entries"},
                   {"unreadable", "Unreadable"},
                   {"status", "Status"},
                   {"flags", "Flags"},
                   {"entryId"}},
                  {}};
  for (const Container& container : book.ReadContainers()) {
    const ContainerFigures figures = ReadFigures(library, book, container);
    listing.rows.push_back({Cell(std::string(2 * container.depth, ' ') + container.name, container.name),
                            Cell::Number(container.depth), figures.entries, figures.unreadable,
                            figures.status, Cell(ContainerFlagNames(container.flags), container.flags),
                            ToHex(container.entryId)});
  }
  return Report::Of(std::move(listing), "The address book has no containers.");
}

Report ListEntries(const Library& library, const Options& options) {
  const Book book(library, options.profile);
  Listing listing{{{"name", "Name"},
                   {"type", "Type"},
                   {"addressType", "Address type"},
                   {"address", "Address"},
                   {"container", "Container"},
                   {"entryId"}},
                  {}};
  for (const Container& container : book.ChooseContainers(options.container)) {
    book.ForEachEntry(container, [&](Entry&& entry) {
      listing.rows.push_back({std::move(entry.name), ObjectTypeName(entry.type), std::move(entry.addressType),
                              std::move(entry.address), std::move(entry.container), ToHex(entry.entryId)});
      return true;
    });
  }
  return Report::Of(std::move(listing), "There are no entries.");
}

Report ShowEntry(const Library& library, const Options& options) {
  const Book book(library, options.profile);
  const std::optional<Entry> entry = FindEntry(book, options, [](const Entry&) { return true; });
  if (!entry) return Report::Of({}, "There are no entries.");
  const auto object = book.Open(entry->entryId, entry->name).As<IMAPIProp>(IID_IMAPIProp);
  if (!object) throw CommandError(kFailed, "'" + entry->name + "' has no properties");
  ULONG count = 0;
  const BufferPtr<SPropValue> values = ReadAll(library, object.Get(), entry->name, count);
  Listing listing{{{"property", "Property"}, {"value", "Value"}}, {}};
  for (ULONG i = 0; i < count; ++i) {
    listing.rows.push_back({diag::PropTagName(values.get()[i].ulPropTag), ValueCell(values.get()[i])});
  }
  return Report::Of(std::move(listing), "The entry has no properties.");
}

Report ExpandList(const Library& library, const Options& options) {
  const Book book(library, options.profile);
  std::optional<Entry> entry =
      FindEntry(book, options, [](const Entry& candidate) { return candidate.type == MAPI_DISTLIST; });
  if (!entry) return Report::Of({}, "There is no distribution list to expand.");
  CompleteEntry(library, book, *entry);
  RecipientsPtr list = MakeRecipient(library, *entry);
  // The session frees or reuses the list given and hands one out even where it fails.
  ADRLIST* expanded = list.release();
  const HRESULT result = book.session()->ExpandRecipients(0, &expanded);
  list = library.Own(expanded);
  Check(result, "expand '" + entry->name + "'");
  book.AddAddresses(list.get());
  return Report::Of(RecipientListing(list.get()), "'" + entry->name + "' has no members.");
}

}  // namespace orvctl
