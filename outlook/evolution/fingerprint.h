// Tells whether two texts of a contact say the same. Address books write what they are given in a
// form of their own and add remarks of theirs; none of that is a change. Those who keep the time of
// a contact's last change, or look whether it has moved on, ask here.
#pragma once

#include <cstdint>
#include <string_view>

namespace vlout::outlook::evolution {

// The same for texts that differ in the order of parameters or of lines of different names, in
// quotes, escapes and folding, in REV, VERSION and UID, in the key X-VLID, or in the store's own
// X-EVOLUTION remarks; properties that carry something of the person count, whatever their name.
[[nodiscard]] std::uint64_t contentFingerprint(std::string_view cardText);

// Differs for any two texts.
[[nodiscard]] std::uint64_t textFingerprint(std::string_view cardText);

}  // namespace vlout::outlook::evolution
