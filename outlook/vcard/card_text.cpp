#include "outlook/vcard/card_text.h"

#include "text/ascii.h"

namespace vlout::outlook::vcard {
namespace {

bool isLineEnd(char c) {
  return c == '\r' || c == '\n';
}

std::string_view withoutLineEnd(std::string_view line) {
  while (!line.empty() && isLineEnd(line.back())) line.remove_suffix(1);
  return line;
}

Version versionFrom(std::string_view value) {
  if (value.starts_with("2")) return Version::V21;
  return value.starts_with("4") ? Version::V40 : Version::V30;
}

}  // namespace

std::string_view LineReader::physicalLine(std::size_t from) const {
  if (from >= text_.size()) return {};
  const std::size_t end = text_.find('\n', from);
  return text_.substr(from, end == std::string_view::npos ? end : end + 1 - from);
}

// A line without a colon is nobody's property: data that a careless writer did not indent, or the
// empty line that ends it. It stays with the line before it. The colon may stand in a continuation
// line, where long parameters push it.
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
  const std::size_t start = position_;
  std::string_view last = physicalLine(start);
  position_ += last.size();
  if (isFrameLine(last, "BEGIN") || isFrameLine(last, "END")) return last;
  const bool quoted = isQuotedPrintable(last);
  while (!atEnd()) {
    const std::string_view following = physicalLine(position_);
    const bool folded = following.front() == ' ' || following.front() == '\t';
    const bool softBreak = quoted && withoutLineEnd(last).ends_with('=');
    if (!folded && !softBreak && beginsProperty(position_)) break;
    last = following;
    position_ += following.size();
  }
  return text_.substr(start, position_ - start);
}

std::string_view lineName(std::string_view line) {
  // Runs over every line of a folder: one pass, no searching for either of two characters.
  std::size_t start = 0;
  for (std::size_t i = 0; i < line.size(); ++i) {
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

CardText::CardText() : begin_("BEGIN:VCARD\r\nVERSION:3.0\r\n"), end_("END:VCARD\r\n") {
  constexpr std::size_t kUsualLines = 32;
  lines_.reserve(kUsualLines);
}

CardText::CardText(std::string_view text) {
  LineReader reader(text);
  begin_ = reader.next();
  if (!begin_.ends_with("\r\n")) lineEnd_ = "\n";
  int depth = 1;
  while (!reader.atEnd()) {
    const std::string_view raw = reader.next();
    if (isFrameLine(raw, "BEGIN")) ++depth;
    if (isFrameLine(raw, "END")) --depth;
    if (depth == 0) {
      end_ = raw;
      break;
    }
    Line line;
    line.raw = raw;
    // A card inside this card, as old phones keep an agent, is none of ours.
    if (depth == 1) line.name = text::toAsciiUpper(lineName(raw));
    if (line.name == "VERSION") version_ = versionFrom(plainValue(raw));
    lines_.push_back(std::move(line));
  }
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
  if (!line.property) line.property = readProperty(line.raw, version_);
  return *line.property;
}

Property& CardText::change(Position position) {
  static_cast<void>(property(position));
  Line& line = lines_[position];
  if (!line.original && !line.raw.empty()) {
    line.original = std::make_unique<const Property>(*line.property);
  }
  return *line.property;
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

std::string CardText::write() const {
  std::string text = begin_;
  std::vector<const Property*> changed;
  const auto writeChanged = [&] {
    if (!changed.empty()) text += writeProperties(changed, version_, lineEnd_);
    changed.clear();
  };
  for (const Line& line : lines_) {
    if (line.changed()) {
      // An attachment of no bytes is still one.
      const bool required = line.name == "N" || line.name == "FN" || line.name == "X-ATTACH";
      if (required || !line.property->hasNoValue()) changed.push_back(&*line.property);
    } else {
      writeChanged();
      text += line.raw;
    }
  }
  writeChanged();
  return text + end_;
}

}  // namespace vlout::outlook::vcard
