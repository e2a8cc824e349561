// What the windows of contacts and lists have in common: an entry as it was read and as the user has it, and how one
// becomes the other in the book.
#pragma once

#include <functional>
#include <memory>

#include "orv/kit/window.hpp"
#include "providers/book/store.h"

namespace book {

namespace kit = orv::kit;

class EntryWindow : public kit::Dialog {
 public:
  // MAPI_E_USER_CANCEL where nothing was to be saved.
  HRESULT Run(HWND owner);
  // The same for a new one: *made is what was stored. One that was there already, and that the user wants to see instead,
  // is shown by `showOther`; nothing was made then.
  HRESULT RunNew(HWND owner, const std::function<HRESULT(const EntryKey&)>& showOther, EntryKey* made);

 protected:
  // `entry` without a version is a new one.
  EntryWindow(const kit::Language& language, WORD dialogTemplate, std::span<const kit::HelpTopic> topics,
              const std::shared_ptr<Store>& store, const Entry& entry);

  // Shows the contact anew.
  virtual void Refill() = 0;
  // Something is typed that is not in the contact yet.
  virtual bool HasTyped() const { return false; }
  virtual void TakeTyped() {}
  // What is wrong: a number in the string table, 0 where nothing is.
  virtual UINT Fault() const = 0;
  // What is told in its place: a number in the string table, 0 for nothing.
  virtual UINT Hint() const { return 0; }

  void OnOk() override;
  void OnCancel() override;

  void ShowCaption(UINT ofKnown, UINT ofNew);
  // Shows what is wrong, or the hint, and lets the user save or not.
  void Judge();
  // Only the button that closes is left, where the other one stood.
  void LockButtons();
  bool IsNew() const { return entry_.version == kAnyVersion; }
  bool IsReadOnly() const { return store_->IsReadOnly(); }

  const std::shared_ptr<Store> store_;
  Entry entry_;               // as it was read
  formats::Contact contact_;  // as the user has it

 private:
  static constexpr INT_PTR kOpenOther = 100;

  bool IsChanged() const;
  // Whether a new entry may be stored, or another way was found.
  bool MayBeAdded();
  void Save();
  HRESULT Put();
  // What comes after a change by somebody else: whether there is something to store again.
  bool Resolve();
  bool MakeNew();

  EntryKey other_{};
  INT_PTR result_ = kNotShown;
};

}  // namespace book
