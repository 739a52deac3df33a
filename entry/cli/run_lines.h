// Puts runs and undos into words, for both the terminal and the window.
#pragma once

#include <string>
#include <vector>

#include "history/run_report.h"
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

// What a run changed, one line each.
struct ChangeLine {
  std::string who;     // of a card or a contact
  std::string what{};  // a value before and after, or nothing
  std::string how;
};
[[nodiscard]] std::vector<ChangeLine> changeLines(const history::RunReport& report);

struct UndoLine {
  std::string kind;  // card or contact
  std::string how;   // what happens to it
  std::string person;
  std::string file{};  // of a contact
};

[[nodiscard]] std::string headingOf(const history::Undo& undo);
// What an undo changes, and what it must leave as it is.
[[nodiscard]] std::vector<UndoLine> undoLines(const history::Undo& undo);
// The word for a history::Change.
[[nodiscard]] std::string wordOf(history::Change change);

}  // namespace vlout::entry::cli
