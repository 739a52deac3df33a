#include "outlook/vcard/card_file.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include "outlook/contact_store.h"
#include "outlook/vcard/card_text.h"
#include "text/ascii.h"

namespace vlout::outlook::vcard {
namespace {

// Hidden, and not a vCard by its name, so that no other program takes it for one. The folder is
// locked while it is open, so one name is enough.
constexpr const char* kTemporary = ".vloutsync.tmp";

class Descriptor {
 public:
  explicit Descriptor(int value) : value_(value) {}
  ~Descriptor() {
    if (value_ >= 0) ::close(value_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  [[nodiscard]] int get() const { return value_; }

 private:
  int value_;
};

FileState stateOf(const struct stat& status) {
  return {status.st_ino, status.st_size, status.st_mtim.tv_sec,
          static_cast<std::int32_t>(status.st_mtim.tv_nsec)};
}

bool isCardFile(std::string_view name) {
  constexpr std::string_view kEnding = ".vcf";
  return name.size() > kEnding.size() && name.front() != '.' &&
         text::equalsIgnoringAsciiCase(name.substr(name.size() - kEnding.size()), kEnding);
}

bool writeAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(descriptor, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

bool isNamed(std::string_view line, std::string_view name) {
  return text::equalsIgnoringAsciiCase(lineName(line), name);
}

// Looks at one line of a card for what `CardSpan` tells of it.
void lookAt(std::string_view line, CardSpan& card) {
  if (isNamed(line, "X-VLID")) {
    if (!card.vlid) card.vlid = plainValue(line);
  } else if (isNamed(line, "KIND") || isNamed(line, "X-ADDRESSBOOKSERVER-KIND")) {
    card.isGroup = text::equalsIgnoringAsciiCase(plainValue(line), "group");
  }
}

}  // namespace

CardFileText findCards(std::string_view fileText) {
  CardFileText result;
  LineReader reader(fileText);
  CardSpan card;
  int depth = 0;
  bool afterAgent = false;
  while (!reader.atEnd()) {
    std::size_t start = reader.position();
    std::string_view line = reader.next();
    if (start == 0 &&
        line.starts_with("\xEF\xBB\xBF")) {  // a byte-order mark before the first card
      line.remove_prefix(3);
      start = 3;
    }
    if (isFrameLine(line, "BEGIN")) {
      // Only an agent's card may stand inside another; any other beginning means that the card
      // before it has no end.
      if (depth > 0 && !afterAgent) {
        result.cutOff = true;
        depth = 0;
      }
      if (depth++ == 0) card = CardSpan{.start = start};
    } else if (depth > 0 && isFrameLine(line, "END")) {
      if (--depth == 0) {
        card.size = reader.position() - card.start;
        result.cards.push_back(std::exchange(card, {}));
      }
    } else if (depth == 1) {
      lookAt(line, card);
    }
    afterAgent = isNamed(line, "AGENT");
  }
  result.cutOff = result.cutOff || depth > 0;
  return result;
}

Folder::Folder(const std::string& path) : path_(path) {
  descriptor_ = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
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

std::vector<std::string> Folder::cardFiles() const {
  ::unlinkat(descriptor_, kTemporary, 0);
  struct CloseDirectory {
    void operator()(DIR* directory) const { ::closedir(directory); }
  };
  const int copy = ::openat(descriptor_, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  const std::unique_ptr<DIR, CloseDirectory> directory(copy < 0 ? nullptr : ::fdopendir(copy));
  if (!directory) fail("");
  std::vector<std::string> names;
  while (const dirent* const entry = ::readdir(directory.get())) {
    if (isCardFile(entry->d_name)) names.emplace_back(entry->d_name);
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::optional<FileState> Folder::read(const std::string& name, std::string& text) const {
  // Without O_NONBLOCK a named pipe in the folder would hold the run up for ever.
  const Descriptor file(::openat(descriptor_, name.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  struct stat status {};
  if (file.get() < 0 || ::fstat(file.get(), &status) != 0) fail(name);
  if (!S_ISREG(status.st_mode)) return std::nullopt;
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

int Folder::writeTemporary(const std::string& name, std::string_view text, unsigned mode) const {
  int file =
      ::openat(descriptor_, kTemporary, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
  if (file < 0 && errno == EEXIST) {
    ::unlinkat(descriptor_, kTemporary, 0);
    file = ::openat(descriptor_, kTemporary, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                    0600);
  }
  if (file < 0) fail(name);
  if (!writeAll(file, text) || (mode != 0600 && ::fchmod(file, mode) != 0)) {
    const int error = errno;
    ::close(file);
    ::unlinkat(descriptor_, kTemporary, 0);
    errno = error;
    fail(name);
  }
  return file;
}

FileState Folder::replace(const std::string& name, std::string_view text,
                          const std::optional<FileState>& before, bool keepSecond) const {
  struct stat status {};
  unsigned mode = 0600;
  if (before) {
    if (::fstatat(descriptor_, name.c_str(), &status, 0) != 0) fail(name);
    if (stateOf(status) != *before) {
      throw ContactStoreError(path_ + "/" + name + ": 그 사이에 다른 프로그램이 바꾸었습니다");
    }
    mode = status.st_mode & 07777;
  }
  const Descriptor file(writeTemporary(name, text, mode));
  if (before) {
    // Only root can give a file away; for anyone else the owner is right already.
    if (::fchown(file.get(), status.st_uid, status.st_gid) != 0) errno = 0;
  }
  if (keepSecond) {
    timespec time = status.st_mtim;
    time.tv_nsec = (time.tv_nsec + 1) % 1'000'000'000;
    const timespec times[2] = {{0, UTIME_NOW}, time};
    if (::futimens(file.get(), times) != 0) errno = 0;  // then the file is merely newer
  }
  if (::fstat(file.get(), &status) != 0 ||
      ::renameat(descriptor_, kTemporary, descriptor_, name.c_str()) != 0) {
    const int error = errno;
    ::unlinkat(descriptor_, kTemporary, 0);
    errno = error;
    fail(name);
  }
  return stateOf(status);
}

void Folder::flush() const {
  ::syncfs(descriptor_);
}

}  // namespace vlout::outlook::vcard
