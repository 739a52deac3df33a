#include "store/sqlite/sqlite_connection.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>
#include <vector>

#include "store/statement_text.h"
#include "text/ascii.h"
#include "text/file_descriptor.h"

namespace vlout::store {
namespace {

// Statements that differ only in their values share an entry, so a run needs a dozen; texts that
// cannot be shared must not pile up.
constexpr std::size_t kMostPrepared = 64;

bool isJetFile(const std::filesystem::path& file) {
  std::array<char, 20> head{};
  const text::FileDescriptor stream(text::openUnnoticed(file.c_str()));
  const ssize_t count = ::read(stream.get(), head.data(), head.size());
  const std::string_view mark(head.data() + 4, 15);
  return count == static_cast<ssize_t>(head.size()) &&
         (mark == "Standard Jet DB" || mark == "Standard ACE DB");
}

// Runs fixed text of this adapter's own: settings and the schema.
void runScript(sqlite3* database, const char* script) {
  if (sqlite3_exec(database, script, nullptr, nullptr, nullptr) != SQLITE_OK) {
    throw DatabaseError(sqlite3_errmsg(database));
  }
}

// The component is single-threaded, so the library's own locking and counting are left out. It
// takes settings only before its first use, which is fine: they change no result.
void configureLibrary() {
  static const bool done = [] {
    sqlite3_config(SQLITE_CONFIG_SINGLETHREAD);
    sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
    return true;
  }();
  static_cast<void>(done);
}

sqlite3* openFile(const std::filesystem::path& file, int flags) {
  configureLibrary();
  sqlite3* database = nullptr;
  const int result = sqlite3_open_v2(file.c_str(), &database, flags | SQLITE_OPEN_NOMUTEX, nullptr);
  if (result != SQLITE_OK) {
    std::string reason = database != nullptr ? sqlite3_errmsg(database) : sqlite3_errstr(result);
    if (database != nullptr && sqlite3_system_errno(database) != 0) {
      reason += std::string(": ") + std::strerror(sqlite3_system_errno(database));
    }
    sqlite3_close_v2(database);
    throw DatabaseError(reason);
  }
  return database;
}

void configure(sqlite3* database) {
  sqlite3_busy_timeout(database, ConnectionSettings::kTimeoutSeconds * 1000);
  sqlite3_db_config(database, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  sqlite3_db_config(database, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
  sqlite3_db_config(database, SQLITE_DBCONFIG_DQS_DDL, 0, nullptr);
  sqlite3_db_config(database, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
  // In WAL mode NORMAL keeps the file consistent through a power cut; at worst the last rows'
  // stamps are lost, and the next run finds and repairs such pairs.
  runScript(database,
            "PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL; PRAGMA cache_size=-16384;");
}

}  // namespace

// The names of a statement's columns, folded to lower case.
struct SqliteConnection::Columns {
  struct Hash {
    std::size_t operator()(std::string_view name) const {
      // Fields are read by the million; four characters tell the columns of a table apart.
      if (name.empty()) return 0;
      const auto at = [&](std::size_t i) {
        return static_cast<std::size_t>(static_cast<unsigned char>(text::asciiLower(name[i])));
      };
      return (((at(0) * 31 + at(name.size() / 2)) * 31 + at(name.size() / 3)) * 31 +
              at(name.size() - 1)) *
                 31 +
             name.size();
    }
  };
  struct Equal {
    bool operator()(std::string_view a, std::string_view b) const {
      return text::equalsIgnoringAsciiCase(a, b);
    }
  };

  explicit Columns(sqlite3_stmt* statement)
      : count(static_cast<std::size_t>(sqlite3_column_count(statement))) {
    names.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
      names.emplace_back(sqlite3_column_name(statement, static_cast<int>(i)));
      byName.emplace(names.back(), i);
    }
  }

  std::size_t count;
  std::vector<std::string> names;
  std::unordered_map<std::string_view, std::size_t, Hash, Equal> byName;
};

// All rows of a query in one block of bytes.
class SqliteConnection::Rows : public Recordset {
 public:
  explicit Rows(std::shared_ptr<const Columns> columns) : columns_(std::move(columns)) {
    constexpr std::size_t kUsualRow = 768;
    cells_.reserve(columns_->count);
    bytes_.reserve(kUsualRow);
  }

  void append(sqlite3_stmt* statement) {
    for (int i = 0; i < static_cast<int>(columns_->count); ++i) {
      const int type = sqlite3_column_type(statement, i);
      if (type == SQLITE_NULL) {
        cells_.push_back({bytes_.size(), kNull});
        continue;
      }
      if (type == SQLITE_INTEGER) {  // the library would allocate for its text
        appendNumber(sqlite3_column_int64(statement, i));
        continue;
      }
      const void* const data = type == SQLITE_BLOB
                                   ? sqlite3_column_blob(statement, i)
                                   : static_cast<const void*>(sqlite3_column_text(statement, i));
      const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, i));
      cells_.push_back({bytes_.size(), size});
      if (size > 0) bytes_.append(static_cast<const char*>(data), size);
    }
    ++rowCount_;
  }

