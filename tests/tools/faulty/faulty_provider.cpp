// The objects of the faulty provider, its two exports, and what its file does when it is loaded.
#include <algorithm>
#include <atomic>
#include <cstring>

#include "faulty_book.h"

#ifdef FAULTY_THREAD_LOCAL
struct Remembers {
  ~Remembers() { value = 0; }
  volatile int value = 0;
};
thread_local Remembers t_remembers;
#endif

namespace faulty {
namespace {

// What users, containers and the provider object have in common.
template <class Interface, class... Bases>
class Item : public RefusingProp<Interface, IMAPIProp, Bases...> {
 public:
  Item(BookPtr book, const Ref& ref)
      : book_(std::move(book)), ref_(ref), properties_(book_->PropertiesOf(ref)) {
    s_latestKind = ref.kind;
    s_latestKey = ref.key;
  }

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    const HRESULT result = RefusingProp<Interface, IMAPIProp, Bases...>::QueryInterface(iid, object);
    if (FAILED(result) && Has("queryany")) *object = this;
    return result;
  }

  HRESULT STDMETHODCALLTYPE GetProps(LPSPropTagArray tags, ULONG flags, ULONG* count,
                                     LPSPropValue* values) override {
    if (!Has("nullargs") && (count == nullptr || values == nullptr)) return MAPI_E_INVALID_PARAMETER;
    if (tags != nullptr && tags->cValues == 0) return MAPI_E_INVALID_PARAMETER;
    if ((flags & MAPI_UNICODE) == 0 && !Has("ansi")) return MAPI_E_BAD_CHARWIDTH;
    if (Has("threadown") && GetCurrentThreadId() != maker_) return MAPI_E_CALL_FAILED;
    return Guarded([&] { return Answer(tags != nullptr ? TagsOf(*tags) : Tags(), count, values); });
  }
  HRESULT STDMETHODCALLTYPE GetPropList(ULONG flags, LPSPropTagArray* tags) override {
    if (tags == nullptr) return MAPI_E_INVALID_PARAMETER;
    if ((flags & MAPI_UNICODE) == 0) return MAPI_E_BAD_CHARWIDTH;
    return Guarded([&] {
      std::vector<ULONG> list = Tags();
      if (Has("listless")) list.pop_back();
      *tags = static_cast<LPSPropTagArray>(book_->allocator.CopyTags(list).release());
      return S_OK;
    });
  }

 protected:
  std::vector<ULONG> Tags() const {
    std::vector<ULONG> tags;
    for (const Property& each : properties_) tags.push_back(each.tag);
    return tags;
  }

  HRESULT Answer(std::vector<ULONG> tags, ULONG* count, LPSPropValue* values) {
    const bool isMissing = std::any_of(tags.begin(), tags.end(),
                                       [&](ULONG tag) { return tag != PR_NULL && !Find(properties_, tag); });
    if (Has("proporder") && !isMissing) std::sort(tags.begin(), tags.end());
    if (Has("roworder") && ref_.kind == kRoot && tags.size() == 5) std::swap(tags[3], tags[4]);
    Properties properties = properties_;
    if (Has("idtwo")) properties[0].bytes.back() |= 0x80;
    if (Has("races")) properties[0].bytes = book_->MakeId({s_latestKind, s_latestKey});
    Allocator::Root copy = CopyValues(book_->allocator, properties, tags);
    if (Has("leaks")) book_->allocator.AllocateRoot(8).release();
    if (Has("freetwice")) {
      const Allocator::Root once = book_->allocator.AllocateRoot(8);
      book_->allocator.Free(once.get());
    }
    *count = static_cast<ULONG>(tags.size());
    *values = static_cast<LPSPropValue>(copy.release());
    return isMissing && !Has("missok") ? MAPI_W_ERRORS_RETURNED : S_OK;
  }

  inline static std::atomic<Kind> s_latestKind;
  inline static std::atomic<ULONG> s_latestKey;
  const DWORD maker_ = GetCurrentThreadId();
  const BookPtr book_;
  Ref ref_;
  Properties properties_;
};

class User final : public Item<IMailUser> {
 public:
  User(BookPtr book, const Ref& ref, bool isNew) : Item(std::move(book), ref), isNew_(isNew) {
    const std::lock_guard guard(book_->lock);
    const auto found = book_->records.find(ref.key);
    if (ref.kind == kOwnEntry && found != book_->records.end()) version_ = found->second.version;
  }

