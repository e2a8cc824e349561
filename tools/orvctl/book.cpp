// Walking the address book.
#include "tools/orvctl/book.h"

#include <algorithm>
#include <set>

#include "diag/names.h"
#include "tools/orvctl/errors.h"
#include "tools/orvctl/logon.h"
#include "tools/orvctl/table.h"

namespace orvctl {
namespace {

Container ReadContainer(const ValueView& row) {
  return {TextOf(row, PR_DISPLAY_NAME_W), BytesOf(row, PR_ENTRYID), row.Number(PR_CONTAINER_FLAGS),
          row.Number(PR_DEPTH)};
}

// Depths count from the root or from its first level, as the tables see it; here the first level is 0.
void CountFromFirstLevel(std::vector<Container>& containers) {
  const auto isHigher = [](const Container& a, const Container& b) { return a.depth < b.depth; };
  const auto highest = std::min_element(containers.begin(), containers.end(), isHigher);
  const ULONG least = highest != containers.end() ? highest->depth : 0;
  for (Container& container : containers) container.depth -= least;
}

Listing RecipientListing(const ADRLIST* list) {
  Listing listing{{{"type", "Type"},
                   {"name", "Name"},
                   {"addressType", "Address type"},
                   {"address", "Address"},
                   {"objectType"},
                   {"id"}},
                  {}};
  for (ULONG i = 0; list && i < list->cEntries; ++i) {
    const ValueView entry(list->aEntries[i]);
    listing.rows.push_back({RecipientTypeName(entry.Number(PR_RECIPIENT_TYPE)),
                            TextOf(entry, PR_DISPLAY_NAME_W), TextOf(entry, PR_ADDRTYPE_W),
                            TextOf(entry, PR_EMAIL_ADDRESS_W), ObjectTypeName(entry.Number(PR_OBJECT_TYPE)),
                            ToHex(BytesOf(entry, PR_ENTRYID))});
  }
  return listing;
}

}  // namespace

Book::Book(const Library& library, const std::string& profile)
    : library_(library),
      profile_(profile),
      lastWords_(CrashTexts(library, profile)),
      session_(LogOn(library, profile)) {
  Receive(addressBook_, session_->OpenAddressBook(0, addressBook_.Put()), "open the address book");
}

// What no command's result tells.
Book::~Book() {
  try {
    if (library_.problems() != nullptr) ReadProblems(*library_.problems());
  } catch (...) {
  }
}

void Book::ReadProblems(std::vector<Message>& problems) const {
  const auto session = session_.As<IOrvSession2>(IID_IOrvSession2);
  auto rows = library_.allocator().Own<SRowSet>();
  if (!session || FAILED(session->GetProblems(0, rows.Put())) || !rows) return;
  for (ULONG i = 0; i < rows->cRows; ++i) {
    const ValueView row(rows->aRow[i]);
    const auto code = static_cast<HRESULT>(row.Number(PR_ORV_PROBLEM_CODE));
    Message problem{"service '" + TextOf(row, PR_DISPLAY_NAME_W) + "' (" +
                        TextOf(row, PR_SERVICE_DLL_NAME_W) + "): " + TextOf(row, PR_ORV_PROBLEM_TEXT_W),
                    diag::ResultName(static_cast<uint32_t>(code)), FAILED(code) ? kSomeFailed : kSuccess};
    // Some commands log on twice.
    const auto isSame = [&](const Message& each) { return each.text == problem.text; };
    if (std::none_of(problems.begin(), problems.end(), isSame)) problems.push_back(std::move(problem));
  }
}

std::vector<Container> Book::ReadContainers() const {
  const std::string doing = "list the containers";
  const auto root = OpenAny({}, "the root container").As<IABContainer>();
  if (!root) throw CommandError(kFailed, "the root is no container");
  ComPtr<IMAPITable> table;
  Receive(table, root->GetHierarchyTable(MAPI_UNICODE | CONVENIENT_DEPTH, table.Put()), doing);
  TagArray columns{PR_DISPLAY_NAME_W, PR_ENTRYID, PR_OBJECT_TYPE, PR_CONTAINER_FLAGS, PR_DEPTH};
  std::vector<Container> containers;
  std::set<Bytes> seen;
  // A hierarchy that does not end brings the same ones again and again.
  ForEachRow(library_, table.Get(), columns.Get(), doing, [&](const ValueView& row) {
    Container container = ReadContainer(row);
    const bool isNew = container.entryId.empty() || seen.insert(container.entryId).second;
    if (isNew) containers.push_back(std::move(container));
    return true;
  });
  CountFromFirstLevel(containers);
  return containers;
}

Container Book::OpenList(const Bytes& entryId, const std::string& what) const {
  TagArray tags{PR_DISPLAY_NAME_W, PR_OBJECT_TYPE};
  const ComPtr<IMAPIProp> object = Open(entryId, what);
  const Properties properties(library_, object.Get(), tags.Get(), "read the properties of '" + what + "'");
  const ULONG type = properties.view().Number(PR_OBJECT_TYPE);
  if (type != MAPI_DISTLIST && type != MAPI_ABCONT)
    throw CommandError(kNotFound, "'" + what + "' is neither a container nor a distribution list");
  const std::string name = TextOf(properties.view(), PR_DISPLAY_NAME_W);
  return {name.empty() ? what : name, entryId};
}

ReadingState Book::ReadState(const Container& container) const {
  const std::string doing = "read the properties of '" + container.name + "'";
  TagArray tags{PR_ORV_SKIPPED_RECORDS, PR_ORV_BOOK_STATUS, PR_ORV_BOOK_FILE_W};
  const ComPtr<IMAPIProp> object = Open(container.entryId, container.name);
  const Properties properties(library_, object.Get(), tags.Get(), doing);
  const ValueView values = properties.view();
  ReadingState state;
  if (values.Find(PR_ORV_SKIPPED_RECORDS)) state.skipped = values.Number(PR_ORV_SKIPPED_RECORDS);
  if (values.Find(PR_ORV_BOOK_STATUS)) state.status = static_cast<HRESULT>(values.Number(PR_ORV_BOOK_STATUS));
  state.file = TextOf(values, PR_ORV_BOOK_FILE_W);
  return state;
}

// An empty identifier would open the root container.
ComPtr<IMAPIProp> Book::Open(const Bytes& entryId, const std::string& what) const {
  if (entryId.empty()) throw CommandError(kFailed, "'" + what + "' has no entry identifier");
  return OpenAny(entryId, "'" + what + "'");
}

ComPtr<IMAPIProp> Book::OpenAny(Bytes entryId, const std::string& what) const {
  ULONG type = 0;
  ComPtr<IUnknown> opened;
  auto* const identifier = entryId.empty() ? nullptr : reinterpret_cast<ENTRYID*>(entryId.data());
  const HRESULT result = addressBook_->OpenEntry(static_cast<ULONG>(entryId.size()), identifier, nullptr, 0,
                                                 &type, opened.Put());
  Receive(opened, result, "open " + what);
  ComPtr<IMAPIProp> object = Foreign("open " + what, [&] { return opened.As<IMAPIProp>(); });
  if (!object) throw CommandError(kFailed, what + " has no properties");
  return object;
}

ComPtr<IMAPITable> Book::OpenContents(const Container& container) const {
  const std::string doing = "list the entries of '" + container.name + "'";
  const ComPtr<IMAPIProp> opened = Open(container.entryId, container.name);
  const auto object = Foreign(doing, [&] { return opened.As<IMAPIContainer>(); });
  ComPtr<IMAPITable> table;
  if (!object) return table;
  const HRESULT result = Foreign(doing, [&] { return object->GetContentsTable(MAPI_UNICODE, table.Put()); });
  if (result != MAPI_E_NO_SUPPORT) Receive(table, result, doing);
  return table;
}

bool Book::ForEachEntry(const Container& container, IMAPITable* contents,
                        const std::function<bool(Entry&&)>& use) const {
  TagArray columns{PR_DISPLAY_NAME_W, PR_ADDRTYPE_W, PR_EMAIL_ADDRESS_W, PR_ENTRYID, PR_OBJECT_TYPE};
  const std::string doing = "list the entries of '" + container.name + "'";
  return ForEachRow(library_, contents, columns.Get(), doing, [&](const ValueView& row) {
    return use({TextOf(row, PR_DISPLAY_NAME_W), TextOf(row, PR_ADDRTYPE_W), TextOf(row, PR_EMAIL_ADDRESS_W),
                container.name, BytesOf(row, PR_ENTRYID), row.Number(PR_OBJECT_TYPE)});
  });
}

// Asking for the addresses groups the list by provider. Recipients without one are still those that were chosen.
Report Book::ReportRecipients(ADRLIST* list, std::string ifEmpty) const {
  TagArray tags{PR_EMAIL_ADDRESS_W, PR_ADDRTYPE_W};
  const bool isEmpty = !list || list->cEntries == 0;
  const HRESULT result = isEmpty ? S_OK : addressBook_->PrepareRecips(0, tags.Get(), list);
  Report report = Report::Of(RecipientListing(list), std::move(ifEmpty));
  if (FAILED(result) && result != MAPI_E_NO_SUPPORT) {
    report.messages.push_back({"cannot ask the providers for the addresses",
                               diag::ResultName(static_cast<uint32_t>(result)), kFailed});
  }
  return report;
}

std::optional<Bytes> AsEntryId(const std::string& text) {
  std::optional<Bytes> bytes = FromHex(text);
  if (bytes && bytes->size() < ORV_MIN_ENTRYID) bytes.reset();
  return bytes;
}

}  // namespace orvctl