  [[nodiscard]] std::size_t rowCount() const override { return rowCount_; }
  [[nodiscard]] bool atEnd() const override { return row_ >= rowCount_; }
  void moveNext() override {
    if (atEnd()) throw DatabaseError("마지막 행을 지났습니다.");
    ++row_;
  }

  [[nodiscard]] Field field(std::string_view name) const override {
    if (atEnd()) throw DatabaseError("현재 행이 없습니다: " + std::string(name));
    const auto column = columns_->byName.find(name);
    if (column == columns_->byName.end()) {
      throw DatabaseError("열이 없습니다: " + std::string(name));
    }
    const Cell& cell = cells_[row_ * columns_->count + column->second];
    if (cell.size == kNull) return std::nullopt;
    return std::string_view(bytes_).substr(cell.start, cell.size);
  }

 private:
  void appendNumber(std::int64_t number) {
    std::array<char, 24> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    const auto size = static_cast<std::size_t>(end - digits.data());
    cells_.push_back({bytes_.size(), size});
    bytes_.append(digits.data(), size);
  }

  static constexpr std::size_t kNull = static_cast<std::size_t>(-1);
  struct Cell {
    std::size_t start;
    std::size_t size;
  };

  std::shared_ptr<const Columns> columns_;
  std::string bytes_;
  std::vector<Cell> cells_;
  std::size_t rowCount_ = 0;
  std::size_t row_ = 0;
};

void SqliteConnection::Closer::operator()(sqlite3* database) const {
  sqlite3_close_v2(database);
}

void SqliteConnection::Finalizer::operator()(sqlite3_stmt* statement) const {
  sqlite3_finalize(statement);
}

SqliteConnection::~SqliteConnection() {
  prepared_.clear();  // statements go before the database that they belong to
}

void SqliteConnection::open(const ConnectionSettings& settings) {
  prepared_.clear();
  database_.reset();
  const std::filesystem::path file = settings.databaseFile();
  try {
    if (isJetFile(file)) {
      throw DatabaseError(
          "Jet(Access) 데이터베이스입니다. 이 프로그램은 SQLite 데이터베이스만 사용하며, 이 파일은 "
          "변경하지 않았습니다");
    }
    database_ = openDatabase(file);
  } catch (const DatabaseError& error) {
    closedBecause_ = file.string() + ": " + error.what();
    throw DatabaseError(closedBecause_);
  }
}

SqliteConnection::Database SqliteConnection::openDatabase(const std::filesystem::path& file) {
  Database database(openFile(file, SQLITE_OPEN_READWRITE));
  configure(database.get());
  if (sqlite3_db_readonly(database.get(), "main") != 0) {
    // Transfers would write contacts and could not record it.
    throw DatabaseError("읽기 전용 데이터베이스입니다");
  }
  return database;
}

void SqliteConnection::fail(std::string_view sql) const {
  // The beginning tells which statement it was; what follows is people's data.
  constexpr std::size_t kShown = 32;
  throw DatabaseError(std::string(sqlite3_errmsg(database_.get())) + ": " +
                      std::string(sql.substr(0, kShown)));
}

SqliteConnection::Prepared& SqliteConnection::prepare(std::string_view sql) {
  if (!database_) throw DatabaseError(closedBecause_);
  const StatementText text = readStatement(sql);
  auto found = prepared_.find(text.shape);
  if (found == prepared_.end()) {
    sqlite3_stmt* raw = nullptr;
    if (sqlite3_prepare_v3(database_.get(), text.shape.c_str(), static_cast<int>(text.shape.size()),
                           SQLITE_PREPARE_PERSISTENT, &raw, nullptr) != SQLITE_OK) {
      fail(sql);
    }
    std::unique_ptr<sqlite3_stmt, Finalizer> statement(raw);
    if (!statement) throw DatabaseError("SQL 문장이 비어 있습니다.");
    if (prepared_.size() >= kMostPrepared) prepared_.clear();
    auto columns = std::make_shared<const Columns>(raw);
    found = prepared_.emplace(text.shape, Prepared{std::move(statement), std::move(columns)}).first;
  }
  sqlite3_stmt* const statement = found->second.statement.get();
  int index = 0;
  for (const Literal& literal : text.literals) {
    ++index;
    const auto size = static_cast<sqlite3_uint64>(literal.value.size());
    const char* const value = literal.value.data();
    int result = SQLITE_OK;
    switch (literal.kind) {
      case Literal::Kind::Number:
        result = sqlite3_bind_int64(statement, index, text::parseInteger(literal.value).value());
        break;
      case Literal::Kind::Bytes:
        result = sqlite3_bind_blob64(statement, index, value, size, SQLITE_TRANSIENT);
        break;
      case Literal::Kind::Text:
        result = sqlite3_bind_text64(statement, index, value, size, SQLITE_TRANSIENT, SQLITE_UTF8);
    }
    if (result != SQLITE_OK) fail(sql);
  }
  return found->second;
}

namespace {

// Puts a cached statement back into its unused state, whatever happened to it.
class Reset {
 public:
  explicit Reset(sqlite3_stmt* statement) : statement_(statement) {}
  ~Reset() {
    sqlite3_reset(statement_);
    sqlite3_clear_bindings(statement_);
  }
  Reset(const Reset&) = delete;
  Reset& operator=(const Reset&) = delete;

