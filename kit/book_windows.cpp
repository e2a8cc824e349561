// Windows of a book: which entry or container a client means, and what it is told afterwards.
#include "book_objects.hpp"
#include "telling.hpp"

namespace orv::kit {
namespace {

// The first container that can be changed, for a client that names none.
HRESULT FindContainer(Book& book, EntryRef* container) {
  for (const EntryRef& each : book.Containers(book.Root())) {
    if (book.AccessTo(each) != Access::kModify) continue;
    *container = each;
    return S_OK;
  }
  return MAPI_E_NO_ACCESS;
}

// A container that cannot be read, and so not be changed, says why.
HRESULT WhyFixed(Book& book, const EntryRef& container) {
  PropList values;
  const ULONG columns[] = {PR_ORV_BOOK_STATUS};
  if (const HRESULT hr = book.Read(container, columns, values); FAILED(hr)) return hr;
  const auto status = static_cast<HRESULT>(values.Number(PR_ORV_BOOK_STATUS));
  return FAILED(status) ? status : MAPI_E_NO_ACCESS;
}

HRESULT ContainerOf(Book& book, const SBinary& id, EntryRef* container) {
  if (id.cb == 0 || id.lpb == nullptr) return FindContainer(book, container);
  const HRESULT hr = book.Ids().Read(id.cb, reinterpret_cast<const ENTRYID*>(id.lpb), container);
  if (FAILED(hr)) return hr;
  if (*container == book.Root()) return FindContainer(book, container);
  return book.AccessTo(*container) == Access::kModify ? S_OK : WhyFixed(book, *container);
}

// 0: the user is asked.
HRESULT TypeOf(Book& book, const SBinary& templateId, ULONG* objectType) {
  *objectType = 0;
  if (templateId.cb == 0 || templateId.lpb == nullptr) return S_OK;
  sdk::ComPtr<IMAPIProp> like;
  const HRESULT hr = ReadTemplate(book, templateId, objectType, like);
  return SUCCEEDED(hr) && !book.Creates(*objectType) ? MAPI_E_NO_SUPPORT : hr;
}

HRESULT HandOut(const Book& book, const EntryRef& entry, ULONG* size, LPENTRYID* made) {
  const std::vector<BYTE> id = book.Ids().Make(entry);
  auto copy = book.GetHost().buffers.AllocateRoot(id.size());
  std::copy(id.begin(), id.end(), static_cast<BYTE*>(copy.get()));
  *size = static_cast<ULONG>(id.size());
  *made = static_cast<LPENTRYID>(copy.release());
  return S_OK;
}

}  // namespace

HRESULT ShowDetailsOf(Book& book, HWND owner, const SBinary& id, ULONG flags) {
  EntryRef entry;
  const HRESULT hr = book.Ids().Read(id.cb, reinterpret_cast<const ENTRYID*>(id.lpb), &entry);
  if (FAILED(hr)) return hr;
  return Telling(book.GetHost(), "the window of an entry",
                 [&] { return book.ShowDetails(owner, entry, flags); });
}

HRESULT ShowNewIn(Book& book, HWND owner, const SBinary& containerId, const SBinary& templateId, ULONG* size,
                  LPENTRYID* made) {
  EntryRef container, entry;
  ULONG objectType = 0;
  if (const HRESULT hr = ContainerOf(book, containerId, &container); FAILED(hr)) return hr;
  if (const HRESULT hr = TypeOf(book, templateId, &objectType); FAILED(hr)) return hr;
  const HRESULT hr = Telling(book.GetHost(), "the window of a new entry",
                             [&] { return book.ShowNew(owner, container, objectType, &entry); });
  if (FAILED(hr)) return hr;
  if (!book.TellsByItself())
    book.Tell(fnevObjectCreated, entry, objectType == 0 ? MAPI_MAILUSER : objectType);
  return HandOut(book, entry, size, made);
}

}  // namespace orv::kit
