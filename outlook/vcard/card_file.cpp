#include "outlook/vcard/card_file.h"

#include <algorithm>
#include <utility>

#include "outlook/vcard/card_text.h"
#include "text/ascii.h"
#include "text/trim.h"

namespace vlout::outlook::vcard {
namespace {

bool isNamed(std::string_view line, std::string_view name) {
  return text::equalsIgnoringAsciiCase(lineName(line), name);
}

// The key that a line carries; decoded like any property unless it is as plain as it should be.
std::string keyOf(std::string_view line) {
  const std::string_view plain = plainValue(line);
  if (std::all_of(plain.begin(), plain.end(), text::isAsciiDigit)) return std::string(plain);
  return std::string(text::trim(readProperty(line, Version::V30).whole()));
}

// Looks at one line of a card for what `CardSpan` tells of it.
void lookAt(std::string_view line, CardSpan& card) {
  if (isNamed(line, "X-VLID")) {
    if (!card.vlid) card.vlid = keyOf(line);
  } else if (isNamed(line, "KIND") || isNamed(line, "X-ADDRESSBOOKSERVER-KIND")) {
    card.isGroup = text::equalsIgnoringAsciiCase(plainValue(line), "group");
  }
}

}  // namespace

CardFileText findCards(std::string_view fileText) {
  CardFileText result;
  LineReader reader(fileText);
  CardSpan card;
  int depth = 0;
  bool afterAgent = false;
  while (!reader.atEnd()) {
    std::size_t start = reader.position();
    std::string_view line = reader.next();
    if (start == 0 &&
        line.starts_with("\xEF\xBB\xBF")) {  // a byte-order mark before the first card
      line.remove_prefix(3);
      start = 3;
    }
    if (isFrameLine(line, "BEGIN")) {
      // Only an agent's card may stand inside another; any other beginning means that the card
      // before it has no end.
      if (depth > 0 && !afterAgent) {
        result.cutOff = true;
        depth = 0;
      }
      if (depth++ == 0) card = CardSpan{.start = start};
    } else if (depth > 0 && isFrameLine(line, "END")) {
      if (--depth == 0) {
        card.size = reader.position() - card.start;
        result.cards.push_back(std::exchange(card, {}));
      }
    } else if (depth == 1) {
      lookAt(line, card);
    }
    afterAgent = isNamed(line, "AGENT");
  }
  result.cutOff = result.cutOff || depth > 0;
  return result;
}

}  // namespace vlout::outlook::vcard
