// From the rows of a contents table to the lines of a list.
#pragma once

#include "orv/orvapi.h"
#include "platform/com_ptr.h"
#include "ui/address/entry_item.h"
#include "ui/address/entry_list_box.h"

namespace orv::ui {

// Appends a line a row, in the table's order; a row without name or identifier is left out. What was read before a
// failure stays. Calls the provider whose table it is; none of its exceptions passes. May throw std::bad_alloc.
HRESULT AppendRows(const ComPtr<IMAPITable>& table, const EntryIcons& icons, EntryListBox box);

}  // namespace orv::ui
