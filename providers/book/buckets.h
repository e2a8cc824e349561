// Positions in an arrangement of rows, which no index of the engine knows: the rows are counted by stretches, each
// with the place where it begins.
#pragma once

#include <compare>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "providers/book/arrangement.h"
#include "providers/book/types.h"

namespace book {

// Where a row stands among those of its arrangement.
struct RowPlace {
  std::string sort;
  int64_t entry = std::numeric_limits<int64_t>::min();
  int32_t ordinal = std::numeric_limits<int32_t>::min();

  // By bytes, as the engine compares.
  friend auto operator<=>(const RowPlace&, const RowPlace&) = default;
};

class Buckets {
 public:
  explicit Buckets(const Arrangement& arrangement) : begin_(arrangement.begin()), end_(arrangement.end()) {}

  // What the file holds; a file without any has no rows.
  void Load(Database& database);
  // Counts all rows anew.
  void Rebuild(Database& database);

  // The row has just been written to, or taken from, its table.
  void Add(Database& database, const RowPlace& place);
  void Remove(const RowPlace& place);
  // Writes what is different from the file, and forgets what is not known to be in it when that fails.
  void Save(Database& database);

  uint64_t Count() const;
  // The place from which to read on, over `skip` rows, to come to the row at `position`, which is below Count().
  const RowPlace& Find(uint64_t position, uint64_t* skip) const;
  // How many rows stand before the stretch that `place` lies in, and where that begins.
  const RowPlace& Before(const RowPlace& place, uint64_t* rows) const;

 private:
  struct Bucket {
    RowPlace place;
    int64_t count = 0;
    bool isChanged = true;
  };

  Bucket First() const { return {RowPlace{begin_}}; }
  Bucket& At(const RowPlace& place);
  void Split(Database& database, std::size_t index);

  std::string begin_, end_;      // of the arrangement's sort keys
  std::vector<Bucket> buckets_;  // by place; the first begins before every row and is always there
  std::vector<RowPlace> removed_;
};

// Rows from `from` on that stand before `to`.
uint64_t CountRows(Database& database, const RowPlace& from, const RowPlace& to);

}  // namespace book
