#include "store/jet/jet_file.h"

#include <algorithm>
#include <cstdlib>
#include <mdbtools.h>
#include <string>

#include "store/connection.h"
#include "text/ascii.h"
#include "text/language.h"
#include "text/utf8.h"

namespace vlout::store::jet {
namespace {

// The two high bits of a row's offset on its page. A row that has outgrown its page leaves a
// pointer; in its new place it counts as deleted, so that only the pointer leads there.
constexpr int kDeleted = 0x8000;
constexpr int kPointer = 0x4000;
constexpr int kPlace = 0x1FFF;

struct TypeRow {
  int code;
  JetType type;
  std::size_t width;  // of a value; 0 when it varies
};

constexpr TypeRow kTypes[] = {
    {MDB_BOOL, JetType::Boolean, 0},  {MDB_BYTE, JetType::Integer, 1},
    {MDB_INT, JetType::Integer, 2},   {MDB_LONGINT, JetType::Integer, 4},
    {MDB_MONEY, JetType::Decimal, 8}, {MDB_FLOAT, JetType::Real, 4},
    {MDB_DOUBLE, JetType::Real, 8},   {MDB_DATETIME, JetType::DateTime, 8},
    {MDB_BINARY, JetType::Binary, 0}, {MDB_TEXT, JetType::Text, 0},
    {MDB_OLE, JetType::Binary, 0},    {MDB_MEMO, JetType::Text, 0},
    {MDB_REPID, JetType::Guid, 16},   {MDB_NUMERIC, JetType::Decimal, 17},
};

TypeRow typeRow(int code) {
  for (const TypeRow& row : kTypes) {
    if (row.code == code) return row;
  }
  return {code, JetType::Unknown, 0};
}

[[noreturn]] void failDamaged(const std::string& what) {
  throw DatabaseError(text::say("손상된 파일입니다 (%1)", "damaged file (%1)", {what}));
}

struct Closer {
  void operator()(MdbHandle* handle) const { mdb_close(handle); }
  void operator()(MdbTableDef* table) const { mdb_free_tabledef(table); }
};
using Handle = std::unique_ptr<MdbHandle, Closer>;
using Table = std::unique_ptr<MdbTableDef, Closer>;

Handle openHandle(const std::filesystem::path& file) {
  Handle handle(mdb_open(file.c_str(), MDB_NOFLAGS));
  if (!handle)
    throw DatabaseError(text::say("손상되었거나 지원하지 않는 형식의 Jet 파일입니다",
                                  "a damaged Jet file, or one of an unsupported kind"));
  return handle;
}

template <typename Item>
Item* itemAt(const GPtrArray* array, unsigned int index) {
  return static_cast<Item*>(array->pdata[index]);
}

struct CatalogRow {
  unsigned long page;  // of the table's definition
  std::int64_t type;
  std::string name;
};

// Picks the tables from the rows of the catalog.
class CatalogRows : public JetRows {
 public:
  void beginTable(std::string_view /*name*/, const std::vector<JetColumn>& columns) override {
    const auto find = [&](std::string_view name) {
      const auto found = std::find_if(columns.begin(), columns.end(),
                                      [&](const JetColumn& column) { return column.name == name; });
      if (found == columns.end()) failDamaged(text::say("표의 목록", "list of tables"));
      return static_cast<std::size_t>(found - columns.begin());
    };
    id_ = find("Id");
    name_ = find("Name");
    type_ = find("Type");
  }

  void addRow(const JetRow& row) override {
    constexpr std::int64_t kPage = 0xFFFFFF;
    const auto id = text::parseInteger(row[id_].text.value_or(""));
    const auto type = text::parseInteger(row[type_].text.value_or(""));
    if (!id || !type || !row[name_].text) return;
    tables.push_back({static_cast<unsigned long>(*id & kPage), *type, *row[name_].text});
  }

  std::vector<CatalogRow> tables;

