// The toolkit port on Win32: forms are windows with the system's own controls, modal to the host's
// active window, on the host's user-interface thread. Its message loops also serve the host's
// windows.
#pragma once

#include <windows.h>

#include <vector>

#include "ui/toolkit.h"
#include "ui/win32/form_window.h"
#include "ui/win32/skin_framework.h"

namespace vlout::ui::win32 {

class Win32Toolkit : public Toolkit {
 public:
  // `module` is the component's own.
  explicit Win32Toolkit(HINSTANCE module) : module_(module) {}

  void showModal(Form& form) override;
  void messageBox(MessageIcon icon, std::string_view text) override;
  [[nodiscard]] ScreenSize screenSize() const override;
  [[nodiscard]] Guid newGuid() const override;
  void applySkin(const std::filesystem::path& skinFile) override { skin_.load(skinFile); }
  void pump() override;
  void pumpAtOnce() override;

  // Brings the open window to the front, if there is one.
  void activate() const;

 private:
  [[nodiscard]] HWND owner() const;
  void dispatch(MSG& message) const;
  // Called when the program is to end: passes that on, and asks the forms to close.
  void quit(const MSG& message) const;

  HINSTANCE module_;
  SkinFramework skin_;
  std::vector<FormWindow*> windows_;  // the open ones, the topmost last
};

}  // namespace vlout::ui::win32
