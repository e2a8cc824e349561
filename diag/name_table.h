// Tables of numbers and names, sorted at compile time and searched by halving.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace diag {

struct NumberName {
  uint32_t number;
  std::string_view name;
};

template <size_t kSize>
constexpr bool IsStrictlySorted(const std::array<NumberName, kSize>& table) {
  return std::adjacent_find(table.begin(), table.end(), [](const NumberName& a, const NumberName& b) {
           return a.number >= b.number;
         }) == table.end();
}

template <size_t kSize>
constexpr std::string_view FindName(const std::array<NumberName, kSize>& table, uint32_t number) {
  const auto found =
      std::lower_bound(table.begin(), table.end(), number,
                       [](const NumberName& entry, uint32_t wanted) { return entry.number < wanted; });
  return found != table.end() && found->number == number ? found->name : std::string_view();
}

}  // namespace diag
