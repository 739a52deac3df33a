// The database port on an SQLite file, `VelmoraDB.vdb` in the component folder. Opens existing
// databases only; `createDatabase` makes a new one. A real Jet file under that name is recognised
// and refused, never written to.
#pragma once

#include <filesystem>
#include <string>
#include <unordered_map>

#include "store/connection.h"

struct sqlite3;
struct sqlite3_stmt;

namespace vlout::store {

// The schema of a new database (store/schema.sql).
extern const char* const kSchemaSql;

// Makes a new database with the two tables and the folder tree's fixed rows, readable by its owner
// only. Throws DatabaseError when the file exists already or cannot be made; nothing is left then.
void createDatabase(const std::filesystem::path& file);

class SqliteConnection : public Connection {
 public:
  SqliteConnection() = default;
  ~SqliteConnection() override;

  void open(const ConnectionSettings& settings) override;
  [[nodiscard]] bool isOpen() const override { return database_ != nullptr; }
  std::int64_t execute(std::string_view sql) override;
  std::unique_ptr<Recordset> query(std::string_view sql) override;

  // The open database; nullptr when there is none.
  [[nodiscard]] sqlite3* database() const { return database_.get(); }

 protected:
  struct Closer {
    void operator()(sqlite3* database) const;
  };
  using Database = std::unique_ptr<sqlite3, Closer>;

  // Opens the file for `open`, with the adapter's settings. Throws DatabaseError.
  [[nodiscard]] virtual Database openDatabase(const std::filesystem::path& file);

 private:
  struct Finalizer {
    void operator()(sqlite3_stmt* statement) const;
  };
  class Rows;
  struct Columns;
  struct Prepared {
    std::unique_ptr<sqlite3_stmt, Finalizer> statement;
    std::shared_ptr<const Columns> columns;
  };

  Prepared& prepare(std::string_view sql);
  [[noreturn]] void fail(std::string_view sql) const;

  Database database_;
  std::unordered_map<std::string, Prepared> prepared_;  // by statement shape
  std::string closedBecause_ = "데이터베이스가 열려 있지 않습니다.";
};

}  // namespace vlout::store
