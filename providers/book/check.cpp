// Reads a whole book: what the engine says of the file, whether every card can be read, and whether what is made of the
// cards agrees with them.
#include <algorithm>

#include "providers/book/buckets.h"
#include "providers/book/damage.h"
#include "providers/book/derived.h"
#include "providers/book/file.h"
#include "providers/book/schema.h"
#include "providers/book/store.h"

namespace book {
namespace {

constexpr std::size_t kMostFindings = 100;
constexpr char kRepair[] = "Repair the book into a new file.";
constexpr std::string_view kHeading = "*** in database";
constexpr uint64_t kPositionStep = 400;  // every stretch is come by

std::vector<std::string_view> LinesOf(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    if (end != 0) lines.push_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return lines;
}

class Checker {
 public:
  Checker(const std::wstring& path, uint32_t format, Health* health)
      : database_(path, Database::Access::kRead), isOlder_(format < kFormat), health_(*health) {
    database_.Run("BEGIN");
  }

  void Run() {
    const bool isReadable = Survives([this] {
      CheckEngine();
      CheckEntries();
    });
    if (!isReadable) return CountDamaged();
    if (isOlder_) return;
    CheckRows();
    for (const Arrangement& each : arrangements_) CheckPositions(each);
  }

 private:
  void Find(Finding finding) {
    health_.code = MAPI_E_CORRUPT_STORE;
    if (health_.findings.size() < kMostFindings) health_.findings.push_back(std::move(finding));
  }
  void Find(Fault fault, std::string sentence, int64_t entry = 0, std::string name = {}) {
    Find(Finding{fault, entry, std::move(name), std::move(sentence), kRepair});
  }
  void CountDamaged();
  void CheckEngine();
  void CheckEntries();
  void CheckEntry(const Query& entry);
  bool IsPlaced(int64_t id, const Derived& derived);
  void CheckNumbers(int64_t id, const Derived& derived);
  void CheckRows();
  void CheckPositions(const Arrangement& arrangement);

