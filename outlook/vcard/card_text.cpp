#include "outlook/vcard/card_text.h"

#include <algorithm>
#include <utility>

#include "text/ascii.h"
#include "text/utf8.h"

namespace vlout::outlook::vcard {
namespace {

bool isLineEnd(char c) {
  return c == '\r' || c == '\n';
}

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::string_view withoutLineEnd(std::string_view line) {
  while (!line.empty() && isLineEnd(line.back())) line.remove_suffix(1);
  return line;
}

std::string_view withoutMarks(std::string_view line) {
  while (line.starts_with(kByteOrderMark)) line.remove_prefix(kByteOrderMark.size());
  return line;
}

bool endsInSoftBreak(std::string_view line) {
  if (!isQuotedPrintable(line)) return false;
  // One line end, not one more empty line.
  if (line.ends_with('\n')) {
    line = line.substr(0, line.find_last_not_of('\r', line.size() - 2) + 1);
  } else if (line.ends_with('\r')) {
    line.remove_suffix(1);
  }
  return line.ends_with('=');
}

// True if the colon that ends the head is in this part of a line. Quotes may have been opened in an
// earlier part.
bool endsHead(std::string_view part, bool& inQuotes) {
  for (const char c : part) {
    if (c == '"') inQuotes = !inQuotes;
    if (c == ':' && !inQuotes) return true;
  }
  return false;
}

std::size_t countLines(std::string_view text) {
  std::size_t count = 0;
  for (std::size_t from = 0; from < text.size(); from = findLineEnd(text, from).next) ++count;
  return count;
}

Version versionFrom(std::string_view value) {
  if (value.starts_with("2")) return Version::V21;
  return value.starts_with("4") ? Version::V40 : Version::V30;
}

}  // namespace

std::string_view LineReader::physicalLine(std::size_t from) const {
  if (from >= text_.size()) return {};
  return text_.substr(from, findLineEnd(text_, from).next - from);
}

void LineReader::take(std::string_view line) {
  position_ += line.size();
  ++linesRead_;
}

// After base64, a line without a colon is data that a careless writer did not indent, or the empty
// line that ends it. Long parameters may push the colon into a continuation line.
bool LineReader::beginsProperty(std::size_t from) const {
  std::string_view line = physicalLine(from);
  while (line.find(':') == std::string_view::npos) {
    from += line.size();
    line = physicalLine(from);
    if (line.empty() || (line.front() != ' ' && line.front() != '\t')) return false;
  }
  return true;
}

std::string_view LineReader::next() {
  std::string_view last = physicalLine(position_);
  const std::string_view unmarked = withoutMarks(last);
  if (unmarked.size() < last.size() && isFrameLine(unmarked, "BEGIN")) {
    position_ += last.size() - unmarked.size();
    last = unmarked;
  }
  constexpr std::string_view kEnd = "END:VCARD";
  if (isFrameLine(last.substr(0, kEnd.size()), "END") &&
      isFrameLine(withoutMarks(last.substr(kEnd.size())), "BEGIN")) {
    position_ += kEnd.size();
    return last.substr(0, kEnd.size());
  }
  const std::size_t start = position_;
  take(last);
  if (isFrame(last)) return last;
  bool quoted = isQuotedPrintable(last);
  bool binary = isBinary(last);
  bool inQuotes = false;
  bool headIsWhole = endsHead(last, inQuotes);
  while (!atEnd()) {
    const std::string_view following = physicalLine(position_);
    const bool folded = following.front() == ' ' || following.front() == '\t';
    const bool softBreak = quoted && withoutLineEnd(last).ends_with('=') && !isFrame(following);
    if (!folded && !softBreak && (!binary || beginsProperty(position_))) break;
    last = following;
    take(following);
    if (headIsWhole) continue;
    headIsWhole = endsHead(following, inQuotes);
    if (!headIsWhole) continue;
    const ContentLine soFar = takeApart(text_.substr(start, position_ - start), FileForm::Bytes);
    quoted = soFar.quotedPrintable;
    binary = soFar.binary;
  }
  return text_.substr(start, position_ - start);
}

std::string_view lineName(std::string_view line) {
  // Runs over every line of a folder, so it makes one pass and searches for neither of two
  // characters.
  std::size_t start = 0;
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] == ';' && line.find(':', i) == std::string_view::npos) return {};
    if (line[i] == ';' || line[i] == ':') return line.substr(start, i - start);
    if (line[i] == '.') start = i + 1;
  }
  return {};
}

std::string_view plainValue(std::string_view line) {
  const std::size_t colon = line.find(':');
  if (colon == std::string_view::npos) return {};
  std::string_view value = line.substr(colon + 1);
  while (!value.empty() && (isLineEnd(value.back()) || value.back() == ' ')) value.remove_suffix(1);
  while (!value.empty() && value.front() == ' ') value.remove_prefix(1);
  return value;
}

