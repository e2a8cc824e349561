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
  // Created and filled, but not saved.
  ComPtr<IMAPIProp> Create(const WideString& name);
  // The same, saved; returns its identifier.
  Bytes CreateSaved(const WideString& name);
  // By the root container, to which the address book gives it, else by the container.
  HRESULT Delete(const Bytes& id);
  void Keep(const Bytes& id);  // another process takes it away
  // The identifier of the entry of that name in a fresh table, empty when there is none.
  Bytes Find(const WideString& name);
  ULONG Rows();

  // Whether kNumber was taken as the address of what was created.
  bool keepsNumber() const { return keepsNumber_; }
  const Bytes& container() const { return container_; }
  const Tour& tour() const { return tour_; }

 private:
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

void SetText(Probe& probe, IMAPIProp* object, ULONG tag, const WideString& text);
WideString TextOf(Probe& probe, IMAPIProp* object, ULONG tag);
HRESULT Save(Probe& probe, IMAPIProp* object);

inline constexpr wchar_t kNumber[] = L"+49 40 5550100";

}  // namespace orvctl::check
