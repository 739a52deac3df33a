#include "outlook/vcard/draft.h"

#include <cerrno>
#include <cinttypes>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

#include "posix/file_descriptor.h"

namespace vlout::outlook::vcard {
namespace {

constexpr std::string_view kPrefix = ".vloutsync";
constexpr std::string_view kEnding = ".tmp";
constexpr std::string_view kKeptPrefix = ".vloutsync-kept-";

std::optional<FileState> stateIn(int folder, const std::string& name, int flags) {
  struct stat status {};
  if (::fstatat(folder, name.c_str(), &status, flags) != 0) return std::nullopt;
  return stateOf(status);
}

bool isRegular(int folder, const std::string& name) {
  struct stat status {};
  return ::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
         S_ISREG(status.st_mode);
}

bool isFree(int folder, const std::string& name) {
  return !stateIn(folder, name, AT_SYMLINK_NOFOLLOW) && errno == ENOENT;
}

// A draft's name tells which file is to come out in exchange for it. So a draft left by a kill can
// be recognised: it is either that old file, no longer needed, or a version that nobody meant to
// remove.
std::string draftName(const FileState& state, int number) {
  std::string name(kPrefix);
  for (const std::int64_t part : {static_cast<std::int64_t>(state.inode), state.size, state.seconds,
                                  std::int64_t{state.nanoseconds}}) {
    name += '-' + std::to_string(part);
  }
  if (number > 0) name += '.' + std::to_string(number);
  return name.append(kEnding);
}

std::optional<FileState> stateInName(const std::string& name) {
  FileState state;
  const int parts =
      std::sscanf(name.c_str(), ".vloutsync-%" SCNu64 "-%" SCNd64 "-%" SCNd64 "-%" SCNd32,
                  &state.inode, &state.size, &state.seconds, &state.nanoseconds);
  return parts == 4 ? std::optional(state) : std::nullopt;
}

bool lacksSupport(int error) {
  return error == EINVAL || error == ENOSYS;
}

int renameNew(int folder, const std::string& from, const std::string& to) {
  const int result = ::renameat2(folder, from.c_str(), folder, to.c_str(), RENAME_NOREPLACE);
  if (result == 0 || !lacksSupport(errno)) return result;
  if (!isFree(folder, to)) {
    errno = EEXIST;
    return -1;
  }
  return ::renameat(folder, from.c_str(), folder, to.c_str());
}

// Gives another program's version a name of its own, and returns the name.
std::string keepVersion(int folder, const std::string& name) {
  for (int number = 1;; ++number) {
    std::string kept = std::string(kKeptPrefix) + std::to_string(number) + ".vcf";
    if (renameNew(folder, name, kept) == 0) return kept;
    if (errno != EEXIST) return name;  // then it stays where it is until the folder is tidied
  }
}

// Finds out whether programs are writing into a file in place. Their writes would otherwise go on
// into a file that has lost its name.
class WriterWatch {
 public:
  WriterWatch(int folder, const std::string& name)
      : file_(posix::openKeepingAccessTime(name.c_str(), O_NONBLOCK | O_NOFOLLOW, folder)) {
    // Opening the file for writing waits until the lease is given back. The signal that announces
    // it is one that is ignored.
    if (file_.get() < 0 || ::fcntl(file_.get(), F_SETSIG, SIGURG) != 0) return;
    isLeased_ = ::fcntl(file_.get(), F_SETLEASE, F_RDLCK) == 0;
    hasWriter_ = !isLeased_ && errno == EAGAIN;
  }
  // If the system grants no lease, nothing can be told, and the file counts as having no writer.
  [[nodiscard]] bool hasWriter() const {
    return hasWriter_ || (isLeased_ && ::fcntl(file_.get(), F_GETLEASE) != F_RDLCK);
  }

