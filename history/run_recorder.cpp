#include "history/run_recorder.h"

#include <cerrno>
#include <cstring>
#include <exception>
#include <unistd.h>
#include <utility>

#include "history/completion.h"
#include "history/restore_point.h"
#include "history/rows.h"
#include "outlook/contact_store.h"
#include "store/sql.h"
#include "text/ascii.h"
#include "text/date_time.h"
#include "text/file_path.h"
#include "text/language.h"

namespace vlout::history {
namespace {

RunState stateAfter(transfer::RunOutcome::End end) {
  using transfer::RunOutcome;
  switch (end) {
    case RunOutcome::Completed:
      return RunState::Completed;
    case RunOutcome::Stopped:
      return RunState::Stopped;
    case RunOutcome::NothingToDo:
      return RunState::NothingToDo;
    default:
      return RunState::Failed;
  }
}

// Fewer contacts than these are simply added again.
constexpr std::size_t kWorthAsking = 10;

// Enough to begin with; how much a run will replace is not known in advance.
constexpr std::uint64_t kNeededSpace = std::uint64_t{1} << 20;

std::string megabytes(std::uint64_t bytes) {
  constexpr std::uint64_t kMegabyte = std::uint64_t{1} << 20;
  return std::to_string((bytes + kMegabyte - 1) / kMegabyte) + " MB";
}

}  // namespace

RunRecorder::RunRecorder(std::filesystem::path componentFolder,
                         const std::filesystem::path& contacts, EmptiedFolder emptied)
    : folder_(std::move(componentFolder)),
      database_(store::ConnectionSettings{.componentFolder = folder_}.databaseFile()),
      contacts_(std::filesystem::absolute(contacts)),
      emptied_(std::move(emptied)),
      runs_(folder_) {}

std::string RunRecorder::beginOrObject(const transfer::RunDescription& run) {
  try {
    if (run.addsContacts) {
      if (auto objection = objectionToEmptied(run.preview); !objection.empty()) return objection;
    }
    if (auto objection = objectionToSpace(); !objection.empty()) return objection;
    if (!run.preview) start(run);
  } catch (const outlook::ContactStoreError& error) {
    return error.what();
  } catch (const std::exception& error) {
    return text::say("작업 기록을 만들 수 없어 시작하지 않습니다.\r\n",
                     "Not started: the record of the run could not be made.\r\n") +
           error.what();
  }
  return {};
}

// The number of files that a run left; a killed run could not count them, but there were at least
// those that it added. Nothing for a run that only found the folder empty, since that must not
// count as how it was before.
std::optional<std::size_t> RunRecorder::filesLeftBy(const RunRecord& run) const {
  if (run.contactFiles || run.state != RunState::Unfinished || !run.wrote) return run.contactFiles;
  try {
    const auto added = RestorePoint(runs_.folderOf(run.number)).written(run.state).filesAdded();
    if (added > 0) return static_cast<std::size_t>(added);
  } catch (const std::exception&) {
    return std::nullopt;  // its point is gone or damaged: an earlier run has to tell
  }
  return std::nullopt;
}

// A folder that held many contacts at the last run and is empty now is more likely unmounted, or
// the wrong one, than emptied on purpose.
std::string RunRecorder::objectionToEmptied(bool preview) {
  const bool isEmpty = count_ ? count_() == 0 : !hasCardFile(contacts_);
  if (!isEmpty) warned_ = false;
  if (!isEmpty || emptied_.goOn || warned_) return {};
  const auto runs = runs_.list();
  for (auto run = runs.rbegin(); run != runs.rend(); ++run) {
    const auto files = filesLeftBy(*run);
    if (!files) continue;
    if (*files < kWorthAsking) break;
    warned_ = emptied_.askAgain && !preview;
    if (!place_.empty()) {
      return text::say(
          "주소록이 비어 있습니다: %1\r\n지난 작업(%2) 때에는 연락처가 %3개 있었습니다.\r\n"
          "다른 주소록이거나 계정의 연락처를 아직 받지 못했다면 모든 명함이 새 연락처로 다시 "
          "추가됩니다. %4",
          "The address book is empty: %1\r\nAt the last run (%2) there were %3 contacts.\r\n"
          "If it is the wrong one, or its account has not been fetched yet, all cards will be "
          "added again as new contacts. %4",
          {place_, run->started, std::to_string(*files), emptied_.howToGoOn});
    }
    return text::say(
        "연락처 폴더가 비어 있습니다: %1\r\n지난 작업(%2) 때에는 연락처 파일이 %3개 "
        "있었습니다(%4).\r\n"
        "폴더가 연결되지 않았거나 다른 폴더라면 모든 명함이 새 연락처로 다시 추가됩니다. %5",
        "The folder of contacts is empty: %1\r\nAt the last run (%2) there were %3 contact files "
        "(%4).\r\n"
        "If the folder is not mounted, or is the wrong one, all cards will be added again as new "
        "contacts. %5",
        {text::pathText(contacts_), run->started, std::to_string(*files),
         text::pathText(runs_.contactsOf(*run)), emptied_.howToGoOn});
  }
  return {};
}

std::string RunRecorder::objectionToSpace() const {
  for (const std::filesystem::path& folder : {folder_, folder_ / "history"}) {
    if (::access(folder.c_str(), W_OK | X_OK) == 0 || errno == ENOENT) continue;
    return text::say("복원 지점을 둘 수 없어 시작하지 않습니다: %1: %2",
                     "Not started: no restore point can be kept: %1: %2",
                     {text::pathText(folder), std::strerror(errno)});
  }
  const std::uint64_t free = std::filesystem::space(folder_).available;
  if (free >= kNeededSpace) return {};
  return text::say("디스크에 복원 지점을 둘 자리가 없어 시작하지 않습니다: %1 (필요 %2, 남음 %3)",
                   "Not started: the disk has no room for a restore point: %1 (needed %2, free %3)",
                   {text::pathText(folder_), megabytes(kNeededSpace), megabytes(free)});
}

void RunRecorder::start(const transfer::RunDescription& run) {
  RunRecord record;
  record.started = text::formatStamp(text::localNow());
  record.mode = run.mode;
  record.range = run.range;
  record.contacts = runs_.nameOf(contacts_);
  runs_.begin(record);
  record_ = std::move(record);
}

std::string RunRecorder::databaseFile() const {
  return text::pathText(database_);
}

void RunRecorder::beforeWriting() {
  if (!record_ || log_) return;
  const RestorePoint point(runs_.folderOf(record_->number));
  try {
    // Killed runs could not do this at their end. An undo, however, needs everything that there is.
    if (record_->mode != kUndoMode) runs_.prune();
    point.begin();
    record_->wrote = true;
    runs_.save(*record_);
    log_.emplace(point.log());
  } catch (const std::exception& error) {
    point.drop();
    record_->wrote = false;
    throw transfer::RunAborted(
        text::say("복원 지점을 만들지 못하여 아무것도 쓰지 않고 끝냅니다.\r\n",
                  "Ended without writing anything: no restore point could be made.\r\n") +
        error.what());
  }
}

template <typename Use>
void RunRecorder::tell(Use use) {
  if (!log_) return;
  try {
    use();
  } catch (const std::exception& error) {
    throw transfer::RunAborted(text::say("되돌릴 길을 남길 수 없어 작업을 여기서 끝냅니다.\r\n",
                                         "Ended here, because no way back can be kept.\r\n") +
                               error.what());
  }
}

void RunRecorder::file(const std::string& name, const std::optional<FileState>& state,
                       std::optional<std::int64_t> card) {
  tell([&] {
    const RestorePoint point(runs_.folderOf(record_->number));
    FileWrite write{name, point.keep(contacts_, name), state, card};
    if (card && rowsNow_ != nullptr) {
      write.row = rowsNow_->hashOf({std::string(store::kCardTable), *card});
    }
    log_->file(write);
  });
}

void RunRecorder::rows(const std::vector<RowWrite>& writes) {
  tell([&] {
    for (const RowWrite& write : writes) log_->row(write);
  });
}

void RunRecorder::sync() {
  tell([&] { log_->sync(); });
}

void RunRecorder::completeCutShort(store::sqlite::SqliteConnection& connection,
                                   outlook::ContactStore& contacts) {
  const int current = record_ ? record_->number : 0;
  completeSaves(runs_, contacts_, current, connection, contacts);
  completeDates(runs_, contacts_, current, connection, contacts);
}

void RunRecorder::end(const transfer::RunOutcome& outcome) {
  if (!record_) return;
  RunRecord record = std::move(*record_);
  record_.reset();
  const auto filesFound = std::exchange(filesFound_, std::nullopt);
  record.state = stateAfter(outcome.end);
  record.text = outcome.text;
  try {
    if (log_) log_->end();
    log_.reset();
    if (record.wrote && record.state != RunState::Completed) {
      const RestorePoint point(runs_.folderOf(record.number));
      record.text += " " + point.written(record.state).counts();
    }
    // What a run has not written to is as it found it.
    const std::size_t files = filesFound && !record.wrote ? *filesFound : countCardFiles(contacts_);
    if (files > 0 || record.wrote) record.contactFiles = files;
    runs_.save(record);
    if (!outcome.lines.empty()) runs_.saveLines(record.number, outcome.lines);
    if (record.wrote) runs_.prune();
  } catch (const std::exception&) {
    // The run itself has ended as it did; only its record stays unfinished.
    log_.reset();
  }
}

// Otherwise every record would wait that long for a lock that another program does not release.
template <typename Use>
auto RecordedConnection::endingRunWhenBusy(Use use) {
  try {
    return use();
  } catch (const store::DatabaseBusy& error) {
    throw transfer::RunAborted(recorder_->databaseFile() + ": " + error.what());
  }
}

std::unique_ptr<store::Recordset> RecordedConnection::query(std::string_view sql) {
  return RecordedConnection::queryColumns(sql, {});
}

std::unique_ptr<store::Recordset> RecordedConnection::queryColumns(std::string_view sql,
                                                                   store::ColumnNames columns) {
  if (!recorder_->isRecording()) return SqliteConnection::queryColumns(sql, columns);
  return endingRunWhenBusy([&] { return SqliteConnection::queryColumns(sql, columns); });
}

std::int64_t RecordedConnection::execute(std::string_view sql) {
  if (!isOpen() || !recorder_->isRecording()) return SqliteConnection::execute(sql);
  recorder_->beforeWriting();
  return endingRunWhenBusy([&] {
    watch_->forget();
    readTogether(false);
    store::sqlite::Transaction transaction(database());
    const std::int64_t count = SqliteConnection::execute(sql);
    recorder_->rows(watch_->take());
    transaction.commit();
    return count;
  });
}

RecordedConnection::~RecordedConnection() {
  letGo();
}

store::sqlite::Database RecordedConnection::openFile(const std::filesystem::path& file) {
  store::sqlite::Database database = SqliteConnection::openFile(file);
  watch_.emplace(database.get());
  rows_.emplace(database.get());
  recorder_->looksAt(*rows_);
  // Before a checkpoint puts rows on the disk for good, their way back must be there.
  checkpoints_.emplace(database.get(), [this] { recorder_->sync(); });
  return database;
}

void RecordedConnection::close() {
  letGo();
  SqliteConnection::close();
}

void RecordedConnection::letGo() {
  if (rows_) recorder_->looksNoMoreAt(*rows_);
  checkpoints_.reset();
  watch_.reset();
  rows_.reset();
}

std::vector<outlook::vcard::CardFile> RecordedFolder::cardFiles() {
  auto files = Folder::cardFiles();
  std::size_t count = files.size();
  for (const auto& file : files) count += file.otherNames.size();
  recorder_->filesFound(count);
  return files;
}

FileState RecordedFolder::replace(const std::string& name, std::string_view text,
                                  const std::optional<FileState>& before, bool keepSecond,
                                  const std::string& row) {
  recorder_->beforeWriting();
  const auto card = text::parseInteger(row);
  return replaceFile(name, text, before, keepSecond,
                     [&](const std::string& written, const std::optional<FileState>& state) {
                       recorder_->file(written, state, written == name ? card : std::nullopt);
                     });
}

// The file is written when the run ends, or by whoever opens the folder after a kill. Its state at
// that time is already known.
void RecordedFolder::gather(const outlook::vcard::SavedCard& save, const FileState& before) {
  recorder_->beforeWriting();
  recorder_->file(save.file, save.willBe);
  for (const std::string& other : otherNamesOf(save.file)) recorder_->file(other, save.willBe);
  Folder::gather(save, before);
}

}  // namespace vlout::history
