#include "history/card_files.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include "outlook/contact_store.h"
#include "outlook/vcard/card_file.h"
#include "posix/file_descriptor.h"
#include "text/regular_file.h"

namespace vlout::history {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(const fs::path& path) {
  throw std::system_error(errno, std::generic_category(), path.string());
}

[[noreturn]] void failAsUnreadable(const fs::path& folder) {
  throw outlook::ContactStoreError(folder.string() + ": " + std::strerror(errno));
}

}  // namespace

std::size_t countCardFiles(const fs::path& folder) {
  std::size_t count = 0;
  const posix::FileDescriptor directory(posix::openKeepingAccessTime(folder.c_str(), O_DIRECTORY));
  if (directory.get() < 0 ||
      !outlook::vcard::forEachCardFile(directory.get(), [&](const char*) { ++count; })) {
    failAsUnreadable(folder);
  }
  return count;
}

bool hasCardFile(const fs::path& folder) {
  const posix::FileDescriptor directory(posix::openKeepingAccessTime(folder.c_str(), O_DIRECTORY));
  const auto found =
      directory.get() < 0 ? std::nullopt : outlook::vcard::hasCardFile(directory.get());
  if (!found) failAsUnreadable(folder);
  return *found;
}

std::optional<FileState> fileStateAt(const fs::path& file) {
  struct stat status {};
  if (::stat(file.c_str(), &status) != 0) return std::nullopt;
  return outlook::vcard::stateOf(status);
}

bool isSame(const std::optional<FileState>& a, const std::optional<FileState>& b) {
  if (!a || !b) return !a && !b;
  return a->size == b->size && a->seconds == b->seconds && a->nanoseconds == b->nanoseconds;
}

bool isOnOneDisk(const fs::path& a, const fs::path& b) {
  struct stat one {};
  struct stat other {};
  return ::stat(a.c_str(), &one) == 0 && ::stat(b.c_str(), &other) == 0 &&
         one.st_dev == other.st_dev;
}

bool linkOrCopy(const fs::path& file, const fs::path& link) {
  if (::linkat(AT_FDCWD, file.c_str(), AT_FDCWD, link.c_str(), AT_SYMLINK_FOLLOW) == 0) return true;
  if (errno == ENOENT) return false;
  if (errno != EXDEV && errno != EPERM && errno != EMLINK && errno != EOPNOTSUPP) fail(link);
  fs::copy_file(file, link);
  struct stat status {};
  if (::stat(file.c_str(), &status) != 0) fail(file);
  // Only root can give a file away; for anyone else the owner is right already.
  if (::chown(link.c_str(), status.st_uid, status.st_gid) != 0) errno = 0;
  const timespec times[2] = {status.st_atim, status.st_mtim};
  if (::utimensat(AT_FDCWD, link.c_str(), times, 0) != 0) fail(link);
  return true;
}

std::string personIn(const std::filesystem::path& file) {
  try {
    return outlook::vcard::firstDisplayName(text::readRegularFile(file, text::kLargestOwn));
  } catch (const std::system_error&) {
    return {};
  }
}

}  // namespace vlout::history
