// What hangs off a value is laid into one stretch of memory, measured before: of a caller's copy behind the values
// in their root, of a list in a block that several values share.
#include "orv/kit/values.hpp"

#include <algorithm>
#include <array>
#include <cstring>

#include "value_layout.hpp"

namespace orv::kit {
namespace {

// Which value answers which tag. Most callers ask in the order in which the values lie.
class Answers {
 public:
  Answers(sdk::ValueView values, const ULONG* tags, size_t count) {
    if (count > few_.size()) many_ = std::make_unique<Measured[]>(count);
    found_ = many_ != nullptr ? many_.get() : few_.data();
    const SPropValue* next = values.begin();
    for (size_t i = 0; i < count; ++i) {
      const bool isNext = next != values.end() && PROP_ID(next->ulPropTag) == PROP_ID(tags[i]);
      const SPropValue* value = isNext ? next : FindValue(values, tags[i]);
      if (value != nullptr) next = value + 1;
      found_[i] = value != nullptr && tags[i] != PR_NULL ? Measure(*value) : Measured{nullptr, 0};
      size_ += Aligned(found_[i].size);
    }
  }

  const Measured& operator[](size_t i) const noexcept { return found_[i]; }
  // Of all that hangs off them.
  size_t Size() const noexcept { return size_; }

 private:
  static constexpr size_t kFew = 48;

