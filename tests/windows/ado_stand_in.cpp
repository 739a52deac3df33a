// Stands in for ADO with the Jet provider: the same interfaces over an SQLite file. Where Jet is
// particular, so is this: one statement a call, a client-side cursor, GetChunk that starts over
// when another field was read, Null for an empty piece, statements of 64,000 characters at most, no
// bars in texts, 255 characters in a column that is no memo. What differs between databases is
// switched on by the words of `jet.txt` beside the file: "sizes" are unknown (-1), "dates" are
// dates.
#include <sqlite3.h>

#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/windows/ado_unused.h"
#include "tests/windows/stand_ins.h"
#include "text/ascii.h"
#include "text/date_time.h"
#include "text/file_path.h"
#include "windows/com.h"
#include "windows/text.h"

namespace vlout::tests {
namespace {

using windows::bstr;

// The interface's new name on 64 bits, its old one on 32: the component has to try both.
const IID& interfaceOf(const std::array<IID, 2>& names) {
  return sizeof(void*) == 8 ? names[0] : names[1];
}

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

class Error : public UnusedError {
 public:
  explicit Error(std::string text) : UnusedError({IID_IDispatch}), text_(std::move(text)) {}
  STDMETHODIMP get_Description(BSTR* text) override {
    *text = bstr(text_).Detach();
    return S_OK;
  }

 private:
  std::string text_;
};

class Errors : public UnusedErrors {
 public:
  explicit Errors(std::string& last) : UnusedErrors({IID_IDispatch}), last_(last) {}
  STDMETHODIMP get_Count(long* count) override {
    *count = last_.empty() ? 0 : 1;
    return S_OK;
  }
  STDMETHODIMP get_Item(VARIANT, ADOError** error) override {
    *error = new Error(last_);
    return S_OK;
  }
  STDMETHODIMP Clear() override {
    last_.clear();
    return S_OK;
  }

 private:
  std::string& last_;  // the connection's
};

class AdoConnection : public UnusedConnection {
 public:
  AdoConnection() : UnusedConnection({IID_IDispatch, interfaceOf(store::ado::kConnection)}) {}
  ~AdoConnection() override { sqlite3_close(database_); }

  STDMETHODIMP put_ConnectionTimeout(LONG seconds) override {
    timeout_ = seconds;
    return S_OK;
  }

  STDMETHODIMP Open(BSTR connectionString, BSTR user, BSTR password, long options) override {
    std::string text = windows::utf8(connectionString);
    const std::string_view head = "provider=Microsoft.Jet.OLEDB.4.0;Data Source=";
    const std::string_view tail =
        ";Jet OLEDB:Database Password=pinewood930417;Persist Security Info=True;User ID=admin";
    const bool expected = timeout_ == 30 && text.starts_with(head) && text.ends_with(tail) &&
                          SysStringLen(user) == 0 && SysStringLen(password) == 0 && options == -1;
    if (!expected) return fail("Not the connection that was agreed.");
    text = text.substr(head.size(), text.size() - head.size() - tail.size());
    if (sqlite3_open_v2(text.c_str(), &database_, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK) {
      const std::string reason = sqlite3_errmsg(database_);
      Close();
      return fail(reason);
    }
    std::ifstream stream(text::pathOf(text).parent_path() / "jet.txt");
    switches.assign(std::istreambuf_iterator<char>(stream), {});
    const auto chr = [](sqlite3_context* call, int, sqlite3_value** values) {
      const char character = static_cast<char>(sqlite3_value_int(values[0]));
      sqlite3_result_text(call, &character, 1, SQLITE_TRANSIENT);
    };
    sqlite3_create_function(database_, "Chr", 1, SQLITE_UTF8, nullptr, chr, nullptr, nullptr);
    return S_OK;
  }

  STDMETHODIMP Close() override {
    sqlite3_close(database_);
    database_ = nullptr;
    return S_OK;
  }

  STDMETHODIMP get_State(LONG* state) override {
    *state = database_ == nullptr ? adStateClosed : adStateOpen;
    return S_OK;
  }

  STDMETHODIMP get_Errors(ADOErrors** errors) override {
    *errors = new Errors(lastError_);
    return S_OK;
  }

  STDMETHODIMP Execute(BSTR sql, VARIANT* affected, long options, _ADORecordset**) override {
    if (options != -1) return E_INVALIDARG;
    const int before = sqlite3_total_changes(database_);
    sqlite3_exec(database_, "SAVEPOINT s", nullptr, nullptr, nullptr);
    const auto table = run(windows::utf8(sql));
    const bool fits = table && textsFit();
    sqlite3_exec(database_, fits ? "RELEASE s" : "ROLLBACK TO s; RELEASE s", nullptr, nullptr,
                 nullptr);
    if (!table) return E_FAIL;
    if (!fits) return fail("The field is too small to accept the amount of data.");
    *affected = _variant_t(static_cast<long>(sqlite3_total_changes(database_) - before));
    return S_OK;
  }

  std::unique_ptr<Table> run(const std::string& jetSql) {
    if (windows::wide(jetSql).size() > 64'000) {
      fail("The SQL statement is too long.");
      return nullptr;
    }
    const auto translation = translated(jetSql);
    if (!translation) {
      fail("No value given for one or more required parameters.");
      return nullptr;
    }
    const std::string& sql = *translation;
    sqlite3_stmt* statement = nullptr;
    const char* rest = nullptr;
    if (sqlite3_prepare_v2(database_, sql.c_str(), -1, &statement, &rest) != SQLITE_OK) {
      fail(sqlite3_errmsg(database_));
      return nullptr;
    }
    const std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)> owned(statement,
                                                                           sqlite3_finalize);
    if (*rest != '\0') {
      fail("Characters found after end of SQL statement.");
      return nullptr;
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
    return nullptr;
  }

 private:
  bool textsFit() {
    const auto tooLong = run(
        "SELECT i_idx FROM tbl_namecard WHERE max(length(FullName),length(CompanyName),"
        "length(Department),length(JobTitle),length(email),length(Webpage),length(company_addr),"
        "length(Categories),length(folder_name))>255");
    return tooLong == nullptr || tooLong->rows.empty();
  }

  HRESULT fail(const std::string& text) {
    lastError_ = "[Jet] " + text;
    return E_FAIL;
  }

  sqlite3* database_ = nullptr;
  LONG timeout_ = 15;
  std::string lastError_;
};

class AdoField : public UnusedField {
 public:
  AdoField(std::shared_ptr<Table> table, std::size_t column)
      : UnusedField({IID_IDispatch}), table_(std::move(table)), column_(column) {}

