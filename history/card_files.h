// The vCard files of a folder as a restore point needs them: told apart by size and modification
// time, and kept as hard links, since a save replaces a file and never changes it in place.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>

#include "outlook/vcard/folder.h"

namespace vlout::history {

using outlook::vcard::FileState;
using FileStates = std::map<std::string, FileState>;  // by name

// The vCard files of a folder as they are now. Throws ContactStoreError.
[[nodiscard]] FileStates cardFilesIn(const std::filesystem::path& folder);

// Their number; without a look at each.
[[nodiscard]] std::size_t countCardFiles(const std::filesystem::path& folder);

// The state of one file, through links; nothing when there is none.
[[nodiscard]] std::optional<FileState> fileStateAt(const std::filesystem::path& file);

// Whether two states are of the same content, or both of no file. A copy has another inode.
[[nodiscard]] bool isSame(const std::optional<FileState>& a, const std::optional<FileState>& b);

// Makes `link` another name of `file`, or a copy with the same modification time. False when there
// is no such file.
bool linkOrCopy(const std::filesystem::path& file, const std::filesystem::path& link);

}  // namespace vlout::history
