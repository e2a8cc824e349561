// One look at a book, behind View.
#pragma once

#include <memory>
#include <optional>

#include "providers/book/core.h"
#include "providers/book/rows.h"

namespace book {

class Lookout {
 public:
  explicit Lookout(std::shared_ptr<Core> core);
  ~Lookout();
  Lookout(const Lookout&) = delete;
  Lookout& operator=(const Lookout&) = delete;

  // False where nobody has written since.
  bool Refresh();

  Database& database() const { return *database_; }
  const RowOrder& order() const { return *order_; }
  const SortKeys& keys() const { return *keys_; }

 private:
  void BeginLook();

  const std::shared_ptr<Core> core_;
  std::unique_ptr<Database> database_;
  // Whether a look that stays leaves the file free for others.
  bool canStay_ = false;
  int64_t seenVersion_ = -1;
  std::optional<SortKeys> keys_;
  std::unique_ptr<RowOrder> order_;
};

}  // namespace book
