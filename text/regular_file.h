// Reads whole files safely. What others leave for this program, or under the names of its own
// files, may be anything: a named pipe that nobody writes to, a device, an endless file.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

namespace vlout::text {

// A few MiB, for what another program leaves.
inline constexpr std::size_t kLargestForeign = std::size_t{8} << 20;
// For files of this program's own.
inline constexpr std::size_t kLargestOwn = std::size_t{1} << 28;

// The bytes of a regular file of at most `largest` bytes; links are followed. Never waits. For
// anything else throws std::system_error, which names the file.
[[nodiscard]] std::string readRegularFile(const std::filesystem::path& file,
                                          std::size_t largest = kLargestForeign);

}  // namespace vlout::text
