// A small provider that keeps every rule, unless its file is called after a fault: then it breaks that one. It offers a
// container of fixed entries and, where it is configured with a file, one whose entries may be changed.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "orv/orvbase.hpp"

namespace faulty {

using namespace orv::sdk;
using Bytes = std::vector<BYTE>;

// Whether the library's file is called so.
bool Has(std::string_view fault);

// What a failed check must be traced to, so nothing else may fail beside it: of a fault the first use counts only.
struct Property {
  ULONG tag;
  LONG number = 0;
  std::wstring text = {};
  Bytes bytes = {};
};
using Properties = std::vector<Property>;

// The last is no entry: its identifier stands for a new list.
enum Kind : BYTE { kRoot, kFixed, kOwn, kFixedEntry, kOwnEntry, kListTemplate };
constexpr ULONG kFixedEntries = 600;

struct Ref {
  Kind kind = kRoot;
  ULONG key = 0;
};

struct Record {
  std::wstring name, number;
  bool isList = false;
  std::vector<Bytes> members = {};  // identifiers
  ULONG version = 0;
};

struct Listener {
  ULONG connection;
  LPMAPIADVISESINK sink;
  bool isGone = false;
};

// What all objects of one logon share.
struct Book {
  Book(const Allocator& routines, IOrvSupport* support) : allocator(routines), kept(support) {}
  ~Book();

  Bytes MakeId(const Ref& ref) const;
  bool ReadId(ULONG size, const ENTRYID* id, Ref* ref) const;
  bool IsThere(const Ref& ref);
  Properties PropertiesOf(const Ref& ref);
  std::vector<Ref> RowsOf(const Ref& container);
  bool IsList(const Ref& ref);
  void Load();
  void Store();
  void Tell(ULONG event, const Bytes& id);

  Allocator allocator;
  IOrvSupport* kept;
  MAPIUID uid{};
  std::wstring path;
  Lock lock;  // guards what follows
  std::map<ULONG, Record> records;
  ULONG nextKey = 1;
  std::vector<Listener> listeners;
  ULONG nextConnection = 1;
};
using BookPtr = std::shared_ptr<Book>;

// One root with a value for each tag.
Allocator::Root CopyValues(const Allocator& allocator, const Properties& properties,
                           const std::vector<ULONG>& tags);
const Property* Find(const Properties& properties, ULONG tag);

// Who has a name and says so, for tables and names alike.
std::wstring NameOf(const Properties& properties);

LPMAPITABLE MakeTable(const BookPtr& book, const Ref& container);
HRESULT OpenRef(const BookPtr& book, ULONG size, const ENTRYID* id, ULONG* type, LPUNKNOWN* object);

}  // namespace faulty
