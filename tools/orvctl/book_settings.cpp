#include "tools/orvctl/book_settings.h"

#include <algorithm>

#include "tools/orvctl/errors.h"
#include "tools/orvctl/new_contacts.h"

namespace orvctl {
namespace {

std::optional<Container> FindContainer(const std::vector<Container>& containers, const Bytes& entryId) {
  const auto found = std::find_if(containers.begin(), containers.end(),
                                  [&](const Container& each) { return each.entryId == entryId; });
  if (found == containers.end()) return std::nullopt;
  return *found;
}

}  // namespace

void RequireRecipients(const Container& container, const std::string& doing) {
  if ((container.flags & AB_RECIPIENTS) == 0)
    throw CommandError(kFailed, "cannot " + doing + ": it holds no recipients; take one below it");
}

// The address book has one code for a failure and for an address book without containers.
std::optional<Container> DefaultContainer(const Library& library, const Book& book,
                                          const std::vector<Container>& containers) {
  ULONG size = 0;
  auto entryId = library.allocator().Own<ENTRYID>();
  const HRESULT result = book.addressBook()->GetDefaultDir(&size, entryId.Put());
  if (result == MAPI_E_CALL_FAILED || result == MAPI_E_NOT_FOUND) return std::nullopt;
  Receive(entryId, result, "read which container is the default one");
  const auto* const bytes = reinterpret_cast<const BYTE*>(entryId.Get());
  return FindContainer(containers, Bytes(bytes, bytes + size));
}

void SetDefaultContainer(const Book& book, const Container& container) {
  const std::string doing = "make '" + container.name + "' the default container";
  RequireRecipients(container, doing);
  Bytes id = container.entryId;
  const HRESULT result =
      book.addressBook()->SetDefaultDir(static_cast<ULONG>(id.size()), reinterpret_cast<ENTRYID*>(id.data()));
  Check(result, doing);
  if (IsModifiable(container)) SetStoredBook(book, container);
}

std::vector<Container> SearchPath(const Library& library, const Book& book,
                                  const std::vector<Container>& containers) {
  auto rows = library.allocator().Own<SRowSet>();
  const HRESULT result = book.addressBook()->GetSearchPath(MAPI_UNICODE, rows.Put());
  std::vector<Container> path;
  if (result == MAPI_E_NOT_FOUND) return path;
  Receive(rows, result, "read the search path");
  for (ULONG i = 0; i < rows->cRows; ++i) {
    const auto found = FindContainer(containers, BytesOf(ValueView(rows->aRow[i]), PR_ENTRYID));
    if (found) path.push_back(*found);
  }
  return path;
}

void SetSearchPath(const Library& library, const Book& book, const std::vector<Container>& path) {
  const Allocator& allocator = library.allocator();
  orv::sdk::RowSetBuilder builder(allocator, path.size());
  for (const Container& container : path) {
    RequireRecipients(container, "search '" + container.name + "'");
    Allocator::Root root = allocator.AllocateRoot(sizeof(SPropValue));
    auto* const value = static_cast<SPropValue*>(root.get());
    value->ulPropTag = PR_ENTRYID;
    value->Value.bin = allocator.CopyBytes(value, container.entryId.data(), container.entryId.size());
    builder.Add(std::move(root), 1);
  }
  const RowSet rows = allocator.Own(builder.Release());
  Check(book.addressBook()->SetSearchPath(0, rows.Get()), "set the search path");
}

}  // namespace orvctl
