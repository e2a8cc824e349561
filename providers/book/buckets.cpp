// A stretch holds some hundred rows: few enough to step over, and so many that all of them are read in no time.
#include "providers/book/buckets.h"

#include <algorithm>

namespace book {
namespace {

constexpr int64_t kMostRows = 512;

RowPlace PlaceIn(const Query& query) {
  const Bytes sort = query.Blob(0);
  return {std::string(sort.begin(), sort.end()), query.Integer(1), static_cast<int32_t>(query.Integer(2))};
}

}  // namespace

void Buckets::Load(Database& database) {
  buckets_.clear();
  removed_.clear();
  Query query(
      database,
      "SELECT sort, entry, ordinal, count FROM bucket WHERE sort >= ? AND sort < ? ORDER BY sort, entry, "
      "ordinal",
      BytesOf(begin_), BytesOf(end_));
  while (query.Next()) buckets_.push_back({PlaceIn(query), query.Integer(3), false});
  if (buckets_.empty()) buckets_.push_back(First());
}

void Buckets::Rebuild(Database& database) {
  Execute(database, "DELETE FROM bucket WHERE sort >= ? AND sort < ?", BytesOf(begin_), BytesOf(end_));
  buckets_ = {First()};
  removed_.clear();
  Query query(
      database,
      "SELECT sort, entry, ordinal FROM row WHERE sort >= ? AND sort < ? ORDER BY sort, entry, ordinal",
      BytesOf(begin_), BytesOf(end_));
  while (query.Next()) {
    if (buckets_.back().count == kMostRows / 2) buckets_.push_back({PlaceIn(query)});
    ++buckets_.back().count;
  }
}

Buckets::Bucket& Buckets::At(const RowPlace& place) {
  const auto after =
      std::upper_bound(buckets_.begin() + 1, buckets_.end(), place,
                       [](const RowPlace& each, const Bucket& bucket) { return each < bucket.place; });
  return *(after - 1);
}

void Buckets::Add(Database& database, const RowPlace& place) {
  Bucket& bucket = At(place);
  bucket.isChanged = true;
  if (++bucket.count > kMostRows) Split(database, static_cast<std::size_t>(&bucket - buckets_.data()));
}

void Buckets::Remove(const RowPlace& place) {
  Bucket& bucket = At(place);
  bucket.isChanged = true;
  if (--bucket.count > 0 || &bucket == buckets_.data()) return;
  removed_.push_back(bucket.place);
  buckets_.erase(buckets_.begin() + (&bucket - buckets_.data()));
}

void Buckets::Split(Database& database, std::size_t index) {
  const RowPlace from = buckets_[index].place;
  Query middle(database,
               "SELECT sort, entry, ordinal FROM row WHERE (sort, entry, ordinal) >= (?, ?, ?) "
               "ORDER BY sort, entry, ordinal LIMIT 1 OFFSET ?",
               BytesOf(from.sort), from.entry, from.ordinal, kMostRows / 2);
  if (!middle.Next()) return;
  const int64_t rest = buckets_[index].count - kMostRows / 2;
  buckets_[index].count = kMostRows / 2;
  buckets_.insert(buckets_.begin() + static_cast<std::ptrdiff_t>(index) + 1, Bucket{PlaceIn(middle), rest});
}

void Buckets::Save(Database& database) {
  for (const RowPlace& place : removed_)
    Execute(database, "DELETE FROM bucket WHERE sort = ? AND entry = ? AND ordinal = ?", BytesOf(place.sort),
            place.entry, place.ordinal);
  removed_.clear();
  for (Bucket& bucket : buckets_) {
    if (!bucket.isChanged) continue;
    Execute(database, "INSERT OR REPLACE INTO bucket(sort, entry, ordinal, count) VALUES(?, ?, ?, ?)",
            BytesOf(bucket.place.sort), bucket.place.entry, bucket.place.ordinal, bucket.count);
    bucket.isChanged = false;
  }
}

uint64_t Buckets::Count() const {
  int64_t count = 0;
  for (const Bucket& bucket : buckets_) count += bucket.count;
  return static_cast<uint64_t>(count);
}

const RowPlace& Buckets::Find(uint64_t position, uint64_t* skip) const {
  std::size_t index = 0;
  for (; index + 1 < buckets_.size() && position >= static_cast<uint64_t>(buckets_[index].count); ++index)
    position -= static_cast<uint64_t>(buckets_[index].count);
  *skip = position;
  return buckets_[index].place;
}

const RowPlace& Buckets::Before(const RowPlace& place, uint64_t* rows) const {
  std::size_t index = 0;
  int64_t before = 0;
  for (; index + 1 < buckets_.size() && buckets_[index + 1].place <= place; ++index)
    before += buckets_[index].count;
  *rows = static_cast<uint64_t>(before);
  return buckets_[index].place;
}

uint64_t CountRows(Database& database, const RowPlace& from, const RowPlace& to) {
  Query query(database,
              "SELECT count(*) FROM row WHERE (sort, entry, ordinal) >= (?, ?, ?) AND (sort, entry, ordinal) "
              "< (?, ?, ?)",
              BytesOf(from.sort), from.entry, from.ordinal, BytesOf(to.sort), to.entry, to.ordinal);
  query.Next();
  return static_cast<uint64_t>(query.Integer(0));
}

}  // namespace book
