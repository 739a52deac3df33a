#include "history/undo.h"

#include <algorithm>
#include <array>
#include <set>

#include "history/restore_point.h"
#include "outlook/contact_store.h"
#include "store/sqlite/backup.h"
#include "store/sqlite/database_files.h"
#include "store/sqlite/sqlite_connection.h"
#include "text/ascii.h"
#include "text/file_path.h"
#include "text/language.h"

namespace vlout::history {
namespace {

namespace fs = std::filesystem;

constexpr std::array<text::Words, 3> kEdited{
    {{"고침", "edited"}, {"추가", "added"}, {"삭제", "deleted"}}};

std::string editOf(std::string_view what, Change change, const std::string& name,
                   const std::string& when) {
  return std::string(what) + " " + text::say(kEdited.at(static_cast<std::size_t>(change))) + ": " +
         name + when;
}

std::string personAndFile(const fs::path& folder, const std::string& name) {
  const std::string person = personIn(folder / text::pathOf(name));
  return person.empty() ? name : person + " (" + name + ")";
}

template <typename Value>
Change changeFrom(const std::optional<Value>& then, const std::optional<Value>& now) {
  if (!then && now) return Change::Added;
  return then && !now ? Change::Removed : Change::Changed;
}

std::string after(int run) {
  return text::say(" [작업 %1 뒤]", " [after run %1]", {std::to_string(run)});
}

// Nothing if there is no such row.
std::optional<Cell> valueIn(const std::optional<Cells>& row, const std::string& column) {
  if (!row) return std::nullopt;
  const auto found = row->find(column);
  return found == row->end() ? Cell() : found->second;
}

struct CellChanges {
  Cells origins;  // what is to be put back
  std::optional<Trail<std::optional<Cell>>::Edit> edit;
};

CellChanges cellChanges(const RowTrail& trail, const std::optional<Cells>& now, bool wasThere) {
  CellChanges changes;
  for (const auto& [column, values] : trail) {
    if (column.empty()) continue;
    const std::optional<Cell> value = valueIn(now, column);
    const Cell origin = values.origin().value_or(Cell());
    if (wasThere ? value == origin : !now) continue;
    // If part of a later edit stays, that part must still be transferred.
    const bool isEdited = !values.isLeft(value);
    if (isEdited && now && wasThere && column == "Last_moddate") continue;
    if (wasThere && !(origin.empty() && !now)) changes.origins.emplace(column, origin);
    if (const auto found = values.edit(value); found && (!changes.edit || isEdited)) {
      changes.edit = found;
    }
  }
  return changes;
}

std::string nameOfRow(const std::string& caption, const RowTrail& trail,
                      const std::optional<Cells>& now) {
  const auto named = trail.find(caption);
  std::string name =
      valueIn(now, caption)
          .value_or(named == trail.end() ? Cell() : named->second.origin().value_or(Cell()));
  if (!name.empty()) name.erase(0, 1);  // the type
  return name;
}

bool hasMoreThan(const RowTrail& trail, const Cells& row) {
  return std::any_of(row.begin(), row.end(),
                     [&](const auto& cell) { return !trail.contains(cell.first); });
}

}  // namespace

Undo::Undo(const fs::path& componentFolder, int run, const OpenMirrored& openMirrored)
    : folder_(componentFolder),
      database_(store::ConnectionSettings{.componentFolder = folder_}.databaseFile()),
      runs_(folder_) {
  chooseRun(run);
  for (const RunRecord& later : later_) {
    const std::string which = std::to_string(later.number);
    const RestorePoint point(runs_.folderOf(later.number));
    if (later.contacts.empty()) {
      throw UndoError(text::say("작업 %1의 기록이 손상되어 되돌릴 수 없습니다.",
                                "Run %1 cannot be undone: its record is damaged.", {which}));
    }
    if (point.isOfOldForm()) {
      throw UndoError(text::say(
          "작업 %1의 복원 지점은 이전 판의 프로그램이 남긴 것이라 되돌릴 수 없습니다.",
          "Run %1 cannot be undone: an older version of the program left its restore point.",
          {which}));
    }
    if (!point.exists()) {
      throw UndoError(text::say("작업 %1의 복원 지점이 이미 지워져 되돌릴 수 없습니다.",
                                "Run %1 cannot be undone: its restore point has been dropped.",
                                {which}));
    }
  }
  contacts_ = runs_.contactsOf(later_.front());
  mirrored_ = openMirrored(contacts_);
  lock_ = std::make_unique<outlook::vcard::Folder>(contacts_.string());
  readLogs();
  findGathered();
  findFileChanges();
  findRowChanges();
}

void Undo::chooseRun(int number) {
  const auto runs = runs_.list();
  const auto chosen = std::find_if(runs.rbegin(), runs.rend(), [&](const RunRecord& run) {
    return number != 0 ? run.number == number
                       : run.wrote && run.undoneBy == 0 && run.mode != kUndoMode;
  });
  if (chosen == runs.rend()) {
    throw UndoError(number == 0 ? text::say("되돌릴 작업이 없습니다.", "There is nothing to undo.")
                                : text::say("작업 %1이(가) 기록에 없습니다.",
                                            "There is no run %1 in the history.",
                                            {std::to_string(number)}));
  }
  run_ = *chosen;
  for (const RunRecord& run : runs) {
    if (run.number >= run_.number && run.wrote) later_.push_back(run);
  }
  if (later_.empty()) {
    throw UndoError(text::say("작업 %1부터는 바뀐 것이 없습니다.",
                              "Run %1 and those after it changed nothing.",
                              {std::to_string(run_.number)}));
  }
}

void Undo::readLogs() {
  for (const RunRecord& run : later_) {
    const RestorePoint point(runs_.folderOf(run.number));
    const Written written = point.written(run.state);
    for (const RowWrite& row : written.rows) addTo(rowTrails_[row.key], run.number, row);
    if (runs_.contactsOf(run) != contacts_) {
      edits_.push_back(
          text::say("작업 %1은(는) 다른 연락처 폴더를 썼습니다. 그 폴더는 되돌리지 않습니다: %2",
                    "Run %1 used another folder of contacts, which this undo leaves as it is: %2",
                    {std::to_string(run.number), run.contacts}));
      continue;
    }
    for (const FileWrite& file : written.files) {
      const auto [trail, isNew] = fileTrails_.try_emplace(file.name);
      if (isNew) trail->second.kept = point.kept(file.name);
      trail->second.trail.write(run.number, file.before, file.after);
    }
  }
  for (const auto& [name, trail] : fileTrails_) {
    found_[name] = fileStateAt(contacts_ / text::pathOf(name));
  }
}

// A killed run may have left saves that are not in their files yet. They are completed before
// anything is taken back, so the files count as they will be then.
void Undo::findGathered() {
  for (const auto& [name, file] : lock_->gathered().value_or(outlook::vcard::JournalFiles())) {
    const auto found = found_.find(name);
    if (found == found_.end() || !found->second) continue;
    const FileState state = *found->second;
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

void Undo::findFileChanges() {
  for (const auto& [name, file] : fileTrails_) {
    const auto& origin = file.trail.origin();
    const auto& now = found_.at(name);
    if (isSame(origin, now)) continue;
    FileChange change{.name = name, .change = changeFrom(origin, now), .kept = file.kept};
    change.person =
        personIn(change.change == Change::Removed ? file.kept : contacts_ / text::pathOf(name));
    if (origin && !isSame(fileStateAt(file.kept), origin)) {
      lost_.push_back(std::move(change));
      continue;
    }
    files_.push_back(std::move(change));
    if (const auto edit = file.trail.edit(now)) {
      edits_.push_back(editOf(text::say("연락처", "contact"), changeFrom(edit->left, edit->found),
                              personAndFile(contacts_, name), after(edit->run)));
    }
  }
}

// The undo is going to write the database; and merely reading a write-protected one would leave
// files beside it that are write-protected too.
void Undo::findRowChanges() {
  try {
    store::sqlite::requireWritable(database_);
  } catch (const store::DatabaseError& error) {
    throw UndoError(text::pathText(database_) + ": " + error.what());
  }
  const store::sqlite::StoredDatabase database(database_, store::sqlite::Access::ReadWrite);
  StoredRows rows(database.get());
  try {
    for (const auto& [key, trail] : rowTrails_) {
      RowPlan plan = planOf(key, trail, rows);
      if (!plan.change) continue;
      if (plan.edit) edits_.push_back(*std::move(plan.edit));
      (plan.isLost ? lostRows_ : rows_).push_back(*std::move(plan.change));
    }
  } catch (const store::DatabaseError& error) {
    throw store::DatabaseError(database_.string() + ": " + error.what());
  }
}

std::vector<RowChange> Undo::rowChanges(StoredRows& rows) const {
  std::vector<RowChange> changes;
  for (const auto& [key, trail] : rowTrails_) {
    RowPlan plan = planOf(key, trail, rows);
    if (plan.change && !plan.isLost) changes.push_back(*std::move(plan.change));
  }
  return changes;
}

Undo::RowPlan Undo::planOf(const RowKey& key, const RowTrail& trail, StoredRows& rows) const {
  const std::optional<Cells> now = rows.at(key);
  const auto row = trail.find("");
  const bool isWhole = row != trail.end();
  const bool wasThere = !isWhole || row->second.origin().has_value();
  CellChanges cells = cellChanges(trail, now, wasThere);
  RowPlan plan;
  plan.isLost = wasThere && !now && !isWhole;
  if (wasThere ? now && cells.origins.empty() : !now) return plan;
  RowChange change{.key = key};
  change.change = wasThere ? (now ? Change::Changed : Change::Removed) : Change::Added;
  change.cells = std::move(cells.origins);
  change.name = nameOfRow(std::string(captionOf(key)), trail, now);
  if (!wasThere && !cells.edit && hasMoreThan(trail, *now)) {
    cells.edit = {later_.back().number, Cell(), Cell()};
  }
  if (cells.edit && !plan.isLost) {
    plan.edit = editOf(nounOf(key), changeFrom(cells.edit->left, cells.edit->found), change.name,
                       after(cells.edit->run));
  }
  plan.change = std::move(change);
  return plan;
}

void Undo::perform() {
  RunRecorder recorder(folder_, contacts_, {.goOn = true});
  transfer::RunDescription description;
  description.mode = kUndoMode;
  description.range = std::to_string(run_.number);
  const std::string objection = recorder.beginOrObject(description);
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
    recorder.end({transfer::RunOutcome::Failed, error.what()});
    throw;
  }
  recorder.end({transfer::RunOutcome::Completed,
                text::say("명함=%1/연락처=%2", "cards=%1/contacts=%2",
                          {std::to_string(rows_.size()), std::to_string(files_.size())})});
  markRuns(number);
}

// If the contacts are on another disk, kept files have to be copied.
void Undo::requireSpace() const {
  std::uint64_t needed = 0;
  for (const FileChange& file : files_) {
    const auto kept = fileStateAt(file.kept);
    if (kept) needed += static_cast<std::uint64_t>(kept->size);
  }
  if (isOnOneDisk(folder_, contacts_)) return;
  if (fs::space(contacts_).available < needed) {
    throw UndoError(text::say("디스크에 연락처를 되돌릴 자리가 없습니다: %1",
                              "The disk has no room to put the contacts back: %1",
                              {text::pathText(contacts_)}));
  }
}

void Undo::requireUnchanged() const {
  for (const FileChange& file : files_) {
    const auto state = fileStateAt(contacts_ / text::pathOf(file.name));
    if (isSame(state, found_.at(file.name))) continue;
    throw UndoError(text::say("그 사이에 연락처가 바뀌었습니다. 다시 실행하십시오: %1",
                              "The contact has changed in the meantime. Run the undo again: %1",
                              {file.name}));
  }
}

void Undo::putRowsBack(RunRecorder& recorder) {
  store::sqlite::SqliteConnection connection;
  connection.open({.componentFolder = folder_});
  StoredRows rows(connection.database());
  RowWatch watch(connection.database());
  try {
    store::sqlite::Transaction transaction(connection.database());
    if (rowChanges(rows) != rows_) {
      throw UndoError(text::say("그 사이에 데이터베이스가 바뀌었습니다. 다시 실행하십시오.",
                                "The database has changed in the meantime. Run the undo again."));
    }
    std::set<RowKey> keys;
    for (const RowChange& change : rows_) {
      keys.insert(change.key);
      if (change.change == Change::Added) rows.remove(change.key);
      if (change.change == Change::Removed) rows.insert(change.key, change.cells);
      if (change.change == Change::Changed) rows.update(change.key, change.cells);
    }
    const std::vector<RowWrite> writes = watch.take();
    // Something in the host's database, such as a trigger, could have changed other rows too.
    const bool isMore = std::any_of(writes.begin(), writes.end(), [&](const RowWrite& write) {
      return !keys.contains(write.key);
    });
    if (isMore || !rowChanges(rows).empty()) {
      throw UndoError(
          text::say("명함을 그대로 되돌릴 수 없어 아무것도 바꾸지 않았습니다.",
                    "Nothing was changed: the cards could not be put back exactly as they were."));
    }
    recorder.rows(writes);
    recorder.sync();
    transaction.commit();
  } catch (const store::DatabaseBusy& error) {
    throw UndoError(text::pathText(database_) + ": " + error.what());
  }
}

// A file that cannot be put back does not hold up the others.
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
  throw UndoError(
      text::say("되돌리지 못한 연락처가 있습니다. 고친 뒤에 다시 실행하십시오.",
                "Some contacts could not be put back. Fix the cause and run the undo again.") +
      failures);
}

// A kept file gets its place back with its modification time, so that it does not look edited.
void Undo::putFileBack(const FileChange& file, RunRecorder& recorder) const {
  const auto& found = found_.at(file.name);
  const auto log = [&](const std::string& name, const std::optional<FileState>& state) {
    recorder.file(name, state);
  };
  if (file.change == Change::Added) {
    if (mirrored_) mirrored_->remove(contacts_ / text::pathOf(file.name));
    lock_->remove(file.name, *found, log);
    return;
  }
  if (mirrored_) mirrored_->putBack(file.kept);
  lock_->replaceBy(
      file.name, found,
      [&](const fs::path& place) {
        if (linkOrCopy(file.kept, place)) return;
        throw UndoError(
            text::say("보관한 연락처가 없습니다: %1", "The kept contact is gone: %1", {file.name}));
      },
      log);
}

// Marks the runs that are now undone, and unmarks those that an undo among them had taken back.
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
