// The folder table as the transfers need it: which folders lie below a folder.
#pragma once

#include <string>
#include <string_view>

#include "store/connection.h"

namespace vlout::store {

// The folder's own id and the ids of every folder below it, joined with ",". Each id occurs once,
// even if the parents in the table form a cycle. Throws DatabaseError if the table cannot be read
// or `folderId` is not a number.
[[nodiscard]] std::string folderWithSubfolders(Connection& connection, std::string_view folderId);

}  // namespace vlout::store
