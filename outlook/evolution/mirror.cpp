#include "outlook/evolution/mirror.h"

#include <cerrno>
#include <fcntl.h>
#include <fstream>
#include <sys/stat.h>
#include <system_error>

#include "outlook/evolution/uid_word.h"
#include "outlook/vcard/folder.h"
#include "posix/file_descriptor.h"
#include "text/file_path.h"

namespace vlout::outlook::evolution {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kEnding = ".cards";
constexpr std::string_view kDraft = ".draft";

[[noreturn]] void fail(const fs::path& file) {
  throw std::system_error(errno, std::generic_category(), file.string());
}

}  // namespace

fs::path mirrorOf(const fs::path& componentFolder, const std::string& bookUid) {
  return componentFolder / "books" / (asWord(bookUid) + std::string(kEnding));
}

std::string bookOfMirror(const fs::path& componentFolder, const fs::path& folder) {
  const std::string name = text::pathText(folder.filename());
  const bool isOne =
      name.size() > kEnding.size() && name.ends_with(kEnding) &&
      fs::weakly_canonical(folder.parent_path()) == fs::weakly_canonical(componentFolder / "books");
  return isOne ? fromWord(name.substr(0, name.size() - kEnding.size())) : "";
}

Mirror::Mirror(fs::path folder) : folder_(std::move(folder)) {
  fs::create_directories(folder_);
  fs::permissions(folder_.parent_path(), fs::perms::owner_all);
  const posix::FileDescriptor directory(posix::openKeepingAccessTime(folder_.c_str(), O_DIRECTORY));
  const bool isRead = vcard::forEachName(directory.get(), [&](const char* found) {
    const std::string_view name = found;
    if (name.ends_with(kDraft)) drafts_.push_back(folder_ / name);
    struct stat status {};
    if (vcard::isCardFile(name) && ::fstatat(directory.get(), found, &status, 0) == 0) {
      const vcard::FileState state = vcard::stateOf(status);
      files_.emplace(name, File{{state.seconds, state.nanoseconds}});
    }
    return true;
  });
  if (!isRead) fail(folder_);
}

std::string Mirror::nameOf(const std::string& uid) {
  return asWord(uid) + ".vcf";
}

fs::path Mirror::draftOf(const std::string& uid) const {
  return folder_ / ("." + nameOf(uid) + std::string(kDraft));
}

bool Mirror::has(const std::string& uid, ChangeTime time) {
  const auto found = files_.find(nameOf(uid));
  if (found == files_.end()) return false;
  found->second.isAskedFor = true;
  return found->second.time == time;
}

void Mirror::keep(const std::string& uid, const std::string& text, ChangeTime time) {
  if (has(uid, time)) return;
  struct stat status {};
  const bool isLeft = ::stat(draftOf(uid).c_str(), &status) == 0 &&
                      status.st_mtim.tv_sec == time.seconds &&
                      status.st_mtim.tv_nsec == time.nanoseconds;
  if (!isLeft) draft(uid, text, time);
  place(uid);
}

void Mirror::dropOthers() {
  std::erase_if(files_, [&](const auto& file) {
    return !file.second.isAskedFor && fs::remove(folder_ / text::pathOf(file.first));
  });
  for (const fs::path& draft : drafts_) fs::remove(draft);
  drafts_.clear();
}

vcard::FileState Mirror::draft(const std::string& uid, const std::string& text, ChangeTime time) {
  const fs::path file = draftOf(uid);
  fs::remove(file);
  std::ofstream stream(file, std::ios::binary | std::ios::trunc);
  stream << text;
  stream.close();
  const timespec times[2] = {{0, UTIME_NOW}, {time.seconds, time.nanoseconds}};
  struct stat status {};
  if (!stream || ::chmod(file.c_str(), 0600) != 0 ||
      ::utimensat(AT_FDCWD, file.c_str(), times, 0) != 0 || ::stat(file.c_str(), &status) != 0) {
    fail(file);
  }
  files_[nameOf(uid)] = {time, true};
  return vcard::stateOf(status);
}

void Mirror::place(const std::string& uid) {
  fs::rename(draftOf(uid), folder_ / text::pathOf(nameOf(uid)));
}

}  // namespace vlout::outlook::evolution
