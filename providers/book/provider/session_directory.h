// Entries of all containers of a session, for the window of a list.
#pragma once

#include <functional>

#include "orv/kit/prop_object.hpp"
#include "providers/book/windows/directory.h"

namespace book {

namespace kit = orv::kit;

// On one thread. Tables stay open as long as it lives: each letter that is typed searches them again.
class SessionDirectory final : public Directory {
 public:
  using MakeMember = std::function<HRESULT(const EntryId& id, formats::ContactMember* member)>;

  SessionDirectory(const kit::Host& host, MakeMember makeMember);

  const std::vector<Container>& Containers() override;
  std::vector<FoundEntry> Find(size_t container, const std::wstring& text) override;
  HRESULT MemberOf(const EntryId& id, formats::ContactMember* member) override {
    return makeMember_(id, member);
  }

 private:
  using Table = orv::sdk::ComPtr<IMAPITable>;

  template <class Interface>
  HRESULT Open(EntryId id, orv::sdk::ComPtr<Interface>& object) const;
  HRESULT OpenHierarchy(Table& table) const;
  HRESULT OpenContents(const EntryId& id, Table& table) const;
  template <class Visit>
  HRESULT ReadRows(IMAPITable& table, LONG count, const Visit& visit) const;
  void ReadContainers();
  HRESULT Seek(IMAPITable& table, const std::wstring& text) const;
  std::vector<FoundEntry> FindIn(IMAPITable& table, const std::wstring& text) const;

  const kit::Host& host_;
  const orv::sdk::ComPtr<IOrvSupport2> session_;
  const MakeMember makeMember_;
  std::vector<Container> containers_;
  std::vector<Table> tables_;  // null: not opened yet, or it cannot be
  bool isRead_ = false;
};

}  // namespace book
