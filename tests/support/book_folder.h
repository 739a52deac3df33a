// A book of the desktop for tests that work with a folder of vCards: before the component runs, the
// folder's files are written into the book; afterwards the book's contacts come back as files.
#pragma once

#include <filesystem>
#include <string>

namespace vlout::tests {

class BookFolder {
 public:
  // Empties the book.
  BookFolder(std::filesystem::path componentFolder, std::filesystem::path contacts,
             std::string bookUid);

  // A file's contact gets the file's name as its UID and counts as changed at the file's time.
  void intoBook() const;
  void outOfBook() const;

 private:
  std::filesystem::path componentFolder_;
  std::filesystem::path contacts_;
  std::string uid_;
};

}  // namespace vlout::tests