 private:
  std::size_t id_ = 0;
  std::size_t name_ = 0;
  std::size_t type_ = 0;
};

// The name of the character set of a Jet 3 file. A file that names none comes from a host that did
// not do so yet, and those were Korean.
std::string charsetOf(const MdbHandle& handle) {
  constexpr int kKorean = 949;
  const int page = handle.f->code_page == 0 ? kKorean : handle.f->code_page;
  return "CP" + std::to_string(page);
}

}  // namespace

class JetFile::Reader {
 public:
  explicit Reader(const std::filesystem::path& file) : handle_(openHandle(file)) {
    if (isJet3()) {
      // The library decodes names itself; if it does not know the code page, it goes by this
      // variable only.
      const std::string charset = charsetOf(*handle_);
      setenv("MDB_JET3_CHARSET", charset.c_str(), 1);
      handle_ = openHandle(file);
      decoder_ = std::make_unique<JetTextDecoder>(charset, 1);
    } else {
      decoder_ = std::make_unique<JetTextDecoder>("UTF-16LE", 2);
    }
    fileSize_ = std::filesystem::file_size(file);
    readCatalog();
  }

  void readTable(std::string_view name, JetRows& rows) {
    const CatalogRow* const found = findTable(name);
    if (found == nullptr) return;
    scan(name, found->page, rows);
    if (rowsRead_ < table_->num_rows) {
      failDamaged(text::say("%1의 행 %2개 가운데 %3개만 있습니다", "%1 has %3 of its %2 rows",
                            {name, std::to_string(table_->num_rows), std::to_string(rowsRead_)}));
    }
  }

 private:
  [[nodiscard]] bool isJet3() const { return IS_JET3(handle_); }

  // The catalog is a table like any other. The library's own way to read it also walks through the
  // properties of every object, in a damaged file for ever.
  void readCatalog() {
    constexpr unsigned long kCatalogPage = 2;
    try {
      scan("MSysObjects", kCatalogPage, catalog_);
    } catch (const DatabaseError&) {
      catalog_.tables.clear();
    }
    if (catalog_.tables.empty()) {
      throw DatabaseError(
          text::say("표의 목록을 읽을 수 없습니다: 손상되었거나 암호화된 파일입니다",
                    "the list of tables cannot be read: the file is damaged or encrypted"));
    }
  }

  const CatalogRow* findTable(std::string_view name) const {
    for (const CatalogRow& row : catalog_.tables) {
      if (!text::equalsIgnoringAsciiCase(row.name, name)) continue;
      if (row.type == MDB_TABLE) return &row;
      if (row.type == MDB_LINKED_TABLE) {
        throw DatabaseError(
            text::say("표가 다른 파일에 있습니다: %1", "the table is in another file: %1", {name}));
      }
    }
    return nullptr;
  }

  void scan(std::string_view name, unsigned long definition, JetRows& rows) {
    constexpr unsigned int kMostColumns = 255;
    entry_.mdb = handle_.get();
    entry_.object_type = MDB_TABLE;
    entry_.table_pg = definition;
    table_.reset(mdb_read_table(&entry_));
    if (!table_ || table_->num_cols == 0 || table_->num_cols > kMostColumns ||
        mdb_read_columns(table_.get()) == nullptr) {
      failDamaged(text::say("표의 정의: %1", "definition of the table %1", {name}));
    }
    rows_ = &rows;
    rowsRead_ = 0;
    rows.beginTable(name, columns());
    unsigned int page = 0;
    while ((page = nextPage(page)) != 0) readPage(page);
  }

  [[nodiscard]] std::vector<JetColumn> columns() const {
    std::vector<JetColumn> columns;
    for (unsigned int i = 0; i < table_->num_cols; ++i) {
      const auto* const column = itemAt<MdbColumn>(table_->columns, i);
      columns.push_back({text::sanitizeUtf8(column->name), typeRow(column->col_type).type});
    }
    return columns;
  }

  unsigned int nextPage(unsigned int page) {
    const int next = mdb_map_find_next(handle_.get(), table_->usage_map,
                                       static_cast<unsigned int>(table_->map_sz), page);
    if (next < 0) failDamaged(text::say("쪽의 목록", "list of pages"));
    return static_cast<unsigned int>(next);
  }

  int int16At(int offset) { return mdb_get_int16(handle_->pg_buf, offset); }
  [[nodiscard]] int rowPlace(int row) const { return handle_->fmt->row_count_offset + 2 + row * 2; }

