// What a run wrote, in its order, with what stood there before: told before each write counts. So a
// run that is killed leaves nothing that looks like the user's, and everything it wrote has a way
// back. The recorder writes the log; undo goes back by it, and the next run completes what was cut
// short.
//
// The log is a series of entries (`text/packed.h`: numbers as they lie in memory, a text behind its
// size in four bytes). Each entry is the hash of its content in eight bytes and the content as a
// text, which is a letter and its parts:
//
//   F  a file: its name, its state before and after, whether it has a card (one byte) and then the
//      card's number (8), the hash of the card's row (8)
//   R  a row: its table, its number (8), what becomes of it (1, a `Change`), its cells before and
//      after
//   E  the end of the run
//
// A state is a byte for whether there is one and then size, seconds and nanoseconds (8 each). Cells
// are their count (4), then each column and its value as texts. An entry that is cut short or has
// another hash ends the log.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "history/card_files.h"
#include "history/row_key.h"
#include "text/language.h"

namespace vlout::history {

// A contact file that is given a state, or removed.
struct FileWrite {
  std::string name;
  std::optional<FileState> before;  // nothing where there was no file
  std::optional<FileState> after;
  // A contact that is written from its card's row, as that was then.
  std::optional<std::int64_t> card{};
  std::uint64_t row = 0;  // its hash
};

class DamagedLog : public std::runtime_error {
 public:
  explicit DamagedLog(const std::filesystem::path& log)
      : std::runtime_error(text::say("%1: 복원 지점이 손상되었습니다",
                                     "%1: the restore point is damaged", {log.string()})) {}
};

// A run that was killed may have been about to make the last write of the files or of the rows.
struct Written {
  std::vector<FileWrite> files;
  std::vector<RowWrite> rows;
  std::size_t size = 0;  // of the part of the log that could be read

  // Throws DamagedLog, and std::system_error when it cannot be read. The log of a run that has not
  // come to its end counts as far as it goes.
  [[nodiscard]] static Written read(const std::filesystem::path& log, bool hasEnded);
  // How many rows and files there are.
  [[nodiscard]] std::string counts() const;
  // How many more files there are than before.
  [[nodiscard]] std::ptrdiff_t filesAdded() const;
};

// Appends to the log of a run. Each entry is there for good once the call returns, even when the
// program is killed then; after a power cut those of the last second may be missing, unless `sync`
// was called. All throw std::system_error.
class WrittenLog {
 public:
  explicit WrittenLog(const std::filesystem::path& log);
  // Goes on with one that ended there; a kill may have left half an entry behind it.
  WrittenLog(const std::filesystem::path& log, std::size_t size);
  ~WrittenLog();
  WrittenLog(const WrittenLog&) = delete;
  WrittenLog& operator=(const WrittenLog&) = delete;

  void file(const FileWrite& write);
  void row(const RowWrite& write);
  // The run has come to its end.
  void end();
  void sync();

 private:
  void append(const std::string& entry);

  std::filesystem::path path_;
  int descriptor_;
  std::chrono::steady_clock::time_point synced_ = std::chrono::steady_clock::now();
};

}  // namespace vlout::history
