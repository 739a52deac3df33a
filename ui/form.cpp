#include "ui/form.h"

#include <exception>
#include <utility>

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
  const int middleLeft = (screen.width - width) / 2;
  const int middleTop = (screen.height - height) / 2;
  // Places are 16 bits wide. If one does not fit, the form has no place, as after any error here.
  if (!std::in_range<std::int16_t>(middleLeft) || !std::in_range<std::int16_t>(middleTop)) return;
  left = middleLeft;
  top = middleTop;
  centred = true;
}

}  // namespace vlout::ui
