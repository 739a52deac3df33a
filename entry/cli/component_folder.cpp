#include "entry/cli/component_folder.h"

#include <cstdlib>
#include <fstream>
#include <system_error>

#include "entry/cli/sample_cards.h"
#include "store/sqlite/sqlite_connection.h"

namespace vlout::entry::cli {
namespace {

std::filesystem::path fromEnvironment(const char* variable) {
  const char* const value = std::getenv(variable);
  return value == nullptr ? "" : value;
}

// A folder for the user's own eyes; one that exists keeps the mode that it has.
void makePrivateFolder(const std::filesystem::path& folder) {
  if (std::filesystem::create_directories(folder)) {
    std::filesystem::permissions(folder, std::filesystem::perms::owner_all);
  }
}

void writeExportList(const std::filesystem::path& folder, const SampleSelection& selection) {
  makePrivateFolder(folder / "temp");
  const auto file = folder / "temp" / "exportlist.txt";
  std::ofstream list(file, std::ios::binary | std::ios::trunc);
  list << selection.folder << "\r\n";
  for (const std::int64_t card : selection.cards) list << card << "\r\n";
  list.close();
  if (!list) throw std::system_error(errno, std::generic_category(), file.string());
}

}  // namespace

std::filesystem::path componentFolder(const std::filesystem::path& given) {
  if (!given.empty()) return given;
  auto named = fromEnvironment("VELMORA_FOLDER");
  if (!named.empty()) return named;
  const auto data = fromEnvironment("XDG_DATA_HOME");
  if (data.is_absolute()) return data / "velmora";
  return fromEnvironment("HOME") / ".local/share/velmora";
}

std::filesystem::path contactFolder(const std::filesystem::path& given,
                                    const std::filesystem::path& componentFolder) {
  return given.empty() ? componentFolder / "contacts" : given;
}

void initializeFolder(const std::filesystem::path& folder) {
  makePrivateFolder(folder);
  store::createDatabase(store::ConnectionSettings{.componentFolder = folder}.databaseFile());
  makePrivateFolder(folder / "contacts");
}

void makeSampleFolder(const std::filesystem::path& folder, int cards, std::uint64_t seed) {
  initializeFolder(folder);
  try {
    store::SqliteConnection connection;
    connection.open({.componentFolder = folder});
    writeExportList(folder, fillWithSampleCards(connection, {.cards = cards, .seed = seed}));
  } catch (...) {
    std::error_code ignored;  // the failure to report is the one that led here
    std::filesystem::remove(store::ConnectionSettings{.componentFolder = folder}.databaseFile(),
                            ignored);
    throw;
  }
}

}  // namespace vlout::entry::cli
