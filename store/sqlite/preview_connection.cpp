// Lets the library declare the hook that sees a row before and after an update.
#define SQLITE_ENABLE_PREUPDATE_HOOK 1

#include "store/sqlite/preview_connection.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <sqlite3.h>
#include <string_view>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <tuple>
#include <unistd.h>

#include "text/file_descriptor.h"

namespace vlout::store {
namespace {

constexpr std::string_view kCards = "tbl_namecard";

// The database and what may lie beside it with the newest of its content.
constexpr std::array<const char*, 3> kSuffixes{"", "-wal", "-journal"};

[[noreturn]] void failWithSystemText() {
  throw DatabaseError(std::strerror(errno));
}

// Copies a file without leaving an access time on it; false when there is none.
bool copyFile(const std::string& from, const std::string& to) {
  const text::FileDescriptor source(text::openUnnoticed(from.c_str()));
  if (source.get() < 0 && errno == ENOENT) return false;
  const text::FileDescriptor target(
      ::open(to.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
  if (source.get() < 0 || target.get() < 0) failWithSystemText();
  constexpr std::size_t kPiece = std::size_t{1} << 24;
  ssize_t copied = 0;
  do {
    copied = ::sendfile(target.get(), source.get(), nullptr, kPiece);
    if (copied < 0) failWithSystemText();
  } while (copied > 0);
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

// Another program may be writing: what was copied counts only if nothing moved meanwhile.
void copyDatabase(const std::string& from, const std::string& to) {
  constexpr int kTries = 10;
  for (int i = 0; i < kTries; ++i) {
    const auto before = statesOf(from);
    for (const char* const suffix : kSuffixes) {
      const bool copied = copyFile(from + suffix, to + suffix);
      if (!copied && *suffix == '\0') failWithSystemText();
      if (!copied) ::unlink((to + suffix).c_str());
    }
    if (statesOf(from) == before) return;
  }
  throw DatabaseError("다른 프로그램이 데이터베이스를 쓰고 있습니다");
}

std::string textOf(sqlite3_value* value) {
  const void* const bytes = sqlite3_value_blob(value);
  const auto size = static_cast<std::size_t>(sqlite3_value_bytes(value));
  return bytes == nullptr ? std::string() : std::string(static_cast<const char*>(bytes), size);
}

}  // namespace

SqliteConnection::Database PreviewConnection::openDatabase(const std::filesystem::path& file) {
  if (::access(file.c_str(), W_OK) != 0 && errno != ENOENT) failWithSystemText();
  const auto copy = temporaryFolder_ / file.filename();
  copyDatabase(file.string(), copy.string());
  Database database = SqliteConnection::openDatabase(copy);
  // Open files live on without their names; people's data must not lie about after a crash.
  for (const char* const suffix : {"", "-wal", "-shm", "-journal"}) {
    ::unlink((copy.string() + suffix).c_str());
  }
  watchChanges(database.get());
  return database;
}

void PreviewConnection::watchChanges(sqlite3* database) {
  columns_.clear();
  const std::string sql = "SELECT * FROM " + std::string(kCards) + " LIMIT 0";
  sqlite3_stmt* statement = nullptr;
  if (sqlite3_prepare_v2(database, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK) return;
  for (int i = 0; i < sqlite3_column_count(statement); ++i) {
    columns_.emplace_back(sqlite3_column_name(statement, i));
  }
  sqlite3_finalize(statement);
  sqlite3_preupdate_hook(
      database,
      [](void* self, sqlite3* changing, int operation, const char* schema, const char* table,
         sqlite3_int64, sqlite3_int64) {
        static_cast<void>(schema);
        if (operation == SQLITE_UPDATE && table == kCards) {
          static_cast<PreviewConnection*>(self)->reportUpdate(changing);
        }
      },
      this);
}

void PreviewConnection::reportUpdate(sqlite3* database) const {
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    sqlite3_value* before = nullptr;
    sqlite3_value* after = nullptr;
    const int column = static_cast<int>(i);
    if (sqlite3_preupdate_old(database, column, &before) != SQLITE_OK ||
        sqlite3_preupdate_new(database, column, &after) != SQLITE_OK) {
      return;  // the table has changed since; the statement itself goes on
    }
    const std::string old = textOf(before);
    const std::string now = textOf(after);
    if (old != now) changed_(columns_[i], old, now);
  }
}

}  // namespace vlout::store