  HRESULT STDMETHODCALLTYPE SetProps(ULONG count, LPSPropValue values,
                                     LPSPropProblemArray* problems) override {
    if (ref_.kind != kOwnEntry && !Has("writable")) return MAPI_E_NO_ACCESS;
    if (problems != nullptr) *problems = nullptr;
    return Guarded([&] {
      for (const SPropValue& each : ValueView(values, count)) {
        const auto found = std::find_if(properties_.begin(), properties_.end(),
                                        [&](const Property& own) { return own.tag == each.ulPropTag; });
        if (found != properties_.end() && PROP_TYPE(each.ulPropTag) == PT_UNICODE)
          found->text = each.Value.lpszW;
      }
      return S_OK;
    });
  }
  HRESULT STDMETHODCALLTYPE SaveChanges(ULONG) override {
    if (ref_.kind != kOwnEntry) return Has("writable") ? S_OK : MAPI_E_NO_ACCESS;
    return Guarded([&] { return Save(); });
  }

 private:
  HRESULT Save() {
    {
      const std::lock_guard guard(book_->lock);
      Record& record = book_->records[ref_.key];
      if (!isNew_ && record.version != version_) return Has("conflict") ? S_OK : MAPI_E_OBJECT_CHANGED;
      record.name = Find(properties_, PR_DISPLAY_NAME_W)->text;
      if (!Has("lostnumber")) record.number = Find(properties_, PR_EMAIL_ADDRESS_W)->text;
      version_ = ++record.version;
      book_->Store();
    }
    book_->Tell(std::exchange(isNew_, false) ? fnevObjectCreated : fnevObjectModified, properties_[0].bytes);
    return S_OK;
  }

  bool isNew_;
  ULONG version_ = 0;
};

class Folder final : public RefusingContainer<Item<IABContainer, IMAPIContainer>> {
 public:
  using RefusingContainer::RefusingContainer;

  HRESULT STDMETHODCALLTYPE GetContentsTable(ULONG, LPMAPITABLE* table) override {
    return ref_.kind == kRoot ? MAPI_E_NO_SUPPORT : Make(table);
  }
  HRESULT STDMETHODCALLTYPE GetHierarchyTable(ULONG, LPMAPITABLE* table) override {
    return ref_.kind == kRoot ? Make(table) : MAPI_E_NO_SUPPORT;
  }
  HRESULT STDMETHODCALLTYPE OpenEntry(ULONG size, LPENTRYID id, LPCIID, ULONG, ULONG* type,
                                      LPUNKNOWN* object) override {
    return Guarded([&] { return OpenRef(book_, size, id, type, object); });
  }
  HRESULT STDMETHODCALLTYPE CreateEntry(ULONG, LPENTRYID, ULONG, LPMAPIPROP* entry) override {
    if (ref_.kind != kOwn) return MAPI_E_NO_ACCESS;
    return Guarded([&] {
      Ref ref{kOwnEntry};
      {
        const std::lock_guard guard(book_->lock);
        ref.key = book_->nextKey++;
      }
      *entry = new User(book_, ref, true);
      const std::lock_guard guard(book_->lock);
      if (Has("eager")) book_->records[ref.key];
      return S_OK;
    });
  }
  HRESULT STDMETHODCALLTYPE DeleteEntries(LPENTRYLIST list, ULONG) override {
    if (ref_.kind != kRoot) return MAPI_E_NO_ACCESS;
    return Guarded([&] {
      for (ULONG i = 0; i < list->cValues; ++i) Delete(list->lpbin[i]);
      return S_OK;
    });
  }

 private:
  HRESULT Make(LPMAPITABLE* table) {
    if (table == nullptr) return MAPI_E_INVALID_PARAMETER;
    return Guarded([&] {
      if (Has("shared")) {
        *table = SharedTable();
      } else {
        *table = MakeTable(book_, ref_.kind);
      }
      return S_OK;
    });
  }
  IMAPITable* SharedTable() {
    static IMAPITable* shared[kFixedEntry] = {};
    if (shared[ref_.kind] == nullptr) shared[ref_.kind] = MakeTable(book_, ref_.kind);
    shared[ref_.kind]->AddRef();
    return shared[ref_.kind];
  }
  void Delete(const SBinary& id) {
    Ref ref;
    if (!book_->ReadId(id.cb, reinterpret_cast<ENTRYID*>(id.lpb), &ref) || ref.kind != kOwnEntry ||
        Has("undelete"))
      return;
    {
      const std::lock_guard guard(book_->lock);
      book_->records.erase(ref.key);
      book_->Store();
    }
    book_->Tell(fnevObjectDeleted, Bytes(id.lpb, id.lpb + id.cb));
  }
};

class Provider final : public RefusingAddrBook<Item<IAddrBook>> {
 public:
  using RefusingAddrBook::RefusingAddrBook;

