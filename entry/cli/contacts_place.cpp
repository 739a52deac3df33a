#include "entry/cli/contacts_place.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fstream>
#include <memory>
#include <sys/stat.h>
#include <system_error>
#include <vector>

#include "entry/cli/book_side.h"
#include "posix/file_descriptor.h"
#include "text/ascii.h"
#include "text/file_path.h"
#include "text/language.h"
#include "text/regular_file.h"

namespace vlout::entry::cli {
namespace {

namespace fs = std::filesystem;

fs::path fileIn(const fs::path& componentFolder) {
  return componentFolder / "contacts.place";
}

fs::path inFull(const fs::path& contacts) {
  return bookIn(contacts) ? contacts : fs::absolute(contacts).lexically_normal();
}

// What the file says: a place, and on a second line the UID of a book.
struct Remembered {
  fs::path place;
  std::string bookUid;
};

std::optional<Remembered> remembered(const fs::path& componentFolder) {
  std::string text;
  try {
    text = text::readRegularFile(fileIn(componentFolder));
  } catch (const std::system_error& error) {
    if (error.code() == std::errc::no_such_file_or_directory) return std::nullopt;
    throw;
  }
  while (text.ends_with('\n')) text.pop_back();
  if (text.empty()) return std::nullopt;
  if (!bookIn(text::pathOf(text)))
    return Remembered{inFull(componentFolder / text::pathOf(text)), {}};
  const std::size_t end = text.find('\n');
  return Remembered{text::pathOf(text.substr(0, end)),
                    end == std::string::npos ? "" : text.substr(end + 1)};
}

bool isSamePlace(const Remembered& a, const Remembered& b) {
  if (!a.bookUid.empty() && !b.bookUid.empty()) return a.bookUid == b.bookUid;
  std::error_code missing;
  return a.place == b.place ||
         (!bookIn(a.place) && !bookIn(b.place) && fs::equivalent(a.place, b.place, missing));
}

std::string shown(const Remembered& contacts) {
  const std::string place = text::pathText(contacts.place);
  return contacts.bookUid.empty() ? place : place + " (" + contacts.bookUid + ")";
}

// Calls `use(name, isFolder)` for each entry until it returns true, and returns whether it did. An
// unreadable folder has no entries. Access times stay as they are.
template <typename Use>
bool anyEntry(const fs::path& folder, Use use) {
  const int opened = posix::openKeepingAccessTime(folder.c_str(), O_DIRECTORY);
  if (opened < 0) return false;
  const std::unique_ptr<DIR, int (*)(DIR*)> directory(::fdopendir(opened), ::closedir);
  while (const dirent* const entry = ::readdir(directory.get())) {
    struct stat status {};
    const bool isFolder =
        ::fstatat(opened, entry->d_name, &status, 0) == 0 && S_ISDIR(status.st_mode);
    if (use(std::string(entry->d_name), isFolder)) return true;
  }
  return false;
}

bool holdsCards(const fs::path& folder) {
  return anyEntry(folder, [](const std::string& name, bool isFolder) {
    return !isFolder && text::toAsciiUpper(name).ends_with(".VCF");
  });
}

}  // namespace

std::optional<fs::path> rememberedContacts(const fs::path& componentFolder) {
  const auto last = remembered(componentFolder);
  return last ? std::optional(last->place) : std::nullopt;
}

void rememberContacts(const fs::path& componentFolder, const fs::path& contacts,
                      const std::string& bookUid) {
  const auto last = remembered(componentFolder);
  if (last && last->place == contacts && last->bookUid == bookUid) return;
  fs::path place = contacts;
  const fs::path inside = contacts.lexically_relative(inFull(componentFolder));
  if (!bookIn(contacts) && !inside.empty() && *inside.begin() != "..") place = inside;
  const fs::path finished = fileIn(componentFolder).string() + ".new";
  fs::remove(finished);
  std::ofstream stream(finished, std::ios::binary | std::ios::trunc);
  stream << text::pathText(place) << '\n';
  if (!bookUid.empty()) stream << bookUid << '\n';
  stream.close();
  if (!stream) throw std::system_error(errno, std::generic_category(), text::pathText(finished));
  fs::rename(finished, fileIn(componentFolder));
}

fs::path contactsPlace(const fs::path& given, const fs::path& componentFolder) {
  if (!given.empty()) return inFull(given);
  return rememberedContacts(componentFolder).value_or(inFull(componentFolder / "contacts"));
}

std::string objectionToMove(const fs::path& componentFolder, const fs::path& contacts,
                            const std::string& bookUid) {
  const auto last = remembered(componentFolder);
  const Remembered now{contacts, bookUid};
  if (!last || isSamePlace(*last, now)) return {};
  return text::say(
      "지난 작업 때와 다른 연락처입니다.\r\n지난번: %1\r\n이번: %2\r\n",
      "These are not the contacts of the last run.\r\nLast time: %1\r\nThis time: %2\r\n",
      {shown(*last), shown(now)});
}

std::string objectionToFolderOfFolders(const fs::path& contacts) {
  if (bookIn(contacts) || holdsCards(contacts)) return {};
  std::vector<std::string> inside;
  anyEntry(contacts, [&](const std::string& name, bool isFolder) {
    if (isFolder && !name.starts_with('.') && holdsCards(contacts / name)) {
      inside.push_back(text::pathText(contacts / name));
    }
    return false;
  });
  if (inside.empty()) return {};
  std::sort(inside.begin(), inside.end());
  std::string message = text::say(
      "%1: 이 폴더에는 vCard가 없고 그 안의 폴더에 있습니다. 다음 가운데 하나를 "
      "연락처 폴더로 고르십시오:",
      "%1: this folder has no vCards, but folders in it do. Choose one of these as the folder of "
      "contacts:",
      {text::pathText(contacts)});
  for (const std::string& folder : inside) message += "\r\n  " + folder;
  return message;
}

}  // namespace vlout::entry::cli
