#include "profiles/registry_snapshot.h"

#include <algorithm>
#include <cstring>
#include <optional>

namespace orv::registry_snapshot {
namespace {

// A key in memory; none where there was none.
struct Tree {
  std::vector<RegValueData> values;
  std::vector<std::pair<WString, Tree>> subkeys;
};

struct Snapshot {
  WString path;
  Extent extent = Extent::kTree;
  std::optional<Tree> tree;
};

// Deeper trees are not ours and cannot be: a profile has one level of keys.
constexpr int kDeepest = 16;

class Writer {
 public:
  explicit Writer(Bytes& bytes) : bytes_(bytes) {}

  void Number(std::uint32_t number) { Raw(&number, sizeof number); }
  void Text(const WString& text) {
    Number(static_cast<std::uint32_t>(text.size()));
    Raw(text.data(), text.size() * sizeof(WCHAR));
  }
  void Value(const RegValueData& value) {
    Text(value.name);
    Number(value.type);
    Number(static_cast<std::uint32_t>(value.data.size()));
    Raw(value.data.data(), value.data.size());
  }
  void Key(const Tree& tree) {
    Number(static_cast<std::uint32_t>(tree.values.size()));
    for (const RegValueData& value : tree.values) Value(value);
    Number(static_cast<std::uint32_t>(tree.subkeys.size()));
    for (const auto& [name, subkey] : tree.subkeys) {
      Text(name);
      Key(subkey);
    }
  }

 private:
  void Raw(const void* data, std::size_t size) {
    const auto* first = static_cast<const std::byte*>(data);
    bytes_.insert(bytes_.end(), first, first + size);
  }

  Bytes& bytes_;
};

// Believes no length; after the first that does not fit everything reads as nothing.
class Reader {
 public:
  explicit Reader(std::span<const std::byte> bytes) : left_(bytes) {}

  bool Failed() const { return failed_; }
  bool AtEnd() const { return left_.empty(); }

  std::uint32_t Number() {
    std::uint32_t number = 0;
    Raw(&number, sizeof number);
    return number;
  }
  WString Text() {
    const std::size_t length = Number();
    if (length > left_.size() / sizeof(WCHAR)) return Fail(), WString();
    WString text(length, 0);
    Raw(text.data(), length * sizeof(WCHAR));
    return text;
  }
  RegValueData Value() {
    RegValueData value;
    value.name = Text();
    value.type = Number();
    const std::size_t size = Number();
    if (size > left_.size()) return Fail(), value;
    value.data.resize(size);
    Raw(value.data.data(), size);
    return value;
  }
  Tree Key(int depth) {
    Tree tree;
    if (depth > kDeepest) return Fail(), tree;
    for (std::uint32_t i = Number(); i > 0 && !failed_; --i) tree.values.push_back(Value());
    for (std::uint32_t i = Number(); i > 0 && !failed_; --i) {
      WString name = Text();
      tree.subkeys.emplace_back(std::move(name), Key(depth + 1));
    }
    return tree;
  }

 private:
  void Fail() { failed_ = true; }
  void Raw(void* data, std::size_t size) {
    if (size > left_.size()) return Fail();
    if (size != 0) std::memcpy(data, left_.data(), size);
    left_ = left_.subspan(size);
  }

