// Where the contacts of a component folder lie: a folder of vCards, or an address book of the
// desktop ("book:NAME"). The place of the last run is remembered in the component folder, so that a
// run with another one does not go unnoticed.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace vlout::entry::cli {

// The place of the last run; nothing before the first one. Throws std::system_error when it is
// remembered and cannot be read.
[[nodiscard]] std::optional<std::filesystem::path> rememberedContacts(
    const std::filesystem::path& componentFolder);

// A place in the component folder goes along when that is moved. Throws std::system_error.
void rememberContacts(const std::filesystem::path& componentFolder,
                      const std::filesystem::path& contacts);

// `given`, else the place of the last run, else contacts in the component folder; a folder in full.
[[nodiscard]] std::filesystem::path contactsPlace(const std::filesystem::path& given,
                                                  const std::filesystem::path& componentFolder);

// Why a run on these contacts is to be confirmed first: the last one was on others. Empty when it
// was not.
[[nodiscard]] std::string objectionToMove(const std::filesystem::path& componentFolder,
                                          const std::filesystem::path& contacts);

// Why these cannot be the contacts that are meant: a folder that holds no vCard while folders in it
// do, which it names. Empty for any other place.
[[nodiscard]] std::string objectionToFolderOfFolders(const std::filesystem::path& contacts);

}  // namespace vlout::entry::cli
