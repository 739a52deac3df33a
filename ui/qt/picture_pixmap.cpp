#include "ui/qt/picture_pixmap.h"

#include <QImage>

namespace vlout::ui::qt {

QPixmap pixmapOf(Picture picture, int height, qreal ratio) {
  const Pixels pixels = drawPicture(picture, qRound(height * ratio));
  const QImage image(reinterpret_cast<const uchar*>(pixels.argb.data()), pixels.width,
                     pixels.height, QImage::Format_ARGB32_Premultiplied);
  QPixmap pixmap = QPixmap::fromImage(image.copy());  // which would go on using our pixels
  pixmap.setDevicePixelRatio(ratio);
  return pixmap;
}

}  // namespace vlout::ui::qt
