// Rows are read in blocks, and room in the list is made beforehand: containers may hold very many entries.
#include "ui/address/entry_rows.h"

#include "orv/orvflags.h"
#include "orv/orvtags.h"

namespace orv::ui {
namespace {

constexpr LONG kRowsAtOnce = 256;

enum Column : ULONG { kName, kEntryId, kObjectType, kColumnCount };
SizedSPropTagArray(kColumnCount, g_columns) = {kColumnCount, {PR_DISPLAY_NAME_W, PR_ENTRYID, PR_OBJECT_TYPE}};

// A block of rows gives what single reads give: where a block fails, its rows are read one by one, so those
// before the failing one are still shown.
HRESULT ReadRows(IMAPITable& table, LONG& atOnce, RowSetPtr& rows) {
  HRESULT hr = table.QueryRows(atOnce, 0, rows.Put());
  if (FAILED(hr) && atOnce > 1) {
    atOnce = 1;
    hr = table.QueryRows(atOnce, 0, rows.Put());
  }
  return hr;
}

void AppendRow(const SRow& row, const EntryIcons& icons, EntryListBox& box) {
  if (row.cValues != kColumnCount) return;
  const SPropValue& name = row.lpProps[kName];
  const SPropValue& identifier = row.lpProps[kEntryId];
  const SPropValue& type = row.lpProps[kObjectType];
  if (name.ulPropTag != PR_DISPLAY_NAME_W || identifier.ulPropTag != PR_ENTRYID) return;
  const HICON icon = type.ulPropTag == PR_OBJECT_TYPE ? icons.For(static_cast<ULONG>(type.Value.l)) : nullptr;
  box.Append(name.Value.lpszW, MakeEntryItem(icon, identifier.Value.bin));
}

}  // namespace

HRESULT AppendRows(IMAPITable& table, const EntryIcons& icons, EntryListBox box) {
  HRESULT hr = table.SetColumns(reinterpret_cast<LPSPropTagArray>(&g_columns), 0);
  if (FAILED(hr)) return hr;
  ULONG count = 0;
  if (SUCCEEDED(table.GetRowCount(0, &count))) box.Reserve(count);
  for (LONG atOnce = kRowsAtOnce;;) {
    RowSetPtr rows;
    hr = ReadRows(table, atOnce, rows);
    if (FAILED(hr) || !rows || rows->cRows == 0) return hr;
    for (ULONG i = 0; i < rows->cRows; ++i) AppendRow(rows->aRow[i], icons, box);
  }
}

}  // namespace orv::ui
