// How the history names a row.
#pragma once

#include <compare>
#include <cstdint>
#include <string>

namespace vlout::history {

// A row of one of the tables.
struct RowKey {
  std::string table;
  std::int64_t row = 0;
  auto operator<=>(const RowKey&) const = default;
};

}  // namespace vlout::history
