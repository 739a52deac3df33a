// The look that the host's settings ask for: which skin file belongs to a skin number.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "ui/component.h"
#include "ui/toolkit.h"

namespace vlout::ui {

// The skin file's name, or nothing for a number without a skin.
[[nodiscard]] std::optional<std::string_view> skinFileName(std::int16_t theme);

// Has the toolkit load the skin of the host's settings if its file exists; otherwise does nothing,
// silently.
void applySkin(Component& component, Toolkit& toolkit);

}  // namespace vlout::ui
