#include "history/restore_point.h"

#include <cerrno>
#include <fcntl.h>
#include <fstream>
#include <optional>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include "history/entries.h"
#include "outlook/contact_store.h"
#include "posix/file_descriptor.h"
#include "store/sqlite/backup.h"

namespace vlout::history {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(const fs::path& path) {
  throw std::system_error(errno, std::generic_category(), path.string());
}

// What stands before the number of files at the end of their list.
constexpr std::string_view kListEnd = "= ";

dev_t deviceOf(const fs::path& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 ? status.st_dev : 0;
}

std::uint64_t sizeOf(const fs::path& file) {
  std::error_code none;
  const auto size = fs::file_size(file, none);
  return none ? 0 : size;
}

}  // namespace

std::uint64_t RestorePoint::spaceFor(const fs::path& runsFolder, const fs::path& database,
                                     const fs::path& contacts) {
  constexpr std::uint64_t kMargin = std::uint64_t{1} << 20;
  fs::path wal = fs::weakly_canonical(database);  // beside the file itself
  wal += "-wal";
  std::uint64_t size = sizeOf(database) + sizeOf(wal) + kMargin;
  constexpr std::uint64_t kLink = 512;  // its name in a folder and in a list, amply
  size += kLink * countCardFiles(contacts);
  if (isOnOneDisk(runsFolder, contacts)) return size;
  constexpr std::uint64_t kBlock = 4096;
  for (const auto& [name, state] : cardFilesIn(contacts)) {
    size += static_cast<std::uint64_t>(state.size) + kBlock;
  }
  return size;
}

bool RestorePoint::isOnOneDisk(const fs::path& a, const fs::path& b) {
  return deviceOf(a) == deviceOf(b);
}

void RestorePoint::take(const fs::path& database, const fs::path& contacts) const {
  const fs::path draft = run_ / "point.new";
  fs::remove_all(draft);
  for (const fs::path& folder : {draft, draft / "contacts"}) {
    fs::create_directory(folder);
    fs::permissions(folder, fs::perms::owner_all);
  }
  store::backUpDatabase(database, draft / this->database().filename());
  std::ofstream list(draft / "contacts.list", std::ios::binary);
  std::size_t count = 0;
  for (const auto& [name, state] : cardFilesIn(contacts)) {
    // One that another program has just deleted was not there for the run either.
    if (linkOrCopy(contacts / name, draft / "contacts" / name)) {
      list << entryOf(state, name) << kEntryEnd;
      ++count;
    }
  }
  list << kListEnd << count << kEntryEnd;
  list.close();
  if (!list) fail(draft / "contacts.list");
  // A point that a power cut has left half written must not pass for a whole one.
  for (const char* const part : {"contacts.list", "contacts", ""}) {
    const posix::FileDescriptor written(posix::openUnnoticed((draft / part).c_str()));
    if (written.get() < 0 || ::fsync(written.get()) != 0) fail(draft / part);
  }
  fs::rename(draft, run_ / "point");
}

bool RestorePoint::exists() const {
  return fs::exists(run_ / "point");
}

void RestorePoint::drop() const {
  std::error_code next;
  for (const char* const part : {"point", "point.new", "written"}) {
    fs::remove_all(run_ / part, next);
  }
}

FileStates RestorePoint::contacts() const {
  FileStates states;
  std::optional<std::size_t> count;
  forEachEntry(run_ / "point" / "contacts.list", [&](std::istream& entry) {
    FileState state;
    std::string name;
    if (entry.peek() == kListEnd.front()) {
      entry.ignore(kListEnd.size());
      entry >> count.emplace();
    } else if (readEntry(entry, state, name)) {
      states.insert_or_assign(name, state);
    }
  });
  if (count != states.size()) {
    throw outlook::ContactStoreError((run_ / "point").string() + ": 복원 지점이 손상되었습니다");
  }
  return states;
}

}  // namespace vlout::history
