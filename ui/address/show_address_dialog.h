// The way from the export to the Address dialog.
#pragma once

#include "orv/orvapi.h"
#include "platform/win.h"

namespace orv::ui {

// Shows the dialog over an address book and gives the result that a client gets, as OrvAddress documents it.
HRESULT ShowAddressDialog(HWND owner, HMODULE resources, IAddrBook* book, ADRPARM* parameters,
                          ADRLIST** list);

}  // namespace orv::ui
