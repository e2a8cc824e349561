#include "providers/book/provider/whole_book.h"

#include "orv/kit/boundary.hpp"
#include "orv/kit/table.hpp"
#include "providers/book/provider/book_health.h"
#include "providers/book/provider/book_transfer.h"
#include "providers/book/provider/entry_kinds.h"
#include "providers/book/provider/row_values.h"
#include "providers/book/text.h"

template <>
inline constexpr GUID orv::sdk::kIidOf<IOrvContacts> = IID_IOrvContacts;

namespace book {
namespace {

namespace sdk = orv::sdk;

class WholeBook final : public sdk::Object<IOrvContacts> {
 public:
  WholeBook(std::shared_ptr<kit::Book> book, std::shared_ptr<BookFile> file, bool canChange)
      : book_(std::move(book)), file_(std::move(file)), canChange_(canChange) {}

  HRESULT STDMETHODCALLTYPE Import(IStream* source, const OrvImportOptions* options,
                                   IOrvContactReport* report, OrvContactCounts* counts) override {
    if (source == nullptr) return MAPI_E_INVALID_PARAMETER;
    if (!canChange_) return MAPI_E_NO_ACCESS;
    return WithStore([&](Store& store) {
      static_cast<void>(store.Tend());
      return ImportInto(store, *source, options, report, counts);
    });
  }

  HRESULT STDMETHODCALLTYPE Export(IStream* target, const OrvExportOptions* options,
                                   IOrvContactReport* report, OrvContactCounts* counts) override {
    if (target == nullptr) return MAPI_E_INVALID_PARAMETER;
    return WithStore([&](Store& store) { return ExportFrom(store, *target, options, report, counts); });
  }

  HRESULT STDMETHODCALLTYPE GetDeletedTable(ULONG flags, LPMAPITABLE* table) override {
    if (table == nullptr) return MAPI_E_INVALID_PARAMETER;
    if ((flags & MAPI_UNICODE) == 0) return MAPI_E_BAD_CHARWIDTH;
    return WithStore([&](Store& store) { return OpenDeleted(store, table); });
  }

  HRESULT STDMETHODCALLTYPE RestoreEntries(LPENTRYLIST entries, ULONG) override {
    if (entries == nullptr || (entries->cValues != 0 && entries->lpbin == nullptr))
      return MAPI_E_INVALID_PARAMETER;
    if (!canChange_) return MAPI_E_NO_ACCESS;
    return WithStore([&](Store& store) { return Restore(store, *entries); });
  }

  HRESULT STDMETHODCALLTYPE GetHealth(ULONG deep, OrvBookHealth* health) override {
    if (health == nullptr || health->cbSize != sizeof *health) return MAPI_E_INVALID_PARAMETER;
    return sdk::Guarded(
        [&] { return deep != 0 ? CheckWhole(file_->Path(), health, nullptr) : TellFigures(*file_, health); });
  }

 private:
  ~WholeBook() override = default;

  template <class Action>
  HRESULT WithStore(const Action& action) {
    return sdk::Guarded([&]() -> HRESULT {
      std::shared_ptr<Store> store;
      const HRESULT hr = file_->Open(&store);
      return FAILED(hr) ? hr : action(*store);
    });
  }

  HRESULT OpenDeleted(Store& store, LPMAPITABLE* table) {
    std::vector<DeletedEntry> entries;
    if (const HRESULT hr = store.Deleted(&entries); FAILED(hr)) return hr;
    std::vector<kit::PropList> rows(entries.size());
    for (size_t i = 0; i < rows.size(); ++i) {
      DescribeDeleted(entries[i], rows[i]);
      book_->Ids().Identify(RefOfEntry(entries[i].key), rows[i]);
    }
    *table = kit::MakeTable(book_->GetHost().buffers, std::move(rows),
                            {PR_ENTRYID, PR_DISPLAY_NAME, PR_OBJECT_TYPE, PR_ORV_DELETED_TIME})
                 .Detach();
    return S_OK;
  }

  HRESULT RestoreOne(Store& store, const SBinary& id) {
    kit::EntryRef entry;
    if (const HRESULT hr = book_->Ids().Read(id.cb, id.lpb, &entry); FAILED(hr)) return hr;
    const std::optional<RowKey> key = RowKeyOf(entry);
    Entry there;
    if (!key || SUCCEEDED(store.Read(key->entry, &there))) return MAPI_E_NOT_FOUND;
    return store.Restore(key->entry);
  }

  HRESULT Restore(Store& store, const ENTRYLIST& entries) {
    ULONG done = 0;
    HRESULT failure = S_OK;
    for (ULONG i = 0; i < entries.cValues; ++i) {
      const HRESULT hr = RestoreOne(store, entries.lpbin[i]);
      if (SUCCEEDED(hr)) ++done;
      if (FAILED(hr)) failure = hr;
    }
    return SUCCEEDED(failure) || done == 0 ? failure : MAPI_W_PARTIAL_COMPLETION;
  }

  const std::shared_ptr<kit::Book> book_;
  const std::shared_ptr<BookFile> file_;
  const bool canChange_;
};

}  // namespace

sdk::ComPtr<IUnknown> MakeWholeBook(std::shared_ptr<kit::Book> book, std::shared_ptr<BookFile> file,
                                    bool canChange) {
  return sdk::ComPtr<IUnknown>::Adopt(new WholeBook(std::move(book), std::move(file), canChange));
}

}  // namespace book