bool isFrameLine(std::string_view line, std::string_view keyword) {
  if (line.empty() || text::asciiLower(line.front()) != text::asciiLower(keyword.front())) {
    return false;  // most lines, told by their first character
  }
  return text::equalsIgnoringAsciiCase(lineName(line), keyword) &&
         text::equalsIgnoringAsciiCase(plainValue(line), "VCARD");
}

bool isFrame(std::string_view line) {
  return isFrameLine(line, "BEGIN") || isFrameLine(line, "END");
}

bool beginsInnerCard(std::string_view line) {
  return text::equalsIgnoringAsciiCase(lineName(line), "AGENT") &&
         isFrameLine(plainValue(line), "BEGIN");
}

CardText::CardText() : begin_("BEGIN:VCARD\r\nVERSION:3.0\r\n"), end_("END:VCARD\r\n") {
  constexpr std::size_t kUsualLines = 32;
  lines_.reserve(kUsualLines);
}

CardText::CardText(std::string_view text, FileForm form) : form_(form) {
  LineReader reader(text);
  begin_ = reader.next();
  if (!begin_.ends_with("\r\n")) lineEnd_ = begin_.ends_with('\r') ? "\r" : "\n";
  int depth = 1;
  while (!reader.atEnd()) {
    const std::string_view raw = reader.next();
    if (isFrameLine(raw, "END")) --depth;
    if (depth == 0) {
      end_ = raw;
      break;
    }
    Line line;
    line.raw = raw;
    if (isFrameLine(raw, "BEGIN") || beginsInnerCard(raw)) ++depth;
    // A card inside this one, as old phones keep an agent, does not concern us.
    if (depth == 1 && findColon(raw) != std::string_view::npos) {
      line.name = text::toAsciiUpper(lineName(raw));
    }
    if (line.name == "VERSION") version_ = versionFrom(plainValue(raw));
    lines_.push_back(std::move(line));
  }
  if (!lines_.empty()) lines_.back().wasLast = true;
  decideCharsets(text);
}

// Most cards are in UTF-8 and need no check line by line.
void CardText::decideCharsets(std::string_view text) {
  const bool valid = text::isValidUtf8(text);
  std::vector<std::string> texts;
  std::vector<Line*> lines;
  for (Line& line : lines_) {
    if (line.name.empty() || (valid && !isQuotedPrintable(line.raw))) continue;
    std::string bytes = unnamedBytes(takeApart(line.raw, form_));
    if (bytes.empty()) continue;
    texts.push_back(std::move(bytes));
    lines.push_back(&line);
  }
  isUtf8_ = std::all_of(texts.begin(), texts.end(), text::isValidUtf8);
  const auto sets = unnamedCharsets(texts);
  for (std::size_t i = 0; i < lines.size(); ++i) lines[i]->unnamed = sets[i];
}

std::vector<CardText::Position> CardText::named(std::string_view name) const {
  std::vector<Position> positions;
  for (Position i = 0; i < lines_.size(); ++i) {
    if (lines_[i].name == name) positions.push_back(i);
  }
  return positions;
}

std::optional<CardText::Position> CardText::firstNamed(std::string_view name,
                                                       Position start) const {
  for (Position i = start; i < lines_.size(); ++i) {
    if (lines_[i].name == name) return i;
  }
  return std::nullopt;
}

const Property& CardText::property(Position position) const {
  const Line& line = lines_[position];
  if (!line.property) {
    line.property = readProperty(line.raw, version_, line.unnamed, form_);
    line.property->name = line.name;  // which even a line has whose parameters make no sense
  }
  return *line.property;
}

const Property& CardText::original(Position position) const {
  const auto& original = lines_[position].original;
  return original ? *original : property(position);
}

Property& CardText::change(Position position) {
  static_cast<void>(property(position));
  Line& line = lines_[position];
  if (!line.original && !line.raw.empty()) {
    line.original = std::make_unique<const Property>(*line.property);
  }
  return *line.property;
}

void CardText::replace(Position position, std::vector<std::string> values) {
  Property& property = change(position);
  property.values = std::move(values);
  property.unreadable = false;
}

bool CardText::isChanged(Position position) const {
  return lines_[position].changed();
}

Property& CardText::insert(Position position, Property property) {
  Line line;
  line.name = property.name;
  line.property = std::move(property);
  const auto at = lines_.begin() + static_cast<std::ptrdiff_t>(position);
  return *lines_.insert(at, std::move(line))->property;
}

Property& CardText::append(Property property) {
  return insert(lines_.size(), std::move(property));
}

void CardText::remove(Position position) {
  lines_.erase(lines_.begin() + static_cast<std::ptrdiff_t>(position));
}

