// The window of a contact, over the store that keeps it.
#pragma once

#include <memory>

#include "orv/kit/window.hpp"
#include "providers/book/store.h"

namespace book {

namespace kit = orv::kit;

// Until the user closes it. `number`: the key of the number that was asked for, 0 for none. MAPI_E_USER_CANCEL where
// nothing was to be saved; a code of the store where the contact cannot be read.
HRESULT ShowContact(HWND owner, const kit::Language& language, const std::shared_ptr<Store>& store,
                    const EntryKey& key, uint32_t number);

// *made is the new contact. Where the user opened one that was there instead: MAPI_E_USER_CANCEL, nothing was made.
HRESULT ShowNewContact(HWND owner, const kit::Language& language, const std::shared_ptr<Store>& store,
                       EntryKey* made);

}  // namespace book
