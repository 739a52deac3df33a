// What a window's controls share on one screen: the system's message font at the screen's
// resolution, and the measures that follow from it.
#pragma once

#include <windows.h>

#include <memory>
#include <string_view>

#include "ui/arrange.h"

namespace vlout::ui::win32 {

struct GdiDeleter {
  void operator()(void* object) const { DeleteObject(object); }
};
template <typename Handle>
using GdiObject = std::unique_ptr<std::remove_pointer_t<Handle>, GdiDeleter>;

// One of the machine's screens: the whole of it and what the task bar leaves, in pixels of the
// desktop that it is a part of, and its dots per inch.
struct Screen {
  RECT whole{};
  RECT work{};
  int dpi = 96;
};

// The screen that most of a window is on; the main screen for no window.
[[nodiscard]] Screen screenOf(HWND window);

// Dots per inch of the screen that a window is on; of the main screen for no window.
[[nodiscard]] int dpiOf(HWND window);

// Keeps the system from scaling a dialog's controls by itself when it moves to another screen.
void scaleByOurselves(HWND dialog);

class Look {
 public:
  explicit Look(int dpi);

  [[nodiscard]] HFONT font() const { return font_.get(); }
  [[nodiscard]] HFONT boldFont() const { return bold_.get(); }
  // A length given for a screen of 96 dots per inch, in pixels.
  [[nodiscard]] int pixels(int length) const { return MulDiv(length, dpi_, 96); }
  [[nodiscard]] int twips(int length) const { return MulDiv(length, dpi_, 1440); }
  [[nodiscard]] int lineHeight() const { return lineHeight_; }
  [[nodiscard]] int characters(int count) const { return count * characterWidth_; }
  [[nodiscard]] int textWidth(std::string_view text) const;

 private:
  int dpi_;
  GdiObject<HFONT> font_;
  GdiObject<HFONT> bold_;
  int lineHeight_ = 0;
  int characterWidth_ = 0;
};

}  // namespace vlout::ui::win32
