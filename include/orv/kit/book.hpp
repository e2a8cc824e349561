// A provider object and all that hangs off it, over one class that the author writes: which containers there are,
// which entries, how their properties read. Everything else is made here: identifiers, containers, distribution
// lists, mail users, tables, routing, recipients, and for books that can be changed creating, saving, deleting and
// telling about it.
//
//   class PhoneList final : public kit::Book {
//    public:
//     enum Kind : ULONG { kRoot, kPeople, kPerson };
//     explicit PhoneList(const kit::Logon& logon)
//         : Book(logon, {kit::kNoKey, kit::kNoKey, kit::kNumberKey}), people_(...) {}
//
//     std::vector<kit::EntryRef> Containers(const kit::EntryRef& parent) override { root: kPeople }
//     HRESULT Read(const kit::EntryRef& entry, std::span<const ULONG> columns, kit::PropList& values) override;
//     kit::RowsPtr Contents(const kit::EntryRef& container) override { return RowsOf(all entries); }
//   };
//
// Objects that clients hold keep the book alive. Its hooks are called on any of the client's threads, several at
// once, and without a lock of the kit's unless their comment says so: make immutable what can be, and guard the
// rest. What they throw becomes MAPI_E_NOT_ENOUGH_MEMORY or MAPI_E_CALL_FAILED; what() of the latter is a problem of
// the session (IOrvSupport2::ReportProblem), which orvctl shows.
#pragma once

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "orv/kit/advise.hpp"
#include "orv/kit/entry_id.hpp"
#include "orv/kit/prop_object.hpp"
#include "orv/kit/table.hpp"

namespace orv::kit {

// What a logon gives to the book that is opened for it.
struct Logon {
  HostPtr host;
  MAPIUID uid;        // bytes 4 to 19 of the book's identifiers; registered already
  PropList settings;  // as Settings::Read says: with PR_DISPLAY_NAME, what people call the service
  sdk::ComPtr<IProfSect> section;  // for what is stored later; it may be kept
  ULONG flags;                     // of ABProviderOpen: AB_NO_DIALOG and others
  HMODULE resource = nullptr;  // the address book library's language resources, for Language of window.hpp
};

using RowsPtr = std::unique_ptr<RowSource>;

// Columns of a table while its client has chosen none.
std::vector<ULONG> ContentsColumns();   // name, identifiers, types, address
std::vector<ULONG> HierarchyColumns();  // name, identifiers, types, PR_CONTAINER_FLAGS, PR_DEPTH

// Rows that a function makes when they are read: at least the values of `columns`, into a list that is empty. It is
// called under the table's lock. `all` are the columns that rows may have. Nothing is added to what it makes: a row
// without identifiers cannot be opened, so end it with Ids().Identify(entry, values).
using MakeRow = std::function<HRESULT(size_t row, std::span<const ULONG> columns, PropList& values)>;
RowsPtr RowsMadeBy(size_t count, MakeRow make, std::vector<ULONG> all = ContentsColumns());

class Book : public std::enable_shared_from_this<Book> {
 public:
  static constexpr ULONG kRootKind = 0;

  // `forms`: of the keys of kind 0 (the root container), 1, 2 and so on. A key of the root is
  // zeros. With a worker, whoever has advised is told on its thread, else on the one that changes something.
  Book(const Logon& logon, std::vector<KeyForm> forms, std::shared_ptr<Worker> worker = nullptr);
  virtual ~Book() = default;
  Book(const Book&) = delete;
  Book& operator=(const Book&) = delete;

  // ---- What a provider writes ----

  // Called once, when the book is owned by a shared pointer. A failure fails the logon to the whole profile: fail
  // only where nothing could be served at all.
  virtual HRESULT Open() { return S_OK; }

  // The properties of an entry or a container but the root, as many as there are; at least those of `columns`, none
  // meaning all. For a row of RowsOf it is called under the table's lock, else without one: call no table and no Tell
  // from it. What is missing afterwards is added: identifiers, PR_OBJECT_TYPE (a mail user) and PR_DISPLAY_TYPE.
  // One of MAPI_ABCONT or MAPI_DISTLIST is opened as a container with contents. MAPI_E_NOT_FOUND for one that has
  // gone.
  virtual HRESULT Read(const EntryRef& entry, std::span<const ULONG> columns, PropList& values) = 0;

  // The containers directly below a container, which Read describes; none by default.
  virtual std::vector<EntryRef> Containers(const EntryRef& parent);

  // The rows of a container's or a list's contents table, in their own order: RowsOf where the entries are few, else
  // RowsMadeBy or a RowSource of its own. Rows need identifiers: Ids().Identify. The book stays alive with them.
  // Null: it has no contents (MAPI_E_NO_SUPPORT), as the root.
  virtual RowsPtr Contents(const EntryRef& container);

