// How a table follows the changes of its rows, and what it tells of them.
#include <algorithm>
#include <mutex>

#include "table_core.hpp"

namespace orv::kit {
namespace {

// Each costs a pass over the numbers of the rows; from here on reading everything anew is as good for everybody.
constexpr size_t kMostFollowed = 64;

std::vector<size_t> RowsOf(const std::vector<RowChange>& changes, RowChange::Kind kind) {
  std::vector<size_t> rows;
  for (const RowChange& each : changes) {
    if (each.kind == kind) rows.push_back(each.row);
  }
  std::sort(rows.begin(), rows.end());
  rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
  return rows;
}

SPropValue IndexOf(std::vector<BYTE>& bytes) noexcept {
  SPropValue value{};
  value.ulPropTag = bytes.empty() ? PR_NULL : PR_INSTANCE_KEY;
  if (!bytes.empty()) value.Value.bin = {static_cast<ULONG>(bytes.size()), bytes.data()};
  return value;
}

}  // namespace

// Queues what it is told; nothing is told when nobody listens.
class TableCore::Changes {
 public:
  explicit Changes(TableCore& table) : table_(table), isWanted_(table.advised_.IsWanted(fnevTableModified)) {}

  // The source's newest data, once; how many changes it is ahead of what was shown.
  ULONG Refresh() {
    if (!steps_) steps_ = table_.source_->Refresh();
    return *steps_;
  }

  // Empty for a row without a key; `row` is the source's number.
  HRESULT ReadKey(size_t row, std::vector<BYTE>* key) {
    if (!isWanted_) return S_OK;
    static constexpr ULONG kKeys[] = {PR_INSTANCE_KEY, PR_ENTRYID};
    sdk::ValueView values(nullptr, 0);
    if (const HRESULT hr = table_.source_->RowAt(row, kKeys, &values); FAILED(hr)) return hr;
    SBinary bytes = values.Binary(PR_INSTANCE_KEY);
    if (bytes.cb == 0) bytes = values.Binary(PR_ENTRYID);
    key->assign(bytes.lpb, bytes.lpb + bytes.cb);
    return S_OK;
  }

  void Deleted(std::vector<BYTE> key) { Tell(TABLE_ROW_DELETED, std::move(key), {}, {nullptr, 0}); }

  HRESULT Shown(ULONG kind, size_t position) {
    if (!isWanted_) return S_OK;
    std::vector<BYTE> key, prior;
    if (const HRESULT hr = ReadKey(table_.rows_.RowAt(position), &key); FAILED(hr)) return hr;
    if (position != 0) {
      if (const HRESULT hr = ReadKey(table_.rows_.RowAt(position - 1), &prior); FAILED(hr)) return hr;
    }
    sdk::ValueView values(nullptr, 0);
    const size_t row = table_.rows_.RowAt(position);
    if (const HRESULT hr = table_.source_->RowAt(row, table_.columns_, &values); FAILED(hr)) return hr;
    const auto& columns = table_.columns_;
    const auto copy = CopyRow(table_.allocator_, values, columns.data(), columns.size());
    Tell(kind, std::move(key), std::move(prior), {copy.Get(), static_cast<ULONG>(columns.size())});
    return S_OK;
  }

  void All(HRESULT result = S_OK) noexcept {
    NOTIFICATION event = Event(TABLE_CHANGED);
    event.info.tab.hResult = result;
    table_.advised_.Queue(&event, 1);
  }

 private:
  static NOTIFICATION Event(ULONG kind) noexcept {
    NOTIFICATION event{};
    event.ulEventType = fnevTableModified;
    event.info.tab.ulTableEvent = kind;
    event.info.tab.propIndex.ulPropTag = event.info.tab.propPrior.ulPropTag = PR_NULL;
    return event;
  }

  // Without a key a client could not tell which row is meant.
  void Tell(ULONG kind, std::vector<BYTE> key, std::vector<BYTE> prior, sdk::ValueView row) {
    if (!isWanted_) return;
    if (key.empty()) return All();
    NOTIFICATION event = Event(kind);
    event.info.tab.propIndex = IndexOf(key);
    event.info.tab.propPrior = IndexOf(prior);
    event.info.tab.row.lpProps = const_cast<SPropValue*>(row.begin());
    event.info.tab.row.cValues = static_cast<ULONG>(row.end() - row.begin());
    table_.advised_.Queue(&event, 1);
  }

