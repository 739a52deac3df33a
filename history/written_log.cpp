#include "history/written_log.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

#include "history/entries.h"
#include "posix/file_descriptor.h"
#include "store/sql.h"

namespace vlout::history {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(const fs::path& path) {
  throw std::system_error(errno, std::generic_category(), path.string());
}

}  // namespace

Written Written::read(const fs::path& log) {
  Written written;
  forEachEntry(log, [&](std::istream& entry) {
    std::string kind;
    std::string name;
    FileState state;
    RowKey key{std::string(store::kCardTable)};
    entry >> kind;
    entry.ignore(1);
    if (kind == "file") {
      if (readEntry(entry, state, name)) written.files[name].emplace_back(state);
    } else if (kind == "sent") {
      entry >> key.row;
      if (!readEntry(entry, state, name)) return;
      written.files[name].emplace_back(state);
      const auto given = written.rows.find(key);
      const auto row = given == written.rows.end() ? std::nullopt : given->second.back();
      written.sent.insert_or_assign(key.row, Sent{name, row});
    } else if (kind == "nofile") {
      if (std::getline(entry, name, kEntryEnd)) written.files[name].emplace_back();
    } else if (kind == "row" || kind == "norow") {
      std::uint64_t hash = 0;
      entry >> key.table >> key.row >> hash;
      if (!entry) return;
      written.rows[key].push_back(kind == "row" ? std::optional(hash) : std::nullopt);
    }
  });
  return written;
}

bool Written::left(const std::string& file, const std::optional<FileState>& state) const {
  const auto found = files.find(file);
  return found != files.end() &&
         std::any_of(found->second.begin(), found->second.end(),
                     [&](const auto& given) { return isSame(given, state); });
}

bool Written::left(const RowKey& row, const std::optional<std::uint64_t>& hash) const {
  const auto found = rows.find(row);
  return found != rows.end() &&
         std::find(found->second.begin(), found->second.end(), hash) != found->second.end();
}

FileStates Written::applyTo(FileStates found) const {
  for (const auto& [name, given] : files) {
    found.erase(name);
    if (given.back()) found.emplace(name, *given.back());
  }
  return found;
}

std::string Written::counts() const {
  return "명함=" + std::to_string(rows.size()) + "/연락처=" + std::to_string(files.size());
}

WrittenLog::WrittenLog(const fs::path& log)
    : path_(log), descriptor_(posix::openRegular(log.c_str(), O_WRONLY | O_CREAT | O_APPEND)) {
  if (descriptor_ < 0) fail(log);
}

WrittenLog::~WrittenLog() {
  ::close(descriptor_);
}

void WrittenLog::file(const std::string& name, const std::optional<FileState>& state) {
  append(state ? "file " + entryOf(*state, name) : "nofile " + name);
}

void WrittenLog::sent(const std::string& name, const FileState& state, std::int64_t card) {
  append("sent " + std::to_string(card) + ' ' + entryOf(state, name));
}

void WrittenLog::row(const RowKey& key, const std::optional<std::uint64_t>& hash) {
  append((hash ? "row " : "norow ") + key.table + ' ' + std::to_string(key.row) + ' ' +
         std::to_string(hash.value_or(0)));
}

// Half an entry would spoil the next one.
void WrittenLog::append(const std::string& entry) const {
  const std::size_t size = entry.size() + 1;  // with its end
  ssize_t written = 0;
  do {
    written = ::write(descriptor_, entry.c_str(), size);
  } while (written < 0 && errno == EINTR);
  if (written == static_cast<ssize_t>(size)) return;
  const int error = written < 0 ? errno : ENOSPC;
  const off_t end = ::lseek(descriptor_, 0, SEEK_END);
  const bool isMended = written <= 0 || ::ftruncate(descriptor_, end - written) == 0;
  errno = isMended ? error : EIO;
  fail(path_);
}

}  // namespace vlout::history
