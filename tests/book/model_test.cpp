// Random changes to a book and to an obvious one in memory; after each both must show the same.
#include <algorithm>
#include <map>
#include <random>

#include "providers/book/text.h"
#include "tests/book/book_fixture.h"
#include "tests/book/writer_process.h"

namespace book::test {
namespace {

constexpr struct {
  const char *name, *given, *surname;
} kCalled[] = {{"Anna Berg", "Anna", "Berg"},
               {"anna berg", "", ""},
               {"\xC3\x84nne Berg", "\xC3\x84nne", "Berg"},
               {"A. B.", "Anna", "Berg"},
               {"Bo", "", "Ek"},
               {"Bo Ek", "Bo", "Ek"},
               {"Zed", "", ""},
               {"\xE6\x97\xA5", "", ""}};
constexpr const char* kCompanies[] = {"", "Nordhamn AB", "\xC3\x96st Frakt"};
constexpr NameForm kForms[] = {NameForm::kAsWritten, NameForm::kLastFirst};

bool IsFax(const formats::ContactNumber& number) { return number.kind == NumberKind::kFax; }

std::string Listed(const Contact& contact, NameForm form) {
  const bool isTurned = form == NameForm::kLastFirst && !contact.given.empty() && !contact.surname.empty();
  return isTurned ? contact.surname + ", " + contact.given : contact.name;
}

struct Model {
  static constexpr std::size_t kNobody = static_cast<std::size_t>(-1);
  struct Listing {
    std::size_t who = kNobody;  // of `entries`
    std::string number, foreign, name;
    friend bool operator==(const Listing& a, const Listing& b) {
      return a.who == b.who && a.number == b.number && a.foreign == b.foreign;
    }
  };
  struct Known {
    EntryKey key{};
    Contact contact;
    bool isDeleted = false;
    std::vector<Listing> members;
  };
  std::vector<Known> entries;  // in the order in which they were made, which is that of equal names

  std::vector<const Known*> Sorted(NameForm form) const {
    const SortKeys keys = SortKeys::OfUser();
    std::vector<const Known*> sorted;
    for (const Known& each : entries) {
      if (!each.isDeleted) sorted.push_back(&each);
    }
    std::stable_sort(sorted.begin(), sorted.end(), [&](const Known* a, const Known* b) {
      return keys.Key(Listed(a->contact, form)) < keys.Key(Listed(b->contact, form));
    });
    return sorted;
  }
  static Lines RowsOf(const std::vector<const Known*>& sorted) {
    Lines rows;
    for (const Known* each : sorted) AddRows(each->contact, &rows);
    return rows;
  }
  Lines Rows(NameForm form) const { return RowsOf(Sorted(form)); }
  static void AddRows(const Contact& contact, Lines* rows) {
    bool hasFax = false;
    for (const auto& number : contact.numbers) {
      if (!IsFax(number)) continue;
      rows->push_back(contact.name + "|" + number.text);
      hasFax = true;
    }
    if (!hasFax) rows->push_back(contact.name + "|");
  }

  Lines Members(const Known& list) const {
    Lines texts;
    for (const Listing& each : list.members) {
      if (each.who == kNobody) {
        texts.push_back(each.name + "|" + each.number);
      } else if (entries[each.who].isDeleted) {
        texts.push_back("gone " + each.name);
      } else {
        Lines rows;
        AddRows(entries[each.who].contact, &rows);
        texts.push_back(rows.front());
      }
    }
    return texts;
  }
  // Whether a list is the other, or has it somewhere.
  bool LeadsTo(std::size_t from, std::size_t list) const {
    return from == list || std::ranges::any_of(entries[from].members, [&](const Listing& each) {
             return each.who != kNobody && LeadsTo(each.who, list);
           });
  }
};

class ModelTest : public BookTest {
 protected:
  void Run(int changes, const Options& options) {
    const unsigned seed = std::random_device{}();
    random_.seed(seed);
    isShared_ = !options.isRemote;
    std::map<NameForm, std::shared_ptr<Store>> stores;
    std::map<NameForm, std::unique_ptr<View>> views;
    for (const NameForm form : kForms) {
      Options own = options;
      own.names = form;
      stores[form] = OpenBook(L"a.orvab", own);
      views[form] = Look(*stores[form]);
    }
    for (int i = 0; i < changes && !HasFailure(); ++i) {
      Change(*stores[kForms[Roll(std::size(kForms))]]);
      for (const NameForm form : kForms) {
        ASSERT_EQ(views[form]->Refresh(nullptr), S_OK);
        Compare(*views[form], form);
      }
    }
    Health health;
    EXPECT_EQ(Check(PathOf(L"a.orvab"), &health), S_OK)
        << (health.findings.empty() ? "" : health.findings[0].text);
    EXPECT_FALSE(HasFailure()) << "seed " << seed;
  }

