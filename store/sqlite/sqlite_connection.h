// The database port on an SQLite file, `VelmoraDB.vdb` in the component folder. Opens existing
// databases only; `createDatabase` makes a new one. A real Jet file under that name is recognised
// and refused, never written to.
#pragma once

#include <chrono>
#include <csignal>
#include <filesystem>
#include <optional>
#include <string>
#include <unordered_map>

#include "store/connection.h"
#include "store/sqlite/statement.h"

namespace vlout::store::sqlite {

// The schema of a new database (store/schema.sql).
extern const char* const kSchemaSql;

// Makes a new database with the two tables and the folder tree's fixed rows, readable by its owner
// only. Throws DatabaseError when the file exists already or cannot be made; nothing is left then.
void createDatabase(const std::filesystem::path& file);

class SqliteConnection : public Connection {
 public:
  // If `stop` is given, other programs' locks are waited for only while it is 0.
  explicit SqliteConnection(const volatile std::sig_atomic_t* stop = nullptr) : stop_(stop) {}
  ~SqliteConnection() override;

  void open(const ConnectionSettings& settings) override;
  [[nodiscard]] bool isOpen() const override { return database_ != nullptr; }
  std::int64_t execute(std::string_view sql) override;
  std::unique_ptr<Recordset> query(std::string_view sql) override;
  std::unique_ptr<Recordset> queryColumns(std::string_view sql, ColumnNames columns) override;
  bool readTogether(bool together) override;

  // The open database; nullptr when there is none.
  [[nodiscard]] sqlite3* database() const { return database_.get(); }

 protected:
  // Opens the file for `open`, with the adapter's settings. Throws DatabaseError.
  [[nodiscard]] virtual Database openFile(const std::filesystem::path& file);
  // Called before another database is opened. Whatever listens to the old one must go first.
  virtual void close();

 private:
  class Rows;
  struct Columns;
  struct Prepared {
    Statement statement;
    std::shared_ptr<const Columns> columns;
    std::vector<std::size_t> kept{};  // the columns that were asked for last
  };

  Prepared& prepare(std::string_view sql);

  const volatile std::sig_atomic_t* stop_;
  Database database_;
  bool keepsLog_ = false;
  std::optional<std::chrono::steady_clock::time_point> together_;  // since when
  std::unordered_map<std::string, Prepared> prepared_;             // by statement shape
  std::string closedBecause_ = "데이터베이스가 열려 있지 않습니다.";
};

}  // namespace vlout::store::sqlite
