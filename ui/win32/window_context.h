// How the component's windows see the system during a call from the host: with the common controls
// of the component's own manifest, and sizes in real pixels on every screen. The host's process and
// its other threads keep their settings.
#pragma once

#include <windows.h>

namespace vlout::ui::win32 {

class WindowContext {
 public:
  // `module` carries the manifest.
  explicit WindowContext(HINSTANCE module);
  ~WindowContext();
  WindowContext(const WindowContext&) = delete;
  WindowContext& operator=(const WindowContext&) = delete;

 private:
  HANDLE manifest_;
  ULONG_PTR activation_ = 0;
  void* oldDpiContext_ = nullptr;
};

}  // namespace vlout::ui::win32
