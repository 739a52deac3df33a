// Reads texts that the host or the component keeps in files: in code page 949, or in UTF-8 if an
// editor has converted them.
#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

namespace vlout::entry {

// Thrown for a file that is neither in code page 949 nor in UTF-8; the text names it.
class EncodingError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The file's text in UTF-8, whichever of the two it was written in. Throws EncodingError if it is
// neither, std::system_error if it cannot be read.
[[nodiscard]] std::string readTextFile(const std::filesystem::path& file);

}  // namespace vlout::entry
