// Property values on their way out, always as a fresh copy that the caller frees with one call, and on their way
// in, from a caller's recipient.
#pragma once

#include <optional>

#include "formats/vcard_properties.h"
#include "orv/orvbase.hpp"

namespace sample {

using formats::FindProperty;
using formats::Properties;
using formats::Property;
using orv::sdk::Allocator;
using orv::sdk::Guarded;
using orv::sdk::Owned;
using orv::sdk::TagArray;
using orv::sdk::TagsOf;
using orv::sdk::ValueView;
using Bytes = std::vector<BYTE>;
using Tags = std::vector<ULONG>;

// One root with a value for each tag, in the order of the tags; PT_ERROR for a property that is not there.
Allocator::Root CopyValues(const Allocator& allocator, const Properties& properties, const Tags& tags);

Tags TagsOf(const Properties& properties);

// The properties of a recipient; nothing when one of them has a type that we cannot copy.
std::optional<Properties> ReadRecipient(const ADRENTRY& recipient);

}  // namespace sample
