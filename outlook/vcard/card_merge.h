// Puts changed cards into the text of a file of several cards, which another program may have
// changed meanwhile. A card that both have changed stays as the other program left it.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace vlout::outlook::vcard {

// The new text of a card. The card is recognised by its earlier texts, one for each save, wherever
// it is in the file now.
struct CardChange {
  std::vector<std::uint64_t> earlier{};  // hashes of its texts
  std::string text{};
  std::int64_t row =
      0;  // the number of the row whose data the text has, but the first of those had not
  bool isWritten = false;  // the file has had it
};
using CardChanges = std::map<std::size_t, CardChange>;  // by the card's index in the file

struct MergedFile {
  std::string bytes;
  bool isChanged = false;           // the bytes differ from before
  std::vector<std::size_t> lost{};  // the cards that another program has changed
};

[[nodiscard]] MergedFile mergeCards(std::string_view fileBytes, const CardChanges& changes);

}  // namespace vlout::outlook::vcard
