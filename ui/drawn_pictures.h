// Draws the pictures of the windows in whatever size the screen needs: one for each of the three
// modes, and the folders of the group tree. The views turn the pixels into images of their toolkit.
#pragma once

#include <cstdint>
#include <vector>

namespace vlout::ui {

enum class Picture {
  Import,  // these three are in the order of the main window's image list
  Export,
  Sync,
  OpenRoot,  // these three in the order of the group tree's
  Folder,
  UnassignedFolder,
};

// Row by row from the top, as 0xAARRGGBB, with the colours premultiplied by alpha.
struct Pixels {
  int width = 0;
  int height = 0;
  std::vector<std::uint32_t> argb;
};

// `height` in pixels. The modes' pictures are twice as wide as high; folders are square.
[[nodiscard]] Pixels drawPicture(Picture picture, int height);

}  // namespace vlout::ui
