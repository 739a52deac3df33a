// The vCard files of a folder as a restore point needs them. They are told apart by size and
// modification time, and kept as hard links, since a save replaces a file and never changes it in
// place.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "outlook/vcard/folder.h"

namespace vlout::history {

using outlook::vcard::FileState;

// The number of vCard files in a folder, without looking at each, and whether there is one. Both
// throw ContactStoreError.
[[nodiscard]] std::size_t countCardFiles(const std::filesystem::path& folder);
[[nodiscard]] bool hasCardFile(const std::filesystem::path& folder);

// The state of a file, following links; nothing if there is none.
[[nodiscard]] std::optional<FileState> fileStateAt(const std::filesystem::path& file);

// True if two states stand for the same content, or both for no file. The inode does not count,
// since a copy has another.
[[nodiscard]] bool isSame(const std::optional<FileState>& a, const std::optional<FileState>& b);

// True if files can be hard-linked between the two folders.
[[nodiscard]] bool isOnOneDisk(const std::filesystem::path& a, const std::filesystem::path& b);

// Makes `link` a hard link to `file`, or a copy with the same modification time. False if there is
// no such file.
bool linkOrCopy(const std::filesystem::path& file, const std::filesystem::path& link);

// The name on a file's first card, by which people know it; empty if there is none.
[[nodiscard]] std::string personIn(const std::filesystem::path& file);

}  // namespace vlout::history
