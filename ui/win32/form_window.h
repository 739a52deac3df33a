// The window of a form: the widgets of its controls, arranged as the form says. Win32Toolkit makes
// one for each modal call.
#pragma once

#include <windows.h>

#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "ui/form.h"
#include "ui/win32/widget.h"

namespace vlout::ui::win32 {

class FormWindow {
 public:
  // Shows a failure inside the window's own message handling.
  using ShowError = std::function<void(std::string_view)>;

  FormWindow(Form& form, HINSTANCE module, HWND owner, ShowError showError);
  ~FormWindow();
  FormWindow(const FormWindow&) = delete;
  FormWindow& operator=(const FormWindow&) = delete;

  [[nodiscard]] HWND window() const { return window_; }
  // False once the window has been destroyed from outside, together with its owner.
  [[nodiscard]] bool isOpen() const { return open_; }
  void show() const;
  [[nodiscard]] Form& form() const { return form_; }

 private:
  static INT_PTR CALLBACK receive(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
  INT_PTR handle(UINT message, WPARAM wParam, LPARAM lParam);

  void addWidgets(const Layout& part, std::vector<const Panel*> panels);
  [[nodiscard]] Widget* widgetOf(HWND window) const;
  [[nodiscard]] Widget* widgetFor(const Layout& part) const;
  [[nodiscard]] Arranger arranger() const;
  [[nodiscard]] Size leastWindowSize() const;
  void applyLook(int dpi);
  void place();
  void arrange();

  Form& form_;
  ShowError showError_;
  Layout layout_;
  HWND window_ = nullptr;
  bool open_ = true;
  std::optional<Look> look_;
  std::vector<std::unique_ptr<Widget>> widgets_;
  std::vector<Panel*> panels_;
};

}  // namespace vlout::ui::win32
