// Turns the component's drawn pictures into pixmaps of Qt.
#pragma once

#include <QPixmap>

#include "ui/drawn_pictures.h"

namespace vlout::ui::qt {

// `height` in the screen's own units; sharp at any `ratio` of pixels to those.
[[nodiscard]] QPixmap pixmapOf(Picture picture, int height, qreal ratio);

}  // namespace vlout::ui::qt
