// The window of the personal address book's settings.
#pragma once

#include <functional>
#include <string>

#include "orv/kit/window.hpp"
#include "providers/book/types.h"

namespace personal {

namespace kit = orv::kit;

// What the window shows and changes.
struct BookChoice {
  std::wstring path;  // as it is opened
  std::wstring name;  // of the container
  book::NameForm names = book::NameForm::kAsWritten;
  bool keepsBackups = true;
  bool isKnown = false;  // there was a book at the path
};

// Called by OK with what was chosen; a failure is told and the window stays.
using StoreChoice = std::function<HRESULT(const BookChoice& choice)>;

// S_OK once a choice is stored, MAPI_E_USER_CANCEL.
HRESULT ShowConfigure(HWND owner, const kit::Language& language, const BookChoice& choice,
                      const StoreChoice& store);

}  // namespace personal
