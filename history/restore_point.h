// What takes a run back: in its folder the log of what it wrote (history/written_log.h), and beside
// it the contact files that it replaced, each as it was before the run first touched it.
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

  // Makes an empty one, on the disk for good. All throw std::system_error.
  void begin() const;
  // Keeps a file as it is, unless that was done before; its state, or nothing when there is none.
  [[nodiscard]] std::optional<FileState> keep(const std::filesystem::path& contacts,
                                              const std::string& name) const;

  [[nodiscard]] bool exists() const;
  // One that an earlier version has left, which kept whole copies.
  [[nodiscard]] bool isOfOldForm() const;
  // Deletes it, whole or half made.
  void drop() const;

  // What the run wrote. Files that were kept and are not in its log, since a power cut has taken
  // its end, count as written. Throws as `Written::read` does.
  [[nodiscard]] Written written(RunState state) const;

  [[nodiscard]] std::filesystem::path kept(const std::string& name) const;
  [[nodiscard]] std::filesystem::path log() const { return run_ / "written"; }

 private:
  [[nodiscard]] std::filesystem::path files() const { return run_ / "kept"; }

  std::filesystem::path run_;
};

}  // namespace vlout::history
