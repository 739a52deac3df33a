// Changed cards put into the text of a file that holds several, which another program may have
// changed meanwhile. A card that was changed by both stays as the other program left it.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace vlout::outlook::vcard {

// What a card is to be. It is known by what it was, one save after another, wherever it lies now.
struct CardChange {
  std::vector<std::uint64_t> earlier{};  // hashes of its texts
  std::string text{};
  std::int64_t row = 0;    // whose data the text has and the first of those had not, by number
  bool isWritten = false;  // it has been in the file
};
using CardChanges = std::map<std::size_t, CardChange>;  // by which one of the file it was

struct MergedFile {
  std::string bytes;
  bool isChanged = false;           // it differs from what it was
  std::vector<std::size_t> lost{};  // the changes of cards that are another program's now
};

[[nodiscard]] MergedFile mergeCards(std::string_view fileBytes, const CardChanges& changes);

}  // namespace vlout::outlook::vcard