 private:
  posix::FileDescriptor file_;
  bool isLeased_ = false;
  bool hasWriter_ = false;
};

}  // namespace

Draft::Draft(int folder, const std::optional<FileState>& replaced)
    : folder_(folder), replaced_(replaced) {
  // Something that nobody can remove, a folder say, may have the name.
  int number = 0;
  do {
    name_ = draftName(replaced.value_or(FileState{}), number++);
  } while (!isFree(folder, name_) && number < 1000);
}

Draft::~Draft() {
  if (!isMade_) return;
  const int error = errno;  // of what failed before
  ::unlinkat(folder_, name_.c_str(), 0);
  errno = error;
}

int Draft::create(unsigned mode) {
  constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  const int file = ::openat(folder_, name_.c_str(), kFlags, 0600);
  if (file < 0) return file;
  isMade_ = true;
  if (mode != 0600 && ::fchmod(file, mode) != 0) errno = 0;  // stays private
  return file;
}

Draft::Outcome Draft::place(const std::string& name) {
  if (!replaced_) return placeNew(name);
  const auto own = stateIn(folder_, name_, AT_SYMLINK_NOFOLLOW);
  const WriterWatch watch(folder_, name);
  if (watch.hasWriter()) return Outcome::Changed;
  if (::renameat2(folder_, name_.c_str(), folder_, name.c_str(), RENAME_EXCHANGE) != 0) {
    return lacksSupport(errno) ? placeWithoutExchange(name) : Outcome::Failed;
  }
  const auto out = stateIn(folder_, name_, AT_SYMLINK_NOFOLLOW);
  if (out == replaced_ && !watch.hasWriter()) return Outcome::Done;
  if (out) putBack(name, own, *out);
  return Outcome::Changed;
}

Draft::Outcome Draft::placeNew(const std::string& name) {
  if (renameNew(folder_, name_, name) != 0) return Outcome::Failed;
  isMade_ = false;
  return Outcome::Done;
}

// The best that can be done where names cannot be exchanged.
Draft::Outcome Draft::placeWithoutExchange(const std::string& name) {
  if (stateIn(folder_, name, AT_SYMLINK_NOFOLLOW) != replaced_) return Outcome::Changed;
  if (::renameat(folder_, name_.c_str(), folder_, name.c_str()) != 0) return Outcome::Failed;
  isMade_ = false;
  return Outcome::Done;
}

// `out` came out for the draft and must go back. What comes out this time must be what was put in
// before; if it is not, somebody has written yet again, and that version belongs there.
void Draft::putBack(const std::string& name, const std::optional<FileState>& own, FileState out) {
  std::optional<FileState> placed = own;
  while (true) {
    if (::renameat2(folder_, name_.c_str(), folder_, name.c_str(), RENAME_EXCHANGE) != 0) {
      // The name has gone meanwhile, so it is free for the version that was not meant to be
      // removed.
      if (renameNew(folder_, name_, name) != 0) keptAs_ = keepVersion(folder_, name_);
      isMade_ = false;
      return;
    }
    const auto back = stateIn(folder_, name_, AT_SYMLINK_NOFOLLOW);
    if (back == placed || !back) break;
    placed = std::exchange(out, *back);
  }
  if (placed == own) return;  // what came back is the draft
  keptAs_ = keepVersion(folder_, name_);
  isMade_ = false;
}

Draft::Outcome Draft::takeAway(const std::string& name) {
  const WriterWatch watch(folder_, name);
  if (watch.hasWriter()) return Outcome::Changed;
  if (renameNew(folder_, name, name_) != 0) return Outcome::Failed;
  if (stateIn(folder_, name_, 0) == replaced_ && !watch.hasWriter()) {  // the file behind a link
    isMade_ = true;
    return Outcome::Done;
  }
  if (renameNew(folder_, name_, name) != 0) keptAs_ = keepVersion(folder_, name_);
  return Outcome::Changed;
}

bool isDraft(std::string_view name) {
  return name.starts_with(kPrefix) && name.ends_with(kEnding);
}

bool isKeptVersion(std::string_view name) {
  return name.starts_with(kKeptPrefix);
}

void removeDraft(int folder, const std::string& name,
                 const std::function<void(const std::function<bool(const char*)>&)>& forEachFile) {
  const auto replaced = stateInName(name);
  if (!isRegular(folder, name)) {
    // An undo may have taken away a link. Anything else of that name is not ours.
    if (replaced && stateIn(folder, name, 0) == replaced) ::unlinkat(folder, name.c_str(), 0);
    return;
  }
  bool isDoneWith = !replaced || replaced == FileState{} ||
                    stateIn(folder, name, AT_SYMLINK_NOFOLLOW) == replaced;
  if (!isDoneWith) {
    // The file that it was to replace is still in its place, so the draft had not got there.
    forEachFile([&](const char* other) {
      isDoneWith = stateIn(folder, other, AT_SYMLINK_NOFOLLOW) == replaced;
      return !isDoneWith;
    });
  }
  if (isDoneWith) {
    ::unlinkat(folder, name.c_str(), 0);
  } else {
    keepVersion(folder, name);
  }
}

}  // namespace vlout::outlook::vcard
