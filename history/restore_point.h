// What takes a run back: both sides as they were before its first write, and what the run itself
// wrote, so that later edits can be told from it. Contact files are kept as hard links, since a
// save replaces a file and never changes it in place; where links cannot be made they are copied.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "outlook/vcard/folder.h"

namespace vlout::history {

using outlook::vcard::FileState;
using FileStates = std::map<std::string, FileState>;  // by name

// The vCard files of a folder as they are now. Throws ContactStoreError.
[[nodiscard]] FileStates cardFilesIn(const std::filesystem::path& folder);

// Their number; without a look at each.
[[nodiscard]] std::size_t countCardFiles(const std::filesystem::path& folder);

// The state of one file, through links; nothing when there is none.
[[nodiscard]] std::optional<FileState> fileStateAt(const std::filesystem::path& file);

// Whether two states are of the same content, or both of no file. A copy has another inode.
[[nodiscard]] bool isSame(const std::optional<FileState>& a, const std::optional<FileState>& b);

// Makes `link` another name of `file`, or a copy with the same modification time. False when there
// is no such file.
bool linkOrCopy(const std::filesystem::path& file, const std::filesystem::path& link);

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

// A row of one of the tables.
struct RowKey {
  std::string table;
  std::int64_t row = 0;
  auto operator<=>(const RowKey&) const = default;
};

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
