#include "ui/drawn_pictures.h"

#include <algorithm>
#include <array>
#include <span>

namespace vlout::ui {
namespace {

struct Point {
  float x;
  float y;
};

// A filled polygon; its points count in sixteenths of the picture's height.
struct Shape {
  std::uint32_t rgb;
  std::vector<Point> points;
};

Shape box(std::uint32_t rgb, float left, float top, float right, float bottom) {
  return {rgb, {{left, top}, {right, top}, {right, bottom}, {left, bottom}}};
}

using Shapes = std::vector<Shape>;

void addCard(Shapes& shapes) {
  shapes.push_back(box(0x5B7083, 1, 3, 11, 13));
  shapes.push_back(box(0xFFFFFF, 1.7F, 3.7F, 10.3F, 12.3F));
  shapes.push_back(box(0xE08A2E, 2.6F, 5, 5.2F, 8.4F));
  for (const float y : {5.0F, 7.2F, 10.0F}) {
    shapes.push_back(box(0x9AA8B4, y > 9 ? 2.6F : 6.2F, y, 9.4F, y + 1));
  }
}

void addAddressBook(Shapes& shapes) {
  shapes.push_back(box(0x1F5C99, 21, 2, 30, 14));
  shapes.push_back(box(0x2F7BC4, 22.2F, 2, 30, 14));
  shapes.push_back({0xFFFFFF, {{25, 5}, {27, 4.2F}, {28, 6}, {26.4F, 8}, {24.8F, 7}}});
  shapes.push_back({0xFFFFFF, {{23.6F, 12}, {24.6F, 9}, {28, 9}, {29, 12}}});
}

// Between card and book, to the left, to the right, or both.
void addArrow(Shapes& shapes, bool toLeft, bool toRight) {
  constexpr std::uint32_t kGreen = 0x2E9E5B;
  shapes.push_back(box(kGreen, toLeft ? 14 : 12, 7.2F, toRight ? 18 : 20, 8.8F));
  if (toLeft) shapes.push_back({kGreen, {{12, 8}, {15, 4.8F}, {15, 11.2F}}});
  if (toRight) shapes.push_back({kGreen, {{20, 8}, {17, 4.8F}, {17, 11.2F}}});
}

void addFolder(Shapes& shapes, std::uint32_t back, std::uint32_t front, bool open) {
  shapes.push_back({back, {{1, 3}, {6, 3}, {7.4F, 5}, {14, 5}, {14, 13}, {1, 13}}});
  const float slant = open ? 2.4F : 0;
  shapes.push_back({front, {{1 + slant, 7}, {14 + slant / 2, 7}, {14, 13}, {1, 13}}});
}

Shapes shapesOf(Picture picture) {
  Shapes shapes;
  switch (picture) {
    case Picture::OpenRoot:
      addFolder(shapes, 0xC9932B, 0xF6CE69, true);
      break;
    case Picture::Folder:
      addFolder(shapes, 0xD9A441, 0xF2C14E, false);
      break;
    case Picture::UnassignedFolder:
      addFolder(shapes, 0x8E9AA5, 0xBCC6CF, false);
      break;
    default:
      addCard(shapes);
      addAddressBook(shapes);
      addArrow(shapes, picture != Picture::Export, picture != Picture::Import);
  }
  return shapes;
}

bool contains(std::span<const Point> polygon, Point p) {
  bool inside = false;
  for (std::size_t i = 0, j = polygon.size() - 1; i < polygon.size(); j = i++) {
    const Point& a = polygon[i];
    const Point& b = polygon[j];
    if ((a.y > p.y) != (b.y > p.y) && p.x < (b.x - a.x) * (p.y - a.y) / (b.y - a.y) + a.x) {
      inside = !inside;
    }
  }
  return inside;
}

// The colour at a point: that of the last shape that covers it; nothing for none.
std::uint32_t colourAt(const Shapes& shapes, Point p) {
  const auto top = std::find_if(shapes.rbegin(), shapes.rend(),
                                [&](const Shape& shape) { return contains(shape.points, p); });
  return top == shapes.rend() ? 0 : 0xFF000000U | top->rgb;
}

}  // namespace

Pixels drawPicture(Picture picture, int height) {
  constexpr int kSamples = 4;  // a side, for smooth edges
  const Shapes shapes = shapesOf(picture);
  const bool isMode = picture <= Picture::Sync;
  Pixels result{.width = isMode ? 2 * height : height, .height = height, .argb = {}};
  const float unit = 16.0F / static_cast<float>(height * kSamples);
  for (int y = 0; y < result.height; ++y) {
    for (int x = 0; x < result.width; ++x) {
      std::array<std::uint32_t, 4> sums{};
      for (int s = 0; s < kSamples * kSamples; ++s) {
        const int column = x * kSamples + s % kSamples;
        const int row = y * kSamples + s / kSamples;
        const float across = static_cast<float>(column) + 0.5F;
        const float down = static_cast<float>(row) + 0.5F;
        const std::uint32_t colour = colourAt(shapes, {across * unit, down * unit});
        for (std::size_t c = 0; c < sums.size(); ++c) sums[c] += (colour >> (8 * c)) & 0xFFU;
      }
      std::uint32_t pixel = 0;
      for (std::size_t c = 0; c < sums.size(); ++c) {
        pixel |= sums[c] / (kSamples * kSamples) << (8 * c);
      }
      result.argb.push_back(pixel);
    }
  }
  return result;
}

}  // namespace vlout::ui
