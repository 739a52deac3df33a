// The text of a vCard file: where its cards lie, and what can be told of each without decoding it.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vlout::outlook::vcard {

// One complete card in the text of a file.
struct CardSpan {
  std::size_t start = 0;
  std::size_t size = 0;
  bool isGroup = false;               // a list of contacts, not a contact
  std::optional<std::string> vlid{};  // the row number that the card carries
};

struct CardFileText {
  std::vector<CardSpan> cards;
  bool cutOff = false;  // a card began that has no end
};

[[nodiscard]] CardFileText findCards(std::string_view fileText);

}  // namespace vlout::outlook::vcard
