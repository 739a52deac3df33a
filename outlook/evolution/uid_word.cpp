#include "outlook/evolution/uid_word.h"

#include <charconv>

namespace vlout::outlook::evolution {
namespace {

bool isPlain(char c) {
  return c > ' ' && c != '%' && c != '/' && c != 0x7F;
}

}  // namespace

std::string asWord(std::string_view uid) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string result;
  for (const char c : uid) {
    const auto byte = static_cast<unsigned char>(c);
    if ((isPlain(c) && !(c == '.' && result.empty())) || byte >= 0x80) {
      result += c;
    } else {
      result += {'%', kDigits[byte >> 4], kDigits[byte & 15]};
    }
  }
  return result;
}

std::string fromWord(std::string_view word) {
  if (word.find('%') == std::string_view::npos) return std::string(word);
  std::string result;
  for (std::size_t i = 0; i < word.size(); ++i) {
    unsigned byte = 0;
    const char* const code = word.data() + i + 1;
    if (word[i] == '%' && i + 2 < word.size() &&
        std::from_chars(code, code + 2, byte, 16).ptr == code + 2) {
      result += static_cast<char>(byte);
      i += 2;
    } else {
      result += word[i];
    }
  }
  return result;
}

}  // namespace vlout::outlook::evolution
