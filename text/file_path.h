// Converts between paths and texts. On Windows a path's own `string()` is in the machine's code
// page; messages and file names go through these two functions, which use UTF-8 everywhere.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace vlout::text {

[[nodiscard]] inline std::string pathText(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

[[nodiscard]] inline std::filesystem::path pathOf(std::string_view text) {
  return std::u8string(text.begin(), text.end());
}

}  // namespace vlout::text
