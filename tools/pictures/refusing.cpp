// A provider whose containers cannot be read, each for another reason, and one whose entries mostly stay as they are. It
// stands in for directories out of reach; files in each state are books of their own.
#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

#include "orv/kit/provider.hpp"

namespace {

namespace kit = orv::kit;

enum Kind : ULONG { kRoot, kDistricts, kUnreadable, kWarehouses, kWarehouse };

// What is read of a container before it fails, more than one block of rows; and what fails.
constexpr ULONGLONG kReadOfResellers = 256;
constexpr struct {
  const wchar_t* name;
  HRESULT code;
  ULONGLONG readable;
} kContainers[] = {
    {L"Overseas", MAPI_E_NETWORK_ERROR, 0},   {L"Depots", MAPI_E_DISK_ERROR, 0},
    {L"Personnel", MAPI_E_NO_ACCESS, 0},      {L"Carriers", MAPI_E_UNCONFIGURED, 0},
    {L"Agencies", MAPI_E_UNABLE_TO_ABORT, 0}, {L"Resellers", MAPI_E_NETWORK_ERROR, kReadOfResellers},
};
constexpr ULONGLONG kMostEntries = 6;
// The first ones cannot be deleted, the others not be opened.
constexpr ULONGLONG kUndeletable = 2;

class Book final : public kit::Book {
 public:
  explicit Book(const kit::Logon& logon)
      : kit::Book(logon, {kit::kNoKey, kit::kNoKey, kit::kNumberKey, kit::kNoKey, kit::kNumberKey}) {
    for (ULONGLONG number = 1; number <= kMostEntries; ++number) numbers_.push_back(number);
  }

  std::vector<kit::EntryRef> Containers(const kit::EntryRef& parent) override {
    if (parent == Root()) return {kit::EntryRef(kWarehouses), kit::EntryRef(kDistricts)};
    std::vector<kit::EntryRef> containers;
    for (ULONGLONG i = 0; parent.kind == kDistricts && i < std::size(kContainers); ++i)
      containers.emplace_back(kUnreadable, i);
    return containers;
  }

  HRESULT Read(const kit::EntryRef& entry, std::span<const ULONG>, kit::PropList& values) override {
    switch (entry.kind) {
      case kDistricts:
        return DescribeContainer(values, L"Districts", AB_SUBCONTAINERS | AB_UNMODIFIABLE), S_OK;
      case kUnreadable:
        return DescribeContainer(values, kContainers[entry.Number()].name, AB_RECIPIENTS | AB_UNMODIFIABLE),
               S_OK;
      case kWarehouses:
        return DescribeContainer(values, L"Warehouses", AB_RECIPIENTS | AB_MODIFIABLE), S_OK;
      default:
        if (entry.Number() > kUndeletable) return MAPI_E_NOT_FOUND;
        return Describe(entry, values), S_OK;
    }
  }

  kit::RowsPtr Contents(const kit::EntryRef& container) override {
    if (container.kind == kUnreadable) return FailingRows(container.Number());
    if (container.kind != kWarehouses) return nullptr;
    const std::lock_guard guard(lock_);
    return kit::RowsMadeBy(numbers_.size(), [this, numbers = numbers_](size_t row, auto, auto& values) {
      return Describe(kit::EntryRef(kWarehouse, numbers[row]), values), S_OK;
    });
  }

  kit::Access AccessTo(const kit::EntryRef&) override { return kit::Access::kModify; }

  HRESULT DeleteAll(std::span<const kit::EntryRef> entries, std::span<HRESULT> results) override {
    const std::lock_guard guard(lock_);
    for (size_t i = 0; i < entries.size(); ++i) {
      if (entries[i].Number() > kUndeletable)
        std::erase(numbers_, entries[i].Number());
      else
        results[i] = MAPI_E_NO_ACCESS;
    }
    return S_OK;
  }
  bool TellsByItself() const override { return true; }

  HRESULT ShowDetails(HWND, const kit::EntryRef& entry, ULONG) override {
    return entry.Number() == 1 ? MAPI_E_BUSY : MAPI_E_UNABLE_TO_ABORT;
  }
  HRESULT ShowNew(HWND, const kit::EntryRef&, ULONG, kit::EntryRef*) override { return MAPI_E_NETWORK_ERROR; }

 private:
  void Describe(const kit::EntryRef& entry, kit::PropList& values) const {
    values.Set(PR_DISPLAY_NAME, L"Warehouse " + std::to_wstring(entry.Number()));
    values.Set(PR_OBJECT_TYPE, MAPI_MAILUSER);
    Ids().Identify(entry, values);
  }

  kit::RowsPtr FailingRows(ULONGLONG container) {
    const auto& failing = kContainers[container];
    return kit::RowsMadeBy(failing.readable + 1, [this, &failing](size_t row, auto, auto& values) {
      if (row >= failing.readable) return failing.code;
      return Describe(kit::EntryRef(kWarehouse, row + 1), values), S_OK;
    });
  }

  std::mutex lock_;
  std::vector<ULONGLONG> numbers_;
};

}  // namespace

ORV_SERVICE_ENTRY(RefusingServiceEntry, kit::ServiceHandler(kit::Settings()))
ORV_PROVIDER(Book, kit::Settings())
