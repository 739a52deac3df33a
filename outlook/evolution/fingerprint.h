// Tells whether two texts of a contact have the same content. Address books rewrite what they are
// given in a form of their own and add remarks; none of that counts as a change. The table of
// change times and the store use it.
#pragma once

#include <cstdint>
#include <string_view>

namespace vlout::outlook::evolution {

// The same for texts that differ in the order of parameters or of lines of different names, in
// quotes, escapes and folding, in REV, VERSION and UID, in the key X-VLID, or in the store's own
// X-EVOLUTION remarks; properties that say something about the person count, whatever their name.
[[nodiscard]] std::uint64_t contentFingerprint(std::string_view cardText);

// Differs for any two texts.
[[nodiscard]] std::uint64_t textFingerprint(std::string_view cardText);

}  // namespace vlout::outlook::evolution
