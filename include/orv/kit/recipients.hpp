// Recipients before sending: what stands behind PrepareRecips of a provider.
#pragma once

#include <functional>

#include "orv/kit/entry_id.hpp"
#include "orv/kit/values.hpp"

namespace orv::kit {

// Gives one recipient the properties asked for: those tags first, in their order, from the entry or else from the
// recipient (PR_NULL keeps its place, PT_ERROR with MAPI_E_NOT_FOUND where neither has it); then what else the
// recipient has. The array, one root, takes the place of the old one, which is freed. Without memory std::bad_alloc
// is thrown, and the recipient is as it was.
//
// A recipient that cannot be copied whole stays as it is: with a value that is 8-bit text, an object or unsound
// (CheckValue).
void MergeRecipient(const sdk::Allocator& buffers, sdk::ValueView entry, const SPropTagArray& tags,
                    ADRENTRY& recipient);

// The properties of one entry, at least those of the tags; a failure leaves the recipient as it is.
using ReadEntry =
    std::function<HRESULT(const EntryRef& entry, std::span<const ULONG> tags, PropList* values)>;

// PrepareRecips of a provider: merges every recipient whose PR_ENTRYID is one of the codec's and can be read. All
// others stay untouched. MAPI_E_INVALID_PARAMETER for a null list; without tags there is nothing to do. Where memory
// runs out half-way, the recipients before are prepared, the rest as they were, each of them whole.
HRESULT PrepareRecipients(const sdk::Allocator& buffers, const EntryIdCodec& codec, const SPropTagArray* tags,
                          ADRLIST* list, const ReadEntry& read) noexcept;

}  // namespace orv::kit
