// What all forms share: loading, showing, hiding and unloading, and the place on the screen. Hiding
// and unloading both end the modal call; only a hidden form keeps the state of its controls for its
// caller.
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

  // Loads the form if necessary, and shows it until it is hidden or unloaded.
  void showModal();
  void hide() { visible_ = false; }

  // Asks the form to close, like the window's close button.
  virtual void requestClose() { unload(); }
  void unload();

  // Handles a key that reaches the form itself.
  virtual void keyPress(int characterCode) { static_cast<void>(characterCode); }

  // The arrangement of the form's controls; controls that it leaves out are not shown.
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
  // Form_Load and Form_Unload. An error ends the load handling at that point; the form is shown as
  // it is then.
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
