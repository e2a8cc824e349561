// A look is a transaction that reads, where others can write meanwhile; else only the order is held, and every row is
// as it is when it is read.
#include "providers/book/lookout.h"

#include "providers/book/change_log.h"
#include "providers/book/members.h"
#include "providers/book/schema.h"
#include "providers/book/search.h"

namespace book {
namespace {

// Sorts behind every key that begins like this.
constexpr char kBehind = '\xFF';

bool FindMemberRow(Database& database, const Arrangement& arrangement, const Member& member, RowRef* ref) {
  if (FindRow(database, arrangement, member.key, ref)) return true;
  // A number whose key differs here from that in the file it came from is known by its digits.
  return member.key.number != 0 && FindNumber(database, member.key.entry, member.number, ref);
}

void FillIn(Database& database, const Arrangement& arrangement, Member* member) {
  if (!member->isOurs) return;
  RowRef ref;
  member->isGone = !FindMemberRow(database, arrangement, *member, &ref);
  if (!member->isGone) member->row = ReadRow(database, arrangement, ref);
}

}  // namespace

Lookout::Lookout(std::shared_ptr<Core> core, NameForm names)
    : core_(std::move(core)), names_(names), database_(core_->TakeReader()) {
  Query mode(*database_, "PRAGMA journal_mode");
  canStay_ = mode.Next() && mode.Text(0) == "wal";
}

Lookout::~Lookout() {
  order_.reset();
  core_->GiveReader(std::move(database_));
}

bool Lookout::Refresh() {
  database_->Rollback();
  database_->Run("BEGIN");
  const int64_t version = database_->Number("PRAGMA data_version");
  const bool isNew = version != seenVersion_;
  if (isNew) ReadAnew();
  seenVersion_ = version;
  if (!canStay_) database_->Rollback();
  return isNew;
}

void Lookout::ReadAnew() {
  seenVersion_ = -1;
  order_.reset();
  arrangement_ = ArrangementFor(*database_, names_);
  lastChange_ = LastChange(*database_);
  if (!canStay_) order_ = OrderInMemory(*database_, *arrangement_);
}

const RowOrder& Lookout::order() {
  if (order_ == nullptr) order_ = OrderInFile(*database_, *arrangement_);
  return *order_;
}

View::View(std::unique_ptr<Lookout> lookout) : lookout_(std::move(lookout)) {}
View::~View() = default;

HRESULT View::Refresh(bool* changed) {
  return Answer([&] {
    const bool isNew = lookout_->Refresh();
    if (changed != nullptr) *changed = isNew;
  });
}

HRESULT View::ChangesUntil(const View& newer, Changes* changes) const {
  return Answer([&] {
    int64_t last = lookout_->lastChange();
    *changes = ReadChanges(newer.lookout_->database(), &last, false);
  });
}

int64_t View::LastChange() const { return lookout_->lastChange(); }
bool View::IsSnapshot() const { return lookout_->IsSnapshot(); }

HRESULT View::Count(uint64_t* rows) {
  return Answer([&] { *rows = lookout_->order().Count(); });
}

HRESULT View::Refs(uint64_t first, std::size_t count, std::vector<RowRef>* refs) {
  return Answer([&] { *refs = lookout_->order().Refs(first, count); });
}

HRESULT View::Window(uint64_t first, std::size_t count, std::vector<Row>* rows) {
  return Answer([&] { *rows = lookout_->order().Rows(first, count); });
}

HRESULT View::Rows(std::span<const RowRef> refs, std::vector<Row>* rows) {
  return Answer([&] {
    std::vector<Row> read;
    read.reserve(refs.size());
    for (const RowRef ref : refs) read.push_back(ReadRow(lookout_->database(), lookout_->arrangement(), ref));
    *rows = std::move(read);
  });
}

HRESULT View::RowOf(const RowKey& key, Row* row) {
  return Answer([&] {
    RowRef ref;
    if (!FindRow(lookout_->database(), lookout_->arrangement(), key, &ref)) Fail(MAPI_E_NOT_FOUND);
    *row = ReadRow(lookout_->database(), lookout_->arrangement(), ref);
  });
}

HRESULT View::PositionOf(RowRef ref, uint64_t* position) {
  return Answer([&] {
    RowPlace place;
    if (!FindPlace(lookout_->database(), lookout_->arrangement(), ref, &place)) Fail(MAPI_E_NOT_FOUND);
    *position = lookout_->order().Before(place);
  });
}

HRESULT View::ShownOf(const EntryKey& key, std::vector<ShownRow>* rows) {
  return Answer([&] {
    std::vector<ShownRow> shown;
    for (const PlacedRow& each : lookout_->order().OfEntry(IdOfKey(lookout_->database(), key)))
      shown.push_back({each.position, ReadRow(lookout_->database(), lookout_->arrangement(), each.ref)});
    *rows = std::move(shown);
  });
}

HRESULT View::SeekName(std::string_view prefix, uint64_t* first, uint64_t* end) {
  return Answer([&] {
    RowPlace place;
    place.sort = lookout_->arrangement().Prefix(prefix);
    *first = lookout_->order().Before(place);
    place.sort += kBehind;
    *end = prefix.empty() ? lookout_->order().Count() : lookout_->order().Before(place);
  });
}

HRESULT View::FindName(std::string_view name, std::size_t limit, std::vector<RowRef>* refs) {
  return Answer([&] { *refs = RowsNamed(lookout_->database(), lookout_->arrangement(), name, limit); });
}

HRESULT View::Namesakes(std::string_view name, std::vector<Row>* rows) {
  constexpr std::size_t kMost = 1000;
  std::vector<RowRef> refs;
  const HRESULT hr = FindName(name, kMost, &refs);
  return FAILED(hr) ? hr : Rows(refs, rows);
}

HRESULT View::FindWords(std::string_view words, std::size_t limit, std::vector<RowRef>* refs) {
  return Answer([&] { *refs = RowsWithWords(lookout_->database(), lookout_->arrangement(), words, limit); });
}

HRESULT View::FindDigits(std::string_view digits, std::size_t limit, std::vector<RowRef>* refs) {
  return Answer(
      [&] { *refs = RowsWithDigits(lookout_->database(), lookout_->arrangement(), digits, limit); });
}

HRESULT View::FindText(Column column, Match match, std::string_view text, std::vector<RowRef>* refs) {
  return Answer(
      [&] { *refs = RowsWithText(lookout_->database(), lookout_->arrangement(), column, match, text); });
}

HRESULT View::Order(std::span<const SortColumn> columns, std::vector<RowRef>* refs) {
  return Answer([&] {
    *refs = columns.empty() ? lookout_->order().Refs(0, lookout_->order().Count())
                            : SortedRows(lookout_->database(), lookout_->arrangement(), columns);
  });
}

HRESULT View::Read(const EntryKey& key, Entry* entry) {
  return Answer([&] {
    Entry read;
    if (!ReadEntry(lookout_->database(), key, &read)) Fail(MAPI_E_NOT_FOUND);
    *entry = std::move(read);
  });
}

HRESULT View::MemberCount(const EntryKey& list, uint64_t* count) {
  return Answer([&] { *count = CountMembers(lookout_->database(), IdOf(lookout_->database(), list)); });
}

HRESULT View::Members(const EntryKey& list, uint64_t first, std::size_t count, std::vector<Member>* members) {
  return Answer([&] {
    const int64_t id = IdOf(lookout_->database(), list);
    if (id == 0) Fail(MAPI_E_NOT_FOUND);
    std::vector<Member> read =
        ReadMembers(lookout_->database(), id, static_cast<int64_t>(first), static_cast<int64_t>(count));
    for (Member& member : read) FillIn(lookout_->database(), lookout_->arrangement(), &member);
    *members = std::move(read);
  });
}

}  // namespace book
