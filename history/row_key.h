// How the history names a row, and what it keeps of a row.
#pragma once

#include <compare>
#include <cstdint>
#include <map>
#include <string>

namespace vlout::history {

// A row of one of the tables.
struct RowKey {
  std::string table;
  std::int64_t row = 0;
  auto operator<=>(const RowKey&) const = default;
};

// A value with its type, as `store::sqlite::Value::cell` gives it; empty for NULL.
using Cell = std::string;
// By column; a missing one is NULL.
using Cells = std::map<std::string, Cell, std::less<>>;

enum class Change { Changed, Added, Removed };

// A write to a row: the columns that it changed, or the whole row if it was added or removed.
struct RowWrite {
  RowKey key;
  Change change = Change::Changed;
  Cells before;
  Cells after;
};

}  // namespace vlout::history
