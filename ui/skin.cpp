#include "ui/skin.h"

namespace vlout::ui {

std::optional<std::string_view> skinFileName(std::int16_t theme) {
  if (theme == 2) return "Office2007.cjstyles";
  if (theme >= 0 && theme <= 7) return "WinXP.Luna.cjstyles";
  return std::nullopt;
}

void applySkin(Component& component, Toolkit& toolkit) {
  const auto theme = component.skinTheme();
  const auto name = theme ? skinFileName(*theme) : std::nullopt;
  const auto file = component.folder() / "Styles" / name.value_or("");
  std::error_code ignored;
  toolkit.applySkin(name && std::filesystem::exists(file, ignored) ? file
                                                                   : std::filesystem::path());
}

}  // namespace vlout::ui
