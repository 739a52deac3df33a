// Texts at the boundary to Qt: UTF-8 inside.
#pragma once

#include <QString>

#include <string>
#include <string_view>

namespace vlout::ui::qt {

[[nodiscard]] inline QString textOf(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace vlout::ui::qt
