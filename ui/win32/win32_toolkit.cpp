#include "ui/win32/win32_toolkit.h"

#include <bit>

#include "ui/listed.h"
#include "windows/com.h"
#include "windows/text.h"

namespace vlout::ui::win32 {
namespace {

constexpr wchar_t kTitle[] = L"VLOUTSync";  // the component's default title

BOOL CALLBACK collect(HWND window, LPARAM list) {
  if (IsWindowVisible(window) != FALSE && IsWindowEnabled(window) != FALSE) {
    reinterpret_cast<std::vector<HWND>*>(list)->push_back(window);
  }
  return TRUE;
}

// The windows of this thread, the host's and ours, that take input, the topmost first.
std::vector<HWND> openWindows() {
  std::vector<HWND> windows;
  EnumThreadWindows(GetCurrentThreadId(), collect, reinterpret_cast<LPARAM>(&windows));
  return windows;
}

// Keeps all other windows of the thread from taking input for the length of a modal call.
class Disabled {
 public:
  Disabled() : windows_(openWindows()) {
    for (const HWND window : windows_) EnableWindow(window, FALSE);
  }
  ~Disabled() {
    for (const HWND window : windows_) EnableWindow(window, TRUE);
  }
  Disabled(const Disabled&) = delete;
  Disabled& operator=(const Disabled&) = delete;

 private:
  std::vector<HWND> windows_;
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
  for (auto each = windows_.rbegin(); each != windows_.rend(); ++each) {
    if ((*each)->isOpen()) return (*each)->window();
  }
  if (const HWND active = GetActiveWindow()) return GetAncestor(active, GA_ROOT);
  // The user is in another program; the host's window is still the one to be over.
  const std::vector<HWND> windows = openWindows();
  return windows.empty() ? nullptr : windows.front();
}

void Win32Toolkit::showModal(Form& form) {
  FormWindow window(form, module_, owner(),
                    [this](std::string_view text) { messageBox(MessageIcon::Critical, text); });
  // Enabled again before the window goes, or the system would bring another program to the front.
  const Disabled disabled;
  const Listed listed(windows_, window);
  skin_.dress(window.window());
  window.show();
  while (form.isVisible() && window.isOpen()) {
    MSG message{};
    if (GetMessageW(&message, nullptr, 0, 0) > 0) {
      dispatch(message);
      continue;
    }
    quit(message);
    if (form.isVisible()) form.unload();
  }
  if (form.isVisible()) form.unload();  // its owner has taken the window with it
}

void Win32Toolkit::messageBox(MessageIcon icon, std::string_view text) {
  MessageBoxW(owner(), windows::wide(text).c_str(), kTitle, MB_OK | iconFlag(icon));
}

ScreenSize Win32Toolkit::screenSize() const {
  const auto [whole, work, dpi] = screenOf(owner());
  return {MulDiv(whole.right - whole.left, 1440, dpi), MulDiv(whole.bottom - whole.top, 1440, dpi)};
}

Guid Win32Toolkit::newGuid() const {
  GUID id{};
  const HRESULT result = CoCreateGuid(&id);
  if (FAILED(result)) throw windows::ComError(result, windows::errorText(result));
  return std::bit_cast<Guid>(id);
}

void Win32Toolkit::pump() {
  Sleep(1);
  pumpAtOnce();
}

void Win32Toolkit::pumpAtOnce() {
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
