// A folder of vCard files: listing it, reading a file whole and replacing one whole. The store
// works on it, and so do those who watch its writes or keep them from the disk.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <vector>

namespace vlout::outlook::vcard {

// What tells one state of a file from another.
struct FileState {
  std::uint64_t inode = 0;
  std::int64_t size = 0;
  std::int64_t seconds = 0;  // modification time
  std::int32_t nanoseconds = 0;

  bool operator==(const FileState&) const = default;
};

[[nodiscard]] FileState stateOf(const struct stat& status);

// The file that becomes another one by its renaming. Hidden, and not a vCard by its name, so that
// no other program takes it for one; a folder is locked while it is open, so one name is enough.
inline constexpr const char* kTemporaryName = ".vloutsync.tmp";

// Calls `use` with the name of each vCard file of an open folder, in no order. False when the
// folder cannot be read; `errno` tells why.
bool forEachCardFile(int folder, const std::function<void(const char* name)>& use);

// Moves only the fraction of a modification time, so that it is another one and yet the same
// second.
[[nodiscard]] std::int32_t nextInSecond(std::int64_t nanoseconds);

// An open folder. File names are relative to it. Every function throws ContactStoreError with the
// file's name and the system's text.
class Folder {
 public:
  // Opens the folder for this process alone.
  explicit Folder(const std::string& path);
  virtual ~Folder();
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  // The names of the vCard files, sorted. What an interrupted save left behind is removed.
  [[nodiscard]] virtual std::vector<std::string> cardFiles();

  // Reads a file into `text`, whose storage is used again; the file's state. Nothing when it is no
  // regular file, or gone.
  virtual std::optional<FileState> read(const std::string& name, std::string& text);

  // Replaces a file, or makes it, so that readers and a crash find the old or the new text and
  // nothing between. The file's mode and owner stay as they were; a new file is its owner's alone.
  // When `before` is given, the file must still be in that state. `keepSecond` leaves the whole
  // second of the modification time as it was.
  virtual FileState replace(const std::string& name, std::string_view text,
                            const std::optional<FileState>& before, bool keepSecond);

  // Throws unless the file may be written and is still in that state; what it is like.
  [[nodiscard]] struct stat requireReplaceable(const std::string& name,
                                               const FileState& before) const;

  // Removes what an interrupted save has left behind.
  void tidy() const;

  // Waits until what was written is on the disk.
  virtual void flush();

 protected:
  // The file that a save of `name` replaces: the one behind a link, which may lie in a folder
  // elsewhere, or the file of that name itself.
  struct Target {
    std::string folder;  // empty for this one
    std::string name;
  };
  [[nodiscard]] Target targetOf(const std::string& name) const;

  [[nodiscard]] std::vector<std::string> listCardFiles() const;

  // `replace` that calls `completed` with the new file's state before it takes the old one's place.
  FileState replaceFile(const std::string& name, std::string_view text,
                        const std::optional<FileState>& before, bool keepSecond,
                        const std::function<void(const FileState&)>& completed) const;

  [[nodiscard]] const std::string& path() const { return path_; }
  [[noreturn]] void fail(const std::string& name) const;
  [[noreturn]] void failAsChanged(const std::string& name) const;

 private:
  std::string path_;
  int descriptor_ = -1;
};

}  // namespace vlout::outlook::vcard
