#include "store/ado/ado_connection.h"

#include <algorithm>
#include <vector>

#include "store/statement_text.h"
#include "text/ascii.h"
#include "windows/text.h"

namespace vlout::store::ado {
namespace {

using windows::bstr;
using windows::ComError;
using windows::Dispatch;

// Of ADO's published numbers those that are used here.
constexpr long kOptionUnspecified = -1;
constexpr long kStateOpen = 1;
constexpr long kUseClient = 3;
constexpr long kOpenForwardOnly = 0;
constexpr long kLockUnspecified = -1;
constexpr long kLongVarBinary = 205;
constexpr long kChunk = 8192;

// The state that comes with Jet's refusal of a text without characters: the number that Jet gives
// it.
constexpr std::string_view kZeroLengthState = "3315";

class ZeroLengthRefused : public DatabaseError {
 public:
  using DatabaseError::DatabaseError;
};

// By their identifiers: a look-up of the name would cost each query more than its calls.
constexpr CLSID kConnectionClass{
    0x00000514, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x6D, 0x2E, 0xA4}};
constexpr CLSID kRecordsetClass{
    0x00000535, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x6D, 0x2E, 0xA4}};

Dispatch createAdo(const CLSID& classId, windows::MemberIds& ids) {
  windows::ComPtr<IDispatch> object;
  const HRESULT result =
      CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&object));
  if (FAILED(result)) throw DatabaseError("ADO: " + windows::errorText(result));
  return {std::move(object), ids, windows::Server::AtHand};
}

_variant_t number(long value) {
  return {value};
}

// The bytes of a binary value; ADO gives Null for an empty piece.
std::string_view bytesOf(const VARIANT& value, std::string& buffer) {
  if (value.vt != (VT_ARRAY | VT_UI1)) return {};
  long first = 0;
  long last = -1;
  SafeArrayGetLBound(value.parray, 1, &first);
  SafeArrayGetUBound(value.parray, 1, &last);
  void* data = nullptr;
  if (FAILED(SafeArrayAccessData(value.parray, &data))) return {};
  buffer.assign(static_cast<const char*>(data),
                static_cast<std::size_t>(last) - static_cast<std::size_t>(first) + 1);
  SafeArrayUnaccessData(value.parray);
  return buffer;
}

// The statement as Jet takes it. Within a text it reads what stands between two bars as the name of
// a parameter, so bars are put together with the text around them. Throws for a statement that is
// longer than Jet can take.
_variant_t jetStatement(std::string_view sql) {
  static_cast<void>(readStatement(sql));  // one statement and nothing that Jet would not take
  std::string statement;
  bool inText = false;
  for (const char each : sql) {
    if (each == '\'') inText = !inText;
    if (each == '|' && inText) {
      statement += "'&Chr(124)&'";
    } else {
      statement += each;
    }
  }
  const _bstr_t wide = bstr(statement);
  constexpr unsigned kLongest = 64'000;  // in UTF-16 units
  if (wide.length() > kLongest) {
    throw DatabaseError("메모가 너무 길어 저장할 수 없습니다(모든 항목을 합하여 64,000자까지)");
  }
  return {wide};
}

// The statement with NULL for each text without characters that it writes. What it looks for stays:
// nothing equals NULL.
std::string withNulls(std::string_view sql) {
  constexpr std::string_view kWhere = " WHERE ";
  std::string statement;
  bool inText = false;
  for (std::size_t i = 0; i < sql.size(); ++i) {
    if (!inText && text::equalsIgnoringAsciiCase(sql.substr(i, kWhere.size()), kWhere)) {
      return statement.append(sql.substr(i));
    }
    const bool twoQuotes = sql.substr(i, 2) == "''";
    if (twoQuotes && !inText && sql.substr(i, 3) != "'''") {
      statement += "NULL";
      ++i;
    } else if (twoQuotes && inText) {
      statement += sql[i++];
      statement += sql[i];
    } else {
      if (sql[i] == '\'') inText = !inText;
      statement += sql[i];
    }
  }
  return statement;
}

}  // namespace

template <typename Call>
auto AdoConnection::guarded(std::string_view what, Call call) {
  try {
    return call();
  } catch (const ComError& error) {
    fail(what, error.what());
  } catch (const _com_error& error) {
    fail(what, windows::errorText(error.Error()));
  }
}

struct AdoConnection::LastErrors {
  std::string text;
  bool zeroLength = false;
};

// `text` tells what failed where the connection does not.
void AdoConnection::fail(std::string_view what, std::string text) {
  const LastErrors errors = lastErrors();
  if (!errors.text.empty()) text = errors.text;
  // The beginning tells which statement it was; what follows is people's data.
  constexpr std::size_t kShown = 32;
  text.append(": ").append(what.substr(0, kShown));
  if (errors.zeroLength) throw ZeroLengthRefused(text);
  throw DatabaseError(text);
}

// A client-side recordset. What was read of the current row is kept until the next one, since a
// field's text must live that long and long binary fields are read only once in a row.
class AdoConnection::Rows : public Recordset {
 public:
  Rows(AdoConnection& owner, std::string_view sql)
      : owner_(owner), recordset_(createAdo(kRecordsetClass, owner.classes_.recordset)) {
    owner_.guarded(sql, [&] {
      recordset_.put("CursorLocation", number(kUseClient));
      recordset_.call(
          "Open", {jetStatement(sql), _variant_t(owner_.connection_.get()),
                   number(kOpenForwardOnly), number(kLockUnspecified), number(kOptionUnspecified)});
      rowCount_ = static_cast<std::size_t>(std::max(recordset_.number("RecordCount"), 0L));
      fields_ = recordset_.object("Fields", owner_.classes_.fields);
    });
  }
  ~Rows() override {
    try {
      recordset_.call("Close");
    } catch (const ComError&) {
      // It ends with this object anyhow.
    }
  }

