// The runs and the undo in words, for the terminal and the window alike.
#pragma once

#include <string>
#include <vector>

#include "history/runs.h"
#include "history/undo.h"

namespace vlout::entry::cli {

struct RunLine {
  int number = 0;
  std::string started;
  std::string transfer;  // with its range
  std::string state;
  std::string counts;
  std::string wayBack;
};

// Oldest first.
[[nodiscard]] std::vector<RunLine> runLines(const history::Runs& runs);

struct UndoLine {
  std::string kind;  // card or contact
  std::string how;   // what happens to it
  std::string person;
  std::string file{};  // of a contact
};

[[nodiscard]] std::string headingOf(const history::Undo& undo);
// What an undo changes, and what it has to leave as it is.
[[nodiscard]] std::vector<UndoLine> undoLines(const history::Undo& undo);
// The words for history::Change.
[[nodiscard]] std::string wordOf(history::Change change);

}  // namespace vlout::entry::cli
