// Checks what is under a database's name before SQLite opens it. A named pipe would block SQLite
// for ever, a device would give bytes without end, and beside a write-protected database SQLite
// would leave files that are write-protected too.
#pragma once

#include <filesystem>

namespace vlout::store::sqlite {

// Links are followed. Throws DatabaseError if the database is not there, or if it or one of the
// files that SQLite keeps beside it is not a regular file; for a file beside it, the text names
// that file.
void requireRegularFiles(const std::filesystem::path& database);

// The same, and the files must be writable.
void requireWritable(const std::filesystem::path& database);

// A descriptor that reads the file, for `pread` and the like; -1 and `errno` if it cannot be
// opened. It stays open as long as the process: closing any descriptor of a file drops all locks
// that the process holds on it, those of SQLite's connections included. Other programs would then
// take such a connection's log for abandoned, and delete it with what is in it.
[[nodiscard]] int keptOpen(const std::filesystem::path& database);

}  // namespace vlout::store::sqlite
