#include "store/sqlite/preview_connection.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <optional>
#include <string_view>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <thread>
#include <tuple>
#include <unistd.h>

#include "posix/file_descriptor.h"
#include "store/sql.h"
#include "store/sqlite/backup.h"
#include "store/sqlite/database_files.h"
#include "text/ascii.h"

namespace vlout::store::sqlite {
namespace {

// The database, and the files beside it that may hold its newest content.
constexpr std::array<const char*, 3> kSuffixes{"", "-wal", "-journal"};

[[noreturn]] void failWithSystemText() {
  throw DatabaseError(std::strerror(errno));
}

void copyFrom(int source, const std::string& to) {
  const posix::FileDescriptor target(
      ::open(to.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
  if (source < 0 || target.get() < 0) failWithSystemText();
  constexpr std::size_t kPiece = std::size_t{1} << 24;
  off_t from = 0;
  ssize_t copied = 0;
  do {
    copied = ::sendfile(target.get(), source, &from, kPiece);
    if (copied < 0) failWithSystemText();
  } while (copied > 0);
}

// Copies a file beside the database without changing its access time. False if there is no file.
bool copyFile(const std::string& from, const std::string& to) {
  const posix::FileDescriptor source(posix::openKeepingAccessTime(from.c_str(), O_NONBLOCK));
  if (source.get() < 0 && errno == ENOENT) return false;
  copyFrom(source.get(), to);
  return true;
}

using State = std::tuple<ino_t, off_t, time_t, long>;

std::array<State, kSuffixes.size()> statesOf(const std::string& file) {
  std::array<State, kSuffixes.size()> states{};
  for (std::size_t i = 0; i < kSuffixes.size(); ++i) {
    struct stat status {};
    if (::stat((file + kSuffixes[i]).c_str(), &status) != 0) continue;
    states[i] = {status.st_ino, status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
  }
  return states;
}

// Times of files move in ticks: a file written within the last tick may be written again without
// any change of its time.
bool isSettled(const std::array<State, kSuffixes.size()>& states) {
  constexpr std::int64_t kTick = 20'000'000;  // nanoseconds, amply
  constexpr std::int64_t kSecond = 1'000'000'000;
  timespec now{};
  ::clock_gettime(CLOCK_REALTIME, &now);
  return std::none_of(states.begin(), states.end(), [&](const State& state) {
    const std::int64_t age =
        (now.tv_sec - std::get<2>(state)) * kSecond + now.tv_nsec - std::get<3>(state);
    return age >= 0 && age < kTick;
  });
}

// Another program may be writing, so a copy counts only if nothing changed meanwhile. False if the
// database never stands still.
bool copyDatabase(const std::string& from, const std::string& to) {
  constexpr int kTries = 10;
  constexpr std::chrono::milliseconds kPause(25);
  for (int i = 0; i < kTries; ++i) {
    const auto before = statesOf(from);
    if (isSettled(before)) {
      copyFrom(keptOpen(from), to);
      for (const char* const suffix : {"-wal", "-journal"}) {
        if (!copyFile(from + suffix, to + suffix)) ::unlink((to + suffix).c_str());
      }
      if (statesOf(from) == before) return true;
    }
    std::this_thread::sleep_for(kPause);
  }
  return false;
}

}  // namespace

Database PreviewConnection::openFile(const std::filesystem::path& file) {
  requireWritable(file);
  const auto source = std::filesystem::canonical(file);  // its log lies beside the file itself
  const auto copy = temporaryFolder_ / source.filename();
  if (!copyDatabase(source.string(), copy.string())) {
    // If others keep writing, their log and its index exist already, and a reader adds nothing.
    for (const char* const suffix : kSuffixes) ::unlink((copy.string() + suffix).c_str());
    backUpDatabase(source, copy);
  }
  Database database = SqliteConnection::openFile(copy);
  // Open files live on without their names, so that people's data is not left behind after a crash.
  // The first read opens all files of the database.
  sqlite::execute(database.get(), "SELECT 1 FROM sqlite_master");
  for (const char* const suffix : {"", "-wal", "-shm", "-journal"}) {
    ::unlink((copy.string() + suffix).c_str());
  }
  columns_ = columnNames(database.get(), kCardTable);
  hook_.emplace(database.get(), [this](const ChangingRow& row) { note(row); });
  return database;
}

std::int64_t PreviewConnection::execute(std::string_view sql) {
  changes_.clear();
  const std::int64_t count = SqliteConnection::execute(sql);  // one that fails has changed nothing
  for (const Change& change : changes_) changed_(change.column, change.before, change.after);
  return count;
}

// If the table has changed since, nothing is noted; the statement itself goes on.
void PreviewConnection::note(const ChangingRow& row) {
  const bool isUpdate = row.numberBefore() && row.numberAfter();
  if (!isUpdate || !text::equalsIgnoringAsciiCase(row.table(), kCardTable)) return;
  if (row.columnCount() != columns_.size()) return;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    std::string before(row.before(i).bytes());
    std::string after(row.after(i).bytes());
    if (before != after) changes_.push_back({columns_[i], std::move(before), std::move(after)});
  }
}

void PreviewConnection::close() {
  hook_.reset();
  SqliteConnection::close();
}

}  // namespace vlout::store::sqlite
