#include "outlook/person_name.h"

#include <array>
#include <vector>

#include "text/trim.h"
#include "text/utf8.h"

namespace vlout::outlook {
namespace {

// Scripts in which the family name comes first: Hangul, Han, Kana.
bool isEastAsian(char32_t c) {
  struct Range {
    char32_t first;
    char32_t last;
  };
  static constexpr std::array<Range, 8> kRanges{{{0x1100, 0x11FF},
                                                 {0x3040, 0x30FF},
                                                 {0x3130, 0x318F},
                                                 {0x3400, 0x4DBF},
                                                 {0x4E00, 0x9FFF},
                                                 {0xAC00, 0xD7AF},
                                                 {0xF900, 0xFAFF},
                                                 {0x20000, 0x3FFFF}}};
  for (const Range& range : kRanges) {
    if (c >= range.first && c <= range.last) return true;
  }
  return false;
}

bool beginsEastAsian(std::string_view text) {
  const auto all = text::characters(text);
  return !all.empty() && isEastAsian(text::codePoint(all.front()));
}

std::vector<std::string_view> words(std::string_view text) {
  std::vector<std::string_view> result;
  while (true) {
    text = text::trim(text);
    if (text.empty()) return result;
    const std::string_view word = text.substr(0, text.find(' '));
    result.push_back(word);
    text.remove_prefix(word.size());
  }
}

std::string join(const std::vector<std::string_view>& parts, std::size_t from, std::size_t to) {
  std::string result;
  for (std::size_t i = from; i < to; ++i) {
    if (!result.empty()) result += ' ';
    result += parts[i];
  }
  return result;
}

void appendWord(std::string& text, std::string_view word) {
  if (word.empty()) return;
  if (!text.empty()) text += ' ';
  text += word;
}

}  // namespace

bool PersonName::empty() const {
  return last.empty() && first.empty() && middle.empty() && title.empty() && suffix.empty();
}

PersonName splitFullName(std::string_view fullName) {
  PersonName name;
  const std::size_t comma = fullName.find(',');
  if (comma != std::string_view::npos) {
    name.last = text::trim(fullName.substr(0, comma));
    const auto given = words(fullName.substr(comma + 1));
    if (!given.empty()) name.first = given.front();
    name.middle = join(given, 1, given.size());
    return name;
  }
  const auto parts = words(fullName);
  if (parts.empty()) return name;
  if (parts.size() == 1) {
    name.first = parts.front();
  } else if (beginsEastAsian(fullName)) {
    name.last = parts.front();
    name.first = join(parts, 1, parts.size());
  } else {
    name.first = parts.front();
    name.middle = join(parts, 1, parts.size() - 1);
    name.last = parts.back();
  }
  return name;
}

std::string fullName(const PersonName& name) {
  const bool familyFirst = beginsEastAsian(name.last) && name.middle.empty();
  std::string result = name.title;
  if (familyFirst) {
    const bool joined = name.first.empty() || beginsEastAsian(name.first);
    appendWord(result, name.last + (joined ? "" : " ") + name.first);
  } else {
    appendWord(result, name.first);
    appendWord(result, name.middle);
    appendWord(result, name.last);
  }
  appendWord(result, name.suffix);
  return result;
}

std::string lastNameAndFirstName(const PersonName& name) {
  std::string given = name.first;
  appendWord(given, name.middle);
  if (name.last.empty() || given.empty()) return name.last + given;
  return name.last + ", " + given;
}

}  // namespace vlout::outlook
