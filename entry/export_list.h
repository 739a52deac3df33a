// The host's export list, `temp/exportlist.txt` under the component folder: the id of the folder
// that was open in the host, then the ids of the cards that were selected, one a line. The
// component only reads it.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "store/connection.h"
#include "ui/component.h"

namespace vlout::entry {

class ExportList {
 public:
  explicit ExportList(const std::filesystem::path& componentFolder)
      : file_(componentFolder / "temp" / "exportlist.txt") {}

  [[nodiscard]] const std::filesystem::path& file() const { return file_; }
  // True if anything is there, even if it cannot be read.
  [[nodiscard]] bool isThere() const {
    return std::filesystem::exists(std::filesystem::symlink_status(file_));
  }

  // The folder of line 1, as the database knows it; empty texts if the file, the line or the folder
  // is missing. Throws EncodingError.
  [[nodiscard]] ui::ExportFolder readFolder(store::Connection& connection) const;

  // The card ids from line 2 on, as texts of at least seven digits in ascending text order; empty
  // if the file is missing. Throws EncodingError.
  [[nodiscard]] std::vector<std::string> readSelectedCards() const;

  // Says, naming the file, why the list gives no folder or no cards; empty if it does give them.
  [[nodiscard]] std::string explainFolder(store::Connection& connection) const;
  [[nodiscard]] std::string explainCards() const;

  // Deletes the file; a missing file is no error.
  void remove() const;

 private:
  // Throws std::system_error if the file cannot be read, and EncodingError.
  [[nodiscard]] std::vector<std::string> readLines() const;
  // The same, but no lines if the file cannot be read.
  [[nodiscard]] std::vector<std::string> lines() const;

  std::filesystem::path file_;
};

}  // namespace vlout::entry
