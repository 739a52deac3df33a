#include "text/latin_script.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "text/code_page.h"
#include "text/trim.h"
#include "text/utf8.h"

namespace vlout::text {
namespace {

struct Range {
  char32_t first;
  char32_t last;
};

// Characters that the page lacks but turns into two bytes of something similar: combining and
// half-width jamo, enclosed letters, the private-use area, a few signs.
constexpr auto kTwoBytesAlike = std::to_array<Range>(
    {{0x00A2, 0x00A3}, {0x00A5, 0x00A5}, {0x00A9, 0x00A9}, {0x00AB, 0x00AC}, {0x00B5, 0x00B5},
     {0x00BB, 0x00BB}, {0x0110, 0x0110}, {0x1100, 0x1112}, {0x1114, 0x1115}, {0x111A, 0x111A},
     {0x111C, 0x111E}, {0x1120, 0x1123}, {0x1127, 0x1127}, {0x1129, 0x1129}, {0x112B, 0x112F},
     {0x1132, 0x1132}, {0x1136, 0x1136}, {0x113C, 0x1140}, {0x1145, 0x1147}, {0x114C, 0x114C},
     {0x114E, 0x1151}, {0x1154, 0x1155}, {0x1157, 0x1159}, {0x115F, 0x115F}, {0x1161, 0x1175},
     {0x1184, 0x1185}, {0x1188, 0x1188}, {0x1191, 0x1192}, {0x1194, 0x1194}, {0x119E, 0x119E},
     {0x11A1, 0x11A1}, {0x11A8, 0x11C2}, {0x11C6, 0x11C8}, {0x11CC, 0x11CC}, {0x11CE, 0x11CE},
     {0x11D3, 0x11D3}, {0x11D7, 0x11D7}, {0x11D9, 0x11D9}, {0x11DC, 0x11DD}, {0x11DF, 0x11DF},
     {0x11E6, 0x11E8}, {0x11EA, 0x11EB}, {0x11EE, 0x11EE}, {0x11F0, 0x11F2}, {0x11F4, 0x11F4},
     {0x11F9, 0x11F9}, {0x24B6, 0x24CF}, {0x3192, 0x319F}, {0x3220, 0x3243}, {0x3280, 0x32B0},
     {0xE000, 0xE0BB}, {0xFA0C, 0xFA0C}, {0xFA10, 0xFA10}, {0xFA12, 0xFA12}, {0xFA15, 0xFA15},
     {0xFA17, 0xFA17}, {0xFA19, 0xFA1E}, {0xFA22, 0xFA22}, {0xFA25, 0xFA26}, {0xFA2A, 0xFA2D},
     {0xFFA0, 0xFFBE}, {0xFFC2, 0xFFC7}, {0xFFCA, 0xFFCF}, {0xFFD2, 0xFFD7}, {0xFFDA, 0xFFDC}});

bool isTwoBytesAlike(char32_t code) {
  const auto* const range =
      std::lower_bound(kTwoBytesAlike.begin(), kTwoBytesAlike.end(), code,
                       [](const Range& each, char32_t c) { return each.last < c; });
  return range != kTwoBytesAlike.end() && range->first <= code;
}

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
  if (isTwoBytesAlike(code)) return false;
  const auto bytes = toCodePage949(last);
  return !bytes || bytes->size() == 1;
}

}  // namespace vlout::text
