#include "text/shown_text.h"

#include <array>

namespace vlout::text {
namespace {

struct Range {
  std::string_view first;
  std::string_view last;
};

// In UTF-8. Bytes below a blank are checked separately.
constexpr std::array<Range, 6> kControls{{
    {"\x7F", "\x7F"},
    {"\xC2\x80", "\xC2\x9F"},          // U+0080 to U+009F
    {"\xD8\x9C", "\xD8\x9C"},          // U+061C
    {"\xE2\x80\x8E", "\xE2\x80\x8F"},  // U+200E, U+200F
    {"\xE2\x80\xA8", "\xE2\x80\xAE"},  // U+2028 to U+202E: line ends, embeddings, overrides
    {"\xE2\x81\xA6", "\xE2\x81\xA9"},  // U+2066 to U+2069: isolates
}};

// The size of the control character at the beginning of the text, or 0.
std::size_t controlSize(std::string_view text) {
  if (static_cast<unsigned char>(text.front()) < 0x20) return 1;
  for (const Range& range : kControls) {
    const std::string_view head = text.substr(0, range.first.size());
    if (head >= range.first && head <= range.last) return head.size();
  }
  return 0;
}

std::string shown(std::string_view text, bool keepLines) {
  std::string result;
  while (!text.empty()) {
    const bool isEnd = keepLines && text.front() == '\n';
    const std::size_t control = isEnd ? 0 : controlSize(text);
    result += control > 0 ? ' ' : text.front();
    text.remove_prefix(control > 0 ? control : 1);
  }
  return result;
}

}  // namespace

std::string onOneLine(std::string_view text) {
  return shown(text, false);
}

std::string onItsLines(std::string_view text) {
  return shown(text, true);
}

}  // namespace vlout::text
