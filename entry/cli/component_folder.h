// A component folder on Linux: finds it, and makes a new one. The commands of vloutsync use it.
#pragma once

#include <filesystem>
#include <functional>
#include <string>

#include "store/connection.h"

namespace vlout::entry::cli {

// `given`, else $VELMORA_FOLDER, else velmora in the user's data folder.
[[nodiscard]] std::filesystem::path componentFolder(const std::filesystem::path& given);

// The same, but it must exist. Throws std::runtime_error, which says how to make one.
[[nodiscard]] std::filesystem::path existingFolder(const std::filesystem::path& given);

// Fills the database of a new component folder. What it returns becomes the host's export list,
// unless it is empty.
using Filler = std::function<std::string(store::Connection&)>;

// Makes a new component folder with an empty contact folder and a database that `fill`, if given,
// has filled. The database is made elsewhere and appears in the folder only when it is complete; if
// anything fails, nothing is left. Throws store::DatabaseError if there is a database already,
// std::system_error if a folder cannot be made, and whatever `fill` throws.
void initializeFolder(const std::filesystem::path& folder, const Filler& fill = {});

}  // namespace vlout::entry::cli
