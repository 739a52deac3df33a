// Converts the character sets of vCards by the system's tables. A set may have any name that occurs
// in cards; spellings that only phones and webmail use are known here. Decoding never guesses:
// bytes that are not valid in the set have no result.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vlout::outlook::vcard {

inline constexpr std::string_view kUtf8 = "UTF-8";
inline constexpr std::string_view kKorean = "CP949";
inline constexpr std::string_view kLatin1 = "ISO-8859-1";

// `bytes` in UTF-8. If programs commonly use a set's name for a superset (EUC-KR, for example),
// that superset is used. Nothing if the set is unknown or the bytes are not valid in it.
[[nodiscard]] std::optional<std::string> decode(std::string_view bytes, std::string_view charset);

// `text` (UTF-8) in a set, strictly as the set is defined. Nothing if the set lacks a character, is
// unknown, or does not contain ASCII as it is.
[[nodiscard]] std::optional<std::string> encode(std::string_view text, std::string_view charset);

// True for a set whose characters all have two or four bytes, so that a line can be in it only if
// the whole file is.
[[nodiscard]] bool isWide(std::string_view charset);

// The sets of those texts of one card that name none, one for each: UTF-8 if all are valid in it,
// else code page 949 if all are, else Latin-1. A text that contradicts what the others clearly are
// is damaged; the set given for it is theirs, in which it is not valid.
[[nodiscard]] std::vector<std::string_view> unnamedCharsets(const std::vector<std::string>& texts);

[[nodiscard]] bool isAscii(std::string_view bytes);

}  // namespace vlout::outlook::vcard
