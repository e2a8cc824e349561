// The book: the contact file of one service. What it says never changes after it was opened.
#pragma once

#include <mutex>

#include "orv/kit/provider.hpp"
#include "sample_keys.h"

namespace sample {

namespace kit = orv::kit;

// A record of the file, or an address that no record has.
struct Member {
  std::optional<size_t> record;
  std::u16string address;
};

class Book final : public kit::Book {
 public:
  // A file that cannot be read leaves the book empty: a failing service would fail the whole logon.
  explicit Book(const kit::Logon& logon);

  std::vector<kit::EntryRef> Containers(const kit::EntryRef& parent) override;
  HRESULT Read(const kit::EntryRef& entry, std::span<const ULONG> columns, kit::PropList& values) override;
  kit::RowsPtr Contents(const kit::EntryRef& container) override;

 private:
  void ReadContacts(kit::PropList& values) const;
  HRESULT ReadRecord(size_t record, std::span<const ULONG> columns, kit::PropList& values) const;
  HRESULT ReadMember(ULONG group, const Member& member, std::span<const ULONG> columns,
                     kit::PropList& values) const;
  std::vector<Member> MembersOf(size_t group) const;
  std::optional<size_t> FindRecord(const kit::EntryRef& entry) const;
  const KeyIndex& Keys() const;

  const std::wstring path_;
  std::optional<formats::VCardFile> file_;
  HRESULT status_ = S_OK;
  mutable orv::sdk::Lock lock_;  // guards the making of
  mutable std::optional<KeyIndex> keys_;
};

// What a service keeps in its profile section: the file, which has to be readable when it is chosen.
kit::Settings SampleSettings();

}  // namespace sample
