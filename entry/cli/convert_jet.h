// `vloutsync convert-jet`: moves the two tables of a Jet (Access) database into a new component
// folder. main() reads the arguments and calls it; the Jet file is only read.
#pragma once

#include <csignal>
#include <filesystem>
#include <ostream>

namespace vlout::entry::cli {

// Makes the component folder `folder` with all rows of the Jet file `source` and says in `report`
// what was taken over. Throws store::DatabaseError when the source cannot be read whole, lacks the
// cards or is interrupted, or when the folder has a database already; nothing is left then.
void convertJet(const std::filesystem::path& source, const std::filesystem::path& folder,
                std::ostream& report, const volatile std::sig_atomic_t& interrupted);

}  // namespace vlout::entry::cli
