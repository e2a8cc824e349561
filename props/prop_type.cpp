// The forms in which values lie, and which type has which.
#include "props/prop_type.h"

#include <cstring>
#include <limits>
#include <string>

#include "orv/orvcodes.h"

namespace orv {
namespace {

using Data = std::span<const std::byte>;

// Room for the fixed part of a record and the padding, so that a record's size fits its 32 bits too.
constexpr std::uint64_t kMaxLength = std::numeric_limits<ULONG>::max() - 64;

// A null string is stored as the empty one.
std::size_t StringBytes(const char* text) noexcept { return (text ? std::strlen(text) : 0) + 1; }
std::size_t StringBytes(const WCHAR* text) noexcept {
  return ((text ? std::char_traits<WCHAR>::length(text) : 0) + 1) * sizeof(WCHAR);
}

void WriteOrClear(std::byte* data, const void* bytes, std::size_t size) noexcept {
  if (bytes == nullptr) {
    std::memset(data, 0, size);
  } else {
    std::memcpy(data, bytes, size);
  }
}

// Takes one terminated string off the front.
template <class Char>
bool TakeString(Data& data) noexcept {
  for (std::size_t end = sizeof(Char); end <= data.size(); end += sizeof(Char)) {
    Char last;
    std::memcpy(&last, data.data() + end - sizeof(Char), sizeof last);
    if (last != 0) continue;
    data = data.subspan(end);
    return true;
  }
  return false;
}

// One pointer, which lies where that of a string does.
class PointerForm : public PropForm {
 public:
  void PointAt(SPropValue& value, std::byte* data, ULONG) const noexcept override {
    value.Value.lpszA = reinterpret_cast<char*>(data);
  }
  void ClearPointer(SPropValue& value) const noexcept override { value.Value.lpszA = nullptr; }
  bool PointsNowhere(const SPropValue& value) const noexcept override { return value.Value.lpszA == nullptr; }
  const void* Bytes(const SPropValue& value) const noexcept override { return value.Value.lpszA; }
};

template <class Char>
class StringForm final : public PointerForm {
 public:
  bool IsSound(const SPropValue&, Data data) const noexcept override { return TakeString<Char>(data); }

 private:
  HRESULT Measure(const SPropValue& value, std::uint64_t& length) const noexcept override {
    length = StringBytes(static_cast<const Char*>(Bytes(value)));
    return S_OK;
  }
};

class ClsidForm final : public PointerForm {
 public:
  bool IsSound(const SPropValue&, Data data) const noexcept override { return data.size() == sizeof(GUID); }

 private:
  HRESULT Measure(const SPropValue& value, std::uint64_t& length) const noexcept override {
    length = sizeof(GUID);
    return PointsNowhere(value) ? MAPI_E_INVALID_PARAMETER : S_OK;
  }
};

// A count and a pointer to so many elements of one size; they lie alike in all arrays and in a binary.
class CountedForm : public PropForm {
 public:
  constexpr explicit CountedForm(std::size_t elementSize) : elementSize_(elementSize) {}

  void PointAt(SPropValue& value, std::byte* data, ULONG) const noexcept override {
    value.Value.MVl.lpl = reinterpret_cast<LONG*>(data);
  }
  void ClearPointer(SPropValue& value) const noexcept override { value.Value.MVl.lpl = nullptr; }
  bool IsSound(const SPropValue& value, Data data) const noexcept override {
    return Count(value) <= data.size() / elementSize_;
  }
  const void* Bytes(const SPropValue& value) const noexcept override { return value.Value.MVl.lpl; }

 protected:
  static ULONG Count(const SPropValue& value) noexcept { return value.Value.MVl.cValues; }
  std::size_t TableSize(const SPropValue& value) const noexcept { return Count(value) * elementSize_; }

  HRESULT Measure(const SPropValue& value, std::uint64_t& length) const noexcept override {
    length = TableSize(value);
    return Count(value) != 0 && Bytes(value) == nullptr ? MAPI_E_INVALID_PARAMETER : S_OK;
  }

