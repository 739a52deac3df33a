#include "text/language.h"

#include <cstdlib>

namespace vlout::text {
namespace {

Language chosen = Language::Korean;

}  // namespace

Language language() {
  return chosen;
}

void setLanguage(Language language) {
  chosen = language;
}

Language languageOfEnvironment() {
  for (const char* const variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char* const value = std::getenv(variable);
    if (value == nullptr || *value == '\0') continue;
    const std::string_view name = value;
    const bool isKorean = name.starts_with("ko") &&
                          (name.size() == 2 || name[2] == '_' || name[2] == '.' || name[2] == '@');
    return isKorean ? Language::Korean : Language::English;
  }
  return Language::English;
}

std::string say(const Words& words, std::initializer_list<std::string_view> putIn) {
  const std::string_view pattern = chosen == Language::Korean ? words.korean : words.english;
  std::string result;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    const std::size_t place =
        i + 1 < pattern.size() ? static_cast<std::size_t>(pattern[i + 1] - '1') : putIn.size();
    if (pattern[i] != '%' || place >= putIn.size()) {
      result += pattern[i];
    } else {
      result += putIn.begin()[place];
      ++i;
    }
  }
  return result;
}

}  // namespace vlout::text
