// Portable: the native build compiles it with the list of providers.
#include "hosting/session_link.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "orv/orvapi.h"
#include "orv/orvflags.h"
#include "orv/orvtags.h"
#include "props/prop_list.h"
#include "props/tag_array.h"

namespace orv {
namespace {

constexpr TagArray kColumns{PR_ORV_PROBLEM_CODE, PR_ORV_PROBLEM_TEXT_W, PR_SERVICE_UID, PR_DISPLAY_NAME_W,
                            PR_SERVICE_DLL_NAME_W};

constexpr bool IsHighSurrogate(WCHAR c) { return (c & 0xFC00) == 0xD800; }

// Not in the middle of a character.
WStringView Shortened(WStringView text) {
  if (text.size() <= ORV_MAX_PROBLEM_TEXT) return text;
  const bool splits = IsHighSurrogate(text[ORV_MAX_PROBLEM_TEXT - 1]);
  return text.substr(0, ORV_MAX_PROBLEM_TEXT - (splits ? 1 : 0));
}

SPropValue TextValue(ULONG tag, const WString& text) {
  SPropValue value{};
  value.ulPropTag = tag;
  value.Value.lpszW = const_cast<LPWSTR>(text.c_str());
  return value;
}

HRESULT FillRow(const ServiceIdentity& service, HRESULT code, const WString& text, SRow& row) {
  std::array<SPropValue, 5> values{};
  values[0].ulPropTag = PR_ORV_PROBLEM_CODE;
  values[0].Value.l = code;
  values[1] = TextValue(PR_ORV_PROBLEM_TEXT_W, text);
  values[2].ulPropTag = PR_SERVICE_UID;
  values[2].Value.bin = {sizeof service.uid.ab, const_cast<BYTE*>(service.uid.ab)};
  values[3] = TextValue(PR_DISPLAY_NAME_W, service.displayName);
  values[4] = TextValue(PR_SERVICE_DLL_NAME_W, service.library);
  PropList list;
  for (const SPropValue& value : values) {
    if (const HRESULT hr = list.Set(value); FAILED(hr)) return hr;
  }
  return list.GetRow(kColumns.Get(), row);
}

}  // namespace

bool SessionLink::Problem::IsSameAs(const Problem& other) const noexcept {
  return code == other.code && text == other.text &&
         std::memcmp(&service.uid, &other.service.uid, sizeof service.uid) == 0;
}

void SessionLink::Open(IAddrBook& book) noexcept {
  LockGuard guard(lock_);
  book_ = &book;
}

void SessionLink::Close() noexcept {
  LockGuard guard(lock_);
  book_ = nullptr;
}

// The session holds the book until it has closed this.
ComPtr<IAddrBook> SessionLink::Book() const noexcept {
  LockGuard guard(lock_);
  return ComPtr<IAddrBook>::Share(book_);
}

HRESULT SessionLink::ReportFromProvider(const ServiceIdentity& service, HRESULT code, WStringView text) {
  Problem problem{service, code, WString(Shortened(text))};
  LockGuard guard(lock_);
  if (book_ == nullptr) return MAPI_E_END_OF_SESSION;
  KeepLocked(std::move(problem));
  return S_OK;
}

void SessionLink::Report(const ServiceIdentity& service, HRESULT code, WStringView text) {
  Problem problem{service, code, WString(Shortened(text))};
  LockGuard guard(lock_);
  const bool isKnown = std::any_of(problems_.begin(), problems_.end(),
                                   [&](const Problem& kept) { return kept.IsSameAs(problem); });
  if (!isKnown) KeepLocked(std::move(problem));
}

void SessionLink::KeepLocked(Problem problem) {
  if (problems_.size() == ORV_MAX_PROBLEMS) {
    std::rotate(problems_.begin(), problems_.begin() + 1, problems_.end());
    problems_.back() = std::move(problem);
  } else {
    problems_.push_back(std::move(problem));
  }
}

HRESULT SessionLink::MakeRows(RowSetPtr& rows) const {
  LockGuard guard(lock_);
  RowSetPtr set;
  HRESULT hr = AllocateRoot(CbNewSRowSet(problems_.size()), reinterpret_cast<void**>(set.Put()));
  for (const Problem& problem : problems_) {
    if (FAILED(hr)) return hr;
    hr = FillRow(problem.service, problem.code, problem.text, set->aRow[set->cRows]);
    if (SUCCEEDED(hr)) ++set->cRows;
  }
  if (SUCCEEDED(hr)) rows = std::move(set);
  return hr;
}

}  // namespace orv
