#include "history/restore_point.h"

#include <cerrno>
#include <fcntl.h>
#include <set>
#include <system_error>
#include <unistd.h>

#include "posix/file_descriptor.h"
#include "text/file_path.h"

namespace vlout::history {
namespace {

namespace fs = std::filesystem;

void sync(const fs::path& path) {
  const posix::FileDescriptor file(posix::openKeepingAccessTime(path.c_str()));
  if (file.get() < 0 || ::fsync(file.get()) != 0) {
    throw std::system_error(errno, std::generic_category(), path.string());
  }
}

}  // namespace

void RestorePoint::begin() const {
  fs::create_directory(files());
  fs::permissions(files(), fs::perms::owner_all);
  WrittenLog(log()).sync();
  sync(run_);
}

std::optional<FileState> RestorePoint::keep(const fs::path& contacts,
                                            const std::string& name) const {
  const fs::path file = contacts / text::pathOf(name);
  const fs::path place = kept(name);
  if (::linkat(AT_FDCWD, file.c_str(), AT_FDCWD, place.c_str(), AT_SYMLINK_FOLLOW) == 0) {
    return fileStateAt(place);
  }
  // On a network's disk, a link from another disk may fail before the name is looked up.
  if (errno == EEXIST || fileStateAt(place)) return fileStateAt(file);
  // A copy that a kill has cut short must not pass for the file.
  const fs::path draft = files() / "part";
  if (!linkOrCopy(file, draft)) return std::nullopt;
  fs::rename(draft, place);
  return fileStateAt(place);
}

bool RestorePoint::exists() const {
  return fs::exists(files());
}

bool RestorePoint::isOfOldForm() const {
  return fs::exists(run_ / "point");
}

void RestorePoint::drop() const {
  std::error_code next;
  for (const char* const part : {"kept", "written", "point", "point.new"}) {
    fs::remove_all(run_ / part, next);
  }
}

Written RestorePoint::written(RunState state) const {
  Written written = Written::read(log(), state != RunState::Unfinished);
  std::set<std::string> known;
  for (const FileWrite& file : written.files) known.insert(file.name);
  for (const auto& entry : fs::directory_iterator(files())) {
    const std::string name = text::pathText(entry.path().filename());
    if (known.contains(name) || !outlook::vcard::isCardFile(name)) continue;
    const auto before = fileStateAt(entry.path());
    written.files.push_back({name, before, before});
  }
  return written;
}

fs::path RestorePoint::kept(const std::string& name) const {
  return files() / text::pathOf(name);
}

}  // namespace vlout::history
