// What a run is: one transfer from the press of a button to its closing message. The window starts
// it, an engine does the work, and the history keeps a record of it. The command line and the
// records call transfers and ranges by the words that stand here.
#pragma once

#include <array>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace vlout::transfer {

// In the order of the window's lists.
enum Mode { kImport, kExport, kSync };
inline constexpr std::array<std::string_view, 3> kModeWords{"import", "export", "sync"};
enum Range { kSelectedCards, kGroup, kAllCards };  // of an export
inline constexpr std::array<std::string_view, 3> kRangeWords{"selected", "group", "all"};

// What is known about a run when it begins.
struct RunDescription {
  std::string mode;           // one of kModeWords, or "undo"
  std::string range;          // of an export: one of kRangeWords; for a group, with its name
  bool addsContacts = false;  // cards without a contact get one
  bool preview = false;
};

// How an engine ended; one that failed ends with an exception instead.
enum class RunEnd { Completed, Stopped };

// A line of the result list: its text, its percent and its state.
using ResultLine = std::array<std::string, 3>;

// How the whole run ended.
struct RunOutcome {
  enum End { Completed, Stopped, NothingToDo, Failed };
  End end = Failed;
  std::string text;                 // the counts of a run, or why it failed
  std::vector<ResultLine> lines{};  // that its window has shown
};

// Ends a run at once; any other failure would cost it only one record. The text says why.
class RunAborted : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace vlout::transfer