  // Objects behind properties of an entry or container, besides the tables that the kit makes: OpenProperty comes here
  // with an interface and the flags of the call (MAPI_MODIFY: AccessTo was asked and allows it). Set *object to one
  // that has the interface.
  virtual HRESULT OpenProperty(const EntryRef& entry, ULONG tag, const IID& iid, ULONG flags,
                               sdk::ComPtr<IUnknown>* object);

  // Which entries a name means that a person typed, of a container that is shown; two are as good as many. By default
  // (MAPI_E_NO_SUPPORT) the contents table is searched: who is called exactly so, else whose name begins so.
  virtual HRESULT Resolve(const EntryRef& container, LPCWSTR name, std::vector<EntryRef>* matches);

  // The root container, which is the provider's row in the address book: the service's name, AB_SUBCONTAINERS and
  // AB_UNMODIFIABLE by default.
  virtual void ReadRoot(PropList& values);

  // ---- What a provider that can be changed writes besides ----

  // Whether callers may change an entry, create entries in a container, or change a list's members; asked when it is
  // opened with MAPI_MODIFY or MAPI_BEST_ACCESS, created, deleted, and of a list when its members change.
  virtual Access AccessTo(const EntryRef& entry);

  // Whether entries of this type (MAPI_MAILUSER, MAPI_DISTLIST) can be created; only mail users by default.
  // Containers that can be changed show templates for those that can (PR_DEF_CREATE_MAILUSER, PR_DEF_CREATE_DL), and
  // CreateEntry of others is MAPI_E_NO_SUPPORT. A template may also be an entry, of any provider: the new one has
  // its type. In a list that entry becomes a member instead (AddMember), and this is not asked.
  virtual bool Creates(ULONG objectType) const { return objectType == MAPI_MAILUSER; }

  // Whether a caller may set this value or take away the property, of an entry opened for changes; what PropBody
  // says of the hooks of the same names.
  virtual HRESULT CheckSet(const SPropValue& value);
  virtual HRESULT CheckDelete(ULONG tag);

  // A new entry of the type: stores changes.values and says in *made what it is called from now on; after a failure
  // *made is not looked at. Comes from the first SaveChanges; `flags` are those of CreateEntry
  // (CREATE_CHECK_DUP_STRICT and so on). MAPI_E_COLLISION for one that must not be there twice.
  // `container` may be a list, whose CreateEntry was called without an entry as template: store the new entry where
  // such entries lie and make it a member, or refuse with MAPI_E_NO_SUPPORT.
  // What stands in changes.values after success is what the object shows: set there what storing has added or changed,
  // such as a time or an address. Identifiers come from *made.
  virtual HRESULT Create(const EntryRef& container, ULONG objectType, ULONG flags, Changes& changes,
                         EntryRef* made);
  // Stores what SaveChanges of an entry, list or container that is there brings; `changes` as at Create, and with
  // nothing set or removed too. MAPI_E_OBJECT_CHANGED when it was changed since it was opened, unless changes.force;
  // MAPI_E_OBJECT_DELETED. After a failure nothing is stored.
  virtual HRESULT Change(const EntryRef& entry, Changes& changes);
  // Takes the entry out of the book, with its memberships. DeleteEntries of any container comes here, of the root and
  // of one that does not show the entry too: which one was called is not told. AccessTo and Read have succeeded for
  // the entry just before. MAPI_E_NOT_FOUND when it has gone since, MAPI_E_NO_ACCESS for one that must stay. Never
  // called by a list's DeleteEntries.
  virtual HRESULT Delete(const EntryRef& entry);

  // Several entries at once, where the book can take them out in one transaction and tells by itself (TellsByItself):
  // each is gone then, or has the reason in its place of `results`, which are S_OK so far. A failure of the call itself:
  // none is gone. AccessTo has allowed it for each; whether they are there was not asked. By default
  // (MAPI_E_NO_SUPPORT) Delete is called for one after the other.
  virtual HRESULT DeleteAll(std::span<const EntryRef> entries, std::span<HRESULT> results);

