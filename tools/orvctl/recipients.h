// Lists of recipients, in the shape that the library takes them.
#pragma once

#include "tools/orvctl/library.h"

namespace orvctl {

// Allocated as the library allocates its lists, because it frees what it replaces. The list must have room.
void AppendRecipient(const Allocator& allocator, ADRLIST& list, const Bytes& entryId, const std::string& name,
                     ULONG type, ULONG recipientType);

}  // namespace orvctl
