// The vCard files of a folder as a restore point needs them: told apart by size and modification
// time, and kept as hard links, since a save replaces a file and never changes it in place.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "outlook/vcard/folder.h"

namespace vlout::history {

using outlook::vcard::FileState;

// The number of vCard files in a folder, without a look at each. Throws ContactStoreError.
[[nodiscard]] std::size_t countCardFiles(const std::filesystem::path& folder);

// The state of one file, through links; nothing when there is none.
[[nodiscard]] std::optional<FileState> fileStateAt(const std::filesystem::path& file);

// Whether two states are of the same content, or both of no file. A copy has another inode.
[[nodiscard]] bool isSame(const std::optional<FileState>& a, const std::optional<FileState>& b);

// Whether files of one of the folders can be linked into the other.
[[nodiscard]] bool isOnOneDisk(const std::filesystem::path& a, const std::filesystem::path& b);

// Makes `link` another name of `file`, or a copy with the same modification time. False when there
// is no such file.
bool linkOrCopy(const std::filesystem::path& file, const std::filesystem::path& link);

// The name on the first card of a file, for people to know it by; empty when there is none.
[[nodiscard]] std::string personIn(const std::filesystem::path& file);

}  // namespace vlout::history
