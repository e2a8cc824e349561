// The tables of a book's file, and how one becomes what this program works with.
//
// The truth of an entry is its card (version 4.0 of vCard) and, for a list, its members. Everything else is made of
// them for speed: `row` holds what tables show in their order, once for each arrangement, `place` where that is,
// `number` and `word` what is searched, `bucket` the positions. A deleted entry stays in `entry`, `card` and `member` alone.
#pragma once

#include <string>

#include "providers/book/arrangement.h"
#include "providers/book/text.h"

namespace book {

// In the file's header: this is a book, and of which format.
inline constexpr uint32_t kApplicationId = 0x4F525642;  // "ORVB"
inline constexpr uint32_t kFormat = 3;
inline constexpr uint32_t kOldestFormat = 1;

enum EntryFlags : uint32_t {
  kIsList = 1,
  kHasMadeUid = 2,  // the UID was given here and not by a card
  kIsMerged = 4,    // made of several records of an imported file
};

// A new file at `path`, complete or not there; one that somebody else makes in between is as good. Folders are made.
// Without a UID it gets one.
void CreateBook(const std::wstring& path, NameForm form, const std::string& uid = {});

// Makes an older file one of this format, in one transaction; a copy is kept beside it.
void Upgrade(Database& database, const std::wstring& path, NameForm form);

std::string MetaText(Database& database, const char* name);
void SetMeta(Database& database, const char* name, std::string_view value);

// Numbers that statements spell out: of fax numbers, lists, made UIDs and rows without a number.
static_assert(static_cast<int>(formats::NumberKind::kFax) == 0 && kIsList == 1 && kHasMadeUid == 2 &&
              kNoNumber == -1);

struct Derived;
struct RowOwner {
  int64_t entry = 0;
  EntryKey key{};
  uint32_t flags = 0;
  uint32_t version = 0;
};
// What is searched and shown, all of one entry; a row says all that a table shows, so that tables read what lies side by
// side. Positions are the writer's. `arrangements`: those that `derived` was made for.
void AddDerivedRows(Database& database, std::span<const Arrangement> arrangements, const RowOwner& owner,
                    const Derived& derived);
void RemoveDerivedRows(Database& database, int64_t entry);

// How a connection that writes is set up: what a commit acknowledges is in the file.
void ConfigureWriter(Database& database, int cacheKilobytes);

// Makes everything anew that is made of cards and members; within a transaction.
void RebuildDerived(Database& database, NameForm form);

}  // namespace book
