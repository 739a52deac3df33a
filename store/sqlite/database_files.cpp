#include "store/sqlite/database_files.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <map>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "posix/file_descriptor.h"
#include "store/connection.h"
#include "text/language.h"

namespace vlout::store::sqlite {
namespace {

constexpr std::array<const char*, 4> kSuffixes{"", "-wal", "-shm", "-journal"};

void look(const std::filesystem::path& database, bool mustBeWritable) {
  std::error_code error;
  const auto file = std::filesystem::canonical(database, error);  // what is beside it lies there
  if (error) throw DatabaseError(error.message());
  for (const char* const suffix : kSuffixes) {
    const std::string name = file.string() + suffix;
    const std::string what = *suffix == '\0' ? "" : name + ": ";
    struct stat status {};
    if (::stat(name.c_str(), &status) != 0) {
      if (errno == ENOENT && *suffix != '\0') continue;
      throw DatabaseError(what + std::strerror(errno));
    }
    if (!S_ISREG(status.st_mode))
      throw DatabaseError(what + text::say("보통 파일이 아닙니다", "not a regular file"));
    if (mustBeWritable && ::faccessat(AT_FDCWD, name.c_str(), W_OK, AT_EACCESS) != 0) {
      throw DatabaseError(what + text::say("쓸 수 없는 파일입니다: %1", "cannot be written: %1",
                                           {std::strerror(errno)}));
    }
  }
}

}  // namespace

void requireRegularFiles(const std::filesystem::path& database) {
  look(database, false);
}

int keptOpen(const std::filesystem::path& database) {
  static std::map<std::pair<dev_t, ino_t>, int> descriptors;
  struct stat status {};
  if (::stat(database.c_str(), &status) != 0) return -1;
  const auto known = descriptors.find({status.st_dev, status.st_ino});
  if (known != descriptors.end()) return known->second;
  const int opened = posix::openKeepingAccessTime(database.c_str(), O_NONBLOCK);
  // It may be another file by now.
  if (opened >= 0 && ::fstat(opened, &status) == 0) {
    descriptors.insert({{status.st_dev, status.st_ino}, opened});
  }
  return opened;
}

void requireWritable(const std::filesystem::path& database) {
  look(database, true);
}

}  // namespace vlout::store::sqlite
