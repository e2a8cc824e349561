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

Property Copied(const SPropValue& value) {
  if (PROP_TYPE(value.ulPropTag) == PT_UNICODE) return {value.ulPropTag, 0, value.Value.lpszW};
  return {value.ulPropTag, value.Value.l};
}

// Asked for in front, from the entry or else from the recipient; then what else the recipient has.
void Merge(const Book& book, Properties properties, std::vector<ULONG> tags, ADRENTRY& entry) {
  for (const SPropValue& each : ValueView(entry)) {
    if (Has("reciptype") && each.ulPropTag == PR_RECIPIENT_TYPE) continue;
    if (!Find(properties, each.ulPropTag)) properties.push_back(Copied(each));
    const auto isSame = [&](ULONG tag) { return PROP_ID(tag) == PROP_ID(each.ulPropTag); };
    if (std::none_of(tags.begin(), tags.end(), isSame)) tags.push_back(each.ulPropTag);
  }
  Allocator::Root copy = CopyValues(book.allocator, properties, tags);
  book.allocator.Free(entry.rgPropVals);
  entry.cValues = static_cast<ULONG>(tags.size());
  entry.rgPropVals = static_cast<LPSPropValue>(copy.release());
}

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
      if (Has("listless") || Has("tellswhy")) list.pop_back();
      if (Has("tellswhy"))
        ComPtr<IUnknown>::Share(book_->kept)
            .As<IOrvSupport2>(IID_IOrvSupport2)
            ->ReportProblem(MAPI_E_DISK_ERROR, L"the tag list is worn out");
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

// An entry that may be changed, and one that is new until it is saved.
template <class Base>
class Editable : public Base {
 public:
  Editable(BookPtr book, const Ref& ref, bool isNew, bool isList = false, ULONG createFlags = 0)
      : Base(std::move(book), ref), isNew_(isNew), isList_(isList), createFlags_(createFlags) {
    const std::lock_guard guard(this->book_->lock);
    const auto found = this->book_->records.find(ref.key);
    if (ref.kind == kOwnEntry && found != this->book_->records.end()) version_ = found->second.version;
    for (Property& each : this->properties_) {
      if (isList && each.tag == PR_OBJECT_TYPE) each.number = static_cast<LONG>(MAPI_DISTLIST);
    }
  }

  HRESULT STDMETHODCALLTYPE SetProps(ULONG count, LPSPropValue values,
                                     LPSPropProblemArray* problems) override {
    if (this->ref_.kind != kOwnEntry && !Has("writable")) return MAPI_E_NO_ACCESS;
    if (problems != nullptr) *problems = nullptr;
    return Guarded([&] {
      auto& own = this->properties_;
      for (const SPropValue& each : ValueView(values, count)) {
        const auto found = std::find_if(own.begin(), own.end(),
                                        [&](const Property& one) { return one.tag == each.ulPropTag; });
        if (found != own.end() && PROP_TYPE(each.ulPropTag) == PT_UNICODE) found->text = each.Value.lpszW;
      }
      return S_OK;
    });
  }
  HRESULT STDMETHODCALLTYPE SaveChanges(ULONG) override {
    if (this->ref_.kind != kOwnEntry) return Has("writable") ? S_OK : MAPI_E_NO_ACCESS;
    return Guarded([&] { return Save(); });
  }

 private:
  HRESULT Save() {
    Book& book = *this->book_;
    {
      const std::lock_guard guard(book.lock);
      const std::wstring name = NameOf(this->properties_);
      if (isNew_ && IsTwinLocked(name)) return MAPI_E_COLLISION;
      Record& record = book.records[this->ref_.key];
      const bool isChanged = !isNew_ && record.version != version_;
      if (isChanged && Has("conflict")) return S_OK;
      if (isChanged && !Has("lastwins")) return MAPI_E_OBJECT_CHANGED;
      record.name = name;
      record.isList = record.isList || isList_;
      if (!Has("lostnumber")) record.number = Find(this->properties_, PR_EMAIL_ADDRESS_W)->text;
      version_ = ++record.version;
      book.Store();
    }
    const ULONG event = std::exchange(isNew_, false) ? fnevObjectCreated : fnevObjectModified;
    book.Tell(event, this->properties_[0].bytes);
    return S_OK;
  }

