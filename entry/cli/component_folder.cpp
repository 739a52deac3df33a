#include "entry/cli/component_folder.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <unistd.h>
#include <vector>

#include "store/sqlite/sqlite_connection.h"
#include "text/file_path.h"
#include "text/language.h"

namespace vlout::entry::cli {
namespace {

std::filesystem::path fromEnvironment(const char* variable) {
  const char* const value = std::getenv(variable);
  return value == nullptr ? "" : value;
}

// Makes a folder that only its user can read; an existing one keeps its mode. True if it was made.
bool makePrivateFolder(const std::filesystem::path& folder) {
  if (!std::filesystem::create_directories(folder)) return false;
  std::filesystem::permissions(folder, std::filesystem::perms::owner_all);
  return true;
}

// Folders that are removed with all their content, unless they are kept.
class NewFolders {
 public:
  NewFolders() = default;
  ~NewFolders() {
    std::error_code ignored;  // the failure to report is the one that led here
    for (auto folder = made_.rbegin(); folder != made_.rend(); ++folder) {
      std::filesystem::remove_all(*folder, ignored);
    }
  }
  NewFolders(const NewFolders&) = delete;
  NewFolders& operator=(const NewFolders&) = delete;

  void make(const std::filesystem::path& folder) {
    if (makePrivateFolder(folder)) made_.push_back(folder);
  }
  void keep() { made_.clear(); }

 private:
  std::vector<std::filesystem::path> made_;
};

[[noreturn]] void failExists(const std::filesystem::path& database) {
  throw store::DatabaseError(text::say("%1: 이미 있는 데이터베이스는 덮어쓰지 않습니다",
                                       "%1: there is a database already; it is not overwritten",
                                       {database.string()}));
}

void requireFree(const std::filesystem::path& database) {
  if (std::filesystem::exists(std::filesystem::symlink_status(database))) failExists(database);
  // SQLite would take the log of a lost database for the new one's and write it into that.
  const std::filesystem::path log = database.string() + "-wal";
  if (std::filesystem::exists(log)) {
    throw store::DatabaseError(text::say("%1: 없어진 데이터베이스의 기록이 남아 있습니다",
                                         "%1: the log of a database that is gone is still here",
                                         {log.string()}));
  }
}

// Gives the finished database its name, unless something else has it by now.
void place(const std::filesystem::path& finished, const std::filesystem::path& database) {
  if (std::filesystem::exists(finished.string() + "-wal")) {
    throw store::DatabaseError(text::say("%1: 데이터베이스를 다 쓰지 못했습니다",
                                         "%1: the database could not be written completely",
                                         {finished.string()}));
  }
  if (renameat2(AT_FDCWD, finished.c_str(), AT_FDCWD, database.c_str(), RENAME_NOREPLACE) == 0) {
    return;
  }
  const int failure = errno;
  if (failure == EEXIST || std::filesystem::exists(database)) failExists(database);
  if (failure != EINVAL && failure != ENOSYS) {
    throw std::system_error(failure, std::generic_category(), database.string());
  }
  std::filesystem::rename(finished, database);  // a file system that knows the plain one only
}

void writeExportList(const std::filesystem::path& file, const std::string& list) {
  std::ofstream stream(file, std::ios::binary | std::ios::trunc);
  stream << list;
  stream.close();
  if (!stream) throw std::system_error(errno, std::generic_category(), file.string());
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

std::filesystem::path existingFolder(const std::filesystem::path& given) {
  auto folder = componentFolder(given);
  std::error_code unknown;  // whoever reads the folder reports it
  if (std::filesystem::exists(folder, unknown) || unknown) return folder;
  throw std::runtime_error(text::say("%1: 폴더가 없습니다. 새 폴더는 vloutsync init 으로 만듭니다.",
                                     "%1: there is no such folder. vloutsync init makes a new one.",
                                     {text::pathText(folder)}));
}

void initializeFolder(const std::filesystem::path& folder, const Filler& fill) {
  const auto database = store::ConnectionSettings{.componentFolder = folder}.databaseFile();
  requireFree(database);
  NewFolders made;
  made.make(folder);
  made.make(folder / "contacts");
  NewFolders workshop;
  const store::ConnectionSettings inWorkshop{.componentFolder =
                                                 folder / (".new-" + std::to_string(getpid()))};
  workshop.make(inWorkshop.componentFolder);
  store::sqlite::createDatabase(inWorkshop.databaseFile());
  std::string list;
  if (fill) {
    store::sqlite::SqliteConnection connection;
    connection.open(inWorkshop);
    list = fill(connection);
  }
  if (!list.empty()) {
    made.make(folder / "temp");
    writeExportList(folder / "temp" / "exportlist.txt", list);
  }
  place(inWorkshop.databaseFile(), database);
  made.keep();
}

}  // namespace vlout::entry::cli
