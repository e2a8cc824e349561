// While a provider is called the dialog may be destroyed with its owner, so what a call needs is copied first.
#include "ui/address/entry_actions.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <utility>

#include "orv/orvflags.h"
#include "platform/boundary.h"
#include "platform/buffer.h"
#include "platform/pointer_check.h"
#include "ui/address/entry_facts.h"

namespace orv::ui {

HRESULT EntryActions::ShowDetails(HWND dialog, EntryListBox box, int line) const {
  const EntryItem* shown = box.ItemAt(line);
  if (shown == nullptr) return S_FALSE;
  const EntryId entryId = shown->entryId;
  auto parent = reinterpret_cast<ULONG_PTR>(dialog);
  const HRESULT hr = GuardedForeign([&] {
    return book_.Details(&parent, nullptr, nullptr, entryId.Size(), entryId.Get(), nullptr, nullptr, nullptr,
                         DIALOG_MODAL);
  });
  if (SUCCEEDED(hr)) RefreshLine(box, line, entryId);
  return hr;
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

HRESULT EntryActions::Delete(EntryListBox box, const std::vector<int>& lines, ULONG& left) const {
  left = 0;
  std::vector<EntryId> entries;
  for (const int line : lines) {
    if (const EntryItem* item = box.ItemAt(line)) entries.push_back(item->entryId);
  }
  const HRESULT hr = container_.DeleteEntries(entries);
  if (hr == MAPI_W_PARTIAL_COMPLETION) return RemoveGone(box, lines, entries, left);
  if (SUCCEEDED(hr)) box.Remove(lines);
  return hr;
}

// Which ones stayed only the container knows: it is asked what it lists.
HRESULT EntryActions::RemoveGone(EntryListBox box, std::vector<int> lines,
                                 const std::vector<EntryId>& entries, ULONG& left) const {
  std::set<std::string_view> listed;
  if (const HRESULT hr = container_.FindListed(entries, listed); FAILED(hr)) return hr;
  const auto gone = std::remove_if(lines.begin(), lines.end(), [&](int line) {
    const EntryItem* item = box.ItemAt(line);
    return item == nullptr || listed.contains(item->entryId.Bytes());
  });
  left = static_cast<ULONG>(lines.end() - gone);
  lines.erase(gone, lines.end());
  box.Remove(lines);
  return S_OK;
}

HRESULT EntryActions::MakeNew(HWND dialog, const EntryId& container, EntryId& made) const {
  ULONG size = 0;
  MapiBuffer<ENTRYID> id;
  const HRESULT hr = HandedOut(id, [&] {
    return book_.NewEntry(reinterpret_cast<ULONG_PTR>(dialog), 0, container.Size(), container.Get(), 0,
                          nullptr, &size, id.Put());
  });
  if (SUCCEEDED(hr) && IsReadable(id.Get(), size)) made = EntryId(size, id.Get());
  return hr;
}

bool EntryActions::AddLine(EntryListBox box, const EntryId& entryId) const {
  EntryFacts facts;
  if (FAILED(ReadFacts(book_, entryId, facts)) || !facts.name) return false;
  box.Append(facts.name->c_str(), std::make_unique<EntryItem>(icons_.For(facts.type), entryId));
  return true;
}

}  // namespace orv::ui
