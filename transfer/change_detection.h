// Which side of a pair has changed since the last transfer. The three dates of the row and the
// contact's own modification time are all the memory there is: after every transfer the dates hold
// the contact's time (transfer/row_stamps.h).
#pragma once

#include "text/date_time.h"
#include "transfer/row_stamps.h"

namespace vlout::transfer {

enum class Side { Neither, Row, Contact };

struct PairState {
  Side newer = Side::Neither;
  bool conflict =
      false;  // both sides changed since the last transfer, and the caller asked for the test

  bool operator==(const PairState&) const = default;
};

// Whether and how a loop tests for a conflict.
enum class ConflictTest {
  Off,
  Straight,   // export and import: the row against its last sync, the contact against its own date
  Crosswise,  // two-way sync: the other way round, deliberately
};

// `contactTime` may have a fraction; it is cut to whole seconds here.
[[nodiscard]] PairState classifyPair(const RowStamps& row, text::DateTime contactTime,
                                     ConflictTest test);

}  // namespace vlout::transfer
