#include "history/rows.h"

#include <array>
#include <sqlite3.h>

#include "store/connection.h"
#include "store/sql.h"
#include "text/ascii.h"

namespace vlout::history {
namespace {

struct Table {
  std::string_view name;
  std::string_view caption;  // the column that people know a row by
};
constexpr std::array<Table, 2> kTables{
    {{store::kCardTable, "FullName"}, {store::kFolderTable, "folder_name"}}};

[[noreturn]] void fail(sqlite3* database) {
  throw store::DatabaseError(sqlite3_errmsg(database));
}

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

Statement::Statement(sqlite3* database, const std::string& sql) : database_(database) {
  sqlite3_stmt* statement = nullptr;
  if (sqlite3_prepare_v2(database, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK) {
    fail(database);
  }
  statement_.reset(statement);
}

void Statement::Finalizer::operator()(sqlite3_stmt* statement) const {
  sqlite3_finalize(statement);
}

Statement& Statement::bind(int index, std::int64_t value) {
  if (sqlite3_bind_int64(statement_.get(), index, value) != SQLITE_OK) fail(database_);
  return *this;
}

Statement& Statement::bind(int index, std::string_view value) {
  if (sqlite3_bind_text(statement_.get(), index, value.data(), static_cast<int>(value.size()),
                        SQLITE_TRANSIENT) != SQLITE_OK) {
    fail(database_);
  }
  return *this;
}

bool Statement::next() {
  const int result = sqlite3_step(statement_.get());
  if (result == SQLITE_ROW) return true;
  if (result != SQLITE_DONE) fail(database_);
  sqlite3_reset(statement_.get());
  return false;
}

void Statement::reset() {
  sqlite3_reset(statement_.get());
}

std::int64_t Statement::number(int column) const {
  return sqlite3_column_int64(statement_.get(), column);
}

std::string Statement::text(int column) const {
  const auto* const text =
      reinterpret_cast<const char*>(sqlite3_column_text(statement_.get(), column));
  return text == nullptr ? "" : text;
}

std::uint64_t Statement::hash() const {
  Hash hash;
  for (int i = 0; i < sqlite3_column_count(statement_.get()); ++i) {
    const int type = sqlite3_column_type(statement_.get(), i);
    if (type == SQLITE_NULL) continue;  // as good as a column that is not there
    const std::string_view name = sqlite3_column_name(statement_.get(), i);
    hash.add(name.data(), name.size());
    const void* const bytes = type == SQLITE_BLOB ? sqlite3_column_blob(statement_.get(), i)
                                                  : sqlite3_column_text(statement_.get(), i);
    const int size = sqlite3_column_bytes(statement_.get(), i);
    hash.add(&type, sizeof type);
    hash.add(&size, sizeof size);
    if (bytes != nullptr) hash.add(bytes, static_cast<std::size_t>(size));
  }
  return hash.value();
}

void execute(sqlite3* database, const std::string& sql) {
  if (sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) fail(database);
}

void rollBack(sqlite3* database) {
  if (sqlite3_get_autocommit(database) == 0) {
    sqlite3_exec(database, "ROLLBACK", nullptr, nullptr, nullptr);
  }
}

std::optional<std::uint64_t> RowHashes::of(const RowKey& key) {
  auto found = rows_.find(key.table);
  if (found == rows_.end()) {
    const std::string sql = "SELECT * FROM main." + key.table + " WHERE rowid=?1";
    found = rows_.emplace(key.table, Statement(database_, sql)).first;
  }
  Statement& row = found->second;
  if (!row.bind(1, key.row).next()) return std::nullopt;
  const std::uint64_t hash = row.hash();
  row.reset();
  return hash;
}

std::string_view nounOf(const RowKey& row) {
  return row.table == store::kCardTable ? "명함" : "그룹";
}

OtherState::OtherState(sqlite3* database, const std::filesystem::path& file) : database_(database) {
  Statement(database, "ATTACH ?1 AS other").bind(1, std::string_view(file.native())).next();
}

OtherState::~OtherState() {
  putBack_.clear();  // statements in use would hold the other state
  sqlite3_exec(database_, "DETACH other", nullptr, nullptr, nullptr);
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

std::vector<RowChange> OtherState::changesSince() const {
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
