// Entries that changed are told by the book. Besides these a change touches whoever stands beside them and bears the
// same name, since one namesake more or less changes how both are shown.
#include "providers/book/provider/row_follow.h"

#include <algorithm>

#include "providers/book/provider/entry_kinds.h"
#include "providers/book/provider/words.h"

namespace book {
namespace {

constexpr size_t kMostChanges = 32;  // of more a table is read anew

class Follower {
 public:
  Follower(const Shown& before, const Shown& after) : before_{before, {}}, after_{after, {}} {}

  bool Follow(std::vector<kit::FollowedRow>* followed, std::vector<Row>* gone) {
    if (!FindTouched()) return false;
    Place(before_);
    Place(after_);
    const bool isArranged = before_.shown.refs != nullptr;
    if (isArranged && !AreOthersAlike()) return false;
    for (const ShownRow& each : before_.rows) TellOld(each, followed, gone);
    for (const ShownRow& each : after_.rows) TellNew(each, followed);
    return true;
  }

 private:
  struct Side {
    Shown shown;
    std::vector<ShownRow> rows;
  };

  bool FindTouched();
  bool Touch(const EntryKey& key, bool isChanged);
  bool TouchNeighbours(const Side& side, const EntryKey& key);
  bool TouchAt(View& view, uint64_t position);
  static void Place(Side& side);
  bool AreOthersAlike() const;
  bool IsTouched(const RowRef& ref) const;
  void TellOld(const ShownRow& row, std::vector<kit::FollowedRow>* followed, std::vector<Row>* gone) const;
  void TellNew(const ShownRow& row, std::vector<kit::FollowedRow>* followed) const;

  Side before_, after_;
  std::vector<EntryKey> changed_, touched_;
};

// The same row for a client: its identifier is.
const ShownRow* FindIn(const std::vector<ShownRow>& rows, const Row& wanted) {
  const auto found = std::find_if(rows.begin(), rows.end(), [&](const ShownRow& each) {
    return each.row.ref.entry == wanted.ref.entry && RefOfRow(each.row) == RefOfRow(wanted);
  });
  return found != rows.end() ? &*found : nullptr;
}

bool Follower::FindTouched() {
  Changes changes;
  View& before = before_.shown.view;
  if (!before.IsSnapshot() || FAILED(before.ChangesUntil(after_.shown.view, &changes))) return false;
  if (changes.isEverything || changes.entries.size() > kMostChanges) return false;
  for (const Change& each : changes.entries) {
    if (!Touch(each.key, true)) return false;
    if (!TouchNeighbours(before_, each.key) || !TouchNeighbours(after_, each.key)) return false;
  }
  return true;
}

bool Follower::Touch(const EntryKey& key, bool isChanged) {
  const auto isKnown = [&key](const std::vector<EntryKey>& keys) {
    return std::find(keys.begin(), keys.end(), key) != keys.end();
  };
  if (isChanged && !isKnown(changed_)) changed_.push_back(key);
  if (isKnown(touched_)) return true;
  touched_.push_back(key);
  for (Side* side : {&before_, &after_}) {
    std::vector<ShownRow> rows;
    if (FAILED(side->shown.view.ShownOf(key, &rows))) return false;
    std::move(rows.begin(), rows.end(), std::back_inserter(side->rows));
  }
  return true;
}

// The rows of an entry lie together.
bool Follower::TouchNeighbours(const Side& side, const EntryKey& key) {
  std::vector<uint64_t> places;
  for (const ShownRow& each : side.rows) {
    if (each.row.key.entry == key) places.push_back(each.position);
  }
  if (places.empty()) return true;
  const auto [first, last] = std::minmax_element(places.begin(), places.end());
  return (*first == 0 || TouchAt(side.shown.view, *first - 1)) && TouchAt(side.shown.view, *last + 1);
}

bool Follower::TouchAt(View& view, uint64_t position) {
  std::vector<Row> rows;
  if (FAILED(view.Window(position, 1, &rows))) return false;
  return rows.empty() || Touch(rows.front().key.entry, false);
}

// In a table that shows some of the rows, or all in another order, they stand elsewhere.
void Follower::Place(Side& side) {
  const std::vector<RowRef>* refs = side.shown.refs;
  if (refs == nullptr) return;
  std::erase_if(side.rows, [refs](ShownRow& each) {
    const auto found = std::find(refs->begin(), refs->end(), each.row.ref);
    each.position = static_cast<uint64_t>(found - refs->begin());
    return found == refs->end();
  });
}

bool Follower::IsTouched(const RowRef& ref) const {
  const auto isIt = [&ref](const ShownRow& each) { return each.row.ref.entry == ref.entry; };
  return std::any_of(before_.rows.begin(), before_.rows.end(), isIt) ||
         std::any_of(after_.rows.begin(), after_.rows.end(), isIt);
}

bool Follower::AreOthersAlike() const {
  std::vector<RowRef> others[2];
  const std::vector<RowRef>* all[] = {before_.shown.refs, after_.shown.refs};
  for (size_t i = 0; i < std::size(all); ++i)
    std::copy_if(all[i]->begin(), all[i]->end(), std::back_inserter(others[i]),
                 [this](const RowRef& each) { return !IsTouched(each); });
  return others[0] == others[1];
}

void Follower::TellOld(const ShownRow& row, std::vector<kit::FollowedRow>* followed,
                       std::vector<Row>* gone) const {
  if (FindIn(after_.rows, row.row) != nullptr) return;
  followed->push_back({static_cast<size_t>(row.position), kit::FollowedRow::kNowhere, {}});
  gone->push_back(row.row);
}

void Follower::TellNew(const ShownRow& row, std::vector<kit::FollowedRow>* followed) const {
  const ShownRow* former = FindIn(before_.rows, row.row);
  kit::FollowedRow told{kit::FollowedRow::kNowhere, static_cast<size_t>(row.position), {}};
  if (former != nullptr) told.before = static_cast<size_t>(former->position);
  const bool isChanged = std::find(changed_.begin(), changed_.end(), row.row.key.entry) != changed_.end();
  const bool isOther = former == nullptr || !AreNamedAlike(former->row, row.row);
  if (isChanged || isOther) followed->push_back(std::move(told));
}

}  // namespace

bool FollowRows(const Shown& before, const Shown& after, std::vector<kit::FollowedRow>* followed,
                std::vector<Row>* gone) {
  return Follower(before, after).Follow(followed, gone);
}

}  // namespace book
