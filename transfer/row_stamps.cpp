#include "transfer/row_stamps.h"

#include "store/sql.h"

namespace vlout::transfer {

RowStamps readStamps(const store::Recordset& row) {
  const auto stamp = [&](std::string_view column) {
    return text::parseDateTime(store::nullSafe(row.field(column)));
  };
  return {stamp("Last_moddate"), stamp("Outlook_modate"), stamp("VLLastsync_date")};
}

bool stampRow(store::Connection& connection, text::DateTime stamp, std::string_view rowId) {
  const std::string date = text::formatStamp(stamp);
  // The uneven spacing is the statement's own and stays as it is.
  std::string sql = "UPDATE tbl_namecard SET [VLLastsync_date] = '";
  sql.append(date).append("' ,[Last_moddate] = '").append(date);
  sql.append("',[Outlook_modate]='").append(date).append("' where [i_idx]=").append(rowId);
  return connection.execute(sql) > 0;
}

void forgetTransfer(store::Connection& connection, std::string_view rowId,
                    std::optional<text::DateTime> contactTime) {
  const auto row = store::readCard(connection, rowId);
  if (row->rowCount() == 0) return;
  std::string sql = "UPDATE tbl_namecard SET [VLLastsync_date]='',[Outlook_modate]=''";
  // The contact may have its time from before the save again, if another program has put it back or
  // moved it; equal dates would then pass for a pair in step.
  if (auto modified = readStamps(*row).lastModified) {
    do {
      ++modified->seconds;
    } while (contactTime && *modified == text::toWholeSeconds(*contactTime));
    sql += ",[Last_moddate]=" + store::sqlLiteral(text::formatStamp(*modified));
  }
  connection.execute(sql.append(" where [i_idx]=").append(rowId));
}

std::string stampClause(text::DateTime stamp, std::string_view separator) {
  const std::string date = store::sqlLiteral(text::formatStamp(stamp));
  std::string clause;
  for (const std::string_view column : kStampColumns) {
    if (!clause.empty()) clause += separator;
    clause.append("[").append(column).append("]=").append(date);
  }
  return clause;
}

std::string restoreStatement(const store::Recordset& row, std::string_view rowId) {
  std::string sql = "UPDATE tbl_namecard SET ";
  std::string_view separator = "[";
  for (const std::string_view column : kStampColumns) {
    const store::Field date = row.field(column);
    sql.append(separator).append(column).append("]=");
    sql.append(date ? store::sqlLiteral(*date) : "null");
    separator = ",[";
  }
  return sql.append(" WHERE [i_idx]=").append(rowId);
}

}  // namespace vlout::transfer
