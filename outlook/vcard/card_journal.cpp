#include "outlook/vcard/card_journal.h"

#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

#include "outlook/vcard/folder.h"
#include "posix/file_descriptor.h"
#include "text/hash.h"

namespace vlout::outlook::vcard {
namespace {

// Stands at the beginning of each record, before the hash of the rest.
constexpr std::string_view kRecord = "\nsave ";
constexpr std::size_t kHashSize = 16;

std::string recordOf(const SavedCard& save) {
  std::string rest = ' ' + std::to_string(save.file.size()) + ' ' +
                     std::to_string(save.text.size()) + ' ' + std::to_string(save.willBe.size) +
                     ' ' + std::to_string(save.willBe.seconds) + ' ' +
                     std::to_string(save.willBe.nanoseconds) + ' ' + std::to_string(save.card) +
                     ' ' + std::to_string(save.before) + '\n' + save.file + save.text;
  char hash[kHashSize + 1];
  std::snprintf(hash, sizeof hash, "%016" PRIx64, text::hashOf(rest));
  return std::string(kRecord).append(hash).append(rest);
}

// Reads the record at the beginning of a text; its size, or 0 when there is no whole one.
std::size_t readRecord(std::string_view text, SavedCard& save) {
  constexpr std::size_t kLongestHeader = 200;
  const std::string beginning(text.substr(0, kLongestHeader));
  std::uint64_t hash = 0;
  std::size_t nameSize = 0;
  std::size_t textSize = 0;
  int header = 0;
  const int parts = std::sscanf(
      beginning.c_str(),
      "\nsave %16" SCNx64 " %zu %zu %" SCNd64 " %" SCNd64 " %" SCNd32 " %zu %" SCNu64 "%n", &hash,
      &nameSize, &textSize, &save.willBe.size, &save.willBe.seconds, &save.willBe.nanoseconds,
      &save.card, &save.before, &header);
  const std::size_t start = static_cast<std::size_t>(header) + 1;
  if (parts != 8 || start > text.size() || nameSize > text.size() - start ||
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

void add(SavedCard save, JournalFiles& files) {
  // The journal of a shared folder may be anybody's: it must not lead out of the folder.
  if (!isCardFile(save.file) || save.file.find('/') != std::string::npos) return;
  JournalFile& file = files[save.file];
  file.willBe = save.willBe;
  CardChange& change = file.changes[save.card];
  change.earlier.push_back(save.before);
  change.text = std::move(save.text);
}

}  // namespace

CardJournal::~CardJournal() {
  if (file_ >= 0) ::close(file_);
}

bool CardJournal::append(const SavedCard& save) {
  if (file_ < 0) {
    file_ = posix::openRegular(kName, O_WRONLY | O_CREAT | O_APPEND | O_NOFOLLOW, folder_);
    if (file_ < 0) return false;
  }
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

void CardJournal::remove() {
  if (file_ >= 0) ::close(file_);
  file_ = -1;
  ::unlinkat(folder_, kName, 0);
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

void addLostSaves(const std::string& file, const MergedFile& merged, std::vector<LostSave>& lost) {
  for (const std::string& person : merged.others) {
    lost.push_back({person, file + ": 그 사이에 다른 프로그램이 바꾼 연락처라 그대로 두었습니다"});
  }
}

std::vector<LostSave> completeSaves(Folder& folder) {
  std::vector<LostSave> lost;
  const auto files = folder.gathered();
  if (!files) return lost;
  static_cast<void>(folder.cardFiles());  // hard links follow
  for (const auto& [name, file] : *files) {
    std::string text;
    const auto state = folder.read(name, text);
    const MergedFile merged = mergeCards(text, file.changes);
    if (state && merged.isChanged) static_cast<void>(folder.rewrite(name, merged.bytes, *state));
    addLostSaves(name, merged, lost);
  }
  folder.flush();
  folder.dropGathered();
  return lost;
}

}  // namespace vlout::outlook::vcard
