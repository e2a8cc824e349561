#include "tools/orvctl/check/ledger.h"

#include <algorithm>
#include <cstdlib>
#include <mutex>

#include "diag/names.h"

namespace orvctl::check {
namespace {

// On either side of a buffer; keeps its alignment.
constexpr size_t kGuard = 32;
constexpr BYTE kGuardByte = 0xFB, kDeadByte = 0xDD;
constexpr size_t kLargest = size_t{1} << 30;
// Freed buffers are kept for a while, to see who still writes to them or frees them again.
constexpr size_t kMostRetired = size_t{64} << 20;
constexpr size_t kMostNotes = 16;

bool IsFilled(const BYTE* bytes, size_t size, BYTE with) {
  return std::all_of(bytes, bytes + size, [with](BYTE each) { return each == with; });
}

}  // namespace

// Never destroyed: a provider may free while the process ends.
Ledger& Ledger::Get() {
  static Ledger* const ledger = new Ledger;
  return *ledger;
}

SCODE STDAPICALLTYPE Ledger::AllocateRoot(ULONG size, LPVOID* buffer) {
  Ledger& ledger = Get();
  const std::lock_guard guard(ledger.lock_);
  return ledger.Allocate(size, nullptr, buffer);
}

SCODE STDAPICALLTYPE Ledger::AllocateMore(ULONG size, LPVOID object, LPVOID* buffer) {
  Ledger& ledger = Get();
  const std::lock_guard guard(ledger.lock_);
  return ledger.Chain(size, static_cast<BYTE*>(object), buffer);
}

ULONG STDAPICALLTYPE Ledger::FreeRoot(LPVOID buffer) {
  Ledger& ledger = Get();
  const std::lock_guard guard(ledger.lock_);
  return ledger.Free(static_cast<BYTE*>(buffer));
}

SCODE Ledger::Allocate(size_t size, BYTE* root, LPVOID* buffer) {
  *buffer = nullptr;
  const bool fails = countdown_ != 0 && --countdown_ == 0;
  hasFailed_ = hasFailed_ || fails;
  auto* memory = fails || size > kLargest ? nullptr : static_cast<BYTE*>(std::malloc(size + 2 * kGuard));
  if (memory == nullptr) return MAPI_E_NOT_ENOUGH_MEMORY;
  BYTE* const start = memory + kGuard;
  std::fill_n(memory, kGuard, kGuardByte);
  std::fill_n(start, size, BYTE{0});
  std::fill_n(start + size, kGuard, kGuardByte);
  blocks_[start] = Block{size, root != nullptr ? root : start};
  if (root != nullptr) blocks_[root].chained.push_back(start);
  ++live_;
  *buffer = start;
  return S_OK;
}

SCODE Ledger::Chain(ULONG size, BYTE* root, LPVOID* buffer) {
  const auto found = blocks_.find(root);
  const bool isRoot = found != blocks_.end() && found->second.isAlive && found->second.root == root;
  if (isRoot) return Allocate(size, root, buffer);
  const BYTE* start = nullptr;
  const bool isPart = FindLiving(root, &start) != nullptr;
  Note(Misuse::kChaining, isPart ? "a buffer was chained to one that hangs off another root"
                                 : "a buffer was chained to what is no living buffer");
  *buffer = nullptr;
  return MAPI_E_INVALID_PARAMETER;
}

ULONG Ledger::Free(BYTE* buffer) {
  const auto found = blocks_.find(buffer);
  if (found == blocks_.end()) {
    Note(Misuse::kFree, buffer == nullptr ? "null was freed" : "what is no buffer was freed");
  } else if (!found->second.isAlive) {
    Note(Misuse::kFree, "a buffer was freed twice");
  } else if (found->second.root != buffer) {
    Note(Misuse::kFree, "a buffer that hangs off a root was freed by itself");
  } else {
    for (BYTE* each : found->second.chained) Retire(each, blocks_[each]);
    Retire(buffer, found->second);
    Forget();
    return S_OK;
  }
  return static_cast<ULONG>(MAPI_E_INVALID_PARAMETER);
}

void Ledger::Retire(BYTE* start, Block& block) {
  LookAt(start, block);
  std::fill_n(start, block.size, kDeadByte);
  block.isAlive = false;
  --live_;
  retired_.push_back(start);
  retiredBytes_ += block.size + 2 * kGuard;
}

void Ledger::Forget() {
  while (retiredBytes_ > kMostRetired) {
    BYTE* const oldest = retired_.front();
    const Block& block = blocks_[oldest];
    LookAt(oldest, block);
    retiredBytes_ -= block.size + 2 * kGuard;
    retired_.pop_front();
    blocks_.erase(oldest);
    std::free(oldest - kGuard);
  }
}

void Ledger::LookAt(const BYTE* start, const Block& block) {
  const std::string size = std::to_string(block.size) + " bytes";
  if (!IsFilled(start - kGuard, kGuard, kGuardByte))
    Note(Misuse::kBounds, "something was written before the begin of a buffer of " + size);
  if (!IsFilled(start + block.size, kGuard, kGuardByte))
    Note(Misuse::kBounds, "something was written behind the end of a buffer of " + size);
  if (!block.isAlive && !IsFilled(start, block.size, kDeadByte))
    Note(Misuse::kBounds, "something was written into a buffer of " + size + " that had been freed");
}

void Ledger::Note(Misuse kind, const std::string& text) {
  const auto note = std::make_pair(kind, text);
  const bool isKnown = std::find(misuses_.begin(), misuses_.end(), note) != misuses_.end();
  if (!isKnown && misuses_.size() < kMostNotes) misuses_.push_back(note);
}

size_t Ledger::Live() {
  const std::lock_guard guard(lock_);
  return live_;
}

void Ledger::FailNth(size_t n) {
  const std::lock_guard guard(lock_);
  countdown_ = n;
  hasFailed_ = false;
}

bool Ledger::HasFailed() {
  const std::lock_guard guard(lock_);
  return hasFailed_;
}

std::vector<std::string> Ledger::Misuses(Misuse kind) {
  const std::lock_guard guard(lock_);
  for (const auto& [start, block] : blocks_) LookAt(start, block);
  std::vector<std::string> texts;
  for (const auto& [what, text] : misuses_) {
    if (what == kind) texts.push_back(text);
  }
  return texts;
}

const Ledger::Block* Ledger::FindLiving(const void* pointer, const BYTE** start) const {
  const auto* address = static_cast<const BYTE*>(pointer);
  auto next = blocks_.upper_bound(address);
  if (next == blocks_.begin()) return nullptr;
  --next;
  *start = next->first;
  const bool isInside = static_cast<size_t>(address - next->first) <= next->second.size;
  return isInside && next->second.isAlive ? &next->second : nullptr;
}

size_t Ledger::RoomInChain(const void* root, const void* pointer) {
  const std::lock_guard guard(lock_);
  const BYTE* start = nullptr;
  const Block* block = FindLiving(pointer, &start);
  if (block == nullptr || block->root != root) return 0;
  return block->size - static_cast<size_t>(static_cast<const BYTE*>(pointer) - start);
}

bool Ledger::IsInChain(const void* root, const void* pointer, size_t size) {
  return RoomInChain(root, pointer) >= size;
}

bool Ledger::IsRoot(const void* pointer) {
  const std::lock_guard guard(lock_);
  const auto found = blocks_.find(static_cast<const BYTE*>(pointer));
  return found != blocks_.end() && found->second.isAlive && found->second.root == found->first;
}

namespace {

// What a value points at, by its type.
class PointerCheck {
 public:
  explicit PointerCheck(const void* root) : root_(root) {}