 private:
  sqlite3_stmt* statement_;
};

}  // namespace

std::int64_t SqliteConnection::execute(std::string_view sql) {
  sqlite3_stmt* const statement = prepare(sql).statement.get();
  const Reset reset(statement);
  const std::int64_t before = sqlite3_total_changes64(database_.get());
  int result = sqlite3_step(statement);
  while (result == SQLITE_ROW) result = sqlite3_step(statement);
  if (result != SQLITE_DONE) fail(sql);
  return sqlite3_total_changes64(database_.get()) - before;
}

std::unique_ptr<Recordset> SqliteConnection::query(std::string_view sql) {
  Prepared& prepared = prepare(sql);
  sqlite3_stmt* const statement = prepared.statement.get();
  const Reset reset(statement);
  int result = sqlite3_step(statement);
  // Another program may have changed the table since the statement was prepared.
  if (static_cast<std::size_t>(sqlite3_column_count(statement)) != prepared.columns->count) {
    prepared.columns = std::make_shared<const Columns>(statement);
  }
  auto rows = std::make_unique<Rows>(prepared.columns);
  for (; result == SQLITE_ROW; result = sqlite3_step(statement)) rows->append(statement);
  if (result != SQLITE_DONE) fail(sql);
  return rows;
}

void createDatabase(const std::filesystem::path& file) {
  // Made with its final mode first, so that it is never readable by others, not even for a moment.
  const int descriptor = ::open(file.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600);
  if (descriptor < 0 && errno == EEXIST) {
    throw DatabaseError(file.string() + ": 이미 있는 데이터베이스는 덮어쓰지 않습니다");
  }
  if (descriptor < 0) throw DatabaseError(file.string() + ": " + std::strerror(errno));
  ::close(descriptor);
  sqlite3* database = nullptr;
  try {
    database = openFile(file, SQLITE_OPEN_READWRITE);
    configure(database);
    runScript(database, "BEGIN");
    runScript(database, kSchemaSql);
    runScript(database, "COMMIT");
    sqlite3_close_v2(database);
  } catch (const DatabaseError& error) {
    sqlite3_close_v2(database);
    std::error_code ignored;  // the failure to report is the one that led here
    for (const char* suffix : {"", "-wal", "-shm"}) {
      std::filesystem::remove(file.string() + suffix, ignored);
    }
    throw DatabaseError(file.string() + ": " + error.what());
  }
}

}  // namespace vlout::store
