// Text of unknown origin as a terminal may be given it: what would end a line, move the cursor or
// turn the direction of the text around becomes a blank.
#pragma once

#include <string>
#include <string_view>

namespace vlout::text {

// The text on one line, in one column.
[[nodiscard]] std::string onOneLine(std::string_view text);

// The same, but with the text's own line ends.
[[nodiscard]] std::string onItsLines(std::string_view text);

}  // namespace vlout::text
