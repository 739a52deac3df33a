// Completes what a run that was killed, or failed, has left between a contact and its row: where
// the contact was written from the row, neither has changed since, and only the row's dates are
// missing, it sets them; where the row has its dates and the contact has lost the save, it takes
// them back. The recorder calls it at the start of the next run, or of its preview.
#pragma once

#include <filesystem>

#include "history/runs.h"
#include "outlook/contact_store.h"
#include "store/sqlite/sqlite_connection.h"

namespace vlout::history {

// For the run that begins, through its connection, after the contacts have been connected to.
// `folder` is the contact folder, `current` the run's own number, 0 in a preview. The first throws
// DatabaseError and whatever else a write of that run throws, the second DatabaseError,
// ContactStoreError and std::system_error.
void completeDates(const Runs& runs, const std::filesystem::path& folder, int current,
                   store::sqlite::SqliteConnection& connection, outlook::ContactStore& contacts);
void completeSaves(const Runs& runs, const std::filesystem::path& folder, int current,
                   store::sqlite::SqliteConnection& connection, outlook::ContactStore& contacts);

}  // namespace vlout::history
