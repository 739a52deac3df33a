// The runs of a component folder. Each has a numbered folder in `history` beside the database, with
// a record of the run and, if it wrote anything, its restore point. The recorder writes them; the
// history and undo commands read them.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "transfer/run.h"

namespace vlout::history {

// How a run ended, according to its record. A run under way is also Unfinished.
enum class RunState { Unfinished, Completed, Stopped, NothingToDo, Failed };

inline constexpr std::string_view kUndoMode = "undo";

struct RunRecord {
  int number = 0;
  std::string started;   // on the local clock, "yyyy/mm/dd hh:mm:ss"
  std::string mode;      // import, export, sync or undo
  std::string range;     // of an export; of an undo, the run that it went back before
  std::string contacts;  // the contact folder; relative to the component folder if it is inside it
  RunState state = RunState::Unfinished;
  std::string text;                         // the counts, or why it failed
  bool wrote = false;                       // a restore point was taken
  std::optional<std::size_t> contactFiles;  // how many there were when the run had ended
  int undoneBy = 0;                         // the run that took it back
};

class Runs {
 public:
  explicit Runs(const std::filesystem::path& componentFolder)
      : component_(std::filesystem::weakly_canonical(componentFolder)),
        folder_(component_ / "history") {}

  // The index of the contact folder, which is kept beside the runs.
  [[nodiscard]] std::filesystem::path contactsIndex() const { return folder_ / "contacts.index"; }

  // Oldest first. A record that cannot be read counts as an unfinished run.
  [[nodiscard]] std::vector<RunRecord> list() const;

  // Makes the folder of a new run and gives the run the next number. These all throw
  // std::system_error.
  void begin(RunRecord& record) const;
  void save(const RunRecord& record) const;
  // The lines of a run's window, kept with its record; none if they could not be kept.
  void saveLines(int number, const std::vector<transfer::ResultLine>& lines) const;
  [[nodiscard]] std::vector<transfer::ResultLine> linesOf(int number) const;

  [[nodiscard]] std::filesystem::path folderOf(int number) const;

  // The contact folder of a run, in a comparable form; and how a record names a folder.
  [[nodiscard]] std::filesystem::path contactsOf(const RunRecord& record) const;
  [[nodiscard]] std::string nameOf(const std::filesystem::path& contacts) const;

  // Drops restore points that are too old or too many, and the records of runs that are too old.
  // The newest point stays, and so does what an undo needs that has to be repeated. What cannot be
  // deleted now is left for the next time.
  void prune() const;

 private:
  [[nodiscard]] std::vector<int> numbers() const;
  [[nodiscard]] static int neededFrom(const std::vector<RunRecord>& runs);
  [[nodiscard]] static int keptFrom(const std::vector<RunRecord>& runs);

  std::filesystem::path component_;
  std::filesystem::path folder_;
};

}  // namespace vlout::history
