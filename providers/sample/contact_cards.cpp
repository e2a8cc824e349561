#include "contact_cards.h"

#include "formats/file_bytes.h"

namespace sample {
namespace {

using formats::OpenResult;
using formats::ReadResult;

constexpr size_t kLargestFile = size_t{1} << 30;

HRESULT CodeOf(formats::FileResult result) {
  switch (result) {
    case formats::FileResult::kOk:
      return S_OK;
    case formats::FileResult::kNotFound:
      return MAPI_E_NOT_FOUND;
    case formats::FileResult::kTooLarge:
      return MAPI_E_TOO_BIG;
    default:
      return MAPI_E_DISK_ERROR;
  }
}

HRESULT ReadBytes(const std::wstring& path, std::string* bytes) {
  return CodeOf(formats::ReadFileBytes(path, kLargestFile, bytes));
}

// Hands every contact to `take`, until that says false.
template <class Take>
HRESULT ReadContacts(formats::ByteSource& source, size_t* rejected, Take take) {
  OpenResult opened = OpenResult::kOk;
  const auto reader = formats::ContactReader::Open(source, {}, &opened);
  if (!reader) return opened == OpenResult::kFailed ? MAPI_E_DISK_ERROR : MAPI_E_CORRUPT_DATA;
  formats::Contact contact;
  for (ReadResult result; (result = reader->Next(&contact)) != ReadResult::kEnd;) {
    if (result == ReadResult::kFailed) return MAPI_E_DISK_ERROR;
    if (result == ReadResult::kRejected) ++*rejected;
    if (result == ReadResult::kRecord && !take(contact)) break;
  }
  return reader->hasRecognised() ? S_OK : MAPI_E_CORRUPT_DATA;
}

}  // namespace

HRESULT ContactCards::Read(formats::ByteSource& source, ContactCards* cards) {
  ContactCards read;
  std::string card;
  const HRESULT hr = ReadContacts(source, &read.rejected_, [&](const formats::Contact& contact) {
    formats::WriteCard(contact, &card);
    read.text_ += card;
    read.ends_.push_back(read.text_.size());
    read.names_.push_back(contact.name);
    return true;
  });
  if (SUCCEEDED(hr)) *cards = std::move(read);
  return hr;
}

HRESULT ContactCards::Read(const std::wstring& path, ContactCards* cards) {
  std::string bytes;
  if (const HRESULT hr = ReadBytes(path, &bytes); FAILED(hr)) return hr;
  formats::MemorySource source(bytes);
  return Read(source, cards);
}

HRESULT ContactCards::Check(const std::wstring& path) {
  std::string bytes;
  if (const HRESULT hr = ReadBytes(path, &bytes); FAILED(hr)) return hr;
  formats::MemorySource source(bytes);
  size_t rejected = 0;
  return ReadContacts(source, &rejected, [](const formats::Contact&) { return false; });
}

std::string_view ContactCards::Card(size_t index) const {
  const size_t begin = index == 0 ? 0 : ends_[index - 1];
  return std::string_view(text_).substr(begin, ends_[index] - begin);
}

formats::Contact ContactCards::Contact(size_t index) const {
  formats::Contact contact;
  formats::ReadCard(Card(index), &contact);
  return contact;
}

}  // namespace sample
