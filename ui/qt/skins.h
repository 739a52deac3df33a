// The two skins that the host's settings can ask for, as our own palettes and style sheets.
#pragma once

#include <QPalette>

#include <filesystem>
#include <optional>

namespace vlout::ui::qt {

struct Skin {
  QPalette palette;
  QString styleSheet;
};

// The skin of that file; nothing for any other file.
[[nodiscard]] std::optional<Skin> skinOf(const std::filesystem::path& skinFile);

}  // namespace vlout::ui::qt
