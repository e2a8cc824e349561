// The Address dialog's commands: the open container and its entries, wells, details, deleting, new entry, OK.
// While a provider is called the dialog may be destroyed with its owner, so what a call needs is copied first.
#include <array>
#include <utility>

#include "orv/orvflags.h"
#include "orv/orvtags.h"
#include "platform/boundary.h"
#include "props/prop_value.h"
#include "ui/address/address_dialog.h"
#include "ui/address/address_result.h"
#include "ui/address/entry_props.h"
#include "ui/address/entry_rows.h"
#include "ui/address/new_entry_dialog.h"
#include "ui/message_box.h"

namespace orv::ui {
namespace {

constexpr int kTypeAheadRoom = 65;
constexpr ULONG kContainerEvents = fnevObjectCreated | fnevObjectDeleted | fnevObjectModified |
                                   fnevObjectMoved | fnevObjectCopied | fnevTableModified;

// What a line shows of its entry.
class EntryFacts {
 public:
  // Type and, where the entry tells it, name.
  void Read(const OpenedEntry& entry) {
    SizedSPropTagArray(2, tags) = {2, {PR_DISPLAY_NAME_W, PR_OBJECT_TYPE}};
    type_ = entry.ObjectType();
    if (FAILED(entry.Read(reinterpret_cast<const SPropTagArray*>(&tags), values_))) return;
    const SPropValue* name = FindValue(values_.values.Get(), values_.count, PR_DISPLAY_NAME_W);
    if (name != nullptr) name_ = name->Value.lpszW;
    const SPropValue* type = FindValue(values_.values.Get(), values_.count, PR_OBJECT_TYPE);
    if (type != nullptr) type_ = static_cast<ULONG>(type->Value.l);
  }
  // Null when the entry has none.
  const WCHAR* Name() const { return name_; }
  ULONG Type() const { return type_; }

