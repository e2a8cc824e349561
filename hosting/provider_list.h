// The loaded providers of one session, newest first, and the identifiers that they have registered: the
// address book finds here who answers for an entry identifier. The list itself is unlocked but for its reference
// count: the session adds at logon, and unloads at its end when no call is inside the address book any more. Providers
// may be registering on threads of theirs while others look up.
#pragma once

#include <atomic>
#include <cstddef>
#include <iterator>
#include <list>
#include <memory>

#include "hosting/session_link.h"
#include "orv/orvtypes.h"
#include "platform/com_object.h"
#include "platform/com_ptr.h"
#include "platform/module.h"
#include "platform/win.h"

struct IAddrBook;

namespace orv {

// What one provider has registered, newest first. Looking up takes no lock: nodes neither move nor go before the whole
// does. The provider's record and the support object of its library share it, so that a provider that keeps that
// object beyond its unloading registers with nobody and holds nothing but this.
class RegisteredUids {
 public:
  struct Node {
    MAPIUID uid;
    const Node* next;
  };
  class Iterator {
   public:
    using value_type = MAPIUID;
    using difference_type = std::ptrdiff_t;
    using iterator_category = std::forward_iterator_tag;
    using pointer = const MAPIUID*;
    using reference = const MAPIUID&;
    explicit Iterator(const Node* node = nullptr) noexcept : node_(node) {}
    reference operator*() const noexcept { return node_->uid; }
    Iterator& operator++() noexcept {
      node_ = node_->next;
      return *this;
    }
    bool operator==(const Iterator&) const = default;

   private:
    const Node* node_;
  };

  RegisteredUids() = default;
  ~RegisteredUids();
  RegisteredUids(const RegisteredUids&) = delete;
  RegisteredUids& operator=(const RegisteredUids&) = delete;

  Iterator begin() const noexcept { return Iterator(newest_.load(std::memory_order_acquire)); }
  Iterator end() const noexcept { return Iterator(); }
  bool Has(const MAPIUID& uid) const noexcept;

  // MAPI_E_COLLISION for a UID that is there already, MAPI_E_INVALID_PARAMETER once the provider has gone.
  HRESULT Register(const MAPIUID& uid);
  void Close() noexcept;

 private:
  std::atomic<const Node*> newest_{nullptr};
  Lock registering_;
  bool closed_ = false;
};

// One loaded provider, owned by the list alone: it goes with a logon that failed or with the session, on their thread.
class ProviderRecord {
 public:
  ProviderRecord(Module library, ServiceIdentity service);
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

  const MAPIUID& ServiceUid() const noexcept { return service_.uid; }
  const ServiceIdentity& Service() const noexcept { return service_; }

  const RegisteredUids& Registered() const noexcept { return *registered_; }
  HRESULT RegisterUid(const MAPIUID& uid) { return registered_->Register(uid); }
  // For the support object, which may outlive this record.
  std::shared_ptr<RegisteredUids> ShareRegistered() const noexcept { return registered_; }

 private:
  Module library_;
  IAddrBook* provider_ = nullptr;
  const ServiceIdentity service_;
  std::shared_ptr<RegisteredUids> registered_;
};

class CABServiceList final : public ComObject<IUnknown> {
 public:
  using Records = std::list<std::unique_ptr<ProviderRecord>>;

  static ComPtr<CABServiceList> Create();

  // Puts the record at the head.
  void Add(std::unique_ptr<ProviderRecord> record);
  // Newest first; afterwards the list is empty.
  void UnloadAll() noexcept;

  // MAPI_E_NOT_FOUND when no record has this service UID. Take unlinks the record. Published with the list; the library
  // itself asks for neither.
  HRESULT TakeByServiceUid(const MAPIUID& uid, std::unique_ptr<ProviderRecord>* record);
  HRESULT FindByServiceUid(const MAPIUID& uid, ProviderRecord** record) const;

  // The first record from the head that has registered the UID, else MAPI_E_NOT_FOUND. The provider is
  // borrowed and may be null; `index`, when asked for, counts from 0 at the head.
  HRESULT FindByRegisteredUid(const MAPIUID& uid, IAddrBook** provider, std::size_t* index = nullptr) const;
  // By bytes 4 to 19 of an entry identifier; null or shorter than 20 bytes: MAPI_E_NOT_FOUND.
  HRESULT FindByEntryId(ULONG size, const ENTRYID* entryId, IAddrBook** provider,
                        std::size_t* index = nullptr) const;

  // What support objects know of the session, which hold the list beyond its end.
  SessionLink& Link() noexcept { return link_; }

  // All records in list order, for walks over the providers.
  const Records& All() const noexcept { return records_; }

 private:
  CABServiceList() = default;
  ~CABServiceList() override { UnloadAll(); }
  bool Supports(REFIID iid) const override;

  Records records_;
  SessionLink link_;
};

}  // namespace orv
