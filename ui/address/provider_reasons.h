// The words for what a provider answered: why a command failed, and what a container holds or why it shows nothing.
#pragma once

#include "orv/orvapi.h"
#include "platform/win.h"

namespace orv::ui {

enum class EntryCommand { kDelete, kNew, kDetails };

// What failed and why: the provider's own words where it has some, else a sentence for its code.
WString FailureText(HMODULE resources, EntryCommand command, HRESULT hr, const WString& providersWords);

// So many of several entries that were to be deleted are still there.
WString LeftOverText(HMODULE resources, ULONG count);

// The line under the list of entries. `hr` is how reading them came out; MAPI_E_NO_SUPPORT of a container without a
// list of entries.
WString StatusText(HMODULE resources, ULONG entries, HRESULT hr);

}  // namespace orv::ui
