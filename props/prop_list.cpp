// Links, finds and reads the properties of one list. Small lists are searched from where the last search
// ended; large ones have an index.
#include "props/prop_list.h"

#include <array>
#include <cstring>
#include <unordered_map>

#include "orv/orvcodes.h"
#include "orv/orvtags.h"
#include "props/prop_value.h"

namespace orv {
namespace {

// Above this many properties a search costs more than a look into the index.
constexpr ULONG kIndexedCount = 48;

// For slots that bear a tag and little else: with the padding, so that a block that was not cleared shows nothing.
SPropValue& Cleared(SPropValue& slot) noexcept {
  return *static_cast<SPropValue*>(std::memset(static_cast<void*>(&slot), 0, sizeof slot));
}

bool SameIdentifier(const PropNode& node, ULONG tag) noexcept { return PROP_ID(node.Tag()) == PROP_ID(tag); }

}  // namespace

// For every identifier the slot that links its first node: the list's own first one or a node's `next`.
class PropList::Index {
 public:
  explicit Index(PropNode** first) {
    for (PropNode** slot = first; *slot != nullptr; slot = &(*slot)->next) Add((*slot)->Tag(), slot);
  }

  // The first one stays when an identifier repeats.
  void Add(ULONG tag, PropNode** slot) { slots_.emplace(PROP_ID(tag), slot); }
  PropNode** Find(ULONG tag) const noexcept {
    const auto found = slots_.find(PROP_ID(tag));
    return found == slots_.end() ? nullptr : found->second;
  }
  void Remove(ULONG tag) noexcept { slots_.erase(PROP_ID(tag)); }
  // The node that hung in slot `from` hangs in `to` from now on.
  void Move(const PropNode* node, PropNode** from, PropNode** to) noexcept {
    if (node == nullptr) return;
    const auto found = slots_.find(PROP_ID(node->Tag()));
    if (found->second == from) found->second = to;
  }

 private:
  std::unordered_map<ULONG, PropNode**> slots_;
};

// One search after another. Most look for a neighbour of the node found last, behind it in stored order and before it
// in reverse; for the others, and to step back, the nodes are noted side by side by the first search that wants it.
class PropList::Finder {
 public:
  explicit Finder(const PropList& list) noexcept : list_(list), next_(list.first_) {}

  const PropNode* Find(ULONG tag) noexcept {
    // Of a repeated identifier the first node counts, wherever the last search ended.
    if (list_.repeats_) return list_.Find(tag);
    if (next_ != nullptr && SameIdentifier(*next_, tag)) return Found(next_, place_);
    if (list_.index_) return Found(list_.Find(tag), 0);
    if (noted_ == 0) Note();
    const std::size_t before = place_ >= 2 ? place_ - 2 : noted_ - 1;
    if (noted_ != 0 && SameIdentifier(*nodes_[before], tag)) return Found(nodes_[before], before);
    return Search(tag);
  }

 private:
  static constexpr std::size_t kHashes = 64;
  static std::size_t HashOf(ULONG tag) noexcept { return PROP_ID(tag) % kHashes; }

  const PropNode* Found(const PropNode* node, std::size_t place) noexcept {
    if (node == nullptr) return nullptr;
    next_ = node->next;
    place_ = place + 1;
    return node;
  }

  const PropNode* Search(ULONG tag) noexcept {
    if (!hashed_) Hash();
    std::size_t at = firstOf_[HashOf(tag)];
    while (at < noted_ && !SameIdentifier(*nodes_[at], tag)) ++at;
    return at < noted_ ? Found(nodes_[at], at) : nullptr;
  }

  void Note() noexcept {
    for (const PropNode& node : list_) nodes_[noted_++] = &node;
  }
  void Hash() noexcept {
    firstOf_.fill(kIndexedCount);
    for (std::size_t at = noted_; at-- > 0;) firstOf_[HashOf(nodes_[at]->Tag())] = static_cast<BYTE>(at);
    hashed_ = true;
  }

