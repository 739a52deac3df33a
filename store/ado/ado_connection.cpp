#include "store/ado/ado_connection.h"

#include <algorithm>
#include <vector>

#include "store/ado/ado_interfaces.h"
#include "store/statement_text.h"
#include "text/ascii.h"
#include "windows/text.h"

namespace vlout::store {
namespace {

using windows::bstr;
using windows::ComPtr;

constexpr long kOptionUnspecified = -1;
constexpr long kChunk = 8192;

template <typename Interface>
ComPtr<Interface> createAdo(const CLSID& classId, const std::array<IID, 2>& interfaces) {
  ComPtr<Interface> object;
  HRESULT result = E_NOINTERFACE;
  for (const IID& each : interfaces) {
    result = CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, each, &object);
    if (SUCCEEDED(result)) return object;
  }
  throw DatabaseError("ADO: " + windows::errorText(result));
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
_bstr_t jetStatement(std::string_view sql) {
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
  _bstr_t wide = bstr(statement);
  constexpr unsigned kLongest = 64'000;  // in UTF-16 units
  if (wide.length() > kLongest) {
    throw DatabaseError("메모가 너무 길어 저장할 수 없습니다(모든 항목을 합하여 64,000자까지)");
  }
  return wide;
}

}  // namespace

// A client-side recordset. What was read of the current row is kept until the next one, since a
// field's text must live that long and long binary fields are read only once in a row.
class AdoConnection::Rows : public Recordset {
 public:
  Rows(const AdoConnection& owner, std::string_view sql)
      : owner_(owner), recordset_(createAdo<Recordset15>(ado::kRecordsetClass, ado::kRecordset)) {
    const auto require = [&](HRESULT result) { owner_.check(result, sql); };
    require(recordset_->put_CursorLocation(adUseClient));
    require(recordset_->Open(_variant_t(jetStatement(sql)),
                             _variant_t(static_cast<IDispatch*>(owner_.connection_.Get())),
                             adOpenForwardOnly, adLockUnspecified, kOptionUnspecified));
    ado::Number count;
    require(recordset_->get_RecordCount(count.out()));
    rowCount_ = static_cast<std::size_t>(std::max<std::int64_t>(count.value(), 0));
    require(recordset_->get_Fields(&fields_));
  }
  ~Rows() override { recordset_->Close(); }

  [[nodiscard]] std::size_t rowCount() const override { return rowCount_; }

  [[nodiscard]] bool atEnd() const override {
    VARIANT_BOOL end = VARIANT_TRUE;
    owner_.check(recordset_->get_EOF(&end), "EOF");
    return end != VARIANT_FALSE;
  }

  void moveNext() override {
    values_.clear();
    owner_.check(recordset_->MoveNext(), "MoveNext");
  }

  [[nodiscard]] Field field(std::string_view name) const override {
    for (const Value& value : values_) {
      if (text::equalsIgnoringAsciiCase(value.name, name)) return viewOf(value);
    }
    auto text = read(name);
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
    ComPtr<ADOField> field;
    owner_.check(fields_->get_Item(_variant_t(bstr(name)), &field), name);
    DataTypeEnum type = adEmpty;
    owner_.check(field->get_Type(&type), name);
    if (type == adLongVarBinary || type == adVarBinary || type == adBinary) {
      return readBinary(*field.Get(), name);
    }
    _variant_t value;
    owner_.check(field->get_Value(&value), name);
    if (value.vt == VT_NULL || value.vt == VT_EMPTY) return nullptr;
    try {
      return std::make_unique<std::string>(windows::variantText(value));
    } catch (const windows::ComError& error) {
      throw DatabaseError(std::string(name) + ": " + error.what());
    }
  }

