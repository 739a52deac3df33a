#include "ui/win32/win32_toolkit.h"

#include "windows/text.h"

namespace vlout::ui::win32 {
namespace {

constexpr wchar_t kTitle[] = L"VLOUTSync";  // the component's default title

// Keeps a window from taking input for the length of a modal call.
class Disabled {
 public:
  explicit Disabled(HWND window) : window_(window), was_(IsWindowEnabled(window) != FALSE) {
    if (was_) EnableWindow(window_, FALSE);
  }
  ~Disabled() {
    if (was_) EnableWindow(window_, TRUE);
  }
  Disabled(const Disabled&) = delete;
  Disabled& operator=(const Disabled&) = delete;

 private:
  HWND window_;
  bool was_;
};

// Keeps a window in the list of open ones.
class Listed {
 public:
  Listed(std::vector<FormWindow*>& list, FormWindow& window) : list_(list) {
    list_.push_back(&window);
  }
  ~Listed() { list_.pop_back(); }
  Listed(const Listed&) = delete;
  Listed& operator=(const Listed&) = delete;

 private:
  std::vector<FormWindow*>& list_;
};

UINT iconFlag(MessageIcon icon) {
  switch (icon) {
    case MessageIcon::Information:
      return MB_ICONINFORMATION;
    case MessageIcon::Exclamation:
      return MB_ICONEXCLAMATION;
    case MessageIcon::Critical:
      return MB_ICONSTOP;
    default:
      return 0;
  }
}

}  // namespace

HWND Win32Toolkit::owner() const {
  if (!windows_.empty()) return windows_.back()->window();
  const HWND active = GetActiveWindow();
  return active == nullptr ? nullptr : GetAncestor(active, GA_ROOT);
}

void Win32Toolkit::showModal(Form& form) {
  const HWND behind = owner();
  FormWindow window(form, module_, behind,
                    [this](std::string_view text) { messageBox(MessageIcon::Critical, text); });
  // Enabled again before the window goes, or the system would bring another program to the front.
  const Disabled disabled(behind);
  const Listed listed(windows_, window);
  skin_.dress(window.window());
  window.show();
  while (form.isVisible()) {
    MSG message{};
    if (GetMessageW(&message, nullptr, 0, 0) > 0) {
      dispatch(message);
      continue;
    }
    quit(message);
    if (form.isVisible()) form.unload();
  }
}

void Win32Toolkit::messageBox(MessageIcon icon, std::string_view text) {
  MessageBoxW(owner(), windows::wide(text).c_str(), kTitle, MB_OK | iconFlag(icon));
}

ScreenSize Win32Toolkit::screenSize() const {
  const int dpi = dpiOf(nullptr);
  return {MulDiv(GetSystemMetrics(SM_CXSCREEN), 1440, dpi),
          MulDiv(GetSystemMetrics(SM_CYSCREEN), 1440, dpi)};
}

void Win32Toolkit::pump() {
  Sleep(1);
  MSG message{};
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
    if (message.message == WM_QUIT) {
      quit(message);
      return;
    }
    dispatch(message);
  }
}

void Win32Toolkit::activate() const {
  if (!windows_.empty()) SetForegroundWindow(windows_.back()->window());
}

void Win32Toolkit::dispatch(MSG& message) const {
  if (!windows_.empty() && IsDialogMessageW(windows_.back()->window(), &message) != FALSE) return;
  TranslateMessage(&message);
  DispatchMessageW(&message);
}

void Win32Toolkit::quit(const MSG& message) const {
  PostQuitMessage(static_cast<int>(message.wParam));  // the host's own loop has to see it
  for (auto each = windows_.rbegin(); each != windows_.rend(); ++each) {
    (*each)->form().requestClose();
  }
}

}  // namespace vlout::ui::win32