 private:
  const std::size_t elementSize_;
};

class BinaryForm final : public CountedForm {
 public:
  constexpr BinaryForm() : CountedForm(1) {}

  void PointAt(SPropValue& value, std::byte* data, ULONG length) const noexcept override {
    value.Value.bin = {length, reinterpret_cast<BYTE*>(data)};
  }
  // An empty binary is handed out with the count as stored, so that has to be empty too.
  bool IsSound(const SPropValue& value, Data data) const noexcept override {
    return !data.empty() || Count(value) == 0;
  }
  bool PointsNowhere(const SPropValue& value) const noexcept override {
    return Count(value) == 0 || Bytes(value) == nullptr;
  }
};

// What a slot of a table is and points at: a string, a null one being the empty one.
template <class Char>
struct StringSlot {
  using Type = Char*;
  static bool IsUsable(const Char*) noexcept { return true; }
  static const void* Bytes(const Char* slot) noexcept { return slot; }
  static std::size_t Size(const Char* slot) noexcept { return StringBytes(slot); }
  static void Store(const Char*, std::byte*) noexcept {}
  static std::size_t PointAt(Char*& slot, std::byte* packed) noexcept {
    slot = reinterpret_cast<Char*>(packed);
    return StringBytes(slot);
  }
  static bool Take(const std::byte*, Data& packed) noexcept { return TakeString<Char>(packed); }
};

// The same for counted bytes, whose count is stored in the slot.
struct BinarySlot {
  using Type = SBinary;
  static bool IsUsable(const SBinary& slot) noexcept { return slot.cb == 0 || slot.lpb != nullptr; }
  static const void* Bytes(const SBinary& slot) noexcept { return slot.lpb; }
  static std::size_t Size(const SBinary& slot) noexcept { return slot.cb; }
  static void Store(const SBinary& slot, std::byte* at) noexcept {
    std::memcpy(at, &slot.cb, sizeof slot.cb);
  }
  static std::size_t PointAt(SBinary& slot, std::byte* packed) noexcept {
    slot.lpb = reinterpret_cast<BYTE*>(packed);
    return slot.cb;
  }
  static bool Take(const std::byte* stored, Data& packed) noexcept {
    ULONG size = 0;
    std::memcpy(&size, stored, sizeof size);
    if (size > packed.size()) return false;
    packed = packed.subspan(size);
    return true;
  }
};
static_assert(offsetof(SBinary, cb) == 0);

// A table of slots, and behind it what they point at, packed in their order.
template <class Slot>
class SlotsForm final : public CountedForm {
 public:
  constexpr SlotsForm() : CountedForm(sizeof(typename Slot::Type)) {}

  void Write(const SPropValue& value, std::byte* data, ULONG) const noexcept override {
    std::byte* packed = data + TableSize(value);
    std::memset(data, 0, TableSize(value));
    for (const auto& slot : Slots(value)) {
      const std::size_t size = Slot::Size(slot);
      Slot::Store(slot, data);
      WriteOrClear(packed, Slot::Bytes(slot), size);
      data += sizeof slot;
      packed += size;
    }
  }
  void PointAt(SPropValue& value, std::byte* data, ULONG length) const noexcept override {
    CountedForm::PointAt(value, data, length);
    std::byte* packed = data + TableSize(value);
    for (auto& slot : Slots(value)) packed += Slot::PointAt(slot, packed);
  }
  bool IsSound(const SPropValue& value, Data data) const noexcept override {
    if (!CountedForm::IsSound(value, data)) return false;
    Data packed = data.subspan(TableSize(value));
    const std::byte* const end = data.data() + TableSize(value);
    for (const std::byte* slot = data.data(); slot != end; slot += sizeof(typename Slot::Type)) {
      if (!Slot::Take(slot, packed)) return false;
    }
    return true;
  }

