// An initialisation file as Windows programs keep it: code page 949, CRLF, sections in brackets.
// Values are read and written with the system's profile functions, or as they would do it where the
// system has none; whatever else stands in the file stays.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace vlout::entry {

class IniFile {
 public:
  explicit IniFile(std::filesystem::path file) : file_(std::move(file)) {}

  // The value of a key, up to 254 characters of it, or an empty text. A file that is missing,
  // unreadable or in no known encoding holds no keys.
  [[nodiscard]] std::string read(std::string_view section, std::string_view key) const;

  struct Entry {
    std::string key;
    std::string value;
  };
  // Sets the keys of one section, both in ASCII; what else is in the file stays to the byte. The
  // file is replaced whole. False when it could not be written.
  bool write(std::string_view section, const std::vector<Entry>& entries) const;

 private:
  std::filesystem::path file_;
};

}  // namespace vlout::entry
