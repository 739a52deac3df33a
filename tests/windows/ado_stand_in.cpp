// Stands in for ADO with the Jet provider: the same members over an SQLite file. Where Jet is
// particular, so is this: one statement a call, a client-side cursor, GetChunk that starts over
// when another field was read, Null for an empty piece, statements of 64,000 characters at most, no
// bars in texts, 255 characters in a column that is no memo. What differs between databases is
// switched on by the words of `jet.txt` beside the file: "sizes" are unknown (-1), "dates" are
// dates, "zeros" (texts of zero length) are refused, pictures are "short" binaries, which have no
// pieces, and the first statement finds the row "locked".
#include <sqlite3.h>

#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/windows/automation_object.h"
#include "tests/windows/stand_ins.h"
#include "text/ascii.h"
#include "text/date_time.h"
#include "text/file_path.h"
#include "windows/com.h"
#include "windows/text.h"

namespace vlout::tests {
namespace {

std::string switches;

struct Cell {
  int type = SQLITE_NULL;
  std::string bytes;
};

struct Table {
  std::vector<std::string> columns;
  std::vector<std::vector<Cell>> rows;
  std::size_t row = 0;
  const void* lastField = nullptr;  // that was read

  void requireRow() const {
    if (row >= rows.size()) throw Failure{static_cast<HRESULT>(0x800A0BCD), "There is no row."};
  }
};

bool isSwitchedOn(std::string_view what) {
  return switches.find(what) != std::string::npos;
}

// Jet's operator for texts and its function in SQLite's words; nothing for a bar in a text.
std::optional<std::string> translated(const std::string& sql) {
  std::string result;
  bool inText = false;
  for (const char each : sql) {
    if (each == '\'') inText = !inText;
    if (inText && each == '|') return std::nullopt;
    if (!inText && each == '&') {
      result += "||";
    } else {
      result += each;
    }
  }
  return result;
}

// A number that 64-bit ADO gives out with 64 bits.
_variant_t wideNumber(std::size_t value) {
  if (sizeof(void*) == 8) return {static_cast<LONGLONG>(value)};
  return {static_cast<long>(value)};
}

class Error : public AutomationObject {
 public:
  explicit Error(std::string text) : AutomationObject("Error"), text_(std::move(text)) {}

 protected:
  _variant_t get(const std::string& member, const Arguments&) override {
    if (member == "Description") return textVariant(text_);
    if (member == "SQLState")
      return textVariant(text_.ends_with("zero-length string.") ? "3315" : "3000");
    noSuchMember();
  }

 private:
  std::string text_;
};

class Errors : public AutomationObject {
 public:
  explicit Errors(std::string& last) : AutomationObject("Errors"), last_(last) {}

 protected:
  _variant_t get(const std::string& member, const Arguments&) override {
    if (member == "Count") return {last_.empty() ? 0L : 1L};
    if (member == "Item") return newObject<Error>(last_);
    if (member != "Clear") noSuchMember();
    last_.clear();
    return {};
  }

 private:
  std::string& last_;  // the connection's
};

class AdoConnection : public AutomationObject {
 public:
  AdoConnection() : AutomationObject("Connection") {}
  ~AdoConnection() override { sqlite3_close(database_); }

