// What the controls of a window share on one screen: the system's message font at the screen's
// resolution, and the measurements that follow from it.
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

// One of the machine's screens: its whole area and what the task bar leaves of it, in pixels of the
// whole desktop, and its dots per inch.
struct Screen {
  RECT whole{};
  RECT work{};
  int dpi = 96;
};

// The screen with the largest part of a window; the main screen if there is no window.
[[nodiscard]] Screen screenOf(HWND window);

// The dots per inch of the window's screen, or of the main screen if there is no window.
[[nodiscard]] int dpiOf(HWND window);

// Keeps the system from scaling a dialog's controls when it moves to another screen.
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