  bool IsGood(const SPropValue& value) const {
    const auto& content = value.Value;
    const ULONG type = PROP_TYPE(value.ulPropTag);
    if (type == PT_UNICODE) return IsText(content.lpszW);
    if (type == PT_STRING8) return IsText(content.lpszA);
    if (type == PT_BINARY) return IsBytes(content.bin);
    if (type == PT_CLSID) return IsArray(content.lpguid, sizeof(GUID));
    return (type & MV_FLAG) == 0 || IsGoodArray(type, content.MVbin.cValues, content.MVbin.lpbin);
  }

 private:
  bool IsArray(const void* pointer, size_t size) const {
    return size == 0 || Ledger::Get().IsInChain(root_, pointer, size);
  }
  bool IsBytes(const SBinary& bytes) const { return IsArray(bytes.lpb, bytes.cb); }

  // Terminated before its buffer ends.
  template <class Char>
  bool IsText(const Char* text) const {
    const size_t room = Ledger::Get().RoomInChain(root_, text) / sizeof(Char);
    return std::any_of(text, text + room, [](Char each) { return each == 0; });
  }

  // Every array of values is a count and a pointer.
  bool IsGoodArray(ULONG type, ULONG count, const void* elements) const {
    constexpr struct {
      ULONG type;
      size_t size;
    } kSizes[] = {{PT_MV_I2, 2},       {PT_MV_LONG, 4},    {PT_MV_R4, 4},      {PT_MV_DOUBLE, 8},
                  {PT_MV_CURRENCY, 8}, {PT_MV_APPTIME, 8}, {PT_MV_I8, 8},      {PT_MV_SYSTIME, 8},
                  {PT_MV_CLSID, 16},   {PT_MV_BINARY, 16}, {PT_MV_UNICODE, 8}, {PT_MV_STRING8, 8}};
    for (const auto& each : kSizes) {
      if (each.type == type && !IsArray(elements, count * each.size)) return false;
    }
    const auto all = [&](const auto* first, auto isGood) {
      return std::all_of(first, first + count, isGood);
    };
    if (type == PT_MV_UNICODE)
      return all(static_cast<const LPWSTR*>(elements), [&](LPCWSTR text) { return IsText(text); });
    if (type == PT_MV_STRING8)
      return all(static_cast<const LPSTR*>(elements), [&](LPCSTR text) { return IsText(text); });
    if (type == PT_MV_BINARY)
      return all(static_cast<const SBinary*>(elements), [&](const SBinary& bytes) { return IsBytes(bytes); });
    return true;
  }

  const void* root_;
};

}  // namespace

std::string FindForeignPointer(const void* root, const SPropValue* values, ULONG count) {
  Ledger& ledger = Ledger::Get();
  if (count == 0) return {};
  if (!ledger.IsRoot(root)) return "what was handed out is no root of the allocator";
  if (!ledger.IsInChain(root, values, count * sizeof(SPropValue)))
    return "the array of values does not lie in what was handed out";
  const auto bad = std::find_if_not(values, values + count,
                                    [&](const SPropValue& each) { return PointerCheck(root).IsGood(each); });
  return bad == values + count ? std::string() : diag::PropTagName(bad->ulPropTag) + " points elsewhere";
}

}  // namespace orvctl::check
