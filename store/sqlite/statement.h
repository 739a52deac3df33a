// SQLite's C interface, in one place: open databases, and prepared statements of any text. The
// adapter, its preview, backups and the history build on it, and on its hooks
// (store/sqlite/hooks.h). Everything throws DatabaseError with the library's own text.
#pragma once

#include <csignal>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;
struct sqlite3_value;

namespace vlout::store::sqlite {

struct DatabaseCloser {
  void operator()(sqlite3* database) const;
};
using Database = std::unique_ptr<sqlite3, DatabaseCloser>;

enum class Access { ReadOnly, ReadWrite };

// Opens an existing file. Waits for another program's lock as long as the connection settings say,
// but only while `stop`, if given, is 0.
[[nodiscard]] Database openDatabase(const std::filesystem::path& file, Access access,
                                    const volatile std::sig_atomic_t* stop = nullptr);

// Throws the error of the last call on the database, followed by `context`; for another program's
// lock that is DatabaseBusy, with a sentence that says who waits for what.
[[noreturn]] void failAs(sqlite3* database, std::string_view context = "");

// Runs any number of statements, in text that this program has written itself.
void execute(sqlite3* database, const std::string& script);

// The names of a table's columns; none where there is no such table.
[[nodiscard]] std::vector<std::string> columnNames(sqlite3* database, std::string_view table);

// Keeps other writers out while it lives. What has not been committed by its end is rolled back.
class Transaction {
 public:
  explicit Transaction(sqlite3* database);
  ~Transaction();
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  void commit();

 private:
  sqlite3* database_;
};

// A value of a row, for as long as the library stays on that row.
class Value {
 public:
  explicit Value(sqlite3_value* value) : value_(value) {}
  // The bytes of any value but NULL, numbers as text.
  [[nodiscard]] std::string_view bytes() const;
  // The value with its type, to be compared or bound again; empty for NULL.
  [[nodiscard]] std::string cell() const;

 private:
  sqlite3_value* value_;  // NULL when there is none
};

class Statement {
 public:
  Statement(sqlite3* database, std::string_view sql);

  // Sets the value of a parameter, by its 1-based index, for the next run.
  Statement& bind(int index, std::int64_t value);
  Statement& bind(int index, std::string_view text);
  Statement& bindBytes(int index, std::string_view bytes);
  // A value as `cell` gives it.
  Statement& bindCell(int index, std::string_view cell);

  // Moves to the next row. False at the end; the statement can then be run again.
  bool next();
  // Ends a run before its last row.
  void reset() const;
  // `reset`, and the parameters lose their values.
  void clear() const;

  enum class Type { Integer = 1, Real, Text, Bytes, Null };  // numbered as in the library
  // Of the current row, by 0-based column.
  [[nodiscard]] Type type(int column) const;
  [[nodiscard]] std::int64_t number(int column) const;
  // These last until the next step.
  [[nodiscard]] Value value(int column) const;
  [[nodiscard]] std::string_view bytes(int column) const;
  [[nodiscard]] std::string text(int column) const { return std::string(bytes(column)); }

  [[nodiscard]] int columnCount() const;
  [[nodiscard]] const char* columnName(int column) const;

 private:
  struct Finalizer {
    void operator()(sqlite3_stmt* statement) const;
  };
  void require(int result) const;

  sqlite3* database_;
  std::unique_ptr<sqlite3_stmt, Finalizer> statement_;
};

}  // namespace vlout::store::sqlite
