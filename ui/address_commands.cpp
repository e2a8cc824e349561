// The Address dialog's commands: the open container and its entries, wells, details, deleting, new entry, OK.
#include <algorithm>
#include <array>
#include <limits>
#include <utility>

#include "orv/orvflags.h"
#include "orv/orvtags.h"
#include "platform/boundary.h"
#include "ui/address_dialog.h"
#include "ui/message_box.h"
#include "ui/new_entry_dialog.h"

namespace orv::ui {
namespace {

constexpr int kTypeAheadRoom = 65;
constexpr LONG kRowsAtOnce = 256;
// What a line's text takes at a guess, for reserving room.
constexpr int kBytesPerLine = 48;
constexpr ULONG kContainerEvents = fnevObjectCreated | fnevObjectDeleted | fnevObjectModified |
                                   fnevObjectMoved | fnevObjectCopied | fnevTableModified;

enum Column : ULONG { kName, kEntryId, kObjectType, kColumnCount };
SizedSPropTagArray(kColumnCount, g_entryColumns) = {kColumnCount,
                                                    {PR_DISPLAY_NAME_W, PR_ENTRYID, PR_OBJECT_TYPE}};
SizedSPropTagArray(2, g_nameAndType) = {2, {PR_DISPLAY_NAME_W, PR_OBJECT_TYPE}};

// Name and kind of one entry, read from the entry itself.
struct EntryFacts {
  PropValues values;
  const WCHAR* name = nullptr;
  ULONG type = 0;
};

HRESULT ReadFacts(IAddrBook& book, ULONG size, ENTRYID* identifier, EntryFacts& facts) {
  ComPtr<IUnknown> unknown;
  HRESULT hr = book.OpenEntry(size, identifier, nullptr, 0, &facts.type, unknown.Put());
  if (FAILED(hr)) return hr;
  if (!unknown) return MAPI_E_CALL_FAILED;
  ComPtr<IMAPIProp> properties;
  hr = unknown->QueryInterface(IID_IMAPIProp, reinterpret_cast<void**>(properties.Put()));
  if (FAILED(hr)) return hr;
  PropValues& values = facts.values;
  hr = properties->GetProps(reinterpret_cast<LPSPropTagArray>(&g_nameAndType), MAPI_UNICODE, &values.count,
                            values.values.Put());
  if (FAILED(hr)) return hr;
  if (values.count != 2 || values.values[0].ulPropTag != PR_DISPLAY_NAME_W) return MAPI_E_NOT_FOUND;
  facts.name = values.values[0].Value.lpszW;
  if (values.values[1].ulPropTag == PR_OBJECT_TYPE) facts.type = static_cast<ULONG>(values.values[1].Value.l);
  return S_OK;
}

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

}  // namespace

void AddressDialog::OnContainerChosen() {
  EntryItem* chosen = Containers().Selected();
  if (chosen == nullptr) return;
  const bool isOpen = containerId_ && containerId_->Size() == chosen->Size() &&
                      std::equal(chosen->Binary().lpb, chosen->Binary().lpb + chosen->Size(),
                                 containerId_->Binary().lpb);
  if (!isOpen) OpenSelectedContainer(true);
}

void AddressDialog::OpenSelectedContainer(bool tellsFailure) {
  EntryItem* chosen = Containers().Selected();
  ComPtr<IABContainer> opened;
  HRESULT hr = MAPI_E_NOT_FOUND;
  if (chosen != nullptr) {
    ULONG type = 0;
    ComPtr<IUnknown> unknown;
    hr = book_.OpenEntry(chosen->Size(), chosen->Id(), nullptr, 0, &type, unknown.Put());
    if (SUCCEEDED(hr) && unknown)
      hr = unknown->QueryInterface(IID_IABContainer, reinterpret_cast<void**>(opened.Put()));
  }
  CloseContainer();
  if (SUCCEEDED(hr) && opened) {
    container_ = std::move(opened);
    containerId_ = EntryItem::Create(nullptr, chosen->Binary());
  }
  FillEntries();
  if (container_ && FAILED(book_.Advise(chosen->Size(), chosen->Id(), kContainerEvents, sink_.Get(),
                                        &connection_)))
    connection_ = 0;
  if (!container_ && tellsFailure) ShowError(address::kCannotOpenEntry);
}

void AddressDialog::CloseContainer() {
  if (connection_ != 0) book_.Unadvise(std::exchange(connection_, 0));
  container_.Reset();
  containerId_.reset();
}

void AddressDialog::FillEntries() {
  EntryListBox box = Entries();
  const RedrawPause pause(box.Window());
  box.RemoveAll();
  ComPtr<IMAPITable> table;
  if (!container_ || FAILED(container_->GetContentsTable(MAPI_UNICODE, table.Put())) || !table) return;
  if (FAILED(table->SetColumns(reinterpret_cast<LPSPropTagArray>(&g_entryColumns), 0))) return;
  ReadEntries(*table);
}

HRESULT AddressDialog::ReadEntries(IMAPITable& table) {
  ULONG count = 0;
  constexpr ULONG kMost = std::numeric_limits<int>::max() / kBytesPerLine;
  if (SUCCEEDED(table.GetRowCount(0, &count)) && count <= kMost)
    Entries().Reserve(static_cast<int>(count), static_cast<int>(count) * kBytesPerLine);
  LONG atOnce = kRowsAtOnce;
  for (;;) {
    RowSetPtr rows;
    const HRESULT hr = ReadRows(table, atOnce, rows);
    if (FAILED(hr) || !rows || rows->cRows == 0) return hr;
    AddEntries(*rows);
  }
}

void AddressDialog::AddEntries(const SRowSet& rows) {
  EntryListBox box = Entries();
  for (ULONG i = 0; i < rows.cRows; ++i) {
    const SRow& row = rows.aRow[i];
    if (row.cValues != kColumnCount || row.lpProps[kName].ulPropTag != PR_DISPLAY_NAME_W ||
        row.lpProps[kEntryId].ulPropTag != PR_ENTRYID)
      continue;
    const SPropValue& type = row.lpProps[kObjectType];
    const HICON icon =
        type.ulPropTag == PR_OBJECT_TYPE ? icons_->For(static_cast<ULONG>(type.Value.l)) : nullptr;
    box.Append(row.lpProps[kName].Value.lpszW, EntryItem::Create(icon, row.lpProps[kEntryId].Value.bin));
  }
}

void AddressDialog::OnRefresh() {
  if (!std::exchange(skipNextRefresh_, false)) FillEntries();
}

void AddressDialog::OnTypeAhead() {
  std::array<WCHAR, kTypeAheadRoom> text{};
  if (GetDlgItemTextW(Window(), address::kTypeAhead, text.data(), kTypeAheadRoom) == 0) return;
  EntryListBox box = Entries();
  const LRESULT found = SendMessageW(box.Window(), LB_FINDSTRING, static_cast<WPARAM>(-1),
                                     reinterpret_cast<LPARAM>(text.data()));
  if (found >= 0) box.SelectOnly(static_cast<int>(found));
}

void AddressDialog::MoveToWell(int button) {
  EntryListBox entries = Entries();
  const std::vector<int> selected = entries.Selection();
  if (selected.empty()) return ShowError(address::kNothingSelected);
  EntryListBox well = List(button - address::kWellButtonOffset);
  for (const int index : selected) {
    EntryItem* item = entries.ItemAt(index);
    if (item == nullptr) continue;
    if (!well.Append(entries.TextAt(index).c_str(), EntryItem::Create(item->Icon(), item->Binary())))
      return ShowError(address::kOutOfMemory);
  }
}

void AddressDialog::OnEntryDoubleClick() {
  if (parameters_.cDestFields == 0) {
    ShowDetails(address::kEntries);
  } else {
    MoveToWell(FirstFocus());
  }
}

void AddressDialog::ShowDetails(int list) {
  EntryListBox box = List(list);
  const std::vector<int> selected = box.Selection();
  if (selected.size() != 1) return ShowError(address::kSelectOneForDetails);
  EntryItem* shown = box.ItemAt(selected.front());
  if (shown == nullptr) return;
  // A copy: the line may go while the provider shows its dialog, when our owner is destroyed.
  const EntryItem::Ptr item = EntryItem::Create(nullptr, shown->Binary());
  if (!item) return ShowError(address::kOutOfMemory);
  auto parent = reinterpret_cast<ULONG_PTR>(Window());
  const HRESULT hr = book_.Details(&parent, nullptr, nullptr, item->Size(), item->Id(), nullptr, nullptr,
                                   nullptr, DIALOG_MODAL);
  if (FAILED(hr)) return;
  RefreshAfterDetails(box, selected.front());
  skipNextRefresh_ = true;
}

void AddressDialog::RefreshAfterDetails(EntryListBox& box, int index) {
  EntryItem* item = box.ItemAt(index);
  if (item == nullptr) return;
  EntryFacts facts;
  if (FAILED(ReadFacts(book_, item->Size(), item->Id(), facts))) {
    box.Remove({index});
    return;
  }
  item->SetIcon(icons_->For(facts.type));
  box.ReplaceText(index, facts.name);
}

void AddressDialog::DeleteSelection(int list) {
  EntryListBox box = List(list);
  const std::vector<int> selected = box.Selection();
  if (selected.empty()) return;
  if (list == address::kEntries) {
    if (!AskQuestion(address::kConfirmDeletion, Resources(), Window())) return;
    if (FAILED(DeleteFromContainer(box, selected))) return;
    skipNextRefresh_ = true;
  }
  box.Remove(selected);
}

HRESULT AddressDialog::DeleteFromContainer(EntryListBox& box, const std::vector<int>& selected) {
  if (!container_) return MAPI_E_CALL_FAILED;
  // Copies, and a reference of our own: the dialog may go while the provider deletes.
  const ComPtr<IABContainer> container = container_;
  std::vector<EntryItem::Ptr> items;
  std::vector<SBinary> identifiers;
  for (const int index : selected) {
    EntryItem* shown = box.ItemAt(index);
    if (shown == nullptr) continue;
    items.push_back(EntryItem::Create(nullptr, shown->Binary()));
    if (!items.back()) return MAPI_E_NOT_ENOUGH_MEMORY;
    identifiers.push_back(items.back()->Binary());
  }
  ENTRYLIST entries{static_cast<ULONG>(identifiers.size()), identifiers.data()};
  return container->DeleteEntries(&entries, 0);
}

void AddressDialog::OnNewEntry() {
  // Entries for one message only do not exist here, so that choice stays disabled.
  NewEntryDialog question(Resources(), book_, false);
  if (question.Show(Window()) != IDOK || question.Container() == nullptr) return;
  EntryItem& chosen = *question.Container();
  ULONG size = 0;
  MapiBuffer<ENTRYID> identifier;
  const HRESULT hr = book_.NewEntry(reinterpret_cast<ULONG_PTR>(Window()), 0, chosen.Size(), chosen.Id(), 0,
                                    nullptr, &size, identifier.Put());
  if (FAILED(hr) || !identifier) return;
  const EntryItem* shown = Containers().Selected();
  const bool isShown = shown != nullptr && shown->Size() == chosen.Size() &&
                       std::equal(chosen.Binary().lpb, chosen.Binary().lpb + chosen.Size(),
                                  Containers().Selected()->Binary().lpb);
  if (isShown) skipNextRefresh_ = AddNewEntry(size, identifier.Get());
}

bool AddressDialog::AddNewEntry(ULONG size, ENTRYID* identifier) {
  EntryFacts facts;
  if (FAILED(ReadFacts(book_, size, identifier, facts))) return false;
  EntryListBox box = Entries();
  return box.Append(facts.name, EntryItem::Create(icons_->For(facts.type), size, identifier));
}

void AddressDialog::OnOk() {
  const bool done = parameters_.cDestFields == 0 ? ChooseOne() : ChooseFromWells();
  if (done) Close(IDOK);
}

// Without wells the caller gets one entry if it asked for one, else its list as it was.
bool AddressDialog::ChooseOne() {
  if (!(parameters_.ulFlags & ADDRESS_ONE)) return true;
  EntryListBox box = Entries();
  const std::vector<int> selected = box.Selection();
  if (selected.size() != 1) {
    ShowError(selected.empty() ? address::kNothingSelected : address::kSelectOnlyOne);
    return false;
  }
  EntryItem* item = box.ItemAt(selected.front());
  result_ = GuardedForeign([&]() -> HRESULT {
    if (item == nullptr) return MAPI_E_NOT_FOUND;
    AdrListPtr chosen;
    HRESULT hr = AllocateRoot(CbNewADRLIST(1), reinterpret_cast<void**>(chosen.Put()));
    if (SUCCEEDED(hr)) hr = ReadRecipient(book_, {item->Binary(), MAPI_TO}, chosen->aEntries[0]);
    if (FAILED(hr)) return hr;
    chosen->cEntries = 1;
    OrvFreePadrlist(std::exchange(list_, chosen.Detach()));
    return S_OK;
  });
  if (FAILED(result_)) ShowError(address::kCannotOpenEntry);
  return SUCCEEDED(result_);
}

bool AddressDialog::ChooseFromWells() {
  result_ = GuardedForeign([&]() -> HRESULT {
    std::vector<ChosenRecipient> chosen;
    for (ULONG well = 0; well < parameters_.cDestFields; ++well) {
      const EntryListBox box = List(address::kFirstWell + static_cast<int>(well));
      const int count = box.Count();
      for (int index = 0; index < count; ++index) {
        if (EntryItem* item = box.ItemAt(index))
          chosen.push_back({item->Binary(), parameters_.lpulDestComps[well]});
      }
    }
    return ReplaceByRecipients(book_, chosen, list_);
  });
  if (FAILED(result_)) ShowError(address::kCannotOpenEntry);
  return SUCCEEDED(result_);
}

}  // namespace orv::ui
