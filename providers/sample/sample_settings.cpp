#include "sample_settings.h"

#include <cstring>

#include "sample_book.h"

namespace sample {
namespace {

// Empty when there is none.
std::wstring_view TextOf(const ValueView& values, ULONG tag) {
  const WCHAR* text = values.Text(tag);
  return text != nullptr ? text : L"";
}

// Empty when the system knows no such path.
std::wstring FullPath(const WCHAR* path) {
  std::wstring full(GetFullPathNameW(path, 0, nullptr, nullptr), L'\0');
  const DWORD length = GetFullPathNameW(path, static_cast<DWORD>(full.size()), full.data(), nullptr);
  full.resize(length < full.size() ? length : 0);
  return full;
}

// A path that people give may be relative to where they are now; the session will be somewhere else. An empty one
// takes the file away.
HRESULT StoreFile(IProfSect* section, const wchar_t* text) {
  if (section == nullptr || text == nullptr) return MAPI_E_INVALID_PARAMETER;
  std::wstring stored;
  if (*text != 0) {
    stored = FullPath(text);
    std::optional<formats::VCardFile> file;
    if (stored.empty()) return MAPI_E_INVALID_PARAMETER;
    if (const HRESULT hr = OpenFile(stored, &file); FAILED(hr)) return hr;
  }
  SPropValue value{};
  value.ulPropTag = PR_ORV_BOOK_FILE_W;
  value.Value.lpszW = stored.data();
  if (const HRESULT hr = section->SetProps(1, &value, nullptr); FAILED(hr)) return hr;
  return section->SaveChanges(KEEP_OPEN_READWRITE);  // without this nothing reaches the profile
}

HRESULT Configure(IProfSect* section, ULONG flags, ULONG count, const SPropValue* values) {
  const SPropValue* file = ValueView(values, count).Find(PR_ORV_BOOK_FILE_W);
  if (file != nullptr) return StoreFile(section, file->Value.lpszW);
  // There is no window of ours: asked to show one in any case, we behave as one that was cancelled.
  return (flags & SERVICE_UI_ALWAYS) != 0 ? MAPI_E_USER_CANCEL : S_OK;
}

}  // namespace

HRESULT ReadSettings(IProfSect* section, const Allocator& allocator, Settings* settings) {
  TagArray tags(PR_SERVICE_UID, PR_DISPLAY_NAME, PR_ORV_BOOK_FILE_W);
  ULONG count = 0;
  LPSPropValue values = nullptr;
  if (const HRESULT hr = section->GetProps(tags.Get(), MAPI_UNICODE, &count, &values); FAILED(hr)) return hr;
  const Allocator::Root owner = allocator.Adopt(values);
  const ValueView given(values, count);
  const SBinary uid = given.Binary(PR_SERVICE_UID);
  if (uid.cb < sizeof(MAPIUID)) return MAPI_E_INVALID_OBJECT;
  std::memcpy(&settings->uid, uid.lpb, sizeof(MAPIUID));
  const std::wstring_view name = TextOf(given, PR_DISPLAY_NAME);
  settings->name.assign(name.begin(), name.end());
  settings->file = TextOf(given, PR_ORV_BOOK_FILE_W);
  return S_OK;
}

}  // namespace sample

// Named by PR_SERVICE_ENTRY_NAME of the catalogue. Nothing has to be prepared on installing or creating: a service
// without a file logs on with an empty container.
extern "C" HRESULT STDAPICALLTYPE SampleServiceEntry(HINSTANCE, ULONG_PTR, ULONG flags, ULONG context,
                                                     ULONG count, LPSPropValue values, LPPROFSECT section,
                                                     LPORVSUPPORT, ULONG_PTR) {
  using namespace sample;
  return Guarded([&] {
    switch (context) {
      case MSG_SERVICE_INSTALL:
      case MSG_SERVICE_CREATE:
      case MSG_SERVICE_DELETE:
      case MSG_SERVICE_UNINSTALL:
        return S_OK;
      case MSG_SERVICE_CONFIGURE:
        return Configure(section, flags, count, values);
      case ORV_SERVICE_EXTRA_CONFIG:  // one value without a tag: the path
        return count == 1 && values != nullptr ? StoreFile(section, values->Value.lpszW)
                                               : MAPI_E_INVALID_PARAMETER;
      default:
        return MAPI_E_NO_SUPPORT;
    }
  });
}
