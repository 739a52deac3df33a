// Turns a form's arrangement into coordinates: how small the window may be, and where each control
// goes in a window of a given size. It is for toolkits that place controls by coordinates; they
// measure the single controls.
#pragma once

#include <functional>

#include "ui/layout.h"

namespace vlout::ui {

struct Size {
  int width = 0;
  int height = 0;
};

struct Rect {
  int left = 0;
  int top = 0;
  int width = 0;
  int height = 0;
};

class Arranger {
 public:
  using Measure = std::function<Size(const Layout&)>;
  using Place = std::function<void(const Layout&, const Rect&)>;

  // `gap` lies between neighbours. `measure` gives the least size of a control.
  Arranger(int gap, Measure measure) : gap_(gap), measure_(std::move(measure)) {}

  [[nodiscard]] Size leastSize(const Layout& part) const;

  // Gives the part the whole rectangle and calls `place` for each of its controls.
  void arrange(const Layout& part, const Rect& rect, const Place& place) const;

 private:
  struct Track {  // a column or row of a grid
    int least = 0;
    int stretch = 0;
  };
  using Tracks = std::vector<Track>;

  // Rows and columns are grids of one row and of one column.
  [[nodiscard]] static std::size_t columnsOf(const Layout& part);
  [[nodiscard]] Tracks columnTracks(const Layout& part) const;
  [[nodiscard]] Tracks rowTracks(const Layout& part) const;
  [[nodiscard]] int total(const Tracks& tracks) const;
  [[nodiscard]] std::vector<int> sizes(const Tracks& tracks, int available) const;
  void arrangeGrid(const Layout& part, const Rect& rect, const Place& place) const;

  int gap_;
  Measure measure_;
};

}  // namespace vlout::ui
