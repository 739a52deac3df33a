// Takes back what a run and all later ones wrote. Before anything is touched, it is known what will
// change and what has been edited in the same places since; edits elsewhere stay. An undo is itself
// a run with a restore point: it can be taken back, and repeated if it was killed.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "history/card_files.h"
#include "history/rows.h"
#include "history/run_recorder.h"
#include "history/runs.h"
#include "history/trail.h"
#include "history/written_log.h"
#include "outlook/vcard/folder.h"

namespace vlout::history {

// Says why there is nothing to undo, or no way to undo it.
class UndoError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct FileChange {
  std::string name;
  Change change = Change::Changed;
  std::string person{};
  std::filesystem::path kept{};  // the file to put back
};

struct RowChange {
  RowKey key;
  Change change = Change::Changed;
  std::string name{};
  Cells cells{};  // the columns that change, or all columns of a row to insert

  bool operator==(const RowChange&) const = default;
};

// The place whose contacts a folder mirrors; it is put back together with the folder's files. Both
// functions throw ContactStoreError.
class MirroredContacts {
 public:
  virtual ~MirroredContacts() = default;
  // Puts back the contact of a kept file; it counts as changed when that file was.
  virtual void putBack(const std::filesystem::path& kept) = 0;
  virtual void remove(const std::filesystem::path& mirrored) = 0;
};

class Undo {
 public:
  // Opens the place that a run's contact folder mirrors, and updates the folder; null if the
  // contacts are in the folder itself.
  using OpenMirrored =
      std::function<std::unique_ptr<MirroredContacts>(const std::filesystem::path& contacts)>;

  // Plans to go back before `run` or, for 0, before the last run that wrote and was not taken back.
  // Locks the contact folder, and changes nothing yet. Throws UndoError, ContactStoreError,
  // DatabaseError.
  Undo(
      const std::filesystem::path& componentFolder, int run,
      const OpenMirrored& openMirrored = [](const std::filesystem::path&) { return nullptr; });

  [[nodiscard]] const RunRecord& run() const { return run_; }
  [[nodiscard]] const std::vector<RowChange>& rows() const { return rows_; }
  [[nodiscard]] const std::vector<FileChange>& files() const { return files_; }
  // Files and rows that cannot be put back and stay as they are, because another program has
  // changed a kept file in place, or has deleted the row.
  [[nodiscard]] const std::vector<FileChange>& lost() const { return lost_; }
  [[nodiscard]] const std::vector<RowChange>& lostRows() const { return lostRows_; }
  // What has been edited since, one line each; going back loses it.
  [[nodiscard]] const std::vector<std::string>& edits() const { return edits_; }
  [[nodiscard]] bool changesNothing() const { return rows_.empty() && files_.empty(); }

  // Throws as the constructor does, and RunAborted if no restore point can be made.
  void perform();

 private:
  struct SameFile {
    bool operator()(const std::optional<FileState>& a, const std::optional<FileState>& b) const {
      return isSame(a, b);
    }
  };
  struct FileTrail {
    Trail<std::optional<FileState>, SameFile> trail;
    std::filesystem::path kept;
  };
  // What is to be done about one row.
  struct RowPlan {
    std::optional<RowChange> change;
    bool isLost = false;
    std::optional<std::string> edit;
  };

  void chooseRun(int number);
  void readLogs();
  void findGathered();
  void completeGathered();
  void findFileChanges();
  void findRowChanges();
  [[nodiscard]] std::vector<RowChange> rowChanges(StoredRows& rows) const;
  [[nodiscard]] RowPlan planOf(const RowKey& key, const RowTrail& trail, StoredRows& rows) const;
  void requireUnchanged() const;
  void requireSpace() const;
  void putRowsBack(RunRecorder& recorder);
  void putFilesBack(RunRecorder& recorder) const;
  void putFileBack(const FileChange& file, RunRecorder& recorder) const;
  void markRuns(int undoNumber) const;

  std::filesystem::path folder_;
  std::filesystem::path database_;
  Runs runs_;
  std::vector<RunRecord> later_;  // of the run and all later ones, those that wrote, oldest first
  RunRecord run_;
  std::filesystem::path contacts_;
  std::unique_ptr<MirroredContacts> mirrored_;
  std::unique_ptr<outlook::vcard::Folder> lock_;
  std::map<std::string, FileTrail> fileTrails_;
  std::map<RowKey, RowTrail> rowTrails_;
  std::map<std::string, std::optional<FileState>> found_;  // the present state of the trails' files
  // Files that saves of a killed run may still reach, by name.
  struct Gathered {
    std::string savedAs;
    FileState found;
  };
  std::map<std::string, Gathered> gathered_;
  std::vector<RowChange> rows_;
  std::vector<RowChange> lostRows_;
  std::vector<FileChange> files_;
  std::vector<FileChange> lost_;
  std::vector<std::string> edits_;
};

}  // namespace vlout::history
