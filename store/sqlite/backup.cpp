#include "store/sqlite/backup.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <string>
#include <unistd.h>

#include "store/connection.h"

namespace vlout::store::sqlite {
namespace {

void copy(sqlite3* from, sqlite3* to) {
  sqlite3_backup* const backup = sqlite3_backup_init(to, "main", from, "main");
  if (backup != nullptr) sqlite3_backup_step(backup, -1);
  if (backup == nullptr || sqlite3_backup_finish(backup) != SQLITE_OK) failAs(to);
}

}  // namespace

StoredDatabase::StoredDatabase(const std::filesystem::path& file, Access access) {
  try {
    database_ = openDatabase(file, access);
    // The first read shows whether it is a database at all.
    sqlite::execute(database_.get(), "SELECT count(*) FROM sqlite_master");
  } catch (const DatabaseError& error) {
    throw DatabaseError(file.string() + ": " + error.what());
  }
}

void backUpDatabase(const std::filesystem::path& from, const std::filesystem::path& to) {
  const StoredDatabase source(from);
  // Created with its final mode, so that others can never read it.
  ::close(::open(to.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600));
  try {
    const Database target = openDatabase(to, Access::ReadWrite);
    copy(source.get(), target.get());
    // So that reading it later needs no files beside it.
    execute(target.get(), "PRAGMA journal_mode=DELETE");
  } catch (const DatabaseError& error) {
    throw DatabaseError(to.string() + ": " + error.what());
  }
}

}  // namespace vlout::store::sqlite
