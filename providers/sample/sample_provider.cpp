// The provider object and the function that opens it: where the library enters at logon. And where it is left.
#include "orv/kit/unload.hpp"
#include "sample_entry.h"
#include "sample_settings.h"

namespace sample {
namespace {

// The library asks it for its row in the root container and routes to it whatever bears its MAPIUID.
class Provider final : public orv::sdk::RefusingAddrBook<Entry<IAddrBook>> {
 public:
  using RefusingAddrBook::RefusingAddrBook;

  HRESULT STDMETHODCALLTYPE OpenEntry(ULONG size, LPENTRYID id, LPCIID iid, ULONG flags, ULONG* type,
                                      LPUNKNOWN* object) override {
    return OpenBookEntry(book_, size, id, iid, flags, type, object);
  }

  HRESULT STDMETHODCALLTYPE CompareEntryIDs(ULONG size1, LPENTRYID id1, ULONG size2, LPENTRYID id2, ULONG,
                                            ULONG* result) override {
    if (result == nullptr) return MAPI_E_INVALID_PARAMETER;
    const auto ref1 = book_->ReadEntryId(size1, id1), ref2 = book_->ReadEntryId(size2, id2);
    if (!ref1 || !ref2) return MAPI_E_UNKNOWN_ENTRYID;
    *result = *ref1 == *ref2;
    return S_OK;
  }

  // Comes with every list, an empty one too. Recipients that are not ours stay as they are.
  HRESULT STDMETHODCALLTYPE PrepareRecips(ULONG, LPSPropTagArray tags, LPADRLIST list) override {
    if (list == nullptr) return MAPI_E_INVALID_PARAMETER;
    if (tags == nullptr) return S_OK;
    return Guarded([&] {
      for (ULONG i = 0; i < list->cEntries; ++i) Prepare(TagsOf(*tags), list->aEntries[i]);
      return S_OK;
    });
  }

 private:
  // Requested properties first, in their order, from the entry or else from the recipient; then what else the
  // recipient has. The new array takes the place of the old one, which was a root of its own.
  void Prepare(const Tags& tags, ADRENTRY& recipient) const {
    std::optional<Properties> given = ReadRecipient(recipient);
    const Property* id = given ? FindProperty(*given, PR_ENTRYID) : nullptr;
    const Bytes* bytes = id != nullptr ? std::get_if<Bytes>(&id->value) : nullptr;
    if (bytes == nullptr) return;
    const auto ref = book_->ReadEntryId(static_cast<ULONG>(bytes->size()),
                                        reinterpret_cast<const ENTRYID*>(bytes->data()));
    std::optional<Properties> values = ref ? book_->EntryProperties(*ref) : std::nullopt;
    if (!values) return;
    Tags wanted = tags;
    for (Property& each : *given) {
      const ULONG tag = each.tag;
      if (FindProperty(*values, tag) == nullptr) values->push_back(std::move(each));
      const auto same = [tag](ULONG other) { return PROP_ID(other) == PROP_ID(tag); };
      if (std::none_of(wanted.begin(), wanted.end(), same)) wanted.push_back(tag);
    }
    Allocator::Root copy = CopyValues(book_->allocator(), *values, wanted);
    book_->allocator().Free(recipient.rgPropVals);
    recipient.cValues = static_cast<ULONG>(wanted.size());
    recipient.rgPropVals = static_cast<LPSPropValue>(copy.release());
  }
};

}  // namespace
}  // namespace sample

// Called once at logon. What it hands out keeps the book, and the book keeps the support object.
extern "C" HRESULT STDAPICALLTYPE ABProviderOpen(HINSTANCE, LPORVSUPPORT support, LPPROFSECT section,
                                                 ULONG_PTR, ULONG, LPALLOCATEBUFFER root, LPALLOCATEMORE more,
                                                 LPFREEBUFFER free, LPADRBOOK* provider, ULONG_PTR) {
  if (support == nullptr || section == nullptr || provider == nullptr) return MAPI_E_INVALID_PARAMETER;
  if (root == nullptr || more == nullptr || free == nullptr) return MAPI_E_INVALID_PARAMETER;
  using namespace sample;
  return Guarded([&]() -> HRESULT {
    const Allocator allocator(root, more, free);
    Settings settings;
    if (const HRESULT hr = ReadSettings(section, allocator, &settings); FAILED(hr)) return hr;
    // From now on entry identifiers with this MAPIUID come to us.
    if (const HRESULT hr = support->SetProviderUID(&settings.uid); FAILED(hr)) return hr;
    support->AddRef();  // it outlives this call
    Owned<IOrvSupport> kept(support);
    const auto book = std::make_shared<Book>(allocator, std::move(kept), settings.uid, settings.name);
    if (!settings.file.empty()) book->ReadFile(settings.file);
    *provider = new Provider(book, book->RootProperties());
    return S_OK;
  });
}

// Logons come and go while the process stays: what the run-time took for this one is given back.
extern "C" BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, LPVOID processEnds) {
  if (reason == DLL_PROCESS_DETACH && processEnds == nullptr) orv::sdk::GiveBackRunTime(library);
  return TRUE;
}