  bool IsTwinLocked(const std::wstring& name) {
    auto& all = this->book_->records;
    const bool isTwin =
        (createFlags_ & CREATE_CHECK_DUP_STRICT) != 0 &&
        std::any_of(all.begin(), all.end(), [&](const auto& each) { return each.second.name == name; });
    if (isTwin && Has("twins")) all[this->ref_.key].name = name;
    return isTwin;
  }

  bool isNew_;
  const bool isList_;
  const ULONG createFlags_;
  ULONG version_ = 0;
};

using User = Editable<Item<IMailUser>>;

// What a list's CreateEntry makes of an entry: a member, once it is saved.
class Member final : public Item<IMailUser> {
 public:
  Member(BookPtr book, const Ref& ref, ULONG list) : Item(std::move(book), ref), list_(list) {}

  HRESULT STDMETHODCALLTYPE SaveChanges(ULONG) override {
    return Guarded([&] {
      const std::lock_guard guard(book_->lock);
      book_->records[list_].members.push_back(properties_[0].bytes);
      book_->Store();
      return S_OK;
    });
  }

 private:
  const ULONG list_;
};

class List final : public RefusingContainer<Editable<Item<IDistList, IMAPIContainer>>> {
 public:
  using RefusingContainer::RefusingContainer;

  HRESULT STDMETHODCALLTYPE GetContentsTable(ULONG, LPMAPITABLE* table) override {
    return Guarded([&] {
      *table = MakeTable(book_, ref_);
      return S_OK;
    });
  }
  HRESULT STDMETHODCALLTYPE CreateEntry(ULONG size, LPENTRYID id, ULONG, LPMAPIPROP* entry) override {
    Ref ref;
    if (!book_->ReadId(size, id, &ref)) return MAPI_E_NO_SUPPORT;
    return Guarded([&] {
      *entry = new Member(book_, ref, ref_.key);
      return S_OK;
    });
  }
  HRESULT STDMETHODCALLTYPE CopyEntries(LPENTRYLIST list, ULONG_PTR, LPMAPIPROGRESS, ULONG) override {
    return Change([&](std::vector<Bytes>& members) {
      for (ULONG i = 0; i < list->cValues; ++i)
        members.emplace_back(list->lpbin[i].lpb, list->lpbin[i].lpb + list->lpbin[i].cb);
    });
  }
  HRESULT STDMETHODCALLTYPE DeleteEntries(LPENTRYLIST list, ULONG) override {
    return Change([&](std::vector<Bytes>& members) {
      for (ULONG i = 0; i < list->cValues && !Has("liststays"); ++i)
        std::erase(members, Bytes(list->lpbin[i].lpb, list->lpbin[i].lpb + list->lpbin[i].cb));
    });
  }

