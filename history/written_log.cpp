#include "history/written_log.h"

#include <cerrno>
#include <fcntl.h>
#include <set>
#include <string_view>
#include <system_error>
#include <unistd.h>

#include "posix/file_descriptor.h"
#include "text/hash.h"
#include "text/language.h"
#include "text/packed.h"
#include "text/regular_file.h"

namespace vlout::history {
namespace {

namespace fs = std::filesystem;

constexpr char kFile = 'F';
constexpr char kRow = 'R';
constexpr char kEnd = 'E';

[[noreturn]] void fail(const fs::path& path) {
  throw std::system_error(errno, std::generic_category(), path.string());
}

void pack(std::string& entry, const std::optional<FileState>& state) {
  text::pack(entry, static_cast<char>(state ? 1 : 0));
  if (!state) return;
  text::pack(entry, std::int64_t{state->size});
  text::pack(entry, std::int64_t{state->seconds});
  text::pack(entry, std::int64_t{state->nanoseconds});
}

void pack(std::string& entry, const Cells& cells) {
  text::pack(entry, static_cast<std::uint32_t>(cells.size()));
  for (const auto& [column, cell] : cells) {
    text::pack(entry, std::string_view(column));
    text::pack(entry, std::string_view(cell));
  }
}

std::optional<FileState> unpackState(text::Unpacker& entry) {
  if (entry.number<char>() == 0) return std::nullopt;
  FileState state;
  state.size = entry.number<std::int64_t>();
  state.seconds = entry.number<std::int64_t>();
  state.nanoseconds = static_cast<std::int32_t>(entry.number<std::int64_t>());
  return state;
}

Cells unpackCells(text::Unpacker& entry) {
  Cells cells;
  for (auto count = entry.number<std::uint32_t>(); count > 0 && entry.isGood(); --count) {
    std::string column(entry.text());
    cells.emplace(std::move(column), entry.text());
  }
  return cells;
}

FileWrite unpackFile(text::Unpacker& entry) {
  FileWrite write;
  write.name = entry.text();
  write.before = unpackState(entry);
  write.after = unpackState(entry);
  if (entry.number<char>() != 0) write.card = entry.number<std::int64_t>();
  write.row = entry.number<std::uint64_t>();
  return write;
}

RowWrite unpackRow(text::Unpacker& entry) {
  RowWrite write;
  write.key.table = entry.text();
  write.key.row = entry.number<std::int64_t>();
  write.change = static_cast<Change>(entry.number<char>());
  write.before = unpackCells(entry);
  write.after = unpackCells(entry);
  return write;
}

}  // namespace

Written Written::read(const fs::path& log, bool hasEnded) {
  const std::string bytes = text::readRegularFile(log, text::kLargestOwn);
  Written written;
  bool isClosed = false;
  for (text::Unpacker left(bytes); left.left() > 0;) {
    const auto hash = left.number<std::uint64_t>();
    const std::string_view whole = left.text();
    if (!left.isGood() || text::hashOf(whole) != hash || whole.empty()) break;
    text::Unpacker entry(whole);
    const char kind = entry.number<char>();
    isClosed = isClosed || kind == kEnd;
    if (kind == kFile) written.files.push_back(unpackFile(entry));
    if (kind == kRow) written.rows.push_back(unpackRow(entry));
    if (!entry.isGood()) throw DamagedLog(log);
    written.size = bytes.size() - left.left();
  }
  if (hasEnded && !isClosed) throw DamagedLog(log);
  return written;
}

std::string Written::counts() const {
  std::set<RowKey> keys;
  std::set<std::string_view> names;
  for (const RowWrite& row : rows) keys.insert(row.key);
  for (const FileWrite& file : files) names.insert(file.name);
  return text::say("명함=%1/연락처=%2", "cards=%1/contacts=%2",
                   {std::to_string(keys.size()), std::to_string(names.size())});
}

std::ptrdiff_t Written::filesAdded() const {
  std::map<std::string_view, bool> isThere;
  std::ptrdiff_t added = 0;
  for (const FileWrite& file : files) {
    const bool was = isThere.emplace(file.name, file.before.has_value()).first->second;
    added += (file.after ? 1 : 0) - (was ? 1 : 0);
    isThere[file.name] = file.after.has_value();
  }
  return added;
}

WrittenLog::WrittenLog(const fs::path& log)
    : path_(log), descriptor_(posix::openRegular(log.c_str(), O_WRONLY | O_CREAT | O_APPEND)) {
  if (descriptor_ < 0) fail(log);
}

WrittenLog::WrittenLog(const fs::path& log, std::size_t size) : WrittenLog(log) {
  if (::ftruncate(descriptor_, static_cast<off_t>(size)) != 0) fail(log);
}

WrittenLog::~WrittenLog() {
  ::close(descriptor_);
}

void WrittenLog::file(const FileWrite& write) {
  std::string entry(1, kFile);
  text::pack(entry, std::string_view(write.name));
  pack(entry, write.before);
  pack(entry, write.after);
  text::pack(entry, static_cast<char>(write.card ? 1 : 0));
  if (write.card) text::pack(entry, *write.card);
  text::pack(entry, write.row);
  append(entry);
}

void WrittenLog::row(const RowWrite& write) {
  std::string entry(1, kRow);
  text::pack(entry, std::string_view(write.key.table));
  text::pack(entry, write.key.row);
  text::pack(entry, static_cast<char>(write.change));
  pack(entry, write.before);
  pack(entry, write.after);
  append(entry);
}

void WrittenLog::end() {
  append(std::string(1, kEnd));
  sync();
}

void WrittenLog::sync() {
  if (::fdatasync(descriptor_) != 0) fail(path_);
  synced_ = std::chrono::steady_clock::now();
}

// Half an entry would spoil the next one. Databases and folders reach the disk some seconds after
// they are written, and the log must be there first.
void WrittenLog::append(const std::string& entry) {
  std::string bytes;
  text::pack(bytes, text::hashOf(entry));
  text::pack(bytes, std::string_view(entry));
  ssize_t written = 0;
  do {
    written = ::write(descriptor_, bytes.data(), bytes.size());
  } while (written < 0 && errno == EINTR);
  if (written != static_cast<ssize_t>(bytes.size())) {
    const int error = written < 0 ? errno : ENOSPC;
    const off_t end = ::lseek(descriptor_, 0, SEEK_END);
    const bool isMended = written <= 0 || ::ftruncate(descriptor_, end - written) == 0;
    errno = isMended ? error : EIO;
    fail(path_);
  }
  if (std::chrono::steady_clock::now() - synced_ > std::chrono::seconds(1)) sync();
}

}  // namespace vlout::history
