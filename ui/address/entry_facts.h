// What one entry tells of itself when it is opened. Everything here calls providers, none of whose exceptions passes.
#pragma once

#include <optional>

#include "orv/orvapi.h"
#include "platform/com_ptr.h"
#include "platform/win.h"
#include "props/entry_id.h"

namespace orv::ui {

// Opens an entry of a list. An empty identifier, which the address book would take for its root, is
// MAPI_E_INVALID_ENTRYID.
HRESULT OpenListed(IAddrBook& book, const EntryId& entryId, ComPtr<IMAPIProp>& entry, ULONG* type = nullptr);
HRESULT OpenListed(IAddrBook& book, const EntryId& entryId, ComPtr<IABContainer>& container);

// What a line shows of its entry.
struct EntryFacts {
  std::optional<WString> name;
  ULONG type = 0;
};
// Fails only when the entry cannot be opened; one may not tell its name. May throw std::bad_alloc.
HRESULT ReadFacts(IAddrBook& book, const EntryId& entryId, EntryFacts& facts);

}  // namespace orv::ui
