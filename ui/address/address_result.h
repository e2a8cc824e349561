// Builds the address list that the Address dialog hands back.
#pragma once

#include <vector>

#include "orv/orvapi.h"
#include "platform/win.h"
#include "props/entry_id.h"

namespace orv::ui {

// One chosen recipient: whose entry, and as what. A copy, since a dialog's lines may go while providers are called.
struct ChosenRecipient {
  EntryId entry;
  ULONG recipientType;
};

// Each replaces the caller's `list`, which holds what it held after a failure, and calls providers, none of
// whose exceptions passes.

// By the one recipient.
HRESULT ReplaceByOne(IAddrBook& book, const ChosenRecipient& chosen, ADRLIST*& list);
// By one entry a recipient, in their order. For a recipient that cannot be opened the entry of the given list with
// the same identifier is moved over; without one the result is MAPI_E_NOT_FOUND.
HRESULT ReplaceByRecipients(IAddrBook& book, const std::vector<ChosenRecipient>& chosen, ADRLIST*& list);

}  // namespace orv::ui
