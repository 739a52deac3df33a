#include "history/undo.h"

#include <algorithm>
#include <array>
#include <system_error>

#include "outlook/contact_store.h"
#include "outlook/vcard/card_file.h"
#include "store/sqlite/database_files.h"
#include "text/ascii.h"
#include "text/file_path.h"
#include "text/regular_file.h"

namespace vlout::history {
namespace {

namespace fs = std::filesystem;

constexpr std::array<const char*, 3> kEdited{"고침", "추가", "삭제"};

std::string editOf(std::string_view what, Change change, const std::string& name,
                   const std::string& when) {
  return std::string(what) + " " + kEdited.at(static_cast<std::size_t>(change)) + ": " + name +
         when;
}

// The name on a card, for people to know it by.
std::string personIn(const fs::path& file) {
  try {
    return outlook::vcard::firstDisplayName(text::readRegularFile(file, text::kLargestOwn));
  } catch (const std::system_error&) {
    return {};
  }
}

std::string personAndFile(const fs::path& folder, const std::string& name) {
  const std::string person = personIn(folder / text::pathOf(name));
  return person.empty() ? name : person + " (" + name + ")";
}

std::optional<FileState> stateIn(const FileStates& states, const std::string& name) {
  const auto found = states.find(name);
  return found == states.end() ? std::nullopt : std::optional(found->second);
}

// Calls `use(name, change)` for each file of `now` that is not what it was `then`.
template <typename Use>
void compareFiles(const FileStates& then, const FileStates& now, Use use) {
  for (const auto& [name, state] : now) {
    const auto old = then.find(name);
    if (old == then.end()) {
      use(name, Change::Added);
    } else if (!isSame(old->second, state)) {
      use(name, Change::Changed);
    }
  }
  for (const auto& [name, state] : then) {
    if (!now.contains(name)) use(name, Change::Removed);
  }
}

}  // namespace

Undo::Undo(const fs::path& componentFolder, int run, const OpenMirrored& openMirrored)
    : folder_(componentFolder),
      database_(store::ConnectionSettings{.componentFolder = folder_}.databaseFile()),
      runs_(folder_) {
  chooseRun(run);
  for (const RunRecord& later : later_) {
    if (later.contacts.empty()) {
      throw UndoError("작업 " + std::to_string(later.number) +
                      "의 기록이 손상되어 되돌릴 수 없습니다.");
    }
    if (RestorePoint(runs_.folderOf(later.number)).exists()) continue;
    throw UndoError("작업 " + std::to_string(later.number) +
                    "의 복원 지점이 이미 지워져 되돌릴 수 없습니다.");
  }
  point_.emplace(runs_.folderOf(later_.front().number));
  contacts_ = runs_.contactsOf(later_.front());
  mirrored_ = openMirrored(contacts_);
  lock_ = std::make_unique<outlook::vcard::Folder>(contacts_.string());
  found_ = cardFilesIn(contacts_);
  findGathered();
  findChanges();
  findEdits();
}

void Undo::chooseRun(int number) {
  const auto runs = runs_.list();
  const auto chosen = std::find_if(runs.rbegin(), runs.rend(), [&](const RunRecord& run) {
    return number != 0 ? run.number == number
                       : run.wrote && run.undoneBy == 0 && run.mode != kUndoMode;
  });
  if (chosen == runs.rend()) {
    throw UndoError(number == 0 ? "되돌릴 작업이 없습니다."
                                : "작업 " + std::to_string(number) + "이(가) 기록에 없습니다.");
  }
  run_ = *chosen;
  for (const RunRecord& run : runs) {
    if (run.number >= run_.number && run.wrote) later_.push_back(run);
  }
  if (later_.empty()) {
    throw UndoError("작업 " + std::to_string(run_.number) + "부터는 바뀐 것이 없습니다.");
  }
}

// An undo is to write it; and beside one that is protected a mere look would leave files that are
// protected as well, and stay so.
store::StoredDatabase Undo::liveDatabase() const {
  try {
    store::requireWritable(database_);
  } catch (const store::DatabaseError& error) {
    throw UndoError(text::pathText(database_) + ": " + error.what());
  }
  return store::StoredDatabase(database_, store::Access::ReadWrite);
}

// A killed run may have left saves that are not in their files yet. They are completed before
// anything is taken back, so the files count as what they will be then.
void Undo::findGathered() {
  for (const auto& [name, file] : lock_->gathered().value_or(outlook::vcard::JournalFiles())) {
    const auto found = found_.find(name);
    if (found == found_.end()) continue;
    const FileState state = found->second;
    const bool isUnchanged =
        state.seconds == file.willBe.seconds &&
        outlook::vcard::nextInSecond(state.nanoseconds) == file.willBe.nanoseconds;
    for (auto& [other, otherState] : found_) {
      if (otherState != state) continue;  // else a hard link to it
      gathered_.emplace(other, Gathered{name, state});
      if (isUnchanged) otherState = file.willBe;
    }
  }
}

// Completes those saves in the files as they were found.
void Undo::completeGathered() {
  for (const auto& [name, file] : gathered_) found_[name] = file.found;
  requireUnchanged();
  const auto completed = completeSaves(*lock_);  // what is lost is taken back anyway
  for (const auto& [name, file] : gathered_) {
    const auto written = completed.written.find(file.savedAs);
    if (written != completed.written.end()) found_[name] = written->second;
  }
  lock_->dropGathered();
}

// What differs between the beginning of one run and that of the next, or now, and was not written
// by the run, is an edit.
void Undo::findEdits() {
  for (std::size_t i = 0; i < later_.size(); ++i) {
    const RunRecord& run = later_[i];
    const RestorePoint point(runs_.folderOf(run.number));
    const Written written = Written::read(point.writtenLog());
    const std::string when = " [작업 " + std::to_string(run.number) + " 뒤]";
    const bool last = i + 1 == later_.size();
    const store::StoredDatabase then =
        last ? liveDatabase()
             : store::StoredDatabase(RestorePoint(runs_.folderOf(later_[i + 1].number)).database());
    addRowEdits(OtherState(then.get(), point.database()).changesSince(), written, when);
    if (runs_.contactsOf(run) != contacts_) {
      edits_.push_back(
          "작업 " + std::to_string(run.number) +
          "은(는) 다른 연락처 폴더를 썼습니다. 그 폴더는 되돌리지 않습니다: " + run.contacts);
      continue;
    }
    const auto next =
        std::find_if(later_.begin() + static_cast<std::ptrdiff_t>(i) + 1, later_.end(),
                     [&](const RunRecord& other) { return runs_.contactsOf(other) == contacts_; });
    addFileEdits(
        point.contacts(),
        next == later_.end() ? found_ : RestorePoint(runs_.folderOf(next->number)).contacts(),
        written, when);
  }
}

void Undo::addRowEdits(const std::vector<RowChange>& changes, const Written& written,
                       const std::string& when) {
  for (const RowChange& change : changes) {
    if (written.left(change.key, change.hash)) continue;
    edits_.push_back(editOf(nounOf(change.key), change.change, change.name, when));
  }
}

void Undo::addFileEdits(const FileStates& before, const FileStates& found, const Written& written,
                        const std::string& when) {
  compareFiles(written.applyTo(before), found, [&](const std::string& name, Change change) {
    const auto now = stateIn(found, name);
    if (written.left(name, now) || isSame(now, stateIn(before, name)) || isLost(name)) return;
    edits_.push_back(editOf("연락처", change, personAndFile(contacts_, name), when));
  });
}

void Undo::findChanges() {
  const store::StoredDatabase now = liveDatabase();
  rows_ = OtherState(now.get(), point_->database()).changesSince();
  const FileStates then = point_->contacts();
  compareFiles(then, found_, [&](const std::string& name, Change change) {
    FileChange file{.name = name, .change = change};
    const fs::path kept = point_->contact(name);
    file.person = personIn(change == Change::Removed ? kept : contacts_ / text::pathOf(name));
    const bool lost = change != Change::Added && !isSame(fileStateAt(kept), then.at(name));
    (lost ? lost_ : files_).push_back(std::move(file));
  });
}

bool Undo::isLost(const std::string& name) const {
  return std::any_of(lost_.begin(), lost_.end(), [&](const auto& f) { return f.name == name; });
}

void Undo::perform() {
  RunRecorder recorder(folder_, contacts_, {.goOn = true});
  transfer::RunDescription description;
  description.mode = kUndoMode;
  description.range = std::to_string(run_.number);
  const std::string objection = recorder.begins(description);
  if (!objection.empty()) throw UndoError(objection);
  const int number = recorder.number();
  try {
    lock_->tidy();
    completeGathered();
    requireUnchanged();
    requireSpace();
    if (!changesNothing()) recorder.beforeWriting();
    putRowsBack(recorder);
    putFilesBack(recorder);
    lock_->flush();
  } catch (const std::exception& error) {
    recorder.ended({transfer::RunOutcome::Failed, error.what()});
    throw;
  }
  recorder.ended({transfer::RunOutcome::Completed, "명함=" + std::to_string(rows_.size()) +
                                                       "/연락처=" + std::to_string(files_.size())});
  markRuns(number);
}

// Where contacts lie on another disk, kept files are copied there.
void Undo::requireSpace() const {
  std::uint64_t needed = 0;
  for (const FileChange& file : files_) {
    const auto kept = fileStateAt(point_->contact(file.name));
    if (kept) needed += static_cast<std::uint64_t>(kept->size);
  }
  if (RestorePoint::isOnOneDisk(folder_, contacts_)) return;
  if (fs::space(contacts_).available < needed) {
    throw UndoError("디스크에 연락처를 되돌릴 자리가 없습니다: " + text::pathText(contacts_));
  }
}

void Undo::requireUnchanged() const {
  for (const FileChange& file : files_) {
    const auto state = fileStateAt(contacts_ / text::pathOf(file.name));
    if (isSame(state, stateIn(found_, file.name))) continue;
    throw UndoError("그 사이에 연락처가 바뀌었습니다. 다시 실행하십시오: " + file.name);
  }
}

void Undo::putRowsBack(RunRecorder& recorder) {
  store::SqliteConnection connection;
  connection.open({.componentFolder = folder_});
  sqlite3* const database = connection.database();
  OtherState before(database, point_->database());
  RowHashes hashes(database);
  try {
    store::execute(database, "BEGIN IMMEDIATE");
    if (before.changesSince() != rows_) {
      throw UndoError("그 사이에 데이터베이스가 바뀌었습니다. 다시 실행하십시오.");
    }
    for (const RowChange& change : rows_) {
      before.putBack(change);
      recorder.row(change.key, hashes.of(change.key));
    }
    // Something of the host's own, a trigger, could have changed other rows along with these.
    if (!before.changesSince().empty()) {
      throw UndoError("명함을 그대로 되돌릴 수 없어 아무것도 바꾸지 않았습니다.");
    }
    store::execute(database, "COMMIT");
  } catch (const store::DatabaseBusy& error) {
    store::rollBack(database);
    throw UndoError(text::pathText(database_) + ": " + error.what());
  } catch (...) {
    store::rollBack(database);
    throw;
  }
}

// One file that cannot be put back does not keep the others from it.
void Undo::putFilesBack(RunRecorder& recorder) const {
  std::string failures;
  for (const FileChange& file : files_) {
    try {
      putFileBack(file, recorder);
    } catch (const std::exception& error) {
      failures += "\n" + file.name + ": " + error.what();
    }
  }
  if (failures.empty()) return;
  lock_->tidy();
  throw UndoError("되돌리지 못한 연락처가 있습니다. 고친 뒤에 다시 실행하십시오." + failures);
}

// A kept file gets its place back as what it was, with its modification time: it must not look as
// if it had been edited.
void Undo::putFileBack(const FileChange& file, RunRecorder& recorder) const {
  const auto found = stateIn(found_, file.name);
  const auto log = [&](const std::string& name, const std::optional<FileState>& state) {
    recorder.file(name, state);
  };
  if (file.change == Change::Added) {
    if (mirrored_) mirrored_->remove(contacts_ / text::pathOf(file.name));
    lock_->remove(file.name, *found, log);
    return;
  }
  if (mirrored_) mirrored_->putBack(point_->contact(file.name));
  lock_->replaceBy(
      file.name, found,
      [&](const fs::path& place) {
        if (linkOrCopy(point_->contact(file.name), place)) return;
        throw UndoError("보관한 연락처가 없습니다: " + file.name);
      },
      log);
}

// The runs that are gone now, and those that an undo among them had taken back.
void Undo::markRuns(int undoNumber) const {
  for (RunRecord run : runs_.list()) {
    if (run.number >= run_.number && run.number < undoNumber && run.undoneBy == 0) {
      run.undoneBy = undoNumber;
    } else if (run.number < run_.number && run.undoneBy >= run_.number) {
      run.undoneBy = 0;
    } else {
      continue;
    }
    runs_.save(run);
  }
}

}  // namespace vlout::history
