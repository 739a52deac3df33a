#include "history/restore_point.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include "outlook/contact_store.h"
#include "store/sql.h"
#include "store/sqlite/backup.h"
#include "text/file_descriptor.h"

namespace vlout::history {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(const fs::path& path) {
  throw std::system_error(errno, std::generic_category(), path.string());
}

// Entries of both files end with a character that no file name holds.
constexpr char kEnd = '\0';
// What stands before the number of files at the end of their list.
constexpr std::string_view kListEnd = "= ";

std::string entryOf(const FileState& state, const std::string& name) {
  return std::to_string(state.size) + ' ' + std::to_string(state.seconds) + ' ' +
         std::to_string(state.nanoseconds) + ' ' + name;
}

bool readEntry(std::istream& entry, FileState& state, std::string& name) {
  entry >> state.size >> state.seconds >> state.nanoseconds;
  entry.ignore(1);
  return static_cast<bool>(std::getline(entry, name, kEnd));
}

// Calls `use` with each whole entry of a file; the last one may have been cut off.
template <typename Use>
void forEachEntry(const fs::path& path, Use use) {
  std::ifstream file(path, std::ios::binary);
  for (std::string entry; std::getline(file, entry, kEnd) && !file.eof();) {
    std::istringstream stream(entry);
    use(stream);
  }
}

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

FileStates cardFilesIn(const fs::path& folder) {
  FileStates states;
  const text::FileDescriptor directory(text::openUnnoticed(folder.c_str(), O_DIRECTORY));
  const auto files = outlook::vcard::listCardFiles(directory.get());
  if (!files) throw outlook::ContactStoreError(folder.string() + ": " + std::strerror(errno));
  for (const outlook::vcard::CardFile& file : *files) {
    states.emplace(file.name, file.sight.state);
    for (const std::string& other : file.otherNames) states.emplace(other, file.sight.state);
  }
  return states;
}

std::size_t countCardFiles(const fs::path& folder) {
  std::size_t count = 0;
  const text::FileDescriptor directory(text::openUnnoticed(folder.c_str(), O_DIRECTORY));
  if (!outlook::vcard::forEachCardFile(directory.get(), [&](const char*) { ++count; })) {
    throw outlook::ContactStoreError(folder.string() + ": " + std::strerror(errno));
  }
  return count;
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
      list << entryOf(state, name) << kEnd;
      ++count;
    }
  }
  list << kListEnd << count << kEnd;
  list.close();
  if (!list) fail(draft / "contacts.list");
  // A point that a power cut has left half written must not pass for a whole one.
  for (const char* const part : {"contacts.list", "contacts", ""}) {
    const text::FileDescriptor written(text::openUnnoticed((draft / part).c_str()));
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

Written Written::read(const fs::path& log) {
  Written written;
  forEachEntry(log, [&](std::istream& entry) {
    std::string kind;
    std::string name;
    FileState state;
    RowKey key{std::string(store::kCardTable)};
    entry >> kind;
    entry.ignore(1);
    if (kind == "file") {
      if (readEntry(entry, state, name)) written.files[name].emplace_back(state);
    } else if (kind == "sent") {
      entry >> key.row;
      if (!readEntry(entry, state, name)) return;
      written.files[name].emplace_back(state);
      const auto given = written.rows.find(key);
      const auto row = given == written.rows.end() ? std::nullopt : given->second.back();
      written.sent.insert_or_assign(key.row, Sent{name, row});
    } else if (kind == "nofile") {
      if (std::getline(entry, name, kEnd)) written.files[name].emplace_back();
    } else if (kind == "row" || kind == "norow") {
      std::uint64_t hash = 0;
      entry >> key.table >> key.row >> hash;
      if (!entry) return;
      written.rows[key].push_back(kind == "row" ? std::optional(hash) : std::nullopt);
    }
  });
  return written;
}

bool Written::left(const std::string& file, const std::optional<FileState>& state) const {
  const auto found = files.find(file);
  return found != files.end() &&
         std::any_of(found->second.begin(), found->second.end(),
                     [&](const auto& given) { return isSame(given, state); });
}

bool Written::left(const RowKey& row, const std::optional<std::uint64_t>& hash) const {
  const auto found = rows.find(row);
  return found != rows.end() &&
         std::find(found->second.begin(), found->second.end(), hash) != found->second.end();
}

FileStates Written::applyTo(FileStates found) const {
  for (const auto& [name, given] : files) {
    found.erase(name);
    if (given.back()) found.emplace(name, *given.back());
  }
  return found;
}

std::string Written::counts() const {
  return "명함=" + std::to_string(rows.size()) + "/연락처=" + std::to_string(files.size());
}

WrittenLog::WrittenLog(const fs::path& log)
    : path_(log),
      descriptor_(::open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600)) {
  if (descriptor_ < 0) fail(log);
}

WrittenLog::~WrittenLog() {
  ::close(descriptor_);
}

void WrittenLog::file(const std::string& name, const std::optional<FileState>& state) {
  append(state ? "file " + entryOf(*state, name) : "nofile " + name);
}

void WrittenLog::sent(const std::string& name, const FileState& state, std::int64_t card) {
  append("sent " + std::to_string(card) + ' ' + entryOf(state, name));
}

void WrittenLog::row(const RowKey& key, const std::optional<std::uint64_t>& hash) {
  append((hash ? "row " : "norow ") + key.table + ' ' + std::to_string(key.row) + ' ' +
         std::to_string(hash.value_or(0)));
}

// Half an entry would spoil the next one.
void WrittenLog::append(const std::string& entry) const {
  const std::size_t size = entry.size() + 1;  // with its end
  ssize_t written = 0;
  do {
    written = ::write(descriptor_, entry.c_str(), size);
  } while (written < 0 && errno == EINTR);
  if (written == static_cast<ssize_t>(size)) return;
  const int error = written < 0 ? errno : ENOSPC;
  const off_t end = ::lseek(descriptor_, 0, SEEK_END);
  const bool isMended = written <= 0 || ::ftruncate(descriptor_, end - written) == 0;
  errno = isMended ? error : EIO;
  fail(path_);
}

}  // namespace vlout::history
