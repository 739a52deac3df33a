// Encodes a UID, which may contain anything, as a word that can be a file name or part of a line.
#pragma once

#include <string>
#include <string_view>

namespace vlout::outlook::evolution {

[[nodiscard]] std::string asWord(std::string_view uid);
[[nodiscard]] std::string fromWord(std::string_view word);

}  // namespace vlout::outlook::evolution
