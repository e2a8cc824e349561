// Tables of the provider kit over 200,000 rows of five columns against copies of the same rows by hand.
#include <array>
#include <deque>

#include "bench/harness.h"
#include "bench/values.h"
#include "orv/kit/table.hpp"
#include "platform/buffer.h"

namespace orv::bench {
namespace {

constexpr ULONG kRows = 200000, kWindow = 50, kColumns = 5;

// Rows as a provider keeps them: values that point into data of its own.
class Contacts final {
 public:
  Contacts() {
    for (ULONG i = 0; i < kRows; ++i) {
      Row& row = rows_.emplace_back();
      row.name = ORV_W("Recipient number ") + std::to_wstring(i);
      row.address = std::to_wstring(i) + ORV_W("@example.invalid");
      row.id.fill(static_cast<BYTE>(i));
      row.values = {Text(PR_DISPLAY_NAME_W, row.name), Text(PR_EMAIL_ADDRESS_W, row.address),
                    Number(PR_OBJECT_TYPE, 6), Number(PR_DISPLAY_TYPE, 0), Number(PR_ENTRYID, 0)};
      row.values[4].Value.bin = {static_cast<ULONG>(row.id.size()), row.id.data()};
    }
  }

  sdk::ValueView ViewOf(size_t row) const { return {rows_[row].values.data(), kColumns}; }
  const SPropValue* ValuesOf(size_t row) const { return rows_[row].values.data(); }

 private:
  struct Row {
    WString name, address;
    std::array<BYTE, 40> id;
    std::array<SPropValue, kColumns> values;
  };
  std::deque<Row> rows_;
};

class ContactRows final : public kit::RowSource {
 public:
  explicit ContactRows(const Contacts& contacts) : contacts_(contacts) {}

  size_t Count() override { return kRows; }
  HRESULT RowAt(size_t row, std::span<const ULONG>, sdk::ValueView* values) override {
    *values = contacts_.ViewOf(row);
    return S_OK;
  }
  std::vector<ULONG> Columns() override {
    return {PR_DISPLAY_NAME_W, PR_EMAIL_ADDRESS_W, PR_OBJECT_TYPE, PR_DISPLAY_TYPE, PR_ENTRYID};
  }

 private:
  const Contacts& contacts_;
};

// By hand, with the least that the rules of the interface allow: a row is one root of the library's, whose size is
// counted before. It asks nobody for the types, and looks for the end of each text once.
class ByHand {
 public:
  ByHand(const Contacts& contacts, const sdk::Allocator& allocator)
      : contacts_(contacts), allocator_(allocator) {}

  void CopyWindow(ULONG first) const {
    auto rows = allocator_.Make<SRowSet>(CbNewSRowSet(std::size_t{kWindow}));
    for (ULONG i = 0; i < kWindow; ++i) {
      rows->aRow[i] = {0, kColumns, CopyRow(contacts_.ValuesOf(first + i))};
      rows->cRows = i + 1;
    }
  }

 private:
  static std::size_t Padded(std::size_t size) { return (size + 7) / 8 * 8; }

  SPropValue* CopyRow(const SPropValue* from) const {
    std::array<std::size_t, kColumns> sizes;
    std::size_t size = sizeof(SPropValue) * kColumns;
    for (ULONG i = 0; i < kColumns; ++i) size += Padded(sizes[i] = WithLength(from[i]).size);
    auto* values = static_cast<SPropValue*>(allocator_.AllocateRoot(size).release());
    auto* room = reinterpret_cast<BYTE*>(values + kColumns);
    for (ULONG i = 0; i < kColumns; ++i) {
      values[i] = from[i];
      if (sizes[i] == 0) continue;
      const bool isText = PROP_TYPE(from[i].ulPropTag) == PT_UNICODE;
      std::memcpy(room, isText ? static_cast<const void*>(from[i].Value.lpszW) : from[i].Value.bin.lpb,
                  sizes[i]);
      PointTo(values[i], room);
      room += Padded(sizes[i]);
    }
    return values;
  }

  static void PointTo(SPropValue& value, BYTE* bytes) {
    if (PROP_TYPE(value.ulPropTag) == PT_UNICODE) {
      value.Value.lpszW = reinterpret_cast<WCHAR*>(bytes);
    } else {
      value.Value.bin.lpb = bytes;
    }
  }

  const Contacts& contacts_;
  const sdk::Allocator& allocator_;
};

void CompareWindows() {
  const Contacts contacts;
  const sdk::Allocator allocator(&OrvAllocateBuffer, &OrvAllocateMore, &OrvFreeBuffer);
  const auto table = kit::MakeTable(allocator, std::make_shared<ContactRows>(contacts));
  const ByHand byHand(contacts, allocator);
  double atStart = 0;
  for (const ULONG first : {ULONG{0}, kRows / 2, kRows - kWindow}) {
    const auto ours = [&] {
      sdk::RowSet rows(&OrvFreeBuffer);
      table->SeekRow(BOOKMARK_BEGINNING, static_cast<LONG>(first), nullptr);
      table->QueryRows(kWindow, 0, rows.Put());
      Require(rows->cRows == kWindow, "a window");
    };
    const Comparison result = Compare(ours, [&] { byHand.CopyWindow(first); });
    Report("window of 50 rows of the kit at row " + std::to_string(first) + " of 200000", result, 1.3);
    if (atStart == 0) {
      atStart = result.ratio;
    } else {
      Report("the same, growth of the ratio from row 0", result.ratio, atStart, "x", 1.2);
    }
  }
}

const Benchmark kKit("kit", CompareWindows);

}  // namespace
}  // namespace orv::bench