  // Piece after piece: the provider starts over when another field is read in between.
  [[nodiscard]] std::unique_ptr<std::string> readBinary(ADOField& field,
                                                        std::string_view name) const {
    ado::Number size;
    owner_.check(field.get_ActualSize(size.out()), name);
    auto bytes = std::make_unique<std::string>();
    std::string piece;
    // A provider that does not know the size says -1; the data end with an empty piece then.
    while (size.value() < 0 || static_cast<std::int64_t>(bytes->size()) < size.value()) {
      _variant_t chunk;
      owner_.check(field.GetChunk(kChunk, &chunk), name);
      const std::string_view part = bytesOf(chunk, piece);
      if (part.empty()) break;
      bytes->append(part);
    }
    if (bytes->empty()) return nullptr;
    return bytes;
  }

  const AdoConnection& owner_;
  ComPtr<Recordset15> recordset_;
  ComPtr<ADOFields> fields_;
  std::size_t rowCount_ = 0;
  mutable std::vector<Value> values_;
};

AdoConnection::AdoConnection() = default;
AdoConnection::~AdoConnection() = default;

void AdoConnection::open(const ConnectionSettings& settings) {
  connection_.Reset();
  try {
    connection_ = createAdo<Connection15>(ado::kConnectionClass, ado::kConnection);
    check(connection_->put_ConnectionTimeout(ConnectionSettings::kTimeoutSeconds), "ADO");
    const HRESULT result = connection_->Open(bstr(settings.connectionString()), _bstr_t(L""),
                                             _bstr_t(L""), kOptionUnspecified);
    // The state decides, not the result: a provider may succeed and still not be open.
    if (!isOpen()) check(FAILED(result) ? result : E_FAIL, ConnectionSettings::kFileName);
  } catch (const DatabaseError& error) {
    if (connection_) connection_->Close();
    closedBecause_ = error.what();
    throw;
  }
}

bool AdoConnection::isOpen() const {
  LONG state = adStateClosed;
  return connection_ && SUCCEEDED(connection_->get_State(&state)) && (state & adStateOpen) != 0;
}

void AdoConnection::requireOpen() const {
  if (!isOpen()) throw DatabaseError(closedBecause_);
}

std::int64_t AdoConnection::execute(std::string_view sql) {
  requireOpen();
  _variant_t affected;
  ComPtr<_ADORecordset> unused;
  check(connection_->Execute(jetStatement(sql), &affected, kOptionUnspecified, &unused), sql);
  return text::parseInteger(windows::variantText(affected)).value_or(0);
}

std::unique_ptr<Recordset> AdoConnection::query(std::string_view sql) {
  requireOpen();
  return std::make_unique<Rows>(*this, sql);
}

void AdoConnection::check(HRESULT result, std::string_view what) const {
  if (SUCCEEDED(result)) return;
  // The beginning tells which statement it was; what follows is people's data.
  constexpr std::size_t kShown = 32;
  std::string text = lastErrors();
  if (text.empty()) {
    ComPtr<IErrorInfo> info;
    _bstr_t description;
    if (GetErrorInfo(0, &info) == S_OK && SUCCEEDED(info->GetDescription(description.GetAddress())))
      text = windows::variantText(_variant_t(description));
  }
  if (text.empty()) text = windows::errorText(result);
  throw DatabaseError(text + ": " + std::string(what.substr(0, kShown)));
}

std::string AdoConnection::lastErrors() const {
  std::string text;
  ComPtr<ADOErrors> errors;
  long count = 0;
  if (!connection_ || FAILED(connection_->get_Errors(&errors))) return text;
  if (FAILED(errors->get_Count(&count))) return text;
  for (long i = 0; i < count; ++i) {
    ComPtr<ADOError> error;
    _bstr_t description;
    if (FAILED(errors->get_Item(_variant_t(i), &error)) ||
        FAILED(error->get_Description(description.GetAddress()))) {
      continue;
    }
    if (!text.empty()) text += " ";
    text += windows::variantText(_variant_t(description));
  }
  errors->Clear();  // they would be taken for the next failure's
  return text;
}

}  // namespace vlout::store
