// The contacts of a book as they were last seen, one vCard file each, in the component folder. A
// book has no files that the history could keep and compare, so it works on these instead. A file's
// modification time is that of the contact's last change.
#pragma once

#include <filesystem>
#include <string>
#include <unordered_map>
#include <vector>

#include "outlook/evolution/change_times.h"
#include "outlook/vcard/file_state.h"

namespace vlout::outlook::evolution {

// The folder of a book's mirror; and the UID of the book that such a folder mirrors, empty for any
// other folder.
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
  // Writes that file; if a save was cut short, by placing the draft that it left.
  void keep(const std::string& uid, const std::string& text, ChangeTime time);
  // Removes the files of contacts that neither `has` nor `keep` was called for since the mirror was
  // opened, and the drafts of failed saves.
  void dropOthers();

  // Writes a save's file before it gets its place. Returns the state, which the file then keeps.
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
  std::vector<std::filesystem::path> drafts_;  // that were there when it was opened
};

}  // namespace vlout::outlook::evolution
