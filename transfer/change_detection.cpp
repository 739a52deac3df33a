#include "transfer/change_detection.h"

#include <string>

#include "store/sql.h"

namespace vlout::transfer {

RowStamps readStamps(const store::Recordset& row) {
  const auto stamp = [&](std::string_view column) {
    return text::parseDateTime(store::nullSafe(row.field(column)));
  };
  return {stamp("Last_moddate"), stamp("Outlook_modate"), stamp("VLLastsync_date")};
}

PairState classifyPair(const RowStamps& row, text::DateTime contactTime, ConflictTest test) {
  const std::optional<text::DateTime> contact = text::toWholeSeconds(contactTime);
  PairState state;
  if (row.lastModified > contact) state.newer = Side::Row;
  if (row.lastModified < contact) state.newer = Side::Contact;
  if (state.newer == Side::Neither || test == ConflictTest::Off) return state;
  const bool crosswise = test == ConflictTest::Crosswise;
  const auto& rowSince = crosswise ? row.outlookModified : row.lastSync;
  const auto& contactSince = crosswise ? row.lastSync : row.outlookModified;
  state.conflict = row.lastModified > rowSince && contact > contactSince;
  return state;
}

bool writeSyncDates(store::Connection& connection, text::DateTime stamp, std::string_view rowId) {
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
  // The date may be that of the contact before the save, which is there again when another program
  // has put it back or moved it: equal dates would pass for a pair in step.
  if (auto modified = readStamps(*row).lastModified) {
    do {
      ++modified->seconds;
    } while (contactTime && *modified == text::toWholeSeconds(*contactTime));
    sql += ",[Last_moddate]=" + store::sqlLiteral(text::formatStamp(*modified));
  }
  connection.execute(sql.append(" where [i_idx]=").append(rowId));
}

}  // namespace vlout::transfer
