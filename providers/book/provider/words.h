// What people read that no file says, in the language of the user's windows.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>
#include <vector>

#include "providers/book/types.h"

namespace book {

// The name with what tells the row from others behind it: of several numbers which kind, that there is none, and of
// namesakes the company or else the number.
std::wstring DisplayNameOf(const Row& row);

// The names that a text may be such a name of; none where it does not end as one.
std::vector<std::wstring_view> PlainNamesOf(std::wstring_view text);

// As numbers are typed, and with enough digits to be one's beginning or end.
bool IsLikeNumber(std::wstring_view text);

// The name of a book that cannot be opened: with the reason behind it.
std::wstring NameOfUnreadable(std::wstring_view name, HRESULT code);

}  // namespace book
