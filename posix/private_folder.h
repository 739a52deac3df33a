// A temporary folder that only this user can read, and that is deleted with the object. Previews
// keep people's data in one.
#pragma once

#include <filesystem>

namespace vlout::posix {

// Made where temporary files go; also removes such folders that killed programs have left there.
// Throws std::runtime_error if it cannot be made.
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
