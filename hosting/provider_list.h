// The loaded providers of one session, newest first, and the identifiers that they have registered: the
// address book finds here who answers for an entry identifier. Unlocked but for its reference count: the
// session adds at logon and unloads at its end, and looks up in between.
#pragma once

#include <cstddef>
#include <list>
#include <memory>
#include <vector>

#include "orv/orvtypes.h"
#include "platform/com_object.h"
#include "platform/com_ptr.h"
#include "platform/module.h"
#include "platform/win.h"

struct IAddrBook;

namespace orv {

// One loaded provider. Owned by the list; the support object that its library received only observes it, so a
// provider that keeps that object beyond its unloading finds no record any more.
class ProviderRecord : public std::enable_shared_from_this<ProviderRecord> {
 public:
  ProviderRecord(Module library, const MAPIUID& service) noexcept;
  // Releases the provider object, then frees its library.
  ~ProviderRecord();
  ProviderRecord(const ProviderRecord&) = delete;
  ProviderRecord& operator=(const ProviderRecord&) = delete;

  // Borrowed; null when the library opened successfully without an object.
  IAddrBook* Provider() const noexcept { return provider_; }
  // Takes over the reference that "ABProviderOpen" handed out.
  void AdoptProvider(IAddrBook* provider) noexcept { provider_ = provider; }

  // The library outlives this record, for ever.
  void KeepLibraryLoaded() noexcept { static_cast<void>(library_.Detach()); }

  HMODULE Library() const noexcept { return library_.Get(); }
  const MAPIUID& ServiceUid() const noexcept { return serviceUid_; }

  const std::vector<MAPIUID>& RegisteredUids() const noexcept { return registeredUids_; }
  bool HasRegistered(const MAPIUID& uid) const noexcept;
  // MAPI_E_COLLISION for a UID that this provider has registered already.
  HRESULT RegisterUid(const MAPIUID& uid);

 private:
  Module library_;
  IAddrBook* provider_ = nullptr;
  MAPIUID serviceUid_;
  std::vector<MAPIUID> registeredUids_;
};

class CABServiceList final : public ComObject<IUnknown> {
 public:
  using Records = std::list<std::shared_ptr<ProviderRecord>>;

  static ComPtr<CABServiceList> Create();

  // Puts the record at the head.
  void Add(std::shared_ptr<ProviderRecord> record);
  // Newest first; afterwards the list is empty.
  void UnloadAll() noexcept;

  // MAPI_E_NOT_FOUND when no record has this service UID. Take unlinks the record.
  HRESULT TakeByServiceUid(const MAPIUID& uid, std::shared_ptr<ProviderRecord>* record);
  HRESULT FindByServiceUid(const MAPIUID& uid, ProviderRecord** record) const;

  // The first record from the head that has registered the UID, else MAPI_E_NOT_FOUND. The provider is
  // borrowed and may be null; `index`, when asked for, counts from 0 at the head.
  HRESULT FindByRegisteredUid(const MAPIUID& uid, IAddrBook** provider, std::size_t* index = nullptr) const;
  // By bytes 4 to 19 of an entry identifier; null or shorter than 20 bytes: MAPI_E_NOT_FOUND.
  HRESULT FindByEntryId(ULONG size, const ENTRYID* entryId, IAddrBook** provider,
                        std::size_t* index = nullptr) const;

  // All records in list order, for walks over the providers.
  const Records& All() const noexcept { return records_; }

 private:
  CABServiceList() = default;
  ~CABServiceList() override { UnloadAll(); }
  bool Supports(REFIID iid) const override;

  Records records_;
};

}  // namespace orv
