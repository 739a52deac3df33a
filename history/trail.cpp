#include "history/trail.h"

#include <string_view>

namespace vlout::history {
namespace {

std::optional<Cell> valueIn(const Cells& cells, std::string_view column, bool isThere) {
  if (!isThere) return std::nullopt;
  const auto found = cells.find(column);
  return found == cells.end() ? Cell() : found->second;
}

}  // namespace

void addTo(RowTrail& trail, int run, const RowWrite& write) {
  const bool was = write.change != Change::Added;
  const bool is = write.change != Change::Removed;
  const bool isWhole = was != is;
  const auto thereIf = [](bool isThere) {
    return isThere ? std::optional(Cell("1")) : std::nullopt;
  };
  if (isWhole) trail[""].write(run, thereIf(was), thereIf(is));
  for (const Cells* const cells : {&write.before, &write.after}) {
    for (const auto& [column, cell] : *cells) trail.try_emplace(column);
  }
  for (auto& [column, values] : trail) {
    const bool isTouched = isWhole || write.before.contains(column) || write.after.contains(column);
    if (column.empty() || !isTouched) continue;
    values.write(run, valueIn(write.before, column, was), valueIn(write.after, column, is));
  }
}

}  // namespace vlout::history
