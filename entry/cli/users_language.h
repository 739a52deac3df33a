// The start of a program that speaks its user's language.
#pragma once

namespace vlout::entry::cli {

// The program's own words, and the system's where they stand behind them, which would be those of
// a third language otherwise.
void speakUsersLanguage();

}  // namespace vlout::entry::cli
