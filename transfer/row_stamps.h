// The three dates that a row keeps of its last transfer, and who may stamp a row with them:
// `stampRow`, and RowUpdate, which writes values along with the dates and takes its clause from
// here. Nobody else sets them.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "store/connection.h"
#include "text/date_time.h"

namespace vlout::transfer {

inline constexpr std::array<std::string_view, 3> kStampColumns{"Last_moddate", "Outlook_modate",
                                                               "VLLastsync_date"};

// A date that is empty or unreadable is none, and older than every real one.
struct RowStamps {
  std::optional<text::DateTime> lastModified;     // Last_moddate
  std::optional<text::DateTime> outlookModified;  // Outlook_modate
  std::optional<text::DateTime> lastSync;         // VLLastsync_date
};

[[nodiscard]] RowStamps readStamps(const store::Recordset& row);

// Sets the three dates of a row to `stamp`. False when there is no such row; throws DatabaseError
// when the statement fails.
bool stampRow(store::Connection& connection, text::DateTime stamp, std::string_view rowId);

// For a row that was written to its contact in vain: from now on the pair counts as changed on both
// sides. `contactTime` is the contact's, where it is known. Throws DatabaseError.
void forgetTransfer(store::Connection& connection, std::string_view rowId,
                    std::optional<text::DateTime> contactTime);

// The clause of an UPDATE that sets the three dates to `stamp`.
[[nodiscard]] std::string stampClause(text::DateTime stamp, std::string_view separator = ",");

// The statement that gives a row the three dates back that it has now.
[[nodiscard]] std::string restoreStatement(const store::Recordset& row, std::string_view rowId);

}  // namespace vlout::transfer
