// The start of a program that speaks its user's language.
#pragma once

namespace vlout::entry::cli {

// Sets the language of the program's own words, and of the system's words after them, which might
// otherwise be in a third language.
void speakUsersLanguage();

}  // namespace vlout::entry::cli
