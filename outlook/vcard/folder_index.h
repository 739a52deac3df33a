// What earlier runs have seen of a contact folder. With it, unchanged files need not be opened, and
// cards that share a file, or did, have times of their own. It is a cache: if it is missing,
// damaged or of another folder, it counts as empty, and a file that is not in it, or differs from
// its entry, is read. The store reads it when it opens the folder, and writes it when a run ends.
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
  // When its text last changed: the file's time, except for a card that has shared a file.
  Moment time{};

  bool operator==(const KnownCard&) const = default;
};

struct KnownFile {
  FileSight sight{};
  // It had not just been written when it was looked at, so any later write shows in its times.
  bool isSettled = false;
  std::vector<KnownCard> cards{};

  bool operator==(const KnownFile&) const = default;
};

// True if a write from `now` on will give the file another time of change.
[[nodiscard]] bool hasSettled(const FileSight& sight, const Moment& now);
[[nodiscard]] Moment currentMoment();

// How the index names its folder.
struct FolderIdentity {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
};

class FolderIndex {
 public:
  // Empty.
  FolderIndex() = default;
  FolderIndex(const std::filesystem::path& file, const FolderIdentity& folder);

  // The file of that name, or null if it is not known. Names must be asked for in ascending order.
  // The result is valid until the next call.
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

// Writes a new index.
class FolderIndexWriter {
 public:
  // With room for about that many files.
  explicit FolderIndexWriter(std::size_t files);
  // In ascending order of names.
  void add(std::string_view name, const KnownFile& file);
  // Replaces the old index. Failure is silent: a cache is not worth a message.
  void save(const std::filesystem::path& file, const FolderIdentity& folder) const;

 private:
  std::string entries_;
  std::uint64_t count_ = 0;
};

}  // namespace vlout::outlook::vcard
