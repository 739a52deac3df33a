#include "ui/win32/picture_bitmap.h"

#include <algorithm>

namespace vlout::ui::win32 {

GdiObject<HBITMAP> bitmapOf(Picture picture, int height) {
  const Pixels pixels = drawPicture(picture, height);
  BITMAPINFO info{};
  info.bmiHeader.biSize = sizeof info.bmiHeader;
  info.bmiHeader.biWidth = pixels.width;
  info.bmiHeader.biHeight = -pixels.height;  // from the top
  info.bmiHeader.biPlanes = 1;
  info.bmiHeader.biBitCount = 32;
  void* bits = nullptr;
  GdiObject<HBITMAP> bitmap(CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0));
  if (bitmap) std::copy(pixels.argb.begin(), pixels.argb.end(), static_cast<std::uint32_t*>(bits));
  return bitmap;
}

}  // namespace vlout::ui::win32