  Database database_;
  const bool isOlder_;  // what is made of cards is made anew when the book is opened
  Health& health_;
  std::vector<Arrangement> arrangements_;
};

// The engine's words, a finding a line below a heading such as "*** in database main ***".
void Checker::CheckEngine() {
  Query query(database_, "PRAGMA integrity_check(20)");
  while (query.Next()) {
    if (query.Text(0) == "ok") continue;
    std::string words;
    for (const std::string_view line : LinesOf(query.Text(0))) {
      const bool isHeading = line.substr(0, kHeading.size()) == kHeading;
      if (!isHeading) words.append(words.empty() ? "" : "; ").append(line);
    }
    Find(Fault::kFile, "The file is damaged. The database says: " + words + ".");
  }
}

// A book whose tables cannot be gone through: by the numbers of its entries, so that a page takes along no more than what
// lies on it.
void Checker::CountDamaged() {
  Find(Fault::kTables, "The tables of the file cannot be gone through.");
  health_.contacts = health_.lists = health_.deleted = health_.damaged = 0;
  const int64_t last = LastEntry(database_).entry;
  for (int64_t id = 1; id <= last; ++id) {
    const EntryState state = StateOfEntry(database_, id);
    health_.contacts += state == EntryState::kReadable;
    if (state != EntryState::kDamaged) continue;
    ++health_.damaged;
    Find(FindingOfEntry(database_, id));
  }
}

void Checker::CheckEntries() {
  if (!isOlder_) arrangements_ = ReadArrangements(database_);
  Query entries(database_,
                "SELECT e.id, e.key, e.flags, e.name, e.deleted, c.text FROM entry e LEFT JOIN card "
                "c ON c.entry = e.id");
  while (entries.Next()) {
    const bool isList = (entries.Integer(2) & kIsList) != 0;
    if (!entries.IsNull(4)) {
      ++health_.deleted;
    } else {
      ++(isList ? health_.lists : health_.contacts);
    }
    CheckEntry(entries);
  }
}

void Checker::CheckEntry(const Query& entry) {
  const std::string name(entry.Text(3));
  formats::Contact contact;
  try {
    contact = ContactOfCard(entry.Text(5));
  } catch (const Failure&) {
    ++health_.damaged;
    return Find(FindingOfEntry(database_, entry.Integer(0)));
  }
  const Bytes key = entry.Blob(1);
  const EntryKey expected = KeyOfUid(contact.uid);
  if (!std::equal(key.begin(), key.end(), expected.begin(), expected.end()))
    Find(Fault::kIdentifier, "The identifier of \"" + name + "\" is not that of its card.", entry.Integer(0),
         name);
  if (!entry.IsNull(4) || isOlder_) return;
  const Derived derived = DeriveEntry(contact, static_cast<uint32_t>(entry.Integer(2)), arrangements_);
  if (contact.name != name || !IsPlaced(entry.Integer(0), derived))
    Find(Fault::kListing, "\"" + name + "\" is not listed as its card says.", entry.Integer(0), name);
  CheckNumbers(entry.Integer(0), derived);
}

bool Checker::IsPlaced(int64_t id, const Derived& derived) {
  Query places(
      database_,
      "SELECT p.sort FROM place p JOIN arrangement a ON a.number = p.arrangement WHERE p.entry = ? ORDER "
      "BY a.number & 1, a.number",
      id);
  std::size_t count = 0;
  for (; places.Next() && count < derived.sorts.size(); ++count) {
    if (!std::ranges::equal(places.Blob(0), BytesOf(derived.sorts[count]))) return false;
  }
  return count == derived.sorts.size();
}

void Checker::CheckNumbers(int64_t id, const Derived& derived) {
  Query numbers(database_, "SELECT key, text, digits FROM number WHERE entry = ? ORDER BY ordinal", id);
  std::size_t count = 0;
  bool isSame = true;
  for (; numbers.Next(); ++count) {
    isSame = isSame && count < derived.numbers.size() && numbers.Integer(0) == derived.numbers[count].key &&
             numbers.Text(1) == derived.numbers[count].text &&
             numbers.Text(2) == derived.numbers[count].digits;
  }
  if (!isSame || count != derived.numbers.size())
    Find(Fault::kNumbers, "The numbers of \"" + derived.name + "\" are not those of its card.", id,
         derived.name);
}

void Checker::CheckRows() {
  const int64_t missing = database_.Number(
      "SELECT count(*) FROM entry e WHERE e.deleted IS NULL AND (SELECT count(*) FROM arrangement) * max(1, "
      "(SELECT count(*) FROM number n WHERE n.entry = e.id AND n.kind = 0 AND (e.flags & 1) = 0)) <> (SELECT "
      "count(*) FROM place p CROSS JOIN row r ON r.sort = p.sort AND r.entry = p.entry WHERE p.entry = "
      "e.id)");
  if (missing != 0)
    Find(Fault::kRows,
         "Rows of " + std::to_string(missing) + " entries are missing from the list, or too many.");
  const int64_t mails = database_.Number(
      "SELECT (SELECT count(DISTINCT entry) FROM row WHERE email <> '') - (SELECT count(*) FROM mail)");
  if (mails != 0) Find(Fault::kMails, "Not all e-mail addresses can be searched for.");
}

// Every stretch of rows is counted once.
void Checker::CheckPositions(const Arrangement& arrangement) {
  Buckets buckets(arrangement);
  buckets.Load(database_);
  RowPlace last{arrangement.begin()};
  health_.rows = CountRows(database_, last, RowPlace{arrangement.end()});
  bool isRight = buckets.Count() == health_.rows;
  uint64_t counted = 0;
  for (uint64_t position = 0; isRight && position < buckets.Count(); position += kPositionStep) {
    uint64_t skip = 0, before = 0;
    const RowPlace& place = buckets.Find(position, &skip);
    buckets.Before(place, &before);
    counted += CountRows(database_, last, place);
    isRight = counted == before;
    last = place;
  }
  if (!isRight) Find(Fault::kPositions, "The positions of rows are not right.");
}

}  // namespace

HRESULT Check(const std::wstring& path, Health* health) {
  *health = {};
  const HRESULT hr = Answer([&] {
    const std::wstring full = ResolvePath(path);
    const FileFacts facts = ExamineFile(full);
    if (facts.format > kFormat) Fail(MAPI_E_VERSION);
    Checker(full, facts.format, health).Run();
  });
  if (FAILED(hr)) health->code = hr;
  return health->code;
}

}  // namespace book
