// An initialisation file as Windows programs keep it: code page 949, CRLF, sections in brackets.
// Values are read and written with the system's profile functions or, on systems without them, in
// the same way. Everything else in the file stays.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace vlout::entry {

class IniFile {
 public:
  explicit IniFile(std::filesystem::path file) : file_(std::move(file)) {}

  // The value of a key, cut at 254 characters, or an empty text. A file that is missing, unreadable
  // or in no known encoding has no keys.
  [[nodiscard]] std::string read(std::string_view section, std::string_view key) const;

  struct Entry {
    std::string key;
    std::string value;
  };
  // Sets keys of one section; section, keys and values are ASCII. Every other byte of the file
  // stays. The file is replaced as a whole. False if it could not be written.
  bool write(std::string_view section, const std::vector<Entry>& entries) const;

 private:
  std::filesystem::path file_;
};

}  // namespace vlout::entry
