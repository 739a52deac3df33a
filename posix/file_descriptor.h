// Files as Linux opens them: a descriptor that closes itself, and a look that leaves no trace.
#pragma once

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

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

// Opens a file for reading. No access time tells of it, where the system lets this user look that
// way. A name that is not absolute is relative to `folder`.
[[nodiscard]] inline int openUnnoticed(const char* name, int flags = 0, int folder = AT_FDCWD) {
  const int file = ::openat(folder, name, flags | O_RDONLY | O_CLOEXEC | O_NOATIME);
  if (file >= 0 || errno != EPERM) return file;
  return ::openat(folder, name, flags | O_RDONLY | O_CLOEXEC);
}

}  // namespace vlout::posix
