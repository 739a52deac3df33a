// The language of what the Linux program adds to the component: its help, its errors and reports,
// and the extras in its window. The texts are Korean or English, and both versions are written side
// by side where they are used. What the component itself shows (captions, result lines and
// messages) is always in Korean.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace vlout::text {

enum class Language { Korean, English };

// Korean until it is set. A program sets it once, before it says anything.
[[nodiscard]] Language language();
void setLanguage(Language language);

// The language that the environment asks for by LC_ALL, LC_MESSAGES or LANG, whichever comes first:
// Korean if that asks for Korean, otherwise English.
[[nodiscard]] Language languageOfEnvironment();

// A text in both languages. %1 to %9 stand for what is put in.
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