  std::span<const std::byte> left_;
  bool failed_ = false;
};

LSTATUS ReadTree(const RegKey& key, Extent extent, int depth, Tree& tree) {
  if (depth > kDeepest) return ERROR_INVALID_DATA;
  if (const LSTATUS status = key.Values(tree.values); status != ERROR_SUCCESS) return status;
  if (extent == Extent::kValues) return ERROR_SUCCESS;
  std::vector<WString> names;
  if (const LSTATUS status = key.Subkeys(names); status != ERROR_SUCCESS) return status;
  for (WString& name : names) {
    RegKey subkey;
    if (const LSTATUS status = subkey.Open(key.Get(), name, KEY_READ); status != ERROR_SUCCESS) return status;
    Tree& below = tree.subkeys.emplace_back(std::move(name), Tree()).second;
    if (const LSTATUS status = ReadTree(subkey, extent, depth + 1, below); status != ERROR_SUCCESS)
      return status;
  }
  return ERROR_SUCCESS;
}

// Names of keys and values are told apart as the registry does it.
template <class List, class NameOf>
bool Holds(const List& list, const WString& name, NameOf nameOf) {
  return std::any_of(list.begin(), list.end(), [&](const auto& item) {
    return CompareStringOrdinal(nameOf(item).c_str(), -1, name.c_str(), -1, TRUE) == CSTR_EQUAL;
  });
}

LSTATUS RestoreValues(RegKey& key, const Tree& tree) {
  std::vector<RegValueData> now;
  LSTATUS status = key.Values(now);
  for (const RegValueData& value : now) {
    if (status != ERROR_SUCCESS) return status;
    if (!Holds(tree.values, value.name, [](const RegValueData& kept) -> const WString& { return kept.name; }))
      status = key.DeleteValue(value.name.c_str());
  }
  for (const RegValueData& value : tree.values) {
    if (status == ERROR_SUCCESS) status = key.Set(value);
  }
  return status;
}

LSTATUS RestoreTree(RegKey& key, Extent extent, const Tree& tree) {
  LSTATUS status = RestoreValues(key, tree);
  if (extent == Extent::kValues) return status;
  std::vector<WString> now;
  if (status == ERROR_SUCCESS) status = key.Subkeys(now);
  for (const WString& name : now) {
    if (status != ERROR_SUCCESS) return status;
    if (!Holds(tree.subkeys, name, [](const auto& kept) -> const WString& { return kept.first; }))
      status = DeleteTree(key.Get(), name);
  }
  for (const auto& [name, below] : tree.subkeys) {
    RegKey subkey;
    if (status == ERROR_SUCCESS) status = subkey.Create(key.Get(), name);
    if (status == ERROR_SUCCESS) status = RestoreTree(subkey, extent, below);
  }
  return status;
}

LSTATUS RestoreOne(HKEY base, const Snapshot& snapshot) {
  if (!snapshot.tree) {
    return snapshot.extent == Extent::kTree ? DeleteTree(base, snapshot.path) : ERROR_SUCCESS;
  }
  RegKey key;
  const LSTATUS status = key.Create(base, snapshot.path);
  return status == ERROR_SUCCESS ? RestoreTree(key, snapshot.extent, *snapshot.tree) : status;
}

std::optional<Snapshot> ReadOne(Reader& reader) {
  Snapshot snapshot;
  snapshot.path = reader.Text();
  snapshot.extent = static_cast<Extent>(reader.Number());
  if (reader.Number() != 0) snapshot.tree = reader.Key(0);
  const bool known = snapshot.extent == Extent::kTree || snapshot.extent == Extent::kValues;
  if (reader.Failed() || !known || snapshot.path.empty()) return std::nullopt;
  return snapshot;
}

}  // namespace

LSTATUS DeleteTree(HKEY parent, const WString& path) {
  RegKey key;
  LSTATUS status = key.OpenToWrite(parent, path);
  if (status == ERROR_FILE_NOT_FOUND) return ERROR_SUCCESS;
  std::vector<WString> names;
  if (status == ERROR_SUCCESS) status = key.Subkeys(names);
  for (const WString& name : names) {
    if (status == ERROR_SUCCESS) status = DeleteTree(key.Get(), name);
  }
  if (status != ERROR_SUCCESS) return status;
  key = RegKey();
  return RegKey::DeleteKey(parent, path);
}

LSTATUS CopyTree(HKEY base, const WString& from, const WString& to) {
  RegKey source;
  Tree tree;
  LSTATUS status = source.Open(base, from, KEY_READ);
  if (status == ERROR_SUCCESS) status = ReadTree(source, Extent::kTree, 0, tree);
  RegKey target;
  if (status == ERROR_SUCCESS) status = target.Create(base, to);
  return status == ERROR_SUCCESS ? RestoreTree(target, Extent::kTree, tree) : status;
}

LSTATUS Append(HKEY base, const WString& path, Extent extent, Bytes& snapshots) {
  RegKey key;
  LSTATUS status = key.Open(base, path, KEY_READ);
  const bool exists = status != ERROR_FILE_NOT_FOUND;
  Tree tree;
  if (exists && status == ERROR_SUCCESS) status = ReadTree(key, extent, 0, tree);
  if (exists && status != ERROR_SUCCESS) return status;
  Writer writer(snapshots);
  writer.Text(path);
  writer.Number(static_cast<std::uint32_t>(extent));
  writer.Number(exists ? 1 : 0);
  if (exists) writer.Key(tree);
  return ERROR_SUCCESS;
}

LSTATUS Restore(HKEY base, std::span<const std::byte> snapshots, const MayTouch& mayTouch) {
  Reader reader(snapshots);
  std::vector<Snapshot> all;
  while (!reader.AtEnd()) {
    std::optional<Snapshot> one = ReadOne(reader);
    if (!one || !mayTouch(one->path, one->extent)) return ERROR_INVALID_DATA;
    all.push_back(std::move(*one));
  }
  LSTATUS status = ERROR_SUCCESS;
  for (const Snapshot& snapshot : all) {
    if (status == ERROR_SUCCESS) status = RestoreOne(base, snapshot);
  }
  return status;
}

}  // namespace orv::registry_snapshot
