// Opens database files to look at them, and copies them.
#pragma once

#include <filesystem>

#include "store/sqlite/statement.h"

namespace vlout::store::sqlite {

// A database file that is only read. Use `Access::ReadWrite` for one that others work on: the files
// that SQLite needs beside it are then removed again at the end. Throws DatabaseError, which names
// the file.
class StoredDatabase {
 public:
  explicit StoredDatabase(const std::filesystem::path& file, Access access = Access::ReadOnly);
  [[nodiscard]] sqlite3* get() const { return database_.get(); }

 private:
  Database database_;
};

// Copies the database into a new file, readable by its owner only, with all that other connections
// have committed to it. Throws DatabaseError.
void backUpDatabase(const std::filesystem::path& from, const std::filesystem::path& to);

}  // namespace vlout::store::sqlite
