// Opening files on Linux: a descriptor that closes itself, reading without a trace, and a safe way
// to open what may not be a regular file.
#pragma once

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "text/language.h"

namespace vlout::posix {

class FileDescriptor {
 public:
  explicit FileDescriptor(int value) : value_(value) {}
  ~FileDescriptor() {
    if (value_ >= 0) ::close(value_);
  }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  [[nodiscard]] int get() const { return value_; }

 private:
  int value_;
};

// Opens a file for reading without changing its access time, if the system lets this user do so. A
// name that is not absolute is relative to `folder`.
[[nodiscard]] inline int openKeepingAccessTime(const char* name, int flags = 0,
                                               int folder = AT_FDCWD) {
  const int file = ::openat(folder, name, flags | O_RDONLY | O_CLOEXEC | O_NOATIME);
  if (file >= 0 || errno != EPERM) return file;
  return ::openat(folder, name, flags | O_RDONLY | O_CLOEXEC);
}

// The error of `openRegular` for a pipe, a device or a folder.
inline constexpr int kNotRegular = ENXIO;

// Opens a regular file, or a link to one, and nothing else: a named pipe would block the program
// for ever, and a device may have no end. Opens for reading unless the flags say otherwise.
[[nodiscard]] inline int openRegular(const char* name, int flags = O_RDONLY,
                                     int folder = AT_FDCWD) {
  constexpr int kNoWaiting = O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  const bool isLook = (flags & O_ACCMODE) == O_RDONLY;
  const int file = isLook ? openKeepingAccessTime(name, flags | kNoWaiting, folder)
                          : ::openat(folder, name, flags | kNoWaiting, 0600);
  struct stat status {};
  if (file < 0 || (::fstat(file, &status) == 0 && S_ISREG(status.st_mode))) {
    if (file < 0 && errno == EISDIR) errno = kNotRegular;
    return file;
  }
  ::close(file);
  errno = kNotRegular;
  return -1;
}

// The reason, in words for the user.
[[nodiscard]] inline std::string reasonOf(int error) {
  return error == kNotRegular ? text::say("보통 파일이 아닙니다", "not a regular file")
                              : std::strerror(error);
}

}  // namespace vlout::posix
