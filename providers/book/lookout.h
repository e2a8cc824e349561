// One look at a book, behind View.
#pragma once

#include <memory>
#include <optional>

#include "providers/book/core.h"
#include "providers/book/rows.h"

namespace book {

class Lookout {
 public:
  Lookout(std::shared_ptr<Core> core, NameForm names);
  ~Lookout();
  Lookout(const Lookout&) = delete;
  Lookout& operator=(const Lookout&) = delete;

  // False where nobody has written since.
  bool Refresh();

  Database& database() const { return *database_; }
  const RowOrder& order();
  const Arrangement& arrangement() const { return *arrangement_; }
  // The number of the last change that is seen.
  int64_t lastChange() const { return lastChange_; }
  // Whether rows are read as they were when the look was taken.
  bool IsSnapshot() const { return canStay_; }

 private:
  void ReadAnew();

  const std::shared_ptr<Core> core_;
  const NameForm names_;
  std::unique_ptr<Database> database_;
  // Whether a look that stays leaves the file free for others.
  bool canStay_ = false;
  int64_t seenVersion_ = -1;
  int64_t lastChange_ = 0;
  std::optional<Arrangement> arrangement_;
  std::unique_ptr<RowOrder> order_;  // of a snapshot only when it is asked for
};

}  // namespace book
