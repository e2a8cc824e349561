// The file of a book, which may not be there, may be damaged, and may come back.
#pragma once

#include <memory>
#include <string>

#include "orv/orvbase.hpp"
#include "providers/book/store.h"

namespace book {

// Any number of threads.
class BookFile {
 public:
  // `path` is ready to be opened.
  BookFile(std::wstring path, const Options& options) : path_(std::move(path)), options_(options) {}
  BookFile(const BookFile&) = delete;
  BookFile& operator=(const BookFile&) = delete;

  // What a failing call tells is remembered for two seconds: another program may hold the file for long, and every
  // row and entry asks.
  HRESULT Open(std::shared_ptr<Store>* store);

  // What a code of Open says to a person, and what to do about it.
  static const char* Sentence(HRESULT code);

  // From now on only a book with this UID is opened: identifiers bear it. Another one at the same place is
  // MAPI_E_OBJECT_CHANGED.
  void Expect(const EntryKey& uid);

  const std::wstring& Path() const noexcept { return path_; }

 private:
  HRESULT OpenLocked();

  const std::wstring path_;
  const Options options_;
  orv::sdk::Lock lock_;  // guards what follows, and is held while the file is opened
  std::shared_ptr<Store> store_;
  EntryKey expected_{};
  bool expects_ = false;
  HRESULT failure_ = S_OK;  // of the last try
  ULONGLONG failedAt_ = 0;
};

}  // namespace book
