#include "store/sql.h"

#include <limits>
#include <stdexcept>

#include "text/ascii.h"
#include "text/language.h"
#include "text/trim.h"

namespace vlout::store {

std::int64_t requireNumber(std::string_view id, const text::Words& what) {
  const auto number = text::parseInteger(id);
  if (!number) {
    throw DatabaseError(
        text::say("%1가 숫자가 아닙니다: %2", "%1 is not a number: %2", {text::say(what), id}));
  }
  return *number;
}

std::string sqlQuote(std::string_view value) {
  return text::replaceAll(text::trim(value), "'", "''");
}

std::string sqlLiteral(std::string_view value) {
  return "'" + sqlQuote(value) + "'";
}

std::string sqlName(std::string_view name) {
  return '"' + text::replaceAll(name, "\"", "\"\"") + '"';
}

std::string sqlBytes(std::string_view bytes) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string sql = "X'";
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    sql += kDigits[byte >> 4U];
    sql += kDigits[byte & 15U];
  }
  return sql + "'";
}

bool cardExists(Connection& connection, std::string_view cardId) {
  requireNumber(cardId, {"명함 번호", "card number"});
  const auto rows =
      connection.query("SELECT i_idx from tbl_namecard where [i_idx]=" + std::string(cardId));
  return rows->rowCount() > 0;
}

std::int16_t nextCardId(Connection& connection) {
  const auto rows = connection.query("SELECT MAX(I_IDX) AS NewEventID FROM [tbl_namecard]");
  if (rows->rowCount() == 0) return 1;
  const auto largest = text::parseInteger(nullSafe(rows->field("NewEventID"))).value_or(0);
  using Limits = std::numeric_limits<std::int16_t>;
  if (largest >= Limits::max())
    throw std::overflow_error(
        text::say("명함 번호가 32767을 넘습니다.", "The card number would exceed 32767."));
  if (largest < Limits::min() - 1)
    throw std::overflow_error(
        text::say("명함 번호가 -32768보다 작습니다.", "The card number would be below -32768."));
  return static_cast<std::int16_t>(largest + 1);
}

std::unique_ptr<Recordset> readCard(Connection& connection, std::string_view cardId,
                                    ColumnNames columns) {
  requireNumber(cardId, {"명함 번호", "card number"});
  return connection.queryColumns(
      "SELECT * from tbl_namecard where [i_idx] = " + std::string(cardId), columns);
}

}  // namespace vlout::store
