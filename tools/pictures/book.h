// The address book of a profile, as a program of the suite opens it.
#pragma once

#include <string>
#include <vector>

#include "orv/orv.h"
#include "orv/orvbase.hpp"

namespace pictures {

// The lists of recipients beside the names. Without titles the dialog has its own texts.
struct Wells {
  std::vector<ULONG> types;
  std::vector<std::wstring> titles;
};

class Book {
 public:
  // Its dialogs open with any container; or with the first one that can be changed and has `entries` of them.
  explicit Book(const std::wstring& profile);
  Book(const std::wstring& profile, ULONG entries);

  // Shows the Address dialog until it is cancelled. Its caption is the dialog's own.
  void Address(Wells wells, ULONG flags = 0) const;

 private:
  void OpenWithEntries(ULONG entries);
  orv::sdk::RowSet Containers() const;
  bool HasEntries(const SBinary& container, ULONG entries) const;
  orv::sdk::ComPtr<IABContainer> Open(const SBinary& container) const;

  orv::sdk::ComPtr<IOrvSession> session_;
  orv::sdk::ComPtr<IAddrBook> book_;
};

}  // namespace pictures
