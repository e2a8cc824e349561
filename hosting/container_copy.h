// Copying what a container holds into another one, through their published interfaces. Calls providers.
#pragma once

#include <string_view>
#include <unordered_set>

#include "orv/orvapi.h"
#include "platform/win.h"
#include "props/entry_id.h"

namespace orv {

// The entry identifiers that a copy has met: of what it copies from and of what it made. Keeps a container
// from being copied into itself and ends cycles.
class VisitedEntries {
 public:
  // False when the identifier was met before. An object without an identifier equals nothing.
  bool Add(EntryId entryId);

 private:
  struct Hash {
    std::size_t operator()(const EntryId& id) const noexcept {
      return std::hash<std::string_view>()(id.Bytes());
    }
  };
  std::unordered_set<EntryId, Hash> identifiers_;
};

struct ContainerCopy {
  bool contents;   // entries, and the members of lists among them
  bool hierarchy;  // containers below
  ULONG flags;     // of the property copies
};

// PR_ENTRYID of an object; an object without one has the empty identifier.
HRESULT ReadEntryId(IUnknown& object, EntryId& entryId);

// Depth first: each entry is created in the destination after the template of the source's entry, given its
// properties and saved before the next one. What was met before is left out. The first failure ends it.
HRESULT CopyContainer(IUnknown& source, IUnknown& destination, const ContainerCopy& what,
                      VisitedEntries& visited);

}  // namespace orv
