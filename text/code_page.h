// The Korean code page 949, which the host application writes its files in. Only the option file,
// the export list and the Latin-script test use it, and always this page, whatever the machine's
// locale.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vlout::text {

// `text` in UTF-8, or nothing when it is not a text in code page 949.
[[nodiscard]] std::optional<std::string> fromCodePage949(std::string_view text);

// `text` (UTF-8) in code page 949, or nothing when it holds a character that the page lacks.
[[nodiscard]] std::optional<std::string> toCodePage949(std::string_view text);

}  // namespace vlout::text
