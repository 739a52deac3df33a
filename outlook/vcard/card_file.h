// A file of vCards: where its cards lie in its text, and what can be told of each without decoding
// it. Also the two file operations that the folder is made of: reading whole, and replacing whole.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vlout::outlook::vcard {

// One complete card in the text of a file.
struct CardSpan {
  std::size_t start = 0;
  std::size_t size = 0;
  bool isGroup = false;               // a list of contacts, not a contact
  std::optional<std::string> vlid{};  // the row number that the card carries
};

struct CardFileText {
  std::vector<CardSpan> cards;
  bool cutOff = false;  // a card began that has no end
};

[[nodiscard]] CardFileText findCards(std::string_view fileText);

// What tells one state of a file from another.
struct FileState {
  std::uint64_t inode = 0;
  std::int64_t size = 0;
  std::int64_t seconds = 0;  // modification time
  std::int32_t nanoseconds = 0;

  bool operator==(const FileState&) const = default;
};

// An open folder. File names are relative to it. Every function throws ContactStoreError with the
// file's name and the system's text.
class Folder {
 public:
  // Opens the folder for this process alone.
  explicit Folder(const std::string& path);
  ~Folder();
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  // The names of the vCard files, sorted. What an interrupted save left behind is removed.
  [[nodiscard]] std::vector<std::string> cardFiles() const;

  // Reads a file into `text`, whose storage is used again; the file's state. Nothing when it is no
  // regular file, or gone.
  std::optional<FileState> read(const std::string& name, std::string& text) const;

  // Replaces a file, or makes it, so that readers and a crash find the old or the new text and
  // nothing between. The file's mode and owner stay as they were; a new file is its owner's alone.
  // When `before` is given, the file must still be in that state. `keepSecond` leaves the whole
  // second of the modification time as it was.
  FileState replace(const std::string& name, std::string_view text,
                    const std::optional<FileState>& before, bool keepSecond) const;

  // Waits until what was written is on the disk.
  void flush() const;

 private:
  [[noreturn]] void fail(const std::string& name) const;
  FileState replaceLinked(const std::string& name, std::string_view text, const FileState& before,
                          bool keepSecond) const;

  std::string path_;
  int descriptor_ = -1;
};

}  // namespace vlout::outlook::vcard
