// Completes what a killed or failed run has left unfinished between a contact and its row. If the
// contact was written from the row and neither has changed since, only the row's dates are missing,
// and they are set. If the row has its dates but the contact has lost the save, the dates are taken
// back. The recorder calls it at the start of the next run or preview.
#pragma once

#include <filesystem>

#include "history/runs.h"
#include "outlook/contact_store.h"
#include "store/sqlite/sqlite_connection.h"

namespace vlout::history {

// Called for the beginning run, with its connection, once the contacts are connected. `folder` is
// the contact folder, `current` the run's own number, or 0 in a preview. The first throws
// DatabaseError and whatever a write of the run throws, the second DatabaseError, ContactStoreError
// and std::system_error.
void completeDates(const Runs& runs, const std::filesystem::path& folder, int current,
                   store::sqlite::SqliteConnection& connection, outlook::ContactStore& contacts);
void completeSaves(const Runs& runs, const std::filesystem::path& folder, int current,
                   store::sqlite::SqliteConnection& connection, outlook::ContactStore& contacts);

}  // namespace vlout::history
