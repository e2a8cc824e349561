// Random changes to a book and to an obvious one in memory; after each both must show the same.
#include <algorithm>
#include <map>
#include <random>

#include "providers/book/text.h"
#include "tests/book/book_fixture.h"

namespace book::test {
namespace {

constexpr const char* kNames[] = {"Anna Berg", "anna berg", "\xC3\x84nne Berg", "Bo",
                                  "Bo Ek",     "Zed",       "\xE6\x97\xA5"};
constexpr const char* kCompanies[] = {"", "Nordhamn AB", "\xC3\x96st Frakt"};

struct Model {
  // By the order in which entries were made, which is that of equal names.
  struct Known {
    EntryKey key{};
    Contact contact;
    bool isDeleted = false;
  };
  std::vector<Known> entries;

  std::vector<std::string> Rows() const {
    const SortKeys keys = SortKeys::OfUser();
    std::vector<const Known*> sorted;
    for (const Known& each : entries) {
      if (!each.isDeleted) sorted.push_back(&each);
    }
    std::stable_sort(sorted.begin(), sorted.end(), [&](const Known* a, const Known* b) {
      return keys.Key(a->contact.name) < keys.Key(b->contact.name);
    });
    std::vector<std::string> rows;
    for (const Known* each : sorted) AddRows(each->contact, &rows);
    return rows;
  }
  static void AddRows(const Contact& contact, std::vector<std::string>* rows) {
    bool hasFax = false;
    for (const auto& number : contact.numbers) {
      if (number.kind != NumberKind::kFax) continue;
      rows->push_back(contact.name + "|" + number.text);
      hasFax = true;
    }
    if (!hasFax) rows->push_back(contact.name + "|");
  }
};

class ModelTest : public BookTest {
 protected:
  void Run(int changes, const Options& options) {
    const unsigned seed = std::random_device{}();
    random_.seed(seed);
    const auto store = OpenBook(L"a.orvab", options);
    const auto view = Look(*store);
    for (int i = 0; i < changes && !HasFailure(); ++i) {
      Change(*store);
      ASSERT_EQ(view->Refresh(nullptr), S_OK);
      Compare(*view);
    }
    Health health;
    EXPECT_EQ(Check(PathOf(L"a.orvab"), &health), S_OK)
        << (health.findings.empty() ? "" : health.findings[0].text);
    EXPECT_FALSE(HasFailure()) << "seed " << seed;
  }

  unsigned Roll(std::size_t sides) { return static_cast<unsigned>(random_() % sides); }

  Contact RandomContact() {
    Contact contact = Person(kNames[Roll(std::size(kNames))]);
    contact.company = kCompanies[Roll(std::size(kCompanies))];
    for (unsigned i = Roll(4); i > 0; --i) {
      const std::string text = "+1 " + std::to_string(Roll(40));
      contact.numbers.push_back(Roll(3) == 0 ? Phone(text) : Fax(text));
    }
    return contact;
  }

  void Change(Store& store) {
    const unsigned what = Roll(8);
    if (what < 3 || model_.entries.empty()) return AddOne(store);
    Model::Known& known = model_.entries[Roll(model_.entries.size())];
    if (what == 3) return ImportSome(store);
    if (known.isDeleted) return Restore(store, known);
    if (what < 6) return RemoveOne(store, known);
    Contact contact = RandomContact();
    contact.uid = known.contact.uid;
    ASSERT_EQ(store.Change(known.key, contact, kAnyVersion, nullptr), S_OK);
    known.contact = contact;
  }

  void AddOne(Store& store) {
    Contact contact = RandomContact();
    contact.uid = "uid " + std::to_string(model_.entries.size());
    model_.entries.push_back({Add(store, contact), contact, false});
  }

  // Records of entries that are there, deleted or new, all by UID.
  void ImportSome(Store& store) {
    std::unique_ptr<Import> import;
    ASSERT_EQ(store.BeginImport(false, &import), S_OK);
    const std::size_t first = Roll(model_.entries.size());
    for (std::size_t i = first; i < first + 5; ++i) {
      Contact contact = RandomContact();
      contact.uid = "uid " + std::to_string(i);
      if (i >= model_.entries.size()) model_.entries.push_back({KeyOfUid(contact.uid), contact, false});
      model_.entries[i].contact = contact;
      model_.entries[i].isDeleted = false;
      PutResult result{};
      ASSERT_EQ(import->Put(contact, &result, nullptr), S_OK);
    }
    ASSERT_EQ(import->Commit(), S_OK);
  }

  void Restore(Store& store, Model::Known& known) {
    ASSERT_EQ(store.Restore(known.key), S_OK);
    known.isDeleted = false;
  }

