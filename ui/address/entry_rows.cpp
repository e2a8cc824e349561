// Rows are read in blocks, and room in the list is made beforehand: containers may hold very many entries.
#include "ui/address/entry_rows.h"

#include "orv/orvtags.h"
#include "platform/boundary.h"
#include "props/table_reader.h"

namespace orv::ui {
namespace {

constexpr LONG kRowsAtOnce = 256;

constexpr TagArray kColumns{PR_DISPLAY_NAME_W, PR_ENTRYID, PR_OBJECT_TYPE};
enum Column : ULONG { kName, kEntryId, kObjectType };

void AppendRow(const ForeignValues& row, const EntryIcons& icons, EntryListBox& box) {
  const WCHAR* name = TextOf(row.At(kName, PR_DISPLAY_NAME_W));
  const SBinary* id = BinaryOf(row.At(kEntryId, PR_ENTRYID));
  if (name == nullptr || id == nullptr) return;
  const HICON icon = icons.For(NumberOf(row.At(kObjectType, PR_OBJECT_TYPE)));
  box.Append(name, std::make_unique<EntryItem>(icon, EntryId(*id)));
}

}  // namespace

HRESULT AppendRows(const ComPtr<IMAPITable>& table, const EntryIcons& icons, EntryListBox box) {
  TableReader rows;
  HRESULT hr = rows.Open(table, kColumns, kRowsAtOnce, TableReader::Start::kWhereItStands);
  if (FAILED(hr)) return hr;
  ULONG count = 0;
  if (SUCCEEDED(GuardedForeign([&] { return table->GetRowCount(0, &count); }))) box.Reserve(count);
  while ((hr = rows.Next()) == S_OK) AppendRow(rows.Row(), icons, box);
  return FAILED(hr) ? hr : S_OK;
}

}  // namespace orv::ui
