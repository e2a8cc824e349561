// What a service keeps in its profile section: which settings there are, what they may be and what they are while
// nobody has set them.
//
//   kit::Settings MySettings() {
//     return kit::Settings().Path(PR_ORV_BOOK_FILE_W, CheckFile).Number(kSecondsTag, 60, 1, 3600).Flag(kSortTag, true);
//   }
//
// Give settings of your own identifiers from 0x6700 to 0x67FF. The first one is the main one: the extra configuration
// string of a new service goes there.
#pragma once

#include <functional>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "orv/kit/values.hpp"

namespace orv::kit {

class Settings {
 public:
  // A further look at a value that has the right type already, of a path when it is absolute; a failure refuses it.
  // May throw what becomes a code at the entry function's boundary.
  using Check = std::function<HRESULT(const SPropValue& value)>;

  // PT_UNICODE.
  Settings& Text(ULONG tag, std::wstring_view otherwise = {}, Check check = nullptr);
  // PT_UNICODE: a file or folder, made absolute against the current folder when it is set, since the session will be
  // somewhere else. Empty: none, which is not checked.
  Settings& Path(ULONG tag, Check check = nullptr);
  // PT_LONG, from `least` to `most`, both included.
  Settings& Number(ULONG tag, LONG otherwise, LONG least = std::numeric_limits<LONG>::min(),
                   LONG most = std::numeric_limits<LONG>::max());
  // PT_BOOLEAN.
  Settings& Flag(ULONG tag, bool otherwise = false);
  // PT_BINARY of 16 bytes; zeros while it is not set.
  Settings& Uid(ULONG tag);

  // All settings, PR_SERVICE_UID and PR_DISPLAY_NAME as the section has them. What is not there, or is not what it
  // may be, is its default; checks are not asked, so what was right when it was set is read. MAPI_E_INVALID_OBJECT
  // for a section without a PR_SERVICE_UID of 16 bytes, as no service has it; else the section's own failures.
  // `values` is untouched then.
  HRESULT Read(IProfSect& section, const sdk::Allocator& buffers, PropList* values) const;

  // Stores those of the values that are settings, in one SaveChanges, or nothing when one of them is refused. A
  // value that is no setting: MAPI_E_NOT_FOUND (PR_NULL and PT_ERROR are skipped); of another type:
  // MAPI_E_UNEXPECTED_TYPE; a number out of range or a UID of another size: MAPI_E_BAD_VALUE; a null section, null
  // texts or bytes, or a path that the system does not understand: MAPI_E_INVALID_PARAMETER; what a check says. What
  // the section refuses is the result. `free` is OrvFreeBuffer; null where it is not known, and the section's
  // problems with single values are then not seen.
  HRESULT Store(IProfSect* section, sdk::ValueView values, LPFREEBUFFER free) const;

  // The same for the text of the main setting. MAPI_E_INVALID_PARAMETER for null or where the main one is no text.
  HRESULT StoreMain(IProfSect* section, LPCWSTR text, LPFREEBUFFER free) const;

 private:
  struct Rule {
    ULONG tag;
    LONG least, most;
    bool isPath;
    Check check;
  };

  Settings& Add(ULONG tag, Check check = nullptr, bool isPath = false, LONG least = 0, LONG most = 0);
  const Rule* Find(ULONG tag) const noexcept;
  static HRESULT CheckForm(const Rule& rule, const SPropValue& value);
  HRESULT Accept(const SPropValue& value, PropList& accepted) const;

  std::vector<Rule> rules_;
  PropList defaults_;
};

// The path as the system sees it from the current folder; empty where it knows none.
std::wstring AbsolutePath(const WCHAR* path);

}  // namespace orv::kit
