// The small helpers through which every reader and writer of the name-card tables builds its SQL
// text and reads its fields.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "store/connection.h"
#include "text/language.h"

namespace vlout::store {

// The two tables of the database.
inline constexpr std::string_view kCardTable = "tbl_namecard";
inline constexpr std::string_view kFolderTable = "tbl_folder";

// An empty text when the field holds NULL, otherwise its text.
[[nodiscard]] inline std::string_view nullSafe(const Field& field) {
  return field.value_or(std::string_view());
}

// The trimmed value with every single quote doubled, ready to be put between single quotes.
[[nodiscard]] std::string sqlQuote(std::string_view value);

// The same, between single quotes.
[[nodiscard]] std::string sqlLiteral(std::string_view value);

// A column name, which may contain anything, between double quotes.
[[nodiscard]] std::string sqlName(std::string_view name);

// The bytes of a binary column: X'…'.
[[nodiscard]] std::string sqlBytes(std::string_view bytes);

// The id as a number. Ids go into statements without quotes, so nothing but a number may get there:
// throws DatabaseError for any other text and calls the id `what`.
std::int64_t requireNumber(std::string_view id, const text::Words& what);

// True when `tbl_namecard` holds a row with that `i_idx`. Throws DatabaseError when the query
// fails, as it does for an id that is not a number.
[[nodiscard]] bool cardExists(Connection& connection, std::string_view cardId);

// The largest `i_idx` plus 1, or 1 for an empty table. The result is 16 bits wide on purpose:
// throws std::overflow_error past 32767 instead of wrapping, and DatabaseError when the query
// fails.
[[nodiscard]] std::int16_t nextCardId(Connection& connection);

// The one row of that card, or no rows. `columns` names those that will be asked for; empty for
// all. Throws DatabaseError if the id is not a number.
[[nodiscard]] std::unique_ptr<Recordset> readCard(Connection& connection, std::string_view cardId,
                                                  ColumnNames columns = {});

}  // namespace vlout::store
