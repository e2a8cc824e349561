// Walking the address book.
#include "tools/orvctl/book.h"

#include <algorithm>

#include "tools/orvctl/errors.h"

namespace orvctl {

Book::Book(const Library& library, const std::string& profile)
    : library_(library), session_(library.LogOn(profile)) {
  Check(session_->OpenAddressBook(0, addressBook_.Put()), "open the address book");
}

std::vector<Container> Book::ReadContainers() const {
  ULONG type = 0;
  ComPtr<IUnknown> opened;
  Check(addressBook_->OpenEntry(0, nullptr, nullptr, 0, &type, opened.Put()), "open the root container");
  const auto root = opened.As<IABContainer>(IID_IABContainer);
  if (!root) throw CommandError(kFailed, "the root is no container");
  ComPtr<IMAPITable> table;
  Check(root->GetHierarchyTable(MAPI_UNICODE | CONVENIENT_DEPTH, table.Put()), "list the containers");
  const std::vector<ULONG> columns = {PR_DISPLAY_NAME_W, PR_ENTRYID, PR_OBJECT_TYPE, PR_CONTAINER_FLAGS,
                                      PR_DEPTH};
  std::vector<Container> containers;
  ULONG least = ~ULONG{0};
  library_.ForEachRow(table.Get(), columns, [&](const SRow& row) {
    containers.push_back({StringOf(row.lpProps, row.cValues, PR_DISPLAY_NAME_W),
                          BytesOf(row.lpProps, row.cValues, PR_ENTRYID),
                          NumberOf(row.lpProps, row.cValues, PR_CONTAINER_FLAGS, 0),
                          NumberOf(row.lpProps, row.cValues, PR_DEPTH, 0)});
    least = std::min(least, containers.back().depth);
    return true;
  });
  for (Container& container : containers) container.depth -= least;
  return containers;
}

std::vector<Container> Book::ChooseContainers(const std::string& wanted) const {
  std::vector<Container> containers = ReadContainers();
  if (wanted.empty()) return containers;
  const std::optional<Bytes> entryId = AsEntryId(wanted);
  const auto found = std::find_if(containers.begin(), containers.end(), [&](const Container& container) {
    return container.name == wanted || (entryId && container.entryId == *entryId);
  });
  if (found == containers.end()) throw CommandError(kNotFound, "there is no container '" + wanted + "'");
  return {std::move(*found)};
}

ComPtr<IUnknown> Book::Open(const Bytes& entryId, const std::string& what) const {
  Bytes copy = entryId;
  ULONG type = 0;
  ComPtr<IUnknown> opened;
  Check(addressBook_->OpenEntry(static_cast<ULONG>(copy.size()), reinterpret_cast<ENTRYID*>(copy.data()),
                                nullptr, 0, &type, opened.Put()),
        "open '" + what + "'");
  return opened;
}

ComPtr<IMAPITable> Book::OpenContents(const Container& container) const {
  const ComPtr<IUnknown> opened = Open(container.entryId, container.name);
  const auto object = opened.As<IMAPIContainer>(IID_IMAPIContainer);
  ComPtr<IMAPITable> table;
  if (!object) return table;
  const HRESULT result = object->GetContentsTable(MAPI_UNICODE, table.Put());
  if (result != MAPI_E_NO_SUPPORT) Check(result, "list the entries of '" + container.name + "'");
  return table;
}

bool Book::ForEachEntry(const Container& container, const std::function<bool(Entry&&)>& use) const {
  const ComPtr<IMAPITable> table = OpenContents(container);
  if (!table) return true;
  const std::vector<ULONG> columns = {PR_DISPLAY_NAME_W, PR_ADDRTYPE_W, PR_EMAIL_ADDRESS_W, PR_ENTRYID,
                                      PR_OBJECT_TYPE};
  bool more = true;
  library_.ForEachRow(table.Get(), columns, [&](const SRow& row) {
    const auto text = [&](ULONG tag) { return StringOf(row.lpProps, row.cValues, tag); };
    more = use({text(PR_DISPLAY_NAME_W), text(PR_ADDRTYPE_W), text(PR_EMAIL_ADDRESS_W), container.name,
                BytesOf(row.lpProps, row.cValues, PR_ENTRYID),
                NumberOf(row.lpProps, row.cValues, PR_OBJECT_TYPE, 0)});
    return more;
  });
  return more;
}

void Book::AddAddresses(ADRLIST* list) const {
  if (!list || list->cEntries == 0) return;
  SizedSPropTagArray(1, tags) = {1, {PR_EMAIL_ADDRESS_W}};
  const HRESULT result = addressBook_->PrepareRecips(0, reinterpret_cast<SPropTagArray*>(&tags), list);
  if (result != MAPI_E_NO_SUPPORT) Check(result, "ask the providers for the addresses");
}

std::optional<Bytes> AsEntryId(const std::string& text) {
  std::optional<Bytes> bytes = FromHex(text);
  if (bytes && bytes->size() < ORV_MIN_ENTRYID) bytes.reset();
  return bytes;
}

Listing RecipientListing(const ADRLIST* list) {
  Listing listing{{{"type", "Type"},
                   {"name", "Name"},
                   {"addressType", "Address type"},
                   {"address", "Address"},
                   {"objectType"},
                   {"entryId"}},
                  {}};
  for (ULONG i = 0; list && i < list->cEntries; ++i) {
    const ADRENTRY& entry = list->aEntries[i];
    const auto text = [&](ULONG tag) { return StringOf(entry.rgPropVals, entry.cValues, tag); };
    const auto number = [&](ULONG tag) { return NumberOf(entry.rgPropVals, entry.cValues, tag, 0); };
    listing.rows.push_back({RecipientTypeName(number(PR_RECIPIENT_TYPE)), text(PR_DISPLAY_NAME_W),
                            text(PR_ADDRTYPE_W), text(PR_EMAIL_ADDRESS_W),
                            ObjectTypeName(number(PR_OBJECT_TYPE)),
                            ToHex(BytesOf(entry.rgPropVals, entry.cValues, PR_ENTRYID))});
  }
  return listing;
}

}  // namespace orvctl
