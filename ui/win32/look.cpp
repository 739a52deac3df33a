#include "ui/win32/look.h"

#include "windows/late_bound.h"
#include "windows/text.h"

namespace vlout::ui::win32 {
namespace {

// The screen as a device with a font chosen.
class ScreenWithFont {
 public:
  explicit ScreenWithFont(HFONT font) : old_(SelectObject(screen_, font)) {}
  ~ScreenWithFont() {
    SelectObject(screen_, old_);
    ReleaseDC(nullptr, screen_);
  }
  ScreenWithFont(const ScreenWithFont&) = delete;
  ScreenWithFont& operator=(const ScreenWithFont&) = delete;
  [[nodiscard]] HDC get() const { return screen_; }

 private:
  HDC screen_ = GetDC(nullptr);
  HGDIOBJ old_;
};

LOGFONTW messageFont(int dpi) {
  NONCLIENTMETRICSW metrics{};
  metrics.cbSize = sizeof metrics;
  using ForDpi = BOOL(WINAPI*)(UINT, UINT, PVOID, UINT, UINT);
  const auto forDpi = windows::fromUser32<ForDpi>("SystemParametersInfoForDpi");
  if (forDpi != nullptr && forDpi(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0,
                                  static_cast<UINT>(dpi)) != FALSE) {
    return metrics.lfMessageFont;
  }
  SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0);
  return metrics.lfMessageFont;
}

}  // namespace

int dpiOf(HWND window) {
  using ForWindow = UINT(WINAPI*)(HWND);
  const auto forWindow = windows::fromUser32<ForWindow>("GetDpiForWindow");
  if (window != nullptr && forWindow != nullptr) return static_cast<int>(forWindow(window));
  const HDC screen = GetDC(nullptr);
  const int dpi = GetDeviceCaps(screen, LOGPIXELSY);
  ReleaseDC(nullptr, screen);
  return dpi;
}

Screen screenOf(HWND window) {
  const HMONITOR monitor = MonitorFromWindow(window, MONITOR_DEFAULTTOPRIMARY);
  MONITORINFO info{};
  info.cbSize = sizeof info;
  GetMonitorInfoW(monitor, &info);
  // The window's own number would be that of its program, which may not look at screens' numbers.
  using ForMonitor = HRESULT(WINAPI*)(HMONITOR, int, UINT*, UINT*);
  constexpr int kEffective = 0;  // MDT_EFFECTIVE_DPI
  UINT dpi = 0;
  UINT same = 0;
  const auto forMonitor = windows::fromSystem<ForMonitor>(L"shcore.dll", "GetDpiForMonitor");
  const bool known =
      forMonitor != nullptr && SUCCEEDED(forMonitor(monitor, kEffective, &dpi, &same));
  return {info.rcMonitor, info.rcWork, known ? static_cast<int>(dpi) : dpiOf(nullptr)};
}

void scaleByOurselves(HWND dialog) {
  using SetBehaviour = BOOL(WINAPI*)(HWND, int, int);
  constexpr int kDisableAll = 1;  // DDC_DISABLE_ALL
  const auto set = windows::fromUser32<SetBehaviour>("SetDialogDpiChangeBehavior");
  if (set != nullptr) set(dialog, kDisableAll, kDisableAll);
}

Look::Look(int dpi) : dpi_(dpi) {
  LOGFONTW font = messageFont(dpi);
  font_.reset(CreateFontIndirectW(&font));
  font.lfWeight = FW_BOLD;
  bold_.reset(CreateFontIndirectW(&font));
  const ScreenWithFont screen(font_.get());
  TEXTMETRICW metrics{};
  GetTextMetricsW(screen.get(), &metrics);
  lineHeight_ = metrics.tmHeight;
  characterWidth_ = metrics.tmAveCharWidth;
}

int Look::textWidth(std::string_view text) const {
  const ScreenWithFont screen(font_.get());
  const std::wstring wide = windows::wide(text);
  SIZE size{};
  GetTextExtentPoint32W(screen.get(), wide.c_str(), static_cast<int>(wide.size()), &size);
  return size.cx;
}

}  // namespace vlout::ui::win32