  void readPage(unsigned int page) {
    if (mdb_read_pg(handle_.get(), page) != handle_->fmt->pg_size) {
      failDamaged(text::say("쪽 %1", "page %1", {std::to_string(page)}));
    }
    // The list may name a page of another table; the number of rows shows if one is missing.
    const auto owner = static_cast<unsigned long>(mdb_get_int32(handle_->pg_buf, 4));
    if (handle_->pg_buf[0] != MDB_PAGE_DATA || owner != table_->entry->table_pg) return;
    const int count = int16At(handle_->fmt->row_count_offset);
    if (rowPlace(count) > handle_->fmt->pg_size)
      failDamaged(text::say("쪽 %1", "page %1", {std::to_string(page)}));
    for (int row = 0; row < count; ++row) {
      if ((int16At(rowPlace(row)) & kDeleted) == 0) readRow(row);
    }
  }

  struct Place {
    int start;
    std::size_t size;
  };

  // Reads a row of the current page.
  Place placeOf(int row) {
    Place place{0, 0};
    if (row > 255 || rowPlace(row + 1) > handle_->fmt->pg_size ||
        mdb_find_row(handle_.get(), row, &place.start, &place.size) != 0 || place.size == 0) {
      failDamaged(text::say("행의 자리", "place of a row"));
    }
    return place;
  }

  void readRow(int row) {
    constexpr int kMostMoves = 16;
    Place place = placeOf(row);
    bool isElsewhere = false;
    for (int moves = 0; (place.start & kPointer) != 0; ++moves) {
      if (moves == kMostMoves || place.size < 4)
        failDamaged(text::say("행의 자리", "place of a row"));
      const long target = mdb_get_int32(handle_->pg_buf, place.start & kPlace);
      if (isElsewhere) mdb_swap_pgbuf(handle_.get());
      if (mdb_read_alt_pg(handle_.get(), static_cast<unsigned long>(target) >> 8U) !=
          handle_->fmt->pg_size) {
        failDamaged(text::say("옮겨진 행", "moved row"));
      }
      mdb_swap_pgbuf(handle_.get());
      isElsewhere = true;
      place = placeOf(static_cast<int>(target & 0xFF));
    }
    std::vector<std::optional<std::string>> fields = crack(place);
    if (isElsewhere) mdb_swap_pgbuf(handle_.get());
    JetRow values;
    for (unsigned int i = 0; i < table_->num_cols; ++i) {
      const auto& column = *itemAt<MdbColumn>(table_->columns, i);
      // Only names and numbers are needed from the catalog.
      const bool isLeft = rows_ == &catalog_ && column.col_type == MDB_OLE;
      values.push_back(isLeft ? JetValue{} : decode(column, fields[i]));
    }
    ++rowsRead_;
    rows_->addRow(values);
  }

  // The row's fields as they are on the page. A true Boolean has a field, a false one has none.
  std::vector<std::optional<std::string>> crack(const Place& place) {
    std::vector<MdbField> cracked(table_->num_cols);
    const int start = place.start & kPlace;
    const int count = mdb_crack_row(table_.get(), start, place.size, cracked.data());
    if (count < 0) failDamaged(text::say("행", "row"));
    std::vector<std::optional<std::string>> fields(table_->num_cols);
    for (unsigned int i = 0; i < table_->num_cols; ++i) {
      const auto* const column = itemAt<MdbColumn>(table_->columns, i);
      const MdbField& field = cracked[i];
      // A row may be older than the last columns of its table.
      if (field.is_null != 0 || column->col_num >= count) continue;
      const TypeRow type = typeRow(column->col_type);
      const auto size = type.width > 0 ? type.width : static_cast<std::size_t>(field.siz);
      fields[i].emplace();
      if (type.type == JetType::Boolean || field.siz == 0) continue;
      if (field.siz < 0 || field.start < start ||
          static_cast<std::size_t>(field.start - start) + size > place.size) {
        failDamaged(text::say("행", "row"));
      }
      fields[i]->assign(reinterpret_cast<const char*>(handle_->pg_buf) + field.start, size);
    }
    return fields;
  }

