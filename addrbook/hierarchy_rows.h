// The rows of the root's hierarchy table while the providers are being asked for them. Calls providers; their
// exceptions become the code of the provider that threw. May throw std::bad_alloc.
#pragma once

#include <vector>

#include "orv/orvapi.h"
#include "platform/buffer.h"
#include "platform/com_ptr.h"

namespace orv {

class EntryId;

class HierarchyRows {
 public:
  explicit HierarchyRows(IAddrBook& book) : book_(book) {}

  // What the table lacks of a provider, or shows of it that is odd.
  struct Shortage {
    HRESULT code = S_OK;
    const WCHAR* text = nullptr;
  };

  // The provider's own row and, with CONVENIENT_DEPTH, its containers behind it, one level deeper each. The
  // result is the provider's answer for its own row: what fails below that only shortens the table.
  HRESULT AddProvider(IAddrBook& provider, ULONG flags, Shortage& shortage);

  // A table of copies of all rows, in the order in which they were added.
  HRESULT MakeTable(IMAPITable** table) const;

 private:
  HRESULT AddContainers(const EntryId& providerRoot, Shortage& shortage);
  HRESULT AddRows(ComPtr<IMAPITable> table, Shortage& shortage);
  bool Add(PropValues row, Shortage& shortage);

  IAddrBook& book_;
  std::vector<PropValues> rows_;
  HRESULT failure_ = S_OK;
};

}  // namespace orv
