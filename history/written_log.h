// What a run wrote, and in which order: written before each write counts, so that a run that is
// killed leaves nothing that looks like the user's. The recorder writes it; undo tells edits by it,
// and the next run completes what was cut short.
//
// The log is a file of entries (history/entries.h), one for each write, in the order of the writes:
//
//   file SIZE SECONDS NANOSECONDS NAME         a contact file that is given this state
//   sent CARD SIZE SECONDS NANOSECONDS NAME    the same, with a contact written from that card's
//   row nofile NAME                                a contact file that is removed row TABLE ROWID
//   HASH                       a row that is given the content of this hash norow TABLE ROWID 0 a
//   row that is removed
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "history/card_files.h"
#include "history/row_key.h"

namespace vlout::history {

// What a run wrote, as its log tells: the states that each file and each row was given, one after
// another; nothing stands for a removal. A run that was killed may have been about to write the
// last of them.
struct Written {
  std::map<std::string, std::vector<std::optional<FileState>>> files;
  std::map<RowKey, std::vector<std::optional<std::uint64_t>>> rows;  // hashes of the row's content
  // A contact that was written from its card's row.
  struct Sent {
    std::string file;
    std::optional<std::uint64_t> row;  // its hash, where the run had written it before
  };
  std::map<std::int64_t, Sent> sent;  // by card, as last sent

  [[nodiscard]] static Written read(const std::filesystem::path& log);
  // Whether the run may have left the file or row like that.
  [[nodiscard]] bool left(const std::string& file, const std::optional<FileState>& state) const;
  [[nodiscard]] bool left(const RowKey& row, const std::optional<std::uint64_t>& hash) const;
  // The files of a folder after a run that found `found` there.
  [[nodiscard]] FileStates applyTo(FileStates found) const;
  // How many rows and files there are.
  [[nodiscard]] std::string counts() const;
};

// Appends to the log of a run. Each entry is there for good once the call returns, even when the
// program is killed then. All throw std::system_error.
class WrittenLog {
 public:
  explicit WrittenLog(const std::filesystem::path& log);
  ~WrittenLog();
  WrittenLog(const WrittenLog&) = delete;
  WrittenLog& operator=(const WrittenLog&) = delete;

  void file(const std::string& name, const std::optional<FileState>& state);
  // A file with a contact that was written from the row of `card`.
  void sent(const std::string& name, const FileState& state, std::int64_t card);
  void row(const RowKey& key, const std::optional<std::uint64_t>& hash);

 private:
  void append(const std::string& entry) const;

  std::filesystem::path path_;
  int descriptor_;
};

}  // namespace vlout::history
