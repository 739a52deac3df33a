#include "sample/picture.h"

// jpeglib.h uses FILE without declaring it.
#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstddef>
#include <cstdio>
#include <jpeglib.h>
#include <random>
#include <stdexcept>

#include "text/language.h"

namespace vlout::sample {
namespace {

constexpr int kWidth = 160;
constexpr int kHeight = 96;
constexpr int kChannels = 3;
constexpr int kQuality = 85;

struct Color {
  unsigned char red;
  unsigned char green;
  unsigned char blue;
};

struct Area {
  int left;
  int top;
  int width;
  int height;
};

constexpr auto kPapers = std::to_array<Color>(
    {{252, 252, 250}, {248, 246, 238}, {240, 245, 250}, {250, 243, 240}, {243, 248, 240}});
constexpr auto kBands = std::to_array<Color>({{30, 80, 150},
                                              {170, 40, 50},
                                              {30, 120, 90},
                                              {210, 120, 30},
                                              {90, 60, 130},
                                              {60, 70, 80},
                                              {20, 130, 160}});
constexpr Color kInk{45, 45, 50};

// Where the band and the lines of text go. The first line is the name and stands larger.
struct Layout {
  Area band;
  int textLeft;
  int nameTop;
  int linesTop;
};
constexpr auto kLayouts = std::to_array<Layout>({
    {{0, 0, kWidth, 16}, 12, 26, 50},
    {{0, 0, 22, kHeight}, 34, 14, 42},
    {{0, kHeight - 14, kWidth, 14}, 12, 10, 36},
    {{kWidth - 30, 0, 30, kHeight}, 12, 14, 42},
});
constexpr int kLineHeight = 10;
constexpr int kLongestLine = 84;

class Canvas {
 public:
  explicit Canvas(Color paper) { fill({0, 0, kWidth, kHeight}, paper); }

  void fill(Area area, Color color) {
    for (int y = std::max(area.top, 0); y < std::min(area.top + area.height, kHeight); ++y) {
      for (int x = std::max(area.left, 0); x < std::min(area.left + area.width, kWidth); ++x) {
        unsigned char* const pixel = row(y) + std::ptrdiff_t{x} * kChannels;
        pixel[0] = color.red;
        pixel[1] = color.green;
        pixel[2] = color.blue;
      }
    }
  }

  unsigned char* row(int y) {
    return pixels_.data() + static_cast<std::ptrdiff_t>(y) * kWidth * kChannels;
  }

 private:
  std::array<unsigned char, static_cast<std::size_t>(kWidth) * kHeight * kChannels> pixels_{};
};

// Blocks about as wide as letters, with a gap between words: a solid bar would not read as text.
void drawLine(Canvas& canvas, Area line, std::mt19937& random) {
  const int letter = std::max(line.height / 2, 2);
  int left = line.left;
  while (left + letter <= line.left + line.width) {
    const bool gap = random() % 6 == 0;
    const int rise = static_cast<int>(random() % 2);
    if (!gap) canvas.fill({left, line.top + rise, letter, line.height - rise}, kInk);
    left += letter + 1;
  }
}

Canvas drawCard(std::uint32_t variant) {
  std::mt19937 random(variant);
  Canvas canvas(kPapers[random() % kPapers.size()]);
  const Color band = kBands[random() % kBands.size()];
  const Layout& layout = kLayouts[random() % kLayouts.size()];
  canvas.fill(layout.band, band);
  const int nameWidth = 34 + static_cast<int>(random() % 14);
  drawLine(canvas, {layout.textLeft, layout.nameTop, nameWidth, 13}, random);
  const int lines = 3 + static_cast<int>(random() % 2);
  for (int i = 0; i < lines; ++i) {
    const int width = kLongestLine - static_cast<int>(random() % 34);
    drawLine(canvas, {layout.textLeft, layout.linesTop + i * kLineHeight, width, 5}, random);
  }
  return canvas;
}

// Twice the raw pixels: the library allocates a buffer of its own only when this one is full.
using JpegBuffer = std::array<unsigned char, std::size_t{2} * kWidth * kHeight * kChannels>;

// The library's default is to end the program.
struct ErrorReturn {
  jpeg_error_mgr manager;
  std::jmp_buf target;
  std::array<char, JMSG_LENGTH_MAX> message;
};

[[noreturn]] void leaveWithError(j_common_ptr state) {
  // The manager is the first member, so that its address is that of the whole.
  auto* const back = reinterpret_cast<ErrorReturn*>(state->err);
  state->err->format_message(state, back->message.data());
  std::longjmp(back->target, 1);
}

// Holds nothing that a destructor would have to free: the library's way out jumps over destructors.
bool compress(Canvas& canvas, JpegBuffer& buffer, unsigned long& size, ErrorReturn& error) {
  jpeg_compress_struct state{};
  state.err = jpeg_std_error(&error.manager);
  error.manager.error_exit = leaveWithError;
  if (setjmp(error.target) != 0) {
    jpeg_destroy_compress(&state);
    return false;
  }
  jpeg_create_compress(&state);
  unsigned char* start = buffer.data();
  size = buffer.size();
  jpeg_mem_dest(&state, &start, &size);
  state.image_width = kWidth;
  state.image_height = kHeight;
  state.input_components = kChannels;
  state.in_color_space = JCS_RGB;
  jpeg_set_defaults(&state);
  jpeg_set_quality(&state, kQuality, TRUE);
  jpeg_start_compress(&state, TRUE);
  while (state.next_scanline < state.image_height) {
    JSAMPROW row = canvas.row(static_cast<int>(state.next_scanline));
    jpeg_write_scanlines(&state, &row, 1);
  }
  jpeg_finish_compress(&state);
  jpeg_destroy_compress(&state);
  return true;
}

}  // namespace

std::string makeCardPicture(std::uint32_t variant) {
  Canvas canvas = drawCard(variant);
  JpegBuffer buffer;
  unsigned long size = 0;
  ErrorReturn error{};
  if (!compress(canvas, buffer, size, error)) {
    throw std::runtime_error(text::say("명함 그림을 만들지 못했습니다: %1",
                                       "could not draw the card: %1", {error.message.data()}));
  }
  return {reinterpret_cast<const char*>(buffer.data()), size};
}

}  // namespace vlout::sample