  std::unique_ptr<Table> run(const std::string& jetSql) {
    if (windows::wide(jetSql).size() > 64'000) {
      fail("The SQL statement is too long.");
    }
    const auto translation = translated(jetSql);
    if (!translation) {
      fail("No value given for one or more required parameters.");
    }
    const std::string& sql = *translation;
    sqlite3_stmt* statement = nullptr;
    const char* rest = nullptr;
    if (sqlite3_prepare_v2(database_, sql.c_str(), -1, &statement, &rest) != SQLITE_OK) {
      fail(sqlite3_errmsg(database_));
    }
    const std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)> owned(statement,
                                                                           sqlite3_finalize);
    if (*rest != '\0') {
      fail("Characters found after end of SQL statement.");
    }
    auto table = std::make_unique<Table>();
    const int columns = sqlite3_column_count(statement);
    for (int i = 0; i < columns; ++i)
      table->columns.emplace_back(sqlite3_column_name(statement, i));
    int result = SQLITE_ROW;
    while ((result = sqlite3_step(statement)) == SQLITE_ROW) {
      auto& row = table->rows.emplace_back();
      for (int i = 0; i < columns; ++i) {
        const auto* data = static_cast<const char*>(sqlite3_column_blob(statement, i));
        const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, i));
        row.push_back({sqlite3_column_type(statement, i),
                       data == nullptr ? std::string() : std::string(data, size)});
      }
    }
    if (result == SQLITE_DONE) return table;
    fail(sqlite3_errmsg(database_));
  }

 protected:
  void put(const std::string& member, const _variant_t& value) override {
    if (member != "ConnectionTimeout") noSuchMember();
    timeout_ = value;
  }
  _variant_t get(const std::string& member, const Arguments& arguments) override {
    if (member == "State") return {database_ == nullptr ? 0L : 1L};
    if (member == "Errors") return newObject<Errors>(lastError_);
    if (member == "Execute") {
      const VARIANT& affected = arguments.at(1);
      if (affected.vt != (VT_VARIANT | VT_BYREF) || number(arguments.at(2)) != -1)
        throw Failure{E_INVALIDARG, ""};
      *affected.pvarVal = _variant_t(execute(textOf(arguments.at(0)))).Detach();
      return {};
    }
    if (member != "Open") noSuchMember();
    open(arguments);
    return {};
  }

 private:
  static long number(const _variant_t& value) { return value; }

  void open(const Arguments& arguments) {
    std::string text = textOf(arguments.at(0));
    const std::string_view head = "provider=Microsoft.Jet.OLEDB.4.0;Data Source=";
    const std::string_view tail =
        ";Jet OLEDB:Database Password=pinewood930417;Persist Security Info=True;User ID=admin";
    const bool expected = timeout_ == 30 && text.starts_with(head) && text.ends_with(tail) &&
                          textOf(arguments.at(1)).empty() && textOf(arguments.at(2)).empty() &&
                          number(arguments.at(3)) == -1;
    if (!expected) fail("Not the connection that was agreed.");
    text = text.substr(head.size(), text.size() - head.size() - tail.size());
    if (sqlite3_open_v2(text.c_str(), &database_, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK) {
      const std::string reason = sqlite3_errmsg(database_);
      sqlite3_close(database_);
      database_ = nullptr;
      fail(reason);
    }
    std::ifstream stream(text::pathOf(text).parent_path() / "jet.txt");
    switches.assign(std::istreambuf_iterator<char>(stream), {});
    const auto chr = [](sqlite3_context* call, int, sqlite3_value** values) {
      const char character = static_cast<char>(sqlite3_value_int(values[0]));
      sqlite3_result_text(call, &character, 1, SQLITE_TRANSIENT);
    };
    sqlite3_create_function(database_, "Chr", 1, SQLITE_UTF8, nullptr, chr, nullptr, nullptr);
  }

  long execute(const std::string& sql) {
    if (isSwitchedOn("locked") && !wasLocked_) {
      wasLocked_ = true;
      fail("Could not update; currently locked.");
    }
    const int before = sqlite3_total_changes(database_);
    sqlite3_exec(database_, "SAVEPOINT s", nullptr, nullptr, nullptr);
    try {
      run(sql);
      requireFitting();
    } catch (const Failure&) {
      sqlite3_exec(database_, "ROLLBACK TO s; RELEASE s", nullptr, nullptr, nullptr);
      throw;
    }
    sqlite3_exec(database_, "RELEASE s", nullptr, nullptr, nullptr);
    return sqlite3_total_changes(database_) - before;
  }

  void requireFitting() {
    std::string tooLong = "0";
    std::string zeros = "0";
    for (const char* const column :
         {"FullName", "CompanyName", "Department", "JobTitle", "home_phone", "cellphone", "email",
          "email2", "company_fax1", "home_zipcode", "Webpage", "company_addr", "home_addr",
          "Gender", "Categories", "LifePartner", "folder_name"}) {
      tooLong.append(" OR length(").append(column).append(")>255");
      zeros.append(" OR ").append(column).append("=''");
    }
    if (anyCard(tooLong)) fail("The field is too small to accept the amount of data.");
    if (isSwitchedOn("zeros") && anyCard(zeros + " OR Memo_=''")) {
      fail("The field cannot be a zero-length string.");
    }
  }
  bool anyCard(const std::string& condition) {
    return !run("SELECT i_idx FROM tbl_namecard WHERE " + condition)->rows.empty();
  }

  [[noreturn]] void fail(const std::string& text) {
    lastError_ = "[Jet] " + text;
    throw Failure{E_FAIL, lastError_};
  }

  sqlite3* database_ = nullptr;
  long timeout_ = 15;
  bool wasLocked_ = false;
  std::string lastError_;
};

class AdoField : public AutomationObject {
 public:
  AdoField(std::shared_ptr<Table> table, std::size_t column)
      : AutomationObject("Field"), table_(std::move(table)), column_(column) {}

 protected:
  _variant_t get(const std::string& member, const Arguments& arguments) override {
    const bool isLong = isBinary() && !isSwitchedOn("short");
    // adLongVarBinary, adVarBinary, adVarWChar
    if (member == "Type") return {isLong ? 205L : isBinary() ? 204L : 202L};
    if (member == "Value") return value();
    if (member == "ActualSize") {
      return isSwitchedOn("sizes") ? _variant_t(-1L) : wideNumber(cell().bytes.size());
    }
    if (member == "GetChunk" && isLong) return chunk(arguments.at(0));
    noSuchMember();
  }

