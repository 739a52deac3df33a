#include "text/latin_script.h"

#include <string_view>

#include "text/code_page.h"
#include "text/trim.h"
#include "text/utf8.h"

namespace vlout::text {
namespace {

std::string_view lastCharacter(std::string_view text) {
  std::size_t start = text.size() - 1;
  while (start > 0 && (static_cast<unsigned char>(text[start]) & 0xC0) == 0x80) --start;
  return text.substr(start);
}

}  // namespace

bool isLatinScript(std::string& text) {
  text = std::string(trim(text));
  if (text.empty()) return true;
  const std::string_view last = lastCharacter(text);
  if (last.size() == 1) return true;
  const char32_t code = codePoint(last);
  if (code >= U'가' && code <= U'힣') return false;  // every syllable is in the page
  const auto bytes = toCodePage949(last);
  return !bytes || bytes->size() == 1;
}

}  // namespace vlout::text
