// A folder for this user's eyes alone, which goes with the object. Previews keep people's data in
// one.
#pragma once

#include <filesystem>

namespace vlout::posix {

// Lies where temporary files do; what programs that were killed have left there is removed. Throws
// std::runtime_error when it cannot be made.
class PrivateFolder {
 public:
  PrivateFolder();
  ~PrivateFolder();
  PrivateFolder(const PrivateFolder&) = delete;
  PrivateFolder& operator=(const PrivateFolder&) = delete;
  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace vlout::posix