  const PropList& list_;
  const PropNode* next_;
  std::size_t place_ = 0;  // of the next node
  std::size_t noted_ = 0;
  bool hashed_ = false;
  // Not cleared: nothing is read that was not noted. Longer lists have the index.
  std::array<const PropNode*, kIndexedCount> nodes_;
  // The place of the first node with the hash; the others come behind it.
  std::array<BYTE, kHashes> firstOf_;
};

PropList::PropList() noexcept = default;
PropList::~PropList() { Clear(); }

PropList::PropList(PropList&& other) noexcept { *this = std::move(other); }

PropList& PropList::operator=(PropList&& other) noexcept {
  if (this == &other) return *this;
  Clear();
  index_ = std::move(other.index_);
  first_ = std::exchange(other.first_, nullptr);
  last_ = std::exchange(other.last_, nullptr);
  count_ = std::exchange(other.count_, 0);
  repeats_ = std::exchange(other.repeats_, false);
  if (index_) index_->Move(first_, &other.first_, &first_);
  return *this;
}

void PropList::Clear() noexcept {
  index_.reset();
  while (first_ != nullptr) PropNodePtr(std::exchange(first_, first_->next));
  last_ = nullptr;
  count_ = 0;
  repeats_ = false;
}

PropNode** PropList::SlotOf(ULONG tag) noexcept {
  if (index_) return index_->Find(tag);
  for (PropNode** slot = &first_; *slot != nullptr; slot = &(*slot)->next) {
    if (SameIdentifier(**slot, tag)) return slot;
  }
  return nullptr;
}

PropNode* PropList::Find(ULONG tag) noexcept {
  PropNode** slot = SlotOf(tag);
  return slot == nullptr ? nullptr : *slot;
}

const PropNode* PropList::Find(ULONG tag) const noexcept { return const_cast<PropList*>(this)->Find(tag); }

HRESULT PropList::CheckWritable(ULONG tag) const noexcept {
  const PropNode* node = Find(tag);
  return node != nullptr && (node->flags & PROPNODE_READONLY) ? MAPI_E_NO_ACCESS : S_OK;
}

HRESULT PropList::Set(const SPropValue& value) {
  if (const HRESULT hr = CheckWritable(value.ulPropTag); FAILED(hr)) return hr;
  PropNodePtr node;
  if (const HRESULT hr = NodeFromValue(value, node); FAILED(hr)) return hr;
  Link(std::move(node));
  return S_OK;
}

HRESULT PropList::SetRecord(const PropRecord& record) {
  if (const HRESULT hr = CheckWritable(record.value.ulPropTag); FAILED(hr)) return hr;
  Link(NodeFromRecord(record));
  return S_OK;
}

void PropList::Link(PropNodePtr node) {
  node->flags = PROPNODE_MODIFIED;
  if (PropNode** slot = SlotOf(node->Tag())) {
    ReplaceAt(slot, std::move(node));
  } else {
    AppendAtEnd(std::move(node));
  }
}

void PropList::Append(PropNodePtr node) {
  const bool repeats = Find(node->Tag()) != nullptr;
  AppendAtEnd(std::move(node));
  repeats_ = repeats_ || repeats;
}

void PropList::AppendAtEnd(PropNodePtr node) {
  PropNode** slot = last_ != nullptr ? &last_->next : &first_;
  // Whatever can fail comes before the list changes.
  if (!index_ && count_ >= kIndexedCount) index_ = std::make_unique<Index>(&first_);
  if (index_) index_->Add(node->Tag(), slot);
  node->next = nullptr;
  last_ = *slot = node.release();
  ++count_;
}

void PropList::ReplaceAt(PropNode** slot, PropNodePtr node) noexcept {
  PropNodePtr old(*slot);
  node->flags |= old->flags;
  node->next = old->next;
  if (index_) index_->Move(node->next, &old->next, &node->next);
  if (last_ == old.get()) last_ = node.get();
  *slot = node.release();
}

HRESULT PropList::Remove(ULONG tag, PropNodePtr& removed) {
  removed.reset();
  if (const HRESULT hr = CheckWritable(tag); FAILED(hr)) return hr;
  if (PropNode** slot = SlotOf(tag)) removed = UnlinkAt(slot);
  return S_OK;
}

PropNodePtr PropList::UnlinkAt(PropNode** slot) noexcept {
  static_assert(offsetof(PropNode, next) == 0);
  PropNodePtr node(*slot);
  if (repeats_) {
    index_.reset();  // a later node of the same identifier may be the first one now
  } else if (index_) {
    index_->Remove(node->Tag());
    index_->Move(node->next, &node->next, slot);
  }
  if (last_ == node.get()) last_ = slot == &first_ ? nullptr : reinterpret_cast<PropNode*>(slot);
  *slot = std::exchange(node->next, nullptr);
  --count_;
  return node;
}

void PropList::SetFlags(ULONG flags, bool set) noexcept {
  for (PropNode& node : *this) node.flags = set ? node.flags | flags : node.flags & ~flags;
}

HRESULT PropList::FindAndCompare(const SPropValue& key, const PropNode** match) const noexcept {
  const PropNode* node = Find(key.ulPropTag);
  const HRESULT hr = node == nullptr ? MAPI_E_NOT_FOUND : CompareNode(*node, key);
  if (match != nullptr) *match = FAILED(hr) ? nullptr : node;
  return hr;
}

// The result is that of the last tag that is not PR_NULL: a missing one before it does not show, so that a caller who
// asks for optional properties first still sees success. Every slot is written whole.
HRESULT PropList::ReadTags(const SPropTagArray& tags, SPropValue* values) const noexcept {
  Finder finder(*this);
  HRESULT result = S_OK;
  for (ULONG i = 0; i < tags.cValues; ++i) {
    const ULONG tag = tags.aulPropTag[i];
    if (tag == PR_NULL) {
      Cleared(values[i]).ulPropTag = PR_NULL;
      continue;
    }
    const PropNode* node = finder.Find(tag);
    result = node != nullptr ? ReadNode(*node, values, values[i]) : SetNotFound(Cleared(values[i]), tag);
    if (FAILED(result)) return result;
  }
  return result;
}

HRESULT PropList::ReadAll(SPropValue* values) const noexcept {
  SPropValue* value = values;
  for (const PropNode& node : *this) {
    if (const HRESULT hr = ReadNode(node, values, *value++); FAILED(hr)) return hr;
  }
  return S_OK;
}

HRESULT PropList::GetValues(const SPropTagArray* tags, PropValues& out) const noexcept {
  if (tags != nullptr && tags->cValues == 0) return MAPI_E_INVALID_PARAMETER;
  const ULONG count = tags != nullptr ? tags->cValues : count_;
  MapiBuffer<SPropValue> values;
  if (const HRESULT hr = values.AllocateArrayToFill(count); FAILED(hr)) return hr;
  const HRESULT hr = tags != nullptr ? ReadTags(*tags, values.Get()) : ReadAll(values.Get());
  if (FAILED(hr)) return hr;
  out.count = count;
  out.values = std::move(values);
  return hr;
}

HRESULT PropList::GetRow(const SPropTagArray* tags, SRow& row) const noexcept {
  PropValues found;
  const HRESULT hr = GetValues(tags, found);
  if (FAILED(hr)) return hr;
  row = {0, found.count, found.values.Detach()};
  return hr;
}

HRESULT PropList::GetTags(MapiBuffer<SPropTagArray>& tags) const noexcept {
  MapiBuffer<SPropTagArray> found;
  if (const HRESULT hr = found.Allocate(CbNewSPropTagArray(std::size_t{count_})); FAILED(hr)) return hr;
  for (const PropNode& node : *this) found->aulPropTag[found->cValues++] = node.Tag();
  tags = std::move(found);
  return S_OK;
}

}  // namespace orv