 private:
  static std::span<typename Slot::Type> Slots(const SPropValue& value) noexcept {
    return {reinterpret_cast<typename Slot::Type*>(value.Value.MVl.lpl), Count(value)};
  }

  // A table that is too long by itself is refused before any slot is looked at.
  HRESULT Measure(const SPropValue& value, std::uint64_t& length) const noexcept override {
    if (const HRESULT hr = CountedForm::Measure(value, length); FAILED(hr) || length > kMaxLength) return hr;
    for (const auto& slot : Slots(value)) {
      if (!Slot::IsUsable(slot)) return MAPI_E_INVALID_PARAMETER;
      length += Slot::Size(slot);
    }
    return S_OK;
  }
};

class RefusedForm final : public PropForm {
 public:
  bool IsSound(const SPropValue&, Data) const noexcept override { return false; }

 private:
  HRESULT Measure(const SPropValue&, std::uint64_t&) const noexcept override { return MAPI_E_NO_SUPPORT; }
};

constinit const StringForm<char> kString8;
constinit const StringForm<WCHAR> kUnicode;
constinit const ClsidForm kClsid;
constinit const BinaryForm kBinary;
constinit const CountedForm kArrayOf2(2), kArrayOf4(4), kArrayOf8(8), kArrayOf16(16);
constinit const SlotsForm<StringSlot<char>> kString8Array;
constinit const SlotsForm<StringSlot<WCHAR>> kUnicodeArray;
constinit const SlotsForm<BinarySlot> kBinaryArray;
constinit const RefusedForm kRefused;

}  // namespace

constinit const PropForm PropForm::kInline;

// PT_MV_DOUBLE and PT_MV_APPTIME are missing from the arrays, and with them refused: stored data and callers
// know only what always could be stored.
const PropForm& FormOf(ULONG tag) noexcept {
  const ULONG type = PROP_TYPE(tag);
  switch (type) {
    case PT_STRING8:
      return kString8;
    case PT_UNICODE:
      return kUnicode;
    case PT_CLSID:
      return kClsid;
    case PT_BINARY:
      return kBinary;
    case PT_MV_I2:
      return kArrayOf2;
    case PT_MV_LONG:
    case PT_MV_R4:
      return kArrayOf4;
    case PT_MV_CURRENCY:
    case PT_MV_I8:
    case PT_MV_SYSTIME:
      return kArrayOf8;
    case PT_MV_CLSID:
      return kArrayOf16;
    case PT_MV_STRING8:
      return kString8Array;
    case PT_MV_UNICODE:
      return kUnicodeArray;
    case PT_MV_BINARY:
      return kBinaryArray;
    default:
      return type & MV_FLAG ? static_cast<const PropForm&>(kRefused) : PropForm::kInline;
  }
}

HRESULT PropForm::Length(const SPropValue& value, ULONG& length) const noexcept {
  std::uint64_t wanted = 0;
  if (const HRESULT hr = Measure(value, wanted); FAILED(hr)) return hr;
  if (wanted > kMaxLength) return MAPI_E_NOT_ENOUGH_MEMORY;
  length = static_cast<ULONG>(wanted);
  return S_OK;
}

HRESULT PropForm::Measure(const SPropValue&, std::uint64_t& length) const noexcept {
  length = 0;
  return S_OK;
}

void PropForm::Write(const SPropValue& value, std::byte* data, ULONG length) const noexcept {
  if (length != 0) WriteOrClear(data, Bytes(value), length);
}

void PropForm::PointAt(SPropValue&, std::byte*, ULONG) const noexcept {}
void PropForm::ClearPointer(SPropValue&) const noexcept {}
bool PropForm::IsSound(const SPropValue&, Data) const noexcept { return true; }
bool PropForm::PointsNowhere(const SPropValue&) const noexcept { return false; }
const void* PropForm::Bytes(const SPropValue&) const noexcept { return nullptr; }

}  // namespace orv
