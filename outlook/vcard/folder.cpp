#include "outlook/vcard/folder.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <sys/file.h>
#include <unistd.h>

#include "outlook/contact_store.h"
#include "text/ascii.h"
#include "text/file_descriptor.h"

namespace vlout::outlook::vcard {
namespace {

// No address book comes near it; a sparse file of terabytes must not be read into memory.
constexpr off_t kLargestFile = off_t{1} << 30;

bool writeAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(descriptor, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

// The temporary file of one save, which is gone again unless it was renamed.
class Temporary {
 public:
  Temporary(int folder, unsigned mode) : folder_(folder) {
    constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    file_ = ::openat(folder, kTemporaryName, kFlags, 0600);
    if (file_ < 0 && errno == EEXIST && ::unlinkat(folder, kTemporaryName, 0) == 0) {
      file_ = ::openat(folder, kTemporaryName, kFlags, 0600);
    }
    if (file_ >= 0 && mode != 0600 && ::fchmod(file_, mode) != 0) errno = 0;  // stays private
  }
  ~Temporary() {
    if (file_ < 0) return;
    const int error = errno;  // of what failed before
    ::close(file_);
    if (!renamed_) ::unlinkat(folder_, kTemporaryName, 0);
    errno = error;
  }
  Temporary(const Temporary&) = delete;
  Temporary& operator=(const Temporary&) = delete;

  [[nodiscard]] int file() const { return file_; }
  bool rename(const std::string& name) {
    renamed_ = ::renameat(folder_, kTemporaryName, folder_, name.c_str()) == 0;
    return renamed_;
  }

 private:
  int folder_;
  int file_ = -1;
  bool renamed_ = false;
};

bool isCardFile(std::string_view name) {
  constexpr std::string_view kEnding = ".vcf";
  return name.size() > kEnding.size() && name.front() != '.' &&
         text::equalsIgnoringAsciiCase(name.substr(name.size() - kEnding.size()), kEnding);
}

void keepOwner(int file, const struct stat& status) {
  // Only root can give a file away; for anyone else the owner is right already.
  if (::fchown(file, status.st_uid, status.st_gid) != 0) errno = 0;
}

void keepSecondOf(int file, const struct stat& status) {
  const timespec time{status.st_mtim.tv_sec, nextInSecond(status.st_mtim.tv_nsec)};
  const timespec times[2] = {{0, UTIME_NOW}, time};
  if (::futimens(file, times) != 0) errno = 0;  // then the file is merely newer
}

}  // namespace

FileState stateOf(const struct stat& status) {
  return {status.st_ino, status.st_size, status.st_mtim.tv_sec,
          static_cast<std::int32_t>(status.st_mtim.tv_nsec)};
}

bool forEachCardFile(int folder, const std::function<void(const char* name)>& use) {
  struct CloseDirectory {
    void operator()(DIR* directory) const { ::closedir(directory); }
  };
  const int copy = text::openUnnoticed(".", O_DIRECTORY, folder);
  const std::unique_ptr<DIR, CloseDirectory> directory(copy < 0 ? nullptr : ::fdopendir(copy));
  if (!directory) return false;
  while (const dirent* const entry = ::readdir(directory.get())) {
    if (isCardFile(entry->d_name)) use(entry->d_name);
  }
  return true;
}

std::int32_t nextInSecond(std::int64_t nanoseconds) {
  return static_cast<std::int32_t>((nanoseconds + 1) % 1'000'000'000);
}

Folder::Folder(const std::string& path) : path_(path) {
  descriptor_ = text::openUnnoticed(path.c_str(), O_DIRECTORY);
  if (descriptor_ < 0) fail("");
  if (::flock(descriptor_, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
    ::close(descriptor_);
    throw ContactStoreError(path_ + ": 다른 실행이 이 폴더를 사용하고 있습니다");
  }
  if (::faccessat(descriptor_, ".", W_OK | X_OK, AT_EACCESS) != 0) {
    const int error = errno;
    ::close(descriptor_);
    errno = error;
    fail("");
  }
}

Folder::~Folder() {
  ::close(descriptor_);
}

void Folder::fail(const std::string& name) const {
  const std::string reason = std::strerror(errno);
  throw ContactStoreError((name.empty() ? path_ : path_ + "/" + name) + ": " + reason);
}

void Folder::failAsChanged(const std::string& name) const {
  throw ContactStoreError(path_ + "/" + name + ": 그 사이에 다른 프로그램이 바꾸었습니다");
}

void Folder::tidy() const {
  ::unlinkat(descriptor_, kTemporaryName, 0);
}

std::vector<std::string> Folder::cardFiles() {
  tidy();
  return listCardFiles();
}

std::vector<std::string> Folder::listCardFiles() const {
  std::vector<std::string> names;
  if (!forEachCardFile(descriptor_, [&](const char* name) { names.emplace_back(name); })) fail("");
  std::sort(names.begin(), names.end());
  return names;
}

std::optional<FileState> Folder::read(const std::string& name, std::string& text) {
  // Without O_NONBLOCK a named pipe in the folder would hold the run up for ever.
  const text::FileDescriptor file(text::openUnnoticed(name.c_str(), O_NONBLOCK, descriptor_));
  struct stat status {};
  if (file.get() < 0 && errno == ENOENT) return std::nullopt;  // deleted meanwhile
  if (file.get() < 0 || ::fstat(file.get(), &status) != 0) fail(name);
  if (!S_ISREG(status.st_mode)) return std::nullopt;
  if (status.st_size > kLargestFile) {
    errno = EFBIG;
    fail(name);
  }
  text.resize(static_cast<std::size_t>(status.st_size));
  std::size_t filled = 0;
  while (filled < text.size()) {
    const ssize_t count = ::read(file.get(), text.data() + filled, text.size() - filled);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) fail(name);
    if (count == 0) break;
    filled += static_cast<std::size_t>(count);
  }
  text.resize(filled);
  return stateOf(status);
}

Folder::Target Folder::targetOf(const std::string& name) const {
  struct stat status {};
  const bool isLink = ::fstatat(descriptor_, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
                      S_ISLNK(status.st_mode);
  if (!isLink) return {"", name};
  std::error_code error;
  const auto target = std::filesystem::canonical(std::filesystem::path(path_) / name, error);
  if (error) throw ContactStoreError(path_ + "/" + name + ": " + error.message());
  const std::string file = target.filename().string();
  if (target.parent_path() == std::filesystem::canonical(path_, error)) return {"", file};
  return {target.parent_path().string(), file};
}

struct stat Folder::requireReplaceable(const std::string& name, const FileState& before) const {
  struct stat status {};
  // A rename would go through for a file that is protected from writing, against its owner's wish.
  if (::fstatat(descriptor_, name.c_str(), &status, 0) != 0 ||
      ::faccessat(descriptor_, name.c_str(), W_OK, AT_EACCESS) != 0) {
    fail(name);
  }
  if (stateOf(status) != before) failAsChanged(name);
  return status;
}

FileState Folder::replace(const std::string& name, std::string_view text,
                          const std::optional<FileState>& before, bool keepSecond) {
  return replaceFile(name, text, before, keepSecond, [](const FileState&) {});
}

FileState Folder::replaceFile(const std::string& name, std::string_view text,
                              const std::optional<FileState>& before, bool keepSecond,
                              const std::function<void(const FileState&)>& completed) const {
  struct stat status {};
  unsigned mode = 0600;
  std::string file = name;
  if (before) {
    // A link keeps pointing where it does: the file behind it is replaced, in its own folder.
    const Target target = targetOf(name);
    if (!target.folder.empty()) {
      return Folder(target.folder).replaceFile(target.name, text, before, keepSecond, completed);
    }
    file = target.name;
    status = requireReplaceable(file, *before);
    mode = status.st_mode & 07777;
  }
  Temporary temporary(descriptor_, mode);
  if (temporary.file() < 0 || !writeAll(temporary.file(), text)) fail(file);
  if (before) keepOwner(temporary.file(), status);
  if (keepSecond) keepSecondOf(temporary.file(), status);
  if (::fstat(temporary.file(), &status) != 0) fail(file);
  completed(stateOf(status));
  if (!temporary.rename(file)) fail(file);
  return stateOf(status);
}

void Folder::flush() {
  ::syncfs(descriptor_);
}

}  // namespace vlout::outlook::vcard
