// Compares texts of any script without regard to case, for file names that people have chosen.
// Names of columns and keys, which are ASCII, are compared by `text/ascii.h`.
#pragma once

#include <string_view>

namespace vlout::text {

// Both are UTF-8. They are compared letter by letter, as the system pairs letters: "ß" is not "SS".
[[nodiscard]] bool equalsIgnoringCase(std::string_view a, std::string_view b);

}  // namespace vlout::text
