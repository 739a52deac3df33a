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

// A write to a contact file: it gets a new state, or is removed.
struct FileWrite {
  std::string name;
  std::optional<FileState> before;  // nothing where there was no file
  std::optional<FileState> after;
  // If it is written from a card's row: the card's number, and the hash of the row at that time.
  std::optional<std::int64_t> card{};
  std::uint64_t row = 0;  // its hash
};

class DamagedLog : public std::runtime_error {
 public:
  explicit DamagedLog(const std::filesystem::path& log)
      : std::runtime_error(text::say("%1: 복원 지점이 손상되었습니다",
                                     "%1: the restore point is damaged", {log.string()})) {}
};

// What a log says was written. If the run was killed, the last write of the rows may not have been
// made, nor the last of the files, which are several if contacts were being saved together.
struct Written {
  std::vector<FileWrite> files;
  std::vector<RowWrite> rows;
  std::size_t size = 0;  // of the readable part of the log

  // Throws DamagedLog, and std::system_error if the log cannot be read. The log of a run that has
  // not ended counts as far as it goes.
  [[nodiscard]] static Written read(const std::filesystem::path& log, bool hasEnded);
  // A text with the numbers of rows and files.
  [[nodiscard]] std::string counts() const;
  // How many more files there are than before.
  [[nodiscard]] std::ptrdiff_t filesAdded() const;
};

// Appends to the log of a run. Once a call returns, its entry survives a kill; after a power cut,
// entries of the last second may be missing unless `sync` was called. All throw std::system_error.
class WrittenLog {
 public:
  explicit WrittenLog(const std::filesystem::path& log);
  // Continues a log that is valid up to `size`; a kill may have left half an entry after that.
  WrittenLog(const std::filesystem::path& log, std::size_t size);
  ~WrittenLog();
  WrittenLog(const WrittenLog&) = delete;
  WrittenLog& operator=(const WrittenLog&) = delete;

  void file(const FileWrite& write);
  void row(const RowWrite& write);
  // Marks the end of the run.
  void end();
  void sync();

 private:
  void append(const std::string& entry);

  std::filesystem::path path_;
  int descriptor_;
  std::chrono::steady_clock::time_point synced_ = std::chrono::steady_clock::now();
};

}  // namespace vlout::history
