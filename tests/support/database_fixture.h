// An empty database of cards in a folder of its own.
#pragma once

#include <gtest/gtest.h>

#include "store/sqlite/sqlite_connection.h"
#include "tests/support/temporary_folder.h"

namespace vlout::tests {

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
