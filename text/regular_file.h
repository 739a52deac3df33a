// Small files that other programs leave for this one, which may turn out to be anything: a named
// pipe that nobody writes to, a device, a file without an end.
#pragma once

#include <filesystem>
#include <string>

namespace vlout::text {

// The bytes of a regular file of a few MiB at most; links are followed. Never waits. Throws
// std::system_error, which names the file, for anything else.
[[nodiscard]] std::string readRegularFile(const std::filesystem::path& file);

}  // namespace vlout::text
