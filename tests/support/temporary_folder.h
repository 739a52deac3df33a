// A folder that a test has to itself and that goes with it.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace vlout::tests {

class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

void writeFile(const std::filesystem::path& file, std::string_view content);
[[nodiscard]] std::string readFile(const std::filesystem::path& file);

// The names of everything in a folder, sorted, hidden files too.
[[nodiscard]] std::vector<std::string> fileNames(const std::filesystem::path& folder);

// Everything in a folder and below with its size and the times of its last changes, which no write
// leaves as they were.
[[nodiscard]] std::string stampsOf(const std::filesystem::path& folder);

// The files of a folder: their names, the times of their last changes, and their content.
[[nodiscard]] std::string filesDump(const std::filesystem::path& folder);

}  // namespace vlout::tests
