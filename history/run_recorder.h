// Records every run, and makes its restore point before its first write. The adapters below report
// each write before it counts; the main window reports the run's beginning and end.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "history/card_files.h"
#include "history/rows.h"
#include "history/runs.h"
#include "history/written_log.h"
#include "outlook/contact_store.h"
#include "outlook/vcard/folder.h"
#include "store/sqlite/hooks.h"
#include "store/sqlite/sqlite_connection.h"
#include "transfer/run.h"

namespace vlout::history {

// What to do about an export into a folder that has been emptied.
struct EmptiedFolder {
  bool goOn = false;        // the user means it
  bool askAgain = false;    // a second attempt counts as a yes
  std::string howToGoOn{};  // told to the user
};

class RunRecorder {
 public:
  RunRecorder(std::filesystem::path componentFolder, const std::filesystem::path& contacts,
              EmptiedFolder emptied);

  // For contacts that are elsewhere, so that the folder is only a mirror: the name of that place,
  // and how many contacts it has now.
  void contactsAreIn(std::string place, std::function<std::size_t()> count) {
    place_ = std::move(place);
    count_ = std::move(count);
  }

  // Returns the objection to a run, or an empty text. Without an objection, `end` follows, unless
  // it is a preview.
  [[nodiscard]] std::string beginOrObject(const transfer::RunDescription& run);
  void end(const transfer::RunOutcome& outcome);

  [[nodiscard]] bool isRecording() const { return record_.has_value(); }
  // The number of the run under way.
  [[nodiscard]] int number() const { return record_->number; }

  [[nodiscard]] std::string databaseFile() const;

  // Called before each write. Throws RunAborted if no restore point can be made.
  void beforeWriting();
  // Report each write, before it is made or while it can still be rolled back; a file is first kept
  // as it is. `card` is the number of the row that a contact is written from. Both throw RunAborted
  // if there is no room for it.
  void file(const std::string& name, const std::optional<FileState>& state,
            std::optional<std::int64_t> card = {});
  void rows(const std::vector<RowWrite>& writes);
  // Tells how many files the run has found in the contact folder.
  void filesFound(std::size_t count) { filesFound_ = count; }
  // Flushes to the disk what was reported so far.
  void sync();

  // Tells where the run's rows can be read.
  void looksAt(StoredRows& rows) { rowsNow_ = &rows; }
  void looksNoMoreAt(const StoredRows& rows) {
    if (rowsNow_ == &rows) rowsNow_ = nullptr;
  }

  // Completes what an earlier run has left unfinished (history/completion.h). To be called after
  // `beginOrObject` and before rows are read, with the stores of the run or of its preview. Throws
  // DatabaseError, ContactStoreError, std::system_error and RunAborted.
  void completeCutShort(store::sqlite::SqliteConnection& connection,
                        outlook::ContactStore& contacts);

 private:
  [[nodiscard]] std::optional<std::size_t> filesLeftBy(const RunRecord& run) const;
  [[nodiscard]] std::string objectionToEmptied(bool preview);
  [[nodiscard]] std::string objectionToSpace() const;
  void start(const transfer::RunDescription& run);
  template <typename Use>
  void tell(Use use);

  std::filesystem::path folder_;
  std::filesystem::path database_;
  std::filesystem::path contacts_;
  EmptiedFolder emptied_;
  Runs runs_;
  std::optional<RunRecord> record_;  // while a run is under way
  std::optional<WrittenLog> log_;    // once it writes
  std::optional<std::size_t> filesFound_;
  StoredRows* rowsNow_ = nullptr;
  bool warned_ = false;
  std::string place_;
  std::function<std::size_t()> count_;
};

// The database of a run, whose writes are recorded.
class RecordedConnection : public store::sqlite::SqliteConnection {
 public:
  RecordedConnection(std::shared_ptr<RunRecorder> recorder, const volatile std::sig_atomic_t* stop)
      : SqliteConnection(stop), recorder_(std::move(recorder)) {}
  ~RecordedConnection() override;
  std::int64_t execute(std::string_view sql) override;
  std::unique_ptr<store::Recordset> query(std::string_view sql) override;
  std::unique_ptr<store::Recordset> queryColumns(std::string_view sql,
                                                 store::ColumnNames columns) override;

 protected:
  [[nodiscard]] store::sqlite::Database openFile(const std::filesystem::path& file) override;
  void close() override;

 private:
  template <typename Use>
  auto endingRunWhenBusy(Use use);
  void letGo();

  std::shared_ptr<RunRecorder> recorder_;
  std::optional<StoredRows> rows_;
  std::optional<RowWatch> watch_;
  std::optional<store::sqlite::CheckpointHook> checkpoints_;
};

// The contact folder of a run, whose writes are recorded.
class RecordedFolder : public outlook::vcard::Folder {
 public:
  RecordedFolder(const std::string& path, std::shared_ptr<RunRecorder> recorder)
      : Folder(path), recorder_(std::move(recorder)) {}
  [[nodiscard]] std::vector<outlook::vcard::CardFile> cardFiles() override;
  FileState replace(const std::string& name, std::string_view text,
                    const std::optional<FileState>& before, bool keepSecond,
                    const std::string& row) override;
  void gather(const outlook::vcard::SavedCard& save, const FileState& before) override;

 private:
  std::shared_ptr<RunRecorder> recorder_;
};

}  // namespace vlout::history
