// The runs of a component folder: one numbered folder each in `history` beside the database, with a
// record of the run and, when it wrote anything, what takes it back. The recorder writes them; the
// history and undo commands read them.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "transfer/run.h"

namespace vlout::history {

// How a run ended, as it stands in its record; Unfinished also for one that is under way.
enum class RunState { Unfinished, Completed, Stopped, NothingToDo, Failed };

inline constexpr std::string_view kUndoMode = "undo";

struct RunRecord {
  int number = 0;
  std::string started;   // on the local clock, "yyyy/mm/dd hh:mm:ss"
  std::string mode;      // import, export, sync or undo
  std::string range;     // of an export; of an undo, the run that it went back before
  std::string contacts;  // the contact folder; relative to the component folder where it lies there
  RunState state = RunState::Unfinished;
  std::string text;                         // the counts, or why it failed
  bool wrote = false;                       // a restore point was taken
  std::optional<std::size_t> contactFiles;  // in the folder when the run had ended
  int undoneBy = 0;                         // the run that took it back
};

class Runs {
 public:
  explicit Runs(const std::filesystem::path& componentFolder)
      : component_(std::filesystem::weakly_canonical(componentFolder)),
        folder_(component_ / "history") {}

  // Where what runs have seen of their contact folder is kept, beside the runs.
  [[nodiscard]] std::filesystem::path contactsIndex() const { return folder_ / "contacts.index"; }

  // Oldest first. A record that cannot be read counts as an unfinished run.
  [[nodiscard]] std::vector<RunRecord> list() const;

  // Makes the folder of a new run, which gets the next number. All throw std::system_error.
  void begin(RunRecord& record) const;
  void save(const RunRecord& record) const;
  // The lines of a run's window, kept with its record; none for a run that could not keep them.
  void saveLines(int number, const std::vector<transfer::ResultLine>& lines) const;
  [[nodiscard]] std::vector<transfer::ResultLine> linesOf(int number) const;

  [[nodiscard]] std::filesystem::path folderOf(int number) const;

  // The contact folder of a run, in a form that can be compared, and how a record names a folder.
  [[nodiscard]] std::filesystem::path contactsOf(const RunRecord& record) const;
  [[nodiscard]] std::string nameOf(const std::filesystem::path& contacts) const;

  // Drops the restore points that are too old or too many, and the records of runs that are too
  // old. The newest point stays, and what an undo needs that has to be repeated. What cannot be
  // deleted stays for the next time.
  void prune() const;

 private:
  [[nodiscard]] std::vector<int> numbers() const;
  [[nodiscard]] static int neededFrom(const std::vector<RunRecord>& runs);
  [[nodiscard]] static int keptFrom(const std::vector<RunRecord>& runs);

  std::filesystem::path component_;
  std::filesystem::path folder_;
};

}  // namespace vlout::history
