// The text files of a restore point: entries that end with a character which no file name holds, so
// that one that was cut off shows.
#pragma once

#include <filesystem>
#include <sstream>
#include <string>

#include "outlook/vcard/file_state.h"
#include "text/regular_file.h"

namespace vlout::history {

inline constexpr char kEntryEnd = '\0';

// A file and its state: "SIZE SECONDS NANOSECONDS NAME". The inode is not part of it.
[[nodiscard]] std::string entryOf(const outlook::vcard::FileState& state, const std::string& name);
// Reads one from where an entry is at. False when it is none.
bool readEntry(std::istream& entry, outlook::vcard::FileState& state, std::string& name);

// Calls `use(std::istream&)` with each whole entry of a file; a missing file has none. Throws
// std::system_error, which names the file, when it cannot be read.
template <typename Use>
void forEachEntry(const std::filesystem::path& path, Use use) {
  if (!std::filesystem::exists(std::filesystem::symlink_status(path))) return;
  std::istringstream file(text::readRegularFile(path, text::kLargestOwn));
  for (std::string entry; std::getline(file, entry, kEntryEnd) && !file.eof();) {
    std::istringstream stream(entry);
    use(stream);
  }
}

}  // namespace vlout::history
