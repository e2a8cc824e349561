// What stands between a window and the store: contacts that are there already, and what failures mean.
#pragma once

#include "orv/kit/window.hpp"
#include "providers/book/store.h"

namespace book {

namespace kit = orv::kit;

// What a code of the store says to the user, and what to do about it.
std::wstring FaultText(const kit::Language& language, HRESULT code);
// The same where the user is in the settings of the book.
std::wstring FaultTextInSettings(const kit::Language& language, HRESULT code);
// The same of a single entry, which may have been deleted.
std::wstring EntryFaultText(const kit::Language& language, HRESULT code);

// A contact of the same name with one same number, or without a number where this one has none; of a list one of the
// same name. MAPI_E_NOT_FOUND.
HRESULT FindDuplicate(Store& store, const formats::Contact& contact, EntryKey* found);

}  // namespace book
