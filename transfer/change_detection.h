// Which side of a pair has changed since the last transfer, and what stamps a row by itself;
// RowUpdate stamps one together with its values. The three dates on a row and the contact's own
// modification time are all the memory there is: after every transfer the three dates hold the
// contact's time.
#pragma once

#include <optional>
#include <string_view>

#include "store/connection.h"
#include "text/date_time.h"

namespace vlout::transfer {

// The dates of a row. A date that is empty or unreadable is none, and older than every real one.
struct RowStamps {
  std::optional<text::DateTime> lastModified;     // Last_moddate
  std::optional<text::DateTime> outlookModified;  // Outlook_modate
  std::optional<text::DateTime> lastSync;         // VLLastsync_date
};

[[nodiscard]] RowStamps readStamps(const store::Recordset& row);

enum class Side { Neither, Row, Contact };

struct PairState {
  Side newer = Side::Neither;
  bool conflict = false;  // both sides changed since the last transfer, and the loop asked

  bool operator==(const PairState&) const = default;
};

// Whether and how a loop tests for a conflict.
enum class ConflictTest {
  Off,
  Straight,   // export and import: the row against its last sync, the contact against its own date
  Crosswise,  // two-way sync: the other way round, deliberately
};

// `contactTime` may still have its fraction; it is cut to whole seconds here.
[[nodiscard]] PairState classifyPair(const RowStamps& row, text::DateTime contactTime,
                                     ConflictTest test);

// Sets the three dates of a row to `stamp`. False when there is no such row; throws DatabaseError
// when the statement fails.
bool writeSyncDates(store::Connection& connection, text::DateTime stamp, std::string_view rowId);

// For a row that was written to its contact in vain: the pair counts as changed on both sides from
// now on. `contactTime` is the contact's, where it is known. Throws DatabaseError.
void forgetTransfer(store::Connection& connection, std::string_view rowId,
                    std::optional<text::DateTime> contactTime);

}  // namespace vlout::transfer
