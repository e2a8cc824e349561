// Names that people typed.
#include <algorithm>

#include "providers/book/provider/local_book.h"
#include "providers/book/provider/words.h"
#include "providers/book/text.h"

namespace book {
namespace {

constexpr size_t kEnough = 64;  // rows that are looked at: of one contact there may be several

// One way of finding after the other, until somebody is found.
class NameFinder {
 public:
  NameFinder(View& view, const Wording& words, std::wstring_view name)
      : view_(view), words_(words), name_(name), text_(ToUtf8(name)) {}

  HRESULT Find(std::vector<Row>* rows) {
    using Way = HRESULT (NameFinder::*)(std::vector<Row>*);
    for (const Way way : {&NameFinder::WholeNames, &NameFinder::ShownNames, &NameFinder::Beginnings,
                          &NameFinder::Words, &NameFinder::Mails, &NameFinder::Numbers}) {
      if (const HRESULT hr = (this->*way)(rows); FAILED(hr) || !rows->empty()) return hr;
    }
    return S_OK;
  }

 private:
  HRESULT Load(const std::vector<RowRef>& refs, std::vector<Row>* rows) {
    return refs.empty() ? S_OK : view_.Rows(refs, rows);
  }
  HRESULT Named(std::string_view name, std::vector<Row>* rows) {
    std::vector<RowRef> refs;
    const HRESULT hr = view_.FindName(name, kEnough, &refs);
    return FAILED(hr) ? hr : Load(refs, rows);
  }
  HRESULT WholeNames(std::vector<Row>* rows) { return Named(text_, rows); }
  // With what tells them apart behind them.
  HRESULT ShownNames(std::vector<Row>* rows) {
    for (const std::wstring_view plain : PlainNamesOf(name_)) {
      if (const HRESULT hr = Named(ToUtf8(plain), rows); FAILED(hr)) return hr;
      std::erase_if(*rows, [&](const Row& each) { return words_.DisplayNameOf(each) != name_; });
      if (!rows->empty()) return S_OK;
    }
    return S_OK;
  }
  HRESULT Beginnings(std::vector<Row>* rows) {
    uint64_t first = 0, end = 0;
    const HRESULT hr = view_.SeekName(text_, &first, &end);
    if (FAILED(hr) || first == end) return hr;
    return view_.Window(first, static_cast<size_t>(std::min<uint64_t>(end - first, kEnough)), rows);
  }
  HRESULT Words(std::vector<Row>* rows) {
    std::vector<RowRef> refs;
    const HRESULT hr = view_.FindWords(text_, kEnough, &refs);
    return FAILED(hr) ? hr : Load(refs, rows);
  }
  HRESULT Mails(std::vector<Row>* rows) {
    std::vector<RowRef> refs;
    if (name_.find(L'@') == name_.npos) return S_OK;
    const HRESULT hr = view_.FindText(Column::kEmail, Match::kPrefix, text_, &refs);
    refs.resize(std::min(refs.size(), kEnough));
    return FAILED(hr) ? hr : Load(refs, rows);
  }
  HRESULT Numbers(std::vector<Row>* rows) {
    std::vector<RowRef> refs;
    if (!IsLikeNumber(name_)) return S_OK;
    const HRESULT hr = view_.FindDigits(text_, kEnough, &refs);
    return FAILED(hr) ? hr : Load(refs, rows);
  }

  View& view_;
  const Wording& words_;
  const std::wstring name_;
  const std::string text_;
};

// A contact's rows are one match: one row as it is, several as the contact.
void AddMatch(const Row& row, std::vector<kit::EntryRef>* matches) {
  const auto isSame = [&](const kit::EntryRef& each) { return PartsOf(each).entry == row.key.entry; };
  const auto known = std::find_if(matches->begin(), matches->end(), isSame);
  if (known == matches->end()) {
    matches->push_back(RefOfRow(row));
  } else {
    *known = RefOfEntry(row.key.entry);
  }
}

}  // namespace

HRESULT LocalBook::Resolve(const kit::EntryRef& container, LPCWSTR name,
                           std::vector<kit::EntryRef>* matches) {
  if (container.kind != kContainer) return MAPI_E_NO_SUPPORT;
  std::vector<Row> rows;
  const HRESULT hr = WithView([&](View& view) { return NameFinder(view, words_, name).Find(&rows); });
  if (FAILED(hr)) return hr;
  for (const Row& each : rows) AddMatch(each, matches);
  return S_OK;
}

}  // namespace book
