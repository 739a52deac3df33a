// What all forms have in common: being loaded, shown, hidden and unloaded, and their place on the
// screen. Hiding and unloading both end the modal call; only a hidden form keeps its controls'
// state for its caller.
#pragma once

#include <cstdint>
#include <string>

#include "ui/layout.h"
#include "ui/toolkit.h"

namespace vlout::ui {

enum class WindowState { Normal, Minimized, Maximized };

// The character code of the Esc key, which closes a form that handles it.
inline constexpr int kEscape = 27;

class Form {
 public:
  explicit Form(Toolkit& toolkit) : toolkit_(toolkit) {}
  Form(const Form&) = delete;
  Form& operator=(const Form&) = delete;
  virtual ~Form() = default;

  // Loads the form if it is not loaded and shows it until it is hidden or unloaded.
  void showModal();
  void hide() { visible_ = false; }

  // Asks the form to close, as the frame's close box does.
  virtual void requestClose() { unload(); }
  void unload();

  // A key that reaches the form's own key handling.
  virtual void keyPress(int characterCode) { static_cast<void>(characterCode); }

  // How the form's controls are arranged; those that it leaves out are not shown.
  [[nodiscard]] virtual Layout layout() = 0;

  [[nodiscard]] bool isLoaded() const { return loaded_; }
  [[nodiscard]] bool isVisible() const { return visible_; }

  std::string caption;
  bool centred = false;  // `left` and `top` say where the form belongs on its screen
  int left = 0;          // in twips
  int top = 0;
  int width = 0;
  int height = 0;
  WindowState windowState = WindowState::Normal;

 protected:
  // Form_Load and Form_Unload. An error in the former ends the load handling there; the form is
  // shown with what was done so far.
  virtual void load() = 0;
  virtual void unloading() {}

  void centreOnScreen();
  [[nodiscard]] Toolkit& toolkit() const { return toolkit_; }

 private:
  Toolkit& toolkit_;
  bool loaded_ = false;
  bool visible_ = false;
};

}  // namespace vlout::ui
