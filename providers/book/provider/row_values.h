// What rows, entries and members of a book are in the terms of the address book, and what clients may change.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "orv/kit/prop_object.hpp"
#include "providers/book/provider/words.h"
#include "providers/book/types.h"

namespace book {

namespace kit = orv::kit;

// What a row is told by without its entry being read.
std::vector<ULONG> RowColumns();
bool AreRowColumns(std::span<const ULONG> columns);
// By which the store sorts and searches; nothing for any other.
std::optional<Column> ColumnOf(ULONG tag);

// All but identifiers.
void DescribeRow(const Wording& words, const Row& row, kit::PropList& values);
// The whole entry as the row shows it.
void DescribeEntry(const Wording& words, const Entry& entry, const Row& row, std::span<const ULONG> columns,
                   kit::PropList& values);
// One that is no entry, or is none any more: its name, and the number or address where it is one of these.
void DescribeLoneMember(const Member& member, kit::PropList& values);
void DescribeDeleted(const DeletedEntry& entry, kit::PropList& values);

// The version that DescribeEntry has put into the values; kAnyVersion where it is not there.
uint32_t VersionOf(const kit::PropList& values);

// MAPI_E_NO_SUPPORT for what an entry has no place for, MAPI_E_BAD_VALUE for an empty name.
HRESULT CheckSetValue(const SPropValue& value);
HRESULT CheckDeleteTag(ULONG tag);

// What was set and taken away, done to a contact that `shown` is the row of (null: it is new).
// MAPI_E_MISSING_REQUIRED_COLUMN when nothing is left to call it by.
HRESULT ApplyChanges(const Wording& words, const kit::Changes& changes, const Row* shown, uint32_t number,
                     formats::Contact* contact);

}  // namespace book
