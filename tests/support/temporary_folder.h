// A folder of a test's own, deleted at its end.
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

// Everything in and below a folder, with sizes and times of change; any write changes the result.
[[nodiscard]] std::string stampsOf(const std::filesystem::path& folder);

// The files of a folder: their names, the times of their last changes, and their content.
[[nodiscard]] std::string filesDump(const std::filesystem::path& folder);

}  // namespace vlout::tests
