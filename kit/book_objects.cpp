#include "book_objects.hpp"

#include <mutex>

#include "orv/kit/recipients.hpp"
#include "orv/orvspi.h"
#include "orv/orvtags.h"
#include "telling.hpp"

namespace orv::kit {
namespace {

using Guard = std::lock_guard<sdk::Lock>;

SBinary Sized(ULONG size, const void* bytes) noexcept {
  return {size, static_cast<LPBYTE>(const_cast<void*>(bytes))};
}

// The entry behind an object: a new one gets its place in the book when it is first saved.
class Identity {
 public:
  explicit Identity(Origin origin) : madeIn_(origin.entry), origin_(std::move(origin)) {}

  Origin Get() const {
    const Guard guard(lock_);
    return origin_;
  }

  HRESULT Save(Changes& changes) {
    const Origin origin = Get();
    if (origin.IsMember()) return SaveMember(origin);
    event_ = origin.isNew ? fnevObjectCreated : fnevObjectModified;
    if (!origin.isNew) return origin.book->Change(origin.entry, changes);
    EntryRef made;
    const HRESULT hr =
        origin.book->Create(origin.entry, origin.objectType, origin.createFlags, changes, &made);
    if (FAILED(hr)) return hr;
    Become(made);
    origin.book->Ids().Identify(made, changes.values);
    return hr;
  }

  void Tell() {
    const Origin origin = Get();
    const ULONG event = event_;
    if (origin.book->TellsByItself()) return;
    if (!origin.IsMember()) {
      if (event == fnevObjectCreated) TellWhereMade(*origin.book, origin.entry);
      origin.book->Tell(event, origin.entry, origin.objectType);
    } else if (event != 0) {
      TellOfMembers(*origin.book, origin.entry);
    }
  }

 private:
  // Once: whoever saves again finds it a member already.
  HRESULT SaveMember(const Origin& origin) {
    event_ = 0;
    if (!origin.isNew) return S_OK;
    if (const HRESULT hr = origin.book->AddMember(origin.entry, origin.member); FAILED(hr)) return hr;
    event_ = fnevObjectModified;
    Become(origin.entry);
    return S_OK;
  }

  // An entry may be made in a list and belong to a container: Tell reaches the container's tables only.
  void TellWhereMade(Book& book, const EntryRef& made) const {
    TableSet* tables = book.TablesOf(madeIn_);
    if (tables != nullptr && tables != book.TablesOf(book.ParentOf(made))) tables->Changed();
  }

  void Become(const EntryRef& made) {
    EntryRef entry = made;
    const Guard guard(lock_);
    origin_.entry = std::move(entry);
    origin_.isNew = false;
  }

  const EntryRef madeIn_;  // of an entry that was new; else the entry
  mutable sdk::Lock lock_;
  Origin origin_;
  std::atomic<ULONG> event_{0};
};

template <class Interface, class... Bases>
class EntryObject : public PropObject<Interface, Bases...> {
 public:
  EntryObject(const Origin& origin, PropList values, Access access)
      : PropObject<Interface, Bases...>(origin.book->ShareHost(), std::move(values), access),
        identity_(origin) {}

 protected:
  // A member's properties are those of the entry, which is changed where it lies.
  HRESULT CheckSet(const SPropValue& value) override {
    return Ask([&](Book& book) { return book.CheckSet(value); });
  }
  HRESULT CheckDelete(ULONG tag) override {
    return Ask([&](Book& book) { return book.CheckDelete(tag); });
  }
  HRESULT Save(Changes& changes) override {
    return Telling(this->GetHost(), "SaveChanges", [&] { return identity_.Save(changes); });
  }
  void Saved() override { identity_.Tell(); }
  Origin GetOrigin() const { return identity_.Get(); }

 private:
  template <class Check>
  HRESULT Ask(Check check) const {
    const Origin origin = GetOrigin();
    if (origin.IsMember()) return MAPI_E_NO_ACCESS;
    return Telling(origin.book->GetHost(), "the check of a property", [&] { return check(*origin.book); });
  }

  Identity identity_;
};

using MailUser = EntryObject<IMailUser>;

// IABContainer and IDistList have the same methods, so one template serves both.
template <class Interface>
class Container final : public sdk::RefusingContainer<EntryObject<Interface, IMAPIContainer>> {
  using Base = sdk::RefusingContainer<EntryObject<Interface, IMAPIContainer>>;

