// The services of a profile, to be read row by row.
#pragma once

#include <utility>

#include "orv/orvapi.h"
#include "platform/boundary.h"
#include "props/table_reader.h"

namespace orv::ui {

// Asks for a new table.
template <std::size_t Columns>
HRESULT OpenServiceTable(IABServiceAdmin& services, const TagArray<Columns>& columns, TableReader& reader) {
  ComPtr<IMAPITable> table;
  const HRESULT hr = HandedOut(table, [&] { return services.GetMsgServiceTable(MAPI_UNICODE, table.Put()); });
  return FAILED(hr) ? hr : reader.Open(std::move(table), columns);
}

}  // namespace orv::ui
