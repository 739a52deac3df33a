// The database port: one connection to the name-card database, through which every reader and
// writer runs its SQL text. The text is the same on every adapter, character for character; an
// adapter runs exactly one statement a call and refuses text that holds a second one.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

namespace vlout::store {

// A statement or an open that failed: what failed, and the database system's own text.
class DatabaseError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Another program has kept the database locked for longer than this one waits.
class DatabaseBusy : public DatabaseError {
 public:
  using DatabaseError::DatabaseError;
};

// How the component opens its database. The folder is the one that the component was loaded from.
struct ConnectionSettings {
  std::filesystem::path componentFolder;

  static constexpr std::string_view kFileName = "VelmoraDB.vdb";
  static constexpr int kTimeoutSeconds = 30;

  // The text that the ADO adapter opens with; the folder goes in as it is, without quotes.
  [[nodiscard]] std::string connectionString() const;
  [[nodiscard]] std::filesystem::path databaseFile() const;
};

// One field of a row: its text (the bytes of a binary column), or nothing for NULL. The view is
// valid as long as the recordset stays on that row.
using Field = std::optional<std::string_view>;

// The rows of a query, held on the client side: their number is known, fields are read by name, and
// the walk goes forward only.
class Recordset {
 public:
  Recordset() = default;
  Recordset(const Recordset&) = delete;
  Recordset& operator=(const Recordset&) = delete;
  virtual ~Recordset() = default;

  [[nodiscard]] virtual std::size_t rowCount() const = 0;
  [[nodiscard]] virtual bool atEnd() const = 0;
  virtual void moveNext() = 0;

  // The field of the current row with that name, compared without regard to ASCII case. Throws
  // DatabaseError when there is no such column or no current row.
  [[nodiscard]] virtual Field field(std::string_view name) const = 0;
};

using ColumnNames = std::span<const std::string_view>;

class Connection {
 public:
  Connection() = default;
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  virtual ~Connection() = default;

  // Throws DatabaseError and stays closed when the database cannot be opened; every later call then
  // throws with the same reason.
  virtual void open(const ConnectionSettings& settings) = 0;
  [[nodiscard]] virtual bool isOpen() const = 0;

  // Runs one statement that returns no rows; the number of rows affected.
  virtual std::int64_t execute(std::string_view sql) = 0;
  // Throws DatabaseError if the statement is too long for this database. Called before a contact is
  // saved and its row written, so that neither is written without the other.
  virtual void requireShortEnough(std::string_view sql) const { static_cast<void>(sql); }
  virtual std::unique_ptr<Recordset> query(std::string_view sql) = 0;
  // The same, where the caller will ask for these columns alone: an adapter may leave the others
  // out.
  virtual std::unique_ptr<Recordset> queryColumns(std::string_view sql, ColumnNames columns) {
    static_cast<void>(columns);
    return query(sql);
  }

  // Lets the following queries be answered as of one moment, at most a few milliseconds ago, which
  // saves a lock for each. That ends with the next `execute`, or with `false`; whatever leads to a
  // write must be read after that.
  virtual bool readTogether(bool together) {
    static_cast<void>(together);
    return false;
  }
};

}  // namespace vlout::store