  TableCore& table_;
  const bool isWanted_;
  std::optional<ULONG> steps_;
};

void TableCore::Changed(const std::vector<RowChange>& changes) noexcept {
  {
    const std::lock_guard guard(lock_);
    Changes told(*this);
    const HRESULT hr =
        sdk::Guarded([&] { return changes.empty() ? FollowLocked(told) : ApplyLocked(changes, told); });
    if (FAILED(hr)) {
      (void)sdk::Guarded([&]() -> HRESULT {
        ReloadLocked(told);
        return S_OK;
      });
    }
  }
  if (!hasWorker_) advised_.Deliver();
}

// Fails where the changes cannot be followed one by one; everything is then looked at anew.
HRESULT TableCore::ApplyLocked(const std::vector<RowChange>& changes, Changes& told) {
  const bool isKnown = !changes.empty() && changes.size() <= kMostFollowed && !rows_.IsArrangedBySource();
  if (!isKnown) return MAPI_E_UNABLE_TO_COMPLETE;
  const std::vector<size_t> deleted = RowsOf(changes, RowChange::kDeleted);
  const std::vector<size_t> added = RowsOf(changes, RowChange::kAdded);
  std::vector<std::vector<BYTE>> keys(deleted.size());
  for (size_t i = 0; i < deleted.size(); ++i) {
    if (deleted[i] >= source_->Count()) return MAPI_E_INVALID_PARAMETER;
    if (const HRESULT hr = told.ReadKey(deleted[i], &keys[i]); FAILED(hr)) return hr;
  }
  const size_t expected = source_->Count() - deleted.size() + added.size();
  const ULONG steps = told.Refresh();
  if (steps != 1) return steps == 0 ? S_OK : MAPI_E_UNABLE_TO_COMPLETE;
  if (source_->Count() != expected) return MAPI_E_INVALID_PARAMETER;
  for (size_t i = deleted.size(); i-- > 0;) DeleteLocked(deleted[i], std::move(keys[i]), told);
  for (const size_t row : added) rows_.Renumber(row);
  for (const size_t row : added) {
    if (const HRESULT hr = AddLocked(row, told); FAILED(hr)) return hr;
  }
  for (const size_t row : RowsOf(changes, RowChange::kModified)) {
    if (const HRESULT hr = ModifyLocked(row, told); FAILED(hr)) return hr;
  }
  return S_OK;
}

// By what the source itself knows of its rows.
HRESULT TableCore::FollowLocked(Changes& told) {
  if (!rows_.IsAll()) return MAPI_E_UNABLE_TO_COMPLETE;
  const size_t count = rows_.Count();
  std::optional<std::vector<FollowedRow>> followed = source_->Follow();
  if (!followed) return MAPI_E_UNABLE_TO_COMPLETE;
  rows_.Clamp(source_->Count());
  marks_.Followed(*followed, count);
  for (FollowedRow& each : *followed) {
    if (each.after == FollowedRow::kNowhere) told.Deleted(std::move(each.key));
  }
  for (const ULONG kind : {TABLE_ROW_ADDED, TABLE_ROW_MODIFIED}) {
    for (const FollowedRow& each : *followed) {
      const bool isOfKind = (each.before == FollowedRow::kNowhere) == (kind == TABLE_ROW_ADDED);
      if (!isOfKind || each.after == FollowedRow::kNowhere) continue;
      if (FAILED(told.Shown(kind, each.after))) told.All();
    }
  }
  return S_OK;
}

void TableCore::DeleteLocked(size_t row, std::vector<BYTE> key, Changes& told) {
  const std::optional<size_t> position = rows_.Remove(row);
  if (!position) return;
  marks_.Removed(*position);
  told.Deleted(std::move(key));
}

HRESULT TableCore::AddLocked(size_t row, Changes& told) {
  bool belongs = false;
  if (const HRESULT hr = BelongsLocked(row, &belongs); FAILED(hr)) return hr;
  return belongs ? ShowLocked(row, told) : S_OK;
}

HRESULT TableCore::ShowLocked(size_t row, Changes& told) {
  const size_t count = rows_.Count();
  size_t position = 0;
  if (const HRESULT hr = rows_.Insert(*source_, order_, row, &position); FAILED(hr)) return hr;
  marks_.Inserted(position, count);
  return told.Shown(TABLE_ROW_ADDED, position);
}

// A row may come into view or go out of it by what changed in it, or move to another place.
HRESULT TableCore::ModifyLocked(size_t row, Changes& told) {
  bool belongs = false;
  if (const HRESULT hr = BelongsLocked(row, &belongs); FAILED(hr)) return hr;
  const std::optional<size_t> position = rows_.Find(row);
  if (!position) return belongs ? ShowLocked(row, told) : S_OK;
  if (rows_.IsAll()) return told.Shown(TABLE_ROW_MODIFIED, *position);
  rows_.TakeOut(*position);
  if (!belongs) {
    std::vector<BYTE> key;
    if (const HRESULT hr = told.ReadKey(row, &key); FAILED(hr)) return hr;
    marks_.Removed(*position);
    told.Deleted(std::move(key));
    return S_OK;
  }
  size_t to = 0;
  if (const HRESULT hr = rows_.Insert(*source_, order_, row, &to); FAILED(hr)) return hr;
  marks_.Moved(*position, to);
  return told.Shown(TABLE_ROW_MODIFIED, to);
}

HRESULT TableCore::BelongsLocked(size_t row, bool* belongs) {
  if (row >= source_->Count()) return MAPI_E_INVALID_PARAMETER;
  sdk::ValueView values(nullptr, 0);
  const HRESULT hr = source_->RowAt(row, restriction_.Tags(), &values);
  if (SUCCEEDED(hr)) *belongs = restriction_.Holds(values);
  return hr;
}

void TableCore::ReloadLocked(Changes& told) {
  if (told.Refresh() == 0) return;
  const HRESULT hr = sdk::Guarded([&] { return rows_.Build(*source_, restriction_, order_); });
  if (FAILED(hr)) rows_.Clamp(source_->Count());
  marks_.AllChanged(rows_.Count());
  told.All(hr);
}

}  // namespace orv::kit
