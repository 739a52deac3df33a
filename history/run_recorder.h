// Records every run and takes its restore point before its first write. The adapters below tell it
// of each write before it counts; the frame of the run comes from the main window.
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

// What to do about an export into a folder that has lost its contacts.
struct EmptiedFolder {
  bool goOn = false;        // it is meant
  bool askAgain = false;    // a second attempt means it
  std::string howToGoOn{};  // for the user
};

class RunRecorder {
 public:
  RunRecorder(std::filesystem::path componentFolder, const std::filesystem::path& contacts,
              EmptiedFolder emptied);

  // For contacts that lie elsewhere, of which the folder is only a mirror: what people call the
  // place, and how many contacts it holds now.
  void contactsAreIn(std::string place, std::function<std::size_t()> count) {
    place_ = std::move(place);
    count_ = std::move(count);
  }

  // The objection to a run, or an empty text; then `end` follows, unless it is a preview.
  [[nodiscard]] std::string beginOrObject(const transfer::RunDescription& run);
  void end(const transfer::RunOutcome& outcome);

  [[nodiscard]] bool isRecording() const { return record_.has_value(); }
  // The number of the run under way.
  [[nodiscard]] int number() const { return record_->number; }

  [[nodiscard]] std::string databaseFile() const;

  // Before each write. Throws RunAborted when there can be no restore point.
  void beforeWriting();
  // Each write, while it can still be undone or has not yet been made; a file is kept as it is
  // first. `card` is that of the row which a contact is written from. Throw RunAborted when there
  // is no room for it.
  void file(const std::string& name, const std::optional<FileState>& state,
            std::optional<std::int64_t> card = {});
  void rows(const std::vector<RowWrite>& writes);
  // What was told is on the disk for good afterwards.
  void sync();

  // Where the rows of a run are looked at.
  void looksAt(StoredRows& rows) { rowsNow_ = &rows; }
  void looksNoMoreAt(const StoredRows& rows) {
    if (rowsNow_ == &rows) rowsNow_ = nullptr;
  }

  // Completes what an earlier run has left by halves (history/completion.h). To be called between
  // `beginOrObject` and the reading of rows, with the stores of the run or of its preview. Throws
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
  StoredRows* rowsNow_ = nullptr;
  bool warned_ = false;
  std::string place_;
  std::function<std::size_t()> count_;
};

// The database of a run.
class RecordedConnection : public store::sqlite::SqliteConnection {
 public:
  RecordedConnection(std::shared_ptr<RunRecorder> recorder, const volatile std::sig_atomic_t* stop)
      : SqliteConnection(stop), recorder_(std::move(recorder)) {}
  ~RecordedConnection() override;
  std::int64_t execute(std::string_view sql) override;
  std::unique_ptr<store::Recordset> query(std::string_view sql) override;

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

// The contact folder of a run.
class RecordedFolder : public outlook::vcard::Folder {
 public:
  RecordedFolder(const std::string& path, std::shared_ptr<RunRecorder> recorder)
      : Folder(path), recorder_(std::move(recorder)) {}
  FileState replace(const std::string& name, std::string_view text,
                    const std::optional<FileState>& before, bool keepSecond,
                    const std::string& row) override;
  void gather(const outlook::vcard::SavedCard& save, const FileState& before) override;

 private:
  std::shared_ptr<RunRecorder> recorder_;
};

}  // namespace vlout::history
