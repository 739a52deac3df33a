// Where the contacts of a component folder are: in a folder of vCards, or in an address book of the
// desktop ("book:NAME"). The component folder remembers the place of the last run, so that a run
// with another place does not go unnoticed, not even one whose book has only the same name.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace vlout::entry::cli {

// The place of the last run; nothing before the first one. Throws std::system_error if it cannot be
// read.
[[nodiscard]] std::optional<std::filesystem::path> rememberedContacts(
    const std::filesystem::path& componentFolder);

// A place inside the component folder moves with it. `bookUid` is that of a book. Throws
// std::system_error.
void rememberContacts(const std::filesystem::path& componentFolder,
                      const std::filesystem::path& contacts, const std::string& bookUid = "");

// `given`, else the place of the last run, else `contacts` in the component folder; a folder as an
// absolute path.
[[nodiscard]] std::filesystem::path contactsPlace(const std::filesystem::path& given,
                                                  const std::filesystem::path& componentFolder);

// Why a run on these contacts must be confirmed first: the last run used others. Empty if it did
// not. `bookUid` is that of a book, if it is known.
[[nodiscard]] std::string objectionToMove(const std::filesystem::path& componentFolder,
                                          const std::filesystem::path& contacts,
                                          const std::string& bookUid = "");

// Why these cannot be the intended contacts: the folder has no vCards, but the folders in it, which
// the text names, do. Empty for any other place.
[[nodiscard]] std::string objectionToFolderOfFolders(const std::filesystem::path& contacts);

}  // namespace vlout::entry::cli
