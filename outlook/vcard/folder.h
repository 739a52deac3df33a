// A folder of vCard files: lists it, and reads and replaces whole files. The store works on it; the
// recorder and the preview derive from it, to watch its writes or to keep them off the disk.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <future>
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

// True if a file is a vCard by its name.
[[nodiscard]] bool isCardFile(std::string_view name);

// Calls `use` with each name in an open folder, in no order, until it returns false. False when the
// folder cannot be read to its end; `errno` tells why.
bool forEachName(int folder, const std::function<bool(const char* name)>& use);
// Calls `use` with the name of each vCard file of an open folder, in no order. False when the
// folder cannot be read; `errno` tells why.
bool forEachCardFile(int folder, const std::function<void(const char* name)>& use);
// Whether an open folder has a vCard file. Nothing if it cannot be read; `errno` tells why.
[[nodiscard]] std::optional<bool> hasCardFile(int folder);

// A vCard file as it is found in its folder, unopened.
struct CardFile {
  std::string name;
  FileSight sight;
  std::vector<std::string> otherNames{};  // its other hard links in the folder
};

// The vCard files of an open folder by name, each once: links to one of them are left out. `own`
// gets the names of this program's own hidden files. Nothing if the folder cannot be read; `errno`
// tells why.
[[nodiscard]] std::optional<std::vector<CardFile>> listCardFiles(
    int folder, std::vector<std::string>* own = nullptr);

// Changes only the fraction of a modification time, so that it differs but stays within the same
// second.
[[nodiscard]] std::int32_t nextInSecond(std::int64_t nanoseconds);

// An open folder. File names are relative to it. Every function throws ContactStoreError with the
// file's name and the system's text.
class Folder {
 public:
  // Opens the folder and locks out other runs.
  explicit Folder(const std::string& path);
  virtual ~Folder();
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  // Starts looking for the vCard files meanwhile: the next `cardFiles` has them as they are from
  // now on. Nothing may be saved before it.
  void beginListing();
  // Forgets what nobody has asked for.
  void dropListing();
  // The vCard files. What an interrupted save left behind is removed.
  [[nodiscard]] virtual std::vector<CardFile> cardFiles();

  // The hidden files in which other programs' versions were kept, as `cardFiles` found them.
  [[nodiscard]] std::vector<std::string> keptVersions() const;

  // Reads a file into `text`, reusing its storage, and returns the file's state. Nothing if it is
  // not a regular file, or gone.
  virtual std::optional<FileState> read(const std::string& name, std::string& text);

  // Replaces or creates a file, so that readers, even after a crash, find the old or the new text
  // and nothing in between. The file keeps its mode and owner; a new file is readable by its owner
  // only. If `before` is given, the file must still be in that state, or it stays as it is. Its
  // hard links in the folder remain links to the same file. `keepSecond` leaves the whole second of
  // the modification time as it was. `row` is the number of the row that the new text was written
  // from, which gets its dates next, or empty; it is for those who watch the folder's writes.
  virtual FileState replace(const std::string& name, std::string_view text,
                            const std::optional<FileState>& before, bool keepSecond,
                            const std::string& row);

  // Keeps the save of one card of a file that is written later. The file is in the state `before`.
  virtual void gather(const SavedCard& save, const FileState& before);
  // What has been gathered but not written yet, even by a run that was killed; nothing if there is
  // none.
  [[nodiscard]] virtual std::optional<JournalFiles> gathered();
  // Replaces a file by a text that merges gathered saves with other programs' changes, so that it
  // is not in the state that the saves announced.
  virtual FileState rewrite(const std::string& name, std::string_view text,
                            const FileState& before);
  // Remembers that a file has been written with what was gathered for it, except for the cards
  // `lost`.
  virtual void gatheredWritten(const std::string& name, const std::vector<std::size_t>& lost);
  // Forgets what has been gathered.
  virtual void dropGathered();

  // Called with each file's new state before it gets its place, or with nothing before it is
  // removed.
  using Completed = std::function<void(const std::string& name, const std::optional<FileState>&)>;

  // Replaces a file that is in that state, or creates one, with what `make` puts at a path.
  void replaceBy(const std::string& name, const std::optional<FileState>& before,
                 const std::function<void(const std::filesystem::path&)>& make,
                 const Completed& completed) const;
  // Removes a file that is in that state.
  void remove(const std::string& name, const FileState& before, const Completed& completed) const;

  // Throws unless the file is writable and still in that state; returns what the system says about
  // it.
  [[nodiscard]] struct stat requireReplaceable(const std::string& name,
                                               const FileState& before) const;

  // Removes what interrupted saves have left behind.
  void tidy();

  // What can be seen of a file now; nothing if it is gone.
  [[nodiscard]] std::optional<FileSight> look(const std::string& name) const;
  [[nodiscard]] FolderIdentity identity() const;

  // Waits until what was written is on the disk.
  virtual void flush();

 protected:
  // The file that a save of `name` replaces: the target of a link, which may be in another folder,
  // or the file of that name itself.
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

  struct Listing {
    std::optional<std::vector<CardFile>> files;
    std::vector<std::string> own;
    int error = 0;
  };
  [[nodiscard]] Listing list() const;

  std::string path_;
  int descriptor_ = -1;
  std::future<Listing> listing_;
  std::optional<CardJournal> journal_;
  std::map<std::string, std::vector<std::string>> otherNames_;  // of files that have some
  std::vector<std::string> own_;                                // this program's hidden files
};

}  // namespace vlout::outlook::vcard
