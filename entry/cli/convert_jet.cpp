#include "entry/cli/convert_jet.h"

#include <algorithm>
#include <array>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "entry/cli/component_folder.h"
#include "store/connection.h"
#include "store/jet/jet_reader.h"
#include "store/sql.h"
#include "text/ascii.h"
#include "text/language.h"
#include "text/shown_text.h"
#include "transfer/row_stamps.h"

namespace vlout::entry::cli {
namespace {

using store::DatabaseError;
using store::kCardTable;
using store::kFolderTable;
using store::jet::JetColumn;
using store::jet::JetRow;
using store::jet::JetType;
using store::jet::JetValue;
using text::equalsIgnoringAsciiCase;

constexpr std::string_view kPicture = "Thumbnail";

// Dates are texts in this database, each column in the form that its readers expect.
constexpr std::array<std::string_view, 3> kDays{"Birthday", "Anniversary", "CreationTime"};

template <typename Names>
bool holds(const Names& names, std::string_view name) {
  return std::any_of(names.begin(), names.end(),
                     [&](const auto& n) { return equalsIgnoringAsciiCase(n, name); });
}

// The type of a column that only the source has. Exact decimals are kept as texts: a number would
// round them.
std::string_view sqlType(JetType type) {
  switch (type) {
    case JetType::Boolean:
    case JetType::Integer:
      return "INTEGER";
    case JetType::Real:
      return "REAL";
    case JetType::Binary:
      return "BLOB";
    default:
      return "TEXT COLLATE NOCASE";
  }
}

// Turns "yyyy/mm/dd hh:mm:ss" into the form of that column; in other columns midnight means a day
// without a time.
std::string dateFor(std::string_view column, std::string stamp) {
  constexpr std::size_t kDaySize = 10;
  const bool isMidnight = stamp.ends_with(" 00:00:00");
  if (!holds(kDays, column) && (holds(transfer::kStampColumns, column) || !isMidnight))
    return stamp;
  stamp.resize(kDaySize);
  return text::replaceAll(stamp, "/", "-");
}

// Writes the tables of the Jet file into the new database.
class Mover : public store::jet::JetRows {
 public:
  Mover(std::string source, store::Connection& connection,
        const volatile std::sig_atomic_t& interrupted)
      : source_(std::move(source)), connection_(connection), interrupted_(interrupted) {
    for (auto rows = connection_.query("SELECT f_idx FROM tbl_folder"); !rows->atEnd();
         rows->moveNext()) {
      fixedFolders_.emplace(*rows->field("f_idx"));
    }
  }

  void beginTable(std::string_view name, const std::vector<JetColumn>& columns) override {
    table_ = name;
    key_ = name == kCardTable ? "i_idx" : "f_idx";
    columns_ = columns;
    (name == kCardTable ? hasCards_ : hasFolders_) = true;
    std::vector<std::string> known;
    for (auto rows = connection_.query("SELECT name FROM pragma_table_info('" + table_ + "')");
         !rows->atEnd(); rows->moveNext()) {
      known.emplace_back(*rows->field("name"));
    }
    insert_ = "INSERT INTO " + table_ + " (";
    keyAt_ = columns.size();
    for (std::size_t i = 0; i < columns.size(); ++i) {
      const JetColumn& column = columns[i];
      if (equalsIgnoringAsciiCase(column.name, key_)) keyAt_ = i;
      if (column.type == JetType::Unknown) {
        left_.push_back(table_ + "." + column.name);
        continue;
      }
      if (!holds(known, column.name)) addColumn(column);
      insert_ += (insert_.ends_with('(') ? "" : ",") + store::sqlName(column.name);
    }
    insert_ += ") VALUES (";
    if (keyAt_ == columns.size()) {
      fail(text::say("표 %1에 열 %2가 없습니다", "table %1 has no column %2", {table_, key_}));
    }
  }

  void addRow(const JetRow& row) override {
    if (interrupted_ != 0) fail(text::say("중지되었습니다", "stopped"));
    const auto& key = row[keyAt_].text;
    // The database would number such a row itself, and nothing else would know that number.
    if (!key) {
      fail(text::say("%1에 번호(%2)가 없는 행이 있습니다", "%1 has a row without a number (%2)",
                     {table_, key_}));
    }
    if (table_ == kFolderTable && fixedFolders_.erase(*key) > 0) {
      connection_.execute("DELETE FROM tbl_folder WHERE f_idx = '" + *key + "'");
    }
    std::string sql = insert_;
    for (std::size_t i = 0; i < row.size(); ++i) {
      if (columns_[i].type != JetType::Unknown) appendValue(sql, columns_[i], row[i]);
    }
    sql.back() = ')';
    execute(sql, text::say("행 %1=%2", "row %1=%2", {key_, *key}));
    ++(table_ == kCardTable ? cards_ : folders_);
  }

