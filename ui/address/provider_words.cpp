#include "ui/address/provider_words.h"

#include "addrbook/addr_book.h"
#include "orv/orvflags.h"
#include "platform/boundary.h"
#include "platform/buffer.h"
#include "platform/pointer_check.h"

namespace orv::ui {
namespace {

// In a message box: more would not fit on a screen.
constexpr std::size_t kMostWords = 800;

template <class Ask>
WString ReadWords(Ask ask) {
  MapiBuffer<MAPIERROR> error;
  const HRESULT told = HandedOut(error, [&] { return ask(error.Put()); });
  if (FAILED(told) || !IsReadable(error.Get(), sizeof(MAPIERROR))) return {};
  const WCHAR* words = error->lpszError;
  return words != nullptr && IsReadableText(words) ? WString(words).substr(0, kMostWords) : WString();
}

}  // namespace

WString WordsOf(IMAPIProp& object, HRESULT hr) {
  return ReadWords([&](LPMAPIERROR* error) { return object.GetLastError(hr, MAPI_UNICODE, error); });
}

WString WordsOfIssuer(IAddrBook& book, const EntryId& entryId, HRESULT hr) {
  return ReadWords([&](LPMAPIERROR* error) { return CAddrBook::ErrorOfProvider(book, entryId, hr, error); });
}

}  // namespace orv::ui