  unsigned Roll(std::size_t sides) { return static_cast<unsigned>(random_() % sides); }
  std::size_t AnyEntry() { return Roll(model_.entries.size()); }

  Contact RandomContact() {
    const auto& person = kCalled[Roll(std::size(kCalled))];
    Contact contact = Person(person.name);
    contact.given = person.given;
    contact.surname = person.surname;
    contact.company = kCompanies[Roll(std::size(kCompanies))];
    for (unsigned i = Roll(4); i > 0; --i) {
      const std::string text = "+1 " + std::to_string(Roll(40));
      contact.numbers.push_back(Roll(3) == 0 ? Phone(text) : Fax(text));
    }
    return contact;
  }

  void Change(Store& store) {
    const unsigned what = Roll(15);
    if (what < 3 || model_.entries.empty()) return AddOne(store, RandomContact());
    if (what == 3) return AddList(store);
    if (what == 4) return ImportSome(store);
    if (what == 5) return CopyOne(store);
    if (what == 6 && isShared_ && Roll(4) == 0) return LetAnotherProcess();
    if (what < 10) return ChangeSomeList(store);
    Model::Known& known = model_.entries[AnyEntry()];
    if (known.isDeleted) return Restore(store, known);
    if (what < 12 || known.contact.isList) return RemoveOne(store, known);
    Contact contact = RandomContact();
    contact.uid = known.contact.uid;
    ASSERT_EQ(store.Change(known.key, contact, kAnyVersion, nullptr), S_OK);
    known.contact = contact;
  }

  void AddOne(Store& store, Contact contact) {
    contact.uid = "uid " + std::to_string(model_.entries.size());
    const EntryKey key = Add(store, contact);
    model_.entries.push_back({key, std::move(contact), false, {}});
  }

  void AddList(Store& store) {
    Contact list = Person(kCalled[Roll(std::size(kCalled))].name);
    list.isList = true;
    AddOne(store, list);
  }

  // What a book gives makes the same in it.
  void CopyOne(Store& store) {
    const Model::Known& known = model_.entries[AnyEntry()];
    Entry entry;
    const HRESULT hr = store.Read(known.key, &entry);
    ASSERT_EQ(hr, known.isDeleted ? MAPI_E_NOT_FOUND : S_OK);
    if (FAILED(hr)) return;
    const std::vector<Model::Listing> members = known.members;
    AddOne(store, entry.contact);
    model_.entries.back().members = members;
  }

  // Somebody new, or the last such one gone.
  void LetAnotherProcess() {
    const bool adds = person_ == Model::kNobody || model_.entries[person_].isDeleted;
    if (adds) person_ = model_.entries.size();
    const int number = static_cast<int>(person_);
    WriterProcess other(adds ? L"once" : L"drop", PathOf(L"a.orvab"), number);
    ASSERT_EQ(other.Wait(), 0);
    if (!adds) {
      model_.entries[person_].isDeleted = true;
      return;
    }
    const std::string text = std::to_string(number);
    Contact contact = Person("Person " + text, {Fax("+1 555 " + text)}, "person-" + text);
    model_.entries.push_back({KeyOfUid(contact.uid), contact, false, {}});
  }