  // Makes an entry a member of a list, or a member none; the entry itself stays as it is. CopyEntries and DeleteEntries
  // of a list come here for each identifier, and SaveChanges of what a list's CreateEntry made of an entry. `id` is
  // any provider's identifier and good during the call: Ids().Read tells which entry of this book it is, and
  // MAPI_E_INVALID_ENTRYID says that it is none; foreign ones are kept as they are and stand as PR_ENTRYID in the rows
  // of Contents. S_OK for a member that is there already, MAPI_E_NOT_FOUND for one that is none, MAPI_E_NO_SUPPORT
  // where lists take none of this kind. Afterwards the kit tells: tables of TablesOf(list), and Tell of a changed list.
  virtual HRESULT AddMember(const EntryRef& list, std::span<const BYTE> id);     // MAPI_E_NO_SUPPORT
  virtual HRESULT RemoveMember(const EntryRef& list, std::span<const BYTE> id);  // MAPI_E_NO_ACCESS

  // The set of the tables that show the contents of a container or a list. With one, tables follow changes and are
  // told by Tell; by default they are snapshots. The set is the book's, one for each container, and lives as long as
  // the book: the kit keeps the pointer for the call only, on any thread. Tables over RowsOf(vector) have nothing to
  // follow: give one only where Contents gives RowsOf(ListEntries) or a RowSource with a Refresh of its own.
  virtual TableSet* TablesOf(const EntryRef& container);

  // Whether Advise at the provider object is offered (else MAPI_E_NO_SUPPORT): for books whose entries change while
  // they are open, and that say so.
  virtual bool TellsOfChanges() const { return false; }

  // True: the book tells (Tell, TableSet::Changed) of every change itself, as one does whose store is shared by several
  // sessions and tells them all; what the kit's objects do is then not told by them.
  virtual bool TellsByItself() const { return false; }

  // The container that an entry belongs to, for notifications; the root by default. It is asked after Delete as well,
  // about the entry that has gone: tell it from the kind or the key, not from what is stored.
  virtual EntryRef ParentOf(const EntryRef& entry);

  // ---- Windows (window.hpp) ----

  // Shows an entry until the user closes the window (IAddrBook::Details); `flags` are the call's. MAPI_E_USER_CANCEL
  // where nothing was changed on purpose; S_OK otherwise. What was changed is told as any change is.
  virtual HRESULT ShowDetails(HWND owner, const EntryRef& entry, ULONG flags);
  // Asks for a new entry of a container and stores it (IAddrBook::NewEntry): *made is what it is called. `objectType`
  // is that of the template, 0 without one: the user is asked what it is to be. MAPI_E_USER_CANCEL.
  virtual HRESULT ShowNew(HWND owner, const EntryRef& container, ULONG objectType, EntryRef* made);

  // ---- What the author's code may call ----

  const Host& GetHost() const noexcept { return *host_; }
  const HostPtr& ShareHost() const noexcept { return host_; }
  const EntryIdCodec& Ids() const noexcept { return ids_; }
  const EntryRef& Root() const noexcept { return root_; }
  const std::shared_ptr<Worker>& GetWorker() const noexcept { return worker_; }
  const std::wstring& Name() const noexcept { return name_; }

  // Read and what the kit adds; of the root too.
  HRESULT ReadEntry(const EntryRef& entry, std::span<const ULONG> columns, PropList& values);

  // Rows in the order of the entries, each read when it is asked for. Entries that have gone meanwhile show nothing
  // but their identifiers.
  RowsPtr RowsOf(std::vector<EntryRef> entries);
  // The same for tables that follow changes (TablesOf): `list` tells the entries that there are now. It is asked at
  // once, and again after each change under the table's lock: call no table and no Tell from it.
  using ListEntries = std::function<std::vector<EntryRef>()>;
  RowsPtr RowsOf(ListEntries list);

  // What every container has: PR_DISPLAY_NAME, MAPI_ABCONT, DT_LOCAL, the flags (AB_*) and PR_DEPTH 0.
  static void DescribeContainer(PropList& values, std::wstring_view name, ULONG flags);

  // Tells whoever has advised, and the tables of the entry's container. `event` is fnevObjectCreated,
  // fnevObjectModified or fnevObjectDeleted. Creating, saving and deleting through the kit's objects tell by
  // themselves; this is for what happens elsewhere. Call it without a lock of your own. Where there is no memory for
  // it, who has advised is not told.
  void Tell(ULONG event, const EntryRef& entry, ULONG objectType) noexcept;

  // Who has advised at the provider object.
  AdviseList& Advised() noexcept { return advised_; }

  // OpenEntry of the provider object and of every container; null is the root. Outs are untouched after a failure.
  HRESULT OpenEntry(ULONG size, const ENTRYID* id, LPCIID iid, ULONG flags, ULONG* type, LPUNKNOWN* object);

 private:
  const HostPtr host_;
  const EntryIdCodec ids_;
  const EntryRef root_;
  const std::wstring name_;
  const std::shared_ptr<Worker> worker_;
  AdviseList advised_;
};

}  // namespace orv::kit
