// What a book hands out: keys, rows, members, changes.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "formats/contact.h"

namespace book {

// An entry for ever: the bytes of its UID where that is a UUID, else a hash of the UID.
inline constexpr std::size_t kKeySize = 16;
using EntryKey = std::array<uint8_t, kKeySize>;

// `uid` is not empty; letter case and "urn:uuid:" do not matter.
EntryKey KeyOfUid(std::string_view uid);

// What a table of contents shows is told by: an entry, and one of its fax numbers. A contact without one and a list
// have the number 0.
struct RowKey {
  EntryKey entry{};
  uint32_t number = 0;

  friend bool operator==(const RowKey&, const RowKey&) = default;
};

// A row within one file, for as long as its entry is there: small, so that a table of any size can be held by them.
inline constexpr int32_t kNoNumber = -1;
struct RowRef {
  int64_t entry = 0;
  int32_t ordinal = kNoNumber;  // of the number among all numbers of its contact

  friend bool operator==(const RowRef&, const RowRef&) = default;
};

// How tables list and sort the names of people: as they are written, or "last, first" where both are known.
enum class NameForm : uint8_t { kAsWritten = 0, kLastFirst = 1 };

struct Row {
  RowKey key;
  RowRef ref;
  bool isGone =
      false;  // asked for by its RowRef after its entry or number went: nothing else is set but `ref`
  bool isList = false;
  bool hasNamesake = false;     // another entry has the same name
  bool isOneOfSeveral = false;  // its contact has further fax numbers
  uint32_t version = 0;
  std::string name, company, department, title, email;
  std::string lastFirst;     // the name in this form; empty where its parts are not known
  bool isLastFirst = false;  // that is how it is listed
  std::string number;        // as typed; empty where the key's is 0
  formats::Place place = formats::Place::kNone;
  bool isPreferred = false;

  const std::string& Listed() const { return isLastFirst && !lastFirst.empty() ? lastFirst : name; }
};

struct Entry {
  EntryKey key{};
  uint32_t version = 0;              // grows with every change
  int64_t created = 0, changed = 0;  // seconds since 1970
  formats::Contact contact;          // every number with its key; of a list with its members
};

struct DeletedEntry {
  EntryKey key{};
  int64_t deleted = 0;
  bool isList = false;
  std::string name;
};

// Who is in a list. Which of the texts is set tells what it is; `name` is what it was called when it was added.
struct Member {
  uint32_t id = 0;  // within its list, while it is there
  RowKey key;       // an entry of this book: `isOurs`
  bool isOurs = false;
  bool isGone = false;  // ours, and not in the book any more
  std::string uid;      // ours: as it was given
  std::string foreign;  // bytes of an entry identifier of another provider
  std::string number;   // a number that is no contact's
  std::string email;    // an address that is no contact's
  std::string name;
  std::string rest;  // parameters of its line in a card
  Row row;           // ours and not gone: the row that the member means
};

// Names are as they are listed.
enum class Column : uint8_t { kName, kNumber, kCompany, kDepartment, kTitle, kEmail };
enum class Match : uint8_t { kPrefix, kContains, kEquals, kExists };  // without regard to case and accents

struct SortColumn {
  Column column = Column::kName;
  bool isDescending = false;
};

enum class What : uint8_t { kAdded = 1, kChanged = 2, kRemoved = 3 };
struct Change {
  EntryKey key{};
  What what = What::kChanged;
  bool isList = false;
};
// `isEverything`: too much to tell, look at the whole book anew.
struct Changes {
  std::vector<Change> entries;
  bool isEverything = false;
};

// What a look shows of one entry: its rows, and where they stand.
struct ShownRow {
  uint64_t position = 0;
  Row row;
};

enum class PutResult : uint8_t { kAdded, kUpdated, kEqual, kRejected };

}  // namespace book
