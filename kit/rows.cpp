#include "orv/kit/rows.hpp"

#include <algorithm>

namespace orv::kit {
namespace {

std::vector<ULONG> ColumnsOf(const std::vector<PropList>& rows) {
  std::vector<ULONG> columns;
  for (const PropList& row : rows) {
    for (const SPropValue& value : row.View()) {
      const auto isSame = [&](ULONG tag) { return PROP_ID(tag) == PROP_ID(value.ulPropTag); };
      if (std::none_of(columns.begin(), columns.end(), isSame)) columns.push_back(value.ulPropTag);
    }
  }
  return columns;
}

class ListedRows final : public RowSource {
 public:
  ListedRows(std::vector<PropList> rows, std::vector<ULONG> columns)
      : rows_(std::move(rows)), columns_(columns.empty() ? ColumnsOf(rows_) : std::move(columns)) {}

  size_t Count() override { return rows_.size(); }
  HRESULT RowAt(size_t row, std::span<const ULONG>, sdk::ValueView* values) override {
    *values = rows_[row].View();
    return S_OK;
  }
  std::vector<ULONG> Columns() override { return columns_; }

 private:
  const std::vector<PropList> rows_;
  const std::vector<ULONG> columns_;
};

}  // namespace

std::unique_ptr<RowSource> MakeRows(std::vector<PropList> rows, std::vector<ULONG> columns) {
  return std::make_unique<ListedRows>(std::move(rows), std::move(columns));
}

}  // namespace orv::kit
