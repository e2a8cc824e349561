// Pairs the connection numbers that clients were given with the registrations that providers hold for them,
// so that Unadvise and the session's end can undo each. Safe on any thread; providers are told outside the lock.
#pragma once

#include <memory>

#include "orv/orvapi.h"
#include "platform/com_object.h"
#include "platform/com_ptr.h"

namespace orv {

// One provider's side of a connection. It holds the provider; undoing it is ReleaseRegistrations' affair.
struct AdviseRegistration {
  std::unique_ptr<AdviseRegistration> next;
  ULONG connection = 0;
  ComPtr<IAddrBook> provider;
};

// What stands behind one number that a client holds; its registrations are newest first.
struct AdviseRecord {
  std::unique_ptr<AdviseRecord> next;
  ULONG connection = 0;
  std::unique_ptr<AdviseRegistration> registrations;
};

class CABAdviseCList final : public ComObject<IUnknown> {
 public:
  static ComPtr<CABAdviseCList> Create();

  // Shares the provider. A null record is MAPI_E_INVALID_PARAMETER.
  static HRESULT AddRegistration(AdviseRecord* record, ULONG connection, IAddrBook* provider);
  // Tells each provider, newest registration first, and lets go of it. A provider that throws does not keep
  // the others from being told; the answer is then MAPI_E_CALL_FAILED.
  static HRESULT ReleaseRegistrations(AdviseRecord& record);

  // Puts the record at the head under the next number: 1, 2, 3 and so on, none given twice before a Clear.
  ULONG Insert(std::unique_ptr<AdviseRecord> record);
  // MAPI_E_NOT_FOUND when no record has the number. Remove unlinks the record; Find and Count are published with the
  // list, the library itself asks for neither.
  HRESULT Remove(ULONG connection, std::unique_ptr<AdviseRecord>& record);
  HRESULT Find(ULONG connection, AdviseRecord** record) const;
  // Undoes everything, newest first; numbers begin at 1 again.
  void Clear();

  ULONG Count() const {
    LockGuard guard(ObjectLock());
    return count_;
  }

 private:
  CABAdviseCList() = default;
  ~CABAdviseCList() override { Clear(); }
  bool Supports(REFIID iid) const override;
  std::unique_ptr<AdviseRecord> TakeNewest();

  std::unique_ptr<AdviseRecord> head_;
  ULONG nextConnection_ = 1;
  ULONG count_ = 0;
};

}  // namespace orv
