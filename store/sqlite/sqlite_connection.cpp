#include "store/sqlite/sqlite_connection.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include "store/sqlite/database_files.h"
#include "store/statement_text.h"
#include "text/ascii.h"
#include "text/language.h"

namespace vlout::store::sqlite {
namespace {

// Statements that differ only in their values share an entry, so a run needs a dozen. Texts that
// cannot share one must not pile up.
constexpr std::size_t kMostPrepared = 64;

bool isJetFile(const std::filesystem::path& file) {
  std::array<char, 20> head{};
  const ssize_t count = ::pread(keptOpen(file), head.data(), head.size(), 0);
  const std::string_view mark(head.data() + 4, 15);
  return count == static_cast<ssize_t>(head.size()) &&
         (mark == "Standard Jet DB" || mark == "Standard ACE DB");
}

bool keepsLog(sqlite3* database) {
  Statement mode(database, "PRAGMA journal_mode");
  return mode.next() && mode.bytes(0) == "wal";
}

void configure(sqlite3* database) {
  sqlite3_db_config(database, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  sqlite3_db_config(database, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
  sqlite3_db_config(database, SQLITE_DBCONFIG_DQS_DDL, 0, nullptr);
  sqlite3_db_config(database, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
  // The change to WAL does not wait for another program that writes.
  if (!keepsLog(database)) sqlite::execute(database, "BEGIN IMMEDIATE; COMMIT");
  // In WAL mode NORMAL keeps the file consistent through a power cut; at worst the last rows'
  // stamps are lost, and the next run finds and repairs such pairs. A larger cache takes
  // as much more memory and saves little: pages that fall out of it are still in the system's.
  sqlite::execute(database,
                  "PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL; PRAGMA cache_size=-4096;");
}

}  // namespace

// The names of a statement's columns, folded to lower case.
struct SqliteConnection::Columns {
  struct Hash {
    std::size_t operator()(std::string_view name) const {
      // Fields are read by the million, and four characters are enough to tell the columns of a
      // table apart.
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

  explicit Columns(const Statement& statement)
      : count(static_cast<std::size_t>(statement.columnCount())) {
    names.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
      names.emplace_back(statement.columnName(static_cast<int>(i)));
      byName.emplace(names.back(), i);
    }
  }

  // Throws DatabaseError when there is none of that name.
  [[nodiscard]] std::size_t find(std::string_view name) const {
    const auto column = byName.find(name);
    if (column == byName.end()) failAsMissing(name);
    return column->second;
  }
  [[noreturn]] static void failAsMissing(std::string_view name) {
    throw DatabaseError(text::say("열이 없습니다: %1", "no such column: %1", {name}));
  }

  // Puts the places of these columns into `places`, which may hold them already.
  void locate(ColumnNames wanted, std::vector<std::size_t>& places) const {
    const auto isAt = [&](std::size_t place, std::string_view name) {
      return place < count && names[place] == name;
    };
    if (std::equal(places.begin(), places.end(), wanted.begin(), wanted.end(), isAt)) return;
    places.clear();
    for (const std::string_view name : wanted) places.push_back(find(name));
  }

  std::size_t count;
  std::vector<std::string> names;
  std::unordered_map<std::string_view, std::size_t, Hash, Equal> byName;
};

// All rows of a query, in blocks that are given up once the walk has passed them.
class SqliteConnection::Rows : public Recordset {
 public:
  // `kept` are the columns to be kept; empty for all.
  Rows(std::shared_ptr<const Columns> columns, const std::vector<std::size_t>& kept)
      : columns_(std::move(columns)),
        kept_(kept),
        width_(kept.empty() ? columns_->count : kept.size()) {
    constexpr std::size_t kUsualCell = 16;
    Block& first = blocks_.emplace_back();
    first.cells.reserve(width_);
    first.bytes.reserve(width_ * kUsualCell);
  }

  void append(const Statement& statement) {
    if (blocks_.back().bytes.size() >= kFullBlock) startBlock();
    Block& block = blocks_.back();
    for (std::size_t i = 0; i < width_; ++i) {
      appendCell(block, statement, static_cast<int>(kept_.empty() ? i : kept_[i]));
    }
    ++rowCount_;
  }

  [[nodiscard]] std::size_t rowCount() const override { return rowCount_; }
  [[nodiscard]] bool atEnd() const override { return row_ >= rowCount_; }
  void moveNext() override {
    if (atEnd()) throw DatabaseError(text::say("마지막 행을 지났습니다.", "past the last row"));
    ++row_;
    firstCell_ += width_;
    if (firstCell_ < blocks_[block_].cells.size() || atEnd()) return;
    blocks_[block_] = {};
    ++block_;
    firstCell_ = 0;
  }

  [[nodiscard]] Field field(std::string_view name) const override {
    if (atEnd())
      throw DatabaseError(text::say("현재 행이 없습니다: %1", "no current row: %1", {name}));
    const Block& block = blocks_[block_];
    const Cell& cell = block.cells[firstCell_ + placeOf(name)];
    if (cell.size == kNull) return std::nullopt;
    return std::string_view(block.bytes).substr(cell.start, cell.size);
  }

 private:
  // SQLite's rows are far below 4 GB.
  struct Cell {
    std::uint32_t start;
    std::uint32_t size;
  };
  struct Block {
    std::string bytes;
    std::vector<Cell> cells;  // of whole rows
  };
  static constexpr std::uint32_t kNull = static_cast<std::uint32_t>(-1);
  static constexpr std::size_t kFullBlock = std::size_t{1} << 15;

  void startBlock() {
    const Block& last = blocks_.back();
    Block block;
    block.cells.reserve(last.cells.size());
    block.bytes.reserve(last.bytes.size());
    blocks_.push_back(std::move(block));
  }

  // Where a row has that column's cell. Columns are mostly asked for in their order.
  [[nodiscard]] std::size_t placeOf(std::string_view name) const {
    if (next_ >= width_) next_ = 0;
    if (nameAt(next_) == name) return next_++;
    if (kept_.empty()) {
      next_ = columns_->find(name);
    } else {
      const auto isIt = [&](std::size_t column) {
        return text::equalsIgnoringAsciiCase(columns_->names[column], name);
      };
      const auto found = std::find_if(kept_.begin(), kept_.end(), isIt);
      if (found == kept_.end()) Columns::failAsMissing(name);
      next_ = static_cast<std::size_t>(found - kept_.begin());
    }
    return next_++;
  }

  [[nodiscard]] std::string_view nameAt(std::size_t place) const {
    return columns_->names[kept_.empty() ? place : kept_[place]];
  }

  static void appendCell(Block& block, const Statement& statement, int column) {
    const auto start = static_cast<std::uint32_t>(block.bytes.size());
    switch (statement.type(column)) {
      case Statement::Type::Null:
        block.cells.push_back({start, kNull});
        return;
      case Statement::Type::Integer:  // the library would allocate for its text
        appendNumber(block.bytes, statement.number(column));
        break;
      default:
        block.bytes.append(statement.bytes(column));
    }
    block.cells.push_back({start, static_cast<std::uint32_t>(block.bytes.size()) - start});
  }

  static void appendNumber(std::string& bytes, std::int64_t number) {
    std::array<char, 24> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    bytes.append(digits.data(), end);
  }

  std::shared_ptr<const Columns> columns_;
  std::vector<std::size_t> kept_;  // the columns of a row's cells; empty for all of them
  std::size_t width_;              // the cells of a row
  mutable std::size_t next_ = 0;   // where the column that is asked for next may be
  std::vector<Block> blocks_;
  std::size_t rowCount_ = 0;
  // The current row.
  std::size_t row_ = 0;
  std::size_t block_ = 0;
  std::size_t firstCell_ = 0;  // in the block
};

SqliteConnection::~SqliteConnection() {
  prepared_.clear();  // statements go before the database that they belong to
}

void SqliteConnection::open(const ConnectionSettings& settings) {
  close();
  const std::filesystem::path file = settings.databaseFile();
  try {
    requireRegularFiles(file);
    if (isJetFile(file)) {
      throw DatabaseError(text::say(
          "Jet(Access) 데이터베이스입니다. 이 프로그램은 SQLite 데이터베이스만 사용하며, 이 파일은 "
          "변경하지 않았습니다",
          "a Jet (Access) database; this program uses SQLite databases only, and has not changed "
          "this file"));
    }
    database_ = openFile(file);
    keepsLog_ = keepsLog(database_.get());
  } catch (const DatabaseError& error) {
    closedBecause_ = file.string() + ": " + error.what();
    throw DatabaseError(closedBecause_);
  }
}

void SqliteConnection::close() {
  prepared_.clear();
  together_.reset();
  database_.reset();
}

Database SqliteConnection::openFile(const std::filesystem::path& file) {
  requireWritable(file);
  Database database = openDatabase(file, Access::ReadWrite, stop_);
  configure(database.get());
  if (sqlite3_db_readonly(database.get(), "main") != 0) {
    // Transfers would write contacts but could not record that.
    throw DatabaseError(text::say("읽기 전용 데이터베이스입니다", "the database is read-only"));
  }
  return database;
}

SqliteConnection::Prepared& SqliteConnection::prepare(std::string_view sql) {
  if (!database_) throw DatabaseError(closedBecause_);
  const StatementText text = readStatement(sql);
  auto found = prepared_.find(text.shape);
  if (found == prepared_.end()) {
    Statement statement(database_.get(), text.shape);
    if (prepared_.size() >= kMostPrepared) prepared_.clear();
    auto columns = std::make_shared<const Columns>(statement);
    found = prepared_
                .emplace(text.shape,
                         Prepared{.statement = std::move(statement), .columns = std::move(columns)})
                .first;
  }
  Statement& statement = found->second.statement;
  int index = 0;
  for (const Literal& literal : text.literals) {
    ++index;
    switch (literal.kind) {
      case Literal::Kind::Number:
        statement.bind(index, text::parseInteger(literal.value).value());
        break;
      case Literal::Kind::Bytes:
        statement.bindBytes(index, literal.value);
        break;
      case Literal::Kind::Text:
        statement.bind(index, std::string_view(literal.value));
    }
  }
  return found->second;
}

namespace {

// Returns a cached statement to its unused state, whatever happened.
class Clear {
 public:
  explicit Clear(const Statement& statement) : statement_(statement) {}
  ~Clear() { statement_.clear(); }
  Clear(const Clear&) = delete;
  Clear& operator=(const Clear&) = delete;

 private:
  const Statement& statement_;
};

}  // namespace

// With a log, readers hold nobody up. Without one, the lock would keep writers waiting.
bool SqliteConnection::readTogether(bool together) {
  constexpr std::chrono::milliseconds kLongest(5);
  const auto now = std::chrono::steady_clock::now();
  if (together && together_ && now - *together_ < kLongest) return true;
  if (std::exchange(together_, std::nullopt)) sqlite::execute(database_.get(), "COMMIT");
  if (!together || !keepsLog_ || sqlite3_get_autocommit(database_.get()) == 0) return false;
  sqlite::execute(database_.get(), "BEGIN");
  together_ = now;
  return true;
}

std::int64_t SqliteConnection::execute(std::string_view sql) {
  if (together_) readTogether(false);
  Statement& statement = prepare(sql).statement;
  const Clear clear(statement);
  const std::int64_t before = sqlite3_total_changes64(database_.get());
  while (statement.next()) {
  }
  return sqlite3_total_changes64(database_.get()) - before;
}

std::unique_ptr<Recordset> SqliteConnection::query(std::string_view sql) {
  return SqliteConnection::queryColumns(sql, {});
}

std::unique_ptr<Recordset> SqliteConnection::queryColumns(std::string_view sql,
                                                          ColumnNames columns) {
  Prepared& prepared = prepare(sql);
  Statement& statement = prepared.statement;
  const Clear clear(statement);
  bool isRow = statement.next();
  // Another program may have changed the table since the statement was prepared.
  if (static_cast<std::size_t>(statement.columnCount()) != prepared.columns->count) {
    prepared.columns = std::make_shared<const Columns>(statement);
  }
  prepared.columns->locate(columns, prepared.kept);
  auto rows = std::make_unique<Rows>(prepared.columns, prepared.kept);
  for (; isRow; isRow = statement.next()) rows->append(statement);
  return rows;
}

void createDatabase(const std::filesystem::path& file) {
  // Created with its final mode, so that others can never read it, not even for a moment.
  const int descriptor = ::open(file.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600);
  if (descriptor < 0 && errno == EEXIST) {
    throw DatabaseError(text::say("%1: 이미 있는 데이터베이스는 덮어쓰지 않습니다",
                                  "%1: there is a database already; it is not overwritten",
                                  {file.string()}));
  }
  if (descriptor < 0) throw DatabaseError(file.string() + ": " + std::strerror(errno));
  ::close(descriptor);
  try {
    const Database database = openDatabase(file, Access::ReadWrite);
    configure(database.get());
    sqlite::execute(database.get(), std::string("BEGIN;") + kSchemaSql + ";COMMIT");
  } catch (const DatabaseError& error) {
    std::error_code ignored;  // the failure to report is the one that led here
    for (const char* suffix : {"", "-wal", "-shm"}) {
      std::filesystem::remove(file.string() + suffix, ignored);
    }
    throw DatabaseError(file.string() + ": " + error.what());
  }
}

}  // namespace vlout::store::sqlite
