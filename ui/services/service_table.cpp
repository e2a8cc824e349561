#include "ui/services/service_table.h"

#include "platform/buffer.h"
#include "platform/com_ptr.h"

namespace orv::ui {
namespace {

HRESULT OpenAtBeginning(IABServiceAdmin& services, LPSPropTagArray columns, ComPtr<IMAPITable>& table) {
  HRESULT hr = services.GetMsgServiceTable(MAPI_UNICODE, table.Put());
  if (FAILED(hr)) return hr;
  hr = table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr);
  return FAILED(hr) ? hr : table->SetColumns(columns, 0);
}

// True when there was a row.
HRESULT ReadRow(IMAPITable& table, const std::function<void(const SRow&)>& use, bool& hasRow) {
  RowSetPtr rows;
  const HRESULT hr = table.QueryRows(1, 0, rows.Put());
  hasRow = SUCCEEDED(hr) && rows && rows->cRows != 0;
  if (hasRow) use(rows->aRow[0]);
  return hr;
}

}  // namespace

HRESULT ReadServiceTable(IABServiceAdmin& services, LPSPropTagArray columns,
                         const std::function<void(const SRow&)>& use) {
  ComPtr<IMAPITable> table;
  HRESULT hr = OpenAtBeginning(services, columns, table);
  bool hasRow = SUCCEEDED(hr);
  while (hasRow) hr = ReadRow(*table, use, hasRow);
  return hr;
}

HRESULT ReadFirstService(IABServiceAdmin& services, LPSPropTagArray columns,
                         const std::function<void(const SRow&)>& use) {
  ComPtr<IMAPITable> table;
  const HRESULT hr = OpenAtBeginning(services, columns, table);
  bool hasRow = false;
  return FAILED(hr) ? hr : ReadRow(*table, use, hasRow);
}

}  // namespace orv::ui
