#include "outlook/vcard/card_journal.h"

#include <cerrno>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <iterator>
#include <set>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include "outlook/vcard/card_file.h"
#include "outlook/vcard/folder.h"
#include "posix/file_descriptor.h"
#include "text/hash.h"
#include "text/language.h"

namespace vlout::outlook::vcard {
namespace {

// Begins each record, before the hash of the rest.
constexpr std::string_view kRecord = "\nsave ";
constexpr std::size_t kHashSize = 16;
// The card number of a record that is about its whole file.
constexpr std::size_t kNoCard = SIZE_MAX;

constexpr const char* kName = ".vloutsync-journal";

std::string recordOf(const SavedCard& save) {
  std::string rest =
      ' ' + std::to_string(save.file.size()) + ' ' + std::to_string(save.text.size()) + ' ' +
      std::to_string(save.willBe.size) + ' ' + std::to_string(save.willBe.seconds) + ' ' +
      std::to_string(save.willBe.nanoseconds) + ' ' + std::to_string(save.card) + ' ' +
      std::to_string(save.before) + ' ' + std::to_string(save.row) + '\n' + save.file + save.text;
  char hash[kHashSize + 1];
  std::snprintf(hash, sizeof hash, "%016" PRIx64, text::hashOf(rest));
  return std::string(kRecord).append(hash).append(rest);
}

// Reads the record at the beginning of a text. Returns its size, or 0 if it is not complete.
std::size_t readRecord(std::string_view text, SavedCard& save) {
  constexpr std::size_t kLongestHeader = 200;
  const std::string beginning(text.substr(0, kLongestHeader));
  std::uint64_t hash = 0;
  std::size_t nameSize = 0;
  std::size_t textSize = 0;
  int header = 0;
  const int parts =
      std::sscanf(beginning.c_str(),
                  "\nsave %16" SCNx64 " %zu %zu %" SCNd64 " %" SCNd64 " %" SCNd32 " %zu %" SCNu64
                  " %" SCNd64 "%n",
                  &hash, &nameSize, &textSize, &save.willBe.size, &save.willBe.seconds,
                  &save.willBe.nanoseconds, &save.card, &save.before, &save.row, &header);
  const std::size_t start = static_cast<std::size_t>(header) + 1;
  if (parts != 9 || start > text.size() || nameSize > text.size() - start ||
      textSize > text.size() - start - nameSize) {
    return 0;
  }
  const std::size_t end = start + nameSize + textSize;
  const std::size_t hashed = kRecord.size() + kHashSize;
  if (hashed > end || text::hashOf(text.substr(hashed, end - hashed)) != hash) return 0;
  save.file = text.substr(start, nameSize);
  save.text = text.substr(start + nameSize, textSize);
  return end;
}

void markWritten(CardChanges& changes, const std::string& lost) {
  std::istringstream numbers(lost);
  const std::set<std::size_t> others{std::istream_iterator<std::size_t>(numbers), {}};
  for (auto& [card, change] : changes) change.isWritten = !others.contains(card);
}

void add(SavedCard save, JournalFiles& files) {
  // In a shared folder anybody may have written the journal, so it must not lead out of the folder.
  if (!isCardFile(save.file) || save.file.find('/') != std::string::npos) return;
  if (save.card == kNoCard) {
    markWritten(files[save.file].changes, save.text);
    return;
  }
  JournalFile& file = files[save.file];
  file.willBe = save.willBe;
  CardChange& change = file.changes[save.card];
  change.earlier.push_back(save.before);
  change.text = std::move(save.text);
  if (save.row != 0) change.row = save.row;
  change.isWritten = false;
}

}  // namespace

CardJournal::~CardJournal() {
  if (file_ >= 0) ::close(file_);
}

// Skips names taken by something that is not our file: a folder, a link, a named pipe.
bool CardJournal::open() {
  constexpr int kFlags = O_WRONLY | O_CREAT | O_APPEND | O_NOFOLLOW;
  for (const std::string& name : names()) {
    if (file_ < 0) file_ = posix::openRegular(name.c_str(), kFlags, folder_);
  }
  return file_ >= 0;
}

bool CardJournal::append(const SavedCard& save) {
  if (!open()) return false;
  const std::string record = recordOf(save);
  const off_t end = ::lseek(file_, 0, SEEK_END);
  std::string_view left = record;
  while (!left.empty()) {
    const ssize_t written = ::write(file_, left.data(), left.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) {
      const int error = written < 0 ? errno : ENOSPC;
      if (::ftruncate(file_, end) != 0) errno = 0;  // then it is a record that cannot be read
      errno = error;
      return false;
    }
    left.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

void CardJournal::appendWritten(const std::string& file, const std::vector<std::size_t>& lost) {
  SavedCard mark;
  mark.file = file;
  mark.card = kNoCard;
  for (const std::size_t card : lost) mark.text += std::to_string(card) + ' ';
  if (!append(mark)) errno = 0;
}

void CardJournal::remove() {
  if (file_ >= 0) ::close(file_);
  file_ = -1;
  for (const std::string& name : names()) {
    struct stat status {};
    const bool isOurs = ::fstatat(folder_, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
                        S_ISREG(status.st_mode);
    if (isOurs) ::unlinkat(folder_, name.c_str(), 0);
  }
}

std::vector<std::string> CardJournal::names() {
  std::vector<std::string> names{kName};
  for (int number = 1; number < 10; ++number) {
    names.push_back(kName + ('.' + std::to_string(number)));
  }
  return names;
}

JournalFiles CardJournal::parse(std::string_view text) {
  JournalFiles files;
  for (std::size_t at = 0; at < text.size();) {
    SavedCard save;
    const std::size_t size = readRecord(text.substr(at), save);
    if (size > 0) add(std::move(save), files);
    at = size > 0 ? at + size : text.find(kRecord, at + 1);
  }
  return files;
}

void addLostSaves(const std::string& file, const std::optional<FileState>& state,
                  const CardChanges& changes, const MergedFile& merged,
                  std::vector<LostSave>& lost) {
  for (const std::size_t card : merged.lost) {
    const CardChange& change = changes.at(card);
    LostSave save{
        firstDisplayName(change.text),
        state ? text::say(
                    "%1: 그 사이에 다른 프로그램이 바꾼 연락처라 그대로 두었습니다",
                    "%1: another program has changed this contact in the meantime; left as it is",
                    {file})
              : text::say("%1: 그 사이에 다른 프로그램이 지웠습니다",
                          "%1: another program has deleted this contact in the meantime", {file})};
    if (change.row != 0) save.row = std::to_string(change.row);
    if (state) save.contactTime = text::fromUnixTime(state->seconds, 0);
    lost.push_back(std::move(save));
  }
}

CompletedSaves completeSaves(Folder& folder) {
  CompletedSaves completed;
  const auto files = folder.gathered();
  if (!files) return completed;
  static_cast<void>(folder.cardFiles());  // hard links follow
  for (const auto& [name, file] : *files) {
    std::string text;
    const auto state = folder.read(name, text);
    const MergedFile merged = mergeCards(text, file.changes);
    if (state && merged.isChanged) {
      completed.written.emplace(name, folder.rewrite(name, merged.bytes, *state));
      folder.gatheredWritten(name, merged.lost);
    }
    addLostSaves(name, state, file.changes, merged, completed.lost);
  }
  folder.flush();
  return completed;
}

}  // namespace vlout::outlook::vcard
