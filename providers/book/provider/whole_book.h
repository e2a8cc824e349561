// A whole book at once: import, export, what was deleted, health.
#pragma once

#include <memory>

#include "orv/kit/book.hpp"
#include "orv/orvbook.h"
#include "providers/book/provider/book_file.h"

namespace book {

// IOrvContacts of the book, whose file is opened when a method needs it.
orv::sdk::ComPtr<IUnknown> MakeWholeBook(std::shared_ptr<orv::kit::Book> book, std::shared_ptr<BookFile> file,
                                         bool canChange);

}  // namespace book
