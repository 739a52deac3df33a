#include "text/utf8.h"

#include <algorithm>
#include <cstdint>

namespace vlout::text {
namespace {

// The length of the well-formed sequence at the start of `text`, or 0 if there is none.
std::size_t sequenceLength(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(0);
  if (lead < 0x80) return 1;
  if (lead < 0xC2 || lead > 0xF4) return 0;
  const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  if (text.size() < length) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return 0;
  }
  const bool overlong = (lead == 0xE0 && byte(1) < 0xA0) || (lead == 0xF0 && byte(1) < 0x90);
  const bool surrogate = lead == 0xED && byte(1) > 0x9F;
  const bool tooLarge = lead == 0xF4 && byte(1) > 0x8F;
  return overlong || surrogate || tooLarge ? 0 : length;
}

bool isAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

}  // namespace

bool isValidUtf8(std::string_view text) {
  if (isAscii(text)) return true;
  while (!text.empty()) {
    const std::size_t length = sequenceLength(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

std::string sanitizeUtf8(std::string_view text) {
  if (isValidUtf8(text)) return std::string(text);
  std::string result;
  while (!text.empty()) {
    const std::size_t length = sequenceLength(text);
    if (length == 0) {
      result += "\xEF\xBF\xBD";
    } else {
      result += text.substr(0, length);
    }
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return result;
}

std::vector<std::string_view> characters(std::string_view text) {
  std::vector<std::string_view> result;
  result.reserve(text.size());
  while (!text.empty()) {
    const std::size_t length = std::max<std::size_t>(sequenceLength(text), 1);
    result.push_back(text.substr(0, length));
    text.remove_prefix(length);
  }
  return result;
}

char32_t codePoint(std::string_view character) {
  if (character.empty() || sequenceLength(character) != character.size()) return U'\xFFFD';
  const auto lead = static_cast<unsigned char>(character[0]);
  if (character.size() == 1) return lead;
  char32_t value = lead & (0xFFu >> (character.size() + 1));
  for (std::size_t i = 1; i < character.size(); ++i) {
    value = (value << 6) | (static_cast<unsigned char>(character[i]) & 0x3Fu);
  }
  return value;
}

}  // namespace vlout::text
