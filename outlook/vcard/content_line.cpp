#include "outlook/vcard/content_line.h"

#include <algorithm>
#include <charconv>

#include "outlook/vcard/charset.h"
#include "text/ascii.h"

namespace vlout::outlook::vcard {
namespace {

constexpr std::string_view kQuotedPrintable = "QUOTED-PRINTABLE";

// Mark, or replace, those characters of a quoted-printable value that are not encoded until its
// character set is decoded: an encoded semicolon separates nothing, and what looks like a backslash
// may be the second half of a character.
constexpr char kRawBackslash = '\1';
constexpr char kRawSemicolon = '\2';
constexpr char kRawComma = '\3';

bool isMark(char c) {
  return c >= kRawBackslash && c <= kRawComma;
}

bool shifts(char c) {
  return c == '\0' || c == '\x0E' || c == '\x0F' || c == '\x1B';
}

bool isBlank(char c) {
  return c == ' ' || c == '\t';
}

bool contains(std::string_view head, std::string_view word) {
  return std::search(head.begin(), head.end(), word.begin(), word.end(), [](char a, char b) {
           return text::asciiLower(a) == text::asciiLower(b);
         }) != head.end();
}

}  // namespace

std::size_t findColon(std::string_view line) {
  const std::size_t first = line.find(':');
  if (line.substr(0, first).find('"') == std::string_view::npos) return first;
  bool quoted = false;
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] == '"') quoted = !quoted;
    if (line[i] == ':' && !quoted) return i;
  }
  return quoted ? first : std::string_view::npos;
}

namespace {

std::string_view headOf(std::string_view line) {
  return line.substr(0, findColon(line));
}

// Calls `use(name, value)` for each parameter of a head, and drops the parameter if `use` says so.
template <typename Use>
void dropParameters(std::string& head, Use drop) {
  std::string kept;
  std::size_t start = 0;
  bool quoted = false;
  for (std::size_t i = 0; i <= head.size(); ++i) {
    if (i < head.size() && head[i] == '"') quoted = !quoted;
    if (i < head.size() && (head[i] != ';' || quoted)) continue;
    const std::string_view part = std::string_view(head).substr(start, i - start);
    const std::size_t equals = part.find('=');
    std::string_view value = equals == std::string_view::npos ? part : part.substr(equals + 1);
    while (value.starts_with('"')) value.remove_prefix(1);
    while (value.ends_with('"')) value.remove_suffix(1);
    const std::string_view name =
        equals == std::string_view::npos ? std::string_view() : part.substr(0, equals);
    if (start == 0 || !drop(name, value)) {
      if (start > 0) kept += ';';
      kept += part;
    }
    start = i + 1;
  }
  head = std::move(kept);
}

bool isEncoding(std::string_view name) {
  return name.empty() || text::equalsIgnoringAsciiCase(name, "ENCODING");
}

std::string decodeQuotedPrintable(std::string_view value) {
  std::string bytes;
  for (std::size_t i = 0; i < value.size(); ++i) {
    const char c = value[i];
    unsigned code = 0;
    const std::string_view digits = value.substr(i + 1, 2);
    const char* const end = digits.data() + digits.size();
    if (c == '=' && digits.size() == 2 &&
        std::from_chars(digits.data(), end, code, 16).ptr == end) {
      if (!isMark(static_cast<char>(code))) bytes += static_cast<char>(code);
      i += 2;
    } else if (c == ';') {
      bytes += kRawSemicolon;
    } else if (c == ',') {
      bytes += kRawComma;
    } else if (!isMark(c)) {
      bytes += c;
      if (c == '\\') bytes += kRawBackslash;
    }
  }
  return bytes;
}

// Writes what was encoded with the escapes of vCard 3.0, and what was raw as it was.
std::string escapeDecoded(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    const char next = i + 1 < text.size() ? text[i + 1] : '\0';
    if (c == '\r' || c == '\n') {
      result += "\\n";
      if (c == '\r' && next == '\n') ++i;
    } else if (c == kRawSemicolon || c == kRawComma) {
      result += c == kRawComma ? ',' : ';';
    } else if (c != kRawBackslash) {
      const bool encoded = c == ';' || c == ',' || (c == '\\' && next != kRawBackslash);
      if (encoded) result += '\\';
      result += c;
    }
  }
  return result;
}

