#include "store/jet/jet_reader.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "store/connection.h"
#include "text/language.h"

namespace vlout::store::jet {
namespace {

// The messages in the pipe: a letter and its content.
constexpr char kOpened = 'O';
constexpr char kTable = 'T';  // name, columns
constexpr char kRow = 'R';    // as many values as the table has columns
constexpr char kFailed = 'F';
constexpr char kDone = 'D';

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }  // NOLINT: this is its owner
};
using File = std::unique_ptr<std::FILE, FileCloser>;

// The child's end. When its reader stops, the signal for a pipe that nobody reads ends it.
class Sender : public JetRows {
 public:
  explicit Sender(std::FILE* pipe) : pipe_(pipe) {}

  void beginTable(std::string_view name, const std::vector<JetColumn>& columns) override {
    sendLetter(kTable);
    sendText(name);
    sendNumber(columns.size());
    for (const JetColumn& column : columns) {
      sendText(column.name);
      sendNumber(static_cast<std::uint32_t>(column.type));
    }
  }

  void addRow(const JetRow& row) override {
    sendLetter(kRow);
    for (const JetValue& value : row) {
      sendLetter(static_cast<char>((value.text ? 1 : 0) | (value.isWhole ? 2 : 0)));
      if (value.text) sendText(*value.text);
    }
  }

  void sendLetter(char letter) { sendBytes(&letter, 1); }
  void sendText(std::string_view text) {
    sendNumber(text.size());
    sendBytes(text.data(), text.size());
  }
  void finish() {
    if (std::fflush(pipe_) != 0) _exit(1);
  }

 private:
  void sendNumber(std::size_t number) {
    const auto sent = static_cast<std::uint32_t>(number);
    sendBytes(&sent, sizeof sent);
  }
  void sendBytes(const void* bytes, std::size_t size) {
    if (std::fwrite(bytes, 1, size, pipe_) != size) _exit(1);
  }

  std::FILE* pipe_;
};

// The child needs only the file and the pipe; what the library prints is of no use to users.
[[noreturn]] void runChild(const std::filesystem::path& file,
                           const std::vector<std::string>& tables, int descriptor) {
  // A damaged file could make it compute for ever, or use up the memory.
  constexpr rlim_t kMostSeconds = 300;
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  dup2(nowhere, STDOUT_FILENO);
  dup2(nowhere, STDERR_FILENO);
  const rlimit noCore{0, 0};
  const rlimit seconds{kMostSeconds, kMostSeconds};
  setrlimit(RLIMIT_CORE, &noCore);
  setrlimit(RLIMIT_CPU, &seconds);
#ifndef __SANITIZE_ADDRESS__  // the sanitizer takes more than any limit
  constexpr rlim_t kLeastMemory = rlim_t{1} << 30U;
  std::error_code ignored;  // who cannot tell the size of a file cannot read it either
  const rlim_t most = kLeastMemory + 4 * std::filesystem::file_size(file, ignored);
  const rlimit memory{most, most};
  setrlimit(RLIMIT_AS, &memory);
#endif
  std::signal(SIGINT, SIG_IGN);  // the parent's to answer
  for (const char* variable : {"MDBOPTS", "MDB_ICONV", "MDB_JET3_CHARSET"}) unsetenv(variable);
  Sender sender(fdopen(descriptor, "w"));
  try {
    JetFile jet(file);
    sender.sendLetter(kOpened);
    sender.finish();
    for (const std::string& table : tables) jet.readTable(table, sender);
    sender.sendLetter(kDone);
  } catch (const DatabaseError& error) {
    sender.sendLetter(kFailed);
    sender.sendText(error.what());
  } catch (...) {
    _exit(1);  // no memory: the same as being stopped by the system
  }
  sender.finish();
  _exit(0);
}

// Why `file` cannot be opened, or nothing.
std::string refusal(const std::filesystem::path& file) {
  std::error_code error;
  const auto status = std::filesystem::status(file, error);
  if (!std::filesystem::exists(status)) {
    return error && error != std::errc::no_such_file_or_directory
               ? error.message()
               : text::say("파일이 없습니다", "no such file");
  }
  if (std::filesystem::is_directory(status))
    return text::say("파일이 아니라 폴더입니다", "a folder, not a file");
  if (!std::filesystem::is_regular_file(status))
    return text::say("보통 파일이 아닙니다", "not a regular file");
  std::ifstream stream(file, std::ios::binary);
  if (!stream) return std::strerror(errno);
  std::array<char, 20> head{};
  stream.read(head.data(), head.size());
  const std::string_view text(head.data(), head.size());
  if (text.starts_with("SQLite format 3")) {
    return text::say("SQLite 데이터베이스입니다. Jet(Access) 데이터베이스만 변환합니다",
                     "an SQLite database; only Jet (Access) databases are converted");
  }
  const std::string_view mark = text.substr(4, 15);
  if (mark == "Standard Jet DB" || mark == "Standard ACE DB") return {};
  return text::say("Jet(Access) 데이터베이스가 아닙니다", "not a Jet (Access) database");
}

}  // namespace

