// What lies under a database's name, looked at before SQLite opens it: a named pipe would hold it
// up for ever, a device would give bytes without end, and beside a database that is protected from
// writing it would leave files that are protected as well, and stay so.
#pragma once

#include <filesystem>

namespace vlout::store::sqlite {

// Links are followed. Throws DatabaseError when the database is not there, or when it or one of the
// files that SQLite keeps beside it is no regular file; the text names one of those beside it.
void requireRegularFiles(const std::filesystem::path& database);

// The same, and they are files that may be written.
void requireWritable(const std::filesystem::path& database);

}  // namespace vlout::store::sqlite
