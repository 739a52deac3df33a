// Makes text of unknown origin safe for a terminal: whatever would end a line, move the cursor or
// reverse the direction of the text becomes a blank.
#pragma once

#include <string>
#include <string_view>

namespace vlout::text {

// The text on one line, without tabs.
[[nodiscard]] std::string onOneLine(std::string_view text);

// The same, but the text keeps its line ends.
[[nodiscard]] std::string onItsLines(std::string_view text);

}  // namespace vlout::text
