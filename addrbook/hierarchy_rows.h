// The rows of the root's hierarchy table while the providers are being asked for them. Calls providers; their
// exceptions become the code of the provider that threw. May throw std::bad_alloc.
#pragma once

#include <vector>

#include "orv/orvapi.h"
#include "platform/buffer.h"

namespace orv {

class EntryId;

class HierarchyRows {
 public:
  explicit HierarchyRows(IAddrBook& book) : book_(book) {}

  // The provider's own row and, with CONVENIENT_DEPTH, its containers behind it, one level deeper each. The
  // result is the provider's answer for its own row: what fails below that only shortens the table.
  HRESULT AddProvider(IAddrBook& provider, ULONG flags);

  // A table of copies of all rows, in the order in which they were added.
  HRESULT MakeTable(IMAPITable** table) const;

 private:
  HRESULT AddContainers(const EntryId& providerRoot);
  bool Add(PropValues row);

  IAddrBook& book_;
  std::vector<PropValues> rows_;
  HRESULT failure_ = S_OK;
};

}  // namespace orv
