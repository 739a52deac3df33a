// The rows of the database as restore points need them: told apart by a hash of their content, and
// compared between two states of the database.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "history/row_key.h"
#include "store/sqlite/statement.h"

namespace vlout::history {

// The hash of the current row's content. A column that is added empty does not change it.
[[nodiscard]] std::uint64_t hashOf(const store::Statement& row);

// The hashes of rows as they are.
class RowHashes {
 public:
  explicit RowHashes(sqlite3* database) : database_(database) {}
  // Nothing when there is no such row.
  [[nodiscard]] std::optional<std::uint64_t> of(const RowKey& key);

 private:
  sqlite3* database_;
  std::map<std::string, store::Statement> rows_;  // by table
};

enum class Change { Changed, Added, Removed };

// A row that is not what it was.
struct RowChange {
  RowKey key;
  Change change = Change::Changed;
  std::string name;
  std::optional<std::uint64_t> hash;  // of its content now

  bool operator==(const RowChange&) const = default;
};

// What people call a row of that table.
[[nodiscard]] std::string_view nounOf(const RowKey& row);

// Another state of the database, attached to a connection for as long as the object lives.
class OtherState {
 public:
  OtherState(sqlite3* database, const std::filesystem::path& file);
  ~OtherState();
  OtherState(const OtherState&) = delete;
  OtherState& operator=(const OtherState&) = delete;

  // How the connection's database differs from that state. An error names the file of the two that
  // cannot be read.
  [[nodiscard]] std::vector<RowChange> changesSince() const;
  // Gives a row the content that it has in that state.
  void putBack(const RowChange& change);

 private:
  [[nodiscard]] std::vector<RowChange> compare() const;
  [[nodiscard]] std::string damagedFile() const;
  [[nodiscard]] std::vector<std::string> columns(const std::string& table) const;
  [[nodiscard]] std::string putBackSql(const std::string& table, Change change) const;

  sqlite3* database_;
  std::map<std::pair<std::string, Change>, store::Statement> putBack_;
};

}  // namespace vlout::history
