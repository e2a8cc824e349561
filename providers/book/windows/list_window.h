// The window of a list, over the store that keeps it.
#pragma once

#include <memory>

#include "orv/kit/window.hpp"
#include "providers/book/store.h"
#include "providers/book/windows/directory.h"

namespace book {

namespace kit = orv::kit;

// As ShowContact and ShowNewContact.
HRESULT ShowList(HWND owner, const kit::Language& language, const std::shared_ptr<Store>& store,
                 Directory& directory, const EntryKey& key);
HRESULT ShowNewList(HWND owner, const kit::Language& language, const std::shared_ptr<Store>& store,
                    Directory& directory, EntryKey* made);

}  // namespace book