 private:
  template <class Action>
  HRESULT Change(Action action) {
    return Guarded([&] {
      const std::lock_guard guard(book_->lock);
      action(book_->records[ref_.key].members);
      book_->Store();
      return S_OK;
    });
  }
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
  HRESULT STDMETHODCALLTYPE CreateEntry(ULONG size, LPENTRYID id, ULONG flags, LPMAPIPROP* entry) override {
    if (ref_.kind != kOwn) return MAPI_E_NO_ACCESS;
    return Guarded([&] {
      const Ref ref = NewRef();
      const auto* bytes = reinterpret_cast<const BYTE*>(id);
      const Bytes list = book_->MakeId({kListTemplate});
      if (id != nullptr && std::equal(bytes, bytes + size, list.begin(), list.end())) {
        *entry = new List(book_, ref, true, true, flags);
      } else {
        *entry = new User(book_, ref, true, false, flags);
      }
      const std::lock_guard guard(book_->lock);
      if (Has("eager")) book_->records[ref.key];
      return S_OK;
    });
  }
  HRESULT STDMETHODCALLTYPE CopyEntries(LPENTRYLIST list, ULONG_PTR, LPMAPIPROGRESS, ULONG) override {
    if (ref_.kind != kOwn) return MAPI_E_NO_ACCESS;
    return Guarded([&] {
      HRESULT worst = S_OK;
      for (ULONG i = 0; i < list->cValues; ++i) worst = std::min(worst, Copy(list->lpbin[i]));
      return worst;
    });
  }
  HRESULT STDMETHODCALLTYPE DeleteEntries(LPENTRYLIST list, ULONG) override {
    if (ref_.kind != kRoot) return MAPI_E_NO_ACCESS;
    return Guarded([&] {
      for (ULONG i = 0; i < list->cValues; ++i) Delete(list->lpbin[i]);
      return S_OK;
    });
  }
  HRESULT STDMETHODCALLTYPE ResolveNames(LPSPropTagArray tags, ULONG, LPADRLIST list,
                                         LPFlagList flags) override {
    return Guarded([&] {
      for (ULONG i = 0; i < list->cEntries; ++i) {
        if (flags->ulFlag[i] != MAPI_UNRESOLVED && !Has("resolves")) continue;
        flags->ulFlag[i] = Resolve(TagsOf(*tags), list->aEntries[i]);
      }
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
        *table = MakeTable(book_, ref_);
      }
      return S_OK;
    });
  }
  IMAPITable* SharedTable() {
    static IMAPITable* shared[kFixedEntry] = {};
    if (shared[ref_.kind] == nullptr) shared[ref_.kind] = MakeTable(book_, ref_);
    shared[ref_.kind]->AddRef();
    return shared[ref_.kind];
  }
  Ref NewRef() {
    const std::lock_guard guard(book_->lock);
    return {kOwnEntry, book_->nextKey++};
  }
  // Through the session, which knows every provider's.
  HRESULT Copy(const SBinary& id) {
    auto session = ComPtr<IUnknown>::Share(book_->kept).As<IOrvSupport2>(IID_IOrvSupport2);
    ComPtr<IMAPIProp> source;
    ULONG type = 0, count = 0;
    const HRESULT opened = session->OpenEntry(id.cb, reinterpret_cast<LPENTRYID>(id.lpb), &IID_IMAPIProp, 0,
                                              &type, source.PutUnknown());
    if (FAILED(opened)) return static_cast<void>(source.Detach()), opened;
    auto values = book_->allocator.Own<SPropValue>();
    TagArray tags{PR_DISPLAY_NAME_W, PR_EMAIL_ADDRESS_W};
    source->GetProps(tags.Get(), MAPI_UNICODE, &count, values.Put());
    const auto text = [&](ULONG tag) {
      const LPCWSTR found = ValueView(values.Get(), count).Text(tag);
      return std::wstring(found != nullptr ? found : L"");
    };
    const Ref ref = NewRef();
    const std::lock_guard guard(book_->lock);
    if (!Has("copynone")) book_->records[ref.key] = {text(PR_DISPLAY_NAME_W), text(PR_EMAIL_ADDRESS_W)};
    book_->Store();
    return S_OK;
  }
  ULONG Resolve(const std::vector<ULONG>& tags, ADRENTRY& recipient) {
    const LPCWSTR name = ValueView(recipient).Text(PR_DISPLAY_NAME_W);
    for (const Ref& each : book_->RowsOf(ref_)) {
      const Properties properties = book_->PropertiesOf(each);
      if (name == nullptr || NameOf(properties) != name) continue;
      Merge(*book_, properties, tags, recipient);
      return MAPI_RESOLVED;
    }
    return MAPI_UNRESOLVED;
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
  void Prepare(const std::vector<ULONG>& tags, ADRENTRY& entry) {
    if (Has("recipall") && entry.cValues != 0) entry.rgPropVals[0].Value.l = MAPI_TO;
    const SBinary id = ValueView(entry).Binary(PR_ENTRYID);
    Ref ref;
    const bool isOurs = book_->ReadId(id.cb, reinterpret_cast<ENTRYID*>(id.lpb), &ref) && book_->IsThere(ref);
    if (isOurs) Merge(*book_, book_->PropertiesOf(ref), tags, entry);
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
  *type = ref.kind < kFixedEntry ? MAPI_ABCONT : book->IsList(ref) ? MAPI_DISTLIST : MAPI_MAILUSER;
  if (*type == MAPI_ABCONT) {
    *object = new Folder(book, ref);
  } else if (*type == MAPI_DISTLIST) {
    *object = new List(book, ref, false);
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
