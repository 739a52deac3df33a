// One content line of a card as bytes: unfolded, its head looked at, its text brought into UTF-8.
// Characters are looked at only after the folds, the soft line breaks and the quoted-printable
// codes are gone, since programs fold between the bytes of a character. For CardText and
// readProperty.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vlout::outlook::vcard {

struct ContentLine {
  std::string head;     // group, name and parameters
  std::string value;    // what follows the colon; quoted-printable as it stands
  std::string charset;  // as the line names it, or empty
  bool hasValue = false;
  bool quotedPrintable = false;
  bool binary = false;  // base64
};

// The first of the line ends behind `from` and where the next line begins. CR, LF and any run of CR
// before an LF end a line; both are the text's size when no line end is left.
struct LineEnd {
  std::size_t start;
  std::size_t next;
};
[[nodiscard]] LineEnd findLineEnd(std::string_view text, std::size_t from);

// The colon that ends the head of a line: the first one outside quotes, or the first one if the
// quotes do not close; npos when the line is no property.
[[nodiscard]] std::size_t findColon(std::string_view line);

// How a head says that the value is encoded; the parameters stand behind its first semicolon.
[[nodiscard]] bool isQuotedPrintable(std::string_view line);
[[nodiscard]] bool isBinary(std::string_view line);
[[nodiscard]] bool namesCharset(std::string_view line);

// How a file is written. One in UTF-16 is brought into UTF-8 before anything looks at it; what its
// lines say of their character sets then goes for quoted-printable values alone.
enum class FileForm { Bytes, Utf16Le, Utf16Be };

// `line` with its continuation lines.
[[nodiscard]] ContentLine takeApart(std::string_view line, FileForm form);

// The bytes whose character set the line does not name; empty when it names one, is binary, or
// holds nothing but ASCII.
[[nodiscard]] std::string unnamedBytes(const ContentLine& line);

// The line as plain UTF-8, without CHARSET and quoted-printable, on one line: what a parser of
// vCard 3.0 can read. Its text is in the set that it names, or else in `unnamed`. Nothing when it
// is not a text of that set.
[[nodiscard]] std::optional<std::string> decodeLine(const ContentLine& line,
                                                    std::string_view unnamed);

}  // namespace vlout::outlook::vcard
