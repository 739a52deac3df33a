// Trimming as the host application does it: U+0020 at both ends and nothing else. Tabs, line
// breaks and full-width blanks are content and stay.
#pragma once

#include <string_view>

namespace vlout::text {

[[nodiscard]] constexpr std::string_view trimRight(std::string_view text) {
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

[[nodiscard]] constexpr std::string_view trim(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  return trimRight(text);
}

}  // namespace vlout::text
