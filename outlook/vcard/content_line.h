// Takes a content line of a card apart as bytes: unfolds it, reads its head, and converts its text
// to UTF-8. Folds, soft line breaks and quoted-printable codes are removed before any characters
// are read, since programs fold between the bytes of a character. CardText and readProperty use it.
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

// The first line end after `from`, and where the next line begins; both are the text's size if
// there is no further line end. CR, LF, and any run of CRs before an LF end a line.
struct LineEnd {
  std::size_t start;
  std::size_t next;
};
[[nodiscard]] LineEnd findLineEnd(std::string_view text, std::size_t from);

// The colon that ends the head of a line: the first one outside quotes, or the first one if the
// quotes do not close; npos if the line is not a property.
[[nodiscard]] std::size_t findColon(std::string_view line);

// What the head says about the value's encoding; the parameters follow its first semicolon.
[[nodiscard]] bool isQuotedPrintable(std::string_view line);
[[nodiscard]] bool isBinary(std::string_view line);
[[nodiscard]] bool namesCharset(std::string_view line);

// How a file is written. A UTF-16 file is converted to UTF-8 before anything reads it; the
// character sets that its lines name then apply to quoted-printable values only.
enum class FileForm { Bytes, Utf16Le, Utf16Be };

// `line` with its continuation lines.
[[nodiscard]] ContentLine takeApart(std::string_view line, FileForm form);

// The bytes of a line that names no character set; empty if it names one, is binary, or is all
// ASCII.
[[nodiscard]] std::string unnamedBytes(const ContentLine& line);

// The line as plain UTF-8, without CHARSET and quoted-printable, on one line: as a parser of vCard
// 3.0 can read it. The text is in the set that the line names, or else in `unnamed`. Nothing if it
// is not valid in that set.
[[nodiscard]] std::optional<std::string> decodeLine(const ContentLine& line,
                                                    std::string_view unnamed);

}  // namespace vlout::outlook::vcard
