// While a provider is called the dialog may be destroyed with its owner, so what a call needs is copied first.
#include "ui/address/entry_actions.h"

#include <utility>

#include "orv/orvflags.h"
#include "platform/boundary.h"
#include "platform/buffer.h"
#include "platform/pointer_check.h"
#include "ui/address/entry_facts.h"

namespace orv::ui {

bool EntryActions::ShowDetails(HWND dialog, EntryListBox box, int line) const {
  const EntryItem* shown = box.ItemAt(line);
  if (shown == nullptr) return false;
  const EntryId entryId = shown->entryId;
  auto parent = reinterpret_cast<ULONG_PTR>(dialog);
  const HRESULT hr = GuardedForeign([&] {
    return book_.Details(&parent, nullptr, nullptr, entryId.Size(), entryId.Get(), nullptr, nullptr, nullptr,
                         DIALOG_MODAL);
  });
  if (FAILED(hr)) return false;
  RefreshLine(box, line, entryId);
  return true;
}

// An entry that cannot be opened any more goes; one that has no name to tell keeps the old one.
void EntryActions::RefreshLine(EntryListBox box, int line, const EntryId& entryId) const {
  EntryFacts facts;
  if (FAILED(ReadFacts(book_, entryId, facts))) return box.Remove({line});
  EntryItem* item = box.ItemAt(line);
  if (item == nullptr || !facts.name) return;
  item->icon = icons_.For(facts.type);
  box.ReplaceText(line, facts.name->c_str());
}

bool EntryActions::Delete(EntryListBox box, const std::vector<int>& lines) const {
  std::vector<EntryId> entries;
  for (const int line : lines) {
    if (const EntryItem* item = box.ItemAt(line)) entries.push_back(item->entryId);
  }
  if (FAILED(container_.DeleteEntries(entries))) return false;
  box.Remove(lines);
  return true;
}

EntryId EntryActions::MakeNew(HWND dialog, const EntryId& container) const {
  ULONG size = 0;
  MapiBuffer<ENTRYID> id;
  const HRESULT hr = HandedOut(id, [&] {
    return book_.NewEntry(reinterpret_cast<ULONG_PTR>(dialog), 0, container.Size(), container.Get(), 0,
                          nullptr, &size, id.Put());
  });
  return SUCCEEDED(hr) && IsReadable(id.Get(), size) ? EntryId(size, id.Get()) : EntryId();
}

bool EntryActions::AddLine(EntryListBox box, const EntryId& entryId) const {
  EntryFacts facts;
  if (FAILED(ReadFacts(book_, entryId, facts)) || !facts.name) return false;
  box.Append(facts.name->c_str(), std::make_unique<EntryItem>(icons_.For(facts.type), entryId));
  return true;
}

}  // namespace orv::ui