 public:
  using Base::Base;

  HRESULT STDMETHODCALLTYPE GetContentsTable(ULONG flags, LPMAPITABLE* table) override {
    return Run("GetContentsTable", [&](const Origin& origin) { return OpenContents(origin, flags, table); });
  }
  HRESULT STDMETHODCALLTYPE GetHierarchyTable(ULONG flags, LPMAPITABLE* table) override {
    return Run("GetHierarchyTable",
               [&](const Origin& origin) { return OpenHierarchy(origin, flags, table); });
  }
  HRESULT STDMETHODCALLTYPE OpenEntry(ULONG size, LPENTRYID id, LPCIID iid, ULONG flags, ULONG* type,
                                      LPUNKNOWN* object) override {
    return sdk::Guarded(
        [&] { return this->GetOrigin().book->OpenEntry(size, id, iid, flags, type, object); });
  }
  HRESULT STDMETHODCALLTYPE OpenProperty(ULONG tag, LPCIID iid, ULONG, ULONG flags,
                                         LPUNKNOWN* object) override {
    if (tag != PR_CONTAINER_CONTENTS && tag != PR_CONTAINER_HIERARCHY)
      return Run("OpenProperty",
                 [&](const Origin& origin) { return OpenPropertyOf(origin, tag, iid, flags, object); });
    if (iid == nullptr || !IsEqualGUID(*iid, IID_IMAPITable)) return MAPI_E_INTERFACE_NOT_SUPPORTED;
    auto* table = reinterpret_cast<LPMAPITABLE*>(object);
    return tag == PR_CONTAINER_CONTENTS ? GetContentsTable(flags | MAPI_UNICODE, table)
                                        : GetHierarchyTable(flags | MAPI_UNICODE, table);
  }
  HRESULT STDMETHODCALLTYPE CreateEntry(ULONG size, LPENTRYID id, ULONG flags, LPMAPIPROP* entry) override {
    return Run("CreateEntry",
               [&](const Origin& origin) { return CreateEntryIn(origin, Sized(size, id), flags, entry); });
  }
  HRESULT STDMETHODCALLTYPE CopyEntries(LPENTRYLIST entries, ULONG_PTR, LPMAPIPROGRESS, ULONG) override {
    return Run("CopyEntries", [&](const Origin& origin) { return CopyEntriesInto(origin, entries); });
  }
  HRESULT STDMETHODCALLTYPE DeleteEntries(LPENTRYLIST entries, ULONG) override {
    return Run("DeleteEntries", [&](const Origin& origin) { return DeleteEntriesOf(origin, entries); });
  }
  HRESULT STDMETHODCALLTYPE ResolveNames(LPSPropTagArray tags, ULONG, LPADRLIST list,
                                         LPFlagList flags) override {
    return Run("ResolveNames",
               [&](const Origin& origin) { return ResolveNamesIn(origin, tags, list, flags); });
  }

 private:
  // The boundary of every method that comes down to hooks.
  template <class Body>
  HRESULT Run(const char* method, Body body) {
    return sdk::Guarded([&] {
      const Origin origin = this->GetOrigin();
      return Telling(origin.book->GetHost(), method, [&] { return body(origin); });
    });
  }
};

// The library asks it for its row in the root container and routes to it whatever bears the book's MAPIUID.
class ProviderObject final : public sdk::RefusingAddrBook<PropObject<IAddrBook>> {
 public:
  ProviderObject(std::shared_ptr<Book> book, PropList root)
      : RefusingAddrBook(book->ShareHost(), std::move(root)), book_(std::move(book)) {}

  HRESULT STDMETHODCALLTYPE OpenEntry(ULONG size, LPENTRYID id, LPCIID iid, ULONG flags, ULONG* type,
                                      LPUNKNOWN* object) override {
    return book_->OpenEntry(size, id, iid, flags, type, object);
  }

