// The two skins that the host's settings can ask for, as palettes and style sheets of our own.
#pragma once

#include <QPalette>

#include <filesystem>
#include <optional>

namespace vlout::ui::qt {

struct Skin {
  QPalette palette;
  QString styleSheet;
};

// The skin of that file; nothing for a file that is none of the two.
[[nodiscard]] std::optional<Skin> skinOf(const std::filesystem::path& skinFile);

}  // namespace vlout::ui::qt
