#include "outlook/vcard/folder_index.h"

#include <ctime>
#include <fstream>
#include <system_error>

#include "text/hash.h"
#include "text/packed.h"
#include "text/regular_file.h"

namespace vlout::outlook::vcard {
namespace {

// Change it whenever the format changes, or the rules for what is a key, a group or a card.
constexpr std::uint64_t kForm = 0x564C4F5554490002;

void put(std::string& bytes, const Moment& time) {
  text::pack(bytes, time.seconds);
  text::pack(bytes, time.nanoseconds);
}

Moment takeMoment(text::Unpacker& entry) {
  Moment time;
  time.seconds = entry.number<std::int64_t>();
  time.nanoseconds = entry.number<std::int32_t>();
  return time;
}

constexpr std::uint8_t kSettled = 1;
constexpr std::uint8_t kGroup = 1;
constexpr std::uint8_t kHasKey = 2;

std::string readWhole(const std::filesystem::path& path) {
  try {
    return text::readRegularFile(path, text::kLargestOwn);
  } catch (const std::system_error&) {
    return {};
  }
}

}  // namespace

bool hasSettled(const FileSight& sight, const Moment& now) {
  constexpr std::int64_t kSecond = 1'000'000'000;
  // Some file systems count whole seconds or two of them, the others the ticks of the system.
  const std::int64_t granularity = sight.changed.nanoseconds == 0 ? 2 * kSecond : kSecond / 50;
  const std::int64_t seconds = now.seconds - sight.changed.seconds;
  if (seconds > 2 || seconds < 0) return seconds > 2;
  return seconds * kSecond + now.nanoseconds - sight.changed.nanoseconds > granularity;
}

Moment currentMoment() {
  timespec now{};
  ::clock_gettime(CLOCK_REALTIME, &now);
  return {now.tv_sec, static_cast<std::int32_t>(now.tv_nsec)};
}

FolderIndex::FolderIndex(const std::filesystem::path& file, const FolderIdentity& folder)
    : bytes_(readWhole(file)) {
  text::Unpacker header(bytes_);
  const bool isOurs = header.number<std::uint64_t>() == kForm &&
                      header.number<std::uint64_t>() == folder.device &&
                      header.number<std::uint64_t>() == folder.inode;
  const auto count = header.number<std::uint64_t>();
  const auto hash = header.number<std::uint64_t>();
  position_ = bytes_.size() - header.left();
  if (!isOurs || !header.isGood() ||
      text::hashOf(std::string_view(bytes_).substr(position_)) != hash) {
    bytes_.clear();
    position_ = 0;
    return;
  }
  size_ = static_cast<std::size_t>(count);
}

bool FolderIndex::readEntry() {
  text::Unpacker entry(std::string_view(bytes_).substr(position_));
  name_ = entry.text();
  FileSight& sight = file_.sight;
  sight.device = entry.number<std::uint64_t>();
  sight.state.inode = entry.number<std::uint64_t>();
  sight.state.size = entry.number<std::int64_t>();
  const Moment modified = takeMoment(entry);
  sight.state.seconds = modified.seconds;
  sight.state.nanoseconds = modified.nanoseconds;
  sight.changed = takeMoment(entry);
  file_.isSettled = entry.number<std::uint8_t>() == kSettled;
  const auto cards = entry.number<std::uint32_t>();
  file_.cards.clear();
  for (std::uint32_t i = 0; i < cards && entry.isGood(); ++i) {
    KnownCard card;
    const auto flags = entry.number<std::uint8_t>();
    card.isGroup = (flags & kGroup) != 0;
    if ((flags & kHasKey) != 0) card.vlid = entry.text();
    card.nameLines = entry.text();
    card.hash = entry.number<std::uint64_t>();
    card.time = takeMoment(entry);
    file_.cards.push_back(std::move(card));
  }
  hasEntry_ = entry.isGood();
  position_ = bytes_.size() - entry.left();
  return hasEntry_;
}

const KnownFile* FolderIndex::find(std::string_view name) {
  while (!hasEntry_ || name_ < name) {
    if (position_ == bytes_.size() || !readEntry()) {
      position_ = bytes_.size();
      hasEntry_ = false;
      return nullptr;
    }
  }
  return name_ == name ? &file_ : nullptr;
}

FolderIndexWriter::FolderIndexWriter(std::size_t files) {
  constexpr std::size_t kUsualEntry = 136;
  entries_.reserve(files * kUsualEntry);
}

void FolderIndexWriter::add(std::string_view name, const KnownFile& file) {
  const FileSight& sight = file.sight;
  text::pack(entries_, name);
  text::pack(entries_, sight.device);
  text::pack(entries_, sight.state.inode);
  text::pack(entries_, sight.state.size);
  put(entries_, Moment{sight.state.seconds, sight.state.nanoseconds});
  put(entries_, sight.changed);
  text::pack(entries_, file.isSettled ? kSettled : std::uint8_t{0});
  text::pack(entries_, static_cast<std::uint32_t>(file.cards.size()));
  for (const KnownCard& card : file.cards) {
    text::pack(entries_,
               static_cast<std::uint8_t>((card.isGroup ? kGroup : 0) | (card.vlid ? kHasKey : 0)));
    if (card.vlid) text::pack(entries_, std::string_view(*card.vlid));
    text::pack(entries_, std::string_view(card.nameLines));
    text::pack(entries_, card.hash);
    put(entries_, card.time);
  }
  ++count_;
}

void FolderIndexWriter::save(const std::filesystem::path& file,
                             const FolderIdentity& folder) const {
  std::string header;
  for (const std::uint64_t number :
       {kForm, folder.device, folder.inode, count_, text::hashOf(entries_)}) {
    text::pack(header, number);
  }
  auto draft = file;
  draft += ".new";
  std::error_code ignored;
  std::filesystem::remove(draft, ignored);  // it may be a pipe
  {
    std::ofstream stream(draft, std::ios::binary | std::ios::trunc);
    stream << header << entries_;
    stream.close();
    if (stream) std::filesystem::rename(draft, file, ignored);
    if (stream && !ignored) return;
  }
  std::filesystem::remove(draft, ignored);
}

}  // namespace vlout::outlook::vcard
