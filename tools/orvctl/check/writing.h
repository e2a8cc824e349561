// Entries that a check makes for itself and takes away again.
#pragma once

#include "tools/orvctl/check/tour.h"

namespace orvctl::check {

// A container that takes entries, of those that say AB_MODIFIABLE; none: the check is not offered.
class Workshop {
 public:
  explicit Workshop(const Stage& stage);
  // What was saved here and is still there goes.
  ~Workshop();
  Workshop(const Workshop&) = delete;
  Workshop& operator=(const Workshop&) = delete;

  // A name that no entry has yet.
  static WideString FreshName(const char* purpose);
  // A mail user, created with these flags and filled, but not saved.
  ComPtr<IMAPIProp> Create(const WideString& name, ULONG flags = 0);
  // The result of SaveChanges; after a success it is one of those that go.
  HRESULT SaveNew(const ComPtr<IMAPIProp>& entry, const WideString& name);
  // Created and saved; returns its identifier.
  Bytes CreateSaved(const WideString& name, ULONG flags = 0);
  // By the template that the container names; without one the check is not offered.
  Bytes CreateList(const WideString& name);
  // CopyEntries into the container.
  HRESULT Copy(const Bytes& id);
  // What was made by other means goes as well.
  void TakeAway(const Bytes& id) { made_.push_back(id); }
  // By the root container, to which the address book gives it, else by the container.
  HRESULT Delete(const Bytes& id);
  void Keep(const Bytes& id);  // another process takes it away
  // The identifier of the entry of that name in a fresh table, empty when there is none.
  Bytes Find(const WideString& name);
  ULONG Rows();
  // The entry of that identifier says what was stored.
  void RequireStored(const Bytes& id, const WideString& name);

  // Whether kNumber was taken as the address of what was created; another process may have found out.
  bool keepsNumber() const { return keepsNumber_; }
  void SetKeepsNumber(bool keepsNumber) { keepsNumber_ = keepsNumber; }
  const Bytes& container() const { return container_; }
  const Tour& tour() const { return tour_; }

 private:
  HRESULT CreateFrom(Bytes templateId, ULONG flags, ComPtr<IMAPIProp>& entry);
  void Fill(IMAPIProp* entry, const WideString& name);
  ComPtr<IMAPITable> Contents();
  HRESULT DeleteIn(const Bytes& container, const Bytes& id);

  const Stage& stage_;
  Probe& probe_;
  const Tour tour_;
  Bytes container_;
  std::vector<Bytes> made_;
  bool keepsNumber_ = true;
};

// Nothing of the kind is offered here.
inline bool IsRefusal(HRESULT result) { return result == MAPI_E_NO_SUPPORT || result == MAPI_E_NO_ACCESS; }

// Calls with a list of the one identifier.
template <class Function>
HRESULT WithEntryList(Bytes id, Function function) {
  SBinary binary{static_cast<ULONG>(id.size()), id.data()};
  ENTRYLIST list{1, &binary};
  return function(&list);
}

void SetText(Probe& probe, IMAPIProp* object, ULONG tag, const WideString& text);
WideString TextOf(Probe& probe, IMAPIProp* object, ULONG tag);
HRESULT Save(Probe& probe, IMAPIProp* object);

inline constexpr wchar_t kNumber[] = L"+49 40 5550100";

}  // namespace orvctl::check
