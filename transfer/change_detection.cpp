#include "transfer/change_detection.h"

namespace vlout::transfer {

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

}  // namespace vlout::transfer
