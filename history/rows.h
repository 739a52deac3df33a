// The rows of the database as the history needs them: what writes change in them, what they hold
// now, and how they get it back.
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

// What people call a row of that table, and the column that they know it by.
[[nodiscard]] std::string nounOf(const RowKey& row);
[[nodiscard]] std::string_view captionOf(const RowKey& row);

// Notes what statements change in the two tables of a database, for as long as it lives.
class RowWatch {
 public:
  explicit RowWatch(sqlite3* database);

  // What was changed since the last call, to be asked before it is committed. Throws DatabaseError
  // when another program has changed the tables themselves.
  [[nodiscard]] std::vector<RowWrite> take();
  // Of a statement that failed.
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

// The rows as they are.
class StoredRows {
 public:
  explicit StoredRows(sqlite3* database) : database_(database) {}
  // Nothing when there is no such row.
  [[nodiscard]] std::optional<Cells> at(const RowKey& key);
  // Of its content; 0 when there is no such row. A column that is added empty does not change it.
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