  JetValue decode(const MdbColumn& column, std::optional<std::string>& field) {
    const TypeRow type = typeRow(column.col_type);
    if (type.type == JetType::Boolean) return {.text = field ? "1" : "0"};
    if (!field || type.type == JetType::Unknown) return {};
    if (field->size() < type.width) failDamaged(text::say("행", "row"));
    switch (column.col_type) {
      case MDB_BYTE:
      case MDB_INT:
      case MDB_LONGINT:
        return {.text = std::to_string(jetInteger(*field, column.col_type != MDB_BYTE))};
      case MDB_FLOAT:
      case MDB_DOUBLE:
        return {.text = jetReal(*field)};
      case MDB_MONEY:
        return {.text = jetMoney(*field)};
      case MDB_NUMERIC:
        // The library calls the digits after the point the precision, and the precision the scale.
        return {.text = jetNumeric(*field, column.col_prec)};
      case MDB_DATETIME:
        return jetDateTime(*field);
      case MDB_REPID:
        return {.text = jetGuid(*field)};
      case MDB_OLE:
        return {.text = longValue(*field)};
      case MDB_MEMO:
        return decodeText(longValue(*field));
      case MDB_TEXT:
        return decodeText(*field);
      default:
        return {.text = std::move(*field)};
    }
  }

  JetValue decodeText(const std::string& bytes) {
    return decoder_->decode(isJet3() ? bytes : expandJetText(bytes));
  }

  // A memo or an OLE object: within the row, on a page of its own, or in a chain of pages.
  std::string longValue(std::string& field) {
    constexpr std::size_t kHead = 12;
    constexpr std::size_t kInline = 0x80000000;
    constexpr std::size_t kOnePage = 0x40000000;
    if (field.empty()) return {};
    if (field.size() < kHead) failDamaged(text::say("긴 값", "long value"));
    const auto head =
        static_cast<std::size_t>(jetInteger(std::string_view(field).substr(0, 4), false));
    const std::size_t size = head & (kOnePage - 1);
    if (size > fileSize_) failDamaged(text::say("긴 값", "long value"));
    if ((head & kInline) != 0) {
      if (field.size() - kHead < size) failDamaged(text::say("긴 값", "long value"));
      return field.substr(kHead, size);
    }
    auto next = static_cast<int>(jetInteger(std::string_view(field).substr(4, 4), true));
    std::string value;
    while (value.size() < size) {
      std::string piece = longPiece(next);
      const std::size_t link = (head & kOnePage) != 0 ? 0 : 4;
      if (piece.size() <= link) failDamaged(text::say("긴 값", "long value"));
      next =
          link > 0 ? static_cast<int>(jetInteger(std::string_view(piece).substr(0, 4), true)) : 0;
      value.append(piece, link);
    }
    value.resize(size);
    return value;
  }

  std::string longPiece(int pointer) {
    void* page = nullptr;
    int start = 0;
    std::size_t size = 0;
    const std::size_t pageSize = static_cast<std::size_t>(handle_->fmt->pg_size);
    if (pointer == 0 || mdb_find_pg_row(handle_.get(), pointer, &page, &start, &size) != 0 ||
        start < 0 || size > pageSize || static_cast<std::size_t>(start) > pageSize - size ||
        std::string_view(static_cast<const char*>(page) + 4, 4) != "LVAL") {
      failDamaged(text::say("긴 값", "long value"));
    }
    return {static_cast<const char*>(page) + start, size};
  }

  Handle handle_;
  CatalogRows catalog_;
  MdbCatalogEntry entry_{};  // of the table in hand, which points to it
  std::unique_ptr<JetTextDecoder> decoder_;
  std::uintmax_t fileSize_ = 0;
  Table table_;
  JetRows* rows_ = nullptr;
  unsigned int rowsRead_ = 0;
};

JetFile::JetFile(const std::filesystem::path& file) : reader_(std::make_unique<Reader>(file)) {}

JetFile::~JetFile() = default;

void JetFile::readTable(std::string_view name, JetRows& rows) {
  reader_->readTable(name, rows);
}

}  // namespace vlout::store::jet
