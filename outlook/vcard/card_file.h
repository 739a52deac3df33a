// The text of a vCard file: where its cards lie, and what can be told of each without decoding it.
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

// Something in a file that belongs to no card that can be read.
struct Stray {
  enum Kind { Text, BeginWithoutEnd, EndWithoutBegin };
  Kind kind;
  std::size_t line;  // from 1; of the first line of a text
};

struct CardFileText {
  std::vector<CardSpan> cards;
  std::vector<Stray> strays;

  // Whether there is no trace of a card.
  [[nodiscard]] bool isForeign() const;
};

[[nodiscard]] CardFileText findCards(std::string_view fileText);

// Brings the bytes of a file into UTF-8 when they begin with the mark of UTF-16; the form that they
// had. Nothing when they are damaged.
[[nodiscard]] std::optional<FileForm> convertFile(std::string& bytes);

// The bytes of a file of that form.
[[nodiscard]] std::string fileBytes(std::string_view text, FileForm form);

// Whether two texts of a card differ in no more than what this program keeps in it for itself.
[[nodiscard]] bool holdsSameData(std::string_view a, std::string_view b);

// The display name of a file's first card, for people to know the file by; empty when there is
// none.
[[nodiscard]] std::string firstDisplayName(std::string bytes);

}  // namespace vlout::outlook::vcard
