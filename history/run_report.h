// What a run did, for people to read: the lines that its window showed, and each value that it
// wrote. The values come from its restore point; when that is gone, the lines remain.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "history/row_key.h"
#include "history/runs.h"
#include "transfer/run.h"

namespace vlout::history {

// A value that a run changed; without a caption, a row or a contact that was added or deleted, or
// whose changes are no longer known.
struct ReportedChange {
  std::string kind;  // a card, a group or a contact
  std::string who;
  Change change = Change::Changed;
  std::string caption{};
  std::string before{};
  std::string after{};
};

struct RunReport {
  RunRecord run;
  std::vector<transfer::ResultLine> lines;
  std::vector<ReportedChange> changes;
};

// Throws std::runtime_error if there is no such run, DamagedLog, and std::system_error.
[[nodiscard]] RunReport reportOf(const std::filesystem::path& componentFolder, int number);

}  // namespace vlout::history
