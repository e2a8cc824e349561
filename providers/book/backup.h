// Copies of a book beside it.
#pragma once

#include <string>

#include "providers/book/database.h"

namespace book {

// A whole copy at `path`, which replaces what is there once it is complete. Others may write meanwhile.
void CopyBook(Database& database, const std::wstring& path);

// The day's copy, "<name>.<date>.bak", unless it is there or the book holds nothing; of those, seven are kept.
void KeepDailyBackup(Database& database, const std::wstring& path);

}  // namespace book
