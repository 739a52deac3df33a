#include "store/sqlite/statement.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <sqlite3.h>
#include <thread>

#include "store/connection.h"
#include "store/sqlite/database_files.h"
#include "text/language.h"

namespace vlout::store::sqlite {
namespace {

// How much of a failed statement is shown: enough to recognise it; the rest may be people's data.
constexpr std::size_t kShown = 32;

// The component uses SQLite on one thread, so the library's own locking and counting are left out.
// After its first use the library takes no settings, which is fine: they change no result.
void configureLibrary() {
  static const bool done = [] {
    sqlite3_config(SQLITE_CONFIG_SINGLETHREAD);
    sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
    return true;
  }();
  static_cast<void>(done);
}

// Called while another program holds a lock; returning 0 gives up.
int waitForLock(void* stop, int tries) {
  constexpr std::chrono::milliseconds kPause(10);
  constexpr int kMostTries =
      static_cast<int>(std::chrono::seconds(ConnectionSettings::kTimeoutSeconds) / kPause);
  const auto* const asked = static_cast<const volatile std::sig_atomic_t*>(stop);
  if (tries >= kMostTries || (asked != nullptr && *asked != 0)) return 0;
  std::this_thread::sleep_for(kPause);
  return 1;
}

}  // namespace

void DatabaseCloser::operator()(sqlite3* database) const {
  sqlite3_close_v2(database);
}

Database openDatabase(const std::filesystem::path& file, Access access,
                      const volatile std::sig_atomic_t* stop) {
  requireRegularFiles(file);
  configureLibrary();
  const int mode = access == Access::ReadOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE;
  sqlite3* opened = nullptr;
  const int result = sqlite3_open_v2(file.c_str(), &opened, mode | SQLITE_OPEN_NOMUTEX, nullptr);
  Database database(opened);
  if (result != SQLITE_OK) {
    std::string reason = database ? sqlite3_errmsg(opened) : sqlite3_errstr(result);
    if (database && sqlite3_system_errno(opened) != 0) {
      reason += std::string(": ") + std::strerror(sqlite3_system_errno(opened));
    }
    throw DatabaseError(reason);
  }
  sqlite3_busy_handler(opened, waitForLock, const_cast<std::sig_atomic_t*>(stop));
  return database;
}

void failAs(sqlite3* database, std::string_view context) {
  std::string text = sqlite3_errmsg(database);
  if (!context.empty()) text.append(": ").append(context);
  const int code = sqlite3_errcode(database);
  if (code == SQLITE_CORRUPT || code == SQLITE_NOTADB) {
    throw DatabaseError(text::say("SQLite 데이터베이스가 아니거나 손상되었습니다: %1",
                                  "not an SQLite database, or a damaged one: %1", {text}));
  }
  if (code == SQLITE_BUSY) {
    throw DatabaseBusy(text::say(
        "다른 프로그램이 데이터베이스의 잠금을 쥐고 있습니다. 놓기를 "
        "기다리다가(%1초까지) 그만둡니다: %2",
        "another program has locked the database; gave up waiting (after up to %1 seconds): %2",
        {std::to_string(ConnectionSettings::kTimeoutSeconds), text}));
  }
  throw DatabaseError(text);
}

void execute(sqlite3* database, const std::string& script) {
  if (sqlite3_exec(database, script.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
    failAs(database);
  }
}

std::vector<std::string> columnNames(sqlite3* database, std::string_view table) {
  std::vector<std::string> names;
  try {
    const Statement row(database, "SELECT * FROM main." + std::string(table));
    for (int i = 0; i < row.columnCount(); ++i) names.emplace_back(row.columnName(i));
  } catch (const DatabaseError&) {
    return {};  // whoever reads or writes the table meets it too, and says it
  }
  return names;
}

Transaction::Transaction(sqlite3* database) : database_(database) {
  execute(database, "BEGIN IMMEDIATE");
}

Transaction::~Transaction() {
  // Committed, or ended by the database itself.
  if (sqlite3_get_autocommit(database_) != 0) return;
  sqlite3_exec(database_, "ROLLBACK", nullptr, nullptr, nullptr);
}

void Transaction::commit() {
  execute(database_, "COMMIT");
}

Statement::Statement(sqlite3* database, std::string_view sql) : database_(database) {
  sqlite3_stmt* statement = nullptr;
  if (sqlite3_prepare_v3(database, sql.data(), static_cast<int>(sql.size()),
                         SQLITE_PREPARE_PERSISTENT, &statement, nullptr) != SQLITE_OK) {
    failAs(database, sql.substr(0, kShown));
  }
  statement_.reset(statement);
  if (!statement_)
    throw DatabaseError(text::say("SQL 문장이 비어 있습니다.", "the SQL statement is empty"));
}

void Statement::Finalizer::operator()(sqlite3_stmt* statement) const {
  sqlite3_finalize(statement);
}

void Statement::require(int result) const {
  const std::string_view sql = sqlite3_sql(statement_.get());
  if (result != SQLITE_OK) failAs(database_, sql.substr(0, kShown));
}

Statement& Statement::bind(int index, std::int64_t value) {
  require(sqlite3_bind_int64(statement_.get(), index, value));
  return *this;
}

Statement& Statement::bind(int index, std::string_view text) {
  require(sqlite3_bind_text64(statement_.get(), index, text.data(), text.size(), SQLITE_TRANSIENT,
                              SQLITE_UTF8));
  return *this;
}

Statement& Statement::bindBytes(int index, std::string_view bytes) {
  require(
      sqlite3_bind_blob64(statement_.get(), index, bytes.data(), bytes.size(), SQLITE_TRANSIENT));
  return *this;
}

// A blob's own bytes; for anything else the bytes of its text.
std::string_view Value::bytes() const {
  if (value_ == nullptr) return {};
  const void* const data = sqlite3_value_type(value_) == SQLITE_BLOB
                               ? sqlite3_value_blob(value_)
                               : static_cast<const void*>(sqlite3_value_text(value_));
  if (data == nullptr) return {};
  return {static_cast<const char*>(data), static_cast<std::size_t>(sqlite3_value_bytes(value_))};
}

// A letter for the type, then the value; numbers as text, real ones in base 16, which is exact.
std::string Value::cell() const {
  switch (value_ == nullptr ? SQLITE_NULL : sqlite3_value_type(value_)) {
    case SQLITE_NULL:
      return {};
    case SQLITE_INTEGER:
      return 'i' + std::to_string(sqlite3_value_int64(value_));
    case SQLITE_FLOAT: {
      std::array<char, 32> digits{};
      std::snprintf(digits.data(), digits.size(), "r%a", sqlite3_value_double(value_));
      return digits.data();
    }
    case SQLITE_BLOB:
      return std::string("b").append(bytes());
    default:
      return std::string("t").append(bytes());
  }
}

Statement& Statement::bindCell(int index, std::string_view cell) {
  const std::string_view value = cell.substr(cell.empty() ? 0 : 1);
  switch (cell.empty() ? '\0' : cell.front()) {
    case 'i':
      return bind(index, static_cast<std::int64_t>(std::stoll(std::string(value))));
    case 'r':
      require(sqlite3_bind_double(statement_.get(), index, std::stod(std::string(value))));
      return *this;
    case 'b':
      require(sqlite3_bind_blob64(statement_.get(), index, value.data(), value.size(),
                                  SQLITE_TRANSIENT));
      return *this;
    case 't':
      return bind(index, value);
    default:
      require(sqlite3_bind_null(statement_.get(), index));
      return *this;
  }
}

bool Statement::next() {
  const int result = sqlite3_step(statement_.get());
  if (result == SQLITE_ROW) return true;
  require(result == SQLITE_DONE ? SQLITE_OK : result);
  sqlite3_reset(statement_.get());
  return false;
}

void Statement::reset() const {
  sqlite3_reset(statement_.get());
}

void Statement::clear() const {
  sqlite3_reset(statement_.get());
  sqlite3_clear_bindings(statement_.get());
}

Statement::Type Statement::type(int column) const {
  return static_cast<Type>(sqlite3_column_type(statement_.get(), column));
}

std::int64_t Statement::number(int column) const {
  return sqlite3_column_int64(statement_.get(), column);
}

// The value is looked up once; each library call by column would look it up again. It is used on
// this thread only, so the library's protected copy would be of no use.
Value Statement::value(int column) const {
  return Value(sqlite3_column_value(statement_.get(), column));
}

std::string_view Statement::bytes(int column) const {
  return value(column).bytes();
}

int Statement::columnCount() const {
  return sqlite3_column_count(statement_.get());
}

const char* Statement::columnName(int column) const {
  return sqlite3_column_name(statement_.get(), column);
}

}  // namespace vlout::store::sqlite
