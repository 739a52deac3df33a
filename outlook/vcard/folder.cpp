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
#include <unordered_map>
#include <utility>

#include "outlook/contact_store.h"
#include "posix/file_descriptor.h"
#include "text/ascii.h"
#include "text/language.h"

namespace vlout::outlook::vcard {
namespace {

// No address book comes near this size, but a sparse file of terabytes must not be read into
// memory.
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

bool forEachName(int folder, const std::function<bool(const char* name)>& use) {
  struct CloseDirectory {
    void operator()(DIR* directory) const { ::closedir(directory); }
  };
  const int copy = posix::openKeepingAccessTime(".", O_DIRECTORY, folder);
  const std::unique_ptr<DIR, CloseDirectory> directory(copy < 0 ? nullptr : ::fdopendir(copy));
  if (!directory) return false;
  const auto next = [&] {
    errno = 0;  // alone tells an error from the end
    return ::readdir(directory.get());
  };
  while (const dirent* const entry = next()) {
    if (!use(entry->d_name)) return true;
  }
  return errno == 0;
}

bool isCardFile(std::string_view name) {
  constexpr std::string_view kEnding = ".vcf";
  return name.size() > kEnding.size() && name.front() != '.' &&
         text::equalsIgnoringAsciiCase(name.substr(name.size() - kEnding.size()), kEnding);
}

bool forEachCardFile(int folder, const std::function<void(const char* name)>& use) {
  return forEachName(folder, [&](const char* name) {
    if (isCardFile(name)) use(name);
    return true;
  });
}

std::optional<bool> hasCardFile(int folder) {
  bool found = false;
  const bool isRead = forEachName(folder, [&](const char* name) {
    found = isCardFile(name);
    return !found;
  });
  return isRead ? std::optional(found) : std::nullopt;
}

std::optional<std::vector<CardFile>> listCardFiles(int folder, std::vector<std::string>* own) {
  std::vector<CardFile> files;
  std::vector<std::string> names;
  const auto sortOut = [&](const char* name) {
    if (isCardFile(name)) names.emplace_back(name);
    if (own != nullptr && (isDraft(name) || isKeptVersion(name))) own->emplace_back(name);
    return true;
  };
  if (!forEachName(folder, sortOut)) return std::nullopt;
  std::sort(names.begin(), names.end());
  std::unordered_map<ino_t, std::size_t> known;
  const auto find = [&](const struct stat& status) -> CardFile* {
    const auto found = known.find(status.st_ino);
    const bool isFound = found != known.end() && files[found->second].sight.device == status.st_dev;
    return isFound ? &files[found->second] : nullptr;
  };
  const auto add = [&](const std::string& name, const struct stat& status) {
    files.push_back({name, sightOf(status)});
  };
  std::vector<std::string> links;
  for (const std::string& name : names) {
    struct stat status {};
    if (::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) continue;  // gone
    if (S_ISLNK(status.st_mode)) links.push_back(name);
    if (!S_ISREG(status.st_mode)) continue;
    CardFile* const first = status.st_nlink > 1 ? find(status) : nullptr;
    if (first != nullptr) {
      first->otherNames.push_back(name);
    } else {
      if (status.st_nlink > 1) known.emplace(status.st_ino, files.size());
      add(name, status);
    }
  }
  if (links.empty()) return files;
  // A file goes by its own name, even when that of a link comes first.
  for (std::size_t i = 0; i < files.size(); ++i) known.emplace(files[i].sight.state.inode, i);
  for (const std::string& name : links) {
    struct stat status {};
    const bool isThere = ::fstatat(folder, name.c_str(), &status, 0) == 0;
    if (isThere ? !S_ISREG(status.st_mode) || find(status) != nullptr : errno == ENOENT) continue;
    if (isThere) known.emplace(status.st_ino, files.size());
    add(name, status);  // or its reading tells what is wrong with it
  }
  std::sort(files.begin(), files.end(),
            [](const CardFile& a, const CardFile& b) { return a.name < b.name; });
  return files;
}

std::int32_t nextInSecond(std::int64_t nanoseconds) {
  return static_cast<std::int32_t>((nanoseconds + 1) % 1'000'000'000);
}

Folder::Folder(const std::string& path) : path_(path) {
  descriptor_ = posix::openKeepingAccessTime(path.c_str(), O_DIRECTORY);
  if (descriptor_ < 0) fail("");
  if (::flock(descriptor_, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
    ::close(descriptor_);
    throw ContactStoreError(text::say("%1: 다른 실행이 이 폴더를 사용하고 있습니다",
                                      "%1: another run is using this folder", {path_}));
  }
  if (::faccessat(descriptor_, ".", W_OK | X_OK, AT_EACCESS) != 0) {
    const int error = errno;
    ::close(descriptor_);
    errno = error;
    fail("");
  }
  journal_.emplace(descriptor_);
}

Folder::~Folder() {
  dropListing();  // it reads through the descriptor
  ::close(descriptor_);
}

void Folder::fail(const std::string& name) const {
  const std::string reason = posix::reasonOf(errno);
  throw ContactStoreError((name.empty() ? path_ : path_ + "/" + name) + ": " + reason);
}

void Folder::failAsChanged(const std::string& name, const std::string& kept) const {
  const std::string where = kept.empty() ? ""
                                         : text::say(" (먼저 쓴 내용은 %1에 있습니다)",
                                                     " (what was written first is in %1)", {kept});
  throw ContactStoreError(text::say("%1/%2: 그 사이에 다른 프로그램이 바꾸었습니다",
                                    "%1/%2: another program has changed it in the meantime",
                                    {path_, name}) +
                          where);
}

void Folder::tidy() {
  own_.clear();
  forEachName(descriptor_, [&](const char* name) {
    if (isDraft(name) || isKeptVersion(name)) own_.emplace_back(name);
    return true;
  });
  removeDrafts();
}

void Folder::removeDrafts() const {
  for (const std::string& name : own_) {
    if (!isDraft(name)) continue;
    removeDraft(descriptor_, name, [&](const auto& use) { forEachName(descriptor_, use); });
  }
}

std::vector<std::string> Folder::keptVersions() const {
  std::vector<std::string> names;
  std::copy_if(own_.begin(), own_.end(), std::back_inserter(names), isKeptVersion);
  std::sort(names.begin(), names.end());
  return names;
}

std::vector<CardFile> Folder::cardFiles() {
  std::vector<CardFile> files = findCardFiles();
  if (!std::any_of(own_.begin(), own_.end(), isDraft)) return files;
  removeDrafts();
  return findCardFiles();
}

Folder::Listing Folder::list() const {
  Listing listing;
  listing.files = listCardFiles(descriptor_, &listing.own);
  listing.error = errno;
  return listing;
}

void Folder::dropListing() {
  listing_ = {};
}

void Folder::beginListing() {
  listing_ = std::async(std::launch::async | std::launch::deferred, [this] { return list(); });
}

std::vector<CardFile> Folder::findCardFiles() {
  Listing listing = listing_.valid() ? listing_.get() : list();
  if (!listing.files) {
    errno = listing.error;
    fail("");
  }
  own_ = std::move(listing.own);
  otherNames_.clear();
  for (const CardFile& file : *listing.files) {
    if (!file.otherNames.empty()) otherNames_.emplace(file.name, file.otherNames);
  }
  return std::move(*listing.files);
}

std::optional<FileState> Folder::read(const std::string& name, std::string& text) {
  return readRegular(name, O_RDONLY, text);
}

std::optional<FileState> Folder::readRegular(const std::string& name, int flags,
                                             std::string& text) const {
  const posix::FileDescriptor file(posix::openRegular(name.c_str(), flags, descriptor_));
  struct stat status {};
  // Deleted meanwhile, or no file at all.
  const bool isRefusedLink = errno == ELOOP && (flags & O_NOFOLLOW) != 0;
  const bool isNoFile = errno == ENOENT || errno == posix::kNotRegular || isRefusedLink;
  if (file.get() < 0 && isNoFile) return std::nullopt;
  if (file.get() < 0 || ::fstat(file.get(), &status) != 0) fail(name);
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
  // A rename would succeed even for a write-protected file, against its owner's wish.
  if (::fstatat(descriptor_, name.c_str(), &status, 0) != 0 ||
      ::faccessat(descriptor_, name.c_str(), W_OK, AT_EACCESS) != 0) {
    fail(name);
  }
  if (stateOf(status) != before) failAsChanged(name);
  return status;
}

FileState Folder::replace(const std::string& name, std::string_view text,
                          const std::optional<FileState>& before, bool keepSecond,
                          const std::string& row) {
  static_cast<void>(row);
  return replaceFile(name, text, before, keepSecond,
                     [](const std::string&, const std::optional<FileState>&) {});
}

FileState Folder::replaceFile(const std::string& name, std::string_view text,
                              const std::optional<FileState>& before, bool keepSecond,
                              const Completed& completed) const {
  // A link keeps its target: the file behind it is replaced, in its own folder.
  const Target target = before ? targetOf(name) : Target{"", name};
  if (!target.folder.empty()) {
    return Folder(target.folder)
        .replaceFile(target.name, text, before, keepSecond,
                     [&](const std::string&, const auto& state) { completed(name, state); });
  }
  struct stat status {};
  unsigned mode = 0600;
  if (before) {
    status = requireReplaceable(target.name, *before);
    mode = status.st_mode & 07777;
  }
  Draft draft(descriptor_, before);
  const posix::FileDescriptor file(draft.create(mode));
  if (file.get() < 0 || !writeAll(file.get(), text)) fail(name);
  if (before) keepOwner(file.get(), status);
  if (keepSecond) keepSecondOf(file.get(), status);
  // A file that takes another one's place must not be empty after a power cut. File systems ensure
  // that when one is renamed over the other, but not when they are exchanged.
  if (before && ::sync_file_range(file.get(), 0, 0, SYNC_FILE_RANGE_WRITE) != 0) errno = 0;
  if (::fstat(file.get(), &status) != 0) fail(name);
  const FileState state = stateOf(status);
  completed(name, state);
  place(draft, target.name);
  if (before) renewLinks(target.name, *before, state, completed);
  return state;
}

void Folder::place(Draft& draft, const std::string& name) const {
  const Draft::Outcome outcome = draft.place(name);
  if (outcome == Draft::Outcome::Failed) fail(name);
  if (outcome == Draft::Outcome::Changed) failAsChanged(name, draft.keptAs());
}

// The other names of a replaced file still lead to the old one. A name that cannot be renewed
// becomes a contact of its own with the same key, which the next run reports.
void Folder::renewLinks(const std::string& name, const FileState& before, const FileState& now,
                        const Completed& completed) const {
  for (const std::string& other : otherNamesOf(name)) {
    Draft draft(descriptor_, before);
    if (::linkat(descriptor_, name.c_str(), descriptor_, draft.name().c_str(), 0) != 0) continue;
    draft.made();
    completed(other, now);
    static_cast<void>(draft.place(other));
  }
}

std::vector<std::string> Folder::otherNamesOf(const std::string& name) const {
  const auto others = otherNames_.find(name);
  return others == otherNames_.end() ? std::vector<std::string>() : others->second;
}

void Folder::gather(const SavedCard& save, const FileState& before) {
  const Target target = targetOf(save.file);
  static_cast<void>(target.folder.empty()
                        ? requireReplaceable(target.name, before)
                        : Folder(target.folder).requireReplaceable(target.name, before));
  if (!journal_->append(save)) fail(CardJournal::names().front());
}

std::optional<JournalFiles> Folder::gathered() {
  std::string all;
  bool isThere = false;
  for (const std::string& name : CardJournal::names()) {
    std::string text;
    if (!readRegular(name, O_NOFOLLOW, text)) continue;
    all += text;
    isThere = true;
  }
  return isThere ? std::optional(CardJournal::parse(all)) : std::nullopt;
}

void Folder::gatheredWritten(const std::string& name, const std::vector<std::size_t>& lost) {
  journal_->appendWritten(name, lost);
}

FileState Folder::rewrite(const std::string& name, std::string_view text, const FileState& before) {
  return Folder::replace(name, text, before, true, "");
}

void Folder::dropGathered() {
  journal_->remove();
}

void Folder::replaceBy(const std::string& name, const std::optional<FileState>& before,
                       const std::function<void(const std::filesystem::path&)>& make,
                       const Completed& completed) const {
  const Target target = targetOf(name);
  if (!target.folder.empty()) {
    Folder(target.folder)
        .replaceBy(target.name, before, make,
                   [&](const std::string&, const auto& state) { completed(name, state); });
    return;
  }
  Draft draft(descriptor_, before);
  make(std::filesystem::path(path_) / draft.name());
  draft.made();
  struct stat status {};
  if (::fstatat(descriptor_, draft.name().c_str(), &status, 0) != 0) fail(name);
  completed(name, stateOf(status));
  place(draft, target.name);
}

void Folder::remove(const std::string& name, const FileState& before,
                    const Completed& completed) const {
  completed(name, std::nullopt);
  Draft draft(descriptor_, before);
  const Draft::Outcome outcome = draft.takeAway(name);
  if (outcome == Draft::Outcome::Failed) fail(name);
  if (outcome == Draft::Outcome::Changed) failAsChanged(name, draft.keptAs());
}

std::optional<FileSight> Folder::look(const std::string& name) const {
  struct stat status {};
  if (::fstatat(descriptor_, name.c_str(), &status, 0) != 0) return std::nullopt;
  return sightOf(status);
}

FolderIdentity Folder::identity() const {
  struct stat status {};
  if (::fstat(descriptor_, &status) != 0) fail("");
  return {status.st_dev, status.st_ino};
}

void Folder::flush() {
  ::syncfs(descriptor_);
}

}  // namespace vlout::outlook::vcard
