// Address lists as a client hands them to PrepareRecips.
#pragma once

#include "tools/orvctl/check/tour.h"

namespace orvctl::check {

// A property in nobody's range, which must come through.
constexpr ULONG kOwnTag = PROP_TAG(PT_UNICODE, 0x7F13);
inline const Tags kRecipientTags = {PR_DISPLAY_NAME_W, PR_ENTRYID, PR_EMAIL_ADDRESS_W, PR_OBJECT_TYPE};

// A list with one recipient an identifier, each with type, identifier, name and kOwnTag.
orv::sdk::AddressList MakeRecipients(const std::vector<Bytes>& ids);
void PrepareRecipients(Probe& probe, IAddrBook* book, const orv::sdk::AddressList& list);

}  // namespace orvctl::check
