// A component folder on Linux: where it lies, and making a new one. The subcommands of vloutsync
// call it.
#pragma once

#include <filesystem>
#include <functional>
#include <string>

#include "store/connection.h"

namespace vlout::entry::cli {

// `given`, else $VELMORA_FOLDER, else velmora in the user's data folder.
[[nodiscard]] std::filesystem::path componentFolder(const std::filesystem::path& given);

// Works on the database of a new component folder. What it returns becomes the host's export list,
// unless it is empty.
using Filler = std::function<std::string(store::Connection&)>;

// Makes a new component folder with an empty contact folder and a database that `fill`, where there
// is one, has worked on. The database is made in a place of its own and appears in the folder only
// once it is whole; when anything fails, nothing is left. Throws store::DatabaseError when there is
// a database already, std::system_error when a folder cannot be made, and what `fill` throws.
void initializeFolder(const std::filesystem::path& folder, const Filler& fill = {});

}  // namespace vlout::entry::cli
