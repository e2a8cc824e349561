// The object that clients hold: arguments are checked here, and nothing that is thrown passes.
#include "orv/kit/table.hpp"

#include <algorithm>
#include <mutex>

#include "table_core.hpp"

namespace orv::kit {
namespace {

class Table final : public sdk::RefusingTable {
 public:
  explicit Table(std::shared_ptr<TableCore> core) : core_(std::move(core)) {}

  HRESULT STDMETHODCALLTYPE Advise(ULONG mask, LPMAPIADVISESINK sink, ULONG* connection) override {
    return core_->Advised().Advise({0, nullptr}, mask, sink, connection);
  }
  HRESULT STDMETHODCALLTYPE Unadvise(ULONG connection) override {
    return core_->Advised().Unadvise(connection);
  }

  HRESULT STDMETHODCALLTYPE GetStatus(ULONG* status, ULONG* type) override {
    if (status == nullptr || type == nullptr) return MAPI_E_INVALID_PARAMETER;
    *status = TBLSTAT_COMPLETE;
    *type = core_->FollowsChanges() ? TBLTYPE_DYNAMIC : TBLTYPE_SNAPSHOT;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE SetColumns(LPSPropTagArray tags, ULONG) override {
    if (tags == nullptr) return MAPI_E_INVALID_PARAMETER;
    return sdk::Guarded([&] { return core_->SetColumns(*tags); });
  }
  HRESULT STDMETHODCALLTYPE QueryColumns(ULONG flags, LPSPropTagArray* tags) override {
    if (tags == nullptr) return MAPI_E_INVALID_PARAMETER;
    return sdk::Guarded([&] { return core_->QueryColumns((flags & TBL_ALL_COLUMNS) != 0, tags); });
  }
  HRESULT STDMETHODCALLTYPE GetRowCount(ULONG, ULONG* count) override {
    if (count == nullptr) return MAPI_E_INVALID_PARAMETER;
    return sdk::Guarded([&] { return core_->GetRowCount(count); });
  }
  HRESULT STDMETHODCALLTYPE SeekRow(BOOKMARK origin, LONG wanted, LONG* moved) override {
    return sdk::Guarded([&] { return core_->SeekRow(origin, wanted, moved); });
  }
  HRESULT STDMETHODCALLTYPE SeekRowApprox(ULONG numerator, ULONG denominator) override {
    return sdk::Guarded([&] { return core_->SeekRowApprox(numerator, denominator); });
  }
  HRESULT STDMETHODCALLTYPE QueryPosition(ULONG* row, ULONG* numerator, ULONG* denominator) override {
    if (row == nullptr || numerator == nullptr || denominator == nullptr) return MAPI_E_INVALID_PARAMETER;
    return sdk::Guarded([&] { return core_->QueryPosition(row, numerator, denominator); });
  }
  HRESULT STDMETHODCALLTYPE FindRow(LPSRestriction wanted, BOOKMARK origin, ULONG flags) override {
    if (wanted == nullptr) return MAPI_E_INVALID_PARAMETER;
    Restriction restriction;
    if (const HRESULT hr = Restriction::Copy(wanted, &restriction); FAILED(hr)) return hr;
    const bool backward = (flags & DIR_BACKWARD) != 0;
    return sdk::Guarded([&] { return core_->FindRow(restriction, origin, backward); });
  }
  HRESULT STDMETHODCALLTYPE Restrict(LPSRestriction wanted, ULONG) override {
    Restriction restriction;
    if (const HRESULT hr = Restriction::Copy(wanted, &restriction); FAILED(hr)) return hr;
    return sdk::Guarded([&] { return core_->Restrict(std::move(restriction)); });
  }
  HRESULT STDMETHODCALLTYPE CreateBookmark(BOOKMARK* bookmark) override {
    if (bookmark == nullptr) return MAPI_E_INVALID_PARAMETER;
    return sdk::Guarded([&] { return core_->CreateBookmark(bookmark); });
  }
  HRESULT STDMETHODCALLTYPE FreeBookmark(BOOKMARK bookmark) override {
    return sdk::Guarded([&] { return core_->FreeBookmark(bookmark); });
  }
  HRESULT STDMETHODCALLTYPE SortTable(LPSSortOrderSet order, ULONG) override {
    if (const HRESULT hr = CheckOrder(order); FAILED(hr)) return hr;
    return sdk::Guarded([&] { return core_->SortTable({order->aSort, order->aSort + order->cSorts}); });
  }
  HRESULT STDMETHODCALLTYPE QuerySortOrder(LPSSortOrderSet* order) override {
    if (order == nullptr) return MAPI_E_INVALID_PARAMETER;
    return sdk::Guarded([&] { return core_->QuerySortOrder(order); });
  }
  HRESULT STDMETHODCALLTYPE QueryRows(LONG wanted, ULONG flags, LPSRowSet* rows) override {
    if (rows == nullptr) return MAPI_E_INVALID_PARAMETER;
    return sdk::Guarded([&] { return core_->QueryRows(wanted, (flags & TBL_NOADVANCE) == 0, rows); });
  }
  // Everything is done when its call returns.
  HRESULT STDMETHODCALLTYPE WaitForCompletion(ULONG, ULONG, ULONG* status) override {
    if (status != nullptr) *status = TBLSTAT_COMPLETE;
    return S_OK;
  }

 private:
  // A change that is being told keeps the core a moment longer; its sinks hear no more of it.
  ~Table() override { core_->Advised().Clear(); }

  static HRESULT CheckKey(const SSortOrder& key) noexcept {
    if ((key.ulPropTag & MV_INSTANCE) != 0) return MAPI_E_TOO_COMPLEX;
    if (key.ulOrder == TABLE_SORT_COMBINE) return MAPI_E_TOO_COMPLEX;
    return key.ulOrder <= TABLE_SORT_DESCEND ? S_OK : MAPI_E_INVALID_PARAMETER;
  }
  static HRESULT CheckOrder(const SSortOrderSet* order) noexcept {
    if (order == nullptr) return MAPI_E_INVALID_PARAMETER;
    if (order->cCategories != 0 || order->cExpanded != 0) return MAPI_E_TOO_COMPLEX;
    if (order->cSorts > kMostKeys) return MAPI_E_TOO_COMPLEX;
    for (ULONG i = 0; i < order->cSorts; ++i) {
      if (const HRESULT hr = CheckKey(order->aSort[i]); FAILED(hr)) return hr;
    }
    return S_OK;
  }

  const std::shared_ptr<TableCore> core_;
};

}  // namespace

// Places of tables that have gone are used again: nobody else tidies up, and Changed counts on places that stay.
void TableSet::Add(const std::shared_ptr<TableCore>& table) {
  const std::lock_guard guard(lock_);
  const auto gone =
      std::find_if(tables_.begin(), tables_.end(), [](const auto& each) { return each.expired(); });
  if (gone != tables_.end()) {
    *gone = table;
  } else {
    tables_.push_back(table);
  }
}

std::shared_ptr<TableCore> TableSet::At(size_t index) noexcept {
  const std::lock_guard guard(lock_);
  return tables_[index].lock();
}

void TableSet::Changed(const std::vector<RowChange>& changes) noexcept {
  const auto size = [this] {
    const std::lock_guard guard(lock_);
    return tables_.size();
  };
  for (size_t i = 0; i < size(); ++i) {
    if (const auto table = At(i)) table->Changed(changes);
  }
}

sdk::ComPtr<IMAPITable> MakeTable(const sdk::Allocator& allocator, std::shared_ptr<RowSource> source,
                                  TableSet* set, std::shared_ptr<Worker> worker) {
  auto core = std::make_shared<TableCore>(allocator, std::move(source), set != nullptr, std::move(worker));
  auto table = sdk::ComPtr<IMAPITable>::Adopt(new Table(core));
  if (set == nullptr) return table;
  set->Add(core);
  core->Changed({});  // what changed since the source was made was told to nobody
  return table;
}

}  // namespace orv::kit
