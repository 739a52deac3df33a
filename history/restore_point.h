// What it takes to undo a run. The run's folder holds the log of what it wrote
// (history/written_log.h) and the contact files that it replaced, each as it was before the run
// first touched it.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "history/card_files.h"
#include "history/runs.h"
#include "history/written_log.h"

namespace vlout::history {

class RestorePoint {
 public:
  // `runFolder` is the folder of the run that the point belongs to.
  explicit RestorePoint(std::filesystem::path runFolder) : run_(std::move(runFolder)) {}

  // Makes an empty point and flushes it to the disk. All functions throw std::system_error.
  void begin() const;
  // Keeps a file as it is, unless that was done before. Returns its state, or nothing if there is
  // no file.
  [[nodiscard]] std::optional<FileState> keep(const std::filesystem::path& contacts,
                                              const std::string& name) const;

  [[nodiscard]] bool exists() const;
  // True for a point left by an earlier version, which kept whole copies.
  [[nodiscard]] bool isOfOldForm() const;
  // Deletes the point, whether whole or half made.
  void drop() const;

  // What the run wrote. Files that were kept but are not in the log, because a power cut took its
  // end, count as written. Throws as `Written::read` does.
  [[nodiscard]] Written written(RunState state) const;

  [[nodiscard]] std::filesystem::path kept(const std::string& name) const;
  [[nodiscard]] std::filesystem::path log() const { return run_ / "written"; }

 private:
  [[nodiscard]] std::filesystem::path files() const { return run_ / "kept"; }

  std::filesystem::path run_;
};

}  // namespace vlout::history
