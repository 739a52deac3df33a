// The language of the program's own words: its help, its errors and reports, and what the Linux
// window has beside the component's own form. They are Korean or English; the two stand side by
// side where they are said. What the component itself shows, captions, result lines and messages,
// is Korean in both.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace vlout::text {

enum class Language { Korean, English };

// Korean until it is set, which a program does once, before it says anything.
[[nodiscard]] Language language();
void setLanguage(Language language);

// The language that the environment asks for by LC_ALL, LC_MESSAGES or LANG, the first that says
// anything: Korean where that is Korean, else English.
[[nodiscard]] Language languageOfEnvironment();

// The same in both languages. %1 to %9 stand for what is put in.
struct Words {
  std::string_view korean;
  std::string_view english;
};

[[nodiscard]] std::string say(const Words& words,
                              std::initializer_list<std::string_view> putIn = {});
[[nodiscard]] inline std::string say(std::string_view korean, std::string_view english,
                                     std::initializer_list<std::string_view> putIn = {}) {
  return say(Words{korean, english}, putIn);
}

}  // namespace vlout::text
