// The contacts of a book as they were seen last, a vCard file each, in the component folder. A book
// has no files that history could keep and compare; it works on these in their place. A file's
// modification time is that of the contact's last change.
#pragma once

#include <filesystem>
#include <string>
#include <unordered_map>

#include "outlook/evolution/change_times.h"
#include "outlook/vcard/file_state.h"

namespace vlout::outlook::evolution {

// Where the mirror of a book lies, and the UID of the book of such a folder; empty for any other.
[[nodiscard]] std::filesystem::path mirrorOf(const std::filesystem::path& componentFolder,
                                             const std::string& bookUid);
[[nodiscard]] std::string bookOfMirror(const std::filesystem::path& componentFolder,
                                       const std::filesystem::path& folder);

// All functions throw std::system_error.
class Mirror {
 public:
  // Makes the folder.
  explicit Mirror(std::filesystem::path folder);

  [[nodiscard]] static std::string nameOf(const std::string& uid);

  // Whether the file of that contact is there with that time.
  [[nodiscard]] bool has(const std::string& uid, ChangeTime time);
  // Makes it so; of a save that was cut short, from the draft that it has left.
  void keep(const std::string& uid, const std::string& text, ChangeTime time);
  // Removes the files of contacts that `has` and `keep` were not asked about since the mirror was
  // opened, and drafts of saves that came to nothing.
  void dropOthers();

  // A save's file before it gets its place, and its state, which it keeps.
  vcard::FileState draft(const std::string& uid, const std::string& text, ChangeTime time);
  void place(const std::string& uid);

 private:
  [[nodiscard]] std::filesystem::path draftOf(const std::string& uid) const;

  std::filesystem::path folder_;
  struct File {
    ChangeTime time;
    bool isAskedFor = false;
  };
  std::unordered_map<std::string, File> files_;
};

}  // namespace vlout::outlook::evolution
