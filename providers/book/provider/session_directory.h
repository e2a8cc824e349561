// Entries of all containers of a session, for the window of a list.
#pragma once

#include "providers/book/provider/local_book.h"
#include "providers/book/windows/directory.h"

namespace book {

// On one thread. Tables stay open as long as it lives: each letter that is typed searches them again.
class SessionDirectory final : public Directory {
 public:
  // `book` has the list; its own entries are looked for in its file.
  explicit SessionDirectory(LocalBook& book);

  const std::vector<Container>& Containers() override;
  HRESULT Find(size_t container, const std::wstring& text, size_t most,
               std::vector<FoundEntry>* found) override;
  HRESULT Look(FoundEntry* entry) override { return book_.LookAtForeign(entry); }
  HRESULT MemberOf(const EntryId& id, formats::ContactMember* member) override {
    return book_.ContactMemberOf(id, member);
  }
  HRESULT Show(HWND owner, const EntryId& id) override;

 private:
  using Table = orv::sdk::ComPtr<IMAPITable>;

  template <class Interface>
  HRESULT Open(EntryId id, orv::sdk::ComPtr<Interface>& object) const;
  HRESULT OpenHierarchy(Table& table) const;
  HRESULT OpenContents(const EntryId& id, Table& table) const;
  template <class Visit>
  HRESULT ReadRows(IMAPITable& table, LONG count, const Visit& visit) const;
  void ReadContainers();
  bool IsOwn(const EntryId& id) const;
  HRESULT Seek(IMAPITable& table, const std::wstring& text) const;
  HRESULT FindIn(IMAPITable& table, const std::wstring& text, size_t most,
                 std::vector<FoundEntry>* found) const;

  LocalBook& book_;
  const orv::sdk::ComPtr<IOrvSupport2> session_;
  std::vector<Container> containers_;
  std::vector<Table> tables_;  // null: not opened yet, or it cannot be
  bool isRead_ = false;
};

}  // namespace book
