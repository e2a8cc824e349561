// The ordered properties of one object or row. Not locked: the owner of a list serialises access to it.
// Functions that store may throw std::bad_alloc; the list is then as it was.
#pragma once

#include <cstddef>
#include <iterator>
#include <memory>

#include "platform/buffer.h"
#include "props/prop_record.h"

namespace orv {

// Nodes stand in the order of insertion. A property is known by the identifier in its tag: setting a value
// under another type replaces the old one.
class PropList {
 public:
  template <class Node>
  class Iterator {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = Node;
    using difference_type = std::ptrdiff_t;
    using pointer = Node*;
    using reference = Node&;

    explicit Iterator(Node* node = nullptr) noexcept : node_(node) {}
    Node& operator*() const noexcept { return *node_; }
    Node* operator->() const noexcept { return node_; }
    Iterator& operator++() noexcept {
      node_ = node_->next;
      return *this;
    }
    Iterator operator++(int) noexcept {
      Iterator old = *this;
      node_ = node_->next;
      return old;
    }
    bool operator==(const Iterator&) const noexcept = default;

   private:
    Node* node_;
  };

  PropList() noexcept;
  PropList(PropList&& other) noexcept;
  PropList& operator=(PropList&& other) noexcept;
  ~PropList();

  ULONG Count() const noexcept { return count_; }
  Iterator<PropNode> begin() noexcept { return Iterator<PropNode>(first_); }
  Iterator<PropNode> end() noexcept { return Iterator<PropNode>(); }
  Iterator<const PropNode> begin() const noexcept { return Iterator<const PropNode>(first_); }
  Iterator<const PropNode> end() const noexcept { return Iterator<const PropNode>(); }

  void Clear() noexcept;

  // The first node with the tag's identifier (the type does not count), or null.
  const PropNode* Find(ULONG tag) const noexcept;
  PropNode* Find(ULONG tag) noexcept;
  // MAPI_E_NO_ACCESS when the property exists and is read-only.
  HRESULT CheckWritable(ULONG tag) const noexcept;

  // Insert or replace, marked modified. A replaced property keeps its place and its flags.
  HRESULT Set(const SPropValue& value);
  HRESULT SetRecord(const PropRecord& record);
  // Links as Set does but asks nobody: for nodes read from storage.
  void Link(PropNodePtr node);
  // Appends whatever the list holds already, flags untouched: for rows built from a caller's array.
  void Append(PropNodePtr node);
  // Takes the property out; success with a null node when there is none.
  HRESULT Remove(ULONG tag, PropNodePtr& removed);

  // Sets or clears the flags on every node.
  void SetFlags(ULONG flags, bool set) noexcept;

  // MAPI_E_NOT_FOUND without a node of the key's identifier, else as CompareNode. `match` may be null.
  HRESULT FindAndCompare(const SPropValue& key, const PropNode** match = nullptr) const noexcept;

  // The values asked for, in the order of `tags`; all of them in list order when that is null. A missing one
  // is PT_ERROR with MAPI_E_NOT_FOUND, PR_NULL stays PR_NULL. `out` is written unless the result is a
  // failure.
  HRESULT GetValues(const SPropTagArray* tags, PropValues& out) const noexcept;
  // The same as a table's row.
  HRESULT GetRow(const SPropTagArray* tags, SRow& row) const noexcept;
  // The stored tags in list order.
  HRESULT GetTags(MapiBuffer<SPropTagArray>& tags) const noexcept;

 private:
  class Index;
  class Finder;

  // Where the node of an identifier is linked, or null.
  PropNode** SlotOf(ULONG tag) noexcept;
  void AppendAtEnd(PropNodePtr node);
  void ReplaceAt(PropNode** slot, PropNodePtr node) noexcept;
  PropNodePtr UnlinkAt(PropNode** slot) noexcept;
  HRESULT ReadTags(const SPropTagArray& tags, SPropValue* values) const noexcept;
  HRESULT ReadAll(SPropValue* values) const noexcept;

  PropNode* first_ = nullptr;
  PropNode* last_ = nullptr;
  std::unique_ptr<Index> index_;  // only in a list too large to be searched
  ULONG count_ = 0;
  bool repeats_ = false;  // an identifier stands here twice, which only Append can do
};

}  // namespace orv