  HRESULT STDMETHODCALLTYPE OpenEntry(ULONG size, LPENTRYID id, LPCIID, ULONG, ULONG* type,
                                      LPUNKNOWN* object) override {
    return Guarded([&] { return OpenRef(book_, size, id, type, object); });
  }

  HRESULT STDMETHODCALLTYPE Advise(ULONG size, LPENTRYID id, ULONG, LPMAPIADVISESINK sink,
                                   ULONG* connection) override {
    return Guarded([&] {
      Ref ref;
      if (!book_->ReadId(size, id, &ref)) return MAPI_E_INVALID_ENTRYID;
      const std::lock_guard guard(book_->lock);
      book_->listeners.push_back({book_->nextConnection, sink});
      sink->AddRef();
      *connection = book_->nextConnection++;
      return S_OK;
    });
  }
  HRESULT STDMETHODCALLTYPE Unadvise(ULONG connection) override {
    const std::lock_guard guard(book_->lock);
    auto& all = book_->listeners;
    const auto found = std::find_if(all.begin(), all.end(),
                                    [&](const Listener& each) { return each.connection == connection; });
    if (found == all.end()) return MAPI_E_NOT_FOUND;
    if (Has("keepsink") || Has("talks")) return found->isGone = true, S_OK;
    found->sink->Release();
    all.erase(found);
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE PrepareRecips(ULONG, LPSPropTagArray tags, LPADRLIST list) override {
    if (list == nullptr || (Has("recipnone") && list->cEntries == 0)) return MAPI_E_INVALID_PARAMETER;
    if (tags == nullptr) return S_OK;
    return Guarded([&] {
      for (ULONG i = 0; i < list->cEntries; ++i) Prepare(TagsOf(*tags), list->aEntries[i]);
      return S_OK;
    });
  }

 private:
  // Asked for in front, from the entry or else from the recipient; then what else the recipient has.
  void Prepare(std::vector<ULONG> tags, ADRENTRY& entry) {
    const ValueView given(entry);
    if (Has("recipall") && entry.cValues != 0) entry.rgPropVals[0].Value.l = MAPI_TO;
    const SBinary id = given.Binary(PR_ENTRYID);
    Ref ref;
    if (!book_->ReadId(id.cb, reinterpret_cast<ENTRYID*>(id.lpb), &ref) || !book_->IsThere(ref)) return;
    Properties properties = book_->PropertiesOf(ref);
    for (const SPropValue& each : given) {
      if (Has("reciptype") && each.ulPropTag == PR_RECIPIENT_TYPE) continue;
      if (!Find(properties, each.ulPropTag)) properties.push_back(Copied(each));
      const auto isSame = [&](ULONG tag) { return PROP_ID(tag) == PROP_ID(each.ulPropTag); };
      if (std::none_of(tags.begin(), tags.end(), isSame)) tags.push_back(each.ulPropTag);
    }
    Allocator::Root copy = CopyValues(book_->allocator, properties, tags);
    book_->allocator.Free(entry.rgPropVals);
    entry.cValues = static_cast<ULONG>(tags.size());
    entry.rgPropVals = static_cast<LPSPropValue>(copy.release());
  }
  static Property Copied(const SPropValue& value) {
    if (PROP_TYPE(value.ulPropTag) == PT_UNICODE) return {value.ulPropTag, 0, value.Value.lpszW};
    return {value.ulPropTag, value.Value.l};
  }
};

HRESULT LogOn(LPORVSUPPORT support, LPPROFSECT section, const Allocator& allocator, LPADRBOOK* provider) {
  TagArray tags{PR_SERVICE_UID, PR_ORV_BOOK_FILE_W};
  ULONG count = 0;
  Buffer<SPropValue> values = allocator.Own<SPropValue>();
  const HRESULT read = section->GetProps(tags.Get(), MAPI_UNICODE, &count, values.Put());
  if (FAILED(read)) return static_cast<void>(values.Detach()), read;
  const ValueView given(values.Get(), count);
  const SBinary uid = given.Binary(PR_SERVICE_UID);
  const LPCWSTR path = given.Text(PR_ORV_BOOK_FILE_W);
  if (Has("needsconf") && path == nullptr) return MAPI_E_UNCONFIGURED;
  if (Has("throws") && uid.cb != sizeof(MAPIUID)) throw 1;
  if (uid.cb != sizeof(MAPIUID)) return MAPI_E_INVALID_OBJECT;
  support->AddRef();
  const auto book = std::make_shared<Book>(allocator, support);
  std::memcpy(&book->uid, uid.lpb, sizeof(MAPIUID));
  if (path != nullptr) book->path = path;
  if (!book->path.empty()) book->Load();
  const HRESULT registered = Has("nouid") ? S_OK : support->SetProviderUID(&book->uid);
  if (FAILED(registered) && Has("keepsup")) support->AddRef();
  if (FAILED(registered)) return registered;
  *provider = Has("nullobj") ? nullptr : new Provider(book, Ref{kRoot});
  return S_OK;
}

HRESULT StorePath(IProfSect* section, const wchar_t* text) {
  const DWORD attributes = GetFileAttributesW(text);
  const bool isThere = attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
  if (!isThere && !Has("storebad")) return MAPI_E_NOT_FOUND;
  std::wstring path = text;
  SPropValue value{};
  value.ulPropTag = PR_ORV_BOOK_FILE_W;
  value.Value.lpszW = path.data();
  section->SetProps(1, &value, nullptr);
  section->SaveChanges(KEEP_OPEN_READWRITE);
  return isThere ? S_OK : MAPI_E_NOT_FOUND;
}

}  // namespace

HRESULT OpenRef(const BookPtr& book, ULONG size, const ENTRYID* id, ULONG* type, LPUNKNOWN* object) {
  Ref ref;
  if (!book->ReadId(size, id, &ref)) return MAPI_E_INVALID_ENTRYID;
  if (!book->IsThere(ref)) return MAPI_E_NOT_FOUND;
  *type = ref.kind < kFixedEntry ? MAPI_ABCONT : MAPI_MAILUSER;
  if (ref.kind < kFixedEntry) {
    *object = new Folder(book, ref);
  } else {
    *object = new User(book, ref, false);
  }
  return S_OK;
}

}  // namespace faulty