  // Records of contacts that are there, deleted or new, all by UID.
  void ImportSome(Store& store) {
    std::unique_ptr<Import> import;
    ASSERT_EQ(store.BeginImport(false, &import), S_OK);
    const std::size_t first = AnyEntry();
    for (std::size_t i = first; i < first + 5; ++i) {
      const bool isNew = i >= model_.entries.size();
      if (!isNew && model_.entries[i].contact.isList) continue;
      Contact contact = RandomContact();
      contact.uid = isNew ? "uid " + std::to_string(i) : model_.entries[i].contact.uid;
      if (isNew) model_.entries.push_back({KeyOfUid(contact.uid), {}, false, {}});
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
    const auto fax = std::find_if(numbers.begin(), numbers.end(), IsFax);
    if (fax != numbers.end())
      row.number = entry.contact.numbers[static_cast<std::size_t>(fax - numbers.begin())].key;
    if (std::count_if(numbers.begin(), numbers.end(), IsFax) > 1) {
      numbers.erase(fax);
    } else {
      known.isDeleted = true;
    }
    ASSERT_EQ(store.Remove({&row, 1}, nullptr), S_OK);
  }

  void ChangeSomeList(Store& store) {
    std::vector<Model::Known*> lists;
    for (Model::Known& each : model_.entries) {
      if (each.contact.isList && !each.isDeleted) lists.push_back(&each);
    }
    if (lists.empty()) return AddList(store);
    ChangeMembers(store, *lists[Roll(lists.size())]);
  }

  void ChangeMembers(Store& store, Model::Known& list) {
    const unsigned what = Roll(4);
    if (what > 1 || list.members.empty()) return AddMember(store, list);
    std::vector<Member> members;
    ASSERT_EQ(Look(store)->Members(list.key, 0, 1000, &members), S_OK);
    ASSERT_EQ(members.size(), list.members.size());
    const std::size_t index = Roll(members.size());
    const Model::Listing moved = list.members[index];
    list.members.erase(list.members.begin() + static_cast<std::ptrdiff_t>(index));
    if (what == 0) {
      ASSERT_EQ(store.RemoveMembers(list.key, {&members[index].id, 1}), S_OK);
      return;
    }
    const std::size_t to = Roll(list.members.size() + 1);
    list.members.insert(list.members.begin() + static_cast<std::ptrdiff_t>(to), moved);
    ASSERT_EQ(store.MoveMember(list.key, members[index].id, to), S_OK);
  }

  // A number, somebody of another book, or an entry of this one.
  void AddMember(Store& store, Model::Known& list) {
    Model::Listing added;
    const unsigned what = Roll(5);
    if (what == 0) added.number = "+1 " + std::to_string(Roll(5));
    if (what == 1) added.foreign = std::string("\0f", 2) + static_cast<char>('a' + Roll(3));
    if (what > 1) added.who = AnyEntry();
    added.name = what > 1 ? model_.entries[added.who].contact.name : "other " + std::to_string(what);
    Member member;
    member.isOurs = what > 1;
    if (member.isOurs) member.key.entry = model_.entries[added.who].key;
    member.number = added.number;
    member.foreign = added.foreign;
    member.name = added.name;
    const bool isThere = std::ranges::count(list.members, added) != 0;
    const auto self = static_cast<std::size_t>(&list - model_.entries.data());
    const bool isCircle = !isThere && member.isOurs && model_.LeadsTo(added.who, self);
    ASSERT_EQ(store.AddMembers(list.key, {&member, 1}), isCircle ? MAPI_E_FOLDER_CYCLE : S_OK);
    if (!isThere && !isCircle) list.members.push_back(added);
  }

  void Compare(View& view, NameForm form) {
    const Lines expected = model_.Rows(form);
    uint64_t count = 0;
    ASSERT_EQ(view.Count(&count), S_OK);
    ASSERT_EQ(count, expected.size());
    const std::vector<Row> rows = AllRows(view);
    ASSERT_EQ(Texts(rows), expected);
    CompareWindow(view, expected);
    CompareNames(view, rows);
    CompareSearches(view, form, rows);
    CompareOrder(view, form);
    for (const Model::Known& each : model_.entries) CompareMembers(view, each);
  }

  void CompareWindow(View& view, const Lines& expected) {
    const std::size_t first = Roll(expected.size() + 2);
    std::vector<Row> window;
    ASSERT_EQ(view.Window(first, 3, &window), S_OK);
    const std::size_t begin = std::min(first, expected.size()), end = std::min(first + 3, expected.size());
    EXPECT_EQ(Texts(window), (Lines{expected.begin() + static_cast<std::ptrdiff_t>(begin),
                                    expected.begin() + static_cast<std::ptrdiff_t>(end)}));
  }

  void CompareNames(View& view, const std::vector<Row>& rows) {
    for (const char* prefix : {"anna b", "berg, a", "bo"}) {
      uint64_t first = 0, end = 0;
      ASSERT_EQ(view.SeekName(prefix, &first, &end), S_OK);
      const auto begins = [prefix](const Row& row) { return Folded(row.Listed()).starts_with(prefix); };
      EXPECT_EQ(end - first, static_cast<uint64_t>(std::count_if(rows.begin(), rows.end(), begins)))
          << prefix;
    }
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

  void CompareSearches(View& view, NameForm form, const std::vector<Row>& rows) {
    Lines words;
    for (const Row& row : rows) {
      const bool isBerg = Folded(row.name + row.lastFirst).find("berg") != std::string::npos;
      if (isBerg && row.company == kCompanies[2]) words.push_back(row.name + "|" + row.number);
    }
    std::vector<RowRef> refs;
    ASSERT_EQ(view.FindWords("ber ost", 1000, &refs), S_OK);
    EXPECT_EQ(TextsOf(view, refs), words);
    const std::string digits = std::to_string(Roll(40));
    ASSERT_EQ(view.FindDigits(digits, 1000, &refs), S_OK);
    EXPECT_EQ(TextsOf(view, refs), RowsWithDigits(form, digits)) << digits;
    Lines companies;
    for (const Row& row : rows) {
      if (Folded(row.company).find("ham") != std::string::npos)
        companies.push_back(row.name + "|" + row.number);
    }
    ASSERT_EQ(view.FindText(Column::kCompany, Match::kContains, "HAM", &refs), S_OK);
    EXPECT_EQ(TextsOf(view, refs), companies);
  }

  // A fax number finds its row, any other all of its contact.
  Lines RowsWithDigits(NameForm form, const std::string& wanted) {
    Lines rows;
    for (const Model::Known* known : model_.Sorted(form)) {
      Contact contact = known->contact;
      const auto has = [&](const auto& number) {
        const std::string digits = DigitsOf(number.text);
        return digits.starts_with(wanted) || digits.ends_with(wanted);
      };
      const bool byPhone = std::ranges::any_of(
          contact.numbers, [&](const auto& number) { return !IsFax(number) && has(number); });
      if (!byPhone) std::erase_if(contact.numbers, [&](const auto& number) { return !has(number); });
      if (byPhone || !contact.numbers.empty()) Model::AddRows(contact, &rows);
    }
    return rows;
  }

  void CompareOrder(View& view, NameForm form) {
    const SortKeys keys = SortKeys::OfUser();
    std::vector<const Model::Known*> sorted = model_.Sorted(form);
    std::stable_sort(sorted.begin(), sorted.end(), [&](const auto* a, const auto* b) {
      return keys.Key(b->contact.company) < keys.Key(a->contact.company);
    });
    const SortColumn down{Column::kCompany, true};
    std::vector<RowRef> refs;
    ASSERT_EQ(view.Order({&down, 1}, &refs), S_OK);
    EXPECT_EQ(TextsOf(view, refs), Model::RowsOf(sorted));
  }

  void CompareMembers(View& view, const Model::Known& list) {
    if (list.isDeleted || !list.contact.isList) return;
    std::vector<Member> members;
    ASSERT_EQ(view.Members(list.key, 0, 1000, &members), S_OK);
    Lines texts;
    for (const Member& each : members) {
      const std::string& name = each.isOurs ? each.row.name : each.name;
      texts.push_back(each.isGone ? "gone " + each.name : name + "|" + each.row.number + each.number);
    }
    EXPECT_EQ(texts, model_.Members(list));
  }

  std::mt19937 random_;
  Model model_;
  bool isShared_ = true;                 // with another process of this computer
  std::size_t person_ = Model::kNobody;  // the last one that another process has made
};

TEST_F(ModelTest, ShowsWhatAnObviousBookWould) { Run(300, {}); }

TEST_F(ModelTest, ShowsTheSameOnARemoteDrive) {
  Options options;
  options.isRemote = true;
  Run(80, options);
}

}  // namespace
}  // namespace book::test
