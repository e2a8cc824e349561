// In which state a book's file is.
#pragma once

#include "orv/orvbook.h"
#include "providers/book/provider/book_file.h"

namespace book {

// `health` has its size in it; the rest is written over. S_OK whenever it could be filled in.
// `findings` may be null.
HRESULT CheckWhole(const std::wstring& path, OrvBookHealth* health, IOrvContactReport* report,
                   std::vector<Finding>* findings = nullptr);
HRESULT TellFigures(BookFile& file, OrvBookHealth* health);

// As OrvRepairBook says, without the counts.
HRESULT RepairInto(const std::wstring& path, const std::wstring& newPath, IOrvContactReport* report,
                   Salvage* salvage);

}  // namespace book
