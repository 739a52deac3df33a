#include "entry/cli/columns.h"

#include <algorithm>
#include <glib.h>
#include <ostream>
#include <unistd.h>
#include <utility>

#include "text/shown_text.h"
#include "text/utf8.h"

namespace vlout::entry::cli {
namespace {

constexpr std::size_t kGap = 2;
// A longer cell moves the rest of its own line only.
constexpr std::size_t kWidest = 40;

// In a terminal: Hangul and the like take two columns, combining characters none.
std::size_t widthOf(std::string_view cell) {
  std::size_t width = 0;
  for (const std::string_view character : text::characters(cell)) {
    const char32_t point = text::codePoint(character);
    if (g_unichar_iszerowidth(point) != 0) continue;
    width += g_unichar_iswide(point) != 0 ? 2 : 1;
  }
  return width;
}

}  // namespace

Columns::Columns(std::ostream& out) : out_(out), aligned_(isatty(STDOUT_FILENO) != 0) {}

Columns::~Columns() {
  printAligned();
}

void Columns::add(std::vector<std::string> cells) {
  for (std::string& cell : cells) cell = text::onOneLine(cell);
  if (aligned_) {
    lines_.push_back(std::move(cells));
    return;
  }
  for (std::size_t i = 0; i < cells.size(); ++i) out_ << (i == 0 ? "" : "\t") << cells[i];
  out_ << '\n';
}

void Columns::printAligned() const {
  std::vector<std::size_t> widths;
  for (const Line& line : lines_) {
    widths.resize(std::max(widths.size(), line.size()));
    for (std::size_t i = 0; i < line.size(); ++i) {
      const std::size_t width = widthOf(line[i]);
      if (width <= kWidest) widths[i] = std::max(widths[i], width);
    }
  }
  for (const Line& line : lines_) {
    std::size_t blanks = 0;  // before the next cell that is not empty
    for (std::size_t i = 0; i < line.size(); ++i) {
      const std::size_t width = widthOf(line[i]);
      if (width > 0) out_ << std::string(std::exchange(blanks, 0), ' ') << line[i];
      blanks += (widths[i] > width ? widths[i] - width : 0) + kGap;
    }
    out_ << '\n';
  }
}

}  // namespace vlout::entry::cli
