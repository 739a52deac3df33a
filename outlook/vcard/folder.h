// A folder of vCard files: listing it, reading a file whole and replacing one whole. The store
// works on it, and so do those who watch its writes or keep them from the disk.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <vector>

#include "outlook/vcard/card_journal.h"
#include "outlook/vcard/draft.h"
#include "outlook/vcard/file_state.h"
#include "outlook/vcard/folder_index.h"

namespace vlout::outlook::vcard {

// Whether a file is a vCard by its name.
[[nodiscard]] bool isCardFile(std::string_view name);

// Calls `use` with the name of each vCard file of an open folder, in no order. False when the
// folder cannot be read; `errno` tells why.
bool forEachCardFile(int folder, const std::function<void(const char* name)>& use);

// A vCard file as it is found in its folder, without a look into it.
struct CardFile {
  std::string name;
  FileSight sight;
  std::vector<std::string> otherNames{};  // hard links to it beside it
};

// The vCard files of an open folder by name, each once: links that lead to one of them are left
// out. `own` gets the names of this program's own hidden files. Nothing when the folder cannot be
// read; `errno` tells why.
[[nodiscard]] std::optional<std::vector<CardFile>> listCardFiles(
    int folder, std::vector<std::string>* own = nullptr);

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

  // The vCard files. What an interrupted save left behind is removed.
  [[nodiscard]] virtual std::vector<CardFile> cardFiles();

  // The hidden files in which other programs' versions were kept that had no other place, as
  // `cardFiles` found them.
  [[nodiscard]] std::vector<std::string> keptVersions() const;

  // Reads a file into `text`, whose storage is used again; the file's state. Nothing when it is no
  // regular file, or gone.
  virtual std::optional<FileState> read(const std::string& name, std::string& text);

  // Replaces a file, or makes it, so that readers and a crash find the old or the new text and
  // nothing between. The file's mode and owner stay as they were; a new file is its owner's alone.
  // When `before` is given, the file must still be in that state, or it stays as it is. Its hard
  // links in the folder go on being the same file. `keepSecond` leaves the whole second of the
  // modification time as it was. `row` is the number of the row that the new text was written from
  // and that gets its dates next, or empty; for those who watch the folder's writes.
  virtual FileState replace(const std::string& name, std::string_view text,
                            const std::optional<FileState>& before, bool keepSecond,
                            const std::string& row);

  // Keeps a save of one card of a file that is written later. The file is in the state `before`.
  virtual void gather(const SavedCard& save, const FileState& before);
  // What has been gathered and not been written, also by a run that was killed. Nothing when that
  // is nothing.
  [[nodiscard]] virtual std::optional<JournalFiles> gathered();
  // Replaces a file by its text with gathered saves and the changes of other programs: it is not
  // what those saves have told it would be.
  virtual FileState rewrite(const std::string& name, std::string_view text,
                            const FileState& before);
  // Remembers that a file has been written with what has been gathered, but for those of its cards.
  virtual void gatheredWritten(const std::string& name, const std::vector<std::size_t>& lost);
  // Forgets what has been gathered.
  virtual void dropGathered();

  // Called with each file's state, or nothing for its end, before it gets its place.
  using Completed = std::function<void(const std::string& name, const std::optional<FileState>&)>;

  // Replaces a file in that state, or makes a new one, by what `make` puts under a path.
  void replaceBy(const std::string& name, const std::optional<FileState>& before,
                 const std::function<void(const std::filesystem::path&)>& make,
                 const Completed& completed) const;
  // Removes a file in that state.
  void remove(const std::string& name, const FileState& before, const Completed& completed) const;

  // Throws unless the file may be written and is still in that state; what it is like.
  [[nodiscard]] struct stat requireReplaceable(const std::string& name,
                                               const FileState& before) const;

  // Removes what an interrupted save has left behind.
  void tidy();

  // What a look at a file tells now; nothing when it is gone.
  [[nodiscard]] std::optional<FileSight> look(const std::string& name) const;
  [[nodiscard]] FolderIdentity identity() const;

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

  [[nodiscard]] std::vector<CardFile> findCardFiles();
  [[nodiscard]] std::vector<std::string> otherNamesOf(const std::string& name) const;

  FileState replaceFile(const std::string& name, std::string_view text,
                        const std::optional<FileState>& before, bool keepSecond,
                        const Completed& completed) const;

  [[nodiscard]] const std::string& path() const { return path_; }
  [[noreturn]] void fail(const std::string& name) const;
  [[noreturn]] void failAsChanged(const std::string& name, const std::string& kept = "") const;

 private:
  [[nodiscard]] std::optional<FileState> readRegular(const std::string& name, int flags,
                                                     std::string& text) const;
  void removeDrafts() const;
  void place(Draft& draft, const std::string& name) const;
  void renewLinks(const std::string& name, const FileState& before, const FileState& now,
                  const Completed& completed) const;

  std::string path_;
  int descriptor_ = -1;
  std::optional<CardJournal> journal_;
  std::map<std::string, std::vector<std::string>> otherNames_;  // of files that have some
  std::vector<std::string> own_;                                // this program's hidden files
};

}  // namespace vlout::outlook::vcard