// A line without its folds, soft line breaks and line end.
std::string unfold(std::string_view line, bool quotedPrintable, bool binary) {
  std::string result;
  result.reserve(line.size());
  for (std::size_t from = 0; from < line.size();) {
    const LineEnd end = findLineEnd(line, from);
    result += line.substr(from, end.start - from);
    from = end.next;
    if (from >= line.size()) break;
    if (quotedPrintable && result.ends_with('=')) {
      result.pop_back();
    } else if (isBlank(line[from])) {
      ++from;
    } else if (!binary) {
      break;
    }
  }
  if (quotedPrintable && result.ends_with('=')) result.pop_back();  // nothing follows the break
  return result;
}

}  // namespace

LineEnd findLineEnd(std::string_view text, std::size_t from) {
  const std::size_t lf = std::min(text.find('\n', from), text.size());
  const std::size_t cr = std::min(text.substr(0, lf).find('\r', from), lf);
  if (cr == lf) return {lf, std::min(lf + 1, text.size())};
  const std::size_t behind = std::min(text.find_first_not_of('\r', cr), text.size());
  return {cr, behind == lf && lf < text.size() ? lf + 1 : cr + 1};
}

bool isQuotedPrintable(std::string_view line) {
  const std::string_view head = headOf(line);
  return head.size() > kQuotedPrintable.size() && contains(head, kQuotedPrintable);
}

bool isBinary(std::string_view line) {
  const std::string_view head = headOf(line);
  return head.find(';') != std::string_view::npos &&
         (contains(head, "ENCODING=B") || contains(head, ";BASE64"));
}

bool namesCharset(std::string_view line) {
  const std::string_view head = headOf(line);
  constexpr std::string_view kCharset = ";CHARSET=";
  return head.size() > kCharset.size() && contains(head, kCharset);
}

ContentLine takeApart(std::string_view line, FileForm form) {
  ContentLine result;
  std::string text = unfold(line, false, false);
  // How the value is folded depends on its encoding, which the unfolded head tells.
  result.quotedPrintable = isQuotedPrintable(text);
  result.binary = isBinary(text);
  if (result.quotedPrintable || result.binary) {
    text = unfold(line, result.quotedPrintable, result.binary);
  }
  std::replace(text.begin(), text.end(), '\0', ' ');
  const std::size_t colon = findColon(text);
  result.hasValue = colon != std::string::npos;
  result.head = text.substr(0, colon);
  if (result.hasValue) result.value = text.substr(colon + 1);
  dropParameters(result.head, [&](std::string_view name, std::string_view value) {
    if (text::equalsIgnoringAsciiCase(name, "CHARSET")) {
      result.charset = value;
      return true;
    }
    return isEncoding(name) && text::equalsIgnoringAsciiCase(value, kQuotedPrintable);
  });
  const bool converted = form != FileForm::Bytes || isWide(result.charset);
  if (converted && !result.quotedPrintable) result.charset.clear();
  return result;
}

std::string unnamedBytes(const ContentLine& line) {
  if (!line.charset.empty() || line.binary) return {};
  std::string bytes = line.head + ":";
  bytes += line.quotedPrintable ? decodeQuotedPrintable(line.value) : line.value;
  return isAscii(bytes) ? std::string() : bytes;
}

std::optional<std::string> decodeLine(const ContentLine& line, std::string_view unnamed) {
  const std::string_view charset = line.charset.empty() ? unnamed : line.charset;
  const auto inUtf8 = [&](const std::string& bytes) {
    const bool ascii = isAscii(bytes);
    if (ascii && line.charset.empty()) return std::optional(bytes);
    auto text = decode(bytes, charset);
    // An unknown name does no harm to plain text; in a known set, control characters may have a
    // meaning.
    if (!text && ascii && std::none_of(bytes.begin(), bytes.end(), shifts)) text = bytes;
    return text;
  };
  auto head = inUtf8(line.head);
  auto value = inUtf8(line.quotedPrintable ? decodeQuotedPrintable(line.value) : line.value);
  if (!head || !value) return std::nullopt;
  if (line.hasValue) *head += ':';
  return *head + (line.quotedPrintable ? escapeDecoded(*value) : *value);
}

}  // namespace vlout::outlook::vcard
