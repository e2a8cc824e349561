// The table behind contents and hierarchy: rows are made one at a time, when they are read.
#pragma once

#include <functional>

#include "sample_book.h"

namespace sample {

struct Rows {
  size_t count = 0;
  std::function<Properties(size_t row, const Tags& columns)> at;  // at least those of the columns
};

// A table at its first row with one reference; `columns` are shown until the caller chooses its own.
LPMAPITABLE MakeTable(const BookPtr& book, const Rows& rows, Tags columns);

}  // namespace sample
