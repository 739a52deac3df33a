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

// The whole text, NULs within it too. Throws _com_error when there is no memory.
[[nodiscard]] inline _bstr_t bstr(std::string_view text) {
  const std::wstring units = wide(text);
  BSTR const string = SysAllocStringLen(units.data(), static_cast<UINT>(units.size()));
  if (string == nullptr) _com_issue_error(E_OUTOFMEMORY);
  return {string, false};
}

}  // namespace vlout::windows
