// A provider object over the file of a book: one container with its contacts and lists.
#pragma once

#include <map>

#include "orv/kit/book.hpp"
#include "orv/kit/boundary.hpp"
#include "providers/book/provider/book_file.h"
#include "providers/book/provider/entry_kinds.h"
#include "providers/book/provider/watch.h"
#include "providers/book/provider/words.h"
#include "providers/book/windows/directory.h"

namespace book {

namespace kit = orv::kit;

class LocalBook final : public kit::Book {
 public:
  // `name`: of the container. `isReplaced`: another book lay there at the last logon, which the session is told.
  LocalBook(const kit::Logon& logon, std::shared_ptr<BookFile> file, std::wstring name, bool isReplaced);

  HRESULT Open() override;
  void ReadRoot(kit::PropList& values) override;
  std::vector<kit::EntryRef> Containers(const kit::EntryRef& parent) override;
  HRESULT Read(const kit::EntryRef& entry, std::span<const ULONG> columns, kit::PropList& values) override;
  kit::RowsPtr Contents(const kit::EntryRef& container) override;
  HRESULT OpenProperty(const kit::EntryRef& entry, ULONG tag, const IID& iid, ULONG flags,
                       orv::sdk::ComPtr<IUnknown>* object) override;
  HRESULT Resolve(const kit::EntryRef& container, LPCWSTR name, std::vector<kit::EntryRef>* matches) override;

  kit::Access AccessTo(const kit::EntryRef& entry) override;
  bool Creates(ULONG objectType) const override {
    return objectType == MAPI_MAILUSER || objectType == MAPI_DISTLIST;
  }
  HRESULT CheckSet(const SPropValue& value) override;
  HRESULT CheckDelete(ULONG tag) override;
  HRESULT Create(const kit::EntryRef& container, ULONG objectType, ULONG flags, kit::Changes& changes,
                 kit::EntryRef* made) override;
  HRESULT Change(const kit::EntryRef& entry, kit::Changes& changes) override;
  HRESULT Delete(const kit::EntryRef& entry) override;
  HRESULT DeleteAll(std::span<const kit::EntryRef> entries, std::span<HRESULT> results) override;
  HRESULT AddMember(const kit::EntryRef& list, std::span<const BYTE> id) override;
  HRESULT RemoveMember(const kit::EntryRef& list, std::span<const BYTE> id) override;

  kit::TableSet* TablesOf(const kit::EntryRef& container) override;
  bool TellsOfChanges() const override;
  bool TellsByItself() const override { return true; }
  kit::EntryRef ParentOf(const kit::EntryRef& entry) override;

  HRESULT ShowDetails(HWND owner, const kit::EntryRef& entry, ULONG flags) override;
  HRESULT ShowNew(HWND owner, const kit::EntryRef& container, ULONG objectType, kit::EntryRef* made) override;

  // For the window of a list: what an identifier means as a member, and the first entries that a text may mean.
  HRESULT ContactMemberOf(std::span<const BYTE> id, formats::ContactMember* member);
  HRESULT FindEntries(const std::wstring& text, size_t most, std::vector<FoundEntry>* found);
  // Name and address that another provider's entry has now.
  HRESULT LookAtForeign(FoundEntry* entry);

  // The entry or number whose identifier, or instance key, is asked for.
  std::optional<kit::EntryRef> WantedBy(const SRestriction& restriction) const;

  // For the rows of tables.
  HRESULT OpenView(std::shared_ptr<Store>* store, std::unique_ptr<View>* view);
  // At least the columns, none meaning all, and the identifiers of the reference.
  HRESULT DescribeRowAs(const kit::EntryRef& ref, View& view, const Row& row, std::span<const ULONG> columns,
                        kit::PropList& values);
  HRESULT DescribeMember(const EntryKey& list, const Member& member, View& view,
                         std::span<const ULONG> columns, kit::PropList& values);
  // By which the row of a member is told from the others.
  std::vector<BYTE> KeyOfMember(const EntryKey& list, const Member& member) const;
  // A table is open from one call to the other.
  void TableOpened();
  void TableClosed() { --openTables_; }

 private:
  class Ear;

  // Reads through a view that is kept for a moment: names come by the hundred, and so do entries.
  template <class Action>
  HRESULT WithView(const Action& action) {
    std::unique_ptr<View> view = TakeSpare();
    std::shared_ptr<Store> store;
    const HRESULT opened = view ? view->Refresh(nullptr) : OpenView(&store, &view);
    // The entries are those of the book that lay here.
    if (FAILED(opened)) return opened == MAPI_E_OBJECT_CHANGED ? MAPI_E_NOT_FOUND : opened;
    const HRESULT hr = action(*view);
    KeepSpare(std::move(view));
    return hr;
  }
  std::unique_ptr<View> TakeSpare();
  void KeepSpare(std::unique_ptr<View> view);
  bool DropIdleSpare();
  HRESULT OpenStore(std::shared_ptr<Store>* store);
  HRESULT OpenToChange(std::shared_ptr<Store>* store);
  void Report(HRESULT code, const char* sentence);
  void ReadContainer(kit::PropList& values);
  HRESULT ReadLoneMember(const kit::EntryRef& entry, View& view, kit::PropList& values);
  HRESULT DescribeForeign(const Member& member, std::span<const ULONG> columns, kit::PropList& values);
  HRESULT OpenForeign(std::string id, orv::sdk::ComPtr<IMAPIProp>& entry, ULONG* type);
  HRESULT CheckTwin(const formats::Contact& contact, Store& store);
  HRESULT MemberOf(std::span<const BYTE> id, View& view, Member* member);
  HRESULT NameForeign(std::span<const BYTE> id, Member* member);
  void ShowChanges() noexcept;
  void TellChanges(const Changes& changes);
  void TellOf(const book::Change& change, Store& store);
  bool Look();

  const std::shared_ptr<BookFile> file_;
  const kit::Language language_;
  const Wording words_;
  const std::wstring containerName_;
  const bool isReplaced_;
  kit::TableSet tables_;
  std::atomic<int> openTables_{0};
  std::shared_ptr<Ear> ear_;
  std::unique_ptr<Watch> watch_;
  orv::sdk::Lock lock_;  // guards what follows
  std::map<EntryKey, std::unique_ptr<kit::TableSet>> listTables_;
  bool isHeard_ = false;
  HRESULT reported_ = S_OK;
  std::unique_ptr<View> spare_;
  ULONGLONG spareSince_ = 0;
};

}  // namespace book
