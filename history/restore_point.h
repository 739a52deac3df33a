// What takes a run back: both sides as they were before its first write. The folder of a run holds
// it beside the log of what the run wrote (history/written_log.h).
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "history/card_files.h"

namespace vlout::history {

class RestorePoint {
 public:
  // `runFolder` is the folder of the run that the point belongs to.
  explicit RestorePoint(std::filesystem::path runFolder) : run_(std::move(runFolder)) {}

  // The bytes of free disk that `take` needs beside the run.
  [[nodiscard]] static std::uint64_t spaceFor(const std::filesystem::path& runsFolder,
                                              const std::filesystem::path& database,
                                              const std::filesystem::path& contacts);

  // Whether files of one of the folders can be linked into the other.
  [[nodiscard]] static bool isOnOneDisk(const std::filesystem::path& a,
                                        const std::filesystem::path& b);

  // Keeps both sides as they are. A point is there whole or not at all. Throws std::system_error,
  // DatabaseError or ContactStoreError.
  void take(const std::filesystem::path& database, const std::filesystem::path& contacts) const;

  [[nodiscard]] bool exists() const;
  // Deletes it, whole or half made.
  void drop() const;

  [[nodiscard]] std::filesystem::path database() const { return run_ / "point" / "VelmoraDB.vdb"; }
  [[nodiscard]] std::filesystem::path contact(const std::string& name) const {
    return run_ / "point" / "contacts" / name;
  }
  // The contact files as they were when they were kept. Throws ContactStoreError when it is not
  // known of all.
  [[nodiscard]] FileStates contacts() const;

  [[nodiscard]] std::filesystem::path writtenLog() const { return run_ / "written"; }

 private:
  std::filesystem::path run_;
};

}  // namespace vlout::history
