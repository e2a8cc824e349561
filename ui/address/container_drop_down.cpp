// Fills the drop-down from the root's hierarchy table.
#include "ui/address/container_drop_down.h"

#include <algorithm>
#include <new>

#include "orv/orvflags.h"
#include "orv/orvtags.h"
#include "platform/boundary.h"
#include "platform/com_ptr.h"
#include "props/prop_value.h"
#include "ui/address/address_ids.h"

namespace orv::ui {
namespace {

// Room for a line of the drop-down, terminator included.
constexpr std::size_t kLineCapacity = 128;
constexpr std::size_t kSpacesPerLevel = 2;

enum Column : ULONG { kName, kEntryId, kObjectType, kContainerFlags, kDepth, kColumnCount };

SizedSPropTagArray(kColumnCount, g_columns) = {
    kColumnCount, {PR_DISPLAY_NAME_W, PR_ENTRYID, PR_OBJECT_TYPE, PR_CONTAINER_FLAGS, PR_DEPTH}};

HRESULT OpenHierarchy(IAddrBook& book, ULONG flags, ComPtr<IMAPITable>& table) {
  ULONG type = 0;
  ComPtr<IUnknown> unknown;
  HRESULT hr = book.OpenEntry(0, nullptr, nullptr, 0, &type, unknown.Put());
  if (FAILED(hr)) return hr;
  ComPtr<IABContainer> root;
  hr = unknown->QueryInterface(IID_IABContainer, reinterpret_cast<void**>(root.Put()));
  if (FAILED(hr)) return hr;
  hr = root->GetHierarchyTable(MAPI_UNICODE | flags, table.Put());
  if (FAILED(hr)) return hr;
  hr = table->SetColumns(reinterpret_cast<LPSPropTagArray>(&g_columns), 0);
  return FAILED(hr) ? hr : table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr);
}

const SPropValue* Value(const SRow& row, Column column, ULONG tag) {
  return column < row.cValues && row.lpProps[column].ulPropTag == tag ? &row.lpProps[column] : nullptr;
}

ULONG Number(const SRow& row, Column column, ULONG tag) {
  const SPropValue* value = Value(row, column, tag);
  return value == nullptr ? 0 : static_cast<ULONG>(value->Value.l);
}

WString IndentedName(const SRow& row) {
  const std::size_t spaces = std::min(kSpacesPerLevel * Number(row, kDepth, PR_DEPTH), kLineCapacity - 1);
  WString line(spaces, L' ');
  const SPropValue* name = Value(row, kName, PR_DISPLAY_NAME_W);
  if (name != nullptr && name->Value.lpszW != nullptr) line += name->Value.lpszW;
  line.resize(std::min(line.size(), kLineCapacity - 1));
  return line;
}

}  // namespace

void ContainerDropDown::Fill(IAddrBook& book, const ContainerChoice& choice) {
  (void)GuardedForeign([&] { return ReadRows(book, choice); });
  if (SendMessageW(window_, CB_GETCURSEL, 0, 0) == CB_ERR) SendMessageW(window_, CB_SETCURSEL, 0, 0);
}

HRESULT ContainerDropDown::ReadRows(IAddrBook& book, const ContainerChoice& choice) {
  ComPtr<IMAPITable> table;
  if (const HRESULT hr = OpenHierarchy(book, choice.hierarchyFlags, table); FAILED(hr)) return hr;
  ULONG size = 0;
  MapiBuffer<ENTRYID> identifier;
  if (FAILED((book.*choice.preferred)(&size, identifier.Put()))) size = 0;
  const SBinary preferred{size, reinterpret_cast<BYTE*>(identifier.Get())};

  for (;;) {
    RowSetPtr rows;
    const HRESULT hr = table->QueryRows(1, 0, rows.Put());
    if (FAILED(hr) || !rows || rows->cRows == 0) return hr;
    AddRow(rows->aRow[0], choice, preferred);
  }
}

void ContainerDropDown::AddRow(const SRow& row, const ContainerChoice& choice, const SBinary& preferred) {
  const SPropValue* identifier = Value(row, kEntryId, PR_ENTRYID);
  const ULONG flags = Number(row, kContainerFlags, PR_CONTAINER_FLAGS);
  if (identifier == nullptr || (flags & choice.requiredFlags) != choice.requiredFlags) return;
  EntryItemPtr item = MakeEntryItem(nullptr, identifier->Value.bin);
  const WString line = IndentedName(row);
  if (!IsWindow(window_)) return;
  const LRESULT index = SendMessageW(window_, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(line.c_str()));
  if (index < 0) throw std::bad_alloc();
  SendMessageW(window_, CB_SETITEMDATA, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(item.Detach()));
  if (preferred.cb != 0 && BinaryEqual(identifier->Value.bin, preferred)) {
    SendMessageW(window_, CB_SETCURSEL, static_cast<WPARAM>(index), 0);
  }
}

EntryItem* ContainerDropDown::Selected() const {
  const LRESULT index = SendMessageW(window_, CB_GETCURSEL, 0, 0);
  if (index < 0) return nullptr;
  const LRESULT data = SendMessageW(window_, CB_GETITEMDATA, static_cast<WPARAM>(index), 0);
  return data == CB_ERR ? nullptr : reinterpret_cast<EntryItem*>(data);
}

void ContainerDropDown::RemoveAll() {
  const LRESULT count = SendMessageW(window_, CB_GETCOUNT, 0, 0);
  for (LRESULT index = 0; index < count; ++index) {
    const LRESULT data = SendMessageW(window_, CB_GETITEMDATA, static_cast<WPARAM>(index), 0);
    if (data != CB_ERR) EntryItemPtr(reinterpret_cast<EntryItem*>(data)).Reset();
  }
  SendMessageW(window_, CB_RESETCONTENT, 0, 0);
}

}  // namespace orv::ui