  STDMETHODIMP get_Type(DataTypeEnum* type) override {
    const bool binary = text::equalsIgnoringAsciiCase(table_->columns[column_], "Thumbnail");
    *type = binary ? adLongVarBinary : adVarWChar;
    return S_OK;
  }
  STDMETHODIMP get_Value(VARIANT* value) override {
    table_->lastField = this;
    const Cell& each = cell();
    const auto date = isDate() ? text::parseDateTime(each.bytes) : std::nullopt;
    if (each.type == SQLITE_NULL) {
      value->vt = VT_NULL;
    } else if (date) {
      *value = _variant_t(windows::toAutomationDate(*date), VT_DATE).Detach();
    } else if (each.type == SQLITE_INTEGER) {
      *value = _variant_t(std::stol(each.bytes)).Detach();
    } else {
      *value = _variant_t(bstr(each.bytes)).Detach();
    }
    return S_OK;
  }
  STDMETHODIMP get_ActualSize(long* size) override {
    const auto bytes = static_cast<ADO_LONGPTR>(cell().bytes.size());
    *reinterpret_cast<ADO_LONGPTR*>(size) = isSwitchedOn("sizes") ? -1 : bytes;
    return S_OK;
  }
  STDMETHODIMP GetChunk(long length, VARIANT* chunk) override {
    if (table_->lastField != this) position_ = 0;
    table_->lastField = this;
    const std::string piece = cell().bytes.substr(position_, static_cast<std::size_t>(length));
    position_ += piece.size();
    chunk->vt = VT_NULL;
    if (piece.empty()) return S_OK;
    SAFEARRAY* const array = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(piece.size()));
    void* data = nullptr;
    SafeArrayAccessData(array, &data);
    std::copy(piece.begin(), piece.end(), static_cast<char*>(data));
    SafeArrayUnaccessData(array);
    chunk->vt = VT_ARRAY | VT_UI1;
    chunk->parray = array;
    return S_OK;
  }

 private:
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

class AdoFields : public UnusedFields {
 public:
  explicit AdoFields(std::shared_ptr<Table> table)
      : UnusedFields({IID_IDispatch}), table_(std::move(table)) {}

  STDMETHODIMP get_Item(VARIANT index, ADOField** field) override {
    const std::string name = windows::variantText(index);
    for (std::size_t i = 0; i < table_->columns.size(); ++i) {
      if (!text::equalsIgnoringAsciiCase(table_->columns[i], name)) continue;
      if (table_->row >= table_->rows.size()) return static_cast<HRESULT>(0x800A0BCD);
      *field = new AdoField(table_, i);
      return S_OK;
    }
    return static_cast<HRESULT>(0x800A0CC1);  // adErrItemNotFound
  }

 private:
  std::shared_ptr<Table> table_;
};

class AdoRecordset : public UnusedRecordset {
 public:
  AdoRecordset() : UnusedRecordset({IID_IDispatch, interfaceOf(store::ado::kRecordset)}) {}

  STDMETHODIMP put_CursorLocation(CursorLocationEnum location) override {
    clientSide_ = location == adUseClient;
    return S_OK;
  }
  STDMETHODIMP Open(VARIANT source, VARIANT connection, CursorTypeEnum cursor, LockTypeEnum lock,
                    LONG options) override {
    const bool expected = clientSide_ && connection.vt == VT_DISPATCH &&
                          cursor == adOpenForwardOnly && lock == adLockUnspecified && options == -1;
    if (!expected) return E_INVALIDARG;
    auto& owner = *static_cast<AdoConnection*>(static_cast<Connection15*>(connection.pdispVal));
    table_ = owner.run(windows::variantText(source));
    return table_ ? S_OK : E_FAIL;
  }
  STDMETHODIMP Close() override {
    table_.reset();
    return S_OK;
  }
  STDMETHODIMP get_RecordCount(long* count) override {
    *reinterpret_cast<ADO_LONGPTR*>(count) = static_cast<ADO_LONGPTR>(table_->rows.size());
    return S_OK;
  }
  STDMETHODIMP get_EOF(VARIANT_BOOL* end) override {
    *end = table_->row >= table_->rows.size() ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
  }
  STDMETHODIMP MoveNext() override {
    if (table_->row >= table_->rows.size()) return static_cast<HRESULT>(0x800A0BCD);
    ++table_->row;
    return S_OK;
  }
  STDMETHODIMP get_Fields(ADOFields** fields) override {
    *fields = new AdoFields(table_);
    return S_OK;
  }

 private:
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