  HRESULT STDMETHODCALLTYPE CompareEntryIDs(ULONG size1, LPENTRYID id1, ULONG size2, LPENTRYID id2, ULONG,
                                            ULONG* result) override {
    if (result == nullptr) return MAPI_E_INVALID_PARAMETER;
    return sdk::Guarded([&] {
      EntryRef one, other;
      const bool areOurs =
          SUCCEEDED(book_->Ids().Read(size1, id1, &one)) && SUCCEEDED(book_->Ids().Read(size2, id2, &other));
      if (!areOurs) return MAPI_E_UNKNOWN_ENTRYID;
      *result = one == other;
      return S_OK;
    });
  }

  // Comes with every list, an empty one too. Recipients that are not ours stay as they are.
  HRESULT STDMETHODCALLTYPE PrepareRecips(ULONG, LPSPropTagArray tags, LPADRLIST list) override {
    return PrepareRecipients(GetHost().buffers, book_->Ids(), tags, list,
                             [this](const EntryRef& entry, std::span<const ULONG> wanted, PropList* values) {
                               return book_->ReadEntry(entry, wanted, *values);
                             });
  }

  // Only the lower half of the window is sure to be readable, which is all that a window's handle has.
  HRESULT STDMETHODCALLTYPE Details(ULONG_PTR* window, LPFNDISMISS, LPVOID, ULONG size, LPENTRYID id,
                                    LPFNBUTTON, LPVOID, LPWSTR, ULONG flags) override {
    if (window == nullptr) return MAPI_E_INVALID_PARAMETER;
    const HWND owner = static_cast<HWND>(ULongToHandle(*reinterpret_cast<const ULONG*>(window)));
    return sdk::Guarded([&] { return ShowDetailsOf(*book_, owner, Sized(size, id), flags); });
  }
  HRESULT STDMETHODCALLTYPE NewEntry(ULONG_PTR window, ULONG, ULONG containerSize, LPENTRYID container,
                                     ULONG templateSize, LPENTRYID entryTemplate, ULONG* size,
                                     LPENTRYID* made) override {
    if (size == nullptr || made == nullptr) return MAPI_E_INVALID_PARAMETER;
    return sdk::Guarded([&] {
      return ShowNewIn(*book_, reinterpret_cast<HWND>(window), Sized(containerSize, container),
                       Sized(templateSize, entryTemplate), size, made);
    });
  }

  HRESULT STDMETHODCALLTYPE Advise(ULONG size, LPENTRYID id, ULONG mask, LPMAPIADVISESINK sink,
                                   ULONG* connection) override {
    if (!book_->TellsOfChanges()) return MAPI_E_NO_SUPPORT;
    return book_->Advised().Advise(Sized(size, id), mask, sink, connection);
  }
  HRESULT STDMETHODCALLTYPE Unadvise(ULONG connection) override {
    return book_->TellsOfChanges() ? book_->Advised().Unadvise(connection) : MAPI_E_NO_SUPPORT;
  }

 private:
  const std::shared_ptr<Book> book_;
};

}  // namespace

sdk::ComPtr<IMAPIProp> MakeEntry(Origin origin, PropList values, Access access) {
  const auto adopt = [](IMAPIProp* object) { return sdk::ComPtr<IMAPIProp>::Adopt(object); };
  if (origin.objectType == MAPI_ABCONT)
    return adopt(new Container<IABContainer>(origin, std::move(values), access));
  if (origin.objectType == MAPI_DISTLIST)
    return adopt(new Container<IDistList>(origin, std::move(values), access));
  return adopt(new MailUser(origin, std::move(values), access));
}

sdk::ComPtr<IAddrBook> MakeProviderObject(std::shared_ptr<Book> book, PropList root) {
  return sdk::ComPtr<IAddrBook>::Adopt(new ProviderObject(std::move(book), std::move(root)));
}

HRESULT OpenAnyEntry(Book& book, const SBinary& id, sdk::ComPtr<IMAPIProp>& entry, ULONG* objectType) {
  auto* bytes = reinterpret_cast<LPENTRYID>(id.lpb);
  const auto open = [&](auto& opener) {
    return CallForeign(entry, [&] {
      return opener.OpenEntry(id.cb, bytes, &IID_IMAPIProp, 0, objectType, entry.PutUnknown());
    });
  };
  if (book.Ids().IsOurs(id.cb, bytes)) return open(book);
  const auto session = book.GetHost().support.As<IOrvSupport2>(IID_IOrvSupport2);
  return session ? open(*session) : MAPI_E_NOT_FOUND;
}

}  // namespace orv::kit
