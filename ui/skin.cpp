#include "ui/skin.h"

namespace vlout::ui {

std::optional<std::string_view> skinFileName(std::int16_t theme) {
  if (theme == 2) return "Office2007.cjstyles";
  if (theme >= 0 && theme <= 7) return "WinXP.Luna.cjstyles";
  return std::nullopt;
}

void applySkin(Component& component, Toolkit& toolkit) {
  const auto name = skinFileName(component.skinTheme());
  if (!name) return;
  const auto file = component.folder() / "Styles" / *name;
  std::error_code ignored;
  if (std::filesystem::exists(file, ignored)) toolkit.applySkin(file);
}

}  // namespace vlout::ui
