// The objects that a book hands out.
#pragma once

#include "orv/kit/book.hpp"
#include "orv/kit/boundary.hpp"

namespace orv::kit {

// Kinds of the templates by which callers say what to create; no entry is of these.
inline constexpr ULONG kUserTemplateKind = 0xFFFFFFFE, kListTemplateKind = 0xFFFFFFFF;

// Which entry of which book an object stands for.
struct Origin {
  std::shared_ptr<Book> book;
  EntryRef entry;  // of one that was never saved: the container that it is made in
  ULONG objectType = MAPI_MAILUSER;
  bool isNew = false;
  ULONG createFlags = 0;
  // Of an object that makes an existing entry a member: the entry's identifier. `entry` is the list then, and what is
  // saved already, or came with a list that is a member, is not new.
  std::vector<BYTE> member = {};

  bool IsMember() const noexcept { return !member.empty(); }
  // Whether contents, creating and deleting are those of `entry`.
  bool IsStored() const noexcept { return !isNew && !IsMember(); }
};

// Of an entry that says none of its own.
ULONG DisplayTypeOf(ULONG objectType) noexcept;

// Tells that a list has other members: its own tables, whoever has advised, the tables that show the list.
void TellOfMembers(Book& book, const EntryRef& list) noexcept;

// A mail user, a distribution list or a container, as the type says.
sdk::ComPtr<IMAPIProp> MakeEntry(Origin origin, PropList values, Access access);

// What stands in *provider of ABProviderOpen.
sdk::ComPtr<IAddrBook> MakeProviderObject(std::shared_ptr<Book> book, PropList root);

// Opens an entry of this book or, where the session lends a hand, of any provider.
HRESULT OpenAnyEntry(Book& book, const SBinary& id, sdk::ComPtr<IMAPIProp>& entry, ULONG* objectType);

// The methods of containers that do not depend on the interface.
HRESULT OpenContents(const Origin& origin, ULONG flags, LPMAPITABLE* table);
HRESULT OpenPropertyOf(const Origin& origin, ULONG tag, LPCIID iid, ULONG flags, LPUNKNOWN* object);
HRESULT OpenHierarchy(const Origin& origin, ULONG flags, LPMAPITABLE* table);
HRESULT CreateEntryIn(const Origin& origin, const SBinary& templateId, ULONG flags, LPMAPIPROP* entry);
// What the template says: one of ours, or an entry (which is opened) that the new one is to be like; a mail user
// without one.
HRESULT ReadTemplate(Book& book, const SBinary& id, ULONG* objectType, sdk::ComPtr<IMAPIProp>& entry);
HRESULT CopyEntriesInto(const Origin& origin, const ENTRYLIST* entries);
HRESULT DeleteEntriesOf(const Origin& origin, const ENTRYLIST* entries);
HRESULT ResolveNamesIn(const Origin& origin, const SPropTagArray* tags, ADRLIST* list, FlagList* flags);

// IAddrBook::Details and NewEntry. *made is the new entry's identifier, a root.
HRESULT ShowDetailsOf(Book& book, HWND owner, const SBinary& id, ULONG flags);
HRESULT ShowNewIn(Book& book, HWND owner, const SBinary& container, const SBinary& templateId, ULONG* size,
                  LPENTRYID* made);

}  // namespace orv::kit
