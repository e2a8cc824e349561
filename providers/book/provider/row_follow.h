// What became of the rows of a table between two looks at its book.
#pragma once

#include <optional>
#include <vector>

#include "orv/kit/rows.hpp"
#include "providers/book/store.h"

namespace book {

namespace kit = orv::kit;

// The rows that a table shows of a look: all of them, or these.
struct Shown {
  View& view;
  const std::vector<RowRef>* refs = nullptr;
};

// Row by row, without the keys of those that went: these are the rows of `gone`, in the order in which rows without a
// place now are told. False where it is not known, as after an import.
bool FollowRows(const Shown& before, const Shown& after, std::vector<kit::FollowedRow>* followed,
                std::vector<Row>* gone);

}  // namespace book
