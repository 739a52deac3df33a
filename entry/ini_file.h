// An initialisation file as Windows programs keep it: code page 949, CRLF, sections in brackets.
// Reads and writes values as the system's profile functions do; whatever else stands in the file
// stays.
#pragma once

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace vlout::entry {

// A file that is neither in code page 949 nor in UTF-8; the text names it.
class EncodingError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The text of a file of the host's or the component's, in UTF-8, whichever of the two it was
// written in. Throws EncodingError for a text in neither, std::system_error when it cannot be read.
[[nodiscard]] std::string readTextFile(const std::filesystem::path& file);

class IniFile {
 public:
  explicit IniFile(std::filesystem::path file) : file_(std::move(file)) {}

  // The value of a key, up to 254 characters of it, or an empty text. A missing or unreadable file
  // holds no keys; throws EncodingError.
  [[nodiscard]] std::string read(std::string_view section, std::string_view key) const;

  struct Entry {
    std::string key;
    std::string value;
  };
  // Sets the keys of one section; the file is replaced whole. False when it could not be written.
  bool write(std::string_view section, const std::vector<Entry>& entries) const;

 private:
  std::filesystem::path file_;
};

}  // namespace vlout::entry
