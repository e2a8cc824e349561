// Builds the address list that the Address dialog hands back.
#pragma once

#include <vector>

#include "orv/orvapi.h"
#include "platform/win.h"
#include "session/buffer.h"

namespace orv::ui {

// One chosen recipient: whose entry, and as what.
struct ChosenRecipient {
  SBinary entryId;
  ULONG recipientType;
};

// The properties of an entry for a list of recipients, PR_RECIPIENT_TYPE in second place. Calls providers.
HRESULT ReadRecipient(IAddrBook& book, const ChosenRecipient& chosen, ADRENTRY& entry);

// Replaces `list` by one entry a recipient, in their order. For a recipient that cannot be opened the entry of
// the given list with the same identifier is moved over; without one the result is MAPI_E_NOT_FOUND. On failure
// the given list holds what it held.
HRESULT ReplaceByRecipients(IAddrBook& book, const std::vector<ChosenRecipient>& chosen, ADRLIST*& list);

}  // namespace orv::ui
