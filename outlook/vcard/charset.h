// The character sets that vCards are written in, converted through the system's tables. A name may
// be any that stands in a card; spellings that only phones and webmail use are known here. Decoding
// never guesses: what is not a text of the set has no result.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vlout::outlook::vcard {

inline constexpr std::string_view kUtf8 = "UTF-8";
inline constexpr std::string_view kKorean = "CP949";
inline constexpr std::string_view kLatin1 = "ISO-8859-1";

// `bytes` in UTF-8. A set that programs commonly mean more by than its standard has (EUC-KR, say)
// is read as what they mean. Nothing when the set is unknown or the bytes are not of it.
[[nodiscard]] std::optional<std::string> decode(std::string_view bytes, std::string_view charset);

// `text` (UTF-8) in a set, strictly as the set is defined; nothing when the set lacks a character,
// is unknown, or is one of bytes in which ASCII looks like something else.
[[nodiscard]] std::optional<std::string> encode(std::string_view text, std::string_view charset);

// Whether the set has characters of two or four bytes throughout, so that no line of a card can be
// in it unless the whole file is.
[[nodiscard]] bool isWide(std::string_view charset);

// The sets of texts that stand in one card and name none, one for each: UTF-8 if all can be in it,
// else code page 949 if all can be, else Latin-1. Where single texts disagree with what the others
// clearly are, they are damaged, and are not of the set that is given for them.
[[nodiscard]] std::vector<std::string_view> unnamedCharsets(const std::vector<std::string>& texts);

[[nodiscard]] bool isAscii(std::string_view bytes);

}  // namespace vlout::outlook::vcard
