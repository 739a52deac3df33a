// Databases for tests: that of a component folder, and an empty one in a folder of its own.
#pragma once

#include <gtest/gtest.h>

#include "store/sqlite/sqlite_connection.h"
#include "tests/support/temporary_folder.h"

namespace vlout::tests {

class OpenDatabase : public store::sqlite::SqliteConnection {
 public:
  explicit OpenDatabase(const std::filesystem::path& componentFolder) {
    open({.componentFolder = componentFolder});
  }
};

class DatabaseFixture : public testing::Test {
 protected:
  DatabaseFixture() {
    store::sqlite::createDatabase(settings.databaseFile());
    connection.open(settings);
  }

  TemporaryFolder folder;
  store::ConnectionSettings settings{.componentFolder = folder.path()};
  store::sqlite::SqliteConnection connection;
};

}  // namespace vlout::tests
