#include "sample_entry.h"

#include "sample_table.h"

namespace sample {
namespace {

using MailUser = Entry<IMailUser>;

// IABContainer and IDistList have the same methods, so one template serves both. The root has no contents.
template <class Interface>
class Container final : public orv::sdk::RefusingContainer<Entry<Interface, IMAPIContainer>> {
 public:
  // The contents are gone through when a table of them is asked for, not when the container is opened.
  using MakeContents = std::function<Rows()>;

  Container(const BookPtr& book, Properties properties, MakeContents contents, Rows hierarchy)
      : orv::sdk::RefusingContainer<Entry<Interface, IMAPIContainer>>(book, std::move(properties)),
        contents_(std::move(contents)),
        hierarchy_(std::move(hierarchy)) {}

  HRESULT STDMETHODCALLTYPE GetContentsTable(ULONG flags, LPMAPITABLE* table) override {
    if (!contents_) return MAPI_E_NO_SUPPORT;
    return HandOut(contents_, flags, table, {PR_ADDRTYPE, PR_EMAIL_ADDRESS});
  }
  HRESULT STDMETHODCALLTYPE GetHierarchyTable(ULONG flags, LPMAPITABLE* table) override {
    return HandOut([this] { return hierarchy_; }, flags, table, {PR_CONTAINER_FLAGS, PR_DEPTH});
  }
  HRESULT STDMETHODCALLTYPE OpenEntry(ULONG size, LPENTRYID id, LPCIID iid, ULONG flags, ULONG* type,
                                      LPUNKNOWN* object) override {
    return OpenBookEntry(this->book_, size, id, iid, flags, type, object);
  }
  HRESULT STDMETHODCALLTYPE OpenProperty(ULONG tag, LPCIID iid, ULONG, ULONG flags,
                                         LPUNKNOWN* object) override {
    if (iid == nullptr || !IsEqualGUID(*iid, IID_IMAPITable)) return MAPI_E_INTERFACE_NOT_SUPPORTED;
    auto* table = reinterpret_cast<LPMAPITABLE*>(object);
    if (tag == PR_CONTAINER_CONTENTS) return GetContentsTable(flags | MAPI_UNICODE, table);
    if (tag == PR_CONTAINER_HIERARCHY) return GetHierarchyTable(flags | MAPI_UNICODE, table);
    return MAPI_E_NO_SUPPORT;
  }

 private:
  HRESULT HandOut(const MakeContents& rows, ULONG flags, LPMAPITABLE* table,
                  std::initializer_list<ULONG> more) const {
    if (table == nullptr) return MAPI_E_INVALID_PARAMETER;
    if ((flags & MAPI_UNICODE) == 0) return MAPI_E_BAD_CHARWIDTH;
    return Guarded([&] {
      Tags columns{PR_DISPLAY_NAME, PR_ENTRYID, PR_OBJECT_TYPE, PR_DISPLAY_TYPE, PR_INSTANCE_KEY};
      columns.insert(columns.end(), more);
      *table = MakeTable(this->book_, rows(), std::move(columns));
      return S_OK;
    });
  }

  const MakeContents contents_;
  const Rows hierarchy_;
};
using AddressContainer = Container<IABContainer>;
using DistList = Container<IDistList>;

Rows ContainerRows(const BookPtr& book) {
  return {1, [book](size_t, const Tags&) { return book->ContactsProperties(); }};
}

Rows RecordRows(const BookPtr& book) {
  return {book->size(),
          [book](size_t row, const Tags& columns) { return book->RecordProperties(row, columns); }};
}

Rows MemberRows(const BookPtr& book, size_t group) {
  const auto members = std::make_shared<const std::vector<Member>>(book->MembersOf(group));
  return {members->size(), [=](size_t row, const Tags& columns) {
            return book->MemberProperties(group, (*members)[row], columns);
          }};
}

Owned<IUnknown> Make(const BookPtr& book, const EntryRef& ref, Properties properties) {
  if (ref.kind == EntryKind::kRoot) {
    return Owned<IUnknown>(new AddressContainer(book, std::move(properties), nullptr, ContainerRows(book)));
  }
  if (ref.kind == EntryKind::kContacts) {
    const auto contents = [book] { return RecordRows(book); };
    return Owned<IUnknown>(new AddressContainer(book, std::move(properties), contents, Rows{}));
  }
  const std::optional<size_t> group = book->FindRecord(ref);
  if (!group || !book->IsGroup(*group)) return Owned<IUnknown>(new MailUser(book, std::move(properties)));
  const auto contents = [=] { return MemberRows(book, *group); };
  return Owned<IUnknown>(new DistList(book, std::move(properties), contents, Rows{}));
}

}  // namespace

HRESULT OpenBookEntry(const BookPtr& book, ULONG size, const ENTRYID* id, LPCIID iid, ULONG flags,
                      ULONG* type, LPUNKNOWN* object) {
  if (type == nullptr || object == nullptr) return MAPI_E_INVALID_PARAMETER;
  *object = nullptr;
  if ((flags & MAPI_MODIFY) != 0) return MAPI_E_NO_ACCESS;
  return Guarded([&]() -> HRESULT {
    const bool isRoot = size == 0 && id == nullptr;
    const std::optional<EntryRef> ref = isRoot ? EntryRef{} : book->ReadEntryId(size, id);
    if (!ref) return MAPI_E_INVALID_ENTRYID;
    std::optional<Properties> properties = book->EntryProperties(*ref);
    if (!properties) return MAPI_E_NOT_FOUND;
    const auto objectType = std::get<LONGLONG>(FindProperty(*properties, PR_OBJECT_TYPE)->value);
    const Owned<IUnknown> entry = Make(book, *ref, std::move(*properties));
    void* found = nullptr;
    if (const HRESULT hr = entry->QueryInterface(iid != nullptr ? *iid : IID_IUnknown, &found); FAILED(hr)) {
      return hr;
    }
    *object = static_cast<LPUNKNOWN>(found);
    *type = static_cast<ULONG>(objectType);
    return S_OK;
  });
}

}  // namespace sample
