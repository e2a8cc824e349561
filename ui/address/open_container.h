// The container whose entries the Address dialog shows, and the registration that tells of its changes.
#pragma once

#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "orv/orvapi.h"
#include "platform/com_ptr.h"
#include "props/entry_id.h"
#include "ui/address/advise_sink.h"
#include "ui/address/entry_item.h"
#include "ui/address/entry_list_box.h"

namespace orv::ui {

// Calls providers, none of whose exceptions passes.
class OpenContainer {
 public:
  explicit OpenContainer(IAddrBook& book) noexcept : book_(book) {}
  // A provider that let the dialog go while it was called may have registered the sink after that.
  ~OpenContainer() { StopWatching(); }
  OpenContainer(const OpenContainer&) = delete;
  OpenContainer& operator=(const OpenContainer&) = delete;

  // The window that is told of changes, until Release. May throw std::bad_alloc.
  void TellChangesTo(HWND window) { sink_ = CAdviseSink::Create(window); }

  bool Is(const EntryId& container) const noexcept { return container_ && entryId_ == container; }
  bool IsOpen() const noexcept { return static_cast<bool>(container_); }
  // Opens the new container, then closes the old one, whatever became of the new.
  HRESULT Open(const EntryId& container);
  // Changes are told from now on; once what they would change has been read.
  void Watch();
  // Appends a line an entry. What was read before a failure stays. Without a container: why it did not open.
  HRESULT ReadEntries(const EntryIcons& icons, EntryListBox box) const;
  HRESULT DeleteEntries(const std::vector<EntryId>& entries) const;
  // The container's own words for a failure of its; empty where it has none.
  WString WordsFor(HRESULT hr) const;
  // Which of the entries it lists; what comes out points into them.
  HRESULT FindListed(const std::vector<EntryId>& entries, std::set<std::string_view>& listed) const;
  // Why one that could be read has no entries: its state as PR_ORV_BOOK_STATUS tells it, MAPI_E_NO_SUPPORT where
  // it is for containers only, S_OK for no particular reason.
  HRESULT WhyEmpty() const;

  // Runs an action of the dialog's own, which tells whether it changed the container: the dialog shows that already, so
  // the next notification is not to be followed.
  template <class Action>
  void RunOwn(Action&& action) {
    nextChangeIsOwn_ = false;
    nextChangeIsOwn_ = std::forward<Action>(action)();
  }
  // Whether a notification that has come is of such a change; true once a change.
  bool TakeOwnChange() noexcept { return std::exchange(nextChangeIsOwn_, false); }

  // All that is held; a second time finds nothing left.
  void Release();

 private:
  HRESULT OpenContents(ComPtr<IMAPITable>& table) const;
  void Close();
  void StopWatching();

  IAddrBook& book_;
  ComPtr<IABContainer> container_;
  HRESULT opened_ = MAPI_E_NOT_FOUND;
  EntryId entryId_;
  ComPtr<CAdviseSink> sink_;
  ULONG connection_ = 0;
  bool nextChangeIsOwn_ = false;
};

}  // namespace orv::ui
