#include "history/run_report.h"

#include <algorithm>
#include <map>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include "history/restore_point.h"
#include "history/rows.h"
#include "outlook/field_map.h"
#include "outlook/vcard/card_file.h"
#include "outlook/vcard/contact_changes.h"
#include "store/connection.h"
#include "store/sqlite/backup.h"
#include "text/file_path.h"
#include "text/language.h"
#include "text/regular_file.h"

namespace vlout::history {
namespace {

namespace fs = std::filesystem;

std::string textOf(const Cells& cells, std::string_view column) {
  const auto found = cells.find(column);
  // The type comes first.
  return found == cells.end() || found->second.empty() ? std::string() : found->second.substr(1);
}

// What the writes of one run have done to a row, taken together.
void join(RowWrite& write, const RowWrite& later) {
  for (const auto& [column, cell] : later.before) write.before.emplace(column, cell);
  for (const auto& [column, cell] : later.after) write.after.insert_or_assign(column, cell);
  if (write.change == Change::Changed) write.change = later.change;
}

// If other columns were changed, only the database has the row's name.
class RowNames {
 public:
  explicit RowNames(const fs::path& database) {
    try {
      database_.emplace(database, store::sqlite::Access::ReadOnly);
      rows_.emplace(database_->get());
    } catch (const store::DatabaseError&) {
      rows_.reset();  // then rows go by their numbers
    }
  }

  std::string of(const RowWrite& write) {
    const std::string_view column = captionOf(write.key);
    std::string name = textOf(write.after, column);
    if (name.empty()) name = textOf(write.before, column);
    if (name.empty() && rows_) name = textOf(rows_->at(write.key).value_or(Cells()), column);
    return name.empty() ? std::to_string(write.key.row) : name;
  }

 private:
  std::optional<store::sqlite::StoredDatabase> database_;
  std::optional<StoredRows> rows_;
};

std::string captionIn(const RowKey& key, std::string_view column) {
  return column == captionOf(key) ? text::say("이름", "name")
                                  : std::string(outlook::fieldCaption(column));
}

void reportRows(const Written& written, RowNames names, std::vector<ReportedChange>& changes) {
  std::map<RowKey, std::size_t> known;
  std::vector<RowWrite> rows;
  for (const RowWrite& write : written.rows) {
    const auto [row, isNew] = known.emplace(write.key, rows.size());
    if (isNew) {
      rows.push_back(write);
    } else {
      join(rows[row->second], write);
    }
  }
  for (const RowWrite& row : rows) {
    ReportedChange change{nounOf(row.key), names.of(row), row.change};
    if (row.change != Change::Changed) {
      changes.push_back(std::move(change));
      continue;
    }
    for (const auto& [column, cell] : row.after) {
      change.caption = captionIn(row.key, column);
      change.before = textOf(row.before, column);
      change.after = textOf(row.after, column);
      if (!change.caption.empty() && change.before != change.after) changes.push_back(change);
    }
  }
}

// A contact file before and after a run.
struct FileReport {
  std::string name;
  std::optional<FileState> before;
  std::optional<FileState> after;
};

std::vector<FileReport> filesOf(const Written& written) {
  std::map<std::string_view, std::size_t> known;
  std::vector<FileReport> files;
  for (const FileWrite& write : written.files) {
    const auto [file, isNew] = known.emplace(write.name, files.size());
    if (isNew) files.push_back({write.name, write.before, {}});
    files[file->second].after = write.after;
  }
  return files;
}

class ContactReport {
 public:
  // `places` are the folders where the files that the run left may be now.
  ContactReport(const RestorePoint& point, std::vector<RestorePoint> later, fs::path contacts,
                std::vector<ReportedChange>& changes)
      : point_(point),
        later_(std::move(later)),
        contacts_(std::move(contacts)),
        changes_(changes) {}

