#include "ui/form.h"

#include <exception>

namespace vlout::ui {

void Form::showModal() {
  if (!loaded_) {
    loaded_ = true;
    try {
      load();
    } catch (const std::exception& error) {
      toolkit_.messageBox(MessageIcon::Critical, error.what());
    }
  }
  if (!loaded_) return;
  visible_ = true;
  toolkit_.showModal(*this);
  visible_ = false;
}

void Form::unload() {
  if (!loaded_) return;
  visible_ = false;
  unloading();
  loaded_ = false;
}

void Form::centreOnScreen() {
  if (windowState != WindowState::Normal) return;
  const ScreenSize screen = toolkit_.screenSize();
  left = static_cast<std::int16_t>((screen.width - width) / 2);
  top = static_cast<std::int16_t>((screen.height - height) / 2);
}

}  // namespace vlout::ui