extern "C" HRESULT STDAPICALLTYPE ABProviderOpen(HINSTANCE, LPORVSUPPORT support, LPPROFSECT section,
                                                 ULONG_PTR, ULONG, LPALLOCATEBUFFER root, LPALLOCATEMORE more,
                                                 LPFREEBUFFER free, LPADRBOOK* provider, ULONG_PTR) {
  using namespace faulty;
#ifdef FAULTY_THREAD_LOCAL
  t_remembers.value = 1;
#endif
  if (Has("throws")) return LogOn(support, section, Allocator(root, more, free), provider);
  return Guarded([&] { return LogOn(support, section, Allocator(root, more, free), provider); });
}

extern "C" HRESULT STDAPICALLTYPE FaultyServiceEntry(HINSTANCE, ULONG_PTR, ULONG, ULONG context, ULONG count,
                                                     LPSPropValue values, LPPROFSECT section, LPORVSUPPORT,
                                                     ULONG_PTR) {
  using namespace faulty;
  switch (context) {
    case MSG_SERVICE_INSTALL:
      if (Has("nullsec")) section->AddRef();
      return S_OK;
    case MSG_SERVICE_CREATE:
      if (Has("keepsec")) section->AddRef();
      return S_OK;
    case MSG_SERVICE_CONFIGURE:
    case MSG_SERVICE_DELETE:
    case MSG_SERVICE_UNINSTALL:
      return S_OK;
    case ORV_SERVICE_EXTRA_CONFIG:
      if (Has("noconfig") || count != 1) return MAPI_E_NO_SUPPORT;
      return Guarded([&] { return StorePath(section, values->Value.lpszW); });
    default:
      return Has("anyctx") ? S_OK : MAPI_E_NO_SUPPORT;
  }
}

extern "C" BOOL WINAPI DllMain(HINSTANCE self, DWORD reason, LPVOID) {
  HMODULE pinned = nullptr;
  if (reason == DLL_PROCESS_ATTACH && faulty::Has("pinned"))
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                       reinterpret_cast<LPCWSTR>(self), &pinned);
  return reason != DLL_PROCESS_ATTACH || !faulty::Has("noload");
}