 private:
  PropValues values_;
  const WCHAR* name_ = nullptr;
  ULONG type_ = 0;
};

}  // namespace

void AddressDialog::OnContainerChosen() {
  const EntryItem* chosen = Containers().Selected();
  if (chosen == nullptr) return;
  if (containerId_ && BinaryEqual(containerId_->identifier, chosen->identifier)) return;
  if (FAILED(OpenSelectedContainer())) ShowError(address::kCannotOpenEntry);
}

// A container that cannot be opened shows no entries; choosing it again tries again.
HRESULT AddressDialog::OpenSelectedContainer() {
  const EntryItem* chosen = Containers().Selected();
  if (chosen == nullptr) return MAPI_E_NOT_FOUND;
  EntryItemPtr identifier = MakeEntryItem(nullptr, chosen->identifier);
  ComPtr<IABContainer> container;
  const HRESULT hr = GuardedForeign([&]() -> HRESULT {
    ULONG type = 0;
    ComPtr<IUnknown> opened;
    const HRESULT result =
        book_.OpenEntry(identifier->identifier.cb, identifier->Id(), nullptr, 0, &type, opened.Put());
    if (FAILED(result)) return result;
    if (!opened) return MAPI_E_CALL_FAILED;
    return opened->QueryInterface(IID_IABContainer, reinterpret_cast<void**>(container.Put()));
  });
  CloseContainer();
  if (SUCCEEDED(hr)) container_ = std::move(container);
  FillEntries();
  if (FAILED(hr)) return hr;
  StartWatching(*identifier);
  containerId_ = std::move(identifier);
  return hr;
}

void AddressDialog::CloseContainer() {
  StopWatching();
  container_.Reset();
  containerId_.Reset();
}

void AddressDialog::StartWatching(const EntryItem& container) {
  // Gone with the dialog, if that went while the entries were read.
  const ComPtr<CAdviseSink> sink = sink_;
  if (!sink) return;
  ULONG connection = 0;
  const HRESULT hr = GuardedForeign([&] {
    return book_.Advise(container.identifier.cb, container.Id(), kContainerEvents, sink.Get(), &connection);
  });
  if (SUCCEEDED(hr)) connection_ = connection;
}

void AddressDialog::StopWatching() {
  if (connection_ == 0) return;
  (void)GuardedForeign([&] { return book_.Unadvise(std::exchange(connection_, 0)); });
}

// What was read before a failure is shown.
void AddressDialog::FillEntries() {
  const ComPtr<IABContainer> container = container_;
  HRESULT hr = S_OK;
  {
    EntryListBox box = Entries();
    const RedrawPause pause(box.Window());
    box.RemoveAll();
    if (container) hr = GuardedForeign([&] { return ReadEntries(*container); });
  }
  if (hr == MAPI_E_NOT_ENOUGH_MEMORY) ShowError(address::kOutOfMemory);
}

HRESULT AddressDialog::ReadEntries(IABContainer& container) {
  ComPtr<IMAPITable> table;
  const HRESULT hr = container.GetContentsTable(MAPI_UNICODE, table.Put());
  if (FAILED(hr)) return hr;
  return table ? AppendRows(*table, icons_, Entries()) : MAPI_E_CALL_FAILED;
}

void AddressDialog::OnRefresh() {
  if (!std::exchange(skipNextRefresh_, false)) FillEntries();
}

void AddressDialog::OnTypeAhead() {
  std::array<WCHAR, kTypeAheadRoom> text{};
  if (GetDlgItemTextW(Window(), address::kTypeAhead, text.data(), kTypeAheadRoom) == 0) return;
  EntryListBox box = Entries();
  if (const int found = box.FindPrefix(text.data()); found >= 0) box.SelectOnly(found);
}

void AddressDialog::MoveToWell(int button) {
  const EntryListBox entries = Entries();
  const std::vector<int> selected = entries.Selection();
  if (selected.empty()) return ShowError(address::kNothingSelected);
  EntryListBox well = List(button - address::kWellButtonOffset);
  const RedrawPause pause(well.Window());
  for (const int index : selected) {
    if (const EntryItem* item = entries.ItemAt(index))
      well.Append(entries.TextAt(index).c_str(), MakeEntryItem(item->icon, item->identifier));
  }
}

void AddressDialog::OnEntryDoubleClick() {
  if (Wells() == 0) {
    ShowDetails(address::kEntries);
  } else {
    MoveToWell(FirstFocus());
  }
}

void AddressDialog::ShowDetails(int list) {
  const std::vector<int> selected = List(list).Selection();
  if (selected.size() != 1) return ShowError(address::kSelectOneForDetails);
  const EntryItem* shown = List(list).ItemAt(selected.front());
  if (shown == nullptr) return;
  const EntryItemPtr item = MakeEntryItem(nullptr, shown->identifier);
  auto parent = reinterpret_cast<ULONG_PTR>(Window());
  const HRESULT hr = GuardedForeign([&] {
    return book_.Details(&parent, nullptr, nullptr, item->identifier.cb, item->Id(), nullptr, nullptr,
                         nullptr, DIALOG_MODAL);
  });
  skipNextRefresh_ = SUCCEEDED(hr);
  if (SUCCEEDED(hr)) RefreshLine(list, selected.front(), item->identifier);
}

// An entry that cannot be opened any more goes; one that has no name to tell keeps the old one.
void AddressDialog::RefreshLine(int list, int index, const SBinary& identifier) {
  OpenedEntry entry;
  const HRESULT hr = entry.Open(book_, identifier);
  EntryListBox box = List(list);
  if (FAILED(hr)) return box.Remove({index});
  EntryFacts facts;
  facts.Read(entry);
  EntryItem* item = box.ItemAt(index);
  if (item == nullptr || facts.Name() == nullptr) return;
  item->icon = icons_.For(facts.Type());
  box.ReplaceText(index, facts.Name());
}

void AddressDialog::DeleteSelection(int list) {
  const std::vector<int> selected = List(list).Selection();
  if (selected.empty()) return;
  if (list == address::kEntries) {
    skipNextRefresh_ = AskQuestion(address::kConfirmDeletion, Resources(), Window()) &&
                       SUCCEEDED(DeleteFromContainer(selected));
    if (!skipNextRefresh_) return;
  }
  List(list).Remove(selected);
}

HRESULT AddressDialog::DeleteFromContainer(const std::vector<int>& selected) {
  const ComPtr<IABContainer> container = container_;
  if (!container) return MAPI_E_CALL_FAILED;
  std::vector<EntryItemPtr> items;
  std::vector<SBinary> identifiers;
  for (const int index : selected) {
    const EntryItem* shown = Entries().ItemAt(index);
    if (shown == nullptr) continue;
    items.push_back(MakeEntryItem(nullptr, shown->identifier));
    identifiers.push_back(items.back()->identifier);
  }
  ENTRYLIST entries{static_cast<ULONG>(identifiers.size()), identifiers.data()};
  return GuardedForeign([&] { return container->DeleteEntries(&entries, 0); });
}

void AddressDialog::OnNewEntry() {
  // Entries for one message only do not exist here, so that choice stays disabled.
  NewEntryDialog question(Resources(), book_, false);
  if (question.Show(Window()) != IDOK || question.Container() == nullptr) return;
  const EntryItem& chosen = *question.Container();
  ULONG size = 0;
  MapiBuffer<ENTRYID> identifier;
  const HRESULT hr = GuardedForeign([&] {
    return book_.NewEntry(reinterpret_cast<ULONG_PTR>(Window()), 0, chosen.identifier.cb, chosen.Id(), 0,
                          nullptr, &size, identifier.Put());
  });
  if (FAILED(hr) || !identifier) return;
  const EntryItem* shown = Containers().Selected();
  skipNextRefresh_ = shown != nullptr && BinaryEqual(shown->identifier, chosen.identifier) &&
                     AddNewEntry({size, reinterpret_cast<BYTE*>(identifier.Get())});
}

bool AddressDialog::AddNewEntry(const SBinary& identifier) {
  OpenedEntry entry;
  if (FAILED(entry.Open(book_, identifier))) return false;
  EntryFacts facts;
  facts.Read(entry);
  if (facts.Name() == nullptr) return false;
  Entries().Append(facts.Name(), MakeEntryItem(icons_.For(facts.Type()), identifier));
  return true;
}

void AddressDialog::OnOk() {
  const bool done = Wells() == 0 ? ChooseOne() : ChooseFromWells();
  if (done) Close(IDOK);
}

// Without wells the caller gets one entry if it asked for one, else its list as it was.
bool AddressDialog::ChooseOne() {
  if (!(parameters_.ulFlags & ADDRESS_ONE)) return true;
  const std::vector<int> selected = Entries().Selection();
  if (selected.size() != 1) {
    ShowError(selected.empty() ? address::kNothingSelected : address::kSelectOnlyOne);
    return false;
  }
  const EntryItem* item = Entries().ItemAt(selected.front());
  result_ = item == nullptr ? MAPI_E_NOT_FOUND
                            : ReplaceByOne(book_, {MakeEntryItem(nullptr, item->identifier), MAPI_TO}, list_);
  if (FAILED(result_)) ShowError(address::kCannotOpenEntry);
  return SUCCEEDED(result_);
}

bool AddressDialog::ChooseFromWells() {
  std::vector<ChosenRecipient> chosen;
  for (int well = 0; well < Wells(); ++well) {
    const EntryListBox box = Well(well);
    for (int index = 0; index < box.Count(); ++index) {
      if (const EntryItem* item = box.ItemAt(index))
        chosen.push_back(
            {MakeEntryItem(nullptr, item->identifier), wellTypes_[static_cast<std::size_t>(well)]});
    }
  }
  result_ = ReplaceByRecipients(book_, chosen, list_);
  if (FAILED(result_)) ShowError(address::kCannotOpenEntry);
  return SUCCEEDED(result_);
}

}  // namespace orv::ui
