#include "tests/support/book_folder.h"

#include <fcntl.h>
#include <sys/stat.h>

#include "outlook/evolution/evolution_store.h"
#include "tests/support/temporary_folder.h"

namespace vlout::tests {

using namespace outlook::evolution;

BookFolder::BookFolder(std::filesystem::path componentFolder, std::filesystem::path contacts,
                       std::string bookUid)
    : componentFolder_(std::move(componentFolder)),
      contacts_(std::move(contacts)),
      uid_(std::move(bookUid)) {
  const auto book = Desktop([] {}).open(uid_);
  for (const StoredCard& card : book->list()) book->remove(card.uid);
}

void BookFolder::intoBook() const {
  EvolutionStore store({.componentFolder = componentFolder_,
                        .desktop = std::make_shared<Desktop>([] {}),
                        .book = uid_});
  if (!store.connect()) throw outlook::ContactStoreError(store.connectFailure());
  store.look();
  const auto mirror = mirrorOf(componentFolder_, uid_);
  for (const std::string& name : fileNames(mirror)) {
    if (!std::filesystem::exists(contacts_ / name)) store.remove(readFile(mirror / name));
  }
  for (const std::string& name : fileNames(contacts_)) {
    std::string text = readFile(contacts_ / name);
    struct stat status {};
    ::stat((contacts_ / name).c_str(), &status);
    if (text == readFile(mirror / name)) continue;
    const std::size_t uid = text.find("UID:");
    const std::string line = "UID:" + name.substr(0, name.size() - 4) + "\r\n";
    if (uid == std::string::npos) {
      text.insert(text.find("END:VCARD"), line);
    } else {
      text.replace(uid, text.find('\n', uid) + 1 - uid, line);
    }
    store.putBack(text, {status.st_mtim.tv_sec, static_cast<std::int32_t>(status.st_mtim.tv_nsec)});
  }
  outOfBook();
}

void BookFolder::outOfBook() const {
  {
    EvolutionStore store({.componentFolder = componentFolder_,
                          .desktop = std::make_shared<Desktop>([] {}),
                          .book = uid_});
    if (!store.connect()) throw outlook::ContactStoreError(store.connectFailure());
    store.look();
  }
  for (const std::string& name : fileNames(contacts_)) std::filesystem::remove(contacts_ / name);
  const auto mirror = mirrorOf(componentFolder_, uid_);
  for (const std::string& name : fileNames(mirror)) {
    std::filesystem::copy(mirror / name, contacts_ / name);
    struct stat status {};
    ::stat((mirror / name).c_str(), &status);
    const timespec times[2] = {status.st_atim, status.st_mtim};
    ::utimensat(AT_FDCWD, (contacts_ / name).c_str(), times, 0);
  }
}

}  // namespace vlout::tests
