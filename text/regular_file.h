// Files that are read whole. What others leave for this program, or under the names of its own
// files, may turn out to be anything: a named pipe that nobody writes to, a device, a file without
// an end.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

namespace vlout::text {

// A few MiB, for what another program leaves.
inline constexpr std::size_t kLargestForeign = std::size_t{8} << 20;
// For files of this program's own.
inline constexpr std::size_t kLargestOwn = std::size_t{1} << 28;

// The bytes of a regular file that is no larger; links are followed. Never waits. Throws
// std::system_error, which names the file, for anything else.
[[nodiscard]] std::string readRegularFile(const std::filesystem::path& file,
                                          std::size_t largest = kLargestForeign);

}  // namespace vlout::text
