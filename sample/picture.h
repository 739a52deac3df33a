// The small picture of a name card that a sample card carries as its thumbnail: a light card with a
// coloured band and dark bars where the lines of text would be. The same variant gives the same
// bytes with the same JPEG library. The sample cards call it.
#pragma once

#include <cstdint>
#include <string>

namespace vlout::sample {

// The bytes of a JPEG file, a few kilobytes. Throws std::runtime_error when the JPEG library fails.
[[nodiscard]] std::string makeCardPicture(std::uint32_t variant);

}  // namespace vlout::sample