 private:
  [[nodiscard]] _variant_t value() {
    table_->lastField = this;
    const Cell& each = cell();
    const auto date = isDate() ? text::parseDateTime(each.bytes) : std::nullopt;
    if (each.type == SQLITE_NULL) return nullVariant();
    if (date) return {windows::toAutomationDate(*date), VT_DATE};
    if (each.type == SQLITE_INTEGER) return {std::stol(each.bytes)};
    if (isBinary()) return bytesVariant(each.bytes);
    return textVariant(each.bytes);
  }
  [[nodiscard]] _variant_t chunk(long length) {
    if (table_->lastField != this) position_ = 0;
    table_->lastField = this;
    const std::string piece = cell().bytes.substr(position_, static_cast<std::size_t>(length));
    position_ += piece.size();
    if (piece.empty()) return nullVariant();
    return bytesVariant(piece);
  }
  static _variant_t bytesVariant(std::string_view piece) {
    SAFEARRAY* const array = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(piece.size()));
    void* data = nullptr;
    SafeArrayAccessData(array, &data);
    std::copy(piece.begin(), piece.end(), static_cast<char*>(data));
    SafeArrayUnaccessData(array);
    _variant_t bytes;
    bytes.vt = VT_ARRAY | VT_UI1;
    bytes.parray = array;
    return bytes;
  }
  static _variant_t nullVariant() {
    _variant_t value;
    value.vt = VT_NULL;
    return value;
  }
  [[nodiscard]] bool isBinary() const {
    return text::equalsIgnoringAsciiCase(table_->columns[column_], "Thumbnail");
  }
  [[nodiscard]] bool isDate() const {
    const std::string& name = table_->columns[column_];
    return isSwitchedOn("dates") &&
           (name.find("date") != std::string::npos || name == "Birthday" || name == "Anniversary");
  }
  [[nodiscard]] const Cell& cell() const { return table_->rows.at(table_->row).at(column_); }

  std::shared_ptr<Table> table_;
  std::size_t column_;
  std::size_t position_ = 0;
};

class AdoFields : public AutomationObject {
 public:
  explicit AdoFields(std::shared_ptr<Table> table)
      : AutomationObject("Fields"), table_(std::move(table)) {}

 protected:
  _variant_t get(const std::string& member, const Arguments& arguments) override {
    if (member != "Item") noSuchMember();
    const std::string name = textOf(arguments.at(0));
    for (std::size_t i = 0; i < table_->columns.size(); ++i) {
      if (!text::equalsIgnoringAsciiCase(table_->columns[i], name)) continue;
      table_->requireRow();
      return newObject<AdoField>(table_, i);
    }
    throw Failure{static_cast<HRESULT>(0x800A0CC1), "There is no such item."};
  }

 private:
  std::shared_ptr<Table> table_;
};

class AdoRecordset : public AutomationObject {
 public:
  AdoRecordset() : AutomationObject("Recordset") {}

 protected:
  void put(const std::string& member, const _variant_t& value) override {
    if (member != "CursorLocation") noSuchMember();
    clientSide_ = static_cast<long>(value) == 3;
  }
  _variant_t get(const std::string& member, const Arguments& arguments) override {
    if (member == "Open") {
      open(arguments);
    } else if (!table_) {
      throw Failure{static_cast<HRESULT>(0x800A0E78), "The recordset is closed."};
    } else if (member == "Close") {
      table_.reset();
    } else if (member == "RecordCount") {
      return wideNumber(table_->rows.size());
    } else if (member == "EOF") {
      return {table_->row >= table_->rows.size()};
    } else if (member == "MoveNext") {
      table_->requireRow();
      ++table_->row;
    } else if (member == "Fields") {
      return newObject<AdoFields>(table_);
    } else {
      noSuchMember();
    }
    return {};
  }

 private:
  void open(const Arguments& arguments) {
    const VARIANT& given = arguments.at(1);
    const bool isReference = given.vt == (VT_VARIANT | VT_BYREF);  // a script's variable
    const VARIANT& connection = isReference ? *given.pvarVal : given;
    const auto number = [&](std::size_t i) { return static_cast<long>(arguments.at(i)); };
    const bool expected = clientSide_ && connection.vt == VT_DISPATCH && number(2) == 0 &&
                          number(3) == -1 && number(4) == -1;
    if (!expected) throw Failure{E_INVALIDARG, ""};
    auto& owner = static_cast<AdoConnection&>(static_cast<AutomationObject&>(*connection.pdispVal));
    table_ = owner.run(textOf(arguments.at(0)));
  }

  std::shared_ptr<Table> table_;
  bool clientSide_ = false;
};

}  // namespace

IUnknown* newAdoConnection() {
  return new AdoConnection;
}

IUnknown* newAdoRecordset() {
  return new AdoRecordset;
}

}  // namespace vlout::tests
