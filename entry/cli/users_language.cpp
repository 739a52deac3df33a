#include "entry/cli/users_language.h"

#include <clocale>

#include "text/language.h"

namespace vlout::entry::cli {

void speakUsersLanguage() {
  text::setLanguage(text::languageOfEnvironment());
  const bool isKorean = text::language() == text::Language::Korean;
  std::setlocale(LC_MESSAGES, isKorean ? "" : "C");
}

}  // namespace vlout::entry::cli
