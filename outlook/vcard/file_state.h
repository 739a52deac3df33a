// What tells one state of a file from another, without a look into it.
#pragma once

#include <cstdint>
#include <sys/stat.h>

namespace vlout::outlook::vcard {

struct FileState {
  std::uint64_t inode = 0;
  std::int64_t size = 0;
  std::int64_t seconds = 0;  // modification time
  std::int32_t nanoseconds = 0;

  bool operator==(const FileState&) const = default;
};

[[nodiscard]] inline FileState stateOf(const struct stat& status) {
  return {status.st_ino, status.st_size, status.st_mtim.tv_sec,
          static_cast<std::int32_t>(status.st_mtim.tv_nsec)};
}

}  // namespace vlout::outlook::vcard
