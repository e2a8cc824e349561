#include "sample_windows.h"

#include <commdlg.h>

#include <iterator>

#include "orv/orvcodes.h"

namespace sample {
namespace {

constexpr DWORD kPathRoom = 4096;
// Patterns alone: they are the same in every language.
constexpr wchar_t kFilter[] = L"*.vcf; *.csv; *.ldif\0*.vcf;*.vcard;*.csv;*.txt;*.ldif;*.ldi\0*.*\0*.*\0";

DWORD SystemCodeOf(HRESULT code) {
  switch (code) {
    case MAPI_E_NOT_FOUND:
      return ERROR_FILE_NOT_FOUND;
    case MAPI_E_TOO_BIG:
      return ERROR_FILE_TOO_LARGE;
    case MAPI_E_CORRUPT_DATA:
      return ERROR_INVALID_DATA;
    default:
      return ERROR_READ_FAULT;
  }
}

}  // namespace

std::wstring ReasonFor(HRESULT code) {
  wchar_t text[200] = L"";
  const DWORD size =
      FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, SystemCodeOf(code),
                     0, text, static_cast<DWORD>(std::size(text)), nullptr);
  std::wstring reason(text, size);
  // The full stop of Japanese too.
  reason.erase(reason.find_last_not_of(L" .\u3002\r\n") + 1);
  return reason;
}

HRESULT ChooseFile(HWND owner, std::wstring* path) {
  std::wstring chosen(kPathRoom, L'\0');
  OPENFILENAMEW box{};
  box.lStructSize = sizeof box;
  box.hwndOwner = owner;
  box.lpstrFilter = kFilter;
  box.lpstrFile = chosen.data();
  box.nMaxFile = kPathRoom;
  box.Flags = OFN_EXPLORER | OFN_FILEMUSTEXIST | OFN_HIDEREADONLY | OFN_NOCHANGEDIR;
  if (!GetOpenFileNameW(&box)) return MAPI_E_USER_CANCEL;
  *path = chosen.c_str();
  return S_OK;
}

void TellFailure(HWND owner, const std::wstring& path, HRESULT code) {
  MessageBoxW(owner, (path + L"\n" + ReasonFor(code)).c_str(), nullptr, MB_OK | MB_ICONERROR);
}

}  // namespace sample
