// The component's drawn pictures as bitmaps.
#pragma once

#include "ui/drawn_pictures.h"
#include "ui/win32/look.h"

namespace vlout::ui::win32 {

// With transparency, premultiplied as the system wants it; nothing when there is no memory.
[[nodiscard]] GdiObject<HBITMAP> bitmapOf(Picture picture, int height);

}  // namespace vlout::ui::win32
