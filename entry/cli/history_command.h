// `vloutsync history` and `vloutsync undo`: what runs there were, and taking them back. main()
// reads the arguments and calls them.
#pragma once

#include <filesystem>
#include <functional>
#include <ostream>

namespace vlout::entry::cli {

// A line for each run, the newest last.
void printHistory(const std::filesystem::path& folder, std::ostream& out, std::ostream& errors);

struct UndoRequest {
  std::filesystem::path folder;
  int run = 0;         // 0 for the last one that changed anything
  bool force = false;  // even when edits made since are lost
  bool preview = false;
};

// Says what it will change and what was edited since, asks `confirm`, and goes back. False when
// nothing was done. Throws std::exception.
bool undoRun(const UndoRequest& request, const std::function<bool()>& confirm, std::ostream& out,
             std::ostream& errors);

}  // namespace vlout::entry::cli
