// The pictures that the windows show, drawn when they are needed in whatever size the screen wants:
// what the three modes do, and the folders of the group tree. The views turn the pixels into their
// toolkit's images.
#pragma once

#include <cstdint>
#include <vector>

namespace vlout::ui {

enum class Picture {
  Import,  // the first three in the order of the main window's image list
  Export,
  Sync,
  OpenRoot,  // the next three in the order of the group tree's
  Folder,
  UnassignedFolder,
};

// Row after row from the top; 0xAARRGGBB, with the colours premultiplied by alpha.
struct Pixels {
  int width = 0;
  int height = 0;
  std::vector<std::uint32_t> argb;
};

// `height` in pixels. The pictures of the modes are twice as wide as they are high, folders square.
[[nodiscard]] Pixels drawPicture(Picture picture, int height);

}  // namespace vlout::ui
