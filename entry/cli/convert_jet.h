// `vloutsync convert-jet`: moves the two tables of a Jet (Access) database into a new component
// folder. The command calls it; the Jet file is only read.
#pragma once

#include <csignal>
#include <filesystem>
#include <ostream>

namespace vlout::entry::cli {

// Makes the component folder `folder` with all rows of the Jet file `source`, and tells in `report`
// what was taken over. Throws store::DatabaseError, and leaves nothing, if the source cannot be
// read completely or has no cards, if the conversion is interrupted, or if the folder already has a
// database.
void convertJet(const std::filesystem::path& source, const std::filesystem::path& folder,
                std::ostream& report, const volatile std::sig_atomic_t& interrupted);

}  // namespace vlout::entry::cli
