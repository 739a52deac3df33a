// The comparison normaliser for names and telephone numbers.
#pragma once

#include <string>
#include <string_view>

namespace vlout::outlook {

// `text` without " ", ";", ",", "-", "(" and ")"; everything else stays as it is, letter case too.
[[nodiscard]] std::string normalize(std::string_view text);

}  // namespace vlout::outlook
