#include "ui/arrange.h"

#include <algorithm>

namespace vlout::ui {
namespace {

using Kind = Layout::Kind;

// Controls that use whatever height they get; the others stand in the middle of it.
bool fillsHeight(const Layout& part) {
  return part.kind <= Kind::Panel || part.kind == Kind::ListView || part.kind == Kind::TreeView;
}

}  // namespace

std::size_t Arranger::columnsOf(const Layout& part) {
  if (part.kind == Kind::Row) return std::max<std::size_t>(part.parts.size(), 1);
  return part.kind == Kind::Grid ? static_cast<std::size_t>(part.columns) : 1;
}

Arranger::Tracks Arranger::columnTracks(const Layout& part) const {
  Tracks tracks(columnsOf(part));
  for (std::size_t i = 0; i < part.parts.size(); ++i) {
    Track& track = tracks[i % tracks.size()];
    track.least = std::max(track.least, leastSize(part.parts[i]).width);
    // In a column, parts stretch downwards.
    if (part.kind != Kind::Column) track.stretch = std::max(track.stretch, part.parts[i].stretch);
  }
  if (part.kind == Kind::Column) tracks.front().stretch = 1;
  return tracks;
}

Arranger::Tracks Arranger::rowTracks(const Layout& part) const {
  const std::size_t columns = columnsOf(part);
  Tracks tracks((part.parts.size() + columns - 1) / columns);
  for (std::size_t i = 0; i < part.parts.size(); ++i) {
    Track& track = tracks[i / columns];
    track.least = std::max(track.least, leastSize(part.parts[i]).height);
    if (part.kind == Kind::Column) track.stretch = part.parts[i].stretch;
  }
  if (part.kind == Kind::Row && !tracks.empty()) tracks.front().stretch = 1;
  return tracks;
}

int Arranger::total(const Tracks& tracks) const {
  int sum = tracks.empty() ? 0 : gap_ * static_cast<int>(tracks.size() - 1);
  for (const Track& track : tracks) sum += track.least;
  return sum;
}

Size Arranger::leastSize(const Layout& part) const {
  switch (part.kind) {
    case Kind::Row:
    case Kind::Column:
    case Kind::Grid:
      return {total(columnTracks(part)), total(rowTracks(part))};
    case Kind::Stack:
    case Kind::Panel: {
      Size least;
      for (const Layout& each : part.parts) {
        const Size size = leastSize(each);
        least = {std::max(least.width, size.width), std::max(least.height, size.height)};
      }
      return least;
    }
    case Kind::Space:
      return {};
    default:
      return measure_(part);
  }
}

// The space left over is divided among the tracks by their shares.
std::vector<int> Arranger::sizes(const Tracks& tracks, int available) const {
  int left = std::max(available - total(tracks), 0);
  int shares = 0;
  for (const Track& track : tracks) shares += track.stretch;
  std::vector<int> result;
  for (const Track& track : tracks) {
    const int extra = shares == 0 ? 0 : left * track.stretch / shares;
    left -= extra;
    shares -= track.stretch;
    result.push_back(track.least + extra);
  }
  return result;
}

void Arranger::arrangeGrid(const Layout& part, const Rect& rect, const Place& place) const {
  const std::vector<int> widths = sizes(columnTracks(part), rect.width);
  const std::vector<int> heights = sizes(rowTracks(part), rect.height);
  int top = rect.top;
  for (std::size_t row = 0; row < heights.size(); ++row) {
    int left = rect.left;
    for (std::size_t column = 0; column < widths.size(); ++column) {
      const std::size_t index = row * widths.size() + column;
      if (index >= part.parts.size()) break;
      arrange(part.parts[index], {left, top, widths[column], heights[row]}, place);
      left += widths[column] + gap_;
    }
    top += heights[row] + gap_;
  }
}

void Arranger::arrange(const Layout& part, const Rect& rect, const Place& place) const {
  switch (part.kind) {
    case Kind::Row:
    case Kind::Column:
    case Kind::Grid:
      arrangeGrid(part, rect, place);
      break;
    case Kind::Stack:
    case Kind::Panel:
      for (const Layout& each : part.parts) arrange(each, rect, place);
      break;
    case Kind::Space:
      break;
    default: {
      Rect own = rect;
      if (!fillsHeight(part)) {
        own.height = std::min(measure_(part).height, rect.height);
        // Centred vertically, but beside something of many lines, level with its first line.
        const int spare = rect.height - own.height;
        own.top += spare > 2 * own.height ? gap_ / 2 : spare / 2;
      }
      place(part, own);
    }
  }
}

}  // namespace vlout::ui
