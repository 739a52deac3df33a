// The Latin-script test, which decides how names are split and in which order an address line is
// joined. Name rules and address lines call it.
#pragma once

#include <string>

namespace vlout::text {

// Trims `text` in place and returns true when it counts as Latin: when it is empty or its last
// character is a single byte in code page 949, or in the page's best fit: "é" becomes "e", a jamo
// of a decomposed syllable becomes a letter of its own, and a character that resembles nothing in
// the page becomes "?". Earlier characters do not count, deliberately: a name such as "홍길동 Jr"
// is Latin.
[[nodiscard]] bool isLatinScript(std::string& text);

}  // namespace vlout::text
