// What earlier runs have seen of a contact folder, so that a file that has not changed need not be
// opened, and so that the cards of a file that holds several, or did, have times of their own. A
// cache: one that is missing, damaged, or of another folder counts as empty, and a file that is not
// in it, or not as it says, is read. The store reads it when it opens the folder, and writes it
// when a run ends.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "outlook/vcard/file_state.h"

namespace vlout::outlook::vcard {

struct KnownCard {
  bool isGroup = false;
  std::optional<std::string> vlid{};
  std::string nameLines{};  // of a contact without a key
  std::uint64_t hash = 0;   // of its text
  // When that was last changed: the file's time, but for a card that has shared a file.
  Moment time{};

  bool operator==(const KnownCard&) const = default;
};

struct KnownFile {
  FileSight sight{};
  // It had lain still when it was looked at: whoever has written into it since has left a trace.
  bool isSettled = false;
  std::vector<KnownCard> cards{};

  bool operator==(const KnownFile&) const = default;
};

// Whether a file that is written into again, from `now` on, will have another time of change.
[[nodiscard]] bool hasSettled(const FileSight& sight, const Moment& now);
[[nodiscard]] Moment currentMoment();

// A folder as the index of it names it.
struct FolderIdentity {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
};

class FolderIndex {
 public:
  // Empty.
  FolderIndex() = default;
  FolderIndex(const std::filesystem::path& file, const FolderIdentity& folder);

  // The file of that name; nothing when it is not known. Names come in ascending order. What is
  // returned lasts until the next call.
  [[nodiscard]] const KnownFile* find(std::string_view name);

  [[nodiscard]] std::size_t size() const { return size_; }

 private:
  bool readEntry();

  std::string bytes_;
  std::size_t position_ = 0;
  std::size_t size_ = 0;
  std::string_view name_;  // of the entry that was read last
  KnownFile file_;
  bool hasEntry_ = false;
};

// Makes an index anew.
class FolderIndexWriter {
 public:
  // In ascending order of names.
  void add(std::string_view name, const KnownFile& file);
  // Puts it in the place of the old one. A cache that cannot be written is not worth a message.
  void save(const std::filesystem::path& file, const FolderIdentity& folder) const;

 private:
  std::string entries_;
  std::uint64_t count_ = 0;
};

}  // namespace vlout::outlook::vcard