  void RemoveOne(Store& store, Model::Known& known) {
    Entry entry;
    ASSERT_EQ(store.Read(known.key, &entry), S_OK);
    RowKey row{known.key, 0};
    auto& numbers = known.contact.numbers;
    const auto isFax = [](const auto& number) { return number.kind == NumberKind::kFax; };
    const auto fax = std::find_if(numbers.begin(), numbers.end(), isFax);
    if (fax != numbers.end())
      row.number = entry.contact.numbers[static_cast<std::size_t>(fax - numbers.begin())].key;
    if (std::count_if(numbers.begin(), numbers.end(), isFax) > 1) {
      numbers.erase(fax);
    } else {
      known.isDeleted = true;
    }
    ASSERT_EQ(store.Remove({&row, 1}, nullptr), S_OK);
  }

  void Compare(View& view) {
    const std::vector<std::string> expected = model_.Rows();
    uint64_t count = 0;
    ASSERT_EQ(view.Count(&count), S_OK);
    ASSERT_EQ(count, expected.size());
    const std::vector<Row> rows = AllRows(view);
    ASSERT_EQ(Texts(rows), expected);
    CompareWindow(view, expected);
    CompareNames(view, rows);
    CompareSearches(view, rows);
  }

  void CompareWindow(View& view, const std::vector<std::string>& expected) {
    const std::size_t first = Roll(expected.size() + 2);
    std::vector<Row> window;
    ASSERT_EQ(view.Window(first, 3, &window), S_OK);
    const std::size_t begin = std::min(first, expected.size()), end = std::min(first + 3, expected.size());
    EXPECT_EQ(Texts(window), (Lines{expected.begin() + static_cast<std::ptrdiff_t>(begin),
                                    expected.begin() + static_cast<std::ptrdiff_t>(end)}));
  }

  void CompareNames(View& view, const std::vector<Row>& rows) {
    uint64_t first = 0, end = 0;
    ASSERT_EQ(view.SeekName("anna b", &first, &end), S_OK);
    const auto begins = [](const Row& row) { return Folded(row.name).starts_with("anna b"); };
    EXPECT_EQ(end - first, static_cast<uint64_t>(std::count_if(rows.begin(), rows.end(), begins)));
    if (rows.empty()) return;
    const std::size_t index = Roll(rows.size());
    uint64_t position = 0;
    ASSERT_EQ(view.PositionOf(rows[index].ref, &position), S_OK);
    EXPECT_EQ(position, index);
    Row found;
    ASSERT_EQ(view.RowOf(rows[index].key, &found), S_OK);
    if (rows[index].key.number != 0) {
      EXPECT_EQ(found.ref, rows[index].ref);
    }
  }

  void CompareSearches(View& view, const std::vector<Row>& rows) {
    Lines words, digits;
    for (const Row& row : rows) {
      const bool isBerg = Folded(row.name).find("berg") != std::string::npos;
      if (isBerg && row.company == kCompanies[2]) words.push_back(row.name + "|" + row.number);
    }
    std::vector<RowRef> refs;
    ASSERT_EQ(view.FindWords("ber ost", 1000, &refs), S_OK);
    EXPECT_EQ(TextsOf(view, refs), words);
    ASSERT_EQ(view.FindDigits("17", 1000, &refs), S_OK);
    for (const Row& row : TheRows(view, refs)) digits.push_back(row.name);
    EXPECT_EQ(digits, NamesWithDigits("17"));
  }

  std::vector<Row> TheRows(View& view, const std::vector<RowRef>& refs) {
    std::vector<Row> rows;
    EXPECT_EQ(view.Rows(refs, &rows), S_OK);
    return rows;
  }

  // Of each row that a search for digits finds.
  Lines NamesWithDigits(const std::string& wanted) {
    Model found;
    for (const Model::Known& known : model_.entries) {
      Contact contact = known.contact;
      const auto has = [&](const auto& number) {
        const std::string digits = DigitsOf(number.text);
        return digits.starts_with(wanted) || digits.ends_with(wanted);
      };
      const bool byPhone =
          std::any_of(contact.numbers.begin(), contact.numbers.end(),
                      [&](const auto& number) { return number.kind != NumberKind::kFax && has(number); });
      if (!byPhone) std::erase_if(contact.numbers, [&](const auto& number) { return !has(number); });
      if (byPhone || !contact.numbers.empty()) found.entries.push_back({known.key, contact, known.isDeleted});
    }
    Lines names;
    for (const std::string& row : found.Rows()) names.push_back(row.substr(0, row.find('|')));
    return names;
  }

  std::mt19937 random_;
  Model model_;
};

TEST_F(ModelTest, ShowsWhatAnObviousBookWould) { Run(300, {}); }

TEST_F(ModelTest, ShowsTheSameOnARemoteDrive) {
  Options options;
  options.isRemote = true;
  Run(80, options);
}

}  // namespace
}  // namespace book::test
