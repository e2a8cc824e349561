#include "providers/book/windows/saving.h"

#include <algorithm>

#include "formats/contact_properties.h"
#include "providers/book/windows/resource.h"

namespace book {
namespace {

struct CodeAndText {
  HRESULT code;
  UINT text;
};
// Those that the settings have a button for.
constexpr CodeAndText kFaultsInSettings[] = {{MAPI_E_INVALID_OBJECT, IDS_NO_BOOK_HERE},
                                             {MAPI_E_CORRUPT_STORE, IDS_DAMAGED_HERE},
                                             {MAPI_E_CORRUPT_DATA, IDS_NOTHING_SAVED}};
constexpr CodeAndText kFaults[] = {{MAPI_E_NOT_FOUND, IDS_ERROR_MISSING},
                                   {MAPI_E_INVALID_OBJECT, IDS_ERROR_NO_BOOK},
                                   {MAPI_E_CORRUPT_STORE, IDS_ERROR_DAMAGED},
                                   {MAPI_E_VERSION, IDS_ERROR_NEWER},
                                   {MAPI_E_BUSY, IDS_ERROR_BUSY},
                                   {MAPI_E_NO_ACCESS, IDS_ERROR_NO_ACCESS},
                                   {MAPI_E_NOT_ENOUGH_DISK, IDS_ERROR_NO_ROOM},
                                   {MAPI_E_DISK_ERROR, IDS_ERROR_DISK},
                                   {MAPI_E_NETWORK_ERROR, IDS_ERROR_DISK},
                                   {MAPI_E_STRING_TOO_LONG, IDS_ERROR_LONG_PATH},
                                   {MAPI_E_TOO_BIG, IDS_ERROR_TOO_LARGE},
                                   {MAPI_E_FOLDER_CYCLE, IDS_FAULT_LIST_IN_MEMBER},
                                   {MAPI_E_NOT_ENOUGH_MEMORY, IDS_NO_MEMORY}};

std::wstring Hexadecimal(HRESULT code) {
  constexpr wchar_t kDigits[] = L"0123456789ABCDEF";
  std::wstring text;
  for (int shift = 28; shift >= 0; shift -= 4) text += kDigits[(static_cast<ULONG>(code) >> shift) & 0xF];
  return text;
}

// 0: none of them.
UINT TextIn(std::span<const CodeAndText> faults, HRESULT code) {
  const auto found = std::find_if(faults.begin(), faults.end(),
                                  [code](const CodeAndText& each) { return each.code == code; });
  return found != faults.end() ? found->text : 0;
}

// What no text is for is told by its code.
std::wstring TextOrCode(const kit::Language& language, UINT text, UINT otherwise, HRESULT code) {
  const std::wstring values[] = {Hexadecimal(code)};
  return language.Text(text != 0 ? text : otherwise, values);
}

bool HasOneOf(const formats::Contact& contact, const std::vector<formats::ContactNumber>& numbers) {
  const auto isIn = [&](const formats::ContactNumber& number) {
    const std::string canonical = formats::CanonicalNumber(number.text);
    return std::any_of(numbers.begin(), numbers.end(), [&](const formats::ContactNumber& each) {
      return formats::CanonicalNumber(each.text) == canonical;
    });
  };
  return std::any_of(contact.numbers.begin(), contact.numbers.end(), isIn);
}

bool IsTwin(const formats::Contact& there, const formats::Contact& contact) {
  if (there.isList || contact.isList) return there.isList && contact.isList;
  return contact.numbers.empty() ? there.numbers.empty() : HasOneOf(there, contact.numbers);
}

}  // namespace

std::wstring FaultText(const kit::Language& language, HRESULT code) {
  return TextOrCode(language, TextIn(kFaults, code), IDS_ERROR_OTHER, code);
}

std::wstring FaultTextInSettings(const kit::Language& language, HRESULT code) {
  const UINT here = TextIn(kFaultsInSettings, code);
  return TextOrCode(language, here != 0 ? here : TextIn(kFaults, code), IDS_OTHER_HERE, code);
}

std::wstring EntryFaultText(const kit::Language& language, HRESULT code) {
  if (code == MAPI_E_NOT_FOUND) return language.Text(IDS_ERROR_GONE);
  return code == MAPI_E_NO_SUPPORT ? language.Text(IDS_ERROR_NO_WINDOW) : FaultText(language, code);
}

HRESULT FindDuplicate(Store& store, const formats::Contact& contact, EntryKey* found) {
  std::unique_ptr<View> view;
  std::vector<Row> rows;
  if (const HRESULT hr = store.OpenView(&view); FAILED(hr)) return hr;
  if (const HRESULT hr = view->Namesakes(contact.name, &rows); FAILED(hr)) return hr;
  for (const Row& each : rows) {
    Entry entry;
    if (each.isGone || FAILED(view->Read(each.key.entry, &entry))) continue;
    if (IsTwin(entry.contact, contact)) return *found = each.key.entry, S_OK;
  }
  return MAPI_E_NOT_FOUND;
}

}  // namespace book
