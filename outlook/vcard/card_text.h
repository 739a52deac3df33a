// One vCard as the lines that it is written in. Lines that nobody changes keep their bytes,
// whatever they hold: order, photos, other programs' properties and odd foldings survive every
// save. A line is decoded only when it is asked for.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "outlook/vcard/vcard_syntax.h"

namespace vlout::outlook::vcard {

class CardText {
 public:
  using Position = std::size_t;

  // A new, empty card of version 3.0.
  CardText();
  // A card from its BEGIN line to its END line.
  explicit CardText(std::string_view text);

  [[nodiscard]] Version version() const { return version_; }

  // The positions of the lines whose property has that name, in order.
  [[nodiscard]] std::vector<Position> named(std::string_view name) const;
  // The first such line from `start` on.
  [[nodiscard]] std::optional<Position> firstNamed(std::string_view name, Position start = 0) const;

  [[nodiscard]] const Property& property(Position position) const;

  // The property for changing. Its line is written anew when it then differs from what it was, and
  // left out when it has no value any more.
  [[nodiscard]] Property& change(Position position);
  [[nodiscard]] bool isChanged(Position position) const;

  // Adds a line before `position`, or at the end. Positions from there on move up by one.
  Property& insert(Position position, Property property);
  Property& append(Property property);
  void remove(Position position);

  // The card's text, from BEGIN to END, with the line ends that it came with.
  [[nodiscard]] std::string write() const;

 private:
  struct Line {
    std::string raw{};   // as written, with continuation lines and line ends; empty for a new line
    std::string name{};  // in upper case, without a group; empty for what is no property
    mutable std::optional<Property> property{};
    std::unique_ptr<const Property> original{};  // as it was before the first change

    [[nodiscard]] bool changed() const {
      return raw.empty() || (original && *original != *property);
    }
  };

  std::vector<Line> lines_;
  std::string begin_;
  std::string end_;
  std::string lineEnd_ = "\r\n";
  Version version_ = Version::V30;
};

// Reads a vCard text line by line: each call gives one property's line with its continuation lines.
class LineReader {
 public:
  explicit LineReader(std::string_view text) : text_(text) {}

  [[nodiscard]] bool atEnd() const { return position_ >= text_.size(); }
  [[nodiscard]] std::size_t position() const { return position_; }
  [[nodiscard]] std::string_view next();

 private:
  [[nodiscard]] std::string_view physicalLine(std::size_t from) const;
  [[nodiscard]] bool beginsProperty(std::size_t from) const;

  std::string_view text_;
  std::size_t position_ = 0;
};

// The property name of a content line, without its group, as it is spelt there; empty when the line
// has none.
[[nodiscard]] std::string_view lineName(std::string_view line);

// What follows the first colon of a line that is not folded, without its line end and blanks
// around.
[[nodiscard]] std::string_view plainValue(std::string_view line);

[[nodiscard]] bool isFrameLine(std::string_view line, std::string_view keyword);

}  // namespace vlout::outlook::vcard
