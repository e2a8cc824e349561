#include "props/prop_record.h"

#include <array>
#include <cmath>
#include <limits>

#include "platform/buffer.h"
#include "props/prop_value.h"
#include "tests/props/samples.h"

namespace orv::test {
namespace {

constexpr ULONG Tag(ULONG type) { return PROP_TAG(type, 0x6601); }

SPropValue Guid(const GUID* guid) {
  SPropValue value = Value(Tag(PT_CLSID));
  value.Value.lpguid = const_cast<GUID*>(guid);
  return value;
}

Bytes WideBytes(WStringView text) {
  const auto* raw = reinterpret_cast<const std::uint8_t*>(text.data());
  return {raw, raw + text.size() * sizeof(WCHAR)};
}

Bytes operator+(Bytes a, const Bytes& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

// A stored cell as the registry holds it.
Bytes Cell(ULONG length, ULONG dataLength, const SPropValue& value, const Bytes& data) {
  const PropRecord header = {length, dataLength, value};
  Bytes cell(sizeof header);
  std::memcpy(cell.data(), &header, sizeof header);
  cell = cell + data;
  cell.resize(length);
  return cell;
}

Bytes CellBytes(const PropNode& node) {
  const auto cell = CellOf(node);
  const auto* raw = reinterpret_cast<const std::uint8_t*>(cell.data());
  return {raw, raw + cell.size()};
}

// The value with another pointer, where its type has one.
SPropValue Pointing(SPropValue value, void* at) {
  const ULONG type = PROP_TYPE(value.ulPropTag);
  const bool single = type == PT_STRING8 || type == PT_UNICODE || type == PT_CLSID;
  const bool array = (type & (MV_FLAG | MV_INSTANCE)) == MV_FLAG;
  if (single) value.Value.lpguid = static_cast<GUID*>(at);
  if (array || type == PT_BINARY) value.Value.bin.lpb = static_cast<BYTE*>(at);
  return value;
}

HRESULT Load(const Bytes& cell, PropNodePtr& node) {
  // An exact heap block, so that a read beyond its end is seen.
  const Bytes exact(cell);
  return NodeFromCell(std::as_bytes(std::span(exact)), node);
}

// The value of a property that is gone by then.
MapiBuffer<SPropValue> ReadBack(PropNodePtr node) {
  MapiBuffer<SPropValue> read;
  EXPECT_EQ(read.AllocateArray(1), S_OK);
  EXPECT_EQ(ReadNode(*node, read.Get(), *read), S_OK);
  return read;
}

const GUID kGuid = {0x01020304, 0x0506, 0x0708, {9, 10, 11, 12, 13, 14, 15, 16}};
const Bytes kGuidBytes = {4, 3, 2, 1, 6, 5, 8, 7, 9, 10, 11, 12, 13, 14, 15, 16};

struct Stored {
  SPropValue value;
  Bytes data;  // out of line, the slots' pointers zero
};

std::vector<Stored> StorableValues() {
  static const std::array<short, 3> kShorts = {1, -2, 3};
  static const std::array<LONG, 3> kLongs = {1, 2, 3};
  static const std::array<LONGLONG, 2> kLongLongs = {1, 2};
  static const std::array<GUID, 1> kGuids = {kGuid};
  static const std::array<const char*, 3> kNarrow = {"ab", "", nullptr};
  static const std::array<const WCHAR*, 2> kWide = {ORV_W("x"), ORV_W("yz")};
  static std::array<BYTE, 3> bytes = {7, 8, 9};
  static const std::array<SBinary, 3> kBinaries = {{{2, bytes.data()}, {0, nullptr}, {1, bytes.data() + 2}}};
  const Bytes longs = {1, 0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0};
  const Bytes longLongs = {1, 0, 0, 0, 0, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0};
  const Bytes binarySlots = Bytes{2, 0, 0, 0} + Bytes(12) + Bytes(16) + Bytes{1, 0, 0, 0} + Bytes(12);

  std::vector<Stored> all = {
      {String8(Tag(PT_STRING8), "seven c"), {'s', 'e', 'v', 'e', 'n', ' ', 'c', 0}},
      {String8(Tag(PT_STRING8), nullptr), {0}},
      {Unicode(Tag(PT_UNICODE), ORV_W("Abcd")), WideBytes({ORV_W("Abcd"), 5})},
      {Unicode(Tag(PT_UNICODE), nullptr), {0, 0}},
      {Guid(&kGuid), kGuidBytes},
      {Binary(Tag(PT_BINARY), "123456789"), {'1', '2', '3', '4', '5', '6', '7', '8', '9'}},
      {Binary(Tag(PT_BINARY), nullptr, 0), {}},
      {Array(Tag(PT_MV_I2), 3, kShorts.data()), {1, 0, 0xFE, 0xFF, 3, 0}},
      {Array(Tag(PT_MV_LONG), 3, kLongs.data()), longs},
      {Array(Tag(PT_MV_R4), 3, kLongs.data()), longs},
      {Array(Tag(PT_MV_CURRENCY), 2, kLongLongs.data()), longLongs},
      {Array(Tag(PT_MV_I8), 2, kLongLongs.data()), longLongs},
      {Array(Tag(PT_MV_SYSTIME), 2, kLongLongs.data()), longLongs},
      {Array(Tag(PT_MV_CLSID), 1, kGuids.data()), kGuidBytes},
      {Array(Tag(PT_MV_STRING8), 3, kNarrow.data()), Bytes(24) + Bytes{'a', 'b', 0, 0, 0}},
      {Array(Tag(PT_MV_UNICODE), 2, kWide.data()), Bytes(16) + WideBytes({ORV_W("x\0yz"), 5})},
      {Array(Tag(PT_MV_BINARY), 3, kBinaries.data()), binarySlots + Bytes{7, 8, 9}},
      {Array(Tag(PT_MV_BINARY), 0, nullptr), {}},
  };
  // Inline types, known and unknown, keep their sixteen bytes.
  for (const ULONG type :
       {PT_I2, PT_LONG, PT_R4, PT_DOUBLE, PT_CURRENCY, PT_APPTIME, PT_ERROR, PT_BOOLEAN, PT_I8, PT_SYSTIME,
        PT_NULL, PT_OBJECT, ULONG{0x0033}, ULONG{MV_INSTANCE | PT_UNICODE}}) {
    Stored inlineValue = {Value(Tag(type)), {}};
    std::memcpy(&inlineValue.value.Value, kGuidBytes.data(), kGuidBytes.size());
    all.push_back(inlineValue);
  }
  return all;
}

TEST(PropRecord, CellsHoldEveryStorableTypeByteForByte) {
  for (const Stored& stored : StorableValues()) {
    SCOPED_TRACE(testing::Message() << std::hex << stored.value.ulPropTag);
    const ULONG length = static_cast<ULONG>(stored.data.size());
    const ULONG size = 32 + std::max<ULONG>(8, (length + 7) / 8 * 8);
    const Bytes expected = Cell(size, length, Pointing(stored.value, nullptr), stored.data);
    EXPECT_EQ(Node(stored.value)->flags, 0u);
    EXPECT_EQ(CellBytes(*Node(stored.value)), expected);

    // And back: from the cell to a value of the caller's, from that to the same cell. A stored pointer is not followed.
    const SPropValue wild = length == 0 ? stored.value : Pointing(stored.value, Unreadable());
    PropNodePtr loaded;
    ASSERT_EQ(Load(Cell(size, length, wild, stored.data), loaded), S_OK);
    const auto read = ReadBack(std::move(loaded));
    EXPECT_EQ(CellBytes(*Node(*read)), expected);
  }
}

TEST(PropRecord, RefusedValues) {
  const std::array<LONGLONG, 1> some = {0};
  // Slots whose table alone is too long are not looked at: these cannot be.
  const void* const nowhere = reinterpret_cast<const void*>(std::uintptr_t{64});
  const std::array<SBinary, 1> nullBytes = {{{3, nullptr}}};
  MapiBuffer<SPropValue> copy;
  ASSERT_EQ(copy.AllocateArray(1), S_OK);
  const std::pair<SPropValue, HRESULT> cases[] = {
      {Array(Tag(PT_MV_DOUBLE), 1, some.data()), MAPI_E_NO_SUPPORT},
      {Array(Tag(PT_MV_APPTIME), 1, some.data()), MAPI_E_NO_SUPPORT},
      {Array(Tag(MV_FLAG | PT_ERROR), 1, some.data()), MAPI_E_NO_SUPPORT},
      {Array(Tag(MVI_FLAG | PT_UNICODE), 1, some.data()), MAPI_E_NO_SUPPORT},
      {Value(Tag(PT_CLSID)), MAPI_E_INVALID_PARAMETER},
      {Binary(Tag(PT_BINARY), nullptr, 1), MAPI_E_INVALID_PARAMETER},
      {Array(Tag(PT_MV_LONG), 1, nullptr), MAPI_E_INVALID_PARAMETER},
      {Array(Tag(PT_MV_UNICODE), 1, nullptr), MAPI_E_INVALID_PARAMETER},
      {Array(Tag(PT_MV_BINARY), 1, nullBytes.data()), MAPI_E_INVALID_PARAMETER},
      {Array(Tag(PT_MV_LONG), 0x40000001, some.data()), MAPI_E_NOT_ENOUGH_MEMORY},
      {Array(Tag(PT_MV_CLSID), 0x10000000, some.data()), MAPI_E_NOT_ENOUGH_MEMORY},
      {Binary(Tag(PT_BINARY), some.data(), 0xFFFFFFFF), MAPI_E_NOT_ENOUGH_MEMORY},
      {Array(Tag(PT_MV_STRING8), 0x20000000, nowhere), MAPI_E_NOT_ENOUGH_MEMORY},
      {Array(Tag(PT_MV_UNICODE), 0x1FFFFFF9, nowhere), MAPI_E_NOT_ENOUGH_MEMORY},
      {Array(Tag(PT_MV_BINARY), 0x10000000, nowhere), MAPI_E_NOT_ENOUGH_MEMORY},
      {Array(Tag(PT_MV_BINARY), 0xFFFFFFFF, nowhere), MAPI_E_NOT_ENOUGH_MEMORY},
  };
  for (const auto& [value, expected] : cases) {
    SCOPED_TRACE(testing::Message() << std::hex << value.ulPropTag);
    PropNodePtr node;
    EXPECT_EQ(NodeFromValue(value, node), expected);
    EXPECT_FALSE(node);
    // Copying refuses the same, but takes a pointer to nothing as it is.
    if (value.Value.MVl.lpl == nullptr && !(value.ulPropTag & MV_FLAG)) continue;
    EXPECT_EQ(CopyValue(copy[0], value, copy.Get()), expected);
  }
}

TEST(PropRecord, MalformedCellsAreRefused) {
  const auto array = [](ULONG type, ULONG count) { return Array(Tag(type), count, nullptr); };
  const SPropValue number = Long(Tag(PT_LONG), 1);
  Bytes hugeSlots(32);
  hugeSlots[3] = hugeSlots[19] = 0x80;
  Bytes longLength = Cell(40, 0, number, {});
  longLength[0] = 48;
  const std::pair<const char*, Bytes> cases[] = {
      {"nothing", {}},
      {"shorter than its header", Bytes(31)},
      {"no data area", Cell(32, 0, number, {})},
      {"length longer than the cell", Cell(40, 0, number, {}) + Bytes(8)},
      {"length shorter than the cell", longLength},
      {"data longer than the area", Cell(40, 9, Value(Tag(PT_BINARY)), {})},
      {"data length that wraps", Cell(40, 0xFFFFFFF8, Value(Tag(PT_BINARY)), {})},
      {"string without data", Cell(40, 0, Value(Tag(PT_STRING8)), {})},
      {"string without end", Cell(40, 8, Value(Tag(PT_STRING8)), Bytes(8, 'x'))},
      {"string that ends behind its data", Cell(40, 3, Value(Tag(PT_STRING8)), {'a', 'b', 'c', 0})},
      {"wide string without end", Cell(40, 8, Value(Tag(PT_UNICODE)), Bytes(8, 'x'))},
      {"wide string with half an end", Cell(40, 3, Value(Tag(PT_UNICODE)), {'a', 0, 0})},
      {"short GUID", Cell(48, 15, Value(Tag(PT_CLSID)), Bytes(15))},
      {"counted bytes without data", Cell(40, 0, Binary(Tag(PT_BINARY), nullptr, 5), {})},
      {"more numbers than data", Cell(40, 8, array(PT_MV_LONG, 3), Bytes(8))},
      {"numbers whose size wraps", Cell(40, 8, array(PT_MV_I8, 0x20000001), Bytes(8))},
      {"slots whose size wraps", Cell(40, 8, array(PT_MV_UNICODE, 0x20000000), Bytes(8))},
      {"slots of bytes whose size wraps", Cell(40, 8, array(PT_MV_BINARY, 0x10000000), Bytes(8))},
      {"slots without a string", Cell(40, 8, array(PT_MV_STRING8, 1), Bytes(8))},
      {"second string without end",
       Cell(56, 20, array(PT_MV_STRING8, 2), Bytes(16) + Bytes{'a', 0, 'b', 'c'})},
      {"second wide string without end",
       Cell(56, 22, array(PT_MV_UNICODE, 2), Bytes(16) + Bytes{'a', 0, 0, 0, 'b', 0})},
      {"bytes beyond the data", Cell(56, 17, array(PT_MV_BINARY, 1), Bytes{2, 0, 0, 0} + Bytes(13))},
      {"byte counts whose sum wraps", Cell(64, 32, array(PT_MV_BINARY, 2), hugeSlots)},
      {"a type that is never stored", Cell(40, 8, array(PT_MV_DOUBLE, 1), Bytes(8))},
  };
  for (const auto& [what, cell] : cases) {
    PropNodePtr node;
    EXPECT_EQ(Load(cell, node), MAPI_E_CALL_FAILED) << what;
    EXPECT_FALSE(node) << what;
  }
}

TEST(PropRecord, CompareTable) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const auto floating = [](float number) {
    SPropValue value = Value(Tag(PT_R4));
    value.Value.flt = number;
    return value;
  };
  GUID otherGuid = kGuid;
  otherGuid.Data4[7] = 0;
  const SPropValue guid = Guid(&kGuid), other = Guid(&otherGuid);
  const struct {
    SPropValue stored, given;
    HRESULT expected;
  } cases[] = {
      // Only the low 16 bits count.
      {Long(Tag(PT_I2), 5), Long(Tag(PT_I2), 0x10005), S_OK},
      {Long(Tag(PT_LONG), 5), Long(Tag(PT_LONG), 0x10005), MAPI_E_NOT_FOUND},
      {Long(Tag(PT_LONG), 5), Long(Tag(PT_ERROR), 5), MAPI_E_NOT_FOUND},
      {floating(0.0F), floating(-0.0F), S_OK},
      {floating(nan), floating(nan), MAPI_E_NOT_FOUND},
      {Unicode(Tag(PT_UNICODE), ORV_W("Abc")), Unicode(Tag(PT_UNICODE), ORV_W("Abc")), S_OK},
      {Unicode(Tag(PT_UNICODE), ORV_W("Abc")), Unicode(Tag(PT_UNICODE), ORV_W("abc")), MAPI_E_NOT_FOUND},
      {Unicode(Tag(PT_UNICODE), ORV_W("")), Unicode(Tag(PT_UNICODE), nullptr), S_OK},
      {String8(Tag(PT_STRING8), ""), String8(Tag(PT_STRING8), nullptr), S_OK},
      {guid, other, MAPI_E_NOT_FOUND},
      {guid, Value(Tag(PT_CLSID)), MAPI_E_NOT_FOUND},
      {Binary(Tag(PT_BINARY), ""), Binary(Tag(PT_BINARY), nullptr, 0), S_OK},
      {Binary(Tag(PT_BINARY), "ab"), Binary(Tag(PT_BINARY), "ac"), MAPI_E_NOT_FOUND},
      {Long(Tag(PT_SYSTIME), 1), Long(Tag(PT_SYSTIME), 1), MAPI_E_NO_SUPPORT},
      {Array(Tag(PT_MV_LONG), 0, nullptr), Array(Tag(PT_MV_LONG), 0, nullptr), MAPI_E_NO_SUPPORT},
  };
  for (const auto& pair : cases) {
    EXPECT_EQ(CompareNode(*Node(pair.stored), pair.given), pair.expected)
        << "case " << (&pair - cases) << std::hex << " type " << PROP_TYPE(pair.stored.ulPropTag);
  }
}

}  // namespace
}  // namespace orv::test
