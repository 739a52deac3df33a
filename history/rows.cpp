#include "history/rows.h"

#include <array>

#include "store/connection.h"
#include "store/sql.h"
#include "store/sqlite/database_files.h"
#include "text/ascii.h"

namespace vlout::history {
namespace {

using store::Statement;

struct Table {
  std::string_view name;
  std::string_view caption;  // the column that people know a row by
};
constexpr std::array<Table, 2> kTables{
    {{store::kCardTable, "FullName"}, {store::kFolderTable, "folder_name"}}};

std::string joined(const std::vector<std::string>& columns) {
  std::string result;
  for (const std::string& column : columns) result += (result.empty() ? "" : ",") + column;
  return result;
}

// FNV-1a: tells contents apart, and is the same in every build.
class Hash {
 public:
  void add(const void* bytes, std::size_t size) {
    for (const auto* byte = static_cast<const unsigned char*>(bytes); size > 0; --size, ++byte) {
      value_ = (value_ ^ *byte) * 0x100000001B3;
    }
  }
  [[nodiscard]] std::uint64_t value() const { return value_; }

 private:
  std::uint64_t value_ = 0xCBF29CE484222325;
};

}  // namespace

std::uint64_t hashOf(const Statement& row) {
  Hash hash;
  for (int i = 0; i < row.columnCount(); ++i) {
    const auto type = static_cast<int>(row.type(i));
    if (row.type(i) == Statement::Type::Null) continue;  // as good as a column that is not there
    const std::string_view name = row.columnName(i);
    const std::string_view bytes = row.bytes(i);
    const auto size = static_cast<int>(bytes.size());
    hash.add(name.data(), name.size());
    hash.add(&type, sizeof type);
    hash.add(&size, sizeof size);
    hash.add(bytes.data(), bytes.size());
  }
  return hash.value();
}

std::optional<std::uint64_t> RowHashes::of(const RowKey& key) {
  auto found = rows_.find(key.table);
  if (found == rows_.end()) {
    const std::string sql = "SELECT * FROM main." + key.table + " WHERE rowid=?1";
    found = rows_.emplace(key.table, Statement(database_, sql)).first;
  }
  Statement& row = found->second;
  if (!row.bind(1, key.row).next()) return std::nullopt;
  const std::uint64_t hash = hashOf(row);
  row.reset();
  return hash;
}

std::string_view nounOf(const RowKey& row) {
  return row.table == store::kCardTable ? "명함" : "그룹";
}

OtherState::OtherState(sqlite3* database, const std::filesystem::path& file) : database_(database) {
  try {
    store::requireRegularFiles(file);
    Statement(database, "ATTACH ?1 AS other").bind(1, std::string_view(file.native())).next();
    store::execute(database, "SELECT count(*) FROM other.sqlite_master");
  } catch (const store::DatabaseError& error) {
    throw store::DatabaseError(file.string() + ": " + error.what());
  }
}

OtherState::~OtherState() {
  putBack_.clear();  // statements in use would hold the other state
  try {
    store::execute(database_, "DETACH other");
  } catch (const store::DatabaseError&) {
    // It goes with the connection then.
  }
}

// A column that only one of the states has is not compared and not put back.
std::vector<std::string> OtherState::columns(const std::string& table) const {
  Statement names(database_,
                  "SELECT m.name FROM pragma_table_info(?1,'main') m JOIN "
                  "pragma_table_info(?1,'other') o ON o.name=m.name ORDER BY m.cid");
  names.bind(1, std::string_view(table));
  std::vector<std::string> result;
  while (names.next()) result.push_back(store::sqlName(names.text(0)));
  if (result.empty()) throw store::DatabaseError(table + ": 표가 없습니다");
  return result;
}

// Which of the two files it is that cannot be read.
std::string OtherState::damagedFile() const {
  Statement files(database_, "SELECT name,file FROM pragma_database_list");
  std::string file;
  while (files.next()) {
    try {
      file = files.text(1);
      Statement check(database_, "PRAGMA " + files.text(0) + ".quick_check(1)");
      if (check.next() && check.text(0) != "ok") break;
    } catch (const store::DatabaseError&) {
      break;
    }
  }
  return file;
}

std::vector<RowChange> OtherState::changesSince() const {
  try {
    return compare();
  } catch (const store::DatabaseError& error) {
    throw store::DatabaseError(damagedFile() + ": " + error.what());
  }
}

std::vector<RowChange> OtherState::compare() const {
  std::vector<RowChange> changes;
  RowHashes hashes(database_);
  for (const auto& [name, caption] : kTables) {
    const std::string table(name);
    const auto filled = [&, caption = caption](std::string_view sql) {
      return text::replaceAll(text::replaceAll(sql, "%table", table), "%caption", caption);
    };
    std::string sql = filled(
        "SELECT m.rowid,o.rowid IS NULL,m.%caption FROM main.%table m "
        "LEFT JOIN other.%table o ON o.rowid=m.rowid WHERE o.rowid IS NULL");
    for (const std::string& column : columns(table)) {
      sql.append(" OR m.").append(column).append(" COLLATE BINARY IS NOT o.").append(column);
    }
    Statement now(database_, sql);
    while (now.next()) {
      const RowKey key{table, now.number(0)};
      changes.push_back(
          {key, now.number(1) != 0 ? Change::Added : Change::Changed, now.text(2), hashes.of(key)});
    }
    Statement then(database_, filled("SELECT rowid,%caption FROM other.%table WHERE rowid NOT IN "
                                     "(SELECT rowid FROM main.%table)"));
    while (then.next()) {
      changes.push_back({{table, then.number(0)}, Change::Removed, then.text(1), std::nullopt});
    }
  }
  return changes;
}

std::string OtherState::putBackSql(const std::string& table, Change change) const {
  const char* sql =
      "UPDATE main.%table SET (%names)=(SELECT %names FROM other.%table WHERE "
      "rowid=?1) WHERE rowid=?1";
  if (change == Change::Added) sql = "DELETE FROM main.%table WHERE rowid=?1";
  if (change == Change::Removed) {
    sql =
        "INSERT INTO main.%table(rowid,%names) SELECT rowid,%names FROM other.%table WHERE "
        "rowid=?1";
  }
  return text::replaceAll(text::replaceAll(sql, "%table", table), "%names", joined(columns(table)));
}

void OtherState::putBack(const RowChange& change) {
  const std::pair kind{change.key.table, change.change};
  auto found = putBack_.find(kind);
  if (found == putBack_.end()) {
    found = putBack_.emplace(kind, Statement(database_, putBackSql(kind.first, kind.second))).first;
  }
  found->second.bind(1, change.key.row).next();
}

}  // namespace vlout::history
