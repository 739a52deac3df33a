// The rows of the database as the history needs them: what writes change in them, what they hold
// now, and how to put them back.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "history/row_key.h"
#include "store/sqlite/hooks.h"
#include "store/sqlite/statement.h"

namespace vlout::history {

// What users call a row of that table, and the column that names it.
[[nodiscard]] std::string nounOf(const RowKey& row);
[[nodiscard]] std::string_view captionOf(const RowKey& row);

// Notes what statements change in the two tables of a database, for as long as it lives.
class RowWatch {
 public:
  explicit RowWatch(sqlite3* database);

  // What has changed since the last call; to be called before the commit. Throws DatabaseError if
  // another program has changed the tables themselves.
  [[nodiscard]] std::vector<RowWrite> take();
  // Drops the changes of a statement that failed.
  void forget();

 private:
  void readColumns();
  void note(const store::sqlite::ChangingRow& row);

  sqlite3* database_;
  std::map<std::string, std::vector<std::string>, std::less<>> columns_;  // by table
  std::vector<RowWrite> writes_;
  bool isStale_ = false;
  store::sqlite::RowHook hook_;
};

// Reads and writes rows as they are stored.
class StoredRows {
 public:
  explicit StoredRows(sqlite3* database) : database_(database) {}
  // The row, or nothing if there is none.
  [[nodiscard]] std::optional<Cells> at(const RowKey& key);
  // The hash of a row's content; 0 if there is no such row. Adding an empty column does not change
  // it.
  [[nodiscard]] std::uint64_t hashOf(const RowKey& key);

  // All throw DatabaseError.
  void insert(const RowKey& key, const Cells& cells);
  void update(const RowKey& key, const Cells& cells);
  void remove(const RowKey& key);

 private:
  sqlite3* database_;
  std::map<std::string, store::sqlite::Statement> looks_;  // by table
};

}  // namespace vlout::history
