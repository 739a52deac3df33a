#include "store/sqlite/backup.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <string>
#include <unistd.h>

#include "store/connection.h"

namespace vlout::store {

StoredDatabase::StoredDatabase(const std::filesystem::path& file) {
  sqlite3* database = nullptr;
  const int result = sqlite3_open_v2(file.c_str(), &database, SQLITE_OPEN_READONLY, nullptr);
  database_.reset(database);
  if (result != SQLITE_OK) throw DatabaseError(file.string() + ": " + sqlite3_errstr(result));
  sqlite3_busy_timeout(database, ConnectionSettings::kTimeoutSeconds * 1000);
}

void StoredDatabase::Closer::operator()(sqlite3* database) const {
  sqlite3_close_v2(database);
}

void backUpDatabase(const std::filesystem::path& from, const std::filesystem::path& to) {
  const StoredDatabase source(from);
  // Made with its mode first, so that it is never readable by others.
  ::close(::open(to.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600));
  sqlite3* target = nullptr;
  int result = sqlite3_open_v2(to.c_str(), &target, SQLITE_OPEN_READWRITE, nullptr);
  if (result == SQLITE_OK) {
    sqlite3_backup* const backup = sqlite3_backup_init(target, "main", source.get(), "main");
    if (backup != nullptr) sqlite3_backup_step(backup, -1);
    result = backup != nullptr ? sqlite3_backup_finish(backup) : sqlite3_errcode(target);
  }
  // No files beside it when it is read again.
  if (result == SQLITE_OK) {
    result = sqlite3_exec(target, "PRAGMA journal_mode=DELETE", nullptr, nullptr, nullptr);
  }
  const std::string reason = sqlite3_errmsg(target);
  sqlite3_close_v2(target);
  if (result != SQLITE_OK) throw DatabaseError(to.string() + ": " + reason);
}

}  // namespace vlout::store
