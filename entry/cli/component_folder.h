// A component folder on Linux: where it lies, and making a new one. The subcommands of vloutsync
// call it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>

#include "store/connection.h"

namespace vlout::entry::cli {

// `given`, else $VELMORA_FOLDER, else velmora in the user's data folder.
[[nodiscard]] std::filesystem::path componentFolder(const std::filesystem::path& given);

// The folder of vCards: `given`, else contacts in the component folder.
[[nodiscard]] std::filesystem::path contactFolder(const std::filesystem::path& given,
                                                  const std::filesystem::path& componentFolder);

// Makes a new component folder with an empty database and an empty contact folder. Throws
// store::DatabaseError when there is a database already, std::filesystem::filesystem_error when a
// folder cannot be made.
void initializeFolder(const std::filesystem::path& folder);

// The same with a database that `fill` has worked on. The database is made in a place of its own
// and appears in the folder only once it is whole; when `fill` throws, nothing is left.
void initializeFolder(const std::filesystem::path& folder,
                      const std::function<void(store::Connection&)>& fill);

// The same as the first, filled with `cards` sample cards and an export list. When that fails, the
// database is taken away again.
void makeSampleFolder(const std::filesystem::path& folder, int cards, std::uint64_t seed);

}  // namespace vlout::entry::cli
