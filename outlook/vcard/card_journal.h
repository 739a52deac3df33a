// The saves of cards that share a file with others. Such a file is written once, when a run ends;
// until then this journal beside it holds the new text of each saved card, so that a kill loses
// nothing that a row already knows of. Whoever opens the folder next completes the saves.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
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
  FileState willBe{};  // the file's state after this save and those before; no inode
  std::size_t card = 0;
  std::uint64_t before = 0;  // hash of the card's text
  std::int64_t row = 0;      // the number of the row whose data the card gets, or none
  std::string text;
};

// The changes that the journal's saves make in a file, and its state afterwards.
struct JournalFile {
  CardChanges changes;
  FileState willBe;
};
using JournalFiles = std::map<std::string, JournalFile>;

class CardJournal {
 public:
  // In an open folder. Nothing is made before the first save.
  explicit CardJournal(int folder) : folder_(folder) {}
  ~CardJournal();
  CardJournal(const CardJournal&) = delete;
  CardJournal& operator=(const CardJournal&) = delete;

  // Once the call returns, the whole save is there, even if the program is then killed; before
  // that, none of it counts. False if it could not be kept; `errno` tells why.
  [[nodiscard]] bool append(const SavedCard& save);
  // Notes that a file has been written with all saves so far, except those of the cards `lost`. If
  // that cannot be noted, it must be found out later by looking at the file.
  void appendWritten(const std::string& file, const std::vector<std::size_t>& lost);
  void remove();

  // The names that it may have in a folder: the first ones may be taken by something else.
  [[nodiscard]] static std::vector<std::string> names();

  // The content of a journal with that text, without damaged parts.
  [[nodiscard]] static JournalFiles parse(std::string_view text);

 private:
  bool open();

  int folder_;
  int file_ = -1;
};

struct CompletedSaves {
  std::vector<LostSave> lost;
  std::map<std::string, FileState> written;  // by file
};

// Writes the saves of a folder's journal into the files. Cards that another program has changed
// since then stay as they are. The journal stays too, until the caller has dealt with the lost
// saves. Throws ContactStoreError.
[[nodiscard]] CompletedSaves completeSaves(Folder& folder);

// Adds the saves that are lost because another program has changed those cards of a file. `state`
// is the file's, if it exists.
void addLostSaves(const std::string& file, const std::optional<FileState>& state,
                  const CardChanges& changes, const MergedFile& merged,
                  std::vector<LostSave>& lost);

}  // namespace vlout::outlook::vcard
