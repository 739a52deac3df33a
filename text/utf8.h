// UTF-8, the form of all text inside the component. Adapters call `sanitizeUtf8` on what comes in
// from outside; everything else may rely on texts being valid and counts characters with
// `characters`.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vlout::text {

// True when `text` is well-formed UTF-8 (no overlong forms, no surrogates, nothing past U+10FFFF).
[[nodiscard]] bool isValidUtf8(std::string_view text);

// `text` with U+FFFD in place of every byte that is not part of a well-formed sequence.
[[nodiscard]] std::string sanitizeUtf8(std::string_view text);

// The characters (code points) of `text`, each as its bytes. A byte that is not part of a
// well-formed sequence counts as a character of its own.
[[nodiscard]] std::vector<std::string_view> characters(std::string_view text);

// The code point that `character`, one well-formed sequence, stands for; U+FFFD otherwise.
[[nodiscard]] char32_t codePoint(std::string_view character);

}  // namespace vlout::text