  size_t size_ = 0;
  std::array<Measured, kFew> few_;  // without values until they are found: a row is copied often
  std::unique_ptr<Measured[]> many_;
  Measured* found_ = nullptr;
};

SPropValue Missing(ULONG tag) noexcept {
  SPropValue value{};
  value.ulPropTag = CHANGE_PROP_TYPE(tag, PT_ERROR);
  value.Value.err = MAPI_E_NOT_FOUND;
  return value;
}

SPropValue Tagged(ULONG tag, ULONG type) noexcept {
  SPropValue value{};
  value.ulPropTag = CHANGE_PROP_TYPE(tag, type);
  return value;
}

}  // namespace

const SPropValue* FindValue(sdk::ValueView values, ULONG tag) noexcept {
  for (const SPropValue& each : values) {
    if (PROP_ID(each.ulPropTag) == PROP_ID(tag)) return &each;
  }
  return nullptr;
}

HRESULT CheckValue(const SPropValue& value) noexcept {
  const ULONG type = PROP_TYPE(value.ulPropTag), element = type & ~ULONG{MV_FLAG};
  const bool isListed = FixedSize(element) != 0 || HasTextForm(element) || element == PT_BINARY;
  if (IsArray(type)) {
    if (!isListed || element == PT_BOOLEAN) return MAPI_E_INVALID_TYPE;
    return IsSoundArray(value) ? S_OK : MAPI_E_INVALID_PARAMETER;
  }
  if (!isListed && !IsScalar(type)) return MAPI_E_INVALID_TYPE;
  const bool lacksBytes = type == PT_BINARY && value.Value.bin.cb != 0 && value.Value.bin.lpb == nullptr;
  const bool lacksGuid = type == PT_CLSID && value.Value.lpguid == nullptr;
  return lacksBytes || lacksGuid ? MAPI_E_INVALID_PARAMETER : S_OK;
}

PropList::PropList(sdk::ValueView values) {
  size_t size = 0;
  for (const SPropValue& each : values) size += CheckValue(each) == S_OK ? ChainedSize(each) : 0;
  if (size != 0) {
    blocks_.push_back({std::unique_ptr<std::byte[]>(new std::byte[size]), size});
  }
  values_.reserve(static_cast<size_t>(values.end() - values.begin()));
  for (const SPropValue& each : values) {
    if (FAILED(Set(each))) continue;
  }
}

void PropList::Swap(PropList& other) noexcept {
  values_.swap(other.values_);
  blocks_.swap(other.blocks_);
  std::swap(used_, other.used_);
  std::swap(abandoned_, other.abandoned_);
}

HRESULT PropList::Set(const SPropValue& value) {
  if (const HRESULT hr = CheckValue(value); FAILED(hr)) return hr;
  SPropValue copy;
  Layer(Reserve(ChainedSize(value))).Copy(value, copy);
  Slot(copy.ulPropTag) = copy;
  Compact();
  return S_OK;
}

void PropList::SetText(ULONG tag, const void* text, size_t length) {
  SPropValue value = Tagged(tag, PT_UNICODE);
  const size_t size = length * sizeof(WCHAR);
  std::byte* room = Reserve(Aligned(size + sizeof(WCHAR)));
  std::memcpy(room, text, size);
  value.Value.lpszW = reinterpret_cast<LPWSTR>(room);
  value.Value.lpszW[length] = 0;
  Slot(value.ulPropTag) = value;
  Compact();
}

void PropList::Set(ULONG tag, std::wstring_view text) {
  SetText(tag, text.data(), std::min(text.size(), text.find(L'\0')));
}
void PropList::Set(ULONG tag, std::u16string_view text) {
  SetText(tag, text.data(), std::min(text.size(), text.find(u'\0')));
}
void PropList::Set(ULONG tag, const wchar_t* text) {
  Set(tag, text != nullptr ? std::wstring_view(text) : std::wstring_view(L""));
}

// The values below are sound by their making.
void PropList::SetBytes(ULONG tag, const void* bytes, size_t size) {
  SPropValue value = Tagged(tag, PT_BINARY);
  value.Value.bin = {sdk::Allocator::CountOf(size), static_cast<LPBYTE>(const_cast<void*>(bytes))};
  if (FAILED(Set(value))) return;
}

void PropList::Set(ULONG tag, const FILETIME& time) {
  SPropValue value = Tagged(tag, PT_SYSTIME);
  value.Value.ft = time;
  Slot(value.ulPropTag) = value;
}

void PropList::Set(ULONG tag, const GUID& guid) {
  SPropValue value = Tagged(tag, PT_CLSID);
  value.Value.lpguid = const_cast<LPGUID>(&guid);
  if (FAILED(Set(value))) return;
}

void PropList::SetNumber(ULONG tag, LONGLONG number) {
  const ULONG type = PROP_TYPE(tag);
  if (type == PT_R4 || type == PT_DOUBLE || type == PT_APPTIME)
    return SetReal(tag, static_cast<double>(number));
  const bool isNumeric = type != PT_CLSID && FixedSize(type) != 0;
  SPropValue value = Tagged(tag, isNumeric || type == PT_ERROR ? type : PT_LONG);
  value.Value.li.QuadPart = number;
  if (type == PT_BOOLEAN) value.Value.b = number != 0;
  Slot(value.ulPropTag) = value;
}

void PropList::SetReal(ULONG tag, double number) {
  const ULONG type = PROP_TYPE(tag);
  SPropValue value = Tagged(tag, type == PT_R4 || type == PT_APPTIME ? type : PT_DOUBLE);
  if (type == PT_R4) {
    value.Value.flt = static_cast<float>(number);
  } else {
    value.Value.dbl = number;
  }
  Slot(value.ulPropTag) = value;
}

void PropList::SetTextParts(ULONG tag, const std::vector<std::pair<const void*, size_t>>& texts) {
  std::vector<std::basic_string<WCHAR>> ended;
  std::vector<LPWSTR> pointers;
  for (const auto& [text, length] : texts) {
    ended.emplace_back(length, L'\0');
    if (length != 0) std::memcpy(ended.back().data(), text, length * sizeof(WCHAR));
  }
  for (auto& text : ended) pointers.push_back(text.data());
  SPropValue value = Tagged(tag, PT_MV_UNICODE);
  value.Value.MVszW = {sdk::Allocator::CountOf(pointers.size()), pointers.data()};
  if (FAILED(Set(value))) return;
}

bool PropList::Remove(ULONG tag) noexcept {
  const SPropValue* found = Find(tag);
  if (found == nullptr) return false;
  LeaveBehind(*found);
  values_.erase(values_.begin() + (found - values_.data()));
  return true;
}

void PropList::Clear() noexcept {
  values_.clear();
  if (!blocks_.empty()) blocks_.erase(blocks_.begin(), blocks_.end() - 1);  // the last is the largest
  used_ = abandoned_ = 0;
}

std::wstring_view PropList::Text(ULONG tag) const noexcept {
  const SPropValue* value = Find(tag);
  const bool isText = value != nullptr && PROP_TYPE(value->ulPropTag) == PT_UNICODE;
  return isText ? std::wstring_view(value->Value.lpszW) : std::wstring_view();
}

LONGLONG PropList::Number(ULONG tag, LONGLONG otherwise) const noexcept {
  const SPropValue* value = Find(tag);
  if (value == nullptr) return otherwise;
  switch (PROP_TYPE(value->ulPropTag)) {
    case PT_I2:
      return value->Value.i;
    case PT_LONG:
    case PT_ERROR:
      return value->Value.l;
    case PT_BOOLEAN:
      return value->Value.b != 0;
    case PT_I8:
    case PT_CURRENCY:
    case PT_SYSTIME:
      return value->Value.li.QuadPart;
    default:
      return otherwise;
  }
}

SBinary PropList::Bytes(ULONG tag) const noexcept {
  const SPropValue* value = Find(tag);
  const bool isBytes = value != nullptr && PROP_TYPE(value->ulPropTag) == PT_BINARY;
  return isBytes ? value->Value.bin : SBinary{0, nullptr};
}

std::vector<ULONG> PropList::Tags() const {
  std::vector<ULONG> tags;
  tags.reserve(values_.size());
  for (const SPropValue& each : values_) tags.push_back(each.ulPropTag);
  return tags;
}

// The value to be written over: what it points to is abandoned.
SPropValue& PropList::Slot(ULONG tag) {
  for (SPropValue& each : values_) {
    if (PROP_ID(each.ulPropTag) != PROP_ID(tag)) continue;
    LeaveBehind(each);
    return each;
  }
  return values_.emplace_back();
}

// Blocks double, so a list of n bytes makes few of them, and the last is always the largest.
std::byte* PropList::Reserve(size_t size) {
  constexpr size_t kFirstBlock = 240;
  const size_t last = blocks_.empty() ? 0 : blocks_.back().size;
  if (last - used_ < size) {
    const size_t more = std::max({size, 2 * last, kFirstBlock});
    blocks_.push_back({std::unique_ptr<std::byte[]>(new std::byte[more]), more});
    used_ = 0;
  }
  if (blocks_.empty()) return nullptr;  // nothing was asked for
  return blocks_.back().bytes.get() + std::exchange(used_, used_ + size);
}

void PropList::LeaveBehind(const SPropValue& value) noexcept { abandoned_ += ChainedSize(value); }

// A list whose values are set again and again must not grow. Without memory for that it stays as it is.
void PropList::Compact() {
  constexpr size_t kWorthIt = 4096;
  size_t held = 0;
  for (const Block& each : blocks_) held += each.size;
  if (abandoned_ < kWorthIt || abandoned_ < held / 2) return;
  try {
    *this = PropList(View());
  } catch (const std::bad_alloc&) {
  }
}

sdk::Buffer<SPropValue> CopyProps(const sdk::Allocator& allocator, sdk::ValueView values, const ULONG* tags,
                                  size_t count, HRESULT* result) {
  const Answers found(values, tags, count);
  auto copy = allocator.Make<SPropValue>(count * sizeof(SPropValue) + found.Size());
  SPropValue* value = copy.Get();
  Layer layer(reinterpret_cast<std::byte*>(value + count));
  bool isComplete = true;
  for (size_t i = 0; i < count; ++i, ++value) {
    const Measured answer = found[i];
    if (answer.value != nullptr) {
      layer.Copy(answer, *value);
      isComplete = isComplete && PROP_TYPE(answer.value->ulPropTag) != PT_ERROR;
    } else if (tags[i] == PR_NULL) {
      value->ulPropTag = PR_NULL;
    } else {
      *value = Missing(tags[i]);
      isComplete = false;
    }
  }
  if (result != nullptr) *result = isComplete ? S_OK : MAPI_W_ERRORS_RETURNED;
  return copy;
}

sdk::Buffer<SPropValue> CopyAll(const sdk::Allocator& allocator, sdk::ValueView values) {
  std::vector<ULONG> tags;
  for (const SPropValue& each : values) tags.push_back(each.ulPropTag);
  return CopyProps(allocator, values, tags.data(), tags.size(), nullptr);
}

}  // namespace orv::kit
