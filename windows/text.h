// Texts at the boundary to Windows: UTF-8 inside, UTF-16 outside. Every Windows adapter converts
// here and nowhere else.
#pragma once

#include <comdef.h>
#include <string>
#include <string_view>

namespace vlout::windows {

// What is not well-formed becomes U+FFFD, in both directions.
[[nodiscard]] std::wstring wide(std::string_view text);
[[nodiscard]] std::string utf8(std::wstring_view text);

[[nodiscard]] inline _bstr_t bstr(std::string_view text) {
  return wide(text).c_str();
}

}  // namespace vlout::windows
