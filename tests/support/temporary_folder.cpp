#include "tests/support/temporary_folder.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <sys/stat.h>

namespace vlout::tests {

TemporaryFolder::TemporaryFolder() {
  std::string pattern = (std::filesystem::temp_directory_path() / "vlout-test-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
  path_ = pattern;
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

void writeFile(const std::filesystem::path& file, std::string_view content) {
  std::filesystem::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary) << content;
}

std::string readFile(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

std::vector<std::string> fileNames(const std::filesystem::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string stampsOf(const std::filesystem::path& folder) {
  std::vector<std::string> files;
  const auto add = [&](const std::filesystem::path& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0) throw std::runtime_error(path.string());
    std::string text = path.string() + '|' + std::to_string(status.st_size);
    for (const timespec& time : {status.st_mtim, status.st_ctim}) {
      text += '|' + std::to_string(time.tv_sec) + '.' + std::to_string(time.tv_nsec);
    }
    files.push_back(std::move(text));
  };
  add(folder);
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) add(entry.path());
  std::sort(files.begin(), files.end());
  std::string all;
  for (const std::string& file : files) all += file + '\n';
  return all;
}

std::string filesDump(const std::filesystem::path& folder) {
  std::string all;
  for (const std::string& name : fileNames(folder)) {
    const auto time = std::filesystem::last_write_time(folder / name).time_since_epoch();
    all += name + '|' + std::to_string(time.count()) + '|' + readFile(folder / name);
  }
  return all;
}

}  // namespace vlout::tests
