// Comparison without regard to case in any script, for names that people have given to files.
// Names of columns and keys, which are ASCII, are compared by `text/ascii.h`.
#pragma once

#include <string_view>

namespace vlout::text {

// Both in UTF-8. Letter by letter as the system pairs them: "ß" is not "SS".
[[nodiscard]] bool equalsIgnoringCase(std::string_view a, std::string_view b);

}  // namespace vlout::text
