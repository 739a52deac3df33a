// The saves of cards that lie in files of several. Such a file is written once, when a run ends;
// until then this journal beside it holds what each save has made of its card, so that a kill loses
// nothing that a row has been told of. Whoever opens the folder next completes it.
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
  FileState willBe{};  // what the file will be like with this save and those before; no inode
  std::size_t card = 0;
  std::uint64_t before = 0;  // hash of the card's text
  std::int64_t row = 0;      // whose data it is that the card gets, by number, or none
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
  // In an open folder. Nothing is made before the first save.
  explicit CardJournal(int folder) : folder_(folder) {}
  ~CardJournal();
  CardJournal(const CardJournal&) = delete;
  CardJournal& operator=(const CardJournal&) = delete;

  // The save is there whole once the call returns, even when the program is killed then, or not at
  // all. False when it could not be kept; `errno` tells why.
  [[nodiscard]] bool append(const SavedCard& save);
  // Keeps that a file has been written with all saves so far but those of the cards `lost`. What
  // cannot be kept has to be found out by looking at the file.
  void appendWritten(const std::string& file, const std::vector<std::size_t>& lost);
  void remove();

  // The names under which it may lie in a folder: something else may have the first ones.
  [[nodiscard]] static std::vector<std::string> names();

  // What a journal with that text holds. What is damaged is left out.
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

// Writes what the journal of a folder holds into the files. The cards that another program has
// changed since stay as they are. The journal stays too, until the caller has dealt with what is
// lost. Throws ContactStoreError.
[[nodiscard]] CompletedSaves completeSaves(Folder& folder);

// The saves that are lost because those cards of a file are another program's now. `state` is the
// file's, if it is there.
void addLostSaves(const std::string& file, const std::optional<FileState>& state,
                  const CardChanges& changes, const MergedFile& merged,
                  std::vector<LostSave>& lost);

}  // namespace vlout::outlook::vcard
