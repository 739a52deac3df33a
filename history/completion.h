// Completes what a run that was killed, or failed, has left between a contact and its row: the
// contact was written from the row, neither has changed since, and only the row's dates are
// missing. The recorder calls it at the start of the next run, or of its preview.
#pragma once

#include <filesystem>

#include "history/runs.h"
#include "outlook/contact_store.h"
#include "store/sqlite/sqlite_connection.h"

namespace vlout::history {

// Stamps the rows of which it is certain, through the connection of the run that begins. `folder`
// is the contact folder, `current` the run's own number, 0 in a preview. Throws DatabaseError and
// whatever else a write of that run throws.
void completeCutShort(const Runs& runs, const std::filesystem::path& folder, int current,
                      store::SqliteConnection& connection, outlook::ContactStore& contacts);

}  // namespace vlout::history
