// Fills the drop-down from the root's hierarchy table.
#include "ui/address/container_drop_down.h"

#include <algorithm>
#include <memory>
#include <new>
#include <utility>

#include "hosting/open_entry.h"
#include "orv/orvflags.h"
#include "orv/orvtags.h"
#include "platform/boundary.h"
#include "platform/buffer.h"
#include "props/table_reader.h"

namespace orv::ui {
namespace {

// Room for a line of the drop-down, terminator included.
constexpr std::size_t kLineCapacity = 128;
constexpr std::size_t kSpacesPerLevel = 2;

constexpr TagArray kColumns{PR_DISPLAY_NAME_W, PR_ENTRYID, PR_OBJECT_TYPE, PR_CONTAINER_FLAGS, PR_DEPTH};
enum Column : ULONG { kName, kEntryId, kObjectType, kContainerFlags, kDepth };

WString IndentedName(const ForeignValues& row) {
  const std::size_t depth = NumberOf(row.At(kDepth, PR_DEPTH));
  WString line(std::min(kSpacesPerLevel * depth, kLineCapacity - 1), L' ');
  if (const WCHAR* name = TextOf(row.At(kName, PR_DISPLAY_NAME_W))) line += name;
  line.resize(std::min(line.size(), kLineCapacity - 1));
  return line;
}

EntryId PreferredContainer(IAddrBook& book, const ContainerChoice& choice) {
  ULONG size = 0;
  MapiBuffer<ENTRYID> id;
  const HRESULT hr = HandedOut(id, [&] { return (book.*choice.preferred)(&size, id.Put()); });
  return FAILED(hr) ? EntryId() : EntryId(size, id.Get());
}

}  // namespace

void ContainerDropDown::Fill(IAddrBook& book, const ContainerChoice& choice) {
  (void)GuardedForeign([&] { return ReadRows(book, choice); });
  if (Send(CB_GETCURSEL) < 0) Send(CB_SETCURSEL, 0);
}

HRESULT ContainerDropDown::ReadRows(IAddrBook& book, const ContainerChoice& choice) {
  ComPtr<IMAPITable> table;
  if (const HRESULT hr = OpenHierarchy(book, CONVENIENT_DEPTH, table); FAILED(hr)) return hr;
  TableReader rows;
  HRESULT hr = rows.Open(std::move(table), kColumns);
  if (FAILED(hr)) return hr;
  const EntryId preferred = PreferredContainer(book, choice);
  while ((hr = rows.Next()) == S_OK) AddRow(rows.Row(), choice.requiredFlags, preferred);
  return hr;
}

void ContainerDropDown::AddRow(const ForeignValues& row, ULONG requiredFlags, const EntryId& preferred) {
  const SBinary* binary = BinaryOf(row.At(kEntryId, PR_ENTRYID));
  const ULONG flags = NumberOf(row.At(kContainerFlags, PR_CONTAINER_FLAGS));
  if (binary == nullptr || (flags & requiredFlags) != requiredFlags) return;
  auto id = std::make_unique<EntryId>(*binary);
  const WString line = IndentedName(row);
  if (!IsWindow(window_)) return;
  const LRESULT index = Send(CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(line.c_str()));
  if (index < 0) throw std::bad_alloc();
  if (!id->IsEmpty() && *id == preferred) Send(CB_SETCURSEL, index);
  Send(CB_SETITEMDATA, index, reinterpret_cast<LPARAM>(id.release()));
}

EntryId* ContainerDropDown::IdAt(LRESULT index) const {
  const LRESULT data = Send(CB_GETITEMDATA, index);
  return data == CB_ERR ? nullptr : reinterpret_cast<EntryId*>(data);
}

EntryId ContainerDropDown::Selected() const {
  const LRESULT index = Send(CB_GETCURSEL);
  const EntryId* id = index < 0 ? nullptr : IdAt(index);
  return id == nullptr ? EntryId() : *id;
}

void ContainerDropDown::RemoveAll() {
  const LRESULT count = Send(CB_GETCOUNT);
  for (LRESULT index = 0; index < count; ++index) delete IdAt(index);
  Send(CB_RESETCONTENT);
}

}  // namespace orv::ui