  void add(const FileReport& file) {
    const auto old = file.before ? textIn(point_.kept(file.name), *file.before) : std::nullopt;
    const auto now = file.after ? textLeft(file) : std::nullopt;
    const bool isKnown =
        file.before.has_value() == old.has_value() && file.after.has_value() == now.has_value();
    const auto before = outlook::vcard::findCards(old.value_or("")).cards;
    const auto after = outlook::vcard::findCards(now.value_or("")).cards;
    if (!file.before || !file.after || !isKnown || before.size() != after.size()) {
      const Change change = !file.before  ? Change::Added
                            : !file.after ? Change::Removed
                                          : Change::Changed;
      changes_.push_back(
          {text::say("연락처", "contact"), whoseIs(file.name, now ? now : old), change});
      return;
    }
    for (std::size_t i = 0; i < before.size(); ++i) {
      compare(std::string_view(*old).substr(before[i].start, before[i].size),
              std::string_view(*now).substr(after[i].start, after[i].size), file.name);
    }
  }

 private:
  // The name by which people know a file; as a last resort, the one that is in it now.
  [[nodiscard]] std::string whoseIs(const std::string& name,
                                    const std::optional<std::string>& text) const {
    std::string person = text ? outlook::vcard::firstDisplayName(*text) : std::string();
    if (person.empty()) person = personIn(contacts_ / text::pathOf(name));
    return person.empty() ? name : person;
  }

  // The text of a file, if it is still in that state.
  static std::optional<std::string> textIn(const fs::path& file, const FileState& state) {
    if (!isSame(fileStateAt(file), state)) return std::nullopt;
    try {
      std::string text = text::readRegularFile(file, text::kLargestOwn);
      if (outlook::vcard::convertFile(text)) return text;
    } catch (const std::system_error&) {
      // It disappeared between the two looks.
    }
    return std::nullopt;
  }

  // The file that the run left is still there, or was kept by the next run that replaced it.
  std::optional<std::string> textLeft(const FileReport& file) const {
    for (const RestorePoint& point : later_) {
      if (auto text = textIn(point.kept(file.name), *file.after)) return text;
    }
    return textIn(contacts_ / text::pathOf(file.name), *file.after);
  }

  void compare(std::string_view before, std::string_view after, const std::string& name) {
    if (outlook::vcard::holdsSameData(before, after)) return;
    const std::string person = whoseIs(name, std::string(after));
    outlook::vcard::compareCards(
        before, after,
        [&](std::string_view caption, const std::string& old, const std::string& now) {
          changes_.push_back({text::say("연락처", "contact"), person, Change::Changed,
                              std::string(caption), old, now});
        });
  }

  RestorePoint point_;
  std::vector<RestorePoint> later_;
  fs::path contacts_;
  std::vector<ReportedChange>& changes_;
};

}  // namespace

RunReport reportOf(const fs::path& componentFolder, int number) {
  const Runs runs(componentFolder);
  const auto all = runs.list();
  const auto found = std::find_if(all.begin(), all.end(),
                                  [&](const RunRecord& run) { return run.number == number; });
  if (found == all.end()) {
    throw std::runtime_error(text::say("작업 %1이(가) 기록에 없습니다.",
                                       "There is no run %1 in the history.",
                                       {std::to_string(number)}));
  }
  RunReport report{*found, runs.linesOf(number), {}};
  const RestorePoint point(runs.folderOf(number));
  if (!found->wrote || !point.exists() || point.isOfOldForm()) return report;
  const Written written = point.written(found->state);
  const store::ConnectionSettings database{.componentFolder = componentFolder};
  reportRows(written, RowNames(database.databaseFile()), report.changes);
  std::vector<RestorePoint> later;
  for (auto run = found + 1; run != all.end(); ++run) {
    const bool isThere = run->wrote && runs.contactsOf(*run) == runs.contactsOf(*found);
    if (isThere) later.emplace_back(runs.folderOf(run->number));
  }
  ContactReport contacts(point, std::move(later), runs.contactsOf(*found), report.changes);
  for (const FileReport& file : filesOf(written)) contacts.add(file);
  return report;
}

}  // namespace vlout::history
