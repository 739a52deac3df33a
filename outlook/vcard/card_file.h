// Finds the cards in the text of a vCard file, and what can be told about each without decoding it.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "outlook/vcard/content_line.h"

namespace vlout::outlook::vcard {

// One complete card in the text of a file.
struct CardSpan {
  std::size_t start = 0;
  std::size_t size = 0;
  std::size_t line = 0;               // of its BEGIN, from 1
  bool isGroup = false;               // a list of contacts, not a contact
  bool isPlain = true;                // in UTF-8 throughout, and nothing says otherwise
  std::optional<std::string> vlid{};  // the row number that the card carries
  std::string nameLines{};            // the lines that its name, and how to read it, follow from
};

// Something in a file that is not part of a readable card.
struct Stray {
  enum Kind { Text, BeginWithoutEnd, EndWithoutBegin };
  Kind kind;
  std::size_t line;  // from 1; of a text, its first line
};

struct CardFileText {
  std::vector<CardSpan> cards;
  std::vector<Stray> strays;

  // True when there is no trace of a card.
  [[nodiscard]] bool isForeign() const;
};

[[nodiscard]] CardFileText findCards(std::string_view fileText);

// Converts the bytes of a file to UTF-8 if they begin with a UTF-16 byte-order mark. Returns the
// form that they had, or nothing if they are damaged.
[[nodiscard]] std::optional<FileForm> convertFile(std::string& bytes);

// The text as the bytes of a file of that form.
[[nodiscard]] std::string fileBytes(std::string_view text, FileForm form);

// True when two texts of a card differ only in what this program keeps there for itself.
[[nodiscard]] bool holdsSameData(std::string_view a, std::string_view b);

// The display name of a file's first card, by which people know the file; empty if there is none.
[[nodiscard]] std::string firstDisplayName(std::string bytes);

}  // namespace vlout::outlook::vcard