// --- writing ------------------------------------------------------------------------------------

// New text in a card of version 2.1 is ASCII and names its set.
CardText::Charset CardText::charset() const {
  Charset named{std::string(kUtf8)};
  if (version_ == Version::V21) return named;
  for (const Line& line : lines_) {
    if (line.raw.empty() || line.name.empty()) continue;
    if (line.unnamed != kUtf8) return {std::string(line.unnamed)};
    if (named.named || !namesCharset(line.raw) || isAscii(line.raw)) continue;
    const std::string name = takeApart(line.raw, form_).charset;
    if (!name.empty() && !text::equalsIgnoringAsciiCase(name, kUtf8)) named = {name, true};
  }
  return named;
}

std::optional<std::string> CardText::writeLines(std::span<const Property* const> properties,
                                                const Charset& set) const {
  std::string text = writeProperties(properties, version_, lineEnd_);
  if (set.name == kUtf8 || isAscii(text)) return text;
  if (!set.named) return encode(text, set.name);
  text.clear();
  for (std::size_t i = 0; i < properties.size(); ++i) {
    const auto one = properties.subspan(i, 1);
    const auto bytes = encode(writeProperties(one, version_, lineEnd_, set.name), set.name);
    text += bytes ? *bytes : writeProperties(one, version_, lineEnd_, kUtf8);
  }
  return text;
}

// A line, now in UTF-8, that was in another set without saying so. A damaged one now names its set;
// as the last line without one it would be taken for Latin-1.
std::string CardText::convertedLine(const Line& line) const {
  const ContentLine content = takeApart(line.raw, form_);
  const auto text = decodeLine(content, line.unnamed);
  if (!text && content.charset.empty() && !line.name.empty()) {
    std::string named = line.raw;
    return named.insert(findColon(named), ";CHARSET=" + std::string(line.unnamed));
  }
  if (!text || line.unnamed == kUtf8) return line.raw;
  if (isQuotedPrintable(line.raw)) {
    const Property property = readProperty(line.raw, version_, line.unnamed, form_);
    const Property* const one[] = {&property};
    return writeProperties(one, version_, lineEnd_);
  }
  return *text + lineEnd_;
}

// The card with its new text in that set, or nothing if the set lacks a character.
std::optional<std::string> CardText::writeIn(const Charset& set, bool convertOthers) const {
  std::string text = begin_;
  std::vector<const Property*> changed;
  const auto writeChanged = [&] {
    if (changed.empty()) return true;
    const auto lines = writeLines(changed, set);
    if (lines) text += *lines;
    changed.clear();
    return lines.has_value();
  };
  bool awaitsLine = false;
  for (const Line& line : lines_) {
    if (!line.isWritten()) continue;
    // A value that ends in a soft line break swallows the next line; an empty one does no harm.
    if (std::exchange(awaitsLine, line.wasLast && !line.changed() && endsInSoftBreak(line.raw))) {
      text += lineEnd_;
    }
    if (line.changed()) {
      changed.push_back(&*line.property);
      continue;
    }
    if (!writeChanged()) return std::nullopt;
    text += convertOthers ? convertedLine(line) : line.raw;
  }
  if (!writeChanged()) return std::nullopt;
  return text + end_;
}

// True if the sets of `written` would be recognised as those of this card, so that its unchanged
// lines still read the same.
bool CardText::isReadAlike(const CardText& written, const Charset& set) const {
  auto now = written.lines_.begin();
  for (const Line& line : lines_) {
    if (!line.isWritten()) continue;
    if (now == written.lines_.end()) return false;
    const std::string_view ofNew = isAscii(now->raw) ? kUtf8 : std::string_view(set.name);
    if (now->unnamed != (line.changed() ? ofNew : line.unnamed)) return false;
    ++now;
  }
  return true;
}

std::string CardText::write() const {
  const Charset set = charset();
  auto text = writeIn(set, false);
  if (text && (isUtf8_ || isReadAlike(CardText(*text, form_), set))) return *std::move(text);
  return *writeIn({std::string(kUtf8)}, true);
}

std::vector<CardText::Doubt> CardText::doubts() const {
  std::vector<Doubt> result;
  std::size_t number = countLines(begin_);
  for (const Line& line : lines_) {
    if (!line.name.empty()) {
      const ContentLine content = takeApart(line.raw, form_);
      const bool unreadable = !content.binary && !decodeLine(content, line.unnamed);
      const std::string set = content.charset.empty() ? std::string(line.unnamed) : content.charset;
      if (unreadable || line.unnamed != kUtf8)
        result.push_back({number, line.name, set, unreadable});
    }
    number += countLines(line.raw);
  }
  return result;
}

}  // namespace vlout::outlook::vcard