  // Throws DatabaseError if there was no table of cards.
  void finish() const {
    if (!hasCards_) fail(text::say("표 tbl_namecard가 없습니다", "there is no table tbl_namecard"));
  }

  void report(std::ostream& out) const {
    out << text::say("명함 %1장, 사진 %2장\n", "%1 cards, %2 pictures\n",
                     {std::to_string(cards_), std::to_string(pictures_)});
    out << text::say("폴더 %1개\n", "%1 folders\n", {std::to_string(folders_)});
    if (!hasFolders_) {
      out << text::say("원본에 tbl_folder가 없어 기본 폴더만 만들었습니다.\n",
                       "The source has no tbl_folder; only the standard folders were made.\n");
    }
    writeNames(out, {"추가로 가져온 열 %1개:", "Columns that were added, %1:"}, added_);
    writeNames(out,
               {"형식을 알 수 없어 가져오지 않은 열 %1개:",
                "Columns of unknown type that were left out, %1:"},
               left_);
    if (broken_ > 0) {
      out << text::say("읽을 수 없는 글자나 날짜가 있는 값 %1개\n",
                       "%1 values with unreadable characters or dates\n",
                       {std::to_string(broken_)});
    }
  }

 private:
  // `subject` is the part of the table that the statement is about.
  void execute(const std::string& sql, const std::string& subject) {
    try {
      connection_.execute(sql);
    } catch (const DatabaseError& error) {
      fail(text::say("%1의 %2: %3", "%1, %2: %3", {table_, subject, error.what()}));
    }
  }

  [[noreturn]] void fail(const std::string& what) const {
    throw DatabaseError(source_ + ": " + what);
  }

  void addColumn(const JetColumn& column) {
    execute("ALTER TABLE " + table_ + " ADD COLUMN " + store::sqlName(column.name) + " " +
                std::string(sqlType(column.type)),
            text::say("열 %1", "column %1", {column.name}));
    added_.push_back(table_ + "." + column.name);
  }

  void appendValue(std::string& sql, const JetColumn& column, const JetValue& value) {
    if (!value.isWhole) ++broken_;
    if (!value.text) {
      sql += "NULL,";
      return;
    }
    if (column.type == JetType::Binary) {
      sql += store::sqlBytes(*value.text);
    } else {
      const bool isDate = column.type == JetType::DateTime && value.isWhole;
      const std::string text = isDate ? dateFor(column.name, *value.text) : *value.text;
      sql += "'" + text::replaceAll(text, "'", "''") + "'";
    }
    sql += ',';
    const bool isPicture = table_ == kCardTable && equalsIgnoringAsciiCase(column.name, kPicture);
    if (isPicture && !value.text->empty()) ++pictures_;
  }

  static void writeNames(std::ostream& out, const text::Words& heading,
                         const std::vector<std::string>& names) {
    if (names.empty()) return;
    out << text::say(heading, {std::to_string(names.size())});
    for (const std::string& name : names) out << ' ' << text::onOneLine(name);
    out << '\n';
  }

  std::string source_;
  store::Connection& connection_;
  const volatile std::sig_atomic_t& interrupted_;
  std::set<std::string> fixedFolders_;  // those that the source has not replaced so far
  std::string table_;
  std::string_view key_;
  std::vector<JetColumn> columns_;
  std::size_t keyAt_ = 0;
  std::string insert_;
  std::vector<std::string> added_;
  std::vector<std::string> left_;
  bool hasCards_ = false;
  bool hasFolders_ = false;
  std::int64_t cards_ = 0;
  std::int64_t folders_ = 0;
  std::int64_t pictures_ = 0;
  std::int64_t broken_ = 0;
};

}  // namespace

void convertJet(const std::filesystem::path& source, const std::filesystem::path& folder,
                std::ostream& report, const volatile std::sig_atomic_t& interrupted) {
  store::jet::JetReader reader(source, {std::string(kCardTable), std::string(kFolderTable)});
  std::ostringstream done;
  initializeFolder(folder, [&](store::Connection& connection) {
    Mover mover(source.string(), connection, interrupted);
    connection.execute("BEGIN");
    reader.readAll(mover);
    mover.finish();
    connection.execute("COMMIT");
    mover.report(done);
    return std::string();
  });
  report << done.str();
}

}  // namespace vlout::entry::cli
