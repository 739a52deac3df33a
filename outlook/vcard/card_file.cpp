#include "outlook/vcard/card_file.h"

#include <algorithm>
#include <utility>

#include "outlook/vcard/card_text.h"
#include "text/ascii.h"
#include "text/trim.h"
#include "text/utf8.h"

namespace vlout::outlook::vcard {
namespace {

bool isNamed(std::string_view line, std::string_view name) {
  return text::equalsIgnoringAsciiCase(lineName(line), name);
}

// The key in a line; decoded like any property unless it is as plain as it should be.
std::string keyOf(std::string_view line) {
  const std::string_view plain = plainValue(line);
  if (std::all_of(plain.begin(), plain.end(), text::isAsciiDigit)) return std::string(plain);
  return std::string(text::trim(readProperty(line, Version::V30, kUtf8, FileForm::Bytes).whole()));
}

// Takes from one line of a card what `CardSpan` keeps.
void lookAt(std::string_view line, CardSpan& card) {
  if (namesCharset(line) || isQuotedPrintable(line)) card.isPlain = false;
  if (isNamed(line, "X-VLID")) {
    if (!card.vlid) card.vlid = keyOf(line);
  } else if (isNamed(line, "KIND") || isNamed(line, "X-ADDRESSBOOKSERVER-KIND")) {
    card.isGroup = text::equalsIgnoringAsciiCase(plainValue(line), "group");
  } else if (isNamed(line, "N") || isNamed(line, "FN") || isNamed(line, "VERSION")) {
    card.nameLines += line;
  } else if (isNamed(line, "X-EVOLUTION-LIST")) {
    card.isGroup = text::equalsIgnoringAsciiCase(plainValue(line), "true");
  }
}

bool isBlankLine(std::string_view line) {
  constexpr std::string_view kBlanks = " \t\r\n\xEF\xBB\xBF";
  return line.find_first_not_of(kBlanks) == std::string_view::npos;
}

class CardFinder {
 public:
  explicit CardFinder(std::string_view fileText) : fileText_(fileText) {}

  void see(std::string_view line, std::size_t number) {
    if (isFrameLine(line, "BEGIN")) {
      begin(line, number);
    } else if (depth_ == 0) {
      seeOutside(line, number);
    } else if (isFrameLine(line, "END")) {
      end(line);
    } else if (beginsInnerCard(line)) {
      ++depth_;
    } else if (depth_ == 1) {
      lookAt(line, card_);
    }
    afterAgent_ = isNamed(line, "AGENT");
  }

  CardFileText finish() {
    closeUnended();
    return std::move(found_);
  }

 private:
  [[nodiscard]] std::size_t offset(const char* at) const {
    return static_cast<std::size_t>(at - fileText_.data());
  }

  void closeUnended() {
    if (depth_ > 0) found_.strays.push_back({Stray::BeginWithoutEnd, card_.line});
    depth_ = 0;
  }

  void begin(std::string_view line, std::size_t number) {
    // Only an agent's card may stand inside another; any other beginning means that the card before
    // it has no end.
    if (!afterAgent_) closeUnended();
    if (depth_++ == 0) card_ = CardSpan{.start = offset(line.data()), .line = number};
    inText_ = false;
  }

  void end(std::string_view line) {
    if (--depth_ > 0) return;
    card_.size = offset(line.data() + line.size()) - card_.start;
    const std::string_view text = fileText_.substr(card_.start, card_.size);
    card_.isPlain = card_.isPlain && text::isValidUtf8(text);
    found_.cards.push_back(std::exchange(card_, {}));
  }

  void seeOutside(std::string_view line, std::size_t number) {
    const bool ends = isFrameLine(line, "END");
    if (!ends && isBlankLine(line)) return;
    if (ends || !inText_) {
      found_.strays.push_back({ends ? Stray::EndWithoutBegin : Stray::Text, number});
    }
    inText_ = !ends;
  }

  std::string_view fileText_;
  CardFileText found_;
  CardSpan card_;
  int depth_ = 0;
  bool afterAgent_ = false;
  bool inText_ = false;
};

// The byte-order mark is a character like any other here, and so comes back as it was.
std::string_view nameOf(FileForm form) {
  return form == FileForm::Utf16Le ? "UTF-16LE" : "UTF-16BE";
}

}  // namespace

bool CardFileText::isForeign() const {
  return cards.empty() && std::all_of(strays.begin(), strays.end(),
                                      [](const Stray& stray) { return stray.kind == Stray::Text; });
}

CardFileText findCards(std::string_view fileText) {
  CardFinder finder(fileText);
  LineReader reader(fileText);
  while (!reader.atEnd()) {
    const std::size_t number = reader.linesRead() + 1;
    finder.see(reader.next(), number);
  }
  return finder.finish();
}

std::optional<FileForm> convertFile(std::string& bytes) {
  const bool little = bytes.starts_with("\xFF\xFE");
  if (!little && !bytes.starts_with("\xFE\xFF")) return FileForm::Bytes;
  const FileForm form = little ? FileForm::Utf16Le : FileForm::Utf16Be;
  auto text = decode(bytes, nameOf(form));
  if (!text) return std::nullopt;
  bytes = *std::move(text);
  return form;
}

std::string fileBytes(std::string_view text, FileForm form) {
  if (form == FileForm::Bytes) return std::string(text);
  // UTF-16 has every character.
  return encode(text, nameOf(form)).value();
}

bool holdsSameData(std::string_view a, std::string_view b) {
  const auto dataOf = [](std::string_view card) {
    std::string data;
    for (LineReader reader(card); !reader.atEnd();) {
      const std::string_view line = reader.next();
      if (!isNamed(line, "X-VLID") && !isNamed(line, "REV")) data += line;
    }
    return data;
  };
  return dataOf(a) == dataOf(b);
}

std::string firstDisplayName(std::string bytes) {
  const auto form = convertFile(bytes);
  const auto cards = form ? findCards(bytes).cards : std::vector<CardSpan>();
  if (cards.empty()) return {};
  const CardText card(std::string_view(bytes).substr(cards[0].start, cards[0].size), *form);
  const auto line = card.firstNamed("FN");
  return line ? card.property(*line).whole() : std::string();
}

}  // namespace vlout::outlook::vcard
