// Tells the states of a file apart without reading it.
#pragma once

#include <compare>
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

// A point in time, as the system counts it.
struct Moment {
  std::int64_t seconds = 0;
  std::int32_t nanoseconds = 0;

  auto operator<=>(const Moment&) const = default;
};

[[nodiscard]] inline Moment modifiedAt(const FileState& state) {
  return {state.seconds, state.nanoseconds};
}

// All that can be known about a file without opening it.
struct FileSight {
  FileState state;
  std::uint64_t device = 0;
  Moment
      changed{};  // the last change of its content, its names or anything else; nobody can set it

  bool operator==(const FileSight&) const = default;
};

[[nodiscard]] inline FileSight sightOf(const struct stat& status) {
  return {stateOf(status),
          status.st_dev,
          {status.st_ctim.tv_sec, static_cast<std::int32_t>(status.st_ctim.tv_nsec)}};
}

}  // namespace vlout::outlook::vcard
