// What lies in a book: its containers and some of its entries, found the way a client finds them.
#pragma once

#include "tools/orvctl/check/stage.h"

namespace orvctl::check {

struct Found {
  Bytes id;
  ULONG type = 0;
  WideString name;
  Bytes container;    // that lists it; empty for a container
  Tags missing = {};  // of kEntryColumns, in its row
};

// Of a container only the first entries are looked at.
inline constexpr LONG kMostEntries = 300;

struct Tour {
  explicit Tour(const Stage& stage);

  // Some of each kind: the first ones, and others evenly spread over the rest.
  std::vector<Found> Sample(size_t most) const;
  // One that is no container; none: the check is not offered.
  const Found& AnyEntry() const;
  // What every row must hold, for whoever finds entries by name.
  void RequireColumn(ULONG tag) const;
  // Every object: the root, the containers, the sample.
  std::vector<Found> Everything() const;

  Bytes root;
  std::vector<Found> containers;
  std::vector<ULONG> containerFlags;
  std::vector<Found> entries;
};

// The provider's row, and its root container: a finding of their own rules where there is none.
Answer RequireRow(const Stage& stage);
Opened RequireRoot(const Stage& stage, const Bytes& id);

// What no entry has: a property in the range of nobody's, a name.
constexpr ULONG kUnknownTag = PROP_TAG(PT_UNICODE, 0x7F12);
constexpr WCHAR kNobody[] = L"\x2603 nobody is called so \x2603";

inline const Tags kRowColumns = {PR_DISPLAY_NAME_W, PR_ENTRYID, PR_OBJECT_TYPE, PR_CONTAINER_FLAGS, PR_DEPTH};
inline const Tags kEntryColumns = {PR_ENTRYID, PR_OBJECT_TYPE, PR_DISPLAY_NAME_W};

// The table with the most rows: that of a container's contents, else the hierarchy. A check that needs more rows than
// it has is not offered.
struct LongestTable {
  LongestTable(const Stage& stage, size_t least);

  // A fresh one with the columns of entries.
  ComPtr<IMAPITable> Make() const;

  const Stage& stage;
  Bytes container;
  bool isContents = false;
  ULONG rows = 0;
};

}  // namespace orvctl::check
