#include "providers/book/provider/book_file.h"

#include <mutex>

namespace book {
namespace {

using Guard = std::lock_guard<orv::sdk::Lock>;
constexpr ULONGLONG kPause = 2000;  // milliseconds

}  // namespace

HRESULT BookFile::Open(std::shared_ptr<Store>* store) {
  const Guard guard(lock_);
  const bool isTold = FAILED(failure_) && GetTickCount64() - failedAt_ < kPause;
  const HRESULT hr = store_ ? S_OK : isTold ? failure_ : OpenLocked();
  if (SUCCEEDED(hr)) *store = store_;
  return hr;
}

const char* BookFile::Sentence(HRESULT code) {
  if (code != MAPI_E_OBJECT_CHANGED) return book::Sentence(code);
  return "Another address book lies here now. Log on again to use it, or bring the former one back.";
}

void BookFile::Expect(const EntryKey& uid) {
  const Guard guard(lock_);
  expected_ = uid;
  expects_ = true;
}

HRESULT BookFile::OpenLocked() {
  std::shared_ptr<Store> store;
  HRESULT hr = Store::Open(path_, options_, &store);
  if (SUCCEEDED(hr) && expects_ && store->Uid() != expected_) hr = MAPI_E_OBJECT_CHANGED;
  failure_ = hr;
  failedAt_ = GetTickCount64();
  if (SUCCEEDED(hr)) store_ = std::move(store);
  return hr;
}

}  // namespace book
