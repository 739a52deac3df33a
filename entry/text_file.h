// Texts that the host or the component keeps in files: code page 949, or UTF-8 where an editor has
// turned them into that.
#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

namespace vlout::entry {

// A file that is neither in code page 949 nor in UTF-8; the text names it.
class EncodingError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The text of the file in UTF-8, whichever of the two it was written in. Throws EncodingError for a
// text in neither, std::system_error when it cannot be read.
[[nodiscard]] std::string readTextFile(const std::filesystem::path& file);

}  // namespace vlout::entry
