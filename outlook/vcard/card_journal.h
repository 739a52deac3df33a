// The saves of cards that lie in files of several. Such a file is written once, when a run ends;
// until then this journal beside it holds what each save has made of its card, so that a kill loses
// nothing that a row has been told of. Whoever opens the folder next completes it.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "outlook/contact_store.h"
#include "outlook/vcard/card_merge.h"
#include "outlook/vcard/file_state.h"

namespace vlout::outlook::vcard {

class Folder;

// One save of one card.
struct SavedCard {
  std::string file;
  FileState willBe{};  // what the file will be like with this save and those before; no inode
  std::size_t card = 0;
  std::uint64_t before = 0;  // hash of the card's text
  std::string text;
};

// The changes that the journal's saves make in each file, and what each file will be like.
struct JournalFile {
  CardChanges changes;
  FileState willBe;
};
using JournalFiles = std::map<std::string, JournalFile>;

class CardJournal {
 public:
  static constexpr const char* kName = ".vloutsync-journal";

  // In an open folder. Nothing is made before the first save.
  explicit CardJournal(int folder) : folder_(folder) {}
  ~CardJournal();
  CardJournal(const CardJournal&) = delete;
  CardJournal& operator=(const CardJournal&) = delete;

  // The save is there whole once the call returns, even when the program is killed then, or not at
  // all. False when it could not be kept; `errno` tells why.
  [[nodiscard]] bool append(const SavedCard& save);
  void remove();

  // What a journal with that text holds. What is damaged is left out.
  [[nodiscard]] static JournalFiles parse(std::string_view text);

 private:
  int folder_;
  int file_ = -1;
};

// Writes what the journal of a folder holds into the files, and removes it. The cards that another
// program has changed since stay as they are. Throws ContactStoreError; the journal stays then.
[[nodiscard]] std::vector<LostSave> completeSaves(Folder& folder);

// The saves that are lost because those cards of a file are another program's now.
void addLostSaves(const std::string& file, const MergedFile& merged, std::vector<LostSave>& lost);

}  // namespace vlout::outlook::vcard