class JetReader::Child {
 public:
  explicit Child(pid_t id) : id_(id) {}
  ~Child() {
    kill(id_, SIGKILL);
    waitpid(id_, nullptr, 0);
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

 private:
  pid_t id_;
};

// The parent's end. An incomplete message counts as none.
class JetReader::Frames {
 public:
  explicit Frames(int descriptor) : pipe_(fdopen(descriptor, "r")) {}

  std::optional<char> letter() {
    const int letter = std::fgetc(pipe_.get());
    return letter == EOF ? std::nullopt : std::optional(static_cast<char>(letter));
  }
  std::optional<std::uint32_t> number() {
    std::uint32_t number = 0;
    if (std::fread(&number, sizeof number, 1, pipe_.get()) != 1) return std::nullopt;
    return number;
  }
  std::optional<std::string> text() {
    constexpr std::uint32_t kLongest = 0x7FFFFFFF;
    const auto size = number();
    if (!size || *size > kLongest) return std::nullopt;
    std::string text(*size, '\0');
    if (std::fread(text.data(), 1, text.size(), pipe_.get()) != text.size()) return std::nullopt;
    return text;
  }
  std::optional<std::vector<JetColumn>> columns() {
    const auto count = number();
    std::vector<JetColumn> columns;
    for (std::uint32_t i = 0; count && i < *count; ++i) {
      auto name = text();
      const auto type = number();
      if (!name || !type) return std::nullopt;
      columns.push_back({std::move(*name), static_cast<JetType>(*type)});
    }
    return count ? std::optional(columns) : std::nullopt;
  }
  std::optional<JetRow> row(std::size_t size) {
    JetRow row(size);
    for (JetValue& value : row) {
      const auto state = letter();
      if (!state) return std::nullopt;
      value.isWhole = (*state & 2) != 0;
      if ((*state & 1) == 0) continue;
      value.text = text();
      if (!value.text) return std::nullopt;
    }
    return row;
  }

 private:
  File pipe_;
};

JetReader::JetReader(const std::filesystem::path& file, const std::vector<std::string>& tables)
    : file_(file) {
  const std::string refused = refusal(file);
  if (!refused.empty()) fail(refused);
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) fail(std::strerror(errno));
  const pid_t child = fork();
  if (child == 0) {
    close(ends[0]);
    runChild(file, tables, ends[1]);
  }
  const int forkFailure = errno;
  close(ends[1]);
  frames_ = std::make_unique<Frames>(ends[0]);
  if (child < 0) fail(std::strerror(forkFailure));
  child_ = std::make_unique<Child>(child);
  const auto letter = frames_->letter();
  if (letter == kOpened) return;
  const auto reason = letter == kFailed ? frames_->text() : std::nullopt;
  if (reason) fail(*reason);
  failEnded();
}

JetReader::~JetReader() = default;

void JetReader::readAll(JetRows& rows) {
  std::size_t width = 0;
  for (auto letter = frames_->letter(); letter; letter = frames_->letter()) {
    if (*letter == kDone) return;
    if (*letter == kRow) {
      const auto row = frames_->row(width);
      if (!row) break;
      rows.addRow(*row);
    } else if (*letter == kTable) {
      const auto name = frames_->text();
      const auto columns = name ? frames_->columns() : std::nullopt;
      if (!columns) break;
      width = columns->size();
      rows.beginTable(*name, *columns);
    } else {
      const auto reason = frames_->text();
      if (reason) fail(*reason);
      break;
    }
  }
  failEnded();
}

void JetReader::fail(const std::string& reason) const {
  throw DatabaseError(file_.string() + ": " + reason);
}

void JetReader::failEnded() const {
  fail(text::say("손상된 파일입니다 (읽는 도중에 멈췄습니다)",
                 "damaged file (reading it broke off)"));
}

}  // namespace vlout::store::jet