  [[nodiscard]] std::size_t rowCount() const override { return rowCount_; }

  [[nodiscard]] bool atEnd() const override {
    return owner_.guarded("EOF", [&] { return recordset_.number("EOF") != 0; });
  }

  void moveNext() override {
    values_.clear();
    owner_.guarded("MoveNext", [&] { recordset_.call("MoveNext"); });
  }

  [[nodiscard]] Field field(std::string_view name) const override {
    for (const Value& value : values_) {
      if (text::equalsIgnoringAsciiCase(value.name, name)) return viewOf(value);
    }
    auto text = owner_.guarded(name, [&] { return read(name); });
    values_.push_back({std::string(name), std::move(text)});
    return viewOf(values_.back());
  }

 private:
  struct Value {
    std::string name;
    std::unique_ptr<std::string> text;  // nothing for NULL; the text itself never moves
  };

  static Field viewOf(const Value& value) {
    if (!value.text) return std::nullopt;
    return std::string_view(*value.text);
  }

  [[nodiscard]] std::unique_ptr<std::string> read(std::string_view name) const {
    const Dispatch field = fields_.object("Item", owner_.classes_.field, {bstr(name)});
    if (field.number("Type") == kLongVarBinary) return readLongBinary(field);
    const _variant_t value = field.call("Value");
    if (value.vt == VT_NULL || value.vt == VT_EMPTY) return nullptr;
    if (value.vt == (VT_ARRAY | VT_UI1)) {  // short ones have no pieces
      std::string bytes;
      if (bytesOf(value, bytes).empty()) return nullptr;
      return std::make_unique<std::string>(std::move(bytes));
    }
    return std::make_unique<std::string>(windows::variantText(value));
  }

  // Piece after piece: the provider starts over when another field is read in between.
  [[nodiscard]] static std::unique_ptr<std::string> readLongBinary(const Dispatch& field) {
    const long size = field.number("ActualSize");
    auto bytes = std::make_unique<std::string>();
    std::string piece;
    // A provider that does not know the size says -1; the data end with an empty piece then.
    while (size < 0 || bytes->size() < static_cast<std::size_t>(size)) {
      const _variant_t chunk = field.call("GetChunk", {number(kChunk)});
      const std::string_view part = bytesOf(chunk, piece);
      if (part.empty()) break;
      bytes->append(part);
    }
    if (bytes->empty()) return nullptr;
    return bytes;
  }

  AdoConnection& owner_;
  Dispatch recordset_;
  Dispatch fields_;
  std::size_t rowCount_ = 0;
  mutable std::vector<Value> values_;
};

void AdoConnection::open(const ConnectionSettings& settings) {
  connection_ = {};
  try {
    connection_ = createAdo(kConnectionClass, classes_.connection);
    guarded(ConnectionSettings::kFileName, [&] {
      connection_.put("ConnectionTimeout", number(ConnectionSettings::kTimeoutSeconds));
      connection_.call("Open", {bstr(settings.connectionString()), _variant_t(L""), _variant_t(L""),
                                number(kOptionUnspecified)});
      // The state decides: a provider may succeed and still not be open.
      if (!isOpen()) throw ComError(E_FAIL, windows::errorText(E_FAIL));
    });
  } catch (const DatabaseError& error) {
    connection_ = {};
    closedBecause_ = error.what();
    throw;
  }
}

bool AdoConnection::isOpen() const {
  if (!connection_) return false;
  try {
    return (connection_.number("State") & kStateOpen) != 0;
  } catch (const ComError&) {
    return false;
  }
}

void AdoConnection::requireOpen() const {
  if (!isOpen()) throw DatabaseError(closedBecause_);
}

std::int64_t AdoConnection::execute(std::string_view sql) {
  requireOpen();
  try {
    return run(sql);
  } catch (const ZeroLengthRefused&) {
    return run(withNulls(sql));  // which is read as a text without characters
  }
}

void AdoConnection::requireShortEnough(std::string_view sql) const {
  static_cast<void>(jetStatement(sql));
}

std::int64_t AdoConnection::run(std::string_view sql) {
  return guarded(sql, [&] {
    _variant_t affected;
    _variant_t out;  // where the connection writes the number
    out.vt = VT_VARIANT | VT_BYREF;
    out.pvarVal = &affected;
    connection_.call("Execute", {jetStatement(sql), out, number(kOptionUnspecified)});
    return text::parseInteger(windows::variantText(affected)).value_or(0);
  });
}

std::unique_ptr<Recordset> AdoConnection::query(std::string_view sql) {
  requireOpen();
  return std::make_unique<Rows>(*this, sql);
}

AdoConnection::LastErrors AdoConnection::lastErrors() {
  LastErrors last;
  try {
    if (!connection_) return last;
    const Dispatch errors = connection_.object("Errors", classes_.errors);
    const long count = errors.number("Count");
    for (long i = 0; i < count; ++i) {
      const Dispatch error = errors.object("Item", classes_.error, {number(i)});
      if (!last.text.empty()) last.text += " ";
      last.text += error.text("Description");
      if (error.text("SQLState") == kZeroLengthState) last.zeroLength = true;
    }
    errors.call("Clear");  // they would be taken for the next failure's
  } catch (const ComError&) {
    // What could be read of them is better than none.
  }
  return last;
}

}  // namespace vlout::store::ado
