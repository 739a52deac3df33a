// What SQLite tells while it works: each row that a statement changes, and that its log is about to
// go into the database file. The preview and the history listen. A hook belongs to its database and
// must not outlive it; a database has one of each kind.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>

#include "store/sqlite/statement.h"

namespace vlout::store::sqlite {

// A row while it is added, changed or removed; good for as long as its hook runs.
class ChangingRow {
 public:
  using Number = std::optional<std::int64_t>;
  ChangingRow(sqlite3* database, std::string_view table, Number before, Number after)
      : database_(database), table_(table), before_(before), after_(after) {}

  [[nodiscard]] std::string_view table() const { return table_; }
  // The row's number; nothing before it is added, or after it is removed.
  [[nodiscard]] Number numberBefore() const { return before_; }
  [[nodiscard]] Number numberAfter() const { return after_; }
  [[nodiscard]] std::size_t columnCount() const;
  // A value by 0-based column; NULL where there is no row.
  [[nodiscard]] Value before(std::size_t column) const;
  [[nodiscard]] Value after(std::size_t column) const;

 private:
  sqlite3* database_;
  std::string_view table_;
  Number before_;
  Number after_;
};

// Calls `told` for each row of the database's own tables, before it changes. `told` must not throw.
class RowHook {
 public:
  using Told = std::function<void(const ChangingRow&)>;
  RowHook(sqlite3* database, Told told);
  ~RowHook();
  RowHook(const RowHook&) = delete;
  RowHook& operator=(const RowHook&) = delete;

 private:
  sqlite3* database_;
  Told told_;
};

// Takes over from the library to bring a long log into the database file, and calls `before` first.
// When that throws, a later commit or the closing of the database will do it.
class CheckpointHook {
 public:
  CheckpointHook(sqlite3* database, std::function<void()> before);
  ~CheckpointHook();
  CheckpointHook(const CheckpointHook&) = delete;
  CheckpointHook& operator=(const CheckpointHook&) = delete;

 private:
  sqlite3* database_;
  std::function<void()> before_;
};

}  // namespace vlout::store::sqlite
