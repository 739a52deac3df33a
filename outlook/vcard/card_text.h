// A vCard as the lines that it is written in. Lines that nobody changes keep their bytes, whatever
// they are: order, photos, other programs' properties and odd foldings survive every save. A line
// is decoded only when somebody asks for it.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "outlook/vcard/charset.h"
#include "outlook/vcard/vcard_syntax.h"

namespace vlout::outlook::vcard {

class CardText {
 public:
  using Position = std::size_t;

  // A new, empty card of version 3.0.
  CardText();
  // A card from its BEGIN line to its END line. Text without a named character set is read as
  // `unnamedCharsets` decides for all such text of the card.
  explicit CardText(std::string_view text, FileForm form = FileForm::Bytes);

  [[nodiscard]] Version version() const { return version_; }

  // The number of lines, and the name of the property in one: in upper case, without its group, and
  // empty for a line that is no property.
  [[nodiscard]] std::size_t size() const { return lines_.size(); }
  [[nodiscard]] const std::string& name(Position position) const { return lines_[position].name; }

  // The positions of the lines whose property has that name, in order.
  [[nodiscard]] std::vector<Position> named(std::string_view name) const;
  // The first such line from `start` on.
  [[nodiscard]] std::optional<Position> firstNamed(std::string_view name, Position start = 0) const;

  [[nodiscard]] const Property& property(Position position) const;
  // The property as it was when the card was read.
  [[nodiscard]] const Property& original(Position position) const;

  // The property, to be changed. Its line is rewritten if it then differs, and left out if it no
  // longer has a value. An unreadable property keeps its bytes until `replace`.
  [[nodiscard]] Property& change(Position position);
  // Replaces a line's values, whether they are readable or not.
  void replace(Position position, std::vector<std::string> values);
  [[nodiscard]] bool isChanged(Position position) const;

  // Adds a line before `position`, or at the end. Positions from there on move up by one.
  Property& insert(Position position, Property property);
  Property& append(Property property);
  void remove(Position position);

  // The card's text, from BEGIN to END, with its own line ends. New text is in the character set of
  // the rest. If that set lacks a character, or would no longer be recognised, all lines that name
  // no set are converted to UTF-8.
  [[nodiscard]] std::string write() const;

  // A line whose reading is uncertain: it names no character set and is not in UTF-8, or it is not
  // valid in its set.
  struct Doubt {
    std::size_t line = 0;  // counted from the BEGIN line, which is 0
    std::string name;
    std::string charset;
    bool unreadable = false;
  };
  [[nodiscard]] std::vector<Doubt> doubts() const;

 private:
  struct Line {
    std::string raw{};   // as written, with continuation lines and line ends; empty for a new line
    std::string name{};  // in upper case, without a group; empty for what is no property
    std::string_view unnamed = kUtf8;  // the set of what names none
    bool wasLast = false;              // before END, when the card was read
    mutable std::optional<Property> property{};
    std::unique_ptr<const Property> original{};  // as it was before the first change

    [[nodiscard]] bool changed() const {
      return raw.empty() || (original && *original != *property && !property->unreadable);
    }
    // An attachment of no bytes is still one.
    [[nodiscard]] bool isWritten() const {
      const bool required = name == "N" || name == "FN" || name == "X-ATTACH";
      return !changed() || required || !property->hasNoValue();
    }
  };

  // The set that new text is written in.
  struct Charset {
    std::string name;
    bool named = false;  // in each line
  };

  void decideCharsets(std::string_view text);
  [[nodiscard]] Charset charset() const;
  [[nodiscard]] std::optional<std::string> writeLines(std::span<const Property* const> properties,
                                                      const Charset& set) const;
  [[nodiscard]] std::optional<std::string> writeIn(const Charset& set, bool convertOthers) const;
  [[nodiscard]] std::string convertedLine(const Line& line) const;
  [[nodiscard]] bool isReadAlike(const CardText& written, const Charset& set) const;

  std::vector<Line> lines_;
  std::string begin_;
  std::string end_;
  std::string lineEnd_ = "\r\n";
  Version version_ = Version::V30;
  FileForm form_ = FileForm::Bytes;
  bool isUtf8_ = true;  // all that names no set
};

// Reads a vCard text line by line: each call gives one property's line with its continuation lines.
class LineReader {
 public:
  explicit LineReader(std::string_view text) : text_(text) {}

  [[nodiscard]] bool atEnd() const { return position_ >= text_.size(); }
  [[nodiscard]] std::size_t position() const { return position_; }
  // How many lines of the file have been read.
  [[nodiscard]] std::size_t linesRead() const { return linesRead_; }
  // The next line. A byte-order mark before a BEGIN is skipped, and an END and a BEGIN on one line
  // count as two lines: both come from joining files.
  [[nodiscard]] std::string_view next();

 private:
  [[nodiscard]] std::string_view physicalLine(std::size_t from) const;
  [[nodiscard]] bool beginsProperty(std::size_t from) const;
  void take(std::string_view line);

  std::string_view text_;
  std::size_t position_ = 0;
  std::size_t linesRead_ = 0;
};

// The property name of a content line, without its group, as spelt there; empty if the line has no
// name or no value.
[[nodiscard]] std::string_view lineName(std::string_view line);

// The text after the first colon of a line that is not folded, without its line end and without
// blanks around it.
[[nodiscard]] std::string_view plainValue(std::string_view line);

[[nodiscard]] bool isFrameLine(std::string_view line, std::string_view keyword);
[[nodiscard]] bool isFrame(std::string_view line);  // BEGIN or END

// True for an AGENT line on which the agent's own card begins.
[[nodiscard]] bool beginsInnerCard(std::string_view line);

}  // namespace vlout::outlook::vcard
